# Import libraries for linkers that do not take those of GCC, such as lld-link: <name>.lib beside lib<name>.dll.a.
find_program(VORLUND_DLLTOOL NAMES llvm-dlltool llvm-dlltool-14)
mark_as_advanced(VORLUND_DLLTOOL)
if(NOT VORLUND_DLLTOOL)
    vorlund_note_left_out("import libraries (.lib) for other linkers" "no llvm-dlltool (Debian: llvm)")
endif()
if(CMAKE_SIZEOF_VOID_P EQUAL 8)
    set(VORLUND_DLLTOOL_MACHINE i386:x86-64)
else()
    set(VORLUND_DLLTOOL_MACHINE i386)
endif()

# vorlund_install_import_library(<target>): made after the library, from the names that it exports.
function(vorlund_install_import_library target)
    if(NOT VORLUND_DLLTOOL)
        return()
    endif()
    get_target_property(name ${target} OUTPUT_NAME)
    if(NOT name)
        set(name ${target})
    endif()
    set(exports ${CMAKE_CURRENT_BINARY_DIR}/${name}-exports.def)
    set(library ${CMAKE_CURRENT_BINARY_DIR}/${name}.lib)
    target_link_options(${target} PRIVATE LINKER:--output-def,${exports})
    add_custom_command(TARGET ${target} POST_BUILD
        COMMAND ${VORLUND_DLLTOOL} -k -m ${VORLUND_DLLTOOL_MACHINE} -d ${exports} -D $<TARGET_FILE_NAME:${target}> -l ${library}
        BYPRODUCTS ${exports} ${library} VERBATIM)
    install(FILES ${library} DESTINATION ${CMAKE_INSTALL_LIBDIR})
endfunction()
