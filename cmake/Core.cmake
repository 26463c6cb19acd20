# What the shared object holds besides its code: exactly the exported set, nothing that runs when it
# is loaded, nothing that keeps it from being unloaded.

# The destructors of the five policy objects are not registered; the source says why they would be.
set_property(SOURCE src/core/InterpolationType/StaticPolicies.cpp APPEND PROPERTY COMPILE_OPTIONS
    $<$<CXX_COMPILER_ID:GNU>:-O2>
    $<$<CXX_COMPILER_ID:GNU>:-fno-use-cxa-atexit>
    $<$<CXX_COMPILER_ID:Clang,AppleClang>:-fno-c++-static-destructors>)

# The exported set has the run-time type information of the policies, and the kernels look at it. On
# the sources, so that it follows whatever a parent project says.
get_target_property(sources volux_core SOURCES)
set_property(SOURCE ${sources} APPEND PROPERTY COMPILE_OPTIONS
    $<$<CXX_COMPILER_ID:GNU,Clang,AppleClang>:-frtti>)

target_compile_options(volux_core PRIVATE
    # A unique symbol would keep the library loaded for ever.
    $<$<CXX_COMPILER_ID:GNU>:-fno-gnu-unique>
    # Both constructors and both destructors of every class are exported, equal or not.
    "$<$<CXX_COMPILER_ID:Clang>:SHELL:-Xclang -mno-constructor-aliases>")

if(CMAKE_SYSTEM_NAME STREQUAL "Linux")
    # Link-time optimisation would keep these two to itself: every user can make its own.
    target_link_options(volux_core PRIVATE
        LINKER:--undefined=_ZTVN5volux4core6BorderE
        LINKER:--undefined=_ZTVN5volux4core12InterpolatorE)
endif()
