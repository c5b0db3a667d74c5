# Packages by cpack: three Debian packages, or one zip for Windows. packaging/complete.py adds what is known only when
# everything lies in its place: the list of third parties, licences, sums. ./package calls all that.
find_package(Python3 REQUIRED COMPONENTS Interpreter)
set(VORLUND_REVISION "" CACHE STRING "The revision that the packages name as their source")

set(CPACK_PACKAGE_NAME vorlund)
set(CPACK_PACKAGE_VENDOR "The Vorlund developers")
set(CPACK_PACKAGE_CONTACT "The Vorlund developers <developers@vorlund.invalid>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "framework for programs that handle audio and video")
set(CPACK_RESOURCE_FILE_LICENSE ${PROJECT_SOURCE_DIR}/LICENSE)
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_COMPONENTS_ALL runtime development program)
if(TARGET vorlund_c)
    list(APPEND CPACK_COMPONENTS_ALL c)
endif()
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_BINARY_DIR}/complete.cmake)
set(CPACK_OUTPUT_FILE_PREFIX ${PROJECT_BINARY_DIR}/packages)

if(WIN32)
    set(VORLUND_BITS 32)
    if(CMAKE_SIZEOF_VOID_P EQUAL 8)
        set(VORLUND_BITS 64)
    endif()
    set(CPACK_GENERATOR ZIP)
    set(CPACK_PACKAGE_FILE_NAME vorlund-${PROJECT_VERSION}-win${VORLUND_BITS})
    set(CPACK_ARCHIVE_COMPONENT_INSTALL OFF)
    # The archive has its files in the order in which the file system has them.
    set(CPACK_POST_BUILD_SCRIPTS ${PROJECT_BINARY_DIR}/sort.cmake)
    configure_file(${PROJECT_SOURCE_DIR}/packaging/README.txt.in ${PROJECT_BINARY_DIR}/README.txt @ONLY NEWLINE_STYLE DOS)
    install(FILES ${PROJECT_BINARY_DIR}/README.txt DESTINATION .)
    set(names "")
else()
    include(VorlundDebian)
    set(names ${VORLUND_DEBIAN_NAMES})
endif()

configure_file(${PROJECT_SOURCE_DIR}/packaging/complete.cmake.in ${PROJECT_BINARY_DIR}/complete.cmake @ONLY)
configure_file(${PROJECT_SOURCE_DIR}/packaging/sort.cmake.in ${PROJECT_BINARY_DIR}/sort.cmake @ONLY)
# What complete.py must know of the build.
file(WRITE ${PROJECT_BINARY_DIR}/package-facts.txt
"name=${CPACK_PACKAGE_NAME}
version=${PROJECT_VERSION}
revision=${VORLUND_REVISION}
contact=${CPACK_PACKAGE_CONTACT}
system=${CMAKE_SYSTEM_NAME}
processor=${CMAKE_SYSTEM_PROCESSOR}
doc=${CMAKE_INSTALL_DOCDIR}
names=${names}
runtime=${VORLUND_RUNTIME_SOURCES}
headers=${CLI11_INCLUDE_DIR}/CLI/CLI.hpp;${EIGEN3_INCLUDE_DIR}/Eigen/Core;${STB_INCLUDE_DIR}/stb/stb_image_write.h
libraries=${VORLUND_CODECS_DIR};${VORLUND_LEVELS_DIR};${VORLUND_PICTURES_DIR};${VORLUND_RATES_DIR};${VORLUND_SOUND_OUTPUT_DIR}
")
include(CPack)
