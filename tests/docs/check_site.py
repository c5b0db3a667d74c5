#!/usr/bin/env python3
"""The links of the site lead somewhere. usage: tests/docs/check_site.py HTML-FOLDER

Every link, picture, style and script inside the site exists, with its anchor; every page of the tree is there and is
reached from the first one; the search knows the pages and the classes.
"""
import html.parser
import pathlib
import sys
import urllib.parse

ROOT = pathlib.Path(__file__).resolve().parents[2]


class Page(html.parser.HTMLParser):
    def __init__(self, file):
        super().__init__()
        self.anchors = set()
        self.targets = set()
        self.feed(file.read_text())

    def handle_starttag(self, tag, attrs):
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
        for target in page.targets:
            parts = urllib.parse.urlsplit(target)
            if parts.scheme or parts.netloc:
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
