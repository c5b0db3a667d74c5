#!/usr/bin/env python3
"""Runs examples in the folder of their data and compares what they print with their expected.txt.

usage: tests/examples/check.py BUILD-FOLDER [NAME...] [-- LAUNCHER...]
       tests/examples/check.py --folders

Without a name, all that the build has. A launcher comes before each program: "wine", say. --folders looks at the folders
instead: they are numbered without a gap, each has an expected.txt and a README.md that links to its source, and
examples/README.md names it.
"""
import pathlib
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parents[2]
EXAMPLES = ROOT / "examples"
DATA = EXAMPLES / "data"
# What it would do without these is no test: make a noise, and last as long as its sound.
ARGUMENTS = {"16-play-and-draw": ["--silent", "--frames", "25"]}


def look_at_folders():
    faults = []
    folders = sorted(path for path in EXAMPLES.iterdir() if path.name[:2].isdigit())
    index = (EXAMPLES / "README.md").read_text()
    for number, folder in enumerate(folders, 1):
        if not folder.name.startswith(f"{number:02}-"):
            faults.append(f"{folder.name} comes where number {number:02} should")
        faults += [f"{folder.name} has no {name}" for name in ("README.md", "expected.txt") if not (folder / name).exists()]
        page = folder / "README.md"
        if page.exists() and "](main.c" not in page.read_text():
            faults.append(f"{folder.name}/README.md does not link to its source")
        if f"({folder.name}/README.md)" not in index:
            faults.append(f"examples/README.md does not name {folder.name}")
    return faults


def run(build, name, launcher):
    """What is wrong with an example, or None."""
    program = next((path for path in (build / f"bin/example_{name}", build / f"bin/example_{name}.exe") if path.exists()), None)
    if not program:
        return "is not built"
    # Into files: what a program leaves behind, such as Wine's server, may hold a pipe open for ever.
    with tempfile.TemporaryFile() as out, tempfile.TemporaryFile() as errors:
        words = [*launcher, program, *ARGUMENTS.get(name, [])]
        status = subprocess.run(words, cwd=DATA, stdin=subprocess.DEVNULL, stdout=out, stderr=errors, check=False).returncode
        # Windows ends its lines in its own way.
        printed, told = ((file.seek(0), file.read().decode(errors="replace").replace("\r\n", "\n"))[1] for file in (out, errors))
    if status:
        return f"ends with {status}:\n{printed}{told}"
    expected = (EXAMPLES / name / "expected.txt").read_text()
    return None if printed == expected else f"prints\n{printed}and not\n{expected}{told}"


def main():
    words, launcher = sys.argv[1:], []
    if words == ["--folders"]:
        faults = look_at_folders()
        print(*faults, sep="\n")
        return 1 if faults else 0
    if "--" in words:
        launcher = words[words.index("--") + 1 :]
        words = words[: words.index("--")]
    build = pathlib.Path(words[0]).resolve()
    names = words[1:] or (build / "examples.txt").read_text().split()
    failed = 0
    for name in names:
        fault = run(build, name, launcher)
        print(name, fault or "prints what it should")
        failed += fault is not None
    return 1 if failed or not names else 0


sys.exit(main())
