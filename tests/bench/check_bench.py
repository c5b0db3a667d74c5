#!/usr/bin/env python3
"""What scripts/bench.py makes of programs that speak Google Benchmark's protocol: rows, ratios, what is missing, growth, the
short pass, and the measured part of a page. The programs are made here and take no time, so nothing has to be built.

    tests/bench/check_bench.py
"""
import os
import pathlib
import re
import subprocess
import sys
import tempfile
import textwrap

ROOT = pathlib.Path(__file__).resolve().parents[2]
RUNNER = ROOT / "scripts/bench.py"
PAGE = "before\n<!-- measured: written by ./run --bench -->\nold\n<!-- measured: end -->\nbehind\n"

# A program of the protocol: rows are names with their figures of each repetition; the rest is what Google Benchmark does.
PROGRAM = '''\
    #!{python}
    import json, os, re, sys
    rows = {rows!r}
    values = dict(word[2:].split("=", 1) for word in sys.argv[1:] if "=" in word)
    if values.get("benchmark_list_tests") == "true":
        print("\\n".join(rows))
        sys.exit()
    pattern = re.compile(values["benchmark_filter"])
    runs = []
    for name, given in rows.items():
        if not pattern.search(name):
            continue
        for i in range(int(values["benchmark_repetitions"])):
            run = {{"name": name, "run_type": "iteration", "iterations": 1, "time_unit": "ns",
                   "real_time": 1000.0, "cpu_time": 1000.0}}
            run.update(given)
            if isinstance(run["cpu_time"], list):
                run["cpu_time"] = run["cpu_time"][i % len(run["cpu_time"])]
            run["processors"] = len(os.sched_getaffinity(0))
            run["repetitions"], run["seconds"] = values["benchmark_repetitions"], values["benchmark_min_time"]
            run["short"] = os.environ.get("VORLUND_BENCH_SHORT", "")
            runs.append(run)
        runs.append({{"name": name + "_median", "run_type": "aggregate", "cpu_time": 1e9, "real_time": 1e9, "time_unit": "ns"}})
    # Google Benchmark gives its results in the order in which it ran them, and its patterns know few escapes.
    assert not re.search(r"\\\\[^.[\\\\()*+?{{|^$]", values["benchmark_filter"]), values["benchmark_filter"]
    runs.reverse()
    print(json.dumps({{"context": {{}}, "benchmarks": runs}}))
    '''

ROWS = {
    "read/vorlund/64": {"cpu_time": [100.0, 90.0, 110.0, 300.0, 95.0]},
    "read/stdio/64": {"cpu_time": 50.0},
    "read/limit copy/64": {"cpu_time": 25.0},
    # Peers stay in the order of the program, and a row without ours is a fault.
    "read/vorlund/1024": {"cpu_time": 2000.0},
    "read/stdio/1024": {"cpu_time": 1.0, "time_unit": "us"},
    # The time of an item: 1000 ns for 4 of them.
    "matrices/vorlund": {"items_per_second": 4e6},
    "elapsed/vorlund/real_time": {"cpu_time": 1.0, "real_time": 7.0},
    "both/vorlund/real_time/threads:2": {"cpu_time": 1.0, "real_time": 8.0},
    "memory of an object [a+b] (c-d)/vorlund": {"figure bytes": 48},
    "growth/texts/vorlund/100": {"cpu_time": 100.0},
    "growth/texts/vorlund/10000": {"cpu_time": 10000.0},
    # Beyond the caches everything is slower.
    "growth/bytes/vorlund/1": {"cpu_time": 10.0},
    "growth/bytes/vorlund/10": {"cpu_time": 300.0},
    "growth/bytes/std::vector/1": {"cpu_time": 10.0},
    "growth/bytes/std::vector/10": {"cpu_time": 290.0},
    "growth by a square rule/sorts/vorlund/100": {"cpu_time": 100.0},
    "growth by a square rule/sorts/vorlund/1000": {"cpu_time": 10000.0},
}

complaints = []


def expect(what, is_so):
    if not is_so:
        complaints.append(what)


def make_tree(folder, programs, missing="", suffix=""):
    (folder / "bin").mkdir(parents=True)
    for name, rows in programs.items():
        path = folder / "bin" / f"bench_{name}{suffix}"
        path.write_text(textwrap.dedent(PROGRAM).format(python=sys.executable, rows=rows))
        path.chmod(0o755)
    # What lies beside the programs is none.
    (folder / "bin/bench_notes.txt").write_text("")
    (folder / "bench-missing.txt").write_text(missing)
    return folder


def run(folder, *arguments):
    page = folder / "page.md"
    page.write_text(PAGE)
    done = subprocess.run([RUNNER, "--linux", folder / "linux", "--page", page, "--work", folder / "work", *arguments],
                          capture_output=True, text=True, timeout=60, check=False, env={**os.environ, "LC_ALL": "C.UTF-8"})
    return done, page.read_text()


def row(text, label):
    found = [line for line in text.splitlines() if line.startswith(f"| {label} |")]
    return [cell.strip() for cell in found[0].strip("|").split("|")] if len(found) == 1 else found


def check_table(folder):
    make_tree(folder / "linux", {"one": ROWS, "two": {"open/vorlund": {}}}, "one qt sdl2\ntwo\n")
    windows = {"open/vorlund": {"real_time": 3000.0}, "open/stdio": {"real_time": 6000.0}}
    make_tree(folder / "win32", {"two": windows}, suffix=".exe")
    done, page = run(folder, "--win32", folder / "win32", "--launcher", "env")
    expect(f"a whole run succeeds: {done.stderr}", done.returncode == 0)
    expect("medians, least, ratios and limits",
           row(done.stdout, "read 64") == ["read 64", "100 ns", "90.0 ns", "stdio 50.0 ns (0.50)", "copy 25.0 ns (0.25)", "-", "-"])
    expect("units of time", row(done.stdout, "read 1024")[1:4] == ["2.00 µs", "2.00 µs", "stdio 1.00 µs (0.50)"])
    expect("the time of an item", row(done.stdout, "matrices")[1] == "250 ns")
    labels = [line.split("|")[1].strip() for line in done.stdout.splitlines() if line.startswith("|")]
    expect("rows in the order of the program", labels.index("read 64") < labels.index("read 1024") < labels.index("matrices"))
    expect("elapsed time", row(done.stdout, "elapsed")[1] == "7.00 ns" and row(done.stdout, "both threads:2")[1] == "8.00 ns")
    expect("a figure that is no time", row(done.stdout, "memory of an object [a+b] (c-d)")[1] == "48 bytes")
    expect("peers that were not there when it was built", row(done.stdout, r"**one**")[3] == "qt -; sdl2 -")
    expect("Wine beside it, by elapsed time",
           row(done.stdout, "open") == ["open", "1.00 µs", "1.00 µs", "stdio -", "-", "3.00 µs", "stdio 6.00 µs (2.00)"])
    expect("growth as the work", row(done.stdout, "one: texts")[3:] == ["1.00", "as its work"])
    expect("growth as the peers", "| one: bytes | 1 to 10 | vorlund | 1.48 | as the peers |" in done.stdout)
    expect("growth by a rule", row(done.stdout, "one: sorts")[3:] == ["2.00", "square, by its rule"])
    expect("one table, and one of growth", done.stdout.count("\n|---") + done.stdout.startswith("|---") == 2)
    expect("the page has what was printed, between its marks",
           page.startswith("before\n<!--") and page.endswith("end -->\nbehind\n") and done.stdout.strip() in page and "old" not in page)
    expect("machine, versions and command", all(re.search(f"^{word}", page, re.M) for word in
                                                ("Measured by `./run --bench` on", "Machine: ", "Versions: Vorlund ")))
    runs = (folder / "work/linux-one-one.json").read_text()
    expect("five repetitions on one processor", '"processors": 1' in runs and '"repetitions": "5"' in runs)
    if len(os.sched_getaffinity(0)) > 1:
        expect("threads get all processors", '"processors": 1,' not in (folder / "work/linux-one-all.json").read_text())


def check_short(folder):
    make_tree(folder / "linux", {"one": ROWS})
    done, page = run(folder, "--short")
    runs = (folder / "work/parts/linux-one-one.json").read_text()
    expect(f"the short pass succeeds: {done.stderr}", done.returncode == 0 and row(done.stdout, "read 64")[2] == "100 ns")
    expect("it is short", '"repetitions": "1"' in runs and '"seconds": "0.001"' in runs and '"short": "1"' in runs)
    expect("it leaves the page", page == PAGE)
    done, page = run(folder, "--filter", "one/read.*/64$")
    expect("a filter takes rows", len(row(done.stdout, "read 64")) == 7 and row(done.stdout, "matrices") == [] and page == PAGE)
    done, _ = run(folder, "--filter", "nothing at all")
    expect("a filter that takes none fails", done.returncode == 1 and "no row matches" in done.stderr)
    done, _ = run(folder, "--filter", "(")
    expect("a filter that is none fails", done.returncode == 2)


def check_again(folder):
    make_tree(folder / "linux", {"one": {"read/vorlund": {"cpu_time": 10.0}}, "two": {"open/vorlund": {"cpu_time": 20.0}}})
    run(folder, "--version", "first")
    make_tree(folder / "later/linux", {"one": {"read/vorlund": {"cpu_time": 30.0}}, "two": {"open/vorlund": {"cpu_time": 40.0}}})
    run(folder, "--short", "--linux", folder / "later/linux")
    done, page = run(folder, "--again", "^two$", "--version", "second", "--linux", folder / "later/linux")
    expect(f"measured again: {done.stderr}", done.returncode == 0 and row(page, "open")[1] == "40.0 ns")
    expect("kept from the run before, a short pass is none", row(page, "read")[1] == "10.0 ns")
    expect("what was kept is told", "Versions: Vorlund second" in page and "Kept from the run of version first: linux, one." in page)


def check_faults(folder):
    make_tree(folder / "linux", {"one": {"NoContender": {}}, "two": {"open/stdio": {}}, "three": {
        "growth/classes/vorlund/10": {"cpu_time": 10.0}, "growth/classes/vorlund/1000": {"cpu_time": 100000.0}},
        "four": {"bad/vorlund": {"error_occurred": True, "error_message": "cannot open"}}})
    (folder / "linux/bin/bench_five").write_text("#!/bin/sh\nexit 3\n")
    (folder / "linux/bin/bench_five").chmod(0o755)
    done, _ = run(folder)
    for complaint in ("NoContender: no name of the form WHAT/CONTENDER", "two/open: nothing of ours beside stdio",
                      "three: classes grows by the power 2.00 of its work", "four/bad/vorlund: cannot open",
                      "bench_five lists no rows"):
        expect(f"a complaint about: {complaint}", complaint in done.stderr)
    expect("faults make it fail", done.returncode == 1)
    expect("and the rest is there", len(row(done.stdout, "open")) == 7)


def main():
    for check in (check_table, check_short, check_again, check_faults):
        with tempfile.TemporaryDirectory() as folder:
            check(pathlib.Path(folder))
    page = (ROOT / "docs/performance.md").read_text()
    expect("docs/performance.md has the marks of the measured part, once",
           page.count("<!-- measured: written by ./run --bench -->") == 1 and page.count("<!-- measured: end -->") == 1)
    print(*complaints, sep="\n")
    print(f"{len(complaints)} faults of the benchmarks' runner")
    return 1 if complaints else 0


sys.exit(main())
