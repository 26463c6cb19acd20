# The programs of one adapter: its tests as C++17, the page's as C++20. LIBRARIES are what it
# adapts, FOLDERS are their headers.
find_package(GTest REQUIRED)
find_package(Python3 REQUIRED COMPONENTS Interpreter)
find_package(volux_resample 1.1 REQUIRED)
# Warnings in the installed headers count.
set_target_properties(volux::core volux::resample PROPERTIES SYSTEM OFF IMPORTED_NO_SYSTEM ON)

add_executable(adapter_test AdapterTest.cpp)
target_link_libraries(adapter_test PRIVATE GTest::gtest_main)
target_include_directories(adapter_test PRIVATE ${TESTS})
target_compile_features(adapter_test PRIVATE cxx_std_17)
add_executable(page ${PAGE})
target_compile_features(page PRIVATE cxx_std_20)
foreach(program adapter_test page)
    target_link_libraries(${program} PRIVATE volux::resample ${LIBRARIES})
    target_include_directories(${program} SYSTEM PRIVATE ${FOLDERS})
    target_compile_options(${program} PRIVATE ${WARNINGS})
endforeach()

enable_testing()
add_test(NAME adapter_test COMMAND adapter_test)
add_test(NAME refusals
    COMMAND ${Python3_EXECUTABLE} ${TESTS}/compile/check_refusals.py ${CMAKE_CXX_COMPILER}
        $<TARGET_PROPERTY:volux::core,INTERFACE_INCLUDE_DIRECTORIES>
        ${CMAKE_CURRENT_SOURCE_DIR}/Refusals.cpp "-I$<JOIN:${FOLDERS},;-I>"
    COMMAND_EXPAND_LISTS)
