#!/bin/bash
# Makes the packages once more: from a copy of the sources in another folder, without what a cache of compiled files would
# keep, at another time, with another umask and in another time zone. They are the same byte for byte.
# usage: tests/packages/check_twice.sh deb|win32|win64 FOLDER
set -euo pipefail
kind=$1 folder=$(realpath "$2")
sources=$(realpath "$(dirname "${BASH_SOURCE[0]}")/../..")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

copy=$work/some/other/folder
mkdir -p "$copy"
(cd "$sources" && git ls-files -co --exclude-standard -z | xargs -0 cp --parents -t "$copy")
SOURCE_DATE_EPOCH=$(git -C "$sources" log -1 --format=%ct)
VORLUND_REVISION=$(git -C "$sources" rev-parse HEAD)
export SOURCE_DATE_EPOCH VORLUND_REVISION CCACHE_DISABLE=1 TZ=Pacific/Chatham
(umask 077 && "$copy/package" "$kind") >"$work/log" 2>&1 || { tail -n 30 "$work/log" "$copy"/build/logs/package-*.log; exit 1; }

count=0
for made in "$copy"/build/packages/*.deb "$copy"/build/packages/*.zip; do
    [[ -e $made ]] || continue
    cmp "$made" "$folder/$(basename "$made")"
    count=$((count + 1))
done
echo "   $count packages of $kind are the same, byte for byte"
((count > 0))
