#!/bin/bash
# A clone built as README.md says first, in a root that has just the packages that are named there: library, program and
# plug-ins by CMake's defaults, with the time that it takes; two minutes on two idle processors are 240 seconds of them.
# usage: tests/packages/check_clone.sh
set -euo pipefail
here=$(realpath "$(dirname "${BASH_SOURCE[0]}")")
sources=$(realpath "$here/../..")
# shellcheck source=tests/packages/roots.sh
source "$here/roots.sh"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

mkdir "$work/vorlund"
(cd "$sources" && git ls-files -co --exclude-standard -z | xargs -0 cp --parents -t "$work/vorlund")
# The block of README.md, whose first line installs.
# shellcheck disable=SC2016
sed -n '/^## Get it/,/^## /{/^```console clone/,/^```/s/^\$ //p}' "$sources/README.md" >"$work/lines"
grep -q '^cmake --build' "$work/lines"
lame --quiet "$sources/examples/data/strings.wav" "$work/vorlund/song.mp3"
cat >"$work/run.sh" <<'RUN'
set -euo pipefail
apt-get update >/dev/null
sudo() { "$@"; }
export DEBIAN_FRONTEND=noninteractive CMAKE_BUILD_PARALLEL_LEVEL=2
cd /mnt/vorlund
eval "$(grep '^sudo ' /mnt/lines | sed 's/ install / install -y /')" >/mnt/apt.log 2>&1
times >/mnt/before
began=$SECONDS
eval "$(grep -v '^sudo ' /mnt/lines)"
echo $((SECONDS - began)) >/mnt/seconds
times >/mnt/after
RUN
in_root bare "$work" bash /mnt/run.sh
test -s "$work/vorlund/song.wav"
# Of children, user and system.
sum() { awk 'NR == 2 { split($0, t, /[ms ]+/); print t[1] * 60 + t[2] + t[3] * 60 + t[4] }' "$1"; }
awk -v a="$(sum "$work/after")" -v b="$(sum "$work/before")" -v s="$(cat "$work/seconds")" \
    'BEGIN { printf "   built and decoded in %d s, with %.0f s of processors\n", s, a - b; exit a - b > 240 }'
