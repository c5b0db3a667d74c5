#!/usr/bin/env python3
"""The macros of the Windows headers against the names of the public headers.  usage: check_names.py COMPILER [BUILD-FOLDER]

A macro of <windows.h> that has the name of a method renames it in some files and not in others. Every such name must be
in the list of NamesBegin.h, and be bracketed and have its two other names, A and W, where it is declared. The headers
must leave every macro of the system as it was, and none of their own behind, whatever comes first. Run by
scripts/headers.sh.
"""
import pathlib
import re
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parents[2]
PUBLIC = ROOT / "include/vorlund"
# The build's own folder has the headers that it makes.
FOLDERS = [PUBLIC, *(pathlib.Path(folder).resolve() / "include/vorlund" for folder in sys.argv[2:])]

# What programs for Windows include. winsock2.h has to come before windows.h.
SYSTEM = """winsock2 ws2tcpip windows windowsx shellapi shlobj shlwapi shobjidl commdlg commctrl mmsystem mmreg msacm vfw ole2
oleauto objbase winsvc setupapi richedit wincrypt winspool dsound ddraw d3d9 d3d11 d2d1 wincodec dshow mfapi mfidl
audioclient mmdeviceapi dinput xinput wininet winhttp urlmon imm dbghelp tlhelp32 psapi lm ras sqlext uxtheme dwmapi winioctl
dde ddeml lzexpand nb30 rpc winperf winnetwk aclapi powrprof wtsapi32 userenv iphlpapi""".split()
STANDARD = """algorithm array atomic chrono cmath compare concepts cstddef cstdint cstdlib cstring exception functional
initializer_list iterator limits memory optional ostream ranges span stdexcept string string_view type_traits utility
vector""".split()

BRACKETS = ("NamesBegin", "NamesEnd")
OWN_MACRO = re.compile(r"(VRL|VORLUND)_")
complaints = []


def includes(names, form="<{}.h>"):
    return "".join(f"#include {form.format(name)}\n" for name in names)


def macros(compiler, text, *options):
    """Every macro that is defined at the end of `text`, with its definition."""
    folders = [f"-I{folder.parent}" for folder in FOLDERS]
    command = [compiler, "-std=c++20", "-dM", "-E", *folders, *options, "-x", "c++", "-"]
    out = subprocess.run(command, input=text, capture_output=True, text=True, check=True).stdout
    return dict(re.findall(r"^#define (\w+)(.*)$", out, re.MULTILINE))


def identifiers(path):
    """The identifiers of a header, without comments, texts and what only the preprocessor reads."""
    text = re.sub(r'//[^\n]*|/\*.*?\*/|"(?:\\.|[^"\\\n])*"', " ", path.read_text(), flags=re.DOTALL)
    text = re.sub(r"^[ \t]*#[ \t]*(?!define)\w+[^\n]*$", " ", text, flags=re.MULTILINE)
    return set(re.findall(r"\b[A-Za-z_]\w*\b", text))


def check_list(listed):
    text = {name: (PUBLIC / f"{name}.h").read_text() for name in BRACKETS}
    undefined = re.findall(r"^#undef (\w+)$", text["NamesBegin"], re.MULTILINE)
    popped = re.findall(r'^#pragma pop_macro\("(\w+)"\)$', text["NamesEnd"], re.MULTILINE)
    if listed != undefined or listed != popped[::-1]:
        complaints.append(f"NamesBegin.h puts aside {listed}, undefines {undefined}; NamesEnd.h brings back {popped}")


def check_header(path, listed, clashing):
    names = identifiers(path)
    for name in sorted(names & clashing):
        if name not in listed:
            complaints.append(f"{path.name}: {name} is a macro of the Windows headers; add it to NamesBegin.h and NamesEnd.h")
    held = sorted(names & set(listed))
    code = path.read_text()
    bracketed = re.search(r"#include <vorlund/NamesBegin\.h>\n.*^#include <vorlund/NamesEnd\.h>\n\Z", code, re.DOTALL | re.MULTILINE)
    if held and not bracketed:
        complaints.append(f"{path.name}: declares {', '.join(held)} outside NamesBegin.h and NamesEnd.h")
    for twin in (name + letter for name in held for letter in "AW"):
        if twin not in names:
            complaints.append(f"{path.name}: has no method {twin}, which a call reads after <windows.h>")


def check_macros(compiler, system, ours, *options):
    """The headers change no macro of the system, whether they come before or after its headers."""
    before = macros(compiler, system, *options)
    for order, text in (("after", system + ours), ("before", ours + system)):
        both = macros(compiler, text, *options)
        for name, definition in sorted(before.items()):
            if both.get(name) != definition:
                complaints.append(f"{name} is{definition}, but {both.get(name, ' undefined')} with our headers {order} it {options}")
        for name in sorted(both.keys() - before.keys()):
            if not OWN_MACRO.match(name):
                complaints.append(f"{name} is defined by our headers {order} those of the system {options}")


def main():
    compiler = sys.argv[1]
    headers = sorted(path for folder in FOLDERS for path in folder.glob("*.h") if path.stem not in BRACKETS)
    listed = re.findall(r'^#pragma push_macro\("(\w+)"\)$', (PUBLIC / "NamesBegin.h").read_text(), re.MULTILINE)
    standard = includes(STANDARD, "<{}>")
    clashing = set()
    for options in ((), ("-DUNICODE", "-D_UNICODE")):
        system = macros(compiler, standard + includes(SYSTEM), *options)
        clashing |= system.keys() - macros(compiler, standard, *options).keys()
    check_list(listed)
    for path in headers:
        check_header(path, listed, clashing)
    complaints.extend(f"NamesBegin.h: {name} is no macro of the Windows headers" for name in listed if name not in clashing)
    ours = includes([path.stem for path in headers], "<vorlund/{}.h>")
    # Macros of the standard library that either side may bring in first are no difference.
    for options in ((), ("-DUNICODE",), ("-DWIN32_LEAN_AND_MEAN",), ("-DWIN32_LEAN_AND_MEAN", "-DUNICODE")):
        check_macros(compiler, standard + includes(["windows"]), standard + ours, *options)
    # The same for macros of somebody else.
    check_macros(compiler, standard + "".join(f"#define {name}(x) mine_{name}(x)\n" for name in listed), standard + ours)
    print(*complaints, sep="\n")
    print(f"{len(headers)} headers, {len(clashing)} macros, names put aside: {', '.join(listed)}, {len(complaints)} faults")
    return 1 if complaints or not listed or len(clashing) < 10000 else 0


sys.exit(main())
