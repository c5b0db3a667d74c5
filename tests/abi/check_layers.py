#!/usr/bin/env python3
"""The structure of the library: which folder may include which. Run by ./test; needs no build.

Every folder of src/vorlund is a floor, and every row of FLOORS is one folder with the public headers that it
implements, the lowest floor first. A file includes files of its own folder and of the folders above its row in the
table, whether by a quoted name or through a public header. A folder or a public header without a row is an error.
A public header that the build makes, `X.h` from `X.h.in`, is checked by what it is made from.

One edge leads upward, on purpose and for the library's own code: what lower floors need of the library object `v`
(object numbers, creation by class identifier, the stores) they reach through UPWARD. Its uses are counted apart;
without it there is no circle.

Besides: only WindowsLean.h includes the system's <windows.h>, only Platform.h asks for the system, public headers
include no private ones, and private headers are named by their path from src.
"""
import pathlib
import re
import sys
from collections import Counter

FLOORS = {
    "api/platform": "NamesBegin NamesEnd Platform",
    "api/text": "",
    "api/values": "Arguments ClassObject Debug Exception FormatArguments Id StdException String StringBuilder Text Version",
    "math": "InlineArithmetic Matrix Vector",
    "system": "BinaryLock Event EventWaits PeriodicClock ReadWriteLock Timer WaitSet",
    "api/objects": "ClassIds MakeObject Object ObjectCounter ObjectImpl RefPtr",
    "util": "Each ObjectEnumerator ObjectList PtrObject StringObject",
    "data/base": "AudioMeter BufferedStream DataFormat DecodeNotes DecoderRefusal DecoderSupport FormatCast MediaSample MemoryStream Stream StreamFilter StreamFilterImpl StreamImpl",
    "data/file": "File Path StreamErrors",
    "data/sources": "CbVideoSource Generators PlasmaVideoGenerator RandomGenerator",
    "data/codecs": "AudioEncoder CodecClassStore DecodeReport",
    "data/resource": "Blob Resource StreamSelector",
    "data/filters": "AudioConversion AudioPcmConverters AudioPictures ChannelMix PcmFilterImpl Resampler SetFormatIsf StreamTools WavDecoder",
    "data/wav": "WavMetadata WavRepair WavWriter",
    "devices": "AudioClip Bitmap Device DeviceClassStore MediaControl MediaObjects PropertyPage VideoClip VideoOutput VideoWindow WindowEvents WindowedOutput",
    "devices/audio": "AudioDevices AudioInput AudioOutput AudioPort AudioSystem MediaClock",
    "serial": "BufferedReader CharFormat LineReader Reader TextReader TextWriter VarReader VarWriter Writer",
    "api/tables": "PluginTable",
    "api/plugins": "Plugin PluginInfo PluginReport PluginStore",
    "api/isolation": "IsolatedDecoder",
    "api": "All ClassStore ObjectServices Session Vorlund",
}
UPWARD = "include/vorlund/ObjectServices.h"
# Which All.h leaves out: itself, and what is not for applications.
NOT_IN_ALL = {"All", "NamesBegin", "NamesEnd", "ObjectServices"}

ROOT = pathlib.Path(__file__).resolve().parents[2]
INCLUDE = re.compile(r'^[ \t]*#[ \t]*include[ \t]*([<"])([^">]*)')
WINDOWS = re.compile(r"^(windows|windef|winbase|winnt)\.h$", re.IGNORECASE)

height = {folder: i for i, folder in enumerate(FLOORS)}
home_of_header = {name: folder for folder, names in FLOORS.items() for name in names.split()}
headers = set()
complaints = []
edges = Counter()
upward = Counter()


def floor_of(path):
    """The folder that a file of the library belongs to, or None."""
    if path.startswith("include/vorlund/"):
        return home_of_header.get(path[len("include/vorlund/") :].removesuffix(".in").removesuffix(".h"))
    folder = path[len("src/vorlund/") :].rpartition("/")[0]
    return folder if folder in FLOORS else None


def check_include(path, where, quoted, name):
    if WINDOWS.match(name):
        if path != "src/vorlund/api/platform/WindowsLean.h":
            complaints.append(f"{where}: includes <{name}>, which enters through WindowsLean.h only")
        return
    if not quoted and not name.startswith("vorlund/"):
        return
    if quoted and path.startswith("include/"):
        complaints.append(f"{where}: is public and includes the private {name}")
        return
    target = ("src/" if quoted else "include/") + name
    if target not in headers and not (ROOT / target).is_file():
        complaints.append(f"{where}: names {name}, which is not at {target}")
        return
    own, theirs = floor_of(path), floor_of(target)
    if own is None or theirs is None or own == theirs:
        return
    if height[theirs] < height[own]:
        edges[own, theirs] += 1
    elif target == UPWARD:
        upward[own] += 1
    else:
        complaints.append(f"{where}: belongs to {own} and includes {name} of the higher floor {theirs}")


def check_file(path):
    if floor_of(path) is None:
        complaints.append(f"{path}: belongs to no floor; add its folder or header to FLOORS in tests/abi/check_layers.py")
    for number, line in enumerate((ROOT / path).read_text().splitlines(), 1):
        where = f"{path}:{number}"
        if "_WIN32" in line and path != "include/vorlund/Platform.h":
            complaints.append(f"{where}: asks for the system; write a pair _win32.cpp and _posix.cpp")
        if match := INCLUDE.match(line):
            check_include(path, where, match[1] == '"', match[2])


def main():
    files = sorted(
        str(file.relative_to(ROOT))
        for top in ("include", "src")
        for file in (ROOT / top).rglob("*")
        if file.suffix in (".h", ".cpp", ".inc", ".in")
    )
    headers.update(path.removesuffix(".in") for path in files if path.startswith("include/"))
    for path in files:
        check_file(path)
    everything = (ROOT / "include/vorlund/All.h").read_text()
    for name, folder in home_of_header.items():
        if name not in NOT_IN_ALL and f"#include <vorlund/{name}.h>" not in everything:
            complaints.append(f"include/vorlund/All.h: lacks {name}.h")
        if f"include/vorlund/{name}.h" not in headers:
            complaints.append(f"FLOORS names {name}.h in {folder}, which does not exist")
    for folder in FLOORS:
        if not (ROOT / "src/vorlund" / folder).is_dir():
            complaints.append(f"FLOORS names the folder {folder}, which does not exist")

    width = max(map(len, FLOORS))
    for folder in reversed(FLOORS):
        below = [f"{lower} {edges[folder, lower]}" for lower in reversed(FLOORS) if edges[folder, lower]]
        print(f"{folder:{width}}  > {', '.join(below) or 'nothing'}")
    print(f"upward, through {UPWARD}: " + ", ".join(f"{folder} {count}" for folder, count in upward.items()))
    print(*complaints, sep="\n")
    print(f"{len(files)} files, {sum(edges.values())} includes downward, {sum(upward.values())} upward, {len(complaints)} faults")
    return 1 if complaints or not edges else 0


sys.exit(main())
