# Installation: headers, library, CMake package, pkg-config file; the compiler's runtime DLLs on Windows.
include(CMakePackageConfigHelpers)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/Vorlund)

install(TARGETS vorlund EXPORT VorlundTargets
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/vorlund DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
    FILES_MATCHING PATTERN "*.h")
install(FILES ${VORLUND_VERSION_HEADER} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/vorlund)
if(WIN32)
    install(FILES ${VORLUND_RUNTIME_DLLS} DESTINATION ${CMAKE_INSTALL_BINDIR})
endif()

install(EXPORT VorlundTargets NAMESPACE Vorlund:: DESTINATION ${package_dir})
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/VorlundConfig.cmake.in
    ${PROJECT_BINARY_DIR}/VorlundConfig.cmake INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/VorlundConfigVersion.cmake
    COMPATIBILITY ${VORLUND_COMPATIBILITY})
install(FILES ${PROJECT_BINARY_DIR}/VorlundConfig.cmake ${PROJECT_BINARY_DIR}/VorlundConfigVersion.cmake
    DESTINATION ${package_dir})

install(FILES
    ${PROJECT_SOURCE_DIR}/cmake/VorlundPlugin.cmake ${PROJECT_SOURCE_DIR}/cmake/VorlundPlugin.def
    ${PROJECT_SOURCE_DIR}/cmake/VorlundPlugin.ld ${PROJECT_SOURCE_DIR}/cmake/VorlundPlugin.map
    ${PROJECT_SOURCE_DIR}/cmake/VorlundPluginTable.def ${PROJECT_SOURCE_DIR}/cmake/VorlundPluginTable.ld
    ${PROJECT_SOURCE_DIR}/cmake/VorlundPluginTable.map
    DESTINATION ${package_dir})

# The file finds its own prefix, so that an installed tree may be moved.
file(RELATIVE_PATH VORLUND_PC_PREFIX
    ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
set(VORLUND_PC_FLAGS "")
if(VORLUND_CHECK_THREADS)
    set(VORLUND_PC_FLAGS " -DVORLUND_CHECK_THREADS")
endif()
configure_file(${PROJECT_SOURCE_DIR}/cmake/vorlund.pc.in ${PROJECT_BINARY_DIR}/vorlund.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/vorlund.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

install(FILES ${PROJECT_SOURCE_DIR}/LICENSE ${PROJECT_SOURCE_DIR}/CHANGES.md
    DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(FILES ${PROJECT_SOURCE_DIR}/README.md DESTINATION ${CMAKE_INSTALL_DOCDIR})
