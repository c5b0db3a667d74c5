#!/bin/bash
# clang-tidy is quiet. Tests, benchmarks and fuzz targets are left out: the macros of their frameworks set off many
# checks, and they take most of the time.
#   scripts/tidy.sh BUILD-FOLDER             the files that changed: since the branch left origin/main or main, on main
#                                            itself since the commit before, and what is not committed
#   scripts/tidy.sh BUILD-FOLDER --all       all files
#   scripts/tidy.sh BUILD-FOLDER FILE...     these files
# A file that was quiet is looked at again when it, a header or .clang-tidy has changed.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
folder=$1
shift
state=$folder/tidy
mkdir -p "$state/quiet"

# Clang stops at this option of GCC.
sed 's/ -fno-gnu-unique//' "$folder/compile_commands.json" >"$state/compile_commands.json"
sources=$(sed -nE "s|^ *\"file\": \"$PWD/((src\|tools\|plugins\|examples\|bindings)/[^\"]*\.cpp)\".*|\1|p" "$state/compile_commands.json" | sort -u)

changed_files() {
    local base
    base=$(git merge-base HEAD origin/main 2>/dev/null || git merge-base HEAD main 2>/dev/null || git rev-parse HEAD)
    [[ $base != "$(git rev-parse HEAD)" ]] || base=$(git rev-parse --verify -q HEAD~1 || echo HEAD)
    {
        git diff --name-only --diff-filter=d "$base"
        git ls-files --others --exclude-standard
    } | sort -u
}

# A header is looked at through the first source file that includes it by name.
source_of() {
    local name=${1#include/} pattern found=""
    name=${name#src/}
    for pattern in "#include [<\"]${name}[>\"]" "#include \"$(basename "$name")\""; do
        [[ -n $found ]] || found=$(xargs grep -lE "$pattern" <<<"$sources" | head -n 1) || true
    done
    echo "$found"
}

wanted() {
    local file
    while read -r file; do
        case $file in
        *.h) source_of "$file" ;;
        *.cpp) echo "$file" ;;
        esac
    done | sort -u | grep -Fx "$sources" || true
}

case ${1-} in
--all) files=$sources ;;
"") files=$(changed_files | wanted) ;;
*) files=$(printf '%s\n' "$@" | wanted) ;;
esac

common=$({ find include src tools plugins examples bindings -name '*.h' -print0 | sort -z | xargs -0 cat; cat .clang-tidy; } | sha256sum)
check() {
    local key
    key=$state/quiet/$({ echo "$common $1"; cat "$1"; } | sha256sum | cut -c1-40)
    [[ -e $key ]] && return
    # What it counts in headers of others goes to standard error.
    clang-tidy --quiet --warnings-as-errors='*' -p "$state" "$1" 2>/dev/null && touch "$key" && return
    echo "tidy: $1" >&2
    return 1
}
export -f check
export common state
[[ -n $files ]] || { echo "tidy: no file changed"; exit 0; }
echo "tidy: $(wc -l <<<"$files") files"
xargs -P "$(nproc)" -I{} bash -c 'check {}' <<<"$files"
