# Installs the pages and the examples: README.md with all that it links to. A link to what is not installed, such as a
# source file, becomes plain text.
set(pages_dir ${PROJECT_BINARY_DIR}/pages)
file(GLOB pages RELATIVE ${PROJECT_SOURCE_DIR} CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/*.md ${PROJECT_SOURCE_DIR}/docs/*.md)
file(REMOVE_RECURSE ${pages_dir})
foreach(page IN LISTS pages)
    file(READ ${PROJECT_SOURCE_DIR}/${page} text)
    set(place "")
    if(page MATCHES "^docs/")
        # From there, the root is one folder up, and every page and picture stays where it is.
        set(place "\\.\\./")
        string(REGEX REPLACE "\\[([^]\n]*)\\]\\((windows-reports/[^)]*|[^):/]*\\.(json|tsv|sh))\\)" "\\1" text "${text}")
    endif()
    set(gone "src|include|tests|tools|plugins|bindings|cmake|scripts|fuzz|bench|packaging|\\.github|CMakeLists\\.txt|CMakePresets\\.json|run|test|package")
    string(REGEX REPLACE "\\[([^]]*)\\]\\(${place}(${gone})([/#][^)]*)?\\)" "\\1" text "${text}")
    file(WRITE ${pages_dir}/${page} "${text}")
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/${page})
endforeach()
install(DIRECTORY ${pages_dir}/ DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/docs/pictures DESTINATION ${CMAKE_INSTALL_DOCDIR}/docs)
install(FILES ${PROJECT_SOURCE_DIR}/LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/examples DESTINATION ${CMAKE_INSTALL_DOCDIR}
    PATTERN CMakeLists.txt EXCLUDE PATTERN "make*" EXCLUDE)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/packaging/hello DESTINATION ${CMAKE_INSTALL_DOCDIR}/examples)
