#!/bin/bash
# The names that the shared library exports, against the list that is kept in tests/abi.
#   scripts/exports.sh --check  linux|win32 BUILD-FOLDER    fails when they differ
#   scripts/exports.sh --update linux|win32 BUILD-FOLDER    writes the list anew: a change of the interface
set -euo pipefail
export LC_ALL=C
mode=$1 target=$2 folder=$3
list=$(dirname "${BASH_SOURCE[0]}")/../tests/abi/exports-$target.txt

exported() {
    if [[ $target == win32 ]]; then
        i686-w64-mingw32-objdump -p "$folder/bin/vorlund.dll" |
            sed -n '/^\[Ordinal\/Name Pointer\] Table/,/^$/s/^\t\[ *[0-9]*\] //p'
    else
        nm -D --defined-only --format=posix "$folder/bin/libvorlund.so" | cut -d' ' -f1
    fi | c++filt | sort -u
}

case $mode in
--check)
    # What lies outside namespace vorlund is a leak, whatever the list says.
    if exported | grep -vE '^((typeinfo|typeinfo name|vtable|VTT|guard variable) for |(non-)?virtual thunk to )?vorlund::'; then
        echo "exports: the names above do not belong to the interface" >&2
        exit 1
    fi
    diff -u --label kept "$list" --label built <(exported) || {
        echo "exports: the interface changed; if that is meant, run scripts/exports.sh --update $target $folder" >&2
        exit 1
    }
    ;;
--update) exported >"$list" ;;
*) exit 2 ;;
esac
