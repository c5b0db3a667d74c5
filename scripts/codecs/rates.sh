# shellcheck shell=bash disable=SC2034,SC2154
# libsoxr and libsamplerate, a DLL each. Sourced by scripts/codecs.sh.
libraries="libsoxr and libsamplerate"
packages=(libsoxr libsamplerate)
sources=(
    "libsoxr libsoxr_0.1.3.orig.tar.xz b111c15fdc8c029989330ff559184198c161100a59312f5dc19ddeb9b5a15889 LGPL-2.1-or-later"
    "libsamplerate libsamplerate_0.2.2.orig.tar.gz 16e881487f184250deb4fcb60432d7556ab12cb58caea71ef23960aec6c0405a BSD-2-Clause"
)

build_libraries() {
    by_cmake libsoxr -DBUILD_SHARED_LIBS=ON -DBUILD_TESTS=OFF -DBUILD_EXAMPLES=OFF -DWITH_OPENMP=OFF -DWITH_LSR_BINDINGS=OFF
    by_cmake libsamplerate -DBUILD_SHARED_LIBS=ON -DLIBSAMPLERATE_EXAMPLES=OFF -DBUILD_TESTING=OFF
}
