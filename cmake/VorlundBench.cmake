# vorlund_bench(<name> <file>... [INTERNAL] [PEERS <peer>...]): the benchmark program bench_<name>. Peers are what it
# measures beside ours; an INTERNAL one looks inside, through the static build.
find_package(benchmark REQUIRED)

function(vorlund_bench name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "INTERNAL" "" "PEERS")
    set(target bench_${name})
    add_executable(${target} ${arg_UNPARSED_ARGUMENTS})
    target_link_libraries(${target} PRIVATE $<IF:$<BOOL:${arg_INTERNAL}>,vorlund_internal,Vorlund::vorlund>
        vorlund_build vorlund_warnings benchmark::benchmark)
    foreach(peer IN LISTS arg_PEERS)
        target_link_libraries(${target} PRIVATE $<TARGET_NAME_IF_EXISTS:peer_${peer}>)
    endforeach()
endfunction()

# vorlund_bench_peer(<peer> <target>): a library to compare with, if its target exists. Programs that name it get the
# library and the definition VORLUND_BENCH_<peer>; without it they leave its rows out.
function(vorlund_bench_peer peer library)
    if(TARGET ${library})
        add_library(peer_${peer} INTERFACE)
        target_link_libraries(peer_${peer} INTERFACE ${library})
        target_compile_definitions(peer_${peer} INTERFACE VORLUND_BENCH_${peer})
    endif()
endfunction()
