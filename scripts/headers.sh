#!/bin/bash
# Every public header stands alone. On Windows also before, after and between the system's headers, whose macros would
# rename methods, and without a clash of names. usage: scripts/headers.sh linux|win32|win64 [BUILD-FOLDER [each]]
# BUILD-FOLDER has the public headers that the build makes. With "each", every one also alone behind the system's, which
# shows what only a header before it had declared, and takes minutes.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
compiler=g++
case $1 in
win32) compiler=i686-w64-mingw32-g++-posix ;;
win64) compiler=x86_64-w64-mingw32-g++-posix ;;
esac
# Alone each of the two does nothing that a compiler could check.
mapfile -t headers < <(find include/vorlund ${2:+"$2/include/vorlund"} -name '*.h' ! -name 'Names*.h' | sort)
folders="-Iinclude ${2:+-I$2/include}"

# commands: one compilation a line, each with the headers that it includes in that order.
commands() {
    local header order macros
    local -a names
    for header in "${headers[@]}"; do
        echo "-include $header"
        # The short form, for time; all together then see the long one.
        [[ $1 != win* || -z $2 ]] || echo "-DUNICODE -DWIN32_LEAN_AND_MEAN -include windows.h -include $header"
    done
    [[ $1 == win* ]] || return 0
    # All together, with the system's headers before them, in their middle and behind them.
    local half=$((${#headers[@]} / 2))
    for order in "${headers[*]}" "$(printf '%s\n' "${headers[@]}" | tac | paste -sd' ')"; do
        read -ra names <<<"$order"
        for macros in "" "-DWIN32_LEAN_AND_MEAN" "-DUNICODE" "-DUNICODE -DWIN32_LEAN_AND_MEAN"; do
            echo "$macros -include windows.h ${names[*]/#/-include }"
            echo "$macros ${names[*]/#/-include }" | sed "s,-include ,-include windows.h &,$((half + 1))"
            echo "$macros ${names[*]/#/-include } -include windows.h"
        done
    done
}

commands "$1" "${3-}" | sed "s,^,$compiler -std=c++20 -fsyntax-only -Wall -Wextra -Wpedantic -Werror $folders ,; s,\$, -x c++ /dev/null," |
    xargs -P "$(nproc)" -d '\n' -I{} sh -c '{} || { echo "failed: {}" >&2; exit 1; }'
[[ $1 != win* ]] || tests/abi/check_names.py "$compiler" ${2:+"$2"}
