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

# vorlund_add_microsoft(<name> <output> <source in C> [DEFINITION <file.def>] [IMPORTS <library.def>...]
#                       [INCLUDES <folder>...] [DEPENDS <file>...]):
# a library with a DEFINITION, or a console program that begins at start(), as the target <name>. An import library is
# made from each IMPORTS, whose functions are __stdcall.
function(vorlund_add_microsoft name output source)
    cmake_parse_arguments(PARSE_ARGV 3 arg "" "DEFINITION" "IMPORTS;INCLUDES;DEPENDS")
    set(work ${CMAKE_CURRENT_BINARY_DIR}/${name})
    set(commands "")
    set(link /nodefaultlib /opt:ref /timestamp:0)
    if(CMAKE_SIZEOF_VOID_P EQUAL 4)
        list(APPEND link /safeseh:no)
    endif()
    if(arg_DEFINITION)
        list(APPEND link /dll /noentry /def:${arg_DEFINITION})
    else()
        list(APPEND link /subsystem:console /entry:start)
    endif()
    foreach(import IN LISTS arg_IMPORTS)
        get_filename_component(title ${import} NAME_WE)
        list(APPEND commands COMMAND ${LLVM_DLLTOOL_EXECUTABLE} -m ${VORLUND_MICROSOFT_MACHINE} -k
            -d ${import} -l ${work}/${title}.lib)
        list(APPEND link ${work}/${title}.lib)
    endforeach()
    list(TRANSFORM arg_INCLUDES PREPEND -I)
    get_filename_component(folder ${output} DIRECTORY)
    add_custom_command(OUTPUT ${output}
        COMMAND ${CMAKE_COMMAND} -E make_directory ${work} ${folder}
        ${commands}
        COMMAND ${CLANG_EXECUTABLE} --target=${VORLUND_MICROSOFT_TARGET} -ffreestanding -std=c99 -O2 -Wall -Wextra
            ${arg_INCLUDES} -c ${source} -o ${work}/${name}.obj
        COMMAND ${LLD_LINK_EXECUTABLE} ${link} /out:${output} ${work}/${name}.obj
        DEPENDS ${source} ${arg_DEFINITION} ${arg_IMPORTS} ${arg_DEPENDS}
        VERBATIM)
    add_custom_target(${name} ALL DEPENDS ${output})
endfunction()
