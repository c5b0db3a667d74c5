# Windows binaries with the binary interface of Microsoft's compilers, without these: by clang and lld-link, against
# import libraries that llvm-dlltool makes. Objects are freestanding; they declare what they use of the system.
find_program(CLANG_EXECUTABLE NAMES clang clang-14 clang-16 clang-19)
find_program(LLD_LINK_EXECUTABLE NAMES lld-link lld-link-14 lld-link-16 lld-link-19)
find_program(LLVM_DLLTOOL_EXECUTABLE NAMES llvm-dlltool llvm-dlltool-14 llvm-dlltool-16 llvm-dlltool-19)
set(VORLUND_HAS_MICROSOFT FALSE)
if(CLANG_EXECUTABLE AND LLD_LINK_EXECUTABLE AND LLVM_DLLTOOL_EXECUTABLE)
    set(VORLUND_HAS_MICROSOFT TRUE)
endif()
if(CMAKE_SIZEOF_VOID_P EQUAL 8)
    set(VORLUND_MICROSOFT_TARGET x86_64-pc-windows-msvc)
    set(VORLUND_MICROSOFT_MACHINE i386:x86-64)
else()
    set(VORLUND_MICROSOFT_TARGET i686-pc-windows-msvc)
    set(VORLUND_MICROSOFT_MACHINE i386)
endif()

# vorlund_add_import_library(<output.lib> <file.def> <file.dll>): the import library of that DLL for Microsoft's linkers, as
# a file that others depend on. The definition has the names as 32-bit Windows decorates functions that are __stdcall; the
# DLL exports them without.
function(vorlund_add_import_library output definition dll)
    get_filename_component(title ${output} NAME_WE)
    get_filename_component(folder ${output} DIRECTORY)
    file(READ ${definition} names)
    if(CMAKE_SIZEOF_VOID_P EQUAL 8)
        string(REGEX REPLACE "@[0-9]+" "" names "${names}")
    endif()
    set(own ${CMAKE_CURRENT_BINARY_DIR}/${title}.microsoft.def)
    file(CONFIGURE OUTPUT ${own} CONTENT "${names}" @ONLY)
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${definition})
    add_custom_command(OUTPUT ${output}
        COMMAND ${CMAKE_COMMAND} -E make_directory ${folder}
        COMMAND ${LLVM_DLLTOOL_EXECUTABLE} -m ${VORLUND_MICROSOFT_MACHINE} -k -D ${dll} -d ${own} -l ${output}
        DEPENDS ${own}
        VERBATIM)
endfunction()

# vorlund_add_microsoft(<name> <output> <source in C> [DEFINITION <file.def>] [LIBRARIES <file.lib>...]
#                       [INCLUDES <folder>...] [DEPENDS <file>...]):
# a library with a DEFINITION, or a console program that begins at start(), as the target <name>.
function(vorlund_add_microsoft name output source)
    cmake_parse_arguments(PARSE_ARGV 3 arg "" "DEFINITION" "LIBRARIES;INCLUDES;DEPENDS")
    set(work ${CMAKE_CURRENT_BINARY_DIR}/${name})
    set(link /nodefaultlib /opt:ref /timestamp:0)
    if(CMAKE_SIZEOF_VOID_P EQUAL 4)
        list(APPEND link /safeseh:no)
    endif()
    if(arg_DEFINITION)
        list(APPEND link /dll /noentry /def:${arg_DEFINITION} /implib:${work}/${name}.lib)
    else()
        list(APPEND link /subsystem:console /entry:start)
    endif()
    list(TRANSFORM arg_INCLUDES PREPEND -I)
    get_filename_component(folder ${output} DIRECTORY)
    add_custom_command(OUTPUT ${output}
        COMMAND ${CMAKE_COMMAND} -E make_directory ${work} ${folder}
        COMMAND ${CLANG_EXECUTABLE} --target=${VORLUND_MICROSOFT_TARGET} -ffreestanding -std=c99 -O2 -Wall -Wextra
            ${arg_INCLUDES} -c ${source} -o ${work}/${name}.obj
        COMMAND ${LLD_LINK_EXECUTABLE} ${link} /out:${output} ${work}/${name}.obj ${arg_LIBRARIES}
        DEPENDS ${source} ${arg_DEFINITION} ${arg_LIBRARIES} ${arg_DEPENDS}
        VERBATIM)
    add_custom_target(${name} ALL DEPENDS ${output})
endfunction()
