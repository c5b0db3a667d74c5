#!/usr/bin/env python3
"""The recipes for vcpkg and Conan, which nobody here can run, against CMakeLists.txt: the version, and that each names
every option of a part, no other, and says that it was not run."""
import ast
import json
import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parents[2]
RECIPES = ROOT / "packaging"
PART = re.compile(r"VORLUND_(?:BUILD|WITH)_\w+")
complaints = []


def check(name, text, options, parts):
    named = set(re.findall(r"VORLUND_[A-Z_]+", text))
    for option in sorted(named - options):
        complaints.append(f"{name}: CMakeLists.txt has no option {option}")
    for option in sorted(parts - named):
        complaints.append(f"{name}: says nothing of the option {option}")
    if "Not run" not in text:
        complaints.append(f"{name}: does not say that it was not run")


def main():
    cmake = (ROOT / "CMakeLists.txt").read_text()
    version = re.search(r"project\(Vorlund VERSION ([\d.]+)", cmake)[1]
    options = set(re.findall(r"^option\((\w+)", cmake, re.MULTILINE))
    parts = {option for option in options if PART.fullmatch(option)}

    port = (RECIPES / "vcpkg/vorlund/portfile.cmake").read_text()
    check("portfile.cmake", port, options, parts)
    manifest = json.loads((RECIPES / "vcpkg/vorlund/vcpkg.json").read_text())
    features = set(re.findall(r"^    (\w+) VORLUND_", port, re.MULTILINE))
    if features != set(manifest["features"]):
        complaints.append(f"vcpkg.json: has the features {sorted(manifest['features'])}, portfile.cmake {sorted(features)}")
    if "Not run" not in manifest["$comment"]:
        complaints.append("vcpkg.json: does not say that it was not run")

    recipe = (RECIPES / "conan/conanfile.py").read_text()
    check("conanfile.py", recipe, options, parts)
    ast.parse(recipe)
    for name, found in (("vcpkg.json", manifest["version"]), ("conanfile.py", re.search(r'version = "(.*)"', recipe)[1])):
        if found != version:
            complaints.append(f"{name}: is of version {found}, CMakeLists.txt of {version}")
    print(*complaints, sep="\n")
    print(f"{len(options)} options, {len(parts)} of parts, {len(features)} features, {len(complaints)} faults")
    return 1 if complaints else 0


sys.exit(main())
