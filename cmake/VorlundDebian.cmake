# The Debian packages: the libraries, named after their SONAMEs; what programs are compiled with; the program with the plug-ins.
# Sets VORLUND_DEBIAN_NAMES to the components with the names of their packages.
set(library libvorlund${VORLUND_SOVERSION})
set(VORLUND_DEBIAN_NAMES runtime:${library} development:libvorlund-dev program:vorlund)
set(development_depends "${library} (= ${PROJECT_VERSION})")

# vorlund_shared_library_package(<COMPONENT> <library> <soversion>): what dpkg tells the loader, and packages that use it.
macro(vorlund_shared_library_package component name soversion)
    set(control ${PROJECT_BINARY_DIR}/debian/${name})
    file(WRITE ${control}/triggers "activate-noawait ldconfig\n")
    file(WRITE ${control}/shlibs "${name} ${soversion} ${name}${soversion} (>= ${PROJECT_VERSION})\n")
    set(CPACK_DEBIAN_${component}_PACKAGE_CONTROL_EXTRA "${control}/triggers;${control}/shlibs")
endmacro()

set(CPACK_GENERATOR DEB)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# The packages' own library, which dpkg does not know yet.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)

string(CONCAT about
    "Vorlund is a framework for programs that handle audio and video: an object\n"
    "model, streams and filters, a store of decoders that finds a chain by itself,\n"
    "devices, events and plug-ins.\n\n")

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME ${library})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_DESCRIPTION "${about}This package has the library. It decodes PCM in WAV files by itself, and\nother files with the plug-ins of the package vorlund.")
# Decoders, and what it loads when the first window opens.
set(CPACK_DEBIAN_RUNTIME_PACKAGE_RECOMMENDS "vorlund (= ${PROJECT_VERSION}), libxcb1")
vorlund_shared_library_package(RUNTIME libvorlund ${VORLUND_SOVERSION})
if(TARGET vorlund_c)
    get_target_property(VORLUND_C_SOVERSION vorlund_c SOVERSION)
    list(APPEND VORLUND_DEBIAN_NAMES c:libvorlund-c${VORLUND_C_SOVERSION})
    set(CPACK_DEBIAN_C_PACKAGE_NAME libvorlund-c${VORLUND_C_SOVERSION})
    set(CPACK_DEBIAN_C_PACKAGE_SECTION libs)
    set(CPACK_DEBIAN_C_DESCRIPTION "${about}This package has the interface in C, a shared library on top of libvorlund.")
    set(CPACK_DEBIAN_C_PACKAGE_DEPENDS "${library} (= ${PROJECT_VERSION})")
    vorlund_shared_library_package(C libvorlund-c ${VORLUND_C_SOVERSION})
    string(APPEND development_depends ", ${CPACK_DEBIAN_C_PACKAGE_NAME} (= ${PROJECT_VERSION})")
endif()

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libvorlund-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SHLIBDEPS OFF)
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION "${about}This package has the headers, the CMake package, the pkg-config file, the\npages and examples.")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${development_depends}")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SUGGESTS "cmake, pkgconf")

set(CPACK_DEBIAN_PROGRAM_PACKAGE_NAME vorlund)
set(CPACK_DEBIAN_PROGRAM_PACKAGE_SECTION sound)
set(CPACK_DEBIAN_PROGRAM_DESCRIPTION "${about}This package has the program vorlund and the plug-ins: WAV, AIFF, FLAC, MP3,\nOgg Vorbis, Opus and others, PNG, JPEG, Y4M, resampling, loudness, sound\ndevices, and windows that show video.")
set(CPACK_DEBIAN_PROGRAM_PACKAGE_DEPENDS "${library} (= ${PROJECT_VERSION})")
# What plug-ins load or start when they are asked to.
set(CPACK_DEBIAN_PROGRAM_PACKAGE_RECOMMENDS "libsoxr0, libsdl2-2.0-0")
set(CPACK_DEBIAN_PROGRAM_PACKAGE_SUGGESTS "ffmpeg, libpulse0")
list(JOIN VORLUND_DEBIAN_NAMES " " VORLUND_DEBIAN_NAMES)
