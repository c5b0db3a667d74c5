#!/usr/bin/env python3
"""Does what README.md says, against a build of the preset linux. usage: tests/docs/check_readme.py BUILD-FOLDER

By the rules of all pages (run_page.py). Besides, what it shows is compared with the files of the tree that it names.
"""
import sys

from run_page import ROOT, play_page


def finish(sandbox):
    if (sandbox.folder / "decode.cpp").read_text() != (ROOT / "examples/01-decode-wav/main.cpp").read_text():
        sandbox.complain("the first program is not that of examples/01-decode-wav")
    made = sandbox.folder / "plasma-0001.png"
    if not made.is_file() or made.read_bytes() != (ROOT / "docs/pictures/plasma-0001.png").read_bytes():
        sandbox.complain("the picture is not what the command beside it makes")
    source = ROOT / "examples/data/strings.wav"
    if (sandbox.folder / "strings-copy.wav").read_bytes() != source.read_bytes():
        sandbox.complain("strings-copy.wav is not a copy")


commands, faults = play_page("README.md", sys.argv[1], finish)
sys.exit(1 if faults or not commands else 0)
