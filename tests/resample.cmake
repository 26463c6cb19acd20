set(VOLUX_RESAMPLE_TESTS
    resample/AffineMapTest.cpp
    resample/EveryWayTest.cpp
    resample/ExecutorTest.cpp
    resample/GridTest.cpp
    resample/GuardTest.cpp
    resample/LargeTest.cpp
    resample/PoliciesWithoutRtti.cpp
    resample/PoliciesWithoutRttiTest.cpp
    resample/ProcessorsTest.cpp
    resample/RefusalsTest.cpp
    resample/RegionTest.cpp
    resample/ResampleTest.cpp
    resample/ResizeTest.cpp
    resample/ResliceTest.cpp
    resample/SampleTest.cpp
    resample/StackTest.cpp
    resample/ThreadsTest.cpp
    resample/WorkTest.cpp
    support/Allocation.cpp
    ${PROJECT_SOURCE_DIR}/src/resample/rows/Processors.cpp
)
# The undefined-behaviour sanitizer reads the type of every object whose virtual function is called.
if(NOT CMAKE_CXX_FLAGS MATCHES "-fsanitize")
    set_property(SOURCE resample/PoliciesWithoutRtti.cpp APPEND PROPERTY COMPILE_OPTIONS
        $<$<CXX_COMPILER_ID:GNU,Clang,AppleClang>:-fno-rtti>)
endif()
