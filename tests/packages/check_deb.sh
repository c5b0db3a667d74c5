#!/bin/bash
# The Debian packages in a folder: lintian, contents, installed in the smallest root, where a file is decoded and the time
# taken, and in a root with a compiler, where others' programs and plug-ins are built.
# usage: tests/packages/check_deb.sh FOLDER LOG-FOLDER
set -euo pipefail
folder=$(realpath "$1") logs=$(realpath "$2")
here=$(realpath "$(dirname "${BASH_SOURCE[0]}")")
sources=$(realpath "$here/../..")
# shellcheck source=tests/packages/roots.sh
source "$here/roots.sh"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# Nothing but what has a reason in the list.
lintian --no-cfg --display-info --pedantic --tag-display-limit 0 --allow-root "$folder"/*.deb >"$logs/lintian.log" 2>&1 || true
sed -n 's/^\([EWIP]\): \(\S*\): \(\S*\).*/\2\t\3/p' "$logs/lintian.log" | sort -u >"$work/said"
sed '/^#/d' "$sources/packaging/debian/lintian-accepted.tsv" | cut -f1,2 | sort -u >"$work/accepted"
if [[ -n $(comm -13 "$work/accepted" "$work/said") ]]; then
    echo "lintian says what packaging/debian/lintian-accepted.tsv does not have:"
    comm -13 "$work/accepted" "$work/said"
    exit 1
fi
echo "   lintian: nothing but $(wc -l <"$work/said") of $(wc -l <"$work/accepted") accepted tags"

mkdir "$work/packages" "$work/stage"
cp "$folder"/*.deb "$work/packages"
for package in "$work"/packages/*.deb; do dpkg-deb -x "$package" "$work/stage/$(dpkg-deb -f "$package" Package)"; done
"$here/check_contents.py" deb "$work"/stage/*

# The first run, as the first lines of README.md have it; the index of packages is what a machine has already.
lame --quiet "$sources/examples/data/strings.wav" "$work/song.mp3"
cat >"$work/first-run.sh" <<'RUN'
set -euo pipefail
apt-get update >/dev/null
began=$(date +%s.%N)
apt-get install -y /mnt/packages/libvorlund0.*.deb /mnt/packages/vorlund_*.deb >/mnt/apt.log 2>&1
cd /root && cp /mnt/song.mp3 .
vorlund decode song.mp3 -o song.wav
echo "$(date +%s.%N) $began" >/mnt/first-run.txt
cp song.wav /mnt/
times >/mnt/first-run-times.txt
# All plug-ins load, though what they only use on demand may be missing.
vorlund plugins
RUN
in_root bare "$work" bash /mnt/first-run.sh >"$logs/first-run.log" 2>&1 || { tail -n 30 "$work/apt.log" "$logs/first-run.log"; exit 1; }
seconds=$(awk '{print $1 - $2}' "$work/first-run.txt")
processor=$(sed -n 2p "$work/first-run-times.txt")
echo "   installed and decoded in $seconds s (processor: $processor)"
test "$(stat -c %s "$work/song.wav")" -gt 400000
! grep -iE 'misses|cannot be loaded' "$logs/first-run.log" || exit 1
# Thirty seconds on an idle machine; this one may have other things to do, so its processors' time counts as well.
awk -v s="$seconds" -v p="$processor" 'BEGIN { split(p, t, /[ms ]+/); if (s > 30 && t[1] * 60 + t[2] + t[3] * 60 + t[4] > 30) exit 1 }'


# The repository as a stranger has it: what is in it, without a build.
mkdir "$work/sources"
(cd "$sources" && git ls-files -co --exclude-standard -z | xargs -0 cp --parents -t "$work/sources")
cat >"$work/consumers.sh" <<'RUN'
set -euo pipefail
apt-get update >/dev/null
apt-get install -y /mnt/packages/*.deb >/mnt/apt.log 2>&1
# The same once more in a folder of its own, as the root of another system.
for package in /mnt/packages/*.deb; do dpkg-deb -x "$package" /opt/root; done
# What programs are linked with does not go away alone.
apt-get remove --simulate libvorlund-c1 | grep '^Remv libvorlund-dev ' >/dev/null
/mnt/sources/tests/install/consumers.sh /mnt/sources /tmp/consumers /usr
RUN
in_root build "$work" bash /mnt/consumers.sh || { tail -n 20 "$work/apt.log"; exit 1; }
