#!/bin/bash
# Builds the libraries of a plug-in for Windows, from Debian's source packages, as DLLs that the plug-in uses. What was
# built once is kept, and a second call only prints where it is.
#   scripts/codecs.sh win32|win64 [SET]             prints the folder with bin, include, lib and licences; a log goes to
#                                                   standard error
#   scripts/codecs.sh win32|win64 [SET] --cached    the same, and fails at once when it was not built yet
# A set is a recipe in scripts/codecs: sounds, which is the default, for the plug-in sndfile, pictures for image, levels for
# measure, rates for resample, sound-output for audio, and benchmark for the benchmarks. Everything is kept in
# VORLUND_CACHE, by default ~/.cache/vorlund. Needs: the cross compiler, cmake, ninja-build, make, patch, xz-utils, bzip2, pkgconf.
set -euo pipefail
script=$(realpath "${BASH_SOURCE[0]}")
target=${1-}
case $target in
win32) cpu=i686 ;;
win64) cpu=x86_64 ;;
*) target="" ;;
esac
set=sounds
case ${2-} in
sounds | pictures | levels | rates | sound-output | benchmark) set=$2 cached=${3-} ;;
*) cached=${2-} ;;
esac
if [[ -z $target || ($cached != "" && $cached != --cached) ]]; then
    echo "usage: scripts/codecs.sh win32|win64 [sounds|pictures|levels|rates|sound-output|benchmark] [--cached]" >&2
    exit 2
fi
recipe=$(dirname "$script")/codecs/$set.sh
host=$cpu-w64-mingw32
cache=${VORLUND_CACHE:-${XDG_CACHE_HOME:-$HOME/.cache}/vorlund}
key=$({ cat "$script" "$recipe"; "$host-gcc-posix" --version; } | sha256sum | cut -c1-12)
result=$cache/$set-$target-$key
if [[ -e $result/complete ]]; then
    echo "$result"
    exit
fi
[[ -z $cached ]] || exit 1

# Sets `libraries`, what is built in a few words; `packages`, the source packages; `sources`, a row for each: its name, its
# archive, the archive's sum and its licence in the words of SPDX; and `build_libraries`.
# shellcheck source=scripts/codecs/sounds.sh
source "$recipe"

# One build at a time; who waited may find everything done.
mkdir -p "$cache/codec-sources"
exec 9>"$cache/codecs.lock"
flock 9
if [[ -e $result/complete ]]; then
    echo "$result"
    exit
fi
rm -rf "$result"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# What apt knows and keeps lies in a folder of its own, so that anybody may do this and the system stays as it is.
apt_source() {
    local state=$cache/codec-sources/apt
    local -a options=(-o "Dir::Etc::sourcelist=$state/sources.list" -o Dir::Etc::sourceparts=/dev/null
        -o "Dir::State::lists=$state/lists" -o "Dir::Cache=$state/cache" -o APT::Sandbox::User=)
    mkdir -p "$state/lists/partial" "$state/cache/archives/partial"
    if [[ ! -e $state/sources.list ]]; then
        local mirror=http://deb.debian.org/debian key=/usr/share/keyrings/debian-archive-keyring.gpg
        printf 'deb-src [signed-by=%s] %s bookworm main\n' "$key" "$mirror" >"$state/sources.list"
    fi
    apt-get "${options[@]}" update
    # The mirror lacks a single file of a package now and then, and apt then reports a failure; the sums decide.
    local package
    for package in "$@"; do
        (cd "$cache/codec-sources" && apt-get "${options[@]}" source --download-only "$package") || true
    done
}

has_archives() {
    local name archive sum
    for row in "${sources[@]}"; do
        read -r name archive sum _ <<<"$row"
        sha256sum --status --check <<<"$sum  $cache/codec-sources/$archive" 2>/dev/null || return 1
    done
}

# note_source NAME ARCHIVE SUM LICENCE PATCHES: a row of the list of what the libraries are made from: name, version with
# the revision of Debian whose corrections were applied, archive, sum, licence.
note_source() {
    local version=${2#*_} patches=${5##*/}
    version=${version%.orig.*}
    if [[ -n $patches ]]; then version=${patches#*_} version=${version%.debian.tar.*}; fi
    printf '%s\t%s\t%s\t%s\t%s\n' "$1" "$version" "$2" "$3" "$4" >>"$result/licences/sources.tsv"
}

# unpack NAME: the sources of a package in $work/NAME.
unpack() {
    local row name archive sum licence patches
    for row in "${sources[@]}"; do
        read -r name archive sum licence <<<"$row"
        [[ $name == "$1" ]] || continue
        mkdir "$work/$name"
        tar -xf "$cache/codec-sources/$archive" --strip-components=1 -C "$work/$name"
        patches=$(find "$cache/codec-sources" -name "${archive%.orig.*}-*.debian.tar.*" | sort -V | tail -n 1)
        note_source "$name" "$archive" "$sum" "$licence" "$patches"
        if [[ -z $patches ]]; then
            echo "codecs: without Debian's corrections of $name, which the mirror lacks"
            continue
        fi
        tar -xf "$patches" -C "$work/$name"
        [[ -e $work/$name/debian/patches/series ]] || continue
        while read -r patch _; do
            [[ -z $patch || $patch == \#* ]] || patch --batch -p1 -d "$work/$name" -i "debian/patches/$patch"
        done <"$work/$name/debian/patches/series"
    done
}

# Neither the folder nor the time of the build goes into the libraries.
flags="-O2 -g0 -fno-stack-protector -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=0 -ffile-prefix-map=$work=."
export SOURCE_DATE_EPOCH=1686355200
jobs=$(nproc)

# by_cmake FOLDER OPTION...
by_cmake() {
    PKG_CONFIG_LIBDIR=$result/lib/pkgconfig cmake -G Ninja -S "$work/$1" -B "$work/build-${1%%/*}" \
        -DCMAKE_TOOLCHAIN_FILE="$work/toolchain.cmake" -DCMAKE_BUILD_TYPE=Release -DCMAKE_INSTALL_PREFIX="$result" \
        -DCMAKE_INSTALL_LIBDIR=lib -DCMAKE_POLICY_DEFAULT_CMP0077=NEW -DBUILD_SHARED_LIBS=OFF "${@:2}"
    cmake --build "$work/build-${1%%/*}" -j "$jobs" --target install
}

# by_configure FOLDER OPTION...
by_configure() {
    (cd "$work/$1" && ./configure --host="$host" --prefix="$result" CC="$host-gcc-posix" CFLAGS="$flags" \
        --disable-shared --disable-dependency-tracking "${@:2}" && make -j "$jobs" install)
}

build_all() {
    cat >"$work/toolchain.cmake" <<TOOLCHAIN
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR $cpu)
set(CMAKE_C_COMPILER $host-gcc-posix)
set(CMAKE_CXX_COMPILER $host-g++-posix)
set(CMAKE_ASM_COMPILER $host-gcc-posix)
set(CMAKE_RC_COMPILER $host-windres)
set(CMAKE_C_FLAGS_INIT "$flags")
set(CMAKE_CXX_FLAGS_INIT "$flags")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "-s -Wl,--no-insert-timestamp")
set(CMAKE_FIND_ROOT_PATH /usr/$host "$result")
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
TOOLCHAIN
    has_archives || apt_source "${packages[@]}"
    has_archives || { echo "codecs: the source packages cannot be had"; return 1; }
    local row name
    mkdir -p "$result/licences"
    for row in "${sources[@]}"; do unpack "${row%% *}"; done

    build_libraries

    local file
    for row in "${sources[@]}"; do
        name=${row%% *}
        for file in COPYING COPYING.LGPL COPYING.Xiph LICENCE LICENSE LICENSE.md README.ijg; do
            [[ ! -e $work/$name/$file ]] || cp "$work/$name/$file" "$result/licences/$name-$file.txt"
        done
    done
    # The recipe, with the exact releases.
    mkdir "$result/licences/codecs"
    cp "$script" "$result/licences/codecs.sh"
    cp "$recipe" "$result/licences/codecs/"
    touch "$result/complete"
}

began=$SECONDS
# Not under "if": the first command that fails must end it.
set +e
(set -e; build_all) >&2
status=$?
set -e
((status == 0)) || { rm -rf "$result"; echo "codecs: $libraries for $target was not built" >&2; exit 1; }
echo "codecs: built in $((SECONDS - began)) s" >&2
echo "$result"
