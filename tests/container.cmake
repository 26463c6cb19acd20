set(VOLUX_CONTAINER_TESTS
    base/ExceptionTest.cpp
    core/DataTypeTest.cpp
    core/ErrorTypeTest.cpp
    core/GeometryTest.cpp
    core/VxImage/AccessTest.cpp
    core/VxImage/AllocationFailureTest.cpp
    core/VxImage/ContainerDifferentialTest.cpp
    core/VxImage/CopyTest.cpp
    core/VxImage/CropTest.cpp
    core/VxImage/DrawTest.cpp
    core/VxImage/FillTest.cpp
    core/VxImage/LifecycleTest.cpp
    core/VxImage/PlanesTest.cpp
    core/VxImage/SharedMemoryTest.cpp
    core/VxImage/SizeLimitsTest.cpp
    core/VxImage/SpacingTest.cpp
    core/VxImage/StorageTest.cpp
    support/Allocation.cpp
)
# The rest calls what is compiled into volux_core, and takes g++ four times as long with -O3.
set(VOLUX_CONTAINER_INLINED core/VxImage/AccessTest.cpp core/VxImage/ContainerDifferentialTest.cpp
    core/VxImage/DrawTest.cpp core/VxImage/SharedMemoryTest.cpp core/GeometryTest.cpp)
set(not_inlined ${VOLUX_CONTAINER_TESTS})
list(REMOVE_ITEM not_inlined ${VOLUX_CONTAINER_INLINED})
set_property(SOURCE ${not_inlined} APPEND PROPERTY COMPILE_OPTIONS
    $<$<CXX_COMPILER_ID:GNU>:-O0>)
