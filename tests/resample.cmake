set(VOLUX_RESAMPLE_TESTS
    resample/calls/AffineMapTest.cpp
    resample/calls/GridTest.cpp
    resample/calls/OutsideTest.cpp
    resample/calls/PoliciesWithoutRtti.cpp
    resample/calls/PoliciesWithoutRttiTest.cpp
    resample/calls/RefusalsTest.cpp
    resample/calls/RegionTest.cpp
    resample/calls/ResampleTest.cpp
    resample/calls/ResizeTest.cpp
    resample/calls/ResliceTest.cpp
    resample/calls/DescribeTest.cpp
    resample/calls/ImageTest.cpp
    resample/calls/ResultTypesTest.cpp
    resample/calls/SampleTest.cpp
    resample/calls/ViewGuardTest.cpp
    resample/calls/ViewRefusalsTest.cpp
    resample/calls/ViewTest.cpp
    resample/rows/ExecutorTest.cpp
    resample/rows/ProcessorsTest.cpp
    resample/rows/StackTest.cpp
    resample/rows/ThreadsTest.cpp
    resample/rows/WorkTest.cpp
    resample/vectors/EveryWayTest.cpp
    resample/vectors/GuardTest.cpp
    resample/vectors/LargeTest.cpp
    support/Allocation.cpp
    ${PROJECT_SOURCE_DIR}/src/resample/rows/Processors.cpp
)
# The undefined-behaviour sanitizer reads the type of every object whose virtual function is called.
if(NOT CMAKE_CXX_FLAGS MATCHES "-fsanitize")
    set_property(SOURCE resample/calls/PoliciesWithoutRtti.cpp APPEND PROPERTY COMPILE_OPTIONS
        $<$<CXX_COMPILER_ID:GNU,Clang,AppleClang>:-fno-rtti>)
endif()
