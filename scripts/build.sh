# shellcheck shell=bash
# Configures and builds a preset. Sourced by ./run and ./test; runs in the root of the repository.

# vorlund_build PRESET FOLDER [CMAKE-OPTION...] [-- BUILD-OPTION...]: quiet on success but for what it writes to
# standard output; the caller sends that to a log.
vorlund_build() {
    local preset=$1 folder=$2
    local -a options=()
    shift 2
    while (($#)) && [[ $1 != -- ]]; do
        options+=("$1")
        shift
    done
    shift || true
    # A folder of another compiler or of a tree that was moved does not configure; begin it anew then.
    cmake --preset "$preset" -B "$folder" "${options[@]}" ||
        cmake --fresh --preset "$preset" -B "$folder" "${options[@]}" || return
    cmake --build "$folder" -j "$(nproc)" "$@"
}
