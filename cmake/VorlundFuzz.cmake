# vorlund_fuzzer(<name> [INTERNAL] [WATCHED]): the fuzz target fuzz_<name> from fuzz_<name>.cpp, which defines
# LLVMFuzzerTestOneInput. In the build tree of the linux-fuzz preset it is a libFuzzer binary over the instrumented
# static library; everywhere else a small driver replays the corpus folders given, against the shared library
# (INTERNAL: against the static one, for targets that need what is not exported), so that targets never rot. libFuzzer
# looks at the branches of the library alone, or also at those of the target (WATCHED): where the target decides which
# operations there are, or has inline code of the library in it. Models of parsers would only take time.
function(vorlund_fuzzer name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "INTERNAL;WATCHED" "" "")
    set(target fuzz_${name})
    add_executable(${target} ${target}.cpp)
    target_link_libraries(${target} PRIVATE vorlund_build vorlund_warnings)
    target_include_directories(${target} PRIVATE ${PROJECT_SOURCE_DIR}/tests)
    if("fuzzer-no-link" IN_LIST VORLUND_SANITIZE)
        target_link_libraries(${target} PRIVATE vorlund_internal)
        target_link_options(${target} PRIVATE -fsanitize=fuzzer)
        target_compile_options(${target} PRIVATE
            $<IF:$<BOOL:${arg_WATCHED}>,-fno-sanitize-coverage=trace-cmp,-fno-sanitize=fuzzer-no-link>)
    else()
        target_sources(${target} PRIVATE replay_main.cpp)
        if(arg_INTERNAL)
            target_link_libraries(${target} PRIVATE vorlund_internal)
        else()
            target_link_libraries(${target} PRIVATE Vorlund::vorlund)
        endif()
        if(PROJECT_IS_TOP_LEVEL)
            vorlund_add_check(corpus.${name} ${target} fuzz/corpus/${name})
        endif()
    endif()
    set_property(GLOBAL APPEND PROPERTY VORLUND_FUZZERS ${name})
endfunction()

# Writes the names of the fuzz targets, one a line, where the test script reads them.
function(vorlund_list_fuzzers)
    get_property(names GLOBAL PROPERTY VORLUND_FUZZERS)
    list(JOIN names "\n" lines)
    file(WRITE ${PROJECT_BINARY_DIR}/fuzzers.txt "${lines}\n")
endfunction()

# vorlund_unwatched(<regex>...): libFuzzer does not look at the branches of the library's sources whose paths match.
function(vorlund_unwatched)
    if(NOT "fuzzer-no-link" IN_LIST VORLUND_SANITIZE)
        return()
    endif()
    get_target_property(sources vorlund_objects SOURCES)
    foreach(pattern IN LISTS ARGN)
        set(found ${sources})
        list(FILTER found INCLUDE REGEX "/src/vorlund/${pattern}")
        if(NOT found)
            message(FATAL_ERROR "No source of the library is ${pattern}")
        endif()
        set_property(SOURCE ${found} TARGET_DIRECTORY vorlund_objects
            APPEND PROPERTY COMPILE_OPTIONS -fno-sanitize=fuzzer-no-link)
    endforeach()
endfunction()
