#!/usr/bin/env python3
"""Does what the pages of docs say, against a build of the preset linux. usage: tests/docs/check_blocks.py BUILD-FOLDER [PAGE...]

Without a page, all of them. The rules are in run_page.py.
"""
import sys

from run_page import ROOT, play_page

pages = sys.argv[2:] or sorted(path.relative_to(ROOT).as_posix() for path in ROOT.glob("docs/*.md"))
results = [play_page(page, sys.argv[1]) for page in pages]
commands, faults = (sum(numbers) for numbers in zip(*results))
print(f"{len(pages)} pages, {commands} commands and programs, {faults} faults")
sys.exit(1 if faults or not commands else 0)
