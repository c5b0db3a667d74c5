#!/usr/bin/env python3
"""What the pages say about the tree, compared with the tree. Run by ./test; needs no build.

Links lead to files and headings that exist, and a name in backticks before a link ("`CEvent::Wait` in [Event.cpp](...)")
occurs in the linked file. The architecture page names every folder and draws the floors in the order in which
tests/abi/check_layers.py holds them; the index of docs names every page there. Three questions of somebody new are
answered within three links of README.md. Pages with figures of Wine say so until there is a report of Windows.
The page about porting names every file that knows a system. Targets, commands and options that several places name are the same.
"""
import ast
import fnmatch
import os
import pathlib
import re
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "scripts"))
from pages import FENCE, SKIPPED, anchors, folders_and_files, links, read  # noqa: E402

NAMED_LINK = re.compile(r"((?:`[\w:~ ]+`(?:,| and)?\s+)+)in\s+\[[^\]]*\]\(([^)\s#]+)\)")
# What a hosted machine lacks and a developer's has; other commands of the workflow are those of README.md.
PREPARATION = re.compile(r"apt-get |git config ")
MAX_LINKS = 3
# Where a question is answered: a file, and what it must hold.
ANSWERS = {
    "where Seek of a WAV goes": ("src/vorlund/data/filters/WavChunkDecoder.cpp", "CWavChunkDecoder::Seek("),
    "where the reason of a refused plug-in is made": ("src/vorlund/api/plugins/PluginStore.cpp", "TPluginResult TryToLoad("),
    "which test holds the rule for a nested write lock": (
        "tests/system/ReadWriteLock_test.cpp",
        "ANestedWriteLockRecordsItsParameter",
    ),
}

# The sentence on each page that has results of Windows, and where it is looked for.
NOT_ON_WINDOWS = "tested under wine, not on windows"
WINDOWS_PAGES = ("README.md", "docs/performance.md", "docs/reliability.md", "docs/testing-on-windows.md", "docs/windows-mingw.md")

# Before the endings of files that know a system.
PLATFORM_MARKS = ("_win32", "_posix", "_linux", "_xcb", "_none")

complaints = []


def check_links(pages):
    for page in pages:
        for path, anchor, target in links(page):
            if path is None:
                complaints.append(f"{page}: the link {target} leads nowhere")
            elif anchor and anchor not in anchors(path):
                complaints.append(f"{page}: {path} has no heading for the link {target}")
        for names, target in NAMED_LINK.findall(FENCE.sub("", read(page))):
            file = (ROOT / page).parent / target
            for name in re.findall(r"`(.*?)`", names):
                last = re.split(r"::|\s", name)[-1]
                if file.is_file() and not re.search(rf"\b{re.escape(last)}\b", file.read_text()):
                    complaints.append(f"{page}: {target} does not have {name}")


def check_paths(pages):
    """Paths in backticks exist. Names without an ending may be source-file texts, which are no places."""
    tops = "|".join(re.escape(folder.name) for folder in ROOT.iterdir() if folder.is_dir() and folder.name not in SKIPPED)
    path = re.compile(rf"`((?:{tops})/[\w./-]+\.\w+)[ `]")
    for page in pages:
        for name in path.findall(FENCE.sub("", read(page))):
            if not (ROOT / name).exists():
                complaints.append(f"{page}: names {name}, which does not exist")


def check_answers():
    distance = {"README.md": 0}
    queue = ["README.md"]
    for page in queue:
        if not page.endswith(".md"):
            continue
        for path, _, _ in links(page):
            if path and path not in distance:
                distance[path] = distance[page] + 1
                queue.append(path)
    for question, (path, text) in ANSWERS.items():
        if not (ROOT / path).is_file() or text not in read(path):
            complaints.append(f"{question}: {path} no longer has {text}")
        elif distance.get(path, MAX_LINKS + 1) > MAX_LINKS:
            complaints.append(f"{question}: {path} is not within {MAX_LINKS} links of README.md")
        else:
            print(f"{question}: {path}, {distance[path]} links from README.md")


def check_folders(folders):
    page = "docs/architecture.md"
    named = set()
    for row in re.findall(r"^\| (`.*?) \|", read(page), re.MULTILINE):
        named.update(re.findall(r"`([\w./-]+)`", row))
    named = {name for name in named if not re.search(r"\.(h|cpp)$", name)}
    for folder in sorted(folders - {"."}):
        # tests/x mirrors src/vorlund/x, and the corpora are called like the fuzz targets.
        is_mirror = folder.startswith("tests/") and "src/vorlund/" + folder[len("tests/") :] in folders
        if folder not in named and not is_mirror and not folder.startswith("fuzz/corpus/"):
            complaints.append(f"{page}: does not name the folder {folder}")
    for name in sorted(name for name in named if "/" in name or "." not in name):
        if name not in folders and not (ROOT / "src/vorlund" / name).exists():
            complaints.append(f"{page}: names the folder {name}, which does not exist")

    tree = ast.parse(read("tests/abi/check_layers.py"))
    tables = [node.value for node in tree.body if isinstance(node, ast.Assign) and node.targets[0].id == "FLOORS"]
    floors = list(ast.literal_eval(tables[0]))
    drawing = FENCE.search(read(page))[0]
    drawn = [word for word in re.findall(r"^([\w/]+)  ", drawing, re.MULTILINE) if word in floors]
    if drawn != floors[::-1]:
        complaints.append(f"{page}: draws the floors {drawn}, from the top; check_layers.py has {floors[::-1]}")


def check_index(pages):
    listed = {path for path, _, _ in links("docs/README.md")}
    for page in pages:
        if page.startswith("docs/") and page != "docs/README.md" and page not in listed:
            complaints.append(f"docs/README.md: does not list {page}")


def check_suites():
    """The table of suites has every suite that ./test runs, and no other."""
    page = "docs/test-times.md"
    scripts = read("scripts/suites.sh") + read("scripts/packages.sh") + re.search(r"^soak_steps\(\) {.*?^}", read("scripts/soak.sh"), re.M | re.S)[0]
    steps = re.findall(r"^[^#\n]*\b(?:step) (\"[^\"]+\"|[\w-]+)", scripts, re.MULTILINE)
    # What every target runs, and what some add.
    lists = re.findall(r"^ +(?:(?:local -a )?programs\+?=\((.*)\)|for program in (.*); do)$", scripts, re.MULTILINE)
    programs = " ".join(map(" ".join, lists)).split()
    run = {name.strip('"').split(" $")[0] for name in steps + programs}
    usage = subprocess.run([ROOT / "test", "--help"], capture_output=True, text=True, check=True).stdout
    run |= {f"./test {option}" for option in re.findall(r"\./test (--\w+)", usage)} - {"./test --all"}
    listed = set(re.findall(r"^\| `([^`]+)` \|", read(page), re.MULTILINE))
    for name in sorted(run - listed):
        complaints.append(f"{page}: does not list {name}")
    for name in sorted(listed - run):
        complaints.append(f"{page}: lists {name}, which ./test does not run")


def check_promises():
    """The suites that docs/reliability.md names exist."""
    page = "docs/reliability.md"
    table = read(page).split("## Promises")[1].split("\n## ")[0]
    tests = subprocess.run(["grep", "-rhoE", r"TEST(_F|_P)?\(\w+", ROOT / "tests"], capture_output=True, text=True, check=True)
    suites = {line.split("(")[1] for line in tests.stdout.split()}
    for row in re.findall(r"^\| \*\*.*\| (.*) \|$", table, re.MULTILINE):
        for suite in re.findall(r"`([A-Z]\w+)`", row):
            if not any(name.startswith(suite) for name in suites):
                complaints.append(f"{page}: there is no suite {suite}")


def check_windows():
    """A report of a real machine takes the sentence away, and nothing else does."""
    reports = sorted((ROOT / "docs/windows-reports").glob("*.txt"))
    for report in reports:
        if "\nsystem: Windows\n" not in report.read_text():
            complaints.append(f"docs/windows-reports: {report.name} is no report of a Windows machine")
    for page in WINDOWS_PAGES:
        says = NOT_ON_WINDOWS in " ".join(read(page).lower().split())
        if says and reports:
            complaints.append(f"{page}: says '{NOT_ON_WINDOWS}', but there is {reports[0].name}")
        elif not says and not reports:
            complaints.append(f"{page}: does not say '{NOT_ON_WINDOWS}'")


def check_porting():
    """The page about porting names every pair of files, and its filters find suites."""
    page = "docs/porting.md"
    text = read(page)
    pairs = set()
    for top in ("src", "plugins", "tools"):
        for mark in PLATFORM_MARKS:
            pairs |= {path.stem.removesuffix(mark) for path in (ROOT / top).rglob(f"*{mark}.*")}
    named = set(re.findall(r"`([A-Z]\w+)`", text))
    for name in sorted(pairs - named):
        complaints.append(f"{page}: does not name the pair {name}")
    tests = subprocess.run(["grep", "-rhoE", r"^TEST(_F|_P)?\(\w+", ROOT / "tests"], capture_output=True, text=True, check=True)
    suites = {line.split("(")[1] for line in tests.stdout.split()}
    for filters in re.findall(r"--gtest_filter='([^']+)'", text):
        for pattern in filters.split(":"):
            if not fnmatch.filter(suites, pattern):
                complaints.append(f"{page}: no suite is called like {pattern}")


def check_commands():
    """README.md, the usage texts, the presets, the hosted workflow and the hooks name the same things."""
    readme = read("README.md")
    usage = subprocess.run([ROOT / "test", "--help"], capture_output=True, text=True, check=True).stdout
    targets = re.search(r"^targets: (.*)$", usage, re.MULTILINE)[1].split()
    table = readme[readme.index("| Target |") :]
    rows = re.findall(r"^\| `([\w-]+)` \|", table[: table.index("\n\n")], re.MULTILINE)
    if rows != targets:
        complaints.append(f"README.md: its table has the targets {rows}, ./test --help {targets}")

    for page in ("README.md", "CONTRIBUTING.md"):
        for words in re.findall(r"`\./test ([^`]+)`", read(page)):
            for word in words.split():
                if not word.isdigit() and word not in targets and word not in usage:
                    complaints.append(f"{page}: ./test does not know {word}")
    usage_of_run = subprocess.run([ROOT / "run", "--help"], capture_output=True, text=True, check=True).stdout
    for option in re.findall(r"(--\w+)", " ".join(re.findall(r"`\./run ([^`]+)`", readme))):
        if option not in usage_of_run:
            complaints.append(f"README.md: ./run does not know {option}")

    workflow = read(".github/workflows/ci.yml")
    matrix = re.search(r"target: \[(.*)\]", workflow)[1].split(", ")
    if sorted(matrix) != sorted(targets):
        complaints.append(f"ci.yml: tests {matrix}, README.md {targets}")
    runs = [run for run in re.findall(r"^\s*- run: (.*)$", workflow, re.MULTILINE) if not PREPARATION.match(run)]
    for command in runs:
        for target in matrix:
            plain = command.replace("${{ matrix.target }}", target)
            if not re.fullmatch(r"\./test [\w-]+", plain) or plain.split()[1] not in rows:
                complaints.append(f"ci.yml: runs {plain}, which README.md does not tell")
    if "`./test linux`" not in readme or not runs:
        complaints.append("README.md: does not say how one target is tested, as ci.yml does")

    for entry in re.findall(r"^\s*entry: (\S+/\S+)", read(".pre-commit-config.yaml"), re.MULTILINE):
        if not os.access(ROOT / entry, os.X_OK):
            complaints.append(f".pre-commit-config.yaml: {entry} is no program")

    presets = re.findall(r'"name": "([\w-]+)"', read("CMakePresets.json"))
    for page in ("README.md", "CONTRIBUTING.md", "docs/performance.md"):
        for preset in re.findall(r"--preset ([\w-]+)", read(page)):
            if preset not in presets:
                complaints.append(f"{page}: CMakePresets.json has no preset {preset}")

    options = set(re.findall(r"\b(VORLUND_\w+)", "\n".join(re.findall(r"^option\(.*", read("CMakeLists.txt"), re.MULTILINE))))
    for page in ("README.md", "CONTRIBUTING.md", "docs/performance.md"):
        for option in re.findall(r"-D(VORLUND_\w+)=", read(page)):
            if option not in options:
                complaints.append(f"{page}: CMakeLists.txt has no option {option}")

    benchmarks = read("bench/CMakeLists.txt")
    for name in set(re.findall(r"\bbench_(\w+)", read("docs/performance.md"))):
        if not re.search(rf"\b(vorlund_bench\(|add_executable\(bench_){name}\b", benchmarks):
            complaints.append(f"docs/performance.md: there is no benchmark bench_{name}")


def main():
    tree = dict(folders_and_files())
    pages = sorted(file for files in tree.values() for file in files if file.endswith(".md"))
    check_links(pages)
    check_paths(pages)
    check_answers()
    check_folders(set(tree))
    check_index(pages)
    check_promises()
    check_windows()
    check_porting()
    check_commands()
    check_suites()
    print(*complaints, sep="\n")
    print(f"{len(pages)} pages, {sum(len(list(links(page))) for page in pages)} links, {len(complaints)} faults")
    return 1 if complaints else 0


sys.exit(main())
