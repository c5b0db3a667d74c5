#!/bin/bash
# Every C++ file has the form that clang-format (version 14) gives it.
#   scripts/format.sh            fails and shows what differs
#   scripts/format.sh --fix      formats the files
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
options=(--dry-run -Werror)
[[ ${1-} == --fix ]] && options=(-i)
version=$(clang-format --version | sed -E 's/.*version ([0-9]+).*/\1/')
if [[ $version != 14 ]]; then
    echo "format: this is clang-format $version, which formats some lines in another way; version 14 is needed" >&2
    exit 1
fi
# Groups small enough that the last one does not leave a processor waiting.
find bench bindings examples fuzz include plugins src tests tools \( -name '*.h' -o -name '*.cpp' \) -print0 |
    xargs -0 -P "$(nproc)" -n 40 clang-format "${options[@]}"
