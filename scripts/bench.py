#!/usr/bin/env python3
"""Runs every benchmark of the build trees and makes one table of them. ./run --bench builds the trees and calls it.

A program speaks Google Benchmark's protocol, and its names say what a figure is (bench/README.md):
    WHAT.../CONTENDER[/NUMBER...]
The last word is who did it: "vorlund" is ours, "vorlund X" another way of ours, "limit X" what the machine gives at best,
all others are peers. A figure is a time: of one item where the program counts items, of one iteration otherwise; or
the counter that is named "figure UNIT".
"""
import argparse
import json
import math
import os
import pathlib
import platform
import re
import statistics
import subprocess
import sys
import tempfile
import time

BEGIN = "<!-- measured: written by ./run --bench -->"
END = "<!-- measured: end -->"
# Not part of a name: what Google Benchmark adds behind it.
ADDED = re.compile(r"real_time|manual_time|process_time|(iterations|repeats|min_time|min_warmup_time):.*")
# What needs more than one processor is not pinned to one.
SEVERAL = re.compile(r"/threads:|/jobs:|/processors:|two_processors")
OURS = "vorlund"
# Time against work: more than this exponent, and something grows faster than its work.
GROWTH_LIMIT = 1.2
GROWTH_NOISE = 0.1
SQUARE_LIMIT = 2.2
MISSING = "-"


class Fault(Exception):
    pass


def split_name(name):
    """(row, contender, numbers) of a benchmark's name."""
    words = [word for word in name.split("/") if not ADDED.fullmatch(word)]
    numbers = []
    while len(words) > 1 and (re.fullmatch(r"[\d.]+", words[-1]) or ":" in words[-1].replace("::", "")):
        numbers.insert(0, words.pop())
    if len(words) < 2:
        raise Fault(f"{name}: no name of the form WHAT/CONTENDER")
    return "/".join(words[:-1]), words[-1], tuple(numbers)


def figure_of(run, has_real_time):
    """(figure, unit) of one repetition."""
    for key, value in run.items():
        if key.startswith("figure "):
            return value, key[len("figure "):]
    name = run["name"]
    is_real = has_real_time or re.search(r"/(real_time|manual_time|threads:)", name)
    scale = {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}[run["time_unit"]]
    figure = run["real_time" if is_real else "cpu_time"] * scale
    if "items_per_second" in run:
        # The rate is that of the clock that the program chose.
        chosen = run["real_time" if re.search(r"/(real_time|manual_time)", name) else "cpu_time"] * scale
        items = run["items_per_second"] * chosen * 1e-9
        if items > 0:
            figure /= items
    return figure, "ns"


def show(figure, unit):
    if unit != "ns":
        # Large ones as whole numbers, not by powers of ten.
        return f"{figure:.0f} {unit}" if abs(figure) >= 1e4 else f"{figure:.4g} {unit}"
    for limit, size, name in ((0.1, 1e-3, "ps"), (1e3, 1, "ns"), (1e6, 1e3, "µs"), (1e9, 1e6, "ms"), (math.inf, 1e9, "s")):
        if figure < limit:
            break
    digits = 2 if figure / size < 10 else 1 if figure / size < 100 else 0
    return f"{figure / size:.{digits}f} {name}"


def show_ratio(ratio):
    return f"{ratio:.2f}" if ratio < 10 else f"{ratio:.0f}"


class Target:
    """A build tree and how its programs are run."""

    def __init__(self, name, folder, launcher, options):
        self.name = name
        self.folder = pathlib.Path(folder)
        self.launcher = launcher
        self.has_real_time = name.startswith("win")
        self.options = options
        # (program, row, numbers) -> contender -> [figures], with the unit of each row; in the order of the programs.
        self.figures = {}
        self.units = {}
        self.faults = []
        # Programs that were not measured now, by the version of which their results are.
        self.kept = {}

    def programs(self):
        suffix = ".exe" if self.name.startswith("win") else ""
        found = sorted(self.folder.glob(f"bin/bench_*{suffix}"))
        return [path for path in found if path.is_file() and (suffix or "." not in path.name) and os.access(path, os.X_OK)]

    def call(self, program, arguments, pinned=False):
        words = (["taskset", "-c", str(self.options.processor)] if pinned else []) + self.launcher + [str(program)] + arguments
        # Into files: what a program leaves behind, such as Wine's server, may hold a pipe open for ever.
        try:
            with tempfile.TemporaryFile() as out, tempfile.TemporaryFile() as errors:
                done = subprocess.run(words, stdin=subprocess.DEVNULL, stdout=out, stderr=errors, timeout=self.options.limit, check=False)
                done.stdout, done.stderr = [(file.seek(0), file.read().decode(errors="replace"))[1] for file in (out, errors)]
                return done
        except subprocess.TimeoutExpired as error:
            raise Fault(f"{self.name}: {program.name} takes longer than {self.options.limit} s") from error

    def run(self, program):
        """All chosen rows of a program, those for one processor first."""
        short_name = program.name.removesuffix(".exe").removeprefix("bench_")
        listed = self.call(program, ["--benchmark_list_tests=true"])
        if listed.returncode:
            raise Fault(f"{self.name}: {program.name} lists no rows: {listed.stderr.strip()[-300:]}")
        names = [line for line in listed.stdout.splitlines() if line.strip()]
        chosen = [name for name in names if self.options.filter.search(f"{short_name}/{name}")]
        # In the order of the program, which the results do not have. A wrong name is a fault before anything is measured.
        for name in chosen:
            row, contender, numbers = split_name(name)
            self.figures.setdefault((short_name, row, numbers), {}).setdefault(contender, [])
        for several in (False, True):
            part = [name for name in chosen if bool(SEVERAL.search(name)) == several]
            if part:
                self.measure(program, short_name, part, not several)

    def measure(self, program, short_name, names, pinned):
        out = self.options.work / f"{self.name}-{short_name}-{'one' if pinned else 'all'}.json"
        if self.options.again and not self.options.again.search(short_name) and out.exists():
            results = json.loads(out.read_text())
            self.kept.setdefault(results.get("vorlund", "unknown"), set()).add(short_name)
        else:
            results = self.measure_now(program, names, pinned)
            results["vorlund"] = self.options.version
            out.write_text(json.dumps(results, indent=1))
        self.note(short_name, results["benchmarks"])

    def measure_now(self, program, names, pinned):
        arguments = [
            "--benchmark_filter=^(" + "|".join(re.sub(r"[.[\\()*+?{|^$]", r"\\\g<0>", name) for name in names) + ")$",
            "--benchmark_format=json",
            f"--benchmark_repetitions={self.options.repetitions}",
            f"--benchmark_min_time={self.options.seconds}",
            "--benchmark_enable_random_interleaving=true",
        ]
        done = self.call(program, arguments, pinned)
        # What a program prints besides comes before the results.
        try:
            results = json.loads(done.stdout[done.stdout.find("{"):] if "{" in done.stdout else "")
            results["benchmarks"]
        except (ValueError, KeyError) as error:
            raise Fault(f"{self.name}: {program.name} ends with {done.returncode} and no results: "
                        f"{(done.stderr or done.stdout).strip()[-300:]}") from error
        return results

    def note(self, short_name, runs):
        for run in runs:
            if run.get("run_type") == "aggregate":
                continue
            if run.get("error_occurred"):
                self.faults.append(f"{self.name}: {short_name}/{run['name']}: {run.get('error_message', '')}")
                continue
            row, contender, numbers = split_name(run["name"])
            key = (short_name, row, numbers)
            figure, unit = figure_of(run, self.has_real_time)
            self.units[key] = unit
            self.figures.setdefault(key, {}).setdefault(contender, []).append(figure)

    def missing_peers(self):
        path = self.folder / "bench-missing.txt"
        rows = [line.split() for line in path.read_text().splitlines()] if path.exists() else []
        return {row[0]: row[1:] for row in rows}


def label(row, numbers):
    return " ".join([row.replace("/", ", "), *numbers]).replace("|", "\\|").replace("_", " ")


def in_order(keys):
    """Rows by their programs, and by their numbers where only these differ."""
    order = {}
    for program, row, _ in keys:
        order.setdefault((program, row), len(order))

    def number(text):
        return float(text.rsplit(":")[-1]) if re.fullmatch(r"(.*:)?[\d.]+", text) else 0

    return sorted(keys, key=lambda key: (key[0], order[key[:2]], [number(text) for text in key[2]]))


def cells(target, key, known_peers):
    """Ours, least, peers, limit of a row on a target."""
    contenders = target.figures.get(key, {}) if target else {}
    unit = target.units.get(key, "ns") if target else "ns"
    ours = contenders.get(OURS)
    middle = statistics.median(ours) if ours else None
    peers, limits = [], []
    for name in known_peers:
        if name == OURS:
            continue
        is_limit = name.startswith("limit ")
        shown = name.removeprefix("limit ")
        figures = contenders.get(name)
        if not figures:
            text = f"{shown} {MISSING}"
        else:
            other = statistics.median(figures)
            text = f"{shown} {show(other, unit)}"
            if middle and other > 0:
                text += f" ({show_ratio(other / middle)})"
        (limits if is_limit else peers).append(text)
    return (show(middle, unit) if ours else MISSING, show(min(ours), unit) if ours else MISSING,
            "; ".join(peers), "; ".join(limits))


def table(linux, windows):
    keys = in_order(list(linux.figures) + [key for key in (windows.figures if windows else {}) if key not in linux.figures])
    lines = ["| What | Ours | Least | Peers (their time by ours) | At best | Wine: ours | Wine: peers |",
             "|---|---|---|---|---|---|---|"]
    program = None
    missing = linux.missing_peers()
    for key in keys:
        if key[0] != program:
            program = key[0]
            absent = "; ".join(f"{name} {MISSING}" for name in missing.get(program, []))
            lines.append(f"| **{program}** | | | {absent} | | | |")
        known = list(linux.figures.get(key, {}))
        known += [name for name in (windows.figures.get(key, {}) if windows else {}) if name not in known]
        ours, least, peers, limit = cells(linux, key, known)
        there, _, peers_there, limit_there = cells(windows, key, known)
        if limit_there.strip(f" {MISSING};") and windows and key in windows.figures:
            peers_there = "; ".join(filter(None, (peers_there, limit_there)))
        if not windows or key not in windows.figures:
            peers_there = MISSING
        lines.append(f"| {label(key[1], key[2])} | {ours} | {least} | {peers or MISSING} | {limit or MISSING} "
                     f"| {there} | {peers_there} |")
    return lines


def growth(target):
    """(what, contender, exponent, highest allowed, work) for the rows of growth: time against work. Where the peers grow faster than
    their work too, such as beyond the caches, it is the machine that does."""
    series = {}
    for (program, row, numbers), contenders in target.figures.items():
        if not row.startswith("growth") or not numbers:
            continue
        for contender, figures in contenders.items():
            if not figures:
                continue
            size = float(numbers[-1].rsplit(":")[-1])
            series.setdefault((program, row, numbers[:-1], contender), []).append((size, min(figures)))
    found = []
    for (program, row, numbers, contender), points in series.items():
        points.sort()
        if len(points) < 2 or min(points[0] + points[-1]) <= 0 or contender.startswith("limit "):
            continue
        exponent = math.log(points[-1][1] / points[0][1]) / math.log(points[-1][0] / points[0][0])
        most = SQUARE_LIMIT if row.startswith("growth by a square rule/") else GROWTH_LIMIT
        found.append((f"{program}: {label(row.partition('/')[2], numbers)}", contender, exponent, most,
                      f"{points[0][0]:g} to {points[-1][0]:g}"))
    peers = {}
    for what, contender, exponent, _, _ in found:
        if not contender.startswith(OURS):
            peers[what] = max(peers.get(what, 0), exponent)
    return [(what, contender, exponent, max(most, peers.get(what, 0) + GROWTH_NOISE), work)
            for what, contender, exponent, most, work in found]


def growth_table(rows):
    lines = ["| What grows | Work | Who | Time grows by the power | |", "|---|---|---|---|---|"]
    for what, contender, exponent, most, work in rows:
        verdict = "" if contender != OURS else "faster than its work" if exponent > most else "square, by its rule" \
            if most == SQUARE_LIMIT else "as its work" if exponent <= GROWTH_LIMIT else "as the peers"
        lines.append(f"| {what} | {work} | {contender} | {exponent:.2f} | {verdict} |")
    return lines


def read_first(pattern, text, default="unknown"):
    found = re.search(pattern, text)
    return found[1].strip() if found else default


def versions():
    packages = ["g++", "libbenchmark-dev", "libsndfile1-dev", "libsdl2-dev", "libswresample-dev", "libglib2.0-dev", "qt6-base-dev",
                "libprotobuf-dev", "libcereal-dev", "libglm-dev", "libeigen3-dev", "libsamplerate0-dev", "libsoxr-dev", "sox",
                "python3", "python3-numpy", "python3-soundfile", "python3-scipy", "libc6", "wine"]
    rows = []
    for package in packages:
        try:
            done = subprocess.run(["dpkg-query", "-W", "-f", "${Version}\\n", package], capture_output=True, text=True, check=False)
        except OSError:
            return "unknown"
        # One line for each architecture of a package.
        found = done.stdout.split() if done.returncode == 0 else []
        rows.append(f"{package} {found[0] if found else MISSING}")
    return ", ".join(rows)


def about(options, targets, began, load):
    processor = read_first(r"model name\s*:\s*(.*)", pathlib.Path("/proc/cpuinfo").read_text())
    sets = [name for name in ("avx2", "avx512f") if re.search(rf"\b{name}\b", pathlib.Path("/proc/cpuinfo").read_text())]
    return [
        f"Measured by `{options.command}` on {time.strftime('%d %B %Y', time.gmtime(began))}, in "
        f"{(time.time() - began) / 60:.0f} minutes.",
        f"Machine: {processor} ({', '.join(sets) or 'without AVX2'}), {os.cpu_count()} processors, "
        f"{platform.system()} {platform.release()}, load of others when it began {load:.1f}.",
        f"Versions: Vorlund {options.version}; {versions()}.",
        *(f"Kept from the run of version {version}: {target.name}, {', '.join(sorted(programs))}."
          for target in targets for version, programs in target.kept.items()),
        f"Each figure is the median of {options.repetitions} repetitions of at least {options.seconds} s, all rows of a program "
        "mixed at random, on one processor where a row has one thread; \"least\" is the shortest. Processor time, and elapsed "
        "time for several threads and under Wine. A ratio above 1 is ours; \"at best\" is what the machine gives for the same "
        "bytes or calls, with the part of it that we reach. \"-\" is not there.",
    ]


def write_page(page, lines):
    text = page.read_text()
    begin, end = text.find(BEGIN), text.find(END)
    if begin < 0 or end < begin:
        raise Fault(f"{page}: the marks of the measured part are not there")
    page.write_text(text[:begin + len(BEGIN)] + "\n\n" + "\n".join(lines) + "\n\n" + text[end:])


def parse(arguments):
    parser = argparse.ArgumentParser(prog="./run --bench", description="every benchmark with its peers, as one table")
    parser.add_argument("--short", action="store_true", help="a pass of some minutes that proves that all rows run; writes nothing")
    parser.add_argument("--filter", default="", metavar="REGEX", help="the rows PROGRAM/NAME that match; writes nothing")
    parser.add_argument("--again", default="", metavar="REGEX", help="only the programs whose names match are measured anew; "
                        "the others keep the results of the last run, and the page is written")
    parser.add_argument("--no-wine", action="store_true", help="without the Windows programs")
    parser.add_argument("--linux", default="build/bench-linux", help=argparse.SUPPRESS)
    parser.add_argument("--win32", default="", help=argparse.SUPPRESS)
    parser.add_argument("--launcher", default="wine", help=argparse.SUPPRESS)
    parser.add_argument("--page", type=pathlib.Path, default=pathlib.Path("docs/performance.md"), help=argparse.SUPPRESS)
    parser.add_argument("--work", type=pathlib.Path, default=pathlib.Path("build/bench-results"), help=argparse.SUPPRESS)
    parser.add_argument("--processor", type=int, default=0, help="the processor of rows with one thread")
    parser.add_argument("--version", default="unknown", help=argparse.SUPPRESS)
    options = parser.parse_args(arguments)
    options.command = " ".join(["./run --bench", *(["--short"] if options.short else []),
                                *(["--filter", options.filter] if options.filter else []),
                                *(["--again", options.again] if options.again else [])])
    options.repetitions, options.seconds, options.limit = (1, 0.001, 120) if options.short else (5, 0.05, 5400)
    options.is_whole = not options.short and not options.filter and not options.no_wine
    if not options.is_whole:
        options.work /= "parts"
    try:
        options.filter = re.compile(options.filter)
        options.again = re.compile(options.again) if options.again else None
    except re.error as error:
        parser.error(f"REGEX: {error}")
    return options


def main(arguments):
    options = parse(arguments)
    options.work.mkdir(parents=True, exist_ok=True)
    if options.short:
        os.environ["VORLUND_BENCH_SHORT"] = "1"
    began, load = time.time(), os.getloadavg()[0]
    targets = [Target("linux", options.linux, [], options)]
    if options.win32 and not options.no_wine:
        targets.append(Target("win32", options.win32, options.launcher.split(), options))
    faults = []
    for target in targets:
        for program in target.programs():
            started = time.time()
            try:
                target.run(program)
            except Fault as fault:
                faults.append(str(fault))
            print(f"{target.name} {program.name}: {time.time() - started:.0f} s", file=sys.stderr, flush=True)
        faults += target.faults
    linux, windows = targets[0], targets[1] if len(targets) > 1 else None
    for key, contenders in linux.figures.items():
        if OURS not in contenders:
            faults.append(f"linux: {'/'.join((key[0], key[1], *key[2]))}: nothing of ours beside {', '.join(contenders)}")
    if not linux.figures:
        faults.append("no row matches")
    grown = growth(linux)
    faults += [f"linux: {what} grows by the power {exponent:.2f} of its work" for what, contender, exponent, most, _ in grown
               if contender == OURS and exponent > most and not options.short]
    lines = [*table(linux, windows), ""]
    if grown:
        lines += [*growth_table(grown), ""]
    lines += [part for line in about(options, targets, began, load) for part in (line, "")][:-1]
    print("\n".join(lines))
    if options.is_whole:
        write_page(options.page, lines)
    for fault in faults:
        print(f"bench: {fault}", file=sys.stderr)
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
