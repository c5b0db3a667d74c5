#!/bin/bash
# Every public header stands alone, and on Windows also after the system's headers, whose macros would rename
# methods. usage: scripts/headers.sh linux|win32 BUILD-FOLDER
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
compiler=(g++)
before=()
if [[ $1 == win32 ]]; then
    compiler=(i686-w64-mingw32-g++-posix)
    before=("-include windows.h" "-DUNICODE -include windows.h")
fi
for header in include/vorlund/*.h "$2"/include/vorlund/*.h; do
    for prelude in "" "${before[@]}"; do
        echo "${compiler[*]} -std=c++20 -fsyntax-only -Wall -Wextra -Wpedantic -Werror -Iinclude -I$2/include $prelude" \
            "-include $header -x c++ /dev/null"
    done
done | xargs -P "$(nproc)" -d '\n' -I{} sh -c '{} || { echo "failed: {}" >&2; exit 1; }'
