# The installed package: find_package(volux_core) gives volux::core, pkg-config volux_core likewise.
include(CMakePackageConfigHelpers)

install(TARGETS volux_core EXPORT volux_coreTargets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(DIRECTORY include/volux DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
    FILES_MATCHING PATTERN "*.h" PATTERN "*.inc")

set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/volux_core)
install(EXPORT volux_coreTargets NAMESPACE volux:: DESTINATION ${package_folder})
configure_package_config_file(cmake/volux_core-config.cmake.in volux_core-config.cmake
    INSTALL_DESTINATION ${package_folder})
write_basic_package_version_file(volux_core-config-version.cmake COMPATIBILITY SameMajorVersion)
install(FILES
    ${CMAKE_CURRENT_BINARY_DIR}/volux_core-config.cmake
    ${CMAKE_CURRENT_BINARY_DIR}/volux_core-config-version.cmake
    DESTINATION ${package_folder})

# Relative to the file itself, so that a moved installation still works.
file(RELATIVE_PATH VOLUX_PREFIX_FROM_PC
    ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
foreach(folder LIBDIR INCLUDEDIR)
    set(VOLUX_PC_${folder} "\${prefix}/${CMAKE_INSTALL_${folder}}")
    if(IS_ABSOLUTE "${CMAKE_INSTALL_${folder}}")
        set(VOLUX_PC_${folder} "${CMAKE_INSTALL_${folder}}")
    endif()
endforeach()
configure_file(cmake/volux_core.pc.in volux_core.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/volux_core.pc
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
