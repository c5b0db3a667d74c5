# vorlund_bench(<name> <file>... [INTERNAL] [PEERS <peer>...]): the benchmark program bench_<name>, which ./run --bench finds
# by its name. Peers are what it measures beside ours. An INTERNAL one looks inside, through the static build, at what no
# user calls; it lies in bin/inner and has no rows in the table.
find_package(benchmark REQUIRED)
set(VORLUND_BENCH_MISSING ${CMAKE_BINARY_DIR}/bench-missing.txt)
file(WRITE ${VORLUND_BENCH_MISSING} "")

function(vorlund_bench name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "INTERNAL" "" "PEERS")
    set(target bench_${name})
    add_executable(${target} ${arg_UNPARSED_ARGUMENTS})
    target_link_libraries(${target} PRIVATE $<IF:$<BOOL:${arg_INTERNAL}>,vorlund_internal,Vorlund::vorlund>
        vorlund_build vorlund_warnings benchmark::benchmark)
    if(arg_INTERNAL)
        set_target_properties(${target} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin/inner)
    endif()
    set(missing "")
    foreach(peer IN LISTS arg_PEERS)
        if(TARGET peer_${peer})
            target_link_libraries(${target} PRIVATE peer_${peer})
        else()
            string(APPEND missing " ${peer}")
        endif()
    endforeach()
    string(TOLOWER "${missing}" missing)
    file(APPEND ${VORLUND_BENCH_MISSING} "${name}${missing}\n")
endfunction()

# vorlund_bench_peer(<peer> [<target>]): a library to compare with, if its target exists. Programs that name it get the
# library and the definition VORLUND_BENCH_<peer>; without it they leave its rows out.
function(vorlund_bench_peer peer)
    if(ARGC EQUAL 1 OR TARGET "${ARGV1}")
        add_library(peer_${peer} INTERFACE)
        target_link_libraries(peer_${peer} INTERFACE ${ARGN})
        target_compile_definitions(peer_${peer} INTERFACE VORLUND_BENCH_${peer})
    endif()
endfunction()

# vorlund_bench_headers(<peer> <header> <folder>): a peer of headers alone, of any system: the folder of that name beside or
# above the header is linked into a place of its own, where the building machine's other headers are not.
function(vorlund_bench_headers peer header folder)
    find_path(${peer}_HEADERS ${header} PATH_SUFFIXES eigen3 NO_CMAKE_FIND_ROOT_PATH)
    if(${peer}_HEADERS)
        set(place ${CMAKE_BINARY_DIR}/peers/${peer})
        file(MAKE_DIRECTORY ${place})
        file(CREATE_LINK ${${peer}_HEADERS}/${folder} ${place}/${folder} SYMBOLIC)
        add_library(headers_${peer} INTERFACE)
        target_include_directories(headers_${peer} SYSTEM INTERFACE ${place})
        vorlund_bench_peer(${peer} headers_${peer})
    endif()
endfunction()

# vorlund_bench_python(<name> <file> [PEERS <module>...]): a program in Python with rows, bin/bench_<name>, and the package for
# Python that it uses. Without an interpreter that can make the package there is none.
function(vorlund_bench_python name file)
    cmake_parse_arguments(PARSE_ARGV 2 arg "" "" "PEERS")
    foreach(interpreter IN ITEMS python3 /usr/bin/python3)
        execute_process(COMMAND ${interpreter} -c "import cffi, numpy, setuptools" RESULT_VARIABLE result ERROR_QUIET)
        if(result EQUAL 0)
            set(python ${interpreter})
            break()
        endif()
    endforeach()
    if(NOT python)
        message(STATUS "bench_${name} is left out: no Python has cffi, numpy and setuptools")
        return()
    endif()
    set(site ${CMAKE_BINARY_DIR}/python-site)
    set(script ${CMAKE_CURRENT_SOURCE_DIR}/${file})
    set(program ${CMAKE_BINARY_DIR}/bin/bench_${name})
    file(WRITE ${program} "#!/bin/sh\nPYTHONPATH='${site}' exec ${python} '${script}' \"$@\"\n")
    file(CHMOD ${program} PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
    file(GLOB_RECURSE sources CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/bindings/python/*)
    add_custom_command(OUTPUT ${site}.stamp
        COMMAND ${PROJECT_SOURCE_DIR}/scripts/python-site.sh ${CMAKE_BINARY_DIR} ${site}
        COMMAND ${CMAKE_COMMAND} -E touch ${site}.stamp
        DEPENDS vorlund_c ${sources} VERBATIM)
    add_custom_target(bench_${name} ALL DEPENDS ${site}.stamp)
    set(missing "")
    foreach(peer IN LISTS arg_PEERS)
        execute_process(COMMAND ${python} -c "import ${peer}" RESULT_VARIABLE result ERROR_QUIET)
        if(NOT result EQUAL 0)
            string(APPEND missing " ${peer}")
        endif()
    endforeach()
    file(APPEND ${VORLUND_BENCH_MISSING} "${name}${missing}\n")
endfunction()
