# shellcheck shell=bash
# ./test --faults: every call that the system may refuse is refused, one after the other, on each target.
# Sourced by ./test after scripts/suites.sh, in the root of the repository.

# What a target runs. The thread sanitizer looks at threads only; Wine and the sanitizers are slow, so that there
# far calls of a long scenario are tried here and there.
faults_arguments() {
    case $1 in
    linux-tsan) echo "--quick audio events async-waits timers locks" ;;
    win* | *asan) echo "--quick" ;;
    esac
}

# faults_target TARGET: builds and runs one target; a row is a scenario with one kind of call.
faults_target() {
    target=$1
    local folder=build/$target exe="" passed=0 failed=0 skipped_total=0 start=$SECONDS status=0
    local log=$logs/$target-faults.log points
    local -a arguments=()
    [[ $target == win* ]] && exe=.exe
    echo "== $target"
    build_or_end -- --target vorlund_faults || return
    read -ra arguments <<<"$(faults_arguments "$target")"
    step "imports" on_target "$folder/bin/vorlund_faults$exe" --imports
    program_limit=7200 on_target "$folder/bin/vorlund_faults$exe" "${arguments[@]}" >"$log" 2>&1 </dev/null || status=$?
    count "$(grep -c '^ok ' "$log")" "$(grep -c '^FAILED ' "$log")"
    points=$(sed -n 's/ fault points\r\?$//p' "$log" | tail -n 1)
    if ((status)); then complain "faults ended with status $status" "$log"; fi
    if [[ -z $points ]]; then
        count 0 1
        points=0
    fi
    row "$points fault points in $((SECONDS - start)) s"
}
