#!/usr/bin/env python3
"""Compares what ran of the library with the goals, and what did not run with tests/coverage/remainder.tsv.

    coverage.py REPORT     REPORT is what gcovr writes with --json
    coverage.py --list REPORT
                           what did not run, as rows of that file, without reasons

Only branches of statements with a condition count (coverage_conditions.py); the others are the compiler's.

A row of the remainder is a file, "line" or "branch", the line's text, and why no test gets there. A place that did not
run and has no row is a fault, and so is a row without such a place; "sometimes" instead of "line" or "branch" is for
places that a run reaches or not, as its threads go.
"""
import collections
import json
import pathlib
import sys

from coverage_conditions import lines_with_conditions

ROOT = pathlib.Path(__file__).resolve().parents[1]
REMAINDER = ROOT / "tests/coverage/remainder.tsv"
KINDS = ("line", "branch", "sometimes")
# Percent of all lines and branches.
GOALS = {"line": 99.5, "branch": 95.0}
# The parsers: every branch.
PARSERS = (
    "src/vorlund/api/plugins/PluginImage",
    "src/vorlund/data/filters/WavChunk",
    "src/vorlund/data/filters/WavDecoder",
    "src/vorlund/data/wav/RiffFields",
    "src/vorlund/data/wav/RiffFile",
    "src/vorlund/data/wav/WavMetadata",
    "src/vorlund/data/wav/WavRepair",
    "src/vorlund/serial/BufferedReader",
    "src/vorlund/serial/CharUnits",
    "src/vorlund/serial/GrowText",
    "src/vorlund/serial/LineReader",
    "src/vorlund/serial/Reader",
    "src/vorlund/serial/TextReader",
    "src/vorlund/serial/VarReader",
)


class Counts:
    def __init__(self):
        self.all = collections.Counter()
        self.run = collections.Counter()

    def add(self, kind, count, run):
        self.all[kind] += count
        self.run[kind] += run

    def percent(self, kind):
        return 100.0 * self.run[kind] / self.all[kind] if self.all[kind] else 100.0

    def __str__(self):
        parts = (f"{self.run[kind]:6} of {self.all[kind]:6} {self.percent(kind):6.2f} %" for kind in GOALS)
        return "   ".join(parts)


def read_remainder(complaints):
    rows = {}
    lines = REMAINDER.read_text().splitlines()[1:] if REMAINDER.exists() else []
    for number, line in enumerate(lines, 2):
        cells = line.split("\t")
        if len(cells) != 4 or cells[1] not in KINDS or not cells[3]:
            complaints.append(f"{REMAINDER.name}:{number}: is no row")
            continue
        rows[tuple(cells[:3])] = False
    return rows


def places(report):
    """Of each line that has code: file, number, text, whether it ran, its branches and how many of them ran."""
    for file in report["files"]:
        source = (ROOT / file["file"]).read_text()
        texts = source.splitlines()
        conditions = lines_with_conditions(source)
        for line in file["lines"]:
            if line["gcovr/noncode"]:
                continue
            number = line["line_number"]
            branches = line["branches"] if number in conditions else []
            ran = sum(branch["count"] > 0 for branch in branches)
            yield file["file"], number, texts[number - 1].strip(), line["count"] > 0, len(branches), ran


def main():
    arguments = sys.argv[1:]
    is_list = arguments[:1] == ["--list"]
    if len(arguments) != 1 + is_list:
        sys.exit(__doc__)
    complaints = []
    rows = read_remainder(complaints)
    total = Counts()
    folders = collections.defaultdict(Counts)
    parsers = Counts()
    missed = []
    for file, number, text, is_run, branches, ran in places(json.loads(pathlib.Path(arguments[-1]).read_text())):
        groups = [total, folders[file.rpartition("/")[0]]]
        if file.startswith(PARSERS):
            groups.append(parsers)
        for group in groups:
            group.add("line", 1, is_run)
            group.add("branch", branches, ran)
        if not is_run or ran < branches:
            missed.append((file, "branch" if is_run else "line", text, number))
    if is_list:
        for file, kind, text, _ in missed:
            if (file, kind, text) not in rows and (file, "sometimes", text) not in rows:
                print(file, kind, text, "", sep="\t")
        return 0

    for file, kind, text, number in missed:
        row = next((row for row in ((file, kind, text), (file, "sometimes", text)) if row in rows), None)
        if row:
            rows[row] = True
        else:
            complaints.append(f"{file}:{number}: {'no run gets here' if kind == 'line' else 'a branch is not taken'}: {text}")
    for row, is_met in rows.items():
        if not is_met and row[1] != "sometimes":
            complaints.append(f"{REMAINDER.name}: runs, or is no longer there: {' '.join(row)}")
    for folder in sorted(folders):
        print(f"{folder:34}", folders[folder])
    print(f"{'the parsers':34}", parsers)
    print(f"{'all':34}", total)
    for kind, goal in GOALS.items():
        if total.percent(kind) < goal:
            complaints.append(f"{total.percent(kind):.2f} % of the {kind}s run, the goal is {goal} %")
    print(*complaints, sep="\n")
    print(f"{len(rows)} rows of the remainder, {len(complaints)} faults")
    return 1 if complaints else 0


sys.exit(main())
