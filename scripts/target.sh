# shellcheck shell=bash
# How programs of a kind of target are run. Sourced by scripts/suites.sh and scripts/launch.sh.

# The sanitizers' runtimes: leaks count as failures, an impossible allocation returns null as operator new's
# callers expect, the first race ends the run.
export ASAN_OPTIONS=allocator_may_return_null=1:detect_leaks=1
export UBSAN_OPTIONS=print_stacktrace=1
# A thread that has ended is joined by the next one, which a forked child does not have.
export TSAN_OPTIONS=report_thread_leaks=0:allocator_may_return_null=1:halt_on_error=1:second_deadlock_stack=1

# target_launcher native|sanitized|wine: sets the array `launcher`, the words in front of a program.
# shellcheck disable=SC2034
target_launcher() {
    launcher=()
    case $1 in
    wine) launcher=(wine) ;;
    # The sanitizers of GCC 12 and Clang 14 do not know the address layouts of newer kernels.
    sanitized) setarch -R true 2>/dev/null && launcher=(setarch -R) ;;
    esac
    return 0
}
