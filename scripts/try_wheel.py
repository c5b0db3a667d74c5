#!/usr/bin/env python3
"""Tries what scripts/wheel.sh has made.

    try_wheel.py FOLDER SOUND      reads and writes with the package in FOLDER, which must use its own libraries
    try_wheel.py --look FOLDER     looks at a package for Windows: everything that a part asks for is there, or the system's
"""
import io
import pathlib
import re
import subprocess
import sys

# What every Windows has, and Python.
SYSTEM = re.compile(r"(api-ms-win-.*|kernel32|user32|gdi32|advapi32|ole32|oleaut32|shell32|winmm|ws2_32|msvcrt|ntdll|setupapi|imm32|version"
                    r"|bcrypt|shlwapi|rpcrt4|avrt|psapi|dbghelp|userenv|wtsapi32|python3)\.dll", re.I)


def use(folder, sound):
    import vorlund

    samples, rate = vorlund.read(sound)
    assert samples.shape == (101430, 2) and rate == 22050
    file = io.BytesIO()
    # As far as there are plug-ins in it.
    plugins = {path.stem for path in pathlib.Path(folder).glob("vorlund/lib/vorlund-plugins/*.so")}
    vorlund.write(file, samples, rate, kind="flac" if "sndfile" in plugins else "wav", sample="int16")
    assert vorlund.read(file.getvalue(), dtype="float32").samples.shape == samples.shape
    assert "resample" not in plugins or vorlund.resample(samples, rate, 44100).shape == (202860, 2)
    with open("/proc/self/maps", encoding="utf-8") as maps:
        used = {line.split()[-1] for line in maps if "vorlund" in line.rpartition("/")[2]}
    assert any("libvorlund-c" in path for path in used), used
    assert all(path.startswith(folder) for path in used), used
    print(f"{sys.platform}, {vorlund.library_version()}: reads and writes with {len(used)} libraries of its own and {', '.join(sorted(plugins))}")


def look(folder):
    package = pathlib.Path(folder) / "vorlund"
    parts = [package / "_native.pyd", *package.glob("*.dll"), *package.glob("vorlund-plugins/*.dll")]
    there = {part.name.lower() for part in parts}
    for part in parts:
        text = subprocess.run(["x86_64-w64-mingw32-objdump", "-p", part], check=True, capture_output=True, text=True).stdout
        assert "pei-x86-64" in text, part
        for name in re.findall(r"DLL Name: (\S+)", text):
            assert name.lower() in there or SYSTEM.fullmatch(name), f"{part.name} asks for {name}"
        if part.suffix == ".pyd":
            assert "PyInit__native" in text and "vorlund-c-1.dll" in text, "the extension is not whole"
    print(f"{len(parts)} parts for Windows, complete; not run")


if __name__ == "__main__":
    if sys.argv[1] == "--look":
        look(sys.argv[2])
    else:
        use(*sys.argv[1:])
