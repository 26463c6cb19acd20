# The installed packages: find_package(volux_core) gives volux::core, pkg-config volux_core likewise;
# so does volux_resample, if it is built. Each is a component of its own.
include(CMakePackageConfigHelpers)

# Relative to the file itself, so that a moved installation still works.
file(RELATIVE_PATH VOLUX_PC_PREFIX ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
foreach(folder LIBDIR INCLUDEDIR)
    set(VOLUX_PC_${folder} "\${prefix}/${CMAKE_INSTALL_${folder}}")
    if(IS_ABSOLUTE "${CMAKE_INSTALL_${folder}}")
        set(VOLUX_PC_${folder} "${CMAKE_INSTALL_${folder}}")
    endif()
endforeach()
foreach(folder PREFIX LIBDIR INCLUDEDIR)
    string(REPLACE " " "\\ " VOLUX_PC_${folder} "${VOLUX_PC_${folder}}")
endforeach()

# What a program that links the static LIBRARY must link too: the packages for CMake, the flags for
# pkg-config. A shared library names what it needs itself.
macro(volux_find_needs library)
    set(VOLUX_PACKAGES "")
    if(NOT BUILD_SHARED_LIBS)
        get_target_property(VOLUX_PACKAGES ${library} LINK_LIBRARIES)
        list(FILTER VOLUX_PACKAGES EXCLUDE REGEX "^volux::|NOTFOUND$")
    endif()
    list(TRANSFORM VOLUX_PACKAGES REPLACE "Threads::Threads" "-pthread" OUTPUT_VARIABLE VOLUX_PC_LIBS)
    list(TRANSFORM VOLUX_PC_LIBS REPLACE ".*::" "-l")
    list(JOIN VOLUX_PC_LIBS " " VOLUX_PC_LIBS)
    list(TRANSFORM VOLUX_PACKAGES REPLACE "::.*" "")
endmacro()

function(volux_install library component)
    install(TARGETS ${library} EXPORT ${library}Targets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT ${component}
            NAMELINK_COMPONENT ${component}
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT ${component}
        RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT ${component})
    set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/${library})
    install(EXPORT ${library}Targets NAMESPACE volux:: DESTINATION ${package_folder}
        COMPONENT ${component})
    volux_find_needs(${library})
    configure_package_config_file(cmake/${library}-config.cmake.in ${library}-config.cmake
        INSTALL_DESTINATION ${package_folder})
    write_basic_package_version_file(${library}-config-version.cmake
        COMPATIBILITY SameMajorVersion)
    install(FILES
        ${CMAKE_CURRENT_BINARY_DIR}/${library}-config.cmake
        ${CMAKE_CURRENT_BINARY_DIR}/${library}-config-version.cmake
        DESTINATION ${package_folder} COMPONENT ${component})
    configure_file(cmake/${library}.pc.in ${library}.pc @ONLY)
    install(FILES ${CMAKE_CURRENT_BINARY_DIR}/${library}.pc
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT ${component})
endfunction()

volux_install(volux_core core)
install(DIRECTORY include/volux DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT core
    FILES_MATCHING PATTERN "*.h" PATTERN "*.inc"
    PATTERN "adapt" EXCLUDE PATTERN "resample*" EXCLUDE)

if(TARGET volux_resample)
    volux_install(volux_resample resample)
    install(DIRECTORY include/volux DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT resample
        FILES_MATCHING REGEX "volux/(resample|adapt)[./].*(h|inc)$"
        PATTERN "core*" EXCLUDE PATTERN "base" EXCLUDE)
endif()
