#!/bin/bash
# Unpacks what 64-bit ARM Linux needs, from Debian's packages, into a folder of its own: the system stays as it is, and nobody need
# be root. What was unpacked once is kept. A log goes to standard error.
#   scripts/arm64-libraries.sh            the libraries of the plug-ins; prints the folder with include and lib
#   scripts/arm64-libraries.sh python     Python with numpy, and its headers; prints the folder with usr
# Everything is kept in VORLUND_CACHE, by default ~/.cache/vorlund.
set -euo pipefail
script=$(realpath "${BASH_SOURCE[0]}")
packages=(
    # Sounds: libsndfile and what it needs.
    libsndfile1-dev libsndfile1 libflac12 libmp3lame0 libmpg123-0 libogg0 libopus0 libvorbis0a libvorbisenc2
    # Pictures.
    libpng-dev libpng16-16 libjpeg62-turbo-dev libjpeg62-turbo zlib1g
    # Levels and rates.
    libebur128-dev libebur128-1 libsoxr-dev libsoxr0 libgomp1
    # What the plug-in audio is built with; the system brings it at run time.
    libsdl2-dev libsdl2-2.0-0 libpulse-dev libpulse0
)
if [[ ${1-} == python ]]; then
    packages=(libpython3.11-dev libpython3.11-stdlib libpython3.11-minimal python3.11-minimal python3-numpy python3-cffi-backend
        libblas3 liblapack3 libgfortran5 libexpat1 zlib1g libffi8)
fi
cache=${VORLUND_CACHE:-${XDG_CACHE_HOME:-$HOME/.cache}/vorlund}
result=$cache/${1-libraries}-arm64-$(sha256sum <"$script" | cut -c1-12)

fetch_all() {
    local key=/usr/share/keyrings/debian-archive-keyring.gpg row
    local -a options=(-o "Dir::Etc::sourcelist=$work/sources.list" -o Dir::Etc::sourceparts=/dev/null
        -o "Dir::State=$work/state" -o "Dir::State::status=$work/status" -o "Dir::Cache=$work/cache"
        -o APT::Architecture=arm64 -o APT::Architectures=arm64 -o APT::Sandbox::User=)
    mkdir -p "$work/state/lists/partial" "$work/cache/archives/partial" "$work/files" "$work/tree" "$work/result/lib"
    touch "$work/status"
    for row in "debian bookworm" "debian bookworm-updates" "debian-security bookworm-security"; do
        echo "deb [signed-by=$key] http://deb.debian.org/${row% *} ${row#* } main"
    done >"$work/sources.list"
    apt-get "${options[@]}" update
    (cd "$work/files" && apt-get "${options[@]}" download "${packages[@]}")
    for row in "$work"/files/*.deb; do dpkg-deb -x "$row" "$work/tree"; done
    if [[ $result == */python-* ]]; then
        mv "$work/tree/usr" "$work/result/"
        # Some packages still have their libraries in /lib.
        cp -r "$work/tree/lib/." "$work/result/usr/lib/"
        return
    fi
    # In one folder for each, without the further one of this kind of machine, whose links lead to the other.
    cp -r "$work/tree/usr/include" "$work/result/"
    rm -rf "$work/result/include/aarch64-linux-gnu"
    cp -rL "$work/tree/usr/include/aarch64-linux-gnu/." "$work/result/include/"
    find "$work/tree" -path '*/aarch64-linux-gnu/*.so*' -exec cp -P {} "$work/result/lib/" \;
}

mkdir -p "$cache"
# One at a time; who waited may find everything done.
exec 9>"$cache/arm64.lock"
flock 9
if [[ ! -e $result ]]; then
    work=$(mktemp -d)
    trap 'rm -rf "$work"' EXIT
    # Not under "if": the first command that fails must end it.
    set +e
    (set -e; fetch_all) >&2
    status=$?
    set -e
    ((status == 0)) || { echo "arm64-libraries: the packages cannot be had" >&2; exit 1; }
    mv "$work/result" "$result.new"
    mv "$result.new" "$result"
fi
echo "$result"
