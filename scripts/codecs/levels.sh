# shellcheck shell=bash disable=SC2034
# libebur128, a static library: its licence allows that. Sourced by scripts/codecs.sh.
libraries=libebur128
packages=(libebur128)
sources=("libebur128 libebur128_1.2.6.orig.tar.gz baa7fc293a3d4651e244d8022ad03ab797ca3c2ad8442c43199afe8059faa613 MIT")

build_libraries() {
    by_cmake libebur128 -DENABLE_INTERNAL_QUEUE_H=ON
}
