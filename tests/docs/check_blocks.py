#!/usr/bin/env python3
"""Does what the pages of docs say, against a build of the preset linux.

usage: tests/docs/check_blocks.py [--update-pictures] BUILD-FOLDER [PAGE...]

Without a page, all of them and the examples in the headers; the page "headers" means those alone. The rules are in run_page.py and
header_examples.py. A picture in docs/pictures that a page shows, and whose name a
command or a program of that page has given to a file, is compared with that file, or replaced by it.
"""
import re
import shutil
import subprocess
import sys

from header_examples import play_headers
from run_page import ROOT, play_in_sandbox, play_page

HEADERS = "headers"
PICTURE = re.compile(r"!\[[^\]]*\]\((pictures/[\w.-]+\.png)\)")
# A page with such pictures loads fast.
MOST_BYTES = 100_000
words = sys.argv[1:]
updates = words[:1] == ["--update-pictures"]
build, *pages = words[updates:]


def count_other_pixels(kept, made):
    """How many pixels of two pictures differ, as ImageMagick says."""
    done = subprocess.run(["compare", "-metric", "AE", kept, made, "null:"], capture_output=True, text=True, check=False)
    return done.stderr.strip()


def check_pictures(sandbox, page):
    for target in PICTURE.findall((ROOT / page).read_text()):
        kept = (ROOT / page).parent / target
        made = sandbox.folder / kept.name
        if not made.exists():
            continue
        sandbox.commands += 1
        if updates:
            shutil.copyfile(made, kept)
        others = count_other_pixels(kept, made)
        print(f"{kept.name}: {others} other pixels")
        if others != "0":
            sandbox.complain(f"{page} shows {kept.name}, which is made otherwise now: {others}")
        if kept.stat().st_size > MOST_BYTES:
            sandbox.complain(f"{kept.name} has {kept.stat().st_size} bytes, more than {MOST_BYTES}")


def play(page):
    if page == HEADERS:
        return play_in_sandbox(page, build, play_headers)
    return play_page(page, build, lambda sandbox: check_pictures(sandbox, page))


pages = pages or [*sorted(path.relative_to(ROOT).as_posix() for path in ROOT.glob("docs/*.md")), HEADERS]
results = [play(page) for page in pages]
commands, faults = (sum(numbers) for numbers in zip(*results))
print(f"{len(pages)} pages, {commands} commands and programs, {faults} faults")
sys.exit(1 if faults or not commands else 0)
