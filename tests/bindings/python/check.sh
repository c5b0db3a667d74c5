#!/bin/bash
# Installs the package for Python against a build, as a user would, and runs its tests.
#   tests/bindings/python/check.sh BUILD-FOLDER [ARGUMENT-OF-PYTEST...]
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../../.."
build=$(realpath "$1")
shift
# Another interpreter may come first in the path; Debian's has the packages.
for python in python3 /usr/bin/python3; do
    if "$python" -c 'import cffi, numpy, pytest, setuptools, soundfile' 2>/dev/null; then break; fi
done
folder=$build/python
rm -rf "$folder"
mkdir -p "$folder"
# A copy: the build leaves files beside the sources.
cp -r bindings/python "$folder/source"
cd "$folder/source"
export PIP_DISABLE_PIP_VERSION_CHECK=1 PIP_ROOT_USER_ACTION=ignore PYTHONDONTWRITEBYTECODE=1
VORLUND_BUILD_DIR=$build "$python" -m pip install --no-build-isolation --no-deps --no-index --quiet --target "$folder/site" .
cd "$OLDPWD"
# What is installed is tested, and nothing of the sources.
PYTHONPATH=$folder/site timeout -k 10 150 "$python" -X dev -W "ignore::DeprecationWarning" -m pytest -q -p no:cacheprovider -o faulthandler_timeout=60 \
    --basetemp "$folder/pytest" tests/bindings/python "$@"
