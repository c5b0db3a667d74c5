# shellcheck shell=bash disable=SC2154
# What ./run --bench does before scripts/bench.py measures: packages, builds, a display and a Wine prefix. Sourced by ./run,
# with setup.sh, build.sh and wine.sh.

# bench_build PRESET [OPTION...]: a tree of its own for the benchmarks, without tests.
bench_build() {
    local preset=$1 log=$root/build/logs/bench-$1.log
    shift
    echo "vorlund: building the benchmarks for $preset, log in $log" >&2
    (cd "$root" && vorlund_build "$preset" "build/bench-$preset" -DVORLUND_BUILD_BENCH=ON -DVORLUND_BUILD_TESTS=OFF \
        -DVORLUND_BUILD_FUZZ=OFF -DVORLUND_BUILD_EXAMPLES=OFF "$@") >"$log" 2>&1 && return
    tail -n 30 "$log" >&2
    return 1
}

# The libraries for Windows that can be had; Google Benchmark must be there.
bench_build_win32() {
    local made row plugin set folder
    local -a options=()
    made=$("$root/scripts/codecs.sh" win32 benchmark 2>"$root/build/logs/bench-win32-benchmark.log") || return
    options+=("-Dbenchmark_DIR=$made/lib/cmake/benchmark" -DVORLUND_WITH_IMAGE=OFF -DVORLUND_WITH_MEASURE=OFF)
    for row in "sndfile sounds VORLUND_CODECS_DIR" "resample rates VORLUND_RATES_DIR"; do
        read -r plugin set folder <<<"$row"
        if made=$("$root/scripts/codecs.sh" win32 "$set" 2>"$root/build/logs/bench-win32-$set.log"); then
            options+=("-D$folder=$made")
        else
            options+=("-DVORLUND_WITH_${plugin^^}=OFF")
        fi
    done
    bench_build win32 "${options[@]}"
}

vorlund_bench() {
    local log=$root/build/logs/setup.log argument has_wine=1 status
    local -a found=()
    mkdir -p "$root/build/logs"
    for argument; do
        [[ $argument != --no-wine ]] || has_wine=0
        if [[ $argument == -h || $argument == --help ]]; then exec python3 "$root/scripts/bench.py" --help; fi
    done
    export LC_ALL=C.UTF-8
    vorlund_require "$log" bench-linux || return
    vorlund_require_each "$log" bench-peers
    bench_build linux || return
    trap 'vorlund_wine_stop >/dev/null 2>&1' EXIT
    unset DISPLAY
    vorlund_display_start "$root/build/logs/bench-xvfb.log" || echo "vorlund: no display, so no rows of windows" >&2
    if ((has_wine)); then
        if vorlund_require "$log" bench-win32 && bench_build_win32; then
            export WINEARCH=win32
            vorlund_wine_env "$root/build/wine-bench"
            vorlund_wine_prefix >"$root/build/logs/wine-bench.log" 2>&1 && found+=(--win32 "$root/build/bench-win32")
        fi
        ((${#found[@]})) || echo "vorlund: going on without the Windows programs" >&2
    fi
    (cd "$root" && scripts/bench.py --linux build/bench-linux "${found[@]}" \
        --version "$(git describe --tags --always --dirty 2>/dev/null || echo unknown)" "$@")
    status=$?
    # The page may have new figures.
    (cd "$root" && scripts/plots.py) || status=1
    return "$status"
}
