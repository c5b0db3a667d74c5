"""The figures that scripts/plots.py draws, read from the page and the accounts that commands write."""
import collections
import csv
import re

from bench import BEGIN, END, OURS

# Which programs of bench one picture shows. What is not named here comes into the last one.
AREAS = {
    "samples": ("pcm_conversions", "pcm_mixes"),
    "files": ("wav", "wav_writer", "sndfile", "folder", "resource", "serial", "program", "python", "resample"),
    "core": ("object", "events", "locks", "plugins", "footprint", "audio"),
    "others": (),
}
FIGURE = re.compile(r"(?P<figure>[\d.]+(?:e[+-]\d+)?) (?P<unit>\S.*?)")
PEER = re.compile(rf"(?P<name>.+?) {FIGURE.pattern} \((?P<ratio>[\d.]+)\)")
SECONDS = {"ps": 1e-12, "ns": 1e-9, "µs": 1e-6, "ms": 1e-3, "s": 1}
GROWTH = re.compile(r"growth(?: by a square rule)?, (?P<what>.*) (?P<size>[\d.]+)")
# Our own other ways, and the same rules as a loop, are beside us but not peers.
NO_PEER = re.compile(rf"{OURS}\b|plain loop$")

Row = collections.namedtuple("Row", "program what ours peers wine")
Ratio = collections.namedtuple("Ratio", "program what peer ratio wine")


def value(text):
    """(number, unit) of a figure, times in seconds; None for "-"."""
    found = FIGURE.fullmatch(text)
    if not found:
        return None
    unit = found["unit"]
    return float(found["figure"]) * SECONDS.get(unit, 1), "s" if unit in SECONDS else unit


def peers(cell, ours):
    """name -> (its figure, that by ours) of a cell, whose parts without a ratio are not there."""
    found = {}
    for part in cell.split("; "):
        if match := PEER.fullmatch(part.strip()):
            figure = value(f"{match['figure']} {match['unit']}")
            ratio = float(match["ratio"])
            if ratio < 0.1 and ours and figure[1] == ours[1]:
                # Of a small one the page has no or one digit.
                ratio = figure[0] / ours[0]
            if ratio:
                found[match["name"]] = figure, ratio
    return found


def measured(page):
    """The rows of the table that ./run --bench writes; none before it has run."""
    rows, program = [], None
    begin, end = page.index(BEGIN), page.index(END)
    for line in page[begin:end].splitlines():
        cells = [cell.strip() for cell in re.split(r"(?<!\\)\|", line)[1:-1]]
        if len(cells) != 7 or cells[0] in ("What", "---"):
            continue
        if heading := re.fullmatch(r"\*\*(.+)\*\*", cells[0]):
            program = heading[1]
            continue
        ours, wine = value(cells[1]), value(cells[5])
        rows.append(Row(program, cells[0].replace("\\|", "|"), ours, peers(cells[3], ours), peers(cells[6], wine)))
    return rows


def strongest(found):
    """(name, ratio) of the peer that does best beside us; None without one."""
    real = [(ratio, name) for name, (_, ratio) in found.items() if not NO_PEER.match(name)]
    return min(real)[::-1] if real else None


def ratios(rows):
    """A row for each that has a peer, but those of growth, which are curves."""
    shown = []
    for row in rows:
        best = strongest(row.peers)
        if best and not GROWTH.fullmatch(row.what):
            wine = strongest({name: what for name, what in row.wine.items() if name in row.peers})
            shown.append(Ratio(row.program, row.what, *best, wine[1] if wine else None))
    return shown


def by_area(shown):
    areas = {name: [] for name in AREAS}
    for ratio in shown:
        areas[next((name for name, programs in AREAS.items() if ratio.program in programs), "others")].append(ratio)
    return {name: part for name, part in areas.items() if part}


def growth(rows):
    """(what, unit) -> who -> [(size, figure)]."""
    curves = {}
    for row in rows:
        found = GROWTH.fullmatch(row.what)
        if found and row.ours:
            curve = curves.setdefault((found["what"], row.ours[1]), {})
            for name, figure in [(OURS, row.ours[0]), *((name, what[0][0]) for name, what in row.peers.items())]:
                curve.setdefault(name, []).append((float(found["size"]), figure))
    return {key: curve for key, curve in curves.items() if len(curve[OURS]) > 1}


def table(path):
    with path.open() as file:
        return list(csv.DictReader(file, delimiter="\t", quoting=csv.QUOTE_NONE))


def fuzzed(path):
    """target -> [inputs in 32 bits, inputs in 64 bits, runs that found a fault]."""
    sums = collections.defaultdict(lambda: [0, 0, 0])
    for row in table(path):
        sums[row["target"]][row["bits"] == "64"] += int(row["inputs"])
        sums[row["target"]][2] += row["outcome"] == "failed"
    return dict(sorted(sums.items()))


def soaked(path):
    """(target, seconds, KiB at first, KiB at last) of each run; a run without an end has its words for KiB."""
    runs = []
    for line in path.read_text().splitlines()[1:]:
        target, _, date, *words = line.split("\t")
        counts = dict(word.split(" ", 1) for word in words if " " in word)
        if "KiB" in counts:
            first, last = counts["KiB"].split(" to ")
            runs.append((target, date, int(counts["seconds"]), int(first), int(last), words[-1]))
        else:
            runs.append((target, date, None, None, None, words[0].split(":")[0]))
    return runs


def mutated(results, equivalent):
    """area -> [noticed, hung, equivalent, not noticed]; what did not compile is no change."""
    reasons = {row["key"] for row in table(equivalent)}
    sums = collections.defaultdict(lambda: [0, 0, 0, 0])
    for row in table(results):
        kinds = {"caught": 0, "timeout": 1, "same": 2, "survived": 2 if row["key"] in reasons else 3}
        if row["outcome"] in kinds:
            folder = row["file"].split("/")
            sums["/".join(folder[2:4]) if len(folder) > 4 else folder[2]][kinds[row["outcome"]]] += 1
    return dict(sorted(sums.items()))
