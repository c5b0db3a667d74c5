#!/bin/bash
# A zip for Windows: contents and sums, unpacked into a fresh Wine prefix, where a file is decoded and the time taken; others'
# programs and plug-ins, cross-compiled.
# usage: tests/packages/check_zip.sh win32|win64 FOLDER LOG-FOLDER
set -euo pipefail
target=$1 folder=$(realpath "$2") logs=$(realpath "$3")
here=$(realpath "$(dirname "${BASH_SOURCE[0]}")")
sources=$(realpath "$here/../..")
# shellcheck source=scripts/wine.sh
source "$sources/scripts/wine.sh"
work=$(mktemp -d)
trap 'vorlund_wine_stop >/dev/null 2>&1; rm -rf "$work"' EXIT

vorlund_wine_env "$work/wine"
vorlund_wine_prefix >"$logs/wine-$target.log" 2>&1

# In a folder with a space and a letter of its own, as a user's is.
place="$work/wine/drive_c/Users/Größe me"
mkdir -p "$place"
lame --quiet "$sources/examples/data/strings.wav" "$place/song.mp3"
began=$(date +%s.%N)
(cd "$place" && cmake -E tar xf "$folder"/vorlund-*-"$target".zip)
home=$(echo "$place"/vorlund-*-"$target")
(cd "$place" && timeout 120 wine "$home/bin/vorlund.exe" decode song.mp3 -o song.wav) >"$logs/first-run-$target.log" 2>&1 ||
    { cat "$logs/first-run-$target.log"; exit 1; }
echo "   unpacked and decoded in $(awk -v b="$began" -v e="$(date +%s.%N)" 'BEGIN { print e - b }') s"
test "$(stat -c %s "$place/song.wav")" -gt 400000
(cd "$home" && sha256sum --quiet --check SHA256SUMS)
# Plug-ins and what they need are all there; sounds of the system alone are Windows' own business.
timeout 120 wine "$home/bin/vorlund.exe" plugins >"$logs/plugins-$target.log" 2>&1
! grep -iE 'misses|cannot be loaded' "$logs/plugins-$target.log" || exit 1
"$here/check_contents.py" "$target" "$home"

# A path without a space, for Makefiles.
mv "$home" "$work/prefix"
"$sources/tests/install/consumers.sh" "$sources" "$work/consumers" "$work/prefix" "$target"
