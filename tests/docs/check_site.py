#!/usr/bin/env python3
"""The links of the site lead somewhere. usage: tests/docs/check_site.py HTML-FOLDER

Every link, picture, style and script inside the site exists, with its anchor; every page of the tree is there and is
reached from the first one; the search knows the pages and the classes; no page shows Markdown or commands as they are
written, and the text of no link goes on behind it.
"""
import html.parser
import pathlib
import re
import sys
import urllib.parse

ROOT = pathlib.Path(__file__).resolve().parents[2]
# Elements whose text is code; divisions of class "fragment" and those in them are, too.
CODE = ("code", "pre", "script", "style")
# What readers of the site do not want to see outside of code.
RAW = re.compile(r"`|\*\*|\]\(|\\@|@(?:ref|subpage)\b|&\w+;|^\s*\||^#+ ", re.MULTILINE)
# Of links that lead out of the site, and of what its scripts do.
SCHEMES = ("http", "https", "mailto", "javascript", "data")
TORN = re.compile(r"</a>\w")


class Page(html.parser.HTMLParser):
    def __init__(self, file):
        super().__init__()
        self.anchors = set()
        self.targets = set()
        # How many elements of code are open.
        self.is_page = file.name.startswith(("index.", "page_", "chapter_"))
        self.code = 0
        self.raw = []
        source = file.read_text()
        if self.is_page:
            self.raw += TORN.findall(source)
        self.feed(source)

    def handle_data(self, data):
        if self.is_page and not self.code and (found := RAW.search(data)):
            self.raw.append(data[max(found.start() - 20, 0) : found.end() + 20].strip())

    def handle_endtag(self, tag):
        if tag in CODE or (tag == "div" and self.code):
            self.code -= 1

    def handle_starttag(self, tag, attrs):
        if tag in CODE or (tag == "div" and (self.code or ("class", "fragment") in attrs)):
            self.code += 1
        for name, value in attrs:
            if name == "id" or (name == "name" and tag == "a"):
                self.anchors.add(value)
            elif name in ("href", "src") and value:
                self.targets.add(value)


def main():
    site = pathlib.Path(sys.argv[1]).resolve()
    pages = {file: Page(file) for file in sorted(site.rglob("*.html"))}
    faults = []
    links = 0
    reached = {site / "index.html"}
    queue = [site / "index.html"]
    following = {}
    for file, page in pages.items():
        following[file] = set()
        faults += [f"{file.relative_to(site)}: shows {text!r}" for text in page.raw]
        for target in page.targets:
            parts = urllib.parse.urlsplit(target)
            if parts.scheme or parts.netloc:
                if parts.scheme not in SCHEMES:
                    faults.append(f"{file.relative_to(site)}: {target} is no link")
                continue
            links += 1
            path = (file.parent / urllib.parse.unquote(parts.path)).resolve() if parts.path else file
            where = f"{file.relative_to(site)}: the link {target}"
            if not path.is_file():
                faults.append(f"{where} leads nowhere")
            elif parts.fragment and path in pages and urllib.parse.unquote(parts.fragment) not in pages[path].anchors:
                faults.append(f"{where} has no such place")
            following[file].add(path)
    for file in queue:
        new = following[file] & set(pages) - reached
        reached |= new
        queue += sorted(new)

    # Doxygen has a list of the files that it has read, too.
    made = [path for path in pages if path.name.startswith(("index.", "page_")) and not path.name.endswith("_8md.html")]
    for path in made:
        if path not in reached:
            faults.append(f"{path.name}: no link leads here")
    sources = [path for path in ROOT.glob("docs/*.md")]
    if len(made) < len(sources):
        faults.append(f"the site has {len(made)} pages, docs alone {len(sources)}")
    index = "".join(file.read_text() for file in (site / "search").glob("*.js"))
    for name in ("CFrameReader", "Comfort in C++"):
        if name not in index:
            faults.append(f"the search does not know {name}")
    print(*faults, sep="\n")
    print(f"{len(pages)} files, {len(made)} pages, {links} links, {len(faults)} faults")
    return 1 if faults or not links else 0


sys.exit(main())
