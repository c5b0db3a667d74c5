# The compiler's runtime DLLs. They are linked dynamically, because exceptions cross vorlund.dll's border and need
# one unwinder per process; so they lie beside every program of the build tree and are installed with the library.
set(vorlund_runtime_names libstdc++-6.dll libwinpthread-1.dll)
if(CMAKE_SIZEOF_VOID_P EQUAL 8)
    list(APPEND vorlund_runtime_names libgcc_s_seh-1.dll)
else()
    list(APPEND vorlund_runtime_names libgcc_s_dw2-1.dll)
endif()

set(VORLUND_RUNTIME_DLLS "")
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
    list(APPEND VORLUND_RUNTIME_DLLS ${path})
    file(COPY_FILE ${path} ${program_dir}/${name} ONLY_IF_DIFFERENT)
endforeach()
