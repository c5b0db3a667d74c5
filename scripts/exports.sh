#!/bin/bash
# The names that the shared library exports, against the list that is kept in tests/abi.
#   scripts/exports.sh --check  TARGET BUILD-FOLDER         fails when they differ
#   scripts/exports.sh --update linux|win32 BUILD-FOLDER    writes the list anew: a change of the interface
# win64 is compared with the list of win32, and linux-arm64 with that of linux, in words that all processors have.
set -euo pipefail
export LC_ALL=C
mode=$1 target=$2 folder=$3
case $target in
win32) kept=win32 objdump=i686-w64-mingw32-objdump ;;
win64) kept=win32 objdump=x86_64-w64-mingw32-objdump ;;
linux) kept=linux nm=nm ;;
linux-arm64) kept=linux nm=aarch64-linux-gnu-nm ;;
*) exit 2 ;;
esac
list=$(dirname "${BASH_SOURCE[0]}")/../tests/abi/exports-$kept.txt

exported() {
    if [[ $target == win* ]]; then
        $objdump -p "$folder/bin/vorlund.dll" |
            sed -n '/^\[Ordinal\/Name Pointer\] Table/,/^$/s/^\t\[ *[0-9]*\] //p'
    else
        $nm -D --defined-only --format=posix "$folder/bin/libvorlund.so" | cut -d' ' -f1
    fi | c++filt | sort -u
}

# A size is the integer of a pointer's width, and each processor has its own list of arguments.
common_words() {
    if [[ $target == "$kept" ]]; then
        cat
    else
        sed -E 's/unsigned long long/unsigned int/g; s/\blong long\b/int/g; s/std::__va_list|__va_list_tag\*/va_list/g' | sort -u
    fi
}

case $mode in
--check)
    # What lies outside namespace vorlund is a leak, whatever the list says.
    if exported | grep -vE '^((typeinfo|typeinfo name|vtable|VTT|guard variable) for |(non-)?virtual thunk to )?vorlund::'; then
        echo "exports: the names above do not belong to the interface" >&2
        exit 1
    fi
    diff -u --label kept <(common_words <"$list") --label built <(exported | common_words) || {
        echo "exports: the interface changed; if that is meant, run scripts/exports.sh --update $kept build/$kept" >&2
        exit 1
    }
    ;;
--update) [[ $target == "$kept" ]] && exported >"$list" ;;
*) exit 2 ;;
esac
