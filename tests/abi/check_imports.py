#!/usr/bin/env python3
"""The system functions that the shipped Windows library asks for, against docs/windows-imports.md.

usage: tests/abi/check_imports.py [--update] BUILD-FOLDER

Fails when the library imports a function that the page has no row for, when a row's function is no longer imported, and
when a row names another oldest Windows than the headers of the cross compiler do. With --update it writes the rows anew:
what is known of a function, its test and what Wine does, stays; a new function gets *unknown* for both, for a person to
find out.

The oldest Windows is that of the declaration: the guards around it that ask for _WIN32_WINNT. Most functions stand
outside such guards, in headers that begin with Windows 2000.
"""
import pathlib
import re
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parents[2]
PAGE = ROOT / "docs/windows-imports.md"
HEADERS = pathlib.Path("/usr/i686-w64-mingw32/include")
# Modules that come with the library, not with the system.
SHIPPED = re.compile(r"^lib(gcc|stdc\+\+|winpthread)")
UNKNOWN = "*unknown*"
BEGIN, END = "<!-- imports -->", "<!-- end of imports -->"
VERSIONS = {
    0x0500: "2000", 0x0501: "XP", 0x0502: "Server 2003", 0x0600: "Vista", 0x0601: "7", 0x0602: "8", 0x0603: "8.1",
    0x0A00: "10",
}
NAMES = {"WIN2K": 0x0500, "WINXP": 0x0501, "WS03": 0x0502, "VISTA": 0x0600, "LONGHORN": 0x0600, "WS08": 0x0600,
         "WIN7": 0x0601, "WIN8": 0x0602, "WINBLUE": 0x0603, "WIN10": 0x0A00}
GUARD = re.compile(r"_WIN32_WINNT\s*>=\s*(0x[0-9A-Fa-f]+|_WIN32_WINNT_(\w+))")


def imports(library):
    """(function, module) of every import by name from the system's modules."""
    text = subprocess.run(["i686-w64-mingw32-objdump", "-p", str(library)], check=True, capture_output=True, text=True).stdout
    module, found = None, set()
    for line in text.splitlines():
        if match := re.match(r"\s*DLL Name: (\S+)", line):
            module = match[1].lower()
        elif line.startswith("There is an export table") or line.startswith("PE File Base"):
            module = None
        elif module and (match := re.match(r"\t[0-9a-f]+\s+\d+\s+(\S+)", line)) and not SHIPPED.match(module):
            found.add((match[1], module))
    return found


def oldest(functions):
    """The guard around the declaration of each function that the headers declare: 0 for none."""
    wanted = re.compile(r"\b(" + "|".join(map(re.escape, sorted(functions))) + r")\s*\(")
    result = {}
    for header in sorted(HEADERS.glob("*.h")):
        guards = []
        for line in header.read_text(errors="replace").splitlines():
            text = line.strip()
            if text.startswith("#if"):
                match = GUARD.search(text)
                number = 0
                if match and "||" not in text:
                    number = NAMES.get(match[2], 0) if match[2] else int(match[1], 16)
                guards.append(number)
            elif text.startswith(("#else", "#elif")) and guards:
                guards[-1] = 0
            elif text.startswith("#endif") and guards:
                guards.pop()
            elif not text.startswith("#"):
                for match in wanted.finditer(line):
                    before = line[: match.start()].strip()
                    # A declaration has a type before the name and is no call.
                    if before and not re.search(r"[=(,!?]|\breturn\b", before):
                        least = max(guards, default=0)
                        result[match[1]] = min(result.get(match[1], least), least)
    return result


def name_of(function, module, guards):
    if module == "msvcrt.dll":
        return "2000"
    if function not in guards:
        return UNKNOWN
    return VERSIONS.get(guards[function], VERSIONS[0x0500])


def read_rows():
    text = PAGE.read_text()
    rows = {}
    for line in text[text.index(BEGIN) : text.index(END)].splitlines():
        cells = [cell.strip() for cell in line.strip("|").split("|")]
        if len(cells) == 5 and cells[0].startswith("`"):
            rows[cells[0].strip("`"), cells[1]] = cells[2:]
    return text, rows


def main():
    arguments = sys.argv[1:]
    update = arguments[:1] == ["--update"]
    if len(arguments) != 1 + update:
        sys.exit(__doc__)
    found = imports(pathlib.Path(arguments[-1]) / "bin/vorlund.dll")
    guards = oldest({function for function, _ in found})
    text, rows = read_rows()
    if update:
        lines = [BEGIN, "| Function | Module | Oldest Windows | Test | Wine 8.0 |", "|---|---|---|---|---|"]
        for key in sorted(found, key=lambda item: (item[1], item[0].lower())):
            _, test, wine = rows.get(key, ["", UNKNOWN, UNKNOWN])
            lines.append(f"| `{key[0]}` | {key[1]} | {name_of(*key, guards)} | {test} | {wine} |")
        PAGE.write_text(text[: text.index(BEGIN)] + "\n".join(lines) + "\n" + text[text.index(END) :])
        return 0
    complaints = [f"{function} of {module} is imported and has no row" for function, module in sorted(found - rows.keys())]
    complaints += [f"{function} of {module} has a row and is not imported" for function, module in sorted(rows.keys() - found)]
    for key in sorted(found & rows.keys()):
        if rows[key][0] != name_of(*key, guards):
            complaints.append(f"{key[0]} needs Windows {name_of(*key, guards)}, its row says {rows[key][0]}")
    print(*complaints, sep="\n", end="\n" if complaints else "")
    print(f"{len(found)} imports, {len(complaints)} faults; {PAGE.relative_to(ROOT)}")
    return 1 if complaints or not found else 0


sys.exit(main())
