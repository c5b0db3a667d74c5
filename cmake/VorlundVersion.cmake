# What follows from the version of project(): the generated header <vorlund/Version.h>, made in the build tree, and the
# number in the name of the shared library. Sets
#   VORLUND_VERSION_HEADER  the generated header
#   VORLUND_INCLUDE_DIRS    the folders of the public headers
#   VORLUND_SOVERSION       what compatible versions have in common: 0.<minor> while the major version is 0, and the
#                           major version after that
#   VORLUND_COMPATIBILITY   the same rule in the words of CMake's packages
if(PROJECT_VERSION_MAJOR EQUAL 0)
    set(VORLUND_SOVERSION 0.${PROJECT_VERSION_MINOR})
    set(VORLUND_COMPATIBILITY SameMinorVersion)
else()
    set(VORLUND_SOVERSION ${PROJECT_VERSION_MAJOR})
    set(VORLUND_COMPATIBILITY SameMajorVersion)
endif()

set(VORLUND_VERSION_HEADER ${PROJECT_BINARY_DIR}/include/vorlund/Version.h)
configure_file(${PROJECT_SOURCE_DIR}/include/vorlund/Version.h.in ${VORLUND_VERSION_HEADER} @ONLY)
set(VORLUND_INCLUDE_DIRS ${PROJECT_SOURCE_DIR}/include ${PROJECT_BINARY_DIR}/include)
