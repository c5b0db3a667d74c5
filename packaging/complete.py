#!/usr/bin/env python3
"""Adds to staged packages what is known only when they are whole: the list of third parties (SPDX), licence texts, where
the sources are, and a sum of each file; to Debian's also copyright and changelog.
usage: packaging/complete.py FACTS STAGE, called by cpack. The time is that of SOURCE_DATE_EPOCH.
"""
import email.utils
import gzip
import hashlib
import os
import pathlib
import shutil
import subprocess
import sys

import spdx
import third_party

HERE = pathlib.Path(__file__).resolve().parent
EPOCH = int(os.environ["SOURCE_DATE_EPOCH"])
HOW = {"static": "compiled in", "beside": "in files of its own, replaceable", "system": "of the system, not in this package"}


def sources_text(name, facts, parts):
    """How everything in the package is had in source form and built."""
    lines = [
        f"{name} {facts['version']} was built from revision {facts['revision'] or 'unknown'} of Vorlund by ./package.",
        "",
        "Of others, by the names of Debian's source packages, which `apt-get source NAME` gets, and the versions used:",
        "",
    ]
    for part in parts:
        plain = "" if "-" in part.version else ", without Debian's corrections"
        lines.append(f"    {part.name} {part.version}, {part.licence}: {HOW[part.kind]}{plain}")
    if any(part.archive for part in parts):
        lines += ["", "Those with an archive were built for Windows by codecs.sh, in the folders of the plug-ins here:", ""]
        lines += [f"    {part.archive}\n        SHA-256 {part.sha256}" for part in parts if part.archive]
    return "\n".join(lines) + "\n"


def licence_texts(parts, folder):
    """The texts that are no file of the build: those of Debian's packages that went in."""
    used = [part for part in parts if part.package and part.kind != "system"]
    if used:
        folder.mkdir(parents=True, exist_ok=True)
    for part in used:
        shutil.copyfile(f"/usr/share/doc/{part.package.split(':')[0]}/copyright", folder / f"{part.name}.txt")
    if any("GPL-3.0" in part.licence for part in used):
        shutil.copyfile("/usr/share/common-licenses/GPL-3", folder / "GPL-3.txt")


def copyright_text(parts):
    """Debian's copyright file; texts of what is compiled in are beside it."""
    text = (HERE / "debian/copyright").read_text()
    names = [f"{part.name} ({part.licence})" for part in parts if part.kind == "static"]
    if names:
        comment = f"Comment: Compiled in, with their licences in the folder licences: {', '.join(names)}.\n"
        text = text.replace("License: Expat\n\n", f"License: Expat\n{comment}\n", 1)
    return text


def changelog(facts):
    when = email.utils.formatdate(EPOCH)
    return (
        f"vorlund ({facts['version']}) unstable; urgency=medium\n\n  * CHANGES.md in libvorlund-dev tells what is new.\n\n"
        f" -- {facts['contact']}  {when}\n"
    )


def write_sums(stage, file):
    """A line for each file of the package, as sha256sum checks them in its folder."""
    file.unlink(missing_ok=True)
    paths = sorted(path for path in stage.rglob("*") if path.is_file() and not path.is_symlink())
    lines = [f"{hashlib.sha256(path.read_bytes()).hexdigest()}  {path.relative_to(stage).as_posix()}\n" for path in paths]
    file.write_text("".join(lines))


def follow_policy(stage):
    """What Debian wants otherwise: pages of manuals compressed, completions for zsh in the folder of packages, no sections that
    nobody reads."""
    for page in (stage / "usr/share/man").rglob("*.[1-9]"):
        page.with_name(page.name + ".gz").write_bytes(gzip.compress(page.read_bytes(), 9, mtime=0))
        page.unlink()
    if (stage / "usr/share/zsh/site-functions").is_dir():
        (stage / "usr/share/zsh/site-functions").rename(stage / "usr/share/zsh/vendor-completions")
    for path in stage.rglob("*"):
        if path.is_file() and not path.is_symlink() and third_party.is_elf(path):
            subprocess.run(["strip", "--remove-section=.comment", "--remove-section=.note", path], check=True)


def complete_debian(stage, name, facts):
    follow_policy(stage)
    doc = stage / "usr/share/doc" / name
    doc.mkdir(parents=True, exist_ok=True)
    parts = third_party.collect(facts, stage)
    (doc / f"{name}.spdx.json").write_text(spdx.document(name, facts, EPOCH, parts))
    (doc / "SOURCES.txt").write_text(sources_text(name, facts, parts))
    (doc / "copyright").write_text(copyright_text(parts))
    licence_texts(parts, doc / "licences")
    (doc / "changelog.gz").write_bytes(gzip.compress(changelog(facts).encode(), 9, mtime=0))
    write_sums(stage, doc / "SHA256SUMS")


def complete_zip(stage, facts):
    doc = stage / facts["doc"]
    parts = third_party.collect(facts, stage)
    (doc / "vorlund.spdx.json").write_text(spdx.document("vorlund", facts, EPOCH, parts))
    (doc / "SOURCES.txt").write_text(sources_text("vorlund", facts, parts))
    licence_texts(parts, doc / "licences")
    write_sums(stage, stage / "SHA256SUMS")


def even_out(stage):
    """The same rights, whatever the umask was."""
    for path in stage.rglob("*"):
        if not path.is_symlink():
            path.chmod(0o755 if path.is_dir() or path.stat().st_mode & 0o100 else 0o644)


def main():
    facts = dict(line.split("=", 1) for line in pathlib.Path(sys.argv[1]).read_text().splitlines())
    stage = pathlib.Path(sys.argv[2])
    if facts["names"]:
        for component, name in (pair.split(":") for pair in facts["names"].split()):
            complete_debian(stage / component, name, facts)
    else:
        complete_zip(stage, facts)
    even_out(stage)


main()
