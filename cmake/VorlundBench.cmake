# vorlund_bench(<name> <file>... [INTERNAL] [PEERS <library>...]): the benchmark program bench_<name>. Peers are
# libraries that it measures beside ours; an INTERNAL one looks inside, through the static build.
find_package(benchmark REQUIRED)

function(vorlund_bench name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "INTERNAL" "" "PEERS")
    set(target bench_${name})
    add_executable(${target} ${arg_UNPARSED_ARGUMENTS})
    target_link_libraries(${target} PRIVATE $<IF:$<BOOL:${arg_INTERNAL}>,vorlund_internal,Vorlund::vorlund>
        vorlund_build vorlund_warnings benchmark::benchmark ${arg_PEERS})
endfunction()
