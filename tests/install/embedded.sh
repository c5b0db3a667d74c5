#!/bin/bash
# Builds a project that has the sources inside, by add_subdirectory and by FetchContent, and runs it.
# usage: tests/install/embedded.sh SOURCES WORK [win32|win64]
set -euxo pipefail
sources=$1 work=$2 target=${3-linux}
recording=$sources/examples/data/strings.wav
exe="" launcher=() options=()
if [[ $target != linux ]]; then
    exe=.exe launcher=(wine) options=(-DCMAKE_TOOLCHAIN_FILE="$sources/cmake/toolchains/$target.cmake")
fi
# Both ways compile the same files, in the same folder and with the options of the presets.
if command -v ccache >/dev/null; then export CMAKE_CXX_COMPILER_LAUNCHER=ccache; fi

for way in add_subdirectory FetchContent; do
    build=$work/embedded-$target
    rm -rf "$build"
    cmake -G Ninja -S "$sources/tests/install/embedded" -B "$build" -DWAY="$way" -DVORLUND_SOURCES="$sources" \
        -DCMAKE_BUILD_TYPE=Release -DCMAKE_CXX_FLAGS_RELEASE="-O2 -DNDEBUG" -DCMAKE_COMPILE_WARNING_AS_ERROR=ON "${options[@]}"
    cmake --build "$build" -j "$(nproc)"
    if [[ $target != linux ]]; then
        WINEPATH=$(sed 's/^/Z:/' "$build/places.txt" | paste -sd ';')
        export WINEPATH
        # The scanner is found beside the library.
        library=$(sed -n 1p "$build/places.txt")
        cp "$(sed -n 2p "$build/places.txt")/vorlund-plugin-scan.exe" "$library"
    else
        cp "$(sed -n 2p "$build/places.txt")/vorlund-plugin-scan" "$build/bin"
    fi
    timeout 120 "${launcher[@]}" "$build/bin/consumer$exe" "$recording"
    timeout 120 "${launcher[@]}" "$build/bin/plugin_host$exe"
done
