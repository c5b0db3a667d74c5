# shellcheck shell=bash disable=SC2034
# libsndfile with Ogg, Vorbis, FLAC, Opus and MP3 inside, one DLL. Sourced by scripts/codecs.sh.
libraries=libsndfile
packages=(libogg libvorbis flac opus mpg123 lame libsndfile)
sources=(
    "libogg libogg_1.3.5.orig.tar.xz c4d91be36fc8e54deae7575241e03f4211eb102afb3fc0775fbbc1b740016705 BSD-3-Clause"
    "libvorbis libvorbis_1.3.7.orig.tar.gz 0e982409a9c3fc82ee06e08205b1355e5c6aa4c36bca58146ef399621b0ce5ab BSD-3-Clause"
    "flac flac_1.4.2+ds.orig.tar.xz 47274ac8fcb1f0e6caa91d29f943925d7a40c0a3f6357c3275773bdb1ee46638 BSD-3-Clause"
    "opus opus_1.3.1.orig.tar.gz 65b58e1e25b2a114157014736a3d9dfeaad8d41be1c8179866f144a2fb44ff9d BSD-3-Clause"
    "mpg123 mpg123_1.31.2.orig.tar.bz2 b17f22905e31f43b6b401dfdf6a71ed11bb7d056f68db449d70b9f9ae839c7de LGPL-2.1-only"
    "lame lame_3.100.orig.tar.gz ddfe36cab873794038ae2c1210557ad34857a4b6bdc515785d1da9e175b1da1e LGPL-2.0-or-later"
    "libsndfile libsndfile_1.2.0.orig.tar.gz 62dc4e2bcd45f6f0e89cbc3522cc90eb174dca0eef0a0d19ead289833b390cd7 LGPL-2.1-or-later"
)

build_libraries() {
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
}
