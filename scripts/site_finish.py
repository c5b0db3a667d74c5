#!/usr/bin/env python3
"""Mends what Doxygen 1.9.4 has written. usage: scripts/site_finish.py HTML-FOLDER

It links to lists of private classes, which it leaves out; the first page has its name twice; names in tables and titles
could not be broken, so that last columns were out of sight; options were broken behind their hyphens; and what the
search finds showed the names that pages have inside.
"""
import pathlib
import re
import sys

CELL = re.compile(r'<td class="(?:markdownTable|fieldname).*?</td>|<div class="title">.*?</div>', re.DOTALL)
# Text between tags, and where a name in it may be broken: behind "::", ":", "/" and "_", and in code before a capital letter,
# which is for narrow windows unless the name is very long.
SPAN = re.compile(r"(<code>.*?</code>)", re.DOTALL)
TEXT = re.compile(r">[^<]+")
BETWEEN = re.compile(r"(::|[/:])(?=[\w*~])")
NAME = re.compile(r"\w+")
LINE = re.compile(r"(?<=[A-Za-z0-9])_(?=\w)")
HUMP = re.compile(r"(?<=[a-z])(?=[A-Z])")
LONG = 24
# Where an option begins, or a name that begins as those of plug-in entries.
CODE = re.compile(r"<code>[^<]*")
OPTION = re.compile(r"(?<![^\s>])(?:--?|\?)\w")
# Behind the place of what the search finds, and whether it is in this site.
INSIDE = re.compile(r"(',[01],')(?:chapter|page)_[\w-]*'")


def keep_options(html):
    return CODE.sub(lambda code: OPTION.sub(r'<span class="whole">\g<0></span>', code[0]), html)


def break_humps(name):
    return HUMP.sub("<wbr/>" if len(name[0]) > LONG else '<wbr class="narrow"/>', name[0])


def break_text(text):
    return LINE.sub("_<wbr/>", BETWEEN.sub(r"\1<wbr/>", text[0]))


def break_cell(cell):
    parts = SPAN.split(cell[0])
    parts[1::2] = [TEXT.sub(lambda text: NAME.sub(break_humps, text[0]), code) for code in parts[1::2]]
    return TEXT.sub(break_text, "".join(parts))


def break_names(html):
    return CELL.sub(break_cell, html)


def finish(name, html):
    if 'name="nested-classes"' not in html:
        html = re.sub(r'<a href="#nested-classes">[^<]*</a>( &#124;)?', "", html)
    if name == "index.html":
        html = html.replace("<title>Vorlund: Vorlund</title>", "<title>Vorlund</title>")
    return break_names(keep_options(html))


def rewrite(file, change):
    before = file.read_text()
    if (after := change(before)) != before:
        file.write_text(after)


def main():
    site = pathlib.Path(sys.argv[1])
    for file in sorted(site.glob("*.html")):
        rewrite(file, lambda html: finish(file.name, html))
    for file in sorted(site.glob("search/*.js")):
        rewrite(file, lambda script: INSIDE.sub(r"\1'", script))


main()
