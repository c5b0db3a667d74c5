#!/usr/bin/env python3
"""Does what the pages of docs say, against a build of the preset linux. usage: tests/docs/check_blocks.py BUILD-FOLDER [PAGE...]

Without a page, all of them and the examples in the headers; the page "headers" means those alone. The rules are in
run_page.py and header_examples.py.
"""
import sys

from header_examples import play_headers
from run_page import ROOT, play_in_sandbox, play_page

HEADERS = "headers"

pages = sys.argv[2:] or [*sorted(path.relative_to(ROOT).as_posix() for path in ROOT.glob("docs/*.md")), HEADERS]
results = [
    play_in_sandbox(page, sys.argv[1], play_headers) if page == HEADERS else play_page(page, sys.argv[1]) for page in pages
]
commands, faults = (sum(numbers) for numbers in zip(*results))
print(f"{len(pages)} pages, {commands} commands and programs, {faults} faults")
sys.exit(1 if faults or not commands else 0)
