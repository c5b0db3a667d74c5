#!/bin/bash
# Makes a wheel of the package for Python with the library and its plug-ins inside, from a build of the preset linux, linux-arm64 or
# win64, and tries it where it can.
#   scripts/wheel.sh [--partial] BUILD-FOLDER [FOLDER]      the wheel goes to FOLDER, build/wheels without one
# The wheel is for this version of Python and for systems like that of the build: the plug-ins for Linux use the system's libsndfile and
# so on, and one whose library is missing is left out when it runs. A build without a plug-in that the package uses is refused, but for
# --partial.
set -euo pipefail
needed=(audio measure resample sndfile)
if [[ ${1-} == --partial ]]; then
    needed=()
    shift
fi
cd "$(dirname "${BASH_SOURCE[0]}")/.."
build=$(realpath "$1")
wheels=$(realpath -m "${2-build/wheels}")
target=$(sed -n 's|^CMAKE_TOOLCHAIN_FILE:.*/\(.*\)\.cmake$|\1|p' "$build/CMakeCache.txt")
for python in python3 /usr/bin/python3; do
    if "$python" -c 'import cffi, numpy, setuptools, wheel' 2>/dev/null; then break; fi
done
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cp -r bindings/python "$work/source"

# What is installed finds its parts by where they are. Without what debuggers read, which some builds have.
for component in runtime c program; do
    cmake --install "$build" --strip --component "$component" --prefix "$work/installed" >/dev/null
done
package=$work/source/vorlund

bundle_linux() {
    local bundle=$package/lib library name
    mkdir -p "$bundle/vorlund-plugins"
    # One file for each name by which a library is asked for: wheels have no links.
    for library in "$work"/installed/lib/libvorlund*.so.*; do
        name=$(readelf -d "$library" | sed -n 's/.*SONAME.*\[\(.*\)\]/\1/p')
        cp "$(realpath "$library")" "$bundle/$name"
    done
    cp "$work"/installed/lib/vorlund/plugins/*.so "$bundle/vorlund-plugins/"
}

bundle_windows() {
    # Windows looks beside the extension.
    cp "$work"/installed/bin/*.dll "$package/"
    cp -r "$work/installed/lib/vorlund/plugins" "$package/vorlund-plugins"
}

# licences_of PACKAGE...: the texts about libraries inside: those that come with the plug-ins, and those of Debian's packages.
licences_of() {
    local name
    mkdir -p "$package/licences"
    if [[ -d $work/installed/share/doc/Vorlund ]]; then cp -r "$work/installed/share/doc/Vorlund/." "$package/licences/"; fi
    for name in "$@"; do cp "/usr/share/doc/$name/copyright" "$package/licences/$name.txt"; done
}

# Headers of Python for Windows, and what the extension is linked with: the functions of the stable interface that it may use.
python_for_windows() {
    local version
    version=$("$python" -c 'import sys; print(f"{sys.version_info[0]}.{sys.version_info[1]}")')
    cp -r "/usr/include/python$version" "$work/include"
    cp scripts/python-windows/pyconfig.h "$work/include/"
    x86_64-w64-mingw32-dlltool -d scripts/python-windows/python3.def -l "$work/libpython3.a"
}

# What is compiled into the plug-in visual.
others=(libeigen3-dev libstb-dev)
export PIP_DISABLE_PIP_VERSION_CHECK=1 PIP_ROOT_USER_ACTION=ignore VORLUND_BUNDLE=1 VORLUND_BUILD_DIR=$build
case $target in
"")
    platform=linux_$(uname -m)
    bundle_linux
    ;;
linux-arm64)
    platform=linux_aarch64
    bundle_linux
    emulated=$(scripts/arm64-libraries.sh python)
    export CC=aarch64-linux-gnu-gcc LDSHARED="aarch64-linux-gnu-gcc -shared" CPPFLAGS=-I$emulated/usr/include
    export _PYTHON_HOST_PLATFORM=linux-aarch64
    ;;
win64)
    platform=win_amd64
    bundle_windows
    others+=(gcc-mingw-w64-base mingw-w64-common)
    python_for_windows
    export CC=x86_64-w64-mingw32-gcc LDSHARED="x86_64-w64-mingw32-gcc -shared" CPPFLAGS=-I$work/include
    # Its functions would be in one more library.
    export CFLAGS=-fno-stack-protector
    export LDFLAGS="-L$work -static-libgcc" VORLUND_PYTHON_LIBRARY=python3 _PYTHON_HOST_PLATFORM=win-amd64
    ;;
*)
    echo "wheel: there are no wheels for $target" >&2
    exit 2
    ;;
esac
licences_of "${others[@]}"
cp LICENSE "$work/source/"
mkdir -p "$wheels"
(cd "$work/source" && "$python" -m pip wheel --no-build-isolation --no-deps --no-index --quiet --wheel-dir "$work/made" .)
unset CC LDSHARED CFLAGS CPPFLAGS LDFLAGS _PYTHON_HOST_PLATFORM
if [[ $target == win64 ]]; then
    # The ending by which Windows knows extensions.
    (cd "$work" && "$python" -m wheel unpack --dest unpacked made/*.whl >/dev/null && rm made/*.whl)
    mv "$work"/unpacked/*/vorlund/_native*.so "$(echo "$work"/unpacked/*/vorlund)/_native.pyd"
    (cd "$work" && "$python" -m wheel pack --dest-dir made unpacked/* >/dev/null)
fi
wheel=$(echo "$work"/made/*.whl)
"$python" scripts/try_wheel.py names "$wheel" "$platform"

# It works alone, from another folder, and uses its own libraries.
script=$PWD/scripts/try_wheel.py
sound=$PWD/examples/data/strings.wav
unset PYTHONPATH LD_LIBRARY_PATH
case $target in
"")
    "$python" -m venv --system-site-packages --without-pip "$work/venv"
    own=$work/venv/bin/python
    if (cd / && "$own" -c 'import vorlund' 2>/dev/null); then
        echo "wheel: $python has a package vorlund already" >&2
        exit 1
    fi
    "$own" -m pip install --no-index --no-deps --quiet "$wheel"
    (cd / && "$own" "$script" use "$work/venv" "$sound" "${needed[@]}")
    ;;
linux-arm64)
    "$python" -m zipfile -e "$wheel" "$work/tried"
    libraries=$emulated/usr/lib/aarch64-linux-gnu
    sounds=$(sed -n 's/^VORLUND_CODECS_DIR:[A-Z]*=//p' "$build/CMakeCache.txt")
    (cd / && QEMU_LD_PREFIX=/usr/aarch64-linux-gnu qemu-aarch64-static -E PYTHONHOME="$emulated/usr" \
        -E PYTHONPATH="$work/tried:$emulated/usr/lib/python3/dist-packages" \
        -E LD_LIBRARY_PATH="$libraries:$libraries/blas:$libraries/lapack${sounds:+:$sounds/lib}" \
        "$emulated/usr/bin/python3.11" "$script" use "$work/tried" "$sound" "${needed[@]}")
    ;;
win64)
    "$python" -m zipfile -e "$wheel" "$work/tried"
    "$python" "$script" look "$work/tried" "${needed[@]}"
    ;;
esac
cp "$wheel" "$wheels/"
echo "$wheels/${wheel##*/}"
