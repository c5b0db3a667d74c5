#!/usr/bin/env python3
"""Makes pages for Doxygen of the pages of the tree. usage: scripts/site_pages.py OUTPUT-FOLDER HTML-FOLDER

What hosting sites show is kept: headings get the anchors that they have there, links between pages become references
that Doxygen checks, headers link to their reference, and other files of the tree to a copy in the site. The sections of
docs/README.md become the chapters; a page that it does not list belongs to the first page that links to it.
"""
import html
import pathlib
import re
import sys

from pages import FENCE, HEADING, ROOT, folders_and_files, is_external, read, resolve, slug

# Inline code, which may go on in the next line.
CODE = re.compile(r"(`[^`\n]+(?:\n[^`\n]+)?`)")
BOLD = re.compile(r"\*\*([^*]+)\*\*")
LINK = re.compile(r"(!?)\[([^\]]*)\]\(([^)\s]+)\)")
# Doxygen takes a text in quotation marks as it is.
QUOTED = re.compile(r'("[^"\n]*")')
INDEX = "docs/README.md"
HEADERS = "include/vorlund"
# What is before the names by which headers are included.
INCLUDED = re.compile(r"^(?:include|bindings/c/include)/(?=vorlund)(.*\.h)$")
SOURCE = """<!DOCTYPE html>
<html lang="en"><head><meta charset="utf-8"><meta name="viewport" content="width=device-width, initial-scale=1">
<title>{path}</title><link rel="stylesheet" href="{up}doxygen-awesome.css"><link rel="stylesheet" href="{up}site.css"></head>
<body class="source"><p><a href="{up}index.html">Vorlund</a> / {path}</p>
{body}
</body></html>
"""


def label(page, anchor=""):
    """What Doxygen calls a page, or a heading on it."""
    if page == INDEX:
        return f"chapter_{anchor}" if anchor else "page_all"
    name = re.sub(r"\W", "_", page.removesuffix(".md").removeprefix("docs/")).lower()
    return f"page_{name}--{anchor}" if anchor else f"page_{name}"


class Site:
    def __init__(self, output, html_folder):
        self.output = output
        self.html = html_folder
        self.files = {file for _, files in folders_and_files() for file in files}
        self.pages = {file for file in self.files if file.endswith(".md") and not file.startswith(".")}
        # Pages that are in the tree of the navigation already, in the order in which they came there.
        self.placed = dict.fromkeys(("README.md", INDEX))
        self.sources = set()

    def make(self):
        queue = ["README.md", INDEX]
        # The index places its pages before any other does.
        texts = {INDEX: self.convert(INDEX)}
        for page in queue:
            if page not in texts:
                texts[page] = self.convert(page)
            queue += [placed for placed in self.placed if placed not in queue]
        for page in sorted(self.pages - set(queue)):
            print(f"site: no page links to {page}", file=sys.stderr)
            return 1
        texts[INDEX] = self.split_index(texts[INDEX])
        for page, text in texts.items():
            self.write(self.output / (label(page) + ".md"), text)
        for path in sorted(self.sources):
            self.copy(path)
        print(f"{len(texts)} pages, {len(self.sources)} copies of other files")
        return 0

    def split_index(self, text):
        """Makes a page of each section, so that the navigation has chapters. Returns the page above them."""
        beginning, *sections = re.split(r"^## ", text, flags=re.MULTILINE)
        chapters = []
        for section in sections:
            title, name = re.match(r"(.*) \{#(\w[\w-]*)\}$", section, re.MULTILINE).groups()
            self.write(self.output / (name + ".md"), "# " + section)
            chapters.append(f'- @subpage {name} "{title}"\n')
        return beginning + "".join(chapters)

    def convert(self, page):
        parts = []
        end = 0
        text = read(page)
        for fence in FENCE.finditer(text):
            parts += [self.convert_text(page, text[end : fence.start()]), self.convert_fence(fence[0])]
            end = fence.end()
        return "".join(parts) + self.convert_text(page, text[end:])

    @staticmethod
    def convert_fence(fence):
        language, _, code = fence.removeprefix("```").partition("\n")
        return "```{." + (language if language in ("cpp", "c", "python") else "unparsed") + "}\n" + code

    def convert_text(self, page, text):
        # What is written for people is no command of Doxygen, except in code, which it does not look into.
        pieces = CODE.split(re.sub(r"<!--.*?-->", "", text, flags=re.DOTALL))
        pieces[::2] = [self.escape(piece) for piece in pieces[::2]]
        # Code with a quotation mark takes two backticks on each side.
        pieces[1::2] = [piece.replace("\n", " ") for piece in pieces[1::2]]
        pieces[1::2] = [f"`{piece}`" if "'" in piece else piece for piece in pieces[1::2]]
        # Doxygen knows no bold text with code in it.
        text = BOLD.sub(lambda match: f"<b>{match[1]}</b>" if "`" in match[1] else match[0], "".join(pieces))
        # A percent sign before a word would go; one before a device of the program keeps it from becoming a link.
        text = re.sub(r"%(?=\w)", "%%", text)
        text = re.sub(r"\bfile:(?=\w)", "%file:", text)
        text = LINK.sub(lambda match: self.convert_link(page, *match.groups()), text)
        return HEADING.sub(lambda match: self.convert_heading(page, *match.groups()), text)

    @staticmethod
    def escape(text):
        pieces = QUOTED.split(text)
        pieces[::2] = [re.sub(r"([\\@])", r"\\\1", piece) for piece in pieces[::2]]
        return "".join(pieces)

    def convert_heading(self, page, level, title):
        # A heading takes no code.
        title = title.replace("`", "")
        return f"{level} {title} {{#{label(page, '' if level == '#' else slug(title))}}}"

    def convert_link(self, page, mark, text, target):
        if is_external(target):
            return f"[{text}]({target})"
        path, anchor = resolve(page, target)
        text = text.replace("\n", " ")
        if mark or path in self.pages or INCLUDED.match(path):
            # A reference shows its text as it is, and so does what is below a picture.
            text = text.replace("`", "")
        if mark:
            return f"![{text}]({pathlib.PurePath(path).name})"
        if path in self.pages:
            if path not in self.placed and not anchor:
                self.placed[path] = None
                return f'@subpage {label(path)} "{text}"'
            return f"[{text}](@ref {label(path, anchor)})"
        if header := INCLUDED.match(path):
            return f"[{text}](@ref {header[1]})"
        if path == HEADERS:
            return f'<a href="files.html">{text}</a>'
        self.sources.add(path)
        return f'<a href="tree/{path}.html">{text}</a>'

    def copy(self, path):
        """A file as it is, or what is in a folder."""
        if (ROOT / path).is_dir():
            names = sorted(file for file in self.files if file.startswith(path + "/"))
            for name in names:
                self.write_source(name)
            up = "../" * path.count("/") + "../"
            body = "\n".join(f'<p><a href="{up}tree/{name}.html">{name}</a></p>' for name in names)
            self.write(self.html / f"tree/{path}.html", SOURCE.format(path=path, up=up, body=body))
        else:
            self.write_source(path)

    def write_source(self, path):
        up = "../" * path.count("/") + "../"
        body = f"<pre>{html.escape(read(path))}</pre>"
        self.write(self.html / f"tree/{path}.html", SOURCE.format(path=path, up=up, body=body))

    @staticmethod
    def write(file, text):
        file.parent.mkdir(parents=True, exist_ok=True)
        file.write_text(text)


sys.exit(Site(pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2])).make())
