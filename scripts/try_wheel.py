#!/usr/bin/env python3
"""Tries what scripts/wheel.sh has made.

    try_wheel.py names WHEEL PLATFORM          its name and tags say this platform and this Python, its list of files holds
    try_wheel.py use FOLDER SOUND PLUGIN...    reads and writes with the package in FOLDER, which must have these plug-ins and use its own
                                               libraries
    try_wheel.py look FOLDER PLUGIN...         looks at a package for Windows, which must have these plug-ins: what a part asks for is there,
                                               or the system's, or Python's
"""
import base64
import csv
import hashlib
import io
import pathlib
import re
import subprocess
import sys
import zipfile

# What every Windows has.
SYSTEM = re.compile(r"(api-ms-win-.*|kernel32|user32|gdi32|advapi32|ole32|oleaut32|shell32|winmm|ws2_32|msvcrt|ntdll|setupapi|imm32|version"
                    r"|bcrypt|shlwapi|rpcrt4|avrt|psapi|dbghelp|userenv|wtsapi32)\.dll")
# What the extension may ask of Python.
STABLE = pathlib.Path(__file__).parent / "python-windows/python3.def"


def names(wheel, platform):
    path = pathlib.Path(wheel)
    version = f"cp{sys.version_info[0]}{sys.version_info[1]}"
    tag = f"{version}-{version}-{platform}"
    with zipfile.ZipFile(path) as archive:
        there = archive.namelist()
        folder = next(name for name in there if name.endswith(".dist-info/RECORD")).rpartition("/")[0]
        assert folder == "-".join(path.name.split("-")[:2]) + ".dist-info", folder
        assert path.name == f"{folder.removesuffix('.dist-info')}-{tag}.whl", path.name
        about = archive.read(f"{folder}/WHEEL").decode()
        assert re.findall(r"^Tag: (.*)$", about, re.M) == [tag] and "Root-Is-Purelib: false" in about, about
        extension = "_native.pyd" if platform.startswith("win") else "_native.abi3.so"
        assert [name for name in there if "_native" in name] == [f"vorlund/{extension}"], there
        rows = {name: (digest, size) for name, digest, size in csv.reader(io.StringIO(archive.read(f"{folder}/RECORD").decode()))}
        assert len(there) == len(set(there)) and set(rows) == set(there), set(rows) ^ set(there)
        for name in there:
            data = archive.read(name)
            digest = base64.urlsafe_b64encode(hashlib.sha256(data).digest()).decode().rstrip("=")
            # The list has no sum of itself.
            expected = ("", "") if name == f"{folder}/RECORD" else (f"sha256={digest}", str(len(data)))
            assert rows[name] == expected, f"{name}: {rows[name]}, and it is {expected}"
    print(f"{path.name}: {len(there)} files, as listed")


def check_plugins(files, needed):
    there = {path.stem for path in files}
    assert there >= set(needed), f"without the plug-in {', '.join(sorted(set(needed) - there))}"
    return there


def use(folder, sound, *needed):
    import numpy as np
    import vorlund

    package = pathlib.Path(vorlund.__file__).parent
    assert package.is_relative_to(folder), package
    plugins = check_plugins(package.glob("lib/vorlund-plugins/*.so"), needed)
    samples, rate = vorlund.read(sound, dtype="int16")
    assert samples.shape == (101430, 2) and rate == 22050
    # What is in the package works; there may be less than is asked for.
    kinds = ["wav", *(["flac", "aiff", "ogg"] if "sndfile" in plugins else [])]
    for kind in kinds:
        file = io.BytesIO()
        vorlund.write(file, samples, rate, kind=kind, sample="int16")
        again = vorlund.read(file.getvalue(), dtype="int16")
        assert again.rate == rate and again.samples.shape == samples.shape, kind
        assert kind == "ogg" or np.array_equal(again.samples, samples), kind
    assert "resample" not in plugins or vorlund.resample(samples.astype(np.float32), rate, 44100).shape == (202860, 2)
    assert "measure" not in plugins or round(vorlund.measure(sound).integrated, 1) == -13.8
    with open("/proc/self/maps", encoding="utf-8") as maps:
        used = {line.split()[-1] for line in maps if re.search(r"vorlund[^/]*$|vorlund-plugins/", line)}
    assert all(path.startswith(str(package)) for path in used), used
    loaded = {pathlib.Path(path).stem for path in used if "vorlund-plugins/" in path}
    assert any("libvorlund-c" in path for path in used) and loaded >= {"sndfile", "resample", "measure"} & plugins, used
    print(f"{sys.platform}, {vorlund.library_version()}: reads and writes {', '.join(kinds)} with its own libraries; plug-ins loaded:"
          f" {', '.join(sorted(loaded))}; not: {', '.join(sorted(plugins - loaded)) or 'none'}")


def tables(part):
    """What a part asks for, by library, and what it has for others."""
    text = subprocess.run(["x86_64-w64-mingw32-objdump", "-p", part], check=True, capture_output=True, text=True).stdout
    assert "pei-x86-64" in text, part
    asked, library = {}, None
    for line in text.partition("The Import Tables")[2].partition("The Export Tables")[0].splitlines():
        if found := re.match(r"\s*DLL Name: (\S+)", line):
            library = asked.setdefault(found[1].lower(), set())
        elif library is not None and (found := re.match(r"\s+[0-9a-f]+\s+\d+\s+([A-Za-z_?@]\S*)$", line)):
            library.add(found[1])
    given = set(re.findall(r"^\s+\[\s*\d+\].*?(\S+)$", text.partition("[Ordinal/Name Pointer] Table")[2], re.M))
    return asked, given


def look(folder, *needed):
    package = pathlib.Path(folder) / "vorlund"
    parts = [package / "_native.pyd", *package.glob("*.dll"), *package.glob("vorlund-plugins/*.dll")]
    plugins = check_plugins(package.glob("vorlund-plugins/*.dll"), needed)
    for plugin in plugins & {"audio", "image", "measure", "resample", "sndfile"}:
        texts = [path.name for path in package.glob(f"licences/{plugin}/*.txt")]
        assert any(re.search("COPYING|LICEN[CS]E", name) for name in texts), f"no licence of the libraries of {plugin}: {texts}"
    known = {part.name.lower(): tables(part) for part in parts}
    stable = set(re.findall(r"^    (\w+)", STABLE.read_text(encoding="utf-8"), re.M))
    links = 0
    for part, (asked, _) in known.items():
        for library, functions in asked.items():
            if library in known:
                assert functions and functions <= known[library][1], f"{part} asks {library} for {functions - known[library][1]}"
                links += len(functions)
            elif library == "python3.dll":
                assert part == "_native.pyd" and functions <= stable, f"{part} asks Python for {functions - stable}"
            else:
                assert SYSTEM.fullmatch(library), f"{part} asks for {library}"
    asked, given = known["_native.pyd"]
    assert given == {"PyInit__native"} and {"python3.dll", "vorlund-c-1.dll"} <= set(asked), "the extension is not whole"
    print(f"{len(parts)} parts for Windows with {', '.join(sorted(plugins))}: {links} functions that they ask of each other are there, and"
          f" {len(asked['python3.dll'])} of Python are stable")


if __name__ == "__main__":
    {"names": names, "use": use, "look": look}[sys.argv[1]](*sys.argv[2:])
