#!/bin/bash
# Builds and runs programs and plug-ins of somebody else against one installed form, in every way that docs/packages.md
# tells. Runs on the form's own system: in a root of Debian, or where the cross compiler for the zips is.
# usage: tests/install/consumers.sh SOURCES WORK PREFIX [win32|win64]
#   SOURCES: the repository; WORK: an empty folder; PREFIX: the installation, /usr for Debian packages
set -euo pipefail
sources=$1 work=$2 prefix=$3 target=${4-linux}
here=$sources/tests/install
recording=$sources/examples/data/strings.wav
exe="" so=so system=linux compiler=g++ launcher=() options=()
path=/usr/bin:/bin

case $target in
win32) machine=i686-w64-mingw32 ;;
win64) machine=x86_64-w64-mingw32 ;;
*) machine="" ;;
esac
if [[ -n $machine ]]; then
    exe=.exe so=dll system=windows compiler=$machine-g++-posix launcher=(wine)
    export WINEPATH="Z:$prefix/bin"
    # Nothing of the building machine's own.
    export PKG_CONFIG_LIBDIR=$prefix/lib/pkgconfig
    options=(-DCMAKE_TOOLCHAIN_FILE="$prefix/lib/cmake/Vorlund/toolchain.cmake")
fi
count=0

# way NAME: a line for each way that has come to its end.
way() {
    count=$((count + 1))
    echo "   $target, $prefix: $1"
}

# logged NAME COMMAND...: a step whose output matters only when it fails. Not under "if", where no failure would end it.
logged() {
    local status
    set +e
    (set -e; "${@:2}") >"$work/$1.log" 2>&1
    status=$?
    set -e
    ((status == 0)) || { tail -n 30 "$work/$1.log"; exit 1; }
}

run() { timeout 120 "${launcher[@]}" "$@"; }

# with_cmake NAME OPTION...: configures and builds tests/install and runs the consumer and the host of the plug-in.
with_cmake() {
    local name=$1
    cmake -G Ninja -S "$here" -B "$work/$name" -DCMAKE_BUILD_TYPE=Release -DVORLUND_WANTED="$version" "${@:2}"
    cmake --build "$work/$name"
    run "$work/$name/consumer$exe" "$recording"
    run "$work/$name/plugin_host$exe"
}

# host_finds PLUGIN: a plug-in that was built without CMake does what the one built with it does.
host_finds() {
    local folder=$work/host-$RANDOM
    mkdir -p "$folder/plugins"
    cp "$work/package/plugin_host$exe" "$folder"
    cp "$1" "$folder/plugins/consumer_plugin.$so"
    run "$folder/plugin_host$exe"
}

version=$(sed -n 's/^project(Vorlund VERSION \([0-9]*\.[0-9]*\).*/\1/p' "$sources/CMakeLists.txt")
mkdir -p "$work"

logged package with_cmake package "${options[@]}"
way "find_package, and a plug-in by vorlund_add_plugin"

# Toolchain files that look for packages in their own roots alone.
strict() {
    if [[ -n $machine ]]; then
        with_cmake strict-own -DCMAKE_TOOLCHAIN_FILE="$sources/cmake/toolchains/$target.cmake" -DCMAKE_PREFIX_PATH="$prefix"
        printf '%s\n' 'set(CMAKE_SYSTEM_NAME Windows)' "set(CMAKE_CXX_COMPILER $compiler)" \
            "set(CMAKE_FIND_ROOT_PATH /usr/$machine)" 'set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)' >"$work/strict.cmake"
        with_cmake strict-other -DCMAKE_TOOLCHAIN_FILE="$work/strict.cmake" -DVorlund_DIR="$prefix/lib/cmake/Vorlund"
    else
        # The prefix as a whole lies somewhere else, as that of a cross compiler does.
        printf '%s\n' 'set(CMAKE_SYSTEM_NAME Linux)' 'set(CMAKE_FIND_ROOT_PATH /opt/root)' \
            'set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)' >"$work/strict.cmake"
        LD_LIBRARY_PATH=$(echo /opt/root/usr/lib/*-linux-gnu) PATH=/opt/root/usr/bin:$PATH \
            with_cmake strict -DCMAKE_TOOLCHAIN_FILE="$work/strict.cmake"
        grep -q '^Vorlund_DIR:PATH=/opt/root/' "$work/strict/CMakeCache.txt"
    fi
}
if [[ -n $machine || -d /opt/root ]]; then
    logged strict strict
    way "find_package, with toolchain files whose mode for packages is ONLY"
fi

# shellcheck disable=SC2046
$compiler -std=c++20 "$here/consumer.cpp" -o "$work/consumer$exe" $(pkg-config --cflags --libs vorlund)
run "$work/consumer$exe" "$recording" >/dev/null
way "pkg-config"

mkdir "$work/make"
cp "$here/plugin.cpp" "$work/make/Plugin.cpp"
cp "$here/plugin.mk" "$work/make/Makefile"
make --silent -C "$work/make" CXX="$compiler" EXTENSION="$so"
host_finds "$work/make/my_plugin.$so" >/dev/null
way "a plug-in by a Makefile"

# The commands of the guide, as they are there. Those for Linux are in the block for an installation.
place=$system
[[ $system != linux ]] || place=installed
mkdir "$work/hand"
cp "$here/plugin.cpp" "$work/hand/Plugin.cpp"
lines=$(sed -n "/^### By hand/,/^##/{/^\`\`\`console $place/,/^\`\`\`/s/^\\$ //p}" "$sources/docs/writing-a-plugin.md")
[[ -n $lines ]]
(cd "$work/hand" && PREFIX=$prefix bash -euo pipefail -c "${lines//g++/$compiler}")
host_finds "$work/hand/my_plugin.$so" >/dev/null
way "a plug-in by hand"

# The hello program, by the line beside it.
mkdir "$work/hello"
if [[ -n $machine ]]; then
    hello=$prefix/doc/examples/hello
    line=$(sed -n 's/^    \(g++ .*hello\.exe.*\)/\1/p' "$hello/README.txt")
    line=${line//bin\/hello.exe/$work/hello/hello.exe}
    (cd "$prefix" && bash -euc "${line/g++/$compiler}")
else
    hello=/usr/share/doc/libvorlund-dev/examples/hello
    line=$(sed -n 's/^    \(g++ .*pkg-config.*\)/\1/p' "$hello/README.txt")
    cp "$hello/hello.cpp" "$work/hello"
    (cd "$work/hello" && bash -euc "$line")
fi
run "$work/hello/hello$exe" "$recording" | tr -d '\r' >"$work/hello/output"
grep -q "^Vorlund $version" "$work/hello/output"
grep -q 'strings.wav: 4.60 seconds$' "$work/hello/output"
way "the hello program by its line"

# shellcheck source=tests/install/c_ways.sh
source "$here/c_ways.sh"

# Binary plug-ins of releases.
for plugin in "$here"/releases/*/"$target"/vorlund_sample."$so"; do
    [[ -e $plugin ]] || continue
    mkdir -p "$work/old"
    cp "$plugin" "$work/old"
    PATH=$prefix/bin:$path run "$(command -v "$prefix/bin/vorlund$exe")" --no-plugins --plugin-path "$work/old" \
        decode "$sources/examples/data/scale.vsa" -o "$work/old/scale.wav" >"$work/old/output"
    grep -q 'CSampleDecoder' "$work/old/output"
    way "the plug-in of ${plugin#"$here"/releases/}"
done
echo "$count ways"
