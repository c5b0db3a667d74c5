#!/bin/bash
# Makes a wheel of the package for Python with the library and its plug-ins inside, from a build for x86_64 Linux, and tries it.
#   scripts/wheel.sh BUILD-FOLDER [FOLDER]      the wheel goes to FOLDER, build/wheels without one
# The wheel is for this version of Python and for systems like this one: the plug-ins use the system's libsndfile and so on, and one
# whose library is missing is left out when it runs.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
build=$(realpath "$1")
wheels=$(realpath -m "${2-build/wheels}")
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
bundle=$work/source/vorlund/lib
mkdir -p "$bundle/vorlund-plugins"
# One file for each name by which a library is asked for: wheels have no links.
for library in "$work"/installed/lib/libvorlund*.so.*; do
    name=$(readelf -d "$library" | sed -n 's/.*SONAME.*\[\(.*\)\]/\1/p')
    cp "$(realpath "$library")" "$bundle/$name"
done
cp "$work"/installed/lib/vorlund/plugins/*.so "$bundle/vorlund-plugins/"
cp LICENSE "$work/source/"

export PIP_DISABLE_PIP_VERSION_CHECK=1 PIP_ROOT_USER_ACTION=ignore
mkdir -p "$wheels"
(cd "$work/source" && VORLUND_BUNDLE=1 VORLUND_BUILD_DIR=$build "$python" -m pip wheel --no-build-isolation --no-deps --no-index \
    --quiet --wheel-dir "$work/made" .)
# It works alone, in another folder, and uses its own libraries.
"$python" -m pip install --no-deps --no-index --quiet --target "$work/tried" "$work"/made/*.whl
(cd / && PYTHONPATH=$work/tried "$python" - "$OLDPWD/examples/data/strings.wav" "$work/tried" <<'CODE'
import io
import sys

import vorlund

samples, rate = vorlund.read(sys.argv[1])
file = io.BytesIO()
vorlund.write(file, samples, rate, kind="flac")
assert vorlund.read(file.getvalue(), dtype="float32").samples.shape == samples.shape
with open("/proc/self/maps") as maps:
    used = {line.split()[-1] for line in maps if "vorlund" in line}
assert any("libvorlund-c" in path for path in used)
assert all(path.startswith(sys.argv[2]) for path in used), used
CODE
)
cp "$work"/made/*.whl "$wheels/"
ls "$wheels"/*.whl
