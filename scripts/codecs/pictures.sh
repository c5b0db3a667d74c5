# shellcheck shell=bash disable=SC2034,SC2086
# libpng, with zlib inside, and libjpeg-turbo, two DLLs. Sourced by scripts/codecs.sh.
libraries="libpng and libjpeg-turbo"
packages=(zlib libpng1.6 libjpeg-turbo)
sources=(
    "zlib zlib_1.2.13.dfsg.orig.tar.bz2 71feb7947e3c00ef125f83b79a4e529bde31171e5babe48b391f06758d1ab0a1 Zlib"
    "libpng1.6 libpng1.6_1.6.39.orig.tar.gz a00e9d2f2f664186e4202db9299397f851aea71b36a35e74910b8820e380d441 libpng-2.0"
    "libjpeg-turbo libjpeg-turbo_2.1.5.orig.tar.gz 254f3642b04e309fee775123133c6464181addc150499561020312ec61c1bf7c IJG AND BSD-3-Clause"
)

build_libraries() {
    # Debian's archive lacks what its own build files want for Windows; libpng needs the plain code alone.
    mkdir -p "$result/include" "$result/lib"
    (cd "$work/zlib" && "$host-gcc-posix" $flags -c {adler32,crc32,deflate,inffast,inflate,inftrees,trees,zutil}.c &&
        "$host-ar" rcs "$result/lib/libz.a" ./*.o && cp zlib.h zconf.h "$result/include/")
    by_cmake libpng1.6 -DPNG_SHARED=ON -DPNG_STATIC=OFF -DPNG_TESTS=OFF -DPNG_EXECUTABLES=OFF \
        -DZLIB_INCLUDE_DIR="$result/include" -DZLIB_LIBRARY="$result/lib/libz.a"
    # It takes a folder that is no whole path for one in the working folder.
    by_cmake libjpeg-turbo -DENABLE_SHARED=ON -DENABLE_STATIC=OFF -DWITH_TURBOJPEG=OFF -DWITH_SIMD=OFF \
        -DCMAKE_INSTALL_LIBDIR="$result/lib"
}
