#!/bin/sh
# The plug-in on Linux. The compiler's own link step has no versions of symbols, which the names of the two entries are
# made of; so it writes its linker script, and the linker is called with that and with the two files for plug-ins in C.
# usage: build.sh OUTPUT.so FOLDER-OF-THE-CMAKE-FILES
set -eu
output=$1 files=$2
sources=$(dirname "$0")
work=$output.build
rm -rf "$work"
mkdir -p "$work"
fpc -Cg -O2 -s -l- -v0 -Fu"$sources" -FU"$work" -FE"$work" "$sources/sample.pas"
sed '/^VERSION/,/^}/d' "$work"/link*.res >"$work/plugin.res"
cd "$work"
ld.bfd -shared -init FPC_SHARED_LIB_START -fini FPC_LIB_EXIT --version-script="$files/VorlundPluginTable.map" \
    "$files/VorlundPluginTable.ld" -s -o "$output" -T plugin.res
