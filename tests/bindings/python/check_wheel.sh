#!/bin/bash
# Makes the wheel of a target and tries it. That for 64-bit Windows is loaded under Wine, without a Python.
#   tests/bindings/python/check_wheel.sh linux|linux-arm64|win64 BUILD-FOLDER
set -euo pipefail
here=$(realpath "$(dirname "${BASH_SOURCE[0]}")")
cd "$here/../../.."
build=$(realpath "$2")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
wheels=$build/wheels
rm -rf "$wheels"
scripts/wheel.sh "$build" "$wheels"
[[ $1 == win64 ]] || exit 0

mkdir "$work/wheel" "$work/program"
python3 -m zipfile -e "$wheels"/*-win_amd64.whl "$work/wheel"
names=scripts/python-windows/python3.def
# As many names as the extension may ask for; none of them is called.
sed -n -e 's/^    \(\w*\)$/void \1(void) {}/p' -e 's/^    \(\w*\) DATA$/int \1;/p' "$names" >"$work/python3.c"
x86_64-w64-mingw32-gcc -shared -fno-builtin -nostdlib -e 0 -o "$work/program/python3.dll" "$work/python3.c" "$names"
x86_64-w64-mingw32-gcc -std=gnu11 -O1 -Wall -Werror -Ibindings/c/include -o "$work/program/load_extension.exe" "$here/load_extension.c"
# From another folder than both.
cd "$work"
timeout 300 wine program/load_extension.exe 'wheel\vorlund\_native.pyd' out.flac
