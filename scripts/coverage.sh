# shellcheck shell=bash
# ./test --coverage: which lines and branches of the library the tests run. Sourced by ./test, in the root of the
# repository; step, gtest_program, row and complain are in suites.sh.

# Tests that this build cannot pass: limits of time for a library that is not optimised, and a process without any
# memory, which has none for writing its counts either. One whose children may write some bytes only: they would cut off
# the files with everybody's counts. And those that take the same lines through very many inputs, which the other targets
# do: with counted lines they take minutes each.
coverage_skipped='Bounds.*:WavFiles.*InTime:*ProgramOutOfMemory.*:WriteFailuresPosix.FullDisk*'
coverage_skipped+=':MediaClock.ByTheNullOutput*:PathCodec.Every*:Rows/WavDecoderMemoryTable.*:WavPeers.ReadEverySample'

# What is built: no program that runs without the library's own tests.
coverage_programs=(vorlund_smoke vorlund_tests vorlund_internal_tests vorlund_soak vorlund_faults vorlund_real_files fuzz/all)

# Compiler-made branches are left out: those of exceptions, and those of lines without code of their own. What is left of
# them, scripts/coverage_conditions.py takes out.
coverage_count() {
    local report=$folder/coverage
    rm -rf "$report" && mkdir -p "$report" &&
        gcovr --root . --filter 'src/' -j "$(nproc)" --exclude-throw-branches --exclude-unreachable-branches \
            --json "$report/coverage.json" --html-details "$report/index.html" "$folder" &&
        scripts/coverage.py "$report/coverage.json"
}

# coverage_target: builds, runs what uses the library, and compares with the goals.
coverage_target() {
    target=linux-coverage
    local folder=build/$target exe="" passed=0 failed=0 skipped_total=0 start=$SECONDS name
    echo "== $target"
    # Not joined: whoever looks for what no test reaches changes one suite after the other.
    build_or_end -DVORLUND_REQUIRE_ALL=ON -DVORLUND_JOIN_TESTS=OFF -- --target "${coverage_programs[@]}" || return
    # The counts of former runs.
    find "$folder" -name '*.gcda' -delete
    # A child that may not write files does not write its counts, and says so here instead of on its streams.
    local -x GCOV_ERROR_FILE=$PWD/$folder/gcov-errors.txt
    rm -f "$GCOV_ERROR_FILE"
    step smoke on_target "$folder/bin/vorlund_smoke" examples/data/strings.wav
    program_limit=3600 gtest_programs vorlund_tests vorlund_internal_tests
    step soak soak_run 4
    # What the system refuses.
    program_limit=3600 step faults on_target "$folder/bin/vorlund_faults" --quick
    while read -r name; do
        [[ -z $name ]] || step "corpus $name" replay_corpus "$name"
    done <"$folder/fuzzers.txt"
    step "real files" real_files
    step coverage coverage_count
    cat "$logs/$target-coverage.log"
    row "$((SECONDS - start)) s; every line: $folder/coverage/index.html"
}
