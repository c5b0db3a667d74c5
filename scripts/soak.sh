# shellcheck shell=bash
# How ./test soaks: a few seconds of vorlund_soak for each tested target, and long runs with ./test --soak. Sourced by
# ./test after scripts/suites.sh.

soak_results=tests/soak/results.tsv
soak_targets=(linux win32 linux-asan linux32-asan linux-tsan)

# soak_run SECONDS [OPTION...]: one run of the target at hand; its last line says what was done and seen.
soak_run() { soak_within $(($1 + 300)) --seconds "$@"; }

# soak_counts: the run by count that the program does by itself: a million decodes, ten thousand plug-ins and more.
soak_counts() { soak_within 1800; }

# soak_within LIMIT [OPTION...]
soak_within() {
    # What was given back must not count as held.
    ASAN_OPTIONS=$ASAN_OPTIONS:quarantine_size_mb=4 program_limit=$1 \
        on_target "$folder/bin/vorlund_soak$exe" "${@:2}"
}

# The opposite: a run that loses memory is noticed.
soak_leak() {
    local output
    output=$(soak_run 3 --leak 1000000)
    echo "$output"
    [[ $output == *grown* ]]
}

# soak_steps: what each tested target does of it.
soak_steps() {
    step soak soak_run 4
    [[ $target == linux* && $target != linux ]] || step "soak with a leak" soak_leak
}

# soak_note LOG: adds the outcome of a run to the log in the tree.
soak_note() {
    local line
    line=$(grep -a $'^decodes ' "$1" | tr -d '\r' | tail -n 1)
    [[ -n $line ]] || line="failed"
    [[ -e $soak_results ]] || printf 'target\trevision\tdate\toutcome\n' >"$soak_results"
    printf '%s\t%s\t%s\t%s\n' "$target" "$(git describe --always --dirty 2>/dev/null || echo unknown)" \
        "$(date -u +%Y-%m-%d)" "$line" >>"$soak_results"
}

# soak_all MINUTES TARGET...: builds and soaks each target for so long, and by count where that is cheap.
soak_all() {
    local minutes=$1 folder exe passed failed skipped_total
    shift
    for target in "$@"; do
        folder=build/$target exe="" passed=0 failed=0 skipped_total=0
        [[ $target == win* ]] && exe=.exe
        echo "== $target"
        build_or_end -- --target vorlund_soak || continue
        if [[ $target == linux ]]; then
            step "soak by count" soak_counts
            soak_note "$logs/$target-soak-by-count.log"
        fi
        step soak soak_run $((minutes * 60))
        soak_note "$logs/$target-soak.log"
        row "soaked for $minutes min: $(tail -n 1 "$soak_results" | cut -f 4-)"
    done
}
