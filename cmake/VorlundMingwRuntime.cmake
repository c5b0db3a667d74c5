# The compiler's runtime DLLs. They are linked dynamically, because exceptions cross vorlund.dll's border and need
# one unwinder per process; so they lie beside every program of the build tree and are installed with the library:
# without the compiler's debug information, which is most of them.
set(vorlund_runtime_names libstdc++-6.dll libwinpthread-1.dll)
if(CMAKE_SIZEOF_VOID_P EQUAL 8)
    list(APPEND vorlund_runtime_names libgcc_s_seh-1.dll)
else()
    list(APPEND vorlund_runtime_names libgcc_s_dw2-1.dll)
endif()

set(VORLUND_RUNTIME_DLLS "")
set(VORLUND_RUNTIME_SOURCES "")
set(program_dir ${CMAKE_RUNTIME_OUTPUT_DIRECTORY})
if(NOT program_dir)
    set(program_dir ${CMAKE_CURRENT_BINARY_DIR})
endif()
file(MAKE_DIRECTORY ${program_dir})
foreach(name IN LISTS vorlund_runtime_names)
    execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${name}
        OUTPUT_VARIABLE path OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
    # The compiler answers with the bare name for a file that it does not know.
    if(NOT IS_ABSOLUTE "${path}")
        find_file(VORLUND_RUNTIME_${name} ${name} PATHS ${CMAKE_FIND_ROOT_PATH} PATH_SUFFIXES lib bin
            NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH REQUIRED)
        mark_as_advanced(VORLUND_RUNTIME_${name})
        set(path ${VORLUND_RUNTIME_${name}})
    endif()
    file(REAL_PATH ${path} path)
    list(APPEND VORLUND_RUNTIME_SOURCES ${path})
    set(stripped ${program_dir}/${name})
    if(NOT EXISTS ${stripped} OR ${path} IS_NEWER_THAN ${stripped})
        # Which writes the time into the file that it makes.
        execute_process(COMMAND ${CMAKE_COMMAND} -E env SOURCE_DATE_EPOCH=0 ${CMAKE_STRIP} --strip-unneeded -o ${stripped} ${path} COMMAND_ERROR_IS_FATAL ANY)
    endif()
    list(APPEND VORLUND_RUNTIME_DLLS ${stripped})
endforeach()
