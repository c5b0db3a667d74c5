# Installation, in components, each a package of its own where packages are divided:
#   runtime      the shared library, on Windows with the compiler's
#   c            the shared library of the C interface, where it is built
#   development  what programs are compiled with, and the pages: what install() takes here when it says nothing else
#   program      the program and the plug-ins: what it takes in tools and plugins
include(CMakePackageConfigHelpers)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/Vorlund)

install(TARGETS vorlund EXPORT VorlundTargets
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT development
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
if(WIN32)
    include(VorlundImportLibrary)
    vorlund_install_import_library(vorlund)
    install(FILES ${VORLUND_RUNTIME_DLLS} DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime)
endif()

install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/vorlund DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
    FILES_MATCHING PATTERN "*.h")
install(FILES ${VORLUND_VERSION_HEADER} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/vorlund)

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
# What a plug-in is compiled and linked with, as vorlund_add_plugin() does.
if(WIN32)
    set(VORLUND_PC_PLUGIN_CFLAGS "-fvisibility=hidden")
    set(VORLUND_PC_PLUGIN_LIBS "-shared \${plugindir}/VorlundPlugin.def")
    # A cross compiler's toolchain file for a package that lies anywhere.
    set(VORLUND_MACHINE i686-w64-mingw32)
    if(CMAKE_SIZEOF_VOID_P EQUAL 8)
        set(VORLUND_MACHINE x86_64-w64-mingw32)
    endif()
    file(RELATIVE_PATH VORLUND_ROOT_FROM_PACKAGE ${CMAKE_INSTALL_PREFIX}/${package_dir} ${CMAKE_INSTALL_PREFIX})
    configure_file(${PROJECT_SOURCE_DIR}/cmake/toolchain.cmake.in ${PROJECT_BINARY_DIR}/toolchain.cmake @ONLY)
    install(FILES ${PROJECT_BINARY_DIR}/toolchain.cmake DESTINATION ${package_dir})
else()
    set(VORLUND_PC_PLUGIN_CFLAGS "-fPIC -fvisibility=hidden -fvisibility-inlines-hidden")
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
        string(APPEND VORLUND_PC_PLUGIN_CFLAGS " -fno-gnu-unique")
    endif()
    set(VORLUND_PC_PLUGIN_LIBS
        "-shared \${plugindir}/VorlundPlugin.ld -Wl,--version-script=\${plugindir}/VorlundPlugin.map")
endif()
configure_file(${PROJECT_SOURCE_DIR}/cmake/vorlund.pc.in ${PROJECT_BINARY_DIR}/vorlund.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/vorlund.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

include(VorlundPages)
