#!/bin/bash
# Packs the test kit, unpacks it elsewhere and runs it under Wine with a few cases of the unit tests.
# usage: tests/kit/check.sh win32|win64 BUILD-FOLDER
set -euxo pipefail
here=$(realpath "$(dirname "${BASH_SOURCE[0]}")")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

archive=$("$here/../../scripts/windows-kit.sh" "$1" "$2")
cd "$work"
cmake -E tar xf "$archive"
cd "$(basename "$archive" .zip)"
timeout 600 wine cmd /c run-tests.cmd '--gtest_filter=Version*:CharCase*:PluginStore.*'
grep -q '^system: Wine' report.txt
test "$(grep -c '^passed ' report.txt)" = "$(($(wc -l <fuzzers.txt) + $(wc -l <examples.txt) + 4))"
grep -qE '^ +\[  PASSED  \] [1-9]' report.txt

# What fails is counted and named, and so is what cannot be started.
rm bin/fuzz_id.exe
! timeout 600 wine cmd /c run-tests.cmd '--gtest_filter=None.None' || exit 1
grep -q '^FAILED corpus-id, ' report.txt
tail -n 1 report.txt | grep -q ', 1 failed'
