"""What the checks of the pages and the site both know about pages in Markdown."""
import os
import pathlib
import re

ROOT = pathlib.Path(__file__).resolve().parents[1]
FENCE = re.compile(r"^```.*?^```$", re.MULTILINE | re.DOTALL)
HEADING = re.compile(r"^(#+) (.*)$", re.MULTILINE)
LINK = re.compile(r"\[[^\]]*\]\(([^)\s]+)\)")
# What is not part of the tree.
SKIPPED = {".git", "build", "__pycache__"}


def read(path):
    return (ROOT / path).read_text()


def folders_and_files():
    for top, folders, names in os.walk(ROOT):
        folders[:] = [name for name in folders if name not in SKIPPED]
        folder = pathlib.Path(top).relative_to(ROOT)
        yield folder.as_posix(), [(folder / name).as_posix() for name in names]


def slug(heading):
    """The anchor of a heading, as hosting sites make it."""
    return re.sub(r"[^\w\- ]", "", heading.lower()).replace(" ", "-")


def anchors(page):
    return {slug(heading) for _, heading in HEADING.findall(FENCE.sub("", read(page)))}


def resolve(page, target):
    """A link's path from the root, None when there is nothing, and its anchor."""
    path, _, anchor = target.partition("#")
    file = (ROOT / page).parent / path if path else ROOT / page
    file = pathlib.Path(os.path.normpath(file))
    return (file.relative_to(ROOT).as_posix() if file.exists() else None), anchor


def is_external(target):
    return re.match(r"[a-z]+:", target) is not None


def links(page):
    """The link targets of a page: path from the root (or None), anchor, and the target as written."""
    for target in LINK.findall(FENCE.sub("", read(page))):
        if not is_external(target):
            yield *resolve(page, target), target
