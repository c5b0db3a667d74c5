#!/bin/bash
# Makes the package for Python from its sources against a build, as a user would, and installs it into a folder. Prints the
# interpreter that has what it needs.
#   scripts/python-site.sh BUILD-FOLDER FOLDER [MODULE...]      the interpreter must have these modules too
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
build=$(realpath "$1")
folder=$(realpath -m "$2")
modules=$(IFS=,; echo "${*:3}")
# Another interpreter may come first in the path; Debian's has the packages.
found=
for python in python3 /usr/bin/python3; do
    if "$python" -c "import cffi, numpy, setuptools${modules:+,$modules}" 2>/dev/null; then found=$(command -v "$python") && break; fi
done
if [[ ! $found ]]; then
    echo "python-site: no interpreter has cffi, numpy, setuptools ${modules}" >&2
    exit 1
fi
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
# A copy: the build leaves files beside the sources.
cp -r bindings/python "$work/source"
rm -rf "$folder"
export PIP_DISABLE_PIP_VERSION_CHECK=1 PIP_ROOT_USER_ACTION=ignore PYTHONDONTWRITEBYTECODE=1
(cd "$work/source" && VORLUND_BUILD_DIR=$build "$found" -m pip install --no-build-isolation --no-deps --no-index --quiet --target "$folder" .)
echo "$found"
