# The bulk companion of the module: whole volumes at once, with SIMD and threads. It is built where
# Google Highway and threads are found, and installed as a component of its own.
find_package(hwy QUIET)
find_package(Threads QUIET)
if(NOT TARGET hwy::hwy OR NOT TARGET Threads::Threads)
    message(STATUS "Highway is not there, or no threads: volux_resample is left out")
    return()
endif()

add_library(volux_resample SHARED
    src/resample/AffineMap.cpp
    src/resample/AlignedRows.cpp
    src/resample/Grid.cpp
    src/resample/Lines.cpp
    src/resample/ObliqueRows.cpp
    src/resample/Processors.cpp
    src/resample/Resample.cpp
    src/resample/Sample.cpp
    src/resample/Samples.cpp
    src/resample/Store.cpp
    src/resample/Support.cpp
    src/resample/Task.cpp
    src/resample/Work.cpp
)
add_library(volux::resample ALIAS volux_resample)
target_compile_features(volux_resample PUBLIC cxx_std_17)
target_link_libraries(volux_resample PUBLIC volux::core PRIVATE hwy::hwy Threads::Threads)
# The file that is compiled for each instruction set includes itself by this way.
target_include_directories(volux_resample PRIVATE ${CMAKE_CURRENT_SOURCE_DIR}/src)
# A vector whose length is unknown to the compiler is no member and no element of an array. PUBLIC, as
# the tests of each instruction set have to know of the same ones.
target_compile_definitions(volux_resample PUBLIC
    "$<BUILD_INTERFACE:HWY_DISABLED_TARGETS=(HWY_SVE|HWY_SVE2|HWY_SVE_256|HWY_SVE2_128)>")
set_target_properties(volux_resample PROPERTIES
    EXPORT_NAME resample
    VERSION 1.1.0
    SOVERSION 1
    CXX_EXTENSIONS OFF
    CXX_VISIBILITY_PRESET hidden
    VISIBILITY_INLINES_HIDDEN ON
    INSTALL_RPATH $<$<PLATFORM_ID:Linux>:$ORIGIN>  # the module is installed beside it
)
volux_exact_arithmetic(volux_resample)
if(CMAKE_SYSTEM_NAME STREQUAL "Linux")
    set(exports ${CMAKE_CURRENT_SOURCE_DIR}/cmake/exports.map)
    target_link_options(volux_resample PRIVATE LINKER:--version-script=${exports})
    set_property(TARGET volux_resample APPEND PROPERTY LINK_DEPENDS ${exports})
endif()
