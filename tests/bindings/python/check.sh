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
# What is installed is tested, and nothing of the sources.
PYTHONPATH=$folder/site timeout -k 10 240 "$python" -X dev -W "ignore::DeprecationWarning" -m pytest -q -p no:cacheprovider -o faulthandler_timeout=60 \
    --basetemp "$folder/pytest" tests/bindings/python "$@"
