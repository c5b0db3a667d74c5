#!/usr/bin/env python3
"""The manual pages of the program and its completions, made of its command line, of tools/vorlund/pages/manual.toml and of
docs/exit-codes.md. They are kept in the tree: no build needs to run the program for them.

usage: scripts/program_pages.py --check|--update BUILD-FOLDER
"""
import json
import pathlib
import re
import subprocess
import sys
import textwrap
import tomllib

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent))
import program_completions

ROOT = pathlib.Path(__file__).resolve().parents[1]
PAGES = ROOT / "tools/vorlund"
EXIT_ROW = re.compile(r"^\| `([\w-]+)` \| (\d) \| (.*?) \| `.*` \|$", re.MULTILINE)
# "UINT in [1 - 256]"
RANGE = re.compile(r"in \[(\S+) - (\S+)\]")


def read_commands(build):
    """The command line as the program has it: the program first, then its commands."""
    texts = subprocess.run([build / "bin/vorlund_command_texts"], capture_output=True, text=True, check=True)
    document = json.loads(texts.stdout)
    return document["version"], document["commands"]


def escape(text):
    """Text as it stands, whatever troff makes of its letters."""
    text = text.replace("\\", "\\e").replace("-", "\\-").replace("'", "\\(aq").replace("`", "\\(ga").replace("^", "\\(ha").replace("~", "\\(ti")
    return text


def lines_of(text):
    """A text in lines of the length that readers of the source like; none begins as a request."""
    for line in textwrap.wrap(text, 78, break_long_words=False, break_on_hyphens=False):
        yield "\\&" + line if line.startswith(".") else line


def prose(text):
    """A paragraph: options in bold, *words* in italics."""
    words = re.split(r"(\*[^*]+\*|(?<![\w-])--?\w[\w-]*)", text)
    made = ""
    for word in words:
        if word.startswith("*") and word.endswith("*") and len(word) > 2:
            made += f"\\fI{escape(word[1:-1])}\\fR"
        elif re.fullmatch(r"--?\w[\w-]*", word):
            made += f"\\fB{escape(word)}\\fR"
        else:
            made += escape(word).replace("\\-", "-")
    return made


def paragraphs(text):
    for i, paragraph in enumerate(text.strip().split("\n\n")):
        if i:
            yield ".PP"
        for sentence in prose(" ".join(paragraph.split())).replace(". ", ".\n").split("\n"):
            yield from lines_of(sentence)


def option_head(option):
    if option["argument"]:
        return f"\\fI{escape(option['argument'])}\\fR"
    value = f" \\fI{escape(option['value'])}\\fR" if option["value"] else ""
    return ", ".join(f"\\fB{escape(name)}\\fR" for name in option["names"]) + value


def option_text(option):
    text = option["help"]
    if not text.endswith("."):
        text += "."
    limits = RANGE.search(option["checks"])
    if option["choices"] and not all(choice in text for choice in option["choices"]):
        text += " One of " + ", ".join(option["choices"]) + "."
    elif limits and limits[2] not in text.replace(",", ""):
        text += f" From {limits[1]} to {limits[2]}."
    return text


def synopsis(name, command):
    words = [f".B {escape(name)}", "[\\fIoptions\\fR]"]
    for option in command["options"]:
        value = option["value"]
        if option["argument"]:
            word = f"\\fI{escape(option['argument'])}\\fR" + (" ..." if option["repeated"] else "")
            words.append(word if option["required"] else f"[{word}]")
        elif option["required"]:
            words.append(f"\\fB{escape(option['names'][0])}\\fR \\fI{escape(value)}\\fR")
    return [words[0], " ".join(words[1:])]


def manual_page(command, commands, version, manual, exits):
    is_program = command is commands[0]
    name = "vorlund" if is_program else f"vorlund-{command['name']}"
    extra = manual[command["name"]]
    lines = [
        '.\\" Made by scripts/program_pages.py; do not edit.',
        f'.TH {name.upper()} 1 {manual["date"]} "Vorlund {version}" "Vorlund"',
        ".SH NAME",
        *lines_of(f"{name} \\- {escape(command['help'][0].lower() + command['help'][1:]).rstrip('.')}"),
        ".SH SYNOPSIS",
        *(
            [".B vorlund", "[\\fIoptions\\fR] \\fIcommand\\fR ...", ".br", ".B vorlund", "[\\fIoptions\\fR] \\fIfile\\fR"]
            if is_program
            else synopsis(f"vorlund {command['name']}", command)
        ),
        ".SH DESCRIPTION",
        *paragraphs(extra["text"]),
    ]
    if not is_program and command["footer"]:
        lines += [".PP", *paragraphs(command["footer"])]
    if is_program:
        lines.append(".SH COMMANDS")
        for each in commands[1:]:
            lines += [".TP", f"\\fB{each['name']}\\fR", *lines_of(prose(each["help"] + "."))]
    lines.append(".SH OPTIONS")
    for option in command["options"]:
        lines += [".TP", option_head(option), *lines_of(prose(option_text(option)))]
    if is_program:
        lines += [".PP", "These options may stand behind the command too."]
    else:
        lines += [".PP", "The options of", ".BR vorlund (1)", "may be given as well."]
    lines.append(".SH EXIT STATUS")
    for code, when in exits[command["name"]]:
        lines += [".TP", f".B {code}", *lines_of(prose(when.replace("`", "") + "."))]
    lines.append(".SH FILES" if "files" in extra else "")
    for file, what in extra.get("files", []):
        lines += [".TP", prose(file), *lines_of(prose(what))]
    lines.append(".SH EXAMPLES")
    for line, what in extra["examples"]:
        lines += [".TP", f"\\fB{escape(line)}\\fR", *lines_of(prose(what))]
    others = [f"vorlund-{each['name']}" for each in commands[1:]] if is_program else ["vorlund", *extra["see"]]
    lines.append(".SH SEE ALSO")
    lines += [f".BR {other} (1)" + ("," if other != others[-1] else "") for other in others]
    return name, "\n".join(line for line in lines if line) + "\n"


def make_files(build):
    """Every file by its path below PAGES."""
    version, commands = read_commands(build)
    manual = tomllib.loads((PAGES / "pages/manual.toml").read_text())
    exits = {}
    for command, code, when in EXIT_ROW.findall((ROOT / "docs/exit-codes.md").read_text()):
        exits.setdefault(command, []).append((code, when))
    files = {}
    for command in commands:
        name, text = manual_page(command, commands, version, manual, exits)
        files[f"man/{name}.1"] = text
    for name, make in program_completions.SHELLS.items():
        files[f"completions/{name}"] = make(commands)
    return files


def main():
    mode, build = sys.argv[1], pathlib.Path(sys.argv[2]).resolve()
    files = make_files(build)
    complaints = 0
    kept = {path.relative_to(PAGES).as_posix() for folder in ("man", "completions") for path in (PAGES / folder).iterdir()}
    if mode == "--update":
        for name in kept - set(files):
            (PAGES / name).unlink()
        for name, text in files.items():
            (PAGES / name).write_text(text)
        return 0
    for name in sorted(kept | set(files)):
        if name not in files or name not in kept or (PAGES / name).read_text() != files[name]:
            print(f"tools/vorlund/{name} is not what the command line makes of it: scripts/program_pages.py --update {build}")
            complaints += 1
    print(f"{len(files)} pages and completions, {complaints} faults")
    return 1 if complaints else 0


if __name__ == "__main__":
    sys.exit(main())
