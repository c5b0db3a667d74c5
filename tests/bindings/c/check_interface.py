#!/usr/bin/env python3
"""The functions of the C interface, which stay for ever: the headers against bindings/c/vorlund_c.def, and the built
library against both.

vorlund_c.def is the list that is kept: each name with the bytes of its arguments on 32-bit Windows, which are what a
change of a parameter shows in.

    check_interface.py                          the headers against the list
    check_interface.py TARGET BUILD-FOLDER      the exports of the built library too
    check_interface.py --update                 adds new functions to the list; what is there already must not change
"""
import pathlib
import re
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parents[3]
HEADERS = ROOT / "bindings/c/include/vorlund_c"
LIST = ROOT / "bindings/c/vorlund_c.def"
HEAD = """; The functions of the C interface, with the bytes of their arguments, as 32-bit Windows decorates them. Functions are
; added, and none is ever changed or taken away: tests/bindings/c/check_interface.py.
EXPORTS
"""
FUNCTION = re.compile(r"VORLUND_C_API\s+int32_t\s+VORLUND_CALL\s+(\w+)\(([^)]*)\);")
WIDE = re.compile(r"^(const )?(u?int64_t|double)\b[^*]*$")


def complain(text):
    sys.exit(f"check_interface: {text}")


def declared():
    """Every function of the headers with the bytes of its arguments."""
    functions = {}
    for header in sorted(HEADERS.glob("*.h")):
        text = re.sub(r"/\*.*?\*/", "", header.read_text(), flags=re.S)
        marks = text.count("VORLUND_C_API int32_t") + text.count("VORLUND_C_API\n")
        found = FUNCTION.findall(text)
        if header.name != "base.h" and marks != len(found):
            complain(f"{header.name}: {marks} functions are marked and {len(found)} understood")
        for name, parameters in found:
            parameters = " ".join(parameters.split())
            size = 0
            if parameters != "void":
                size = sum(8 if WIDE.match(one.strip()) else 4 for one in parameters.split(","))
            functions[name] = size
    return functions


def kept():
    return {name: int(size) for name, size in re.findall(r"^\s+(\w+)@(\d+)$", LIST.read_text(), flags=re.M)}


def exported(target, folder):
    if target.startswith("win"):
        machine = "i686" if target == "win32" else "x86_64"
        library = folder / "bin/vorlund-c-1.dll"
        text = subprocess.run([f"{machine}-w64-mingw32-objdump", "-p", library], check=True, capture_output=True,
                              text=True).stdout
        table = text.split("[Ordinal/Name Pointer] Table", 1)[1].split("\n\n", 1)[0]
        return set(re.findall(r"\]\s+(?:\+base\[\s*\d+\]\s+\w+\s+)?(\S+)$", table, flags=re.M))
    nm = "aarch64-linux-gnu-nm" if target == "linux-arm64" else "nm"
    text = subprocess.run([nm, "-D", "--defined-only", "--format=posix", folder / "bin/libvorlund-c.so"], check=True,
                          capture_output=True, text=True).stdout
    names = {line.split()[0] for line in text.splitlines()}
    if "VORLUND_C_1" not in {name.split("@@")[-1] for name in names if "@@" in name} | names:
        complain("the symbols have no version VORLUND_C_1")
    return {name.split("@@")[0] for name in names} - {"VORLUND_C_1"}


def main(arguments):
    functions = declared()
    old = kept() if LIST.exists() else {}
    for name, size in old.items():
        if name not in functions:
            complain(f"{name} is gone from the headers")
        if functions[name] != size:
            complain(f"{name} takes {functions[name]} bytes of arguments, and {size} in the list")
    if arguments == ["--update"]:
        LIST.write_text(HEAD + "".join(f"    {name}@{size}\n" for name, size in sorted(functions.items())))
        return
    for name in functions:
        if name not in old:
            complain(f"{name} is new: check_interface.py --update")
    if arguments:
        names = exported(arguments[0], pathlib.Path(arguments[1]))
        if names != set(functions):
            complain(f"exported and not declared: {sorted(names - set(functions))}, "
                     f"declared and not exported: {sorted(set(functions) - names)}")
    print(f"{len(functions)} functions")


main(sys.argv[1:])
