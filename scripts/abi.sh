#!/bin/bash
# The binary interface of libvorlund.so (slots, records, exported functions with their parameters) against the dump that
# is kept in tests/abi. The build needs -DVORLUND_DEBUG_INFO=ON.
#   scripts/abi.sh --check  BUILD-FOLDER    fails on what docs/compatibility.md forbids within a minor version
#   scripts/abi.sh --update BUILD-FOLDER    writes the dump anew: for additions, and for a new minor version
set -euo pipefail
export LC_ALL=C
mode=$1 folder=$2
kept=$(dirname "${BASH_SOURCE[0]}")/../tests/abi
library=$folder/bin/libvorlund.so
work=$folder/abi
mkdir -p "$work"

# Types of private headers and of the standard library go, and so does what differs from one machine to the next.
dump() {
    readelf -S --wide "$library" | grep -q ' \.debug_info ' || {
        echo "abi: $library has no debug information; configure with -DVORLUND_DEBUG_INFO=ON" >&2
        return 1
    }
    abidw --suppressions "$kept/abidiff.suppr" --headers-dir "$kept/../../include" --headers-dir "$folder/include" \
        --drop-private-types --no-corpus-path --no-comp-dir-path --no-show-locs --no-elf-needed --no-parameter-names \
        --no-write-default-sizes --out-file "$1" "$library"
}

case $mode in
--check)
    xz -dc "$kept/libvorlund.abi.xz" >"$work/kept.abi"
    dump "$work/built.abi"
    # Added functions are not shown: they break nothing, and the lists of exports hold them.
    status=0
    abidiff --suppressions "$kept/abidiff.suppr" --no-added-syms --no-show-locs "$work/kept.abi" "$work/built.abi" || status=1
    python3 "$(dirname "${BASH_SOURCE[0]}")/abi_layouts.py" "$work/kept.abi" "$work/built.abi" || status=1
    ((status == 0)) || {
        echo "abi: the interface changed; if that is allowed, run scripts/abi.sh --update $folder" >&2
        exit 1
    }
    ;;
--update)
    dump "$work/built.abi"
    xz -9 -c "$work/built.abi" >"$kept/libvorlund.abi.xz"
    ;;
*) exit 2 ;;
esac
