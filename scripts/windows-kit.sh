#!/bin/bash
# Packs the tests of a Windows build so that the owner of a Windows machine can run them with one command.
#   scripts/windows-kit.sh win32|win64 BUILD-FOLDER    makes BUILD-FOLDER/vorlund-VERSION-tests-TARGET.zip
set -euo pipefail
target=$1
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
build=$(cd "$2" && pwd)
case $target in
win32) strip=i686-w64-mingw32-strip ;;
win64) strip=x86_64-w64-mingw32-strip ;;
*) echo "windows-kit: unknown target '$target'" >&2; exit 2 ;;
esac

version=$(sed -n 's/^CMAKE_PROJECT_VERSION:[A-Z]*=//p' "$build/CMakeCache.txt")
name=vorlund-$version-tests-$target
kit=$build/kit/$name
rm -rf "$build/kit"
mkdir -p "$kit"

cp -r "$build/bin" "$kit/bin"
cp -r "$root/fuzz/corpus" "$kit/corpus"
cp -r "$root/examples/data" "$kit/data"
cp "$build/fuzzers.txt" "$build/examples.txt" "$kit"
cp "$root/tests/kit/run-tests.cmd" "$root/LICENSE" "$kit"
find "$kit/bin" \( -name '*.exe' -o -name '*.dll' \) -size +0 -not -path '*/testplugins/*' -exec "$strip" --strip-unneeded {} +
{
    printf 'target: %s\r\n' "$target"
    printf 'version: %s\r\n' "$version"
    printf 'revision: %s\r\n' "$(git -C "$root" describe --always --dirty 2>/dev/null || echo unknown)"
} >"$kit/about.txt"

rm -f "$build/$name.zip"
(cd "$build/kit" && cmake -E tar cf "$build/$name.zip" --format=zip "$name")
echo "$build/$name.zip"
