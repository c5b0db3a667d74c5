#!/usr/bin/env python3
"""Examples 06 to 10 print the same as the programs of tests/comfort/plain, which do their work without the headers of
comfort. Each has at most two thirds of their lines of code: neither blank nor comment nor include, in the form that
clang-format gives both.

usage: tests/comfort/check_examples.py BUILD-FOLDER
"""
import pathlib
import re
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parents[2]
PAIRS = {
    "06-chunks": "chunks",
    "07-rms": "rms",
    "08-classes": "classes",
    "09-folder-watch": "folder_watch",
    "10-filter": "filter",
}
NO_CODE = re.compile(r"\s*(//.*|#include.*)?")
PAGE = (ROOT / "docs/comfort.md").read_text()
complaints = []


def count_code(path):
    return sum(not NO_CODE.fullmatch(line) for line in path.read_text().splitlines())


def run(program, *arguments):
    end = subprocess.run([program, *arguments], cwd=ROOT / "examples/data", capture_output=True, text=True, timeout=60)
    if end.returncode:
        complaints.append(f"{program.name} ends with {end.returncode}: {end.stderr}")
    return end.stdout


def watch(program):
    """What a watcher says while a file comes and goes; each waits for the word of the one before."""
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        (folder / "first").touch()
        # More looks than anybody needs: it is ended from here.
        watcher = subprocess.Popen([program, name, "100000"], stdout=subprocess.PIPE, text=True)
        said = watcher.stdout.readline()
        (folder / "second").touch()
        said += watcher.stdout.readline()
        (folder / "first").unlink()
        said += watcher.stdout.readline()
        watcher.kill()
        watcher.wait()
    return said


def main():
    binaries = pathlib.Path(sys.argv[1]).resolve() / "bin"
    for example, plain in PAIRS.items():
        source = ROOT / "examples" / example
        with_comfort = count_code(source / "main.cpp")
        without = count_code(ROOT / f"tests/comfort/plain/{plain}.cpp")
        print(f"{example:16} {without:3} lines without, {with_comfort:3} with: {100 - 100 * with_comfort // without} % less")
        if not re.search(rf"\[{example}\].*\| {without} \| {with_comfort} \|", PAGE):
            complaints.append(f"docs/comfort.md has other figures for {example}")
        if 3 * with_comfort > 2 * without:
            complaints.append(f"{example} has {with_comfort} lines, more than two thirds of {without}")
        if run(binaries / f"example_{example}") != run(binaries / f"plain_{plain}"):
            complaints.append(f"{example} and plain/{plain}.cpp print different things")
    for program in ("example_09-folder-watch", "plain_folder_watch"):
        said = watch(binaries / program)
        if said != "+ first\n+ second\n- first\n":
            complaints.append(f"{program} says {said!r}")
    print(*complaints, sep="\n")
    return 1 if complaints else 0


sys.exit(main())
