#!/bin/bash
# Installs a build into a temporary prefix, moves that prefix, and builds and runs a consumer against it: by the
# CMake package on every target, by pkg-config on Linux.
# usage: tests/install/check.sh linux|linux-arm64|win32|win64 BUILD-FOLDER
set -euxo pipefail
target=$1
folder=$(realpath "$2")
here=$(realpath "$(dirname "${BASH_SOURCE[0]}")")
recording=$here/../../examples/data/strings.wav
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

cmake --install "$folder" --prefix "$work/staged" --strip
mv "$work/staged" "$work/prefix"
prefix=$work/prefix

version=$(sed -n 's/^project(Vorlund VERSION \([0-9.]*\).*/\1/p' "$here/../../CMakeLists.txt")
minor=${version%.*}

# The pages come along, with all that README.md links to.
for link in $(sed -n '/^```/,/^```/!s/[^(]*\](\([^)#:]*\)[^)]*)/\1\n/gp' "$prefix/share/doc/Vorlund/README.md" | grep -E '^[A-Za-z./-]+$'); do
    test -e "$prefix/share/doc/Vorlund/$link"
done

# What a plug-in exports is these two names and nothing else.
entries=$'?VrlClosePlugin@@YAXXZ\n?VrlInitPlugin@@YA_NXZ'

# The options of the consumer's build, the compiler, and what lists names.
options=(-G Ninja -S "$here" -B "$work/build" -DCMAKE_BUILD_TYPE=Release -DVORLUND_WANTED="$minor")
toolchain=-DCMAKE_TOOLCHAIN_FILE=$here/../../cmake/toolchains/$target.cmake
# A project in C, with the plug-in of docs/plugins-in-c.md.
"$here/c/tone.sh" >"$work/tone.c"
c_options=(-G Ninja -S "$here/c" -B "$work/c" -DCMAKE_BUILD_TYPE=Release -DVORLUND_WANTED="$minor" -DVORLUND_TONE="$work/tone.c"
    -DCMAKE_PREFIX_PATH="$prefix")
# shellcheck source=scripts/target.sh
source "$here/../../scripts/target.sh"

case $target in
win*)
    case $target in
    win32) unwinder=libgcc_s_dw2-1.dll objdump=i686-w64-mingw32-objdump ;;
    win64) unwinder=libgcc_s_seh-1.dll objdump=x86_64-w64-mingw32-objdump ;;
    esac
    for file in vorlund.dll "$unwinder" libstdc++-6.dll libwinpthread-1.dll; do
        test -f "$prefix/bin/$file"
    done
    if [[ -e $folder/bin/vorlund-plugins/sndfile.dll ]]; then
        # With the library that it needs, replaceable, its licences and how it is built.
        for file in lib/vorlund/plugins/{sndfile.dll,libsndfile.dll} share/doc/Vorlund/sndfile/{codecs.sh,libsndfile-COPYING.txt}; do
            test -f "$prefix/$file"
        done
    fi
    if [[ -e $folder/bin/vorlund-plugins/image.dll ]]; then
        for file in lib/vorlund/plugins/{image.dll,libpng16.dll,libjpeg-62.dll} share/doc/Vorlund/image/{codecs.sh,codecs/pictures.sh}; do
            test -f "$prefix/$file"
        done
    fi
    if [[ -e $folder/bin/vorlund-plugins/resample.dll ]]; then
        for file in lib/vorlund/plugins/{resample.dll,libsoxr.dll} share/doc/Vorlund/resample/{codecs.sh,libsoxr-LICENCE.txt}; do
            test -f "$prefix/$file"
        done
    fi
    if [[ -e $folder/bin/vorlund-plugins/audio.dll ]]; then
        for file in lib/vorlund/plugins/{audio.dll,SDL2.dll} share/doc/Vorlund/audio/{codecs.sh,libsdl2-LICENSE.txt}; do
            test -f "$prefix/$file"
        done
    fi
    test -f "$prefix/lib/vorlund/plugins/visual.dll"
    test -f "$prefix/lib/vorlund/plugins/y4m.dll"
    # The toolchain file looks for packages in its roots alone, and takes the prefix for one.
    cmake "${options[@]}" -DCMAKE_PREFIX_PATH="$prefix" "$toolchain"
    cmake --build "$work/build"
    # The program lies elsewhere: the loader finds the library, and with it the compiler's, by the path.
    WINEPATH="Z:$prefix/bin" timeout 120 wine "$work/build/consumer.exe" "$recording"
    test "$(stat -c %s "$prefix/bin/libstdc++-6.dll")" -lt 4000000
    timeout 120 wine "$prefix/bin/vorlund.exe" decode "$recording" -o "$work/program.wav"
    test "$($objdump -p "$work/build/plugins/consumer_plugin.dll" |
        sed -n '/^\[Ordinal\/Name Pointer\] Table/,/^$/s/^\t\[ *[0-9]*\] //p' | LC_ALL=C sort)" = "$entries"
    WINEPATH="Z:$prefix/bin" timeout 120 wine "$work/build/plugin_host.exe"
    cmake "${c_options[@]}" "$toolchain"
    cmake --build "$work/c"
    WINEPATH="Z:$prefix/bin" timeout 120 wine "$work/c/c_consumer.exe" "$recording" "$work/c/plugins/tone.dll"
    if [[ -e $prefix/lib/vorlund/plugins/sndfile.dll ]]; then
        flac --totally-silent "$recording" -o "$work/recording.flac"
        WINEPATH="Z:$prefix/bin" timeout 120 wine "$work/build/installed_host.exe" "$recording" "$work/recording.flac"
    fi
    ;;
linux | linux-arm64)
    [[ ! -e $folder/bin/vorlund-plugins/sndfile.so ]] || test -f "$prefix/lib/vorlund/plugins/sndfile.so"
    [[ ! -e $folder/bin/vorlund-plugins/image.so ]] || test -f "$prefix/lib/vorlund/plugins/image.so"
    [[ ! -e $folder/bin/vorlund-plugins/resample.so ]] || test -f "$prefix/lib/vorlund/plugins/resample.so"
    [[ ! -e $folder/bin/vorlund-plugins/audio.so ]] || test -f "$prefix/lib/vorlund/plugins/audio.so"
    test -f "$prefix/lib/vorlund/plugins/visual.so"
    test -f "$prefix/lib/vorlund/plugins/y4m.so"
    compiler=g++ nm=nm
    target_launcher native "$folder"
    options+=(-DCMAKE_PREFIX_PATH="$prefix")
    if [[ $target == linux-arm64 ]]; then
        compiler=aarch64-linux-gnu-g++ nm=aarch64-linux-gnu-nm
        target_launcher emulated "$folder"
        options+=("$toolchain")
        c_options+=("$toolchain")
    fi
    cmake "${options[@]}"
    cmake --build "$work/build"
    "${launcher[@]}" "$work/build/consumer" "$recording"
    "${launcher[@]}" "$prefix/bin/vorlund" decode "$recording" -o "$work/program.wav"
    # While the major version is 0, each minor version has a library file of its own.
    [[ $version == 0.* ]] && soversion=$minor || soversion=${version%%.*}
    readelf -d "$prefix/lib/libvorlund.so" | grep -F "Library soname: [libvorlund.so.$soversion]"
    test "$($nm -D --defined-only --format=posix "$work/build/plugins/consumer_plugin.so" | sed '/ A /d; s/ .*//' |
        LC_ALL=C sort)" = "$entries"
    "${launcher[@]}" "$work/build/plugin_host"
    cmake "${c_options[@]}"
    cmake --build "$work/c"
    "${launcher[@]}" "$work/c/c_consumer" "$recording" "$work/c/plugins/tone.so"
    if [[ -e $prefix/lib/vorlund/plugins/sndfile.so ]]; then
        flac --totally-silent "$recording" -o "$work/recording.flac"
        "${launcher[@]}" "$work/build/installed_host" "$recording" "$work/recording.flac"
    fi

    export PKG_CONFIG_PATH=$prefix/lib/pkgconfig
    test "$(pkg-config --modversion vorlund)" = "$version"
    # No LD_LIBRARY_PATH: the launcher of emulated programs has one.
    # shellcheck disable=SC2046
    $compiler -std=c++20 "$here/consumer.cpp" -o "$work/consumer" $(pkg-config --cflags --libs vorlund) \
        -Wl,-rpath,"$prefix/lib"
    "${launcher[@]}" "$work/consumer" "$recording"
    ;;
*) exit 2 ;;
esac
