# What both libraries have in common. They are shared unless BUILD_SHARED_LIBS says otherwise; what
# is promised of loading, of unloading and of the exported set holds for the shared ones alone.
if(NOT DEFINED BUILD_SHARED_LIBS)
    set(BUILD_SHARED_LIBS ON)
endif()
if(WIN32 AND NOT BUILD_SHARED_LIBS)
    message(FATAL_ERROR "The headers import from a DLL: on Windows BUILD_SHARED_LIBS must be ON.")
endif()

# Adds volux_NAME, volux::NAME to its users, from its sources.
function(volux_add_library name)
    set(library volux_${name})
    add_library(${library} ${ARGN})
    add_library(volux::${name} ALIAS ${library})
    target_compile_features(${library} PUBLIC cxx_std_17)
    # Sources include by folder, as do those that Highway compiles for each instruction set.
    target_include_directories(${library} PRIVATE ${PROJECT_SOURCE_DIR}/src)
    set_target_properties(${library} PROPERTIES
        EXPORT_NAME ${name}
        VERSION ${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR}.${PROJECT_VERSION_PATCH}
        SOVERSION ${PROJECT_VERSION_MAJOR}
        CXX_EXTENSIONS OFF
        CXX_VISIBILITY_PRESET hidden
        VISIBILITY_INLINES_HIDDEN ON
        POSITION_INDEPENDENT_CODE ON  # a static library may be linked into a shared one
    )
    # CMake says this to the sources of a shared library only.
    if(NOT BUILD_SHARED_LIBS)
        target_compile_definitions(${library} PRIVATE ${library}_EXPORTS)
    endif()
    volux_exact_arithmetic(${library})
    if(CMAKE_SYSTEM_NAME STREQUAL "Linux" AND BUILD_SHARED_LIBS)
        set(exports ${PROJECT_SOURCE_DIR}/cmake/exports.map)
        target_link_options(${library} PRIVATE LINKER:--version-script=${exports})
        set_property(TARGET ${library} APPEND PROPERTY LINK_DEPENDS ${exports})
    endif()
endfunction()
