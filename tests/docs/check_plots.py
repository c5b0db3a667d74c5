#!/usr/bin/env python3
"""The plots of the pages show what their tables have, and the tables are read rightly: a small one is made here.

usage: tests/docs/check_plots.py
"""
import pathlib
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "scripts"))
import plot_tables  # noqa: E402
from bench import BEGIN, END  # noqa: E402

PAGE = f"""before
| not measured | 1 ns | 1 ns | peer 1 ns (1.00) | - | - | - |
{BEGIN}

| What | Ours | Least | Peers (their time by ours) | At best | Wine: ours | Wine: peers |
|---|---|---|---|---|---|---|
| **wav** | | | qt - | | | |
| read a\\|b 64 | 100 ns | 90.0 ns | stdio 50.0 ns (0.50); std::vector of 3 1.00 µs (10); vorlund Other 1.00 ns (0.01); plain loop 1.00 ns (0.01) | copy 1.00 ns (0.01) | 2.00 µs | stdio 6.00 µs (3.00); copy 1.00 ns (0.00) |
| alone | 1.00 s | 1.00 s | - | - | - | - |
| missing | 1.00 s | 1.00 s | stdio - | - | - | - |
| tiny | 85.0 ns | 85.0 ns | atomic 0.34 ns (0.00) | - | - | - |
| **new program** | | |  | | | |
| memory | 7.869e+05 KiB | 48 KiB | peer 9.6e+05 KiB (1.22) | - | - | - |
| growth, texts 100 | 1.00 µs | 1.00 µs | peer 2.00 µs (2.00) | - | - | - |
| growth, texts 10000 | 1.00 ms | 1.00 ms | peer 0.50 ms (0.50) | - | - | - |
| growth by a square rule, sorts 5 | 1.00 ms | 1.00 ms | - | - | - | - |

{END}
"""
complaints = []


def expect(what, is_so):
    if not is_so:
        complaints.append(what)


def check_measured():
    rows = plot_tables.measured(PAGE)
    shown = plot_tables.ratios(rows)
    expect("rows with a peer, and the peer that does best", [row[:4] for row in shown[:1] + shown[2:]] == [
        ("wav", "read a|b 64", "stdio", 0.5), ("new program", "memory", "peer", 1.22)])
    expect("the same peer under Wine", shown[0].wine == 3 and shown[2].wine is None)
    expect("more digits of a small ratio", shown[1].peer == "atomic" and abs(shown[1].ratio - 0.004) < 1e-6)
    areas = plot_tables.by_area(shown)
    expect("areas, and what is new in the last one", {name: len(part) for name, part in areas.items()} == {"files": 2, "others": 1})
    expect("curves of more than one size", plot_tables.growth(rows) == {
        ("texts", "s"): {"vorlund": [(100, 1e-6), (10000, 1e-3)], "peer": [(100, 2e-6), (10000, 5e-4)]}})
    expect("no rows before anything was measured", plot_tables.measured(f"{BEGIN}\n\n{END}") == [])


def check_accounts(folder):
    def write(name, *lines):
        (folder / name).write_text("\n".join(lines) + "\n")
        return folder / name

    fuzzed = plot_tables.fuzzed(write("fuzz", "target\tbits\tinputs\toutcome", "b\t32\t5\tpassed", "a\t64\t7\tfailed", "b\t32\t6\tended"))
    expect("inputs of both word sizes, and faults", fuzzed == {"a": [0, 7, 1], "b": [11, 0, 0]})
    soaked = plot_tables.soaked(write(
        "soak", "head", "linux\ta1\tday\tdecodes 9\tseconds 60\tKiB 10 to 12\tthreads 1 to 1\tflat", "win32\ta1\tday\tnot ended: why"))
    expect("runs with and without an end", soaked == [
        ("linux", "day", 60, 10, 12, "flat"), ("win32", "day", None, None, None, "not ended")])
    results = write("changes", "key\tfile\toutcome", "1\tsrc/vorlund/api/A.cpp\tcaught", "2\tsrc/vorlund/api/x/A.cpp\tsurvived",
                    "3\tsrc/vorlund/api/x/A.cpp\tsurvived", "4\tsrc/vorlund/api/A.cpp\ttimeout", "5\tsrc/vorlund/api/A.cpp\tuncompilable")
    mutated = plot_tables.mutated(results, write("equal", "key\tfile", "3\tA"))
    expect("what became of changes", mutated == {"api": [1, 1, 0, 0], "api/x": [0, 0, 1, 1]})


check_measured()
with tempfile.TemporaryDirectory() as name:
    check_accounts(pathlib.Path(name))
done = subprocess.run([sys.executable, ROOT / "scripts/plots.py", "--check"], check=False)
for complaint in complaints:
    print(f"FAULT: {complaint}")
sys.exit(1 if complaints or done.returncode else 0)
