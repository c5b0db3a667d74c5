# shellcheck shell=bash
# How programs of a kind of target are run. Sourced by scripts/suites.sh and scripts/launch.sh.

# The sanitizers' runtimes: leaks count as failures, an impossible allocation returns null as operator new's
# callers expect, the first race ends the run.
export ASAN_OPTIONS=allocator_may_return_null=1:detect_leaks=1
export UBSAN_OPTIONS=print_stacktrace=1
export TSAN_OPTIONS=allocator_may_return_null=1:halt_on_error=1:second_deadlock_stack=1

# target_launcher native|sanitized|wine|emulated BUILD-FOLDER: sets the array `launcher`, the words in front of a program
# of that folder.
# shellcheck disable=SC2034
target_launcher() {
    launcher=()
    case $1 in
    wine) launcher=(wine) ;;
    # The sanitizers of GCC 12 and Clang 14 do not know the address layouts of newer kernels.
    sanitized) setarch -R true 2>/dev/null && launcher=(setarch -R) ;;
    emulated)
        # The emulator without libraries of its own, so that LD_PRELOAD reaches the programs alone.
        VORLUND_EMULATOR=$(command -v qemu-aarch64-static)
        VORLUND_EMULATED_START=$(realpath "$2/bin/emulated_start.so")
        export VORLUND_EMULATOR VORLUND_EMULATED_START QEMU_LD_PREFIX=/usr/aarch64-linux-gnu
        launcher=("$VORLUND_EMULATOR")
        # The libraries of plug-ins, which this machine has not.
        local libraries
        libraries=$(sed -n 's/^VORLUND_CODECS_DIR:PATH=//p' "$2/CMakeCache.txt")
        [[ -z $libraries ]] || launcher+=(-E "LD_LIBRARY_PATH=$libraries/lib")
        # Where no tests are built, nothing starts others.
        [[ ! -e $VORLUND_EMULATED_START ]] || launcher+=(-E "LD_PRELOAD=$VORLUND_EMULATED_START")
        ;;
    esac
    return 0
}
