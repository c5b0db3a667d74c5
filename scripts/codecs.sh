#!/bin/bash
# Builds libsndfile for Windows, with Ogg, Vorbis, FLAC, Opus and MP3 inside, from Debian's source packages: one DLL
# that the plug-in sndfile uses. What was built once is kept, and a second call only prints where it is.
#   scripts/codecs.sh win32|win64             prints the folder with bin, include, lib and licences; a log goes to
#                                             standard error
#   scripts/codecs.sh win32|win64 --cached    the same, and fails at once when it was not built yet
# Everything is kept in VORLUND_CACHE, by default ~/.cache/vorlund. Needs: the cross compiler, cmake, ninja-build,
# make, patch, xz-utils, bzip2, pkgconf.
set -euo pipefail
script=$(realpath "${BASH_SOURCE[0]}")
case ${1-} in
win32) cpu=i686 ;;
win64) cpu=x86_64 ;;
*) echo "usage: scripts/codecs.sh win32|win64" >&2; exit 2 ;;
esac
host=$cpu-w64-mingw32
cache=${VORLUND_CACHE:-${XDG_CACHE_HOME:-$HOME/.cache}/vorlund}
key=$({ cat "$script"; "$host-gcc-posix" --version; } | sha256sum | cut -c1-12)
result=$cache/codecs-$1-$key
if [[ -e $result/complete ]]; then
    echo "$result"
    exit
fi
[[ ${2-} != --cached ]] || exit 1

# Each release that is built, with the sum of its archive. Debian's own corrections, among them those of security, are
# applied where the mirror has them.
sources=(
    "libogg libogg_1.3.5.orig.tar.xz c4d91be36fc8e54deae7575241e03f4211eb102afb3fc0775fbbc1b740016705"
    "libvorbis libvorbis_1.3.7.orig.tar.gz 0e982409a9c3fc82ee06e08205b1355e5c6aa4c36bca58146ef399621b0ce5ab"
    "flac flac_1.4.2+ds.orig.tar.xz 47274ac8fcb1f0e6caa91d29f943925d7a40c0a3f6357c3275773bdb1ee46638"
    "opus opus_1.3.1.orig.tar.gz 65b58e1e25b2a114157014736a3d9dfeaad8d41be1c8179866f144a2fb44ff9d"
    "mpg123 mpg123_1.31.2.orig.tar.bz2 b17f22905e31f43b6b401dfdf6a71ed11bb7d056f68db449d70b9f9ae839c7de"
    "lame lame_3.100.orig.tar.gz ddfe36cab873794038ae2c1210557ad34857a4b6bdc515785d1da9e175b1da1e"
    "libsndfile libsndfile_1.2.0.orig.tar.gz 62dc4e2bcd45f6f0e89cbc3522cc90eb174dca0eef0a0d19ead289833b390cd7"
)

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
        read -r name archive sum <<<"$row"
        sha256sum --status --check <<<"$sum  $cache/codec-sources/$archive" 2>/dev/null || return 1
    done
}

# unpack NAME: the sources of a package in $work/NAME.
unpack() {
    local row name archive sum patches
    for row in "${sources[@]}"; do
        read -r name archive sum <<<"$row"
        [[ $name == "$1" ]] || continue
        mkdir "$work/$name"
        tar -xf "$cache/codec-sources/$archive" --strip-components=1 -C "$work/$name"
        patches=$(find "$cache/codec-sources" -name "${archive%.orig.*}-*.debian.tar.*" | sort -V | tail -n 1)
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

flags="-O2 -g0 -fno-stack-protector -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=0"
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
    has_archives || apt_source libogg libvorbis flac opus mpg123 lame libsndfile
    has_archives || { echo "codecs: the source packages cannot be had"; return 1; }
    local row name
    for row in "${sources[@]}"; do unpack "${row%% *}"; done

    by_cmake libogg -DINSTALL_DOCS=OFF
    by_cmake libvorbis
    by_cmake flac -DBUILD_CXXLIBS=OFF -DBUILD_PROGRAMS=OFF -DBUILD_EXAMPLES=OFF -DBUILD_TESTING=OFF -DBUILD_DOCS=OFF \
        -DINSTALL_MANPAGES=OFF -DWITH_STACK_PROTECTOR=OFF -DWITH_FORTIFY_SOURCE=OFF
    by_configure opus --disable-extra-programs --disable-doc --disable-stack-protector --disable-hardening
    # Its macros make the compiler's inline strncasecmp call itself for ever, in tags with texts of a user.
    by_cmake mpg123/ports/cmake -DBUILD_PROGRAMS=OFF -DBUILD_LIBOUT123=OFF -DCMAKE_C_FLAGS="$flags -D__CRT__NO_INLINE"
    by_configure lame --disable-frontend --disable-gtktest
    by_cmake libsndfile -DBUILD_SHARED_LIBS=ON -DENABLE_EXTERNAL_LIBS=ON -DENABLE_MPEG=ON -DENABLE_CPACK=OFF \
        -DBUILD_PROGRAMS=OFF -DBUILD_EXAMPLES=OFF -DBUILD_TESTING=OFF -DCMAKE_C_FLAGS="$flags -DFLAC__NO_DLL" \
        -DCMAKE_C_STANDARD_LIBRARIES="-lshlwapi"

    mkdir -p "$result/licences"
    local file
    for row in "${sources[@]}"; do
        name=${row%% *}
        for file in COPYING COPYING.LGPL COPYING.Xiph LICENSE; do
            [[ ! -e $work/$name/$file ]] || cp "$work/$name/$file" "$result/licences/$name-$file.txt"
        done
    done
    # The recipe, with the exact releases.
    cp "$script" "$result/licences/codecs.sh"
    touch "$result/complete"
}

began=$SECONDS
# Not under "if": the first command that fails must end it.
set +e
(set -e; build_all) >&2
status=$?
set -e
((status == 0)) || { rm -rf "$result"; echo "codecs: libsndfile for $1 was not built" >&2; exit 1; }
echo "codecs: built in $((SECONDS - began)) s" >&2
echo "$result"
