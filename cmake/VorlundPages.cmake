# Installs the pages and the examples: README.md with all that it links to. A link to what is not installed, such as a
# source file, becomes plain text.
set(pages_dir ${PROJECT_BINARY_DIR}/pages)
file(GLOB pages RELATIVE ${PROJECT_SOURCE_DIR}
    ${PROJECT_SOURCE_DIR}/*.md ${PROJECT_SOURCE_DIR}/docs/*.md ${PROJECT_SOURCE_DIR}/examples/*.md
    ${PROJECT_SOURCE_DIR}/examples/*/*.md)
string(JOIN "|" gone src include tests tools plugins bindings cmake scripts fuzz bench packaging "\\.github" windows-reports
    "CMakeLists\\.txt" "CMakePresets\\.json" run test package)
file(REMOVE_RECURSE ${pages_dir})
foreach(page IN LISTS pages)
    file(READ ${PROJECT_SOURCE_DIR}/${page} text)
    string(REGEX REPLACE "\\[([^]]*)\\]\\((\\.\\./)*(${gone})([/#][^)]*)?\\)" "\\1" text "${text}")
    file(WRITE ${pages_dir}/${page} "${text}")
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/${page})
endforeach()
install(DIRECTORY ${pages_dir}/ DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/docs/pictures DESTINATION ${CMAKE_INSTALL_DOCDIR}/docs)
install(FILES ${PROJECT_SOURCE_DIR}/LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/examples DESTINATION ${CMAKE_INSTALL_DOCDIR}
    PATTERN CMakeLists.txt EXCLUDE PATTERN "make*" EXCLUDE PATTERN "*.md" EXCLUDE)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/packaging/hello DESTINATION ${CMAKE_INSTALL_DOCDIR}/examples)
