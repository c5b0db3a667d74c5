#!/bin/bash
# Makes a wheel of the package for Python with the library and its plug-ins inside, from a build of the preset linux, linux-arm64 or
# win64, and tries it where it can.
#   scripts/wheel.sh BUILD-FOLDER [FOLDER]      the wheel goes to FOLDER, build/wheels without one
# The wheel is for this version of Python and for systems like that of the build: the plug-ins for Linux use the system's libsndfile and
# so on, and one whose library is missing is left out when it runs.
set -euo pipefail
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

# What is installed finds its parts by where they are.
for component in runtime c program; do
    cmake --install "$build" --component "$component" --prefix "$work/installed" >/dev/null
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

# Headers of Python for Windows, and what the extension is linked with: the functions of the stable interface that it may use.
python_for_windows() {
    local version
    version=$("$python" -c 'import sys; print(f"{sys.version_info[0]}.{sys.version_info[1]}")')
    cp -r "/usr/include/python$version" "$work/include"
    cp scripts/python-windows/pyconfig.h "$work/include/"
    x86_64-w64-mingw32-dlltool -d scripts/python-windows/python3.def -l "$work/libpython3.a"
}

export PIP_DISABLE_PIP_VERSION_CHECK=1 PIP_ROOT_USER_ACTION=ignore VORLUND_BUNDLE=1 VORLUND_BUILD_DIR=$build
case $target in
"") bundle_linux ;;
linux-arm64)
    bundle_linux
    emulated=$(scripts/arm64-libraries.sh python)
    export CC=aarch64-linux-gnu-gcc LDSHARED="aarch64-linux-gnu-gcc -shared" CPPFLAGS=-I$emulated/usr/include
    export _PYTHON_HOST_PLATFORM=linux-aarch64
    ;;
win64)
    bundle_windows
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
"$python" -m zipfile -e "$work"/made/*.whl "$work/tried"

# It works alone, in another folder, and uses its own libraries.
tried=("$work/tried" "$PWD/examples/data/strings.wav")
case $target in
"") (cd / && PYTHONPATH=$work/tried "$python" "$OLDPWD/scripts/try_wheel.py" "${tried[@]}") ;;
linux-arm64)
    libraries=$emulated/usr/lib/aarch64-linux-gnu
    others=$(sed -n 's/^VORLUND_CODECS_DIR:[A-Z]*=//p' "$build/CMakeCache.txt")
    (cd / && QEMU_LD_PREFIX=/usr/aarch64-linux-gnu qemu-aarch64-static -E PYTHONHOME="$emulated/usr" \
        -E PYTHONPATH="$work/tried:$emulated/usr/lib/python3/dist-packages" \
        -E LD_LIBRARY_PATH="$libraries:$libraries/blas:$libraries/lapack:$others/lib" \
        "$emulated/usr/bin/python3.11" "$OLDPWD/scripts/try_wheel.py" "${tried[@]}")
    ;;
win64) "$python" scripts/try_wheel.py --look "$work/tried" ;;
esac
cp "$work"/made/*.whl "$wheels/"
ls "$wheels"/*.whl
