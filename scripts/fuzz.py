#!/usr/bin/env python3
"""Fuzzes, and keeps the account of it.

    fuzz.py run [-p PRESET] MINUTES [NAME...]   every fuzz target for that long, those with the least time first
    fuzz.py sum                                 what all runs add up to, by target and word size
    fuzz.py merge [-p PRESET] [NAME...]         the grown inputs into fuzz/corpus, and how far a replay of it reaches

A run can be ended at any time and be continued: libFuzzer keeps its inputs in build/PRESET/corpus, and each run adds
a line to fuzz/results.tsv. One target at a time, at the lowest priority. Build the preset first.
"""
import argparse
import collections
import os
import pathlib
import re
import resource
import shutil
import subprocess
import sys
import tempfile
import time

ROOT = pathlib.Path(__file__).resolve().parents[1]
LOG = ROOT / "fuzz/results.tsv"
COLUMNS = "target bits seconds processor_seconds inputs features revision outcome".split()
PRESETS = {"linux-fuzz": 64, "linux32-fuzz": 32}
# Of a corpus in the tree, and of one file in it.
MAX_CORPUS_BYTES = 256 * 1024
MAX_FILE_BYTES = 16 * 1024
# Of an input, where longer ones only take longer; libFuzzer's own limit is the largest input of the corpus or 4 KiB.
MAX_LENGTHS = {"decode_stream": 1024, "text_reader": 2560, "wav_chunks": 1024, "wav_decoder": 1024}
MAX_SECONDS_PER_INPUT = 25
MAX_MEGABYTES = 2048
# By libFuzzer's exit code: one that was ended by a signal has found nothing so far.
OUTCOMES = {0: "passed", 72: "ended"}
FEATURES = re.compile(r"\bft: (\d+)")


def rows():
    lines = LOG.read_text().splitlines()[1:] if LOG.exists() else []
    return [dict(zip(COLUMNS, line.split("\t"))) for line in lines]


def append(row):
    is_new = not LOG.exists()
    with LOG.open("a") as log:
        if is_new:
            log.write("\t".join(COLUMNS) + "\n")
        log.write("\t".join(str(row[column]) for column in COLUMNS) + "\n")


def revision():
    git = ["git", "-C", str(ROOT)]
    name = subprocess.run([*git, "rev-parse", "--short=10", "HEAD"], capture_output=True, text=True).stdout.strip()
    changes = [*git, "status", "--porcelain", "--untracked-files=no", "--", "src", "include", "fuzz/*.cpp", "fuzz/*.h"]
    return name + ("+" if subprocess.run(changes, capture_output=True, text=True).stdout else "")


def targets(folder, wanted):
    names = (folder / "fuzzers.txt").read_text().split()
    for name in wanted:
        if name not in names:
            sys.exit(f"fuzz: there is no target {name}; these are there: {' '.join(names)}")
    return wanted or names


def environment():
    # Hardly any stacks of allocations, and a quarantine that fits into a cache: targets that allocate much are up to
    # twice as fast. A finding is run again with ASAN_OPTIONS of one's own, which has the whole stacks.
    asan = "allocator_may_return_null=1:detect_leaks=1:malloc_context_size=2:quarantine_size_mb=8"
    options = {"ASAN_OPTIONS": asan, "UBSAN_OPTIONS": "print_stacktrace=1"}
    return {**options, **os.environ}


def launch(program, *arguments):
    """What the program prints, its exit code, and the seconds of processor time that it took."""
    # The sanitizers of Clang 14 do not know the address layouts of newer kernels.
    prefix = ["setarch", "-R"] if subprocess.run(["setarch", "-R", "true"], capture_output=True).returncode == 0 else []
    before = resource.getrusage(resource.RUSAGE_CHILDREN)
    done = subprocess.run(["nice", "-n", "19", *prefix, str(program), *map(str, arguments)], cwd=ROOT,
                          env=environment(), stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
    after = resource.getrusage(resource.RUSAGE_CHILDREN)
    taken = after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime
    return done.stdout.decode(errors="replace"), done.returncode, taken


def features(output):
    found = FEATURES.findall(output)
    return int(found[-1]) if found else 0


def run(options, folder, bits):
    totals = collections.Counter()
    for row in rows():
        if int(row["bits"]) == bits:
            totals[row["target"]] += int(row["processor_seconds"])
    failed = []
    for name in sorted(targets(folder, options.names), key=lambda target: totals[target]):
        grown = folder / "corpus" / name
        findings = folder / "findings"
        grown.mkdir(parents=True, exist_ok=True)
        findings.mkdir(exist_ok=True)
        begin = time.monotonic()
        # Of what is built, if it was built before anything else was changed.
        tested = revision()
        output, status, taken = launch(
            folder / "bin" / f"fuzz_{name}", f"-max_total_time={options.minutes * 60}", f"-timeout={MAX_SECONDS_PER_INPUT}",
            f"-rss_limit_mb={MAX_MEGABYTES}", f"-max_len={MAX_LENGTHS.get(name, 0)}", "-print_final_stats=1",
            f"-artifact_prefix={findings}/{name}-",
            grown, ROOT / "fuzz/corpus" / name)
        (folder / f"fuzz-{name}.log").write_text(output)
        found = re.search(r"number_of_executed_units: *(\d+)", output)
        inputs = int(found[1]) if found else 0
        append(dict(target=name, bits=bits, seconds=round(time.monotonic() - begin), processor_seconds=round(taken), inputs=inputs,
                    features=features(output), revision=tested, outcome=OUTCOMES.get(status, "failed")))
        rate = round(inputs / taken) if taken else 0
        print(f"{name:16} {bits} bits {inputs:11} inputs {rate:7} a second, {features(output)} features", flush=True)
        if status not in OUTCOMES:
            failed.append(name)
            print(output[-4000:])
            print(f"fuzz: {name} failed; the input is in {findings}")
    return 1 if failed else 0


def total(options):
    sums = collections.defaultdict(collections.Counter)
    for row in rows():
        entry = sums[row["target"], row["bits"]]
        for column in ("seconds", "processor_seconds", "inputs"):
            entry[column] += int(row[column])
        entry["runs"] += 1
        entry["features"] = max(entry["features"], int(row["features"]))
    for (name, bits), entry in sorted(sums.items()):
        rate = entry["inputs"] // max(entry["processor_seconds"], 1)
        print(f"{name:16} {bits} bits {entry['runs']:4} runs {entry['seconds']:8} s {entry['inputs']:12} inputs "
              f"{rate:7} a processor second {entry['features']:6} features")
    return 0


def merge(options, folder, bits):
    """A small set of inputs with the features of all, as few and small ones as libFuzzer finds, within the limits."""
    is_short = False
    for name in targets(folder, options.names):
        kept = ROOT / "fuzz/corpus" / name
        program = folder / "bin" / f"fuzz_{name}"
        goal = max((int(row["features"]) for row in rows() if row["target"] == name and int(row["bits"]) == bits),
                   default=0)
        with tempfile.TemporaryDirectory() as merged:
            sources = [kept, folder / "corpus" / name]
            output, status, _ = launch(program, "-set_cover_merge=1", f"-max_len={MAX_FILE_BYTES}", merged,
                                       *[source for source in sources if source.is_dir()])
            if status != 0:
                print(output[-4000:])
                return 1
            # Seeds with names were chosen by somebody and stay.
            is_named = [path for path in kept.iterdir() if not re.fullmatch(r"[0-9a-f]{40}", path.name)]
            size = sum(path.stat().st_size for path in is_named)
            for path in kept.iterdir():
                if path not in is_named:
                    path.unlink()
            for path in sorted(pathlib.Path(merged).iterdir(), key=lambda path: (path.stat().st_size, path.name)):
                size += path.stat().st_size
                if size > MAX_CORPUS_BYTES:
                    break
                shutil.copy(path, kept / path.name)
        output, _, _ = launch(program, "-runs=0", kept)
        reached = features(output)
        part = 100 * reached / goal if goal else 100
        is_short |= part < 90
        count = len(list(kept.iterdir()))
        print(f"{name:16} {count:5} files {min(size, MAX_CORPUS_BYTES):7} bytes, a replay reaches {reached} of {goal} "
              f"features, {part:.0f} %", flush=True)
    return 1 if is_short else 0


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    commands = parser.add_subparsers(dest="command", required=True)
    for command in ("run", "merge"):
        sub = commands.add_parser(command)
        if command == "run":
            sub.add_argument("minutes", type=int)
        sub.add_argument("names", nargs="*")
        sub.add_argument("-p", "--preset", choices=PRESETS, default="linux-fuzz")
    commands.add_parser("sum")
    options = parser.parse_args()
    if options.command == "sum":
        return total(options)
    folder = ROOT / "build" / options.preset
    if not (folder / "fuzzers.txt").exists():
        sys.exit(f"fuzz: build it first: cmake --preset {options.preset} && cmake --build --preset {options.preset}")
    return {"run": run, "merge": merge}[options.command](options, folder, PRESETS[options.preset])


sys.exit(main())
