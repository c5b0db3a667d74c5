#!/bin/bash
# Installs the package for Python against a build, as a user would, and runs its tests.
#   tests/bindings/python/check.sh BUILD-FOLDER [ARGUMENT-OF-PYTEST...]
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../../.."
build=$(realpath "$1")
shift
folder=$build/python
mkdir -p "$folder"
python=$(scripts/python-site.sh "$build" "$folder/site" distributed pytest soundfile)
export PYTHONDONTWRITEBYTECODE=1
# What is installed is tested, and nothing of the sources. The checks of Python's development mode are for the package; Dask
# takes minutes with them.
export PYTHONPATH=$folder/site
tests() {
    timeout -k 10 400 "$python" "${mode[@]}" -m pytest -q -p no:cacheprovider -o faulthandler_timeout=60 --basetemp "$folder/pytest" "$@"
}
mode=(-X dev -W "ignore::DeprecationWarning")
tests tests/bindings/python --ignore tests/bindings/python/test_examples.py "$@"
mode=()
tests tests/bindings/python/test_examples.py "$@"
