# shellcheck shell=bash
# What ./test does for one target: build, run the test programs whole, and the extra steps that gtest does not
# see. Every step ends in count(), and finish() prints the sum. Sourced by ./test, in the root of the repository.

# The caller sets $logs, the folder of the logs, $all, not empty when the run may take longer, and $whole, not empty when
# every target is built and tested whole.
: "${logs:=build/logs}"

# The targets of which a run of all targets takes a part alone: the library, and of the tests what the processor, the word
# size, the system or the sanitizer may change.
part_targets=(linux-tsan win64 linux-arm64 linux32-asan)
# And those that a longer run takes whole.
part_targets_unless_all=(linux-asan)
part_programs=(vorlund_smoke vorlund_part_tests vorlund_c_tests fuzz/all)
# Of the sanitizers the inner suites too; of the others, which are released, what users have.
part_programs_sanitized=(vorlund_internal_part_tests vorlund_soak)
part_programs_released=(vorlund_real_files examples/all)
part_programs_windows=(vorlund_windows_names)

total_passed=0
total_failed=0
declare -a rows=()
# The shells of the test programs that are running, by name.
declare -A runs=()

# Longest run of one test program, in seconds: a hang fails instead of blocking. The emulator takes up to ten times as long.
program_limit=900
emulated_program_limit=3600

# count PASSED FAILED: adds to the sums of the target at hand.
count() {
    passed=$((passed + $1))
    failed=$((failed + $2))
}

# step NAME COMMAND...: an extra step, which counts as one test; its output goes to a log of its own.
step() {
    local name=$1 log=$logs/$target-${1// /-}.log began=$SECONDS
    shift
    if "$@" >"$log" 2>&1; then
        count 1 0
    else
        count 0 1
        complain "$name" "$log"
    fi
    note_time "$name" "$began"
}

# note_time SUITE BEGAN: a line of build/logs/times.txt, from which docs/test-times.md is kept.
note_time() {
    printf '%-14s %-24s %4d s\n' "$target" "$1" $((SECONDS - $2)) >>"$logs/times.txt"
}

# complain WHAT LOG: one line that says what failed and where to read on, and the end of the log.
complain() {
    echo "FAILED $target: $1 (log: $2)"
    tail -n 15 "$2" | sed 's/^/    | /'
}

# find_launcher: what comes before a program of the target, and how long it may take: launcher and limit, of the caller.
find_launcher() {
    limit=$program_limit
    case $target in
    win*) target_launcher wine "$folder" ;;
    *asan | *tsan | *fuzz) target_launcher sanitized "$folder" ;;
    linux-arm64)
        limit=$((limit > emulated_program_limit ? limit : emulated_program_limit))
        target_launcher emulated "$folder"
        ;;
    *) target_launcher native "$folder" ;;
    esac
}

# on_target COMMAND...: runs a program of the target, in the way that the target needs.
on_target() {
    local -a launcher
    local limit
    find_launcher
    timeout -k 10 "$limit" "${launcher[@]}" "$@"
}

# not_built: ends the target at hand, of which there is no program to run.
not_built() {
    count 0 1
    complain "it could not be built" "$logs/$target-build.log"
    row "not built"
}

# build_or_end [OPTION...] [-- ARGUMENT...]: builds the target at hand, as vorlund_build does; one that cannot be built
# ends here.
build_or_end() {
    vorlund_build "$target" "$folder" "$@" >"$logs/$target-build.log" 2>&1 && return
    not_built
    return 1
}

# A program that the emulator runs is a file that it reads, and nothing that the system guards; it has no filter of system
# calls, without which no process is isolated; and a shell of this machine cannot start the program by itself.
emulator_left_out='OpenFailurePosix.AProgramThatRuns:IsolatedDecoder.*:IsolatedProcess.*:Play.DecodersApart*'
emulator_left_out+=':IsolatedDecoderOdd.SourcesOfEveryKind:IsolatedDecoderOdd.ClosingAndFlushing*'
emulator_left_out+=':PlayOnTerminal.ControlZ*:PlayOnTerminal.InTheBackground*'

# left_out NAME: the cases of a test program that do not run on the target, as gtest's filter has them.
left_out() {
    case $target-$1 in
    linux-coverage-*) echo "$coverage_skipped" ;;
    # One thread computes over all inputs for minutes, which the other targets do too; here threads are looked at.
    linux-tsan-vorlund_tests) echo "StringModel.*" ;;
    linux-arm64-vorlund_tests | linux-arm64-vorlund_part_tests)
        echo "$emulator_left_out"
        ;;
    linux-arm64-vorlund_sndfile_tests) echo "SndfileIsolated.*:SndfileProgram.DecodesApart" ;;
    # Wine does not end the process: docs/test-times.md.
    win64-vorlund_tests) echo "Rows/Unload.Reports/lifecycle_child_device_store_open" ;;
    linux-tsan-vorlund_internal_tests | linux-tsan-vorlund_internal_part_tests)
        echo "PathCodec.Every*:Pairs/PcmConversions.*:Rows/WavDecoderMemoryTable.*:Sets/PcmMixes.*:Sets/TextKernels.*:TextFormatModel.*"
        ;;
    esac
}

# gtest_programs NAME...: runs test programs at the same time and adds their cases.
gtest_programs() {
    local name status
    for name in "$@"; do
        run_gtest "$name" &
        runs[$name]=$!
    done
    for name in "$@"; do
        status=0
        wait "${runs[$name]}" || status=$?
        count_gtest "$name" "$status"
    done
    runs=()
}

# Ends what gtest_programs has started. Each is a shell that waits for `timeout`, which passes the signal on.
stop_programs() {
    local shell child
    for shell in "${runs[@]}"; do
        for child in $(cat "/proc/$shell/task/$shell/children" 2>/dev/null); do kill "$child" || true; done
    done
}

run_gtest() {
    local name=$1 xml=$logs/$target-$1.xml began=$SECONDS status=0 out
    out=$(left_out "$name")
    rm -f "$xml"
    on_target "$folder/bin/$name$exe" "--gtest_output=xml:$xml" "--gtest_filter=*${out:+-$out}" \
        >"$logs/$target-$name.log" 2>&1 </dev/null || status=$?
    note_time "$name" "$began"
    return "$status"
}

# count_gtest NAME STATUS: adds the cases of a test program that has ended.
count_gtest() {
    local name=$1 status=$2 log=$logs/$target-$1.log xml=$logs/$target-$1.xml
    local ran=0 bad=0 skipped=0 ended=0
    if grep -q '</testsuites>' "$xml" 2>/dev/null; then
        ended=1
        ran=$(xml_sum tests "$xml" '<testsuites ')
        bad=$(xml_sum failures "$xml" '<testsuites ')
        skipped=$(($(xml_sum skipped "$xml" '<testsuite ') + $(xml_sum disabled "$xml" '<testsuites ')))
    else
        # It ended early: what its output tells, and the case that it did not survive.
        ran=$(grep -cE '^\[ +(OK|FAILED|SKIPPED) +\] .*\([0-9]+ ms\)' "$log")
        bad=$(grep -cE '^\[ +FAILED +\] .*\([0-9]+ ms\)' "$log")
        skipped=$(grep -cE '^\[ +SKIPPED +\] .*\([0-9]+ ms\)' "$log")
    fi
    count $((ran - bad - skipped)) "$bad"
    skipped_total=$((skipped_total + skipped))
    if ((bad)); then
        echo "FAILED $target: $name, $bad of $ran cases (log: $log)"
        grep -oE '^\[ +FAILED +\] [^ ,]+' "$log" | sort -u | head -n 40 | sed 's/^/    /'
    fi
    if ((!ended || (status && !bad))); then
        count 0 1
        [[ $status == 124 || $status == 137 ]] && echo "its time limit was reached" >>"$log"
        complain "$name ended with status $status after $ran cases" "$log"
    elif ((ran == 0)); then
        count 0 1
        complain "$name ran no case" "$log"
    fi
}

# xml_sum ATTRIBUTE FILE ELEMENT: the sum of an attribute over all elements.
xml_sum() {
    grep -F "$3" "$2" | grep -oE " $1=\"[0-9]+\"" | grep -oE '[0-9]+' | { local sum=0 n; while read -r n; do sum=$((sum + n)); done; echo $sum; }
}

# Files that other programs wrote, against what other programs read in them.
real_files() {
    mkdir -p "$folder/realfiles" && tests/realfiles/prepare.sh "$folder/realfiles" &&
        on_target "$folder/bin/vorlund_real_files$exe" "$folder/realfiles"
}

replay_corpus() { on_target "$folder/bin/fuzz_$1$exe" "fuzz/corpus/$1"; }

# Runs an example and compares what it prints with what it should.
example() {
    local -a launcher
    local limit
    find_launcher
    tests/examples/check.py "$folder" "$1" -- timeout -k 10 "$limit" "${launcher[@]}"
}

# ctest has an entry for every case of the test programs and more, and its entries work.
ctest_entries() {
    local cases=0 entries name
    for name in vorlund_tests vorlund_internal_tests; do
        cases=$((cases + $(on_target "$1/bin/$name" --gtest_list_tests | grep -c '^  ')))
    done
    entries=$(ctest --test-dir "$1" -N | sed -n 's/^Total Tests: //p')
    echo "$entries entries, $cases of them cases"
    ((entries > cases)) &&
        ctest --test-dir "$1" -R '^(Version\.|smoke$|example\.)' --no-tests=error --output-on-failure
}

# start_builds TARGET...: builds the targets one after the other in the background, so that the next one is built while
# one is tested. The status and the seconds of each go to a file.
start_builds() {
    local target
    for target in "$@"; do rm -f "$logs/$target-built"; done
    # With a process group of its own, which can be ended as a whole.
    set -m
    build_targets "$@" &
    builder=$!
    set +m
}

# takes_part TARGET: whether a part of the target is all that this run takes.
takes_part() {
    local -a parts=("${part_targets[@]}")
    [[ -n ${all-} ]] || parts+=("${part_targets_unless_all[@]}")
    [[ -z ${whole-} && " ${parts[*]} " == *" $1 "* ]]
}

# is_sanitized TARGET: whether it is built to be tested alone.
is_sanitized() { [[ $1 == *-[at]san ]]; }

build_targets() {
    local target start status
    local -a options
    # What is tested meanwhile has its time limits.
    renice -n 10 "$BASHPID" >/dev/null
    for target in "$@"; do
        start=$SECONDS
        status=0
        # What a target should have must not be left out without a word.
        options=(-DVORLUND_REQUIRE_ALL=ON -DVORLUND_JOIN_TESTS=ON)
        # Nothing is read in advance on one target, so that each file shows that it includes what it needs.
        [[ $target == linux ]] && options+=(-DVORLUND_DEBUG_INFO=ON) || options+=(-DVORLUND_PRECOMPILE=ON)
        if takes_part "$target"; then
            local -a built=("${part_programs[@]}")
            if is_sanitized "$target"; then
                built+=("${part_programs_sanitized[@]}")
            else
                # Without the plug-ins whose libraries are made for the target.
                options+=(-DVORLUND_WITH_{AUDIO,IMAGE,MEASURE,RESAMPLE,SNDFILE}=OFF)
                built+=("${part_programs_released[@]}")
            fi
            [[ $target != win* ]] || built+=("${part_programs_windows[@]}")
            options+=(-- --target "${built[@]}")
        elif [[ $target == win* || $target == linux-arm64 ]]; then
            add_codecs
        fi
        vorlund_build "$target" "build/$target" "${options[@]}" >"$logs/$target-build.log" 2>&1 || status=$?
        echo "$status $((SECONDS - start))" >"$logs/$target-built.new"
        mv "$logs/$target-built.new" "$logs/$target-built"
    done
}

# The libraries of plug-ins for a target that has no packages of them; without them it is whole otherwise.
add_codecs() {
    local plugin set folder made
    local -a script
    while read -r plugin set folder; do
        script=(scripts/codecs.sh "$target" "$set")
        [[ $target == win* ]] || script=(scripts/arm64-libraries.sh)
        if made=$("${script[@]}" 2>"$logs/$target-$set.log"); then
            options+=("-DVORLUND_WITH_${plugin^^}=ON" "-D$folder=$made")
        else
            echo "$target: without the plug-in $plugin, because its libraries cannot be had (log: $logs/$target-$set.log)"
            options+=("-DVORLUND_WITH_${plugin^^}=OFF")
        fi
    done <<ROWS
audio sound-output VORLUND_SOUND_OUTPUT_DIR
image pictures VORLUND_PICTURES_DIR
measure levels VORLUND_LEVELS_DIR
resample rates VORLUND_RATES_DIR
sndfile sounds VORLUND_CODECS_DIR
ROWS
}

stop_builds() {
    [[ -z ${builder-} ]] || kill -- "-$builder" 2>/dev/null || true
}

test_target() {
    target=$1
    local folder=build/$target exe="" passed=0 failed=0 skipped_total=0 start status=1 built=0 name program
    local -a programs=(vorlund_tests vorlund_internal_tests)
    [[ $target == win* ]] && exe=.exe
    echo "== $target"
    while [[ ! -e $logs/$target-built ]] && kill -0 "$builder" 2>/dev/null; do sleep 0.2; done
    [[ ! -e $logs/$target-built ]] || read -r status built <"$logs/$target-built"
    if ((status)); then
        not_built
        return
    fi
    start=$SECONDS

    step smoke on_target "$folder/bin/vorlund_smoke$exe" examples/data/strings.wav
    if [[ $target == win* ]]; then step "windows names" on_target "$folder/bin/vorlund_windows_names$exe"; fi
    if takes_part "$target"; then
        programs=(vorlund_part_tests vorlund_c_tests)
        if is_sanitized "$target"; then
            programs+=(vorlund_internal_part_tests)
        fi
    else
        # The plug-ins that could be built.
        for program in vorlund_audio_tests vorlund_c_tests vorlund_image_tests vorlund_measure_tests vorlund_resample_tests vorlund_sndfile_tests vorlund_system_codecs_tests vorlund_visual_tests vorlund_y4m_tests; do
            [[ ! -e $folder/bin/$program$exe ]] || programs+=("$program")
        done
    fi
    gtest_programs "${programs[@]}"
    [[ ! -e $folder/bin/vorlund_c_plain ]] || step "C by Clang" on_target "$folder/bin/vorlund_c_plain"
    # What the tests of the encoders have written.
    [[ ! -d $folder/bin/sndfile-encoded ]] || step encoded tests/plugins/sndfile/check_encoded.py "$folder/bin/sndfile-encoded"
    # The emulator's own memory, which grows with the code that it translates, is that of the process.
    if is_sanitized "$target" || ! takes_part "$target" && [[ $target != linux-arm64 ]]; then soak_steps; fi
    while read -r name; do
        [[ -z $name ]] || step "corpus $name" replay_corpus "$name"
    done <"$folder/fuzzers.txt"
    # The release builds, as users have them.
    if ! is_sanitized "$target"; then
        while read -r name; do
            step "example $name" example "$name"
        done <"$folder/examples.txt"
        step "real files" real_files
        step exports scripts/exports.sh --check "$target" "$folder"
        step "C interface" tests/bindings/c/check_interface.py "$target" "$folder"
    fi
    if takes_part "$target"; then
        row "a part, built in $built s, tested in $((SECONDS - start)) s"
        return
    fi
    if ! is_sanitized "$target"; then
        step install tests/install/check.sh "$target" "$folder"
    fi
    if [[ $target == linux || $target == linux-arm64 || $target == win64 ]]; then
        step wheel tests/bindings/python/check_wheel.sh "$target" "$folder"
    fi
    if [[ $target == win* ]]; then step kit tests/kit/check.sh "$target" "$folder"; fi
    # The same headers in both word sizes, and the table of imports is that of the product.
    if [[ $target == linux || $target == win32 ]]; then step headers scripts/headers.sh "$target" "$folder" ${all:+each}; fi
    if [[ $target == win32 ]]; then
        step imports tests/abi/check_imports.py "$folder"
        step "page about windows" tests/docs/check_blocks.py "$folder" docs/windows-mingw.md
    fi
    if [[ $target == linux ]]; then
        step layers tests/abi/check_layers.py
        step failures tests/abi/check_failures.py
        step pages tests/docs/check_pages.py
        step readme tests/docs/check_readme.py "$folder"
        step python tests/bindings/python/check.sh "$folder"
        step "folders of examples" tests/examples/check.py --folders
        step comfort tests/comfort/check_examples.py "$folder"
        step "program pages" tests/cli/check_program_pages.py "$folder"
        step "code in pages" tests/docs/check_blocks.py "$folder"
        step site scripts/site.sh
        step "test names" tests/check_names.py
        step "benchmarks' table" tests/bench/check_bench.py
        step plots tests/docs/check_plots.py
        step abi scripts/abi.sh --check "$folder"
        step format scripts/format.sh
        step tidy scripts/tidy.sh "$folder"
        step ctest ctest_entries "$folder"
    fi
    row "built in $built s, tested in $((SECONDS - start)) s"
}

# Runs every fuzz target for some minutes, one after the other, and keeps the account (scripts/fuzz.py). New inputs are
# kept in the build folder; inputs that fail, in its folder findings.
fuzz_target() {
    target=linux-fuzz
    local folder=build/linux-fuzz passed=0 failed=0 skipped_total=0 start=$SECONDS name
    local -a names=()
    echo "== $target"
    build_or_end || return
    mapfile -t names < <(grep . "$folder/fuzzers.txt")
    for name in "${names[@]}"; do
        if scripts/fuzz.py run "$1" "$name" >"$logs/$target-$name.log" 2>&1; then
            count 1 0
            echo "   $(tail -n 1 "$logs/$target-$name.log")"
        else
            count 0 1
            complain "fuzz_$name, the input is in $folder/findings" "$logs/$target-$name.log"
        fi
    done
    row "fuzzed for $1 min each, $((SECONDS - start)) s"
}

# row NOTE: ends a target.
row() {
    local skipped=""
    ((skipped_total)) && skipped=", $skipped_total skipped"
    rows+=("$(printf '%-14s %5d passed %5d failed   %s' "$target" "$passed" "$failed" "$1$skipped")")
    echo "${rows[-1]}"
    total_passed=$((total_passed + passed))
    total_failed=$((total_failed + failed))
}

finish() {
    echo
    printf '%s\n' "${rows[@]}"
    echo "$total_passed passed, $total_failed failed"
    ((total_failed == 0 && total_passed > 0))
}
