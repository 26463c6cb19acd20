# volux_resample: whole volumes at once, with SIMD and threads. It is built where
# Google Highway and threads are found, and installed as a component of its own.
find_package(hwy QUIET)
find_package(Threads QUIET)
if(NOT TARGET hwy::hwy OR NOT TARGET Threads::Threads)
    message(STATUS "Highway is not there, or no threads: volux_resample is left out")
    return()
endif()

volux_add_library(resample
    src/resample/calls/AffineMap.cpp
    src/resample/calls/CallersPolicies.cpp
    src/resample/calls/Checks.cpp
    src/resample/calls/Describe.cpp
    src/resample/calls/Directions.cpp
    src/resample/calls/Geometry.cpp
    src/resample/calls/Grid.cpp
    src/resample/calls/Labels.cpp
    src/resample/calls/Planes.cpp
    src/resample/calls/Policies.cpp
    src/resample/calls/Resample.cpp
    src/resample/calls/Sample.cpp
    src/resample/calls/Sampler.cpp
    src/resample/calls/StaticLabels.cpp
    src/resample/calls/Support.cpp
    src/resample/calls/View.cpp
    src/resample/calls/Warp.cpp
    src/resample/calls/WarpedReach.cpp
    src/resample/rows/AlignedRows.cpp
    src/resample/rows/AntialiasedRows.cpp
    src/resample/rows/AxisTables.cpp
    src/resample/rows/Displacement.cpp
    src/resample/rows/FieldOfView.cpp
    src/resample/rows/Fold.cpp
    src/resample/rows/NearestLabels.cpp
    src/resample/rows/ObliqueRows.cpp
    src/resample/rows/Processors.cpp
    src/resample/rows/Rows.cpp
    src/resample/rows/Subsamples.cpp
    src/resample/rows/Task.cpp
    src/resample/rows/Votes.cpp
    src/resample/rows/VoxelMeans.cpp
    src/resample/rows/VoxelModes.cpp
    src/resample/rows/Work.cpp
    src/resample/vectors/Block.cpp
    src/resample/vectors/Elements.cpp
    src/resample/vectors/Gradient.cpp
    src/resample/vectors/Labels.cpp
    src/resample/vectors/Lines.cpp
    src/resample/vectors/Positions.cpp
    src/resample/vectors/VoxelSums.cpp
    src/resample/vectors/Single.cpp
)
# No code runs for the object LABELS when the library is loaded; see StaticPolicies.cpp of volux_core.
set_property(SOURCE src/resample/calls/StaticLabels.cpp APPEND PROPERTY COMPILE_OPTIONS
    $<$<CXX_COMPILER_ID:GNU>:-O2>
    $<$<CXX_COMPILER_ID:GNU>:-fno-use-cxa-atexit>
    $<$<CXX_COMPILER_ID:Clang,AppleClang>:-fno-c++-static-destructors>)
# Its interface has changed since 1.1.0, so programs that were linked with that must not load it.
set_target_properties(volux_resample PROPERTIES VERSION 2.0.0 SOVERSION 2)
target_link_libraries(volux_resample PUBLIC volux::core PRIVATE hwy::hwy Threads::Threads)
# A vector whose length is unknown to the compiler is no member and no element of an array. PUBLIC, as
# the tests of each instruction set must know of the same ones.
target_compile_definitions(volux_resample PUBLIC
    "$<BUILD_INTERFACE:HWY_DISABLED_TARGETS=(HWY_SVE|HWY_SVE2|HWY_SVE_256|HWY_SVE2_128)>")
if(BUILD_SHARED_LIBS AND CMAKE_SYSTEM_NAME STREQUAL "Linux")
    # volux_core is installed beside it.
    set_property(TARGET volux_resample PROPERTY INSTALL_RPATH $ORIGIN)
endif()
