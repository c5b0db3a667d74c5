#!/usr/bin/python3
"""Draws the plots of docs/performance.md and docs/reliability.md from the tables that commands write, into docs/pictures.

    scripts/plots.py            draws them anew
    scripts/plots.py --check    fails when one does not show what its table has; needs no matplotlib

Each has the sum of what it shows, and of this script, in its description. The same figures give the same bytes with the same
matplotlib, which is that of Debian.
"""
import hashlib
import json
import math
import pathlib
import sys

import plot_tables

ROOT = pathlib.Path(__file__).resolve().parents[1]
PICTURES = ROOT / "docs/pictures"
PREFIX = "plot-"
BETTER, WORSE, OTHER, GREY = "#1f6f8b", "#c8641b", "#8a8f94", "#d0d4d8"
WIDTH = 9.2
ROW = 0.165
# A ratio beyond this, either way, would make all others hard to tell from each other.
EDGE = 100
PEER_COLOURS = (WORSE, "#5a7d2a", "#7a4f9a", OTHER)


def tables():
    """name of a plot -> (how it is drawn, its figures, its title)."""
    rows = plot_tables.measured((ROOT / "docs/performance.md").read_text())
    found = {}
    if shown := plot_tables.ratios(rows):
        found["performance"] = draw_overview, shown, "All rows with a peer, by program"
        for area, part in plot_tables.by_area(shown).items():
            found[f"performance-{area}"] = draw_ratios, part, f"Rows of: {area}"
    if curves := plot_tables.growth(rows):
        found["growth"] = draw_growth, [[*key, curve] for key, curve in curves.items()], "How time grows with the work"
    found["fuzz"] = draw_fuzz, plot_tables.fuzzed(ROOT / "fuzz/results.tsv"), "Inputs that the fuzz targets have tried"
    found["soak"] = draw_soak, plot_tables.soaked(ROOT / "tests/soak/results.tsv"), "Memory at the beginning and at the end of long runs"
    folder = ROOT / "tests/mutation"
    changes = plot_tables.mutated(folder / "results.tsv", folder / "equivalent.tsv")
    found["mutation"] = draw_mutation, changes, "What became of planted faults"
    return found


def sum_of(figures):
    script = b"".join(pathlib.Path(module).read_bytes() for module in (__file__, plot_tables.__file__))
    return hashlib.sha256(json.dumps(figures, sort_keys=True).encode() + script).hexdigest()


def new_axes(rows):
    """Axes for that many rows from top to bottom."""
    height = rows * ROW + 0.75
    figure, axes = plt.subplots(figsize=(WIDTH, height))
    figure.subplots_adjust(left=0.4, right=0.97, top=1 - 0.25 / height, bottom=0.5 / height)
    axes.set_ylim(rows - 0.3, -0.7)
    axes.tick_params(length=0)
    for side in ("top", "right", "left"):
        axes.spines[side].set_visible(False)
    return figure, axes


def new_log_axes(rows):
    figure, axes = new_axes(rows)
    axes.set_xscale("log")
    axes.grid(axis="x", color=GREY, linewidth=0.5)
    axes.set_axisbelow(True)
    return figure, axes


def place_of(ratio):
    """Where a ratio is shown: what is too far out is at the edge."""
    return min(max(ratio, 1 / EDGE), EDGE)


def mark_of(ratio, full):
    """The marker of a ratio, an arrow at the edge."""
    return "<" if ratio < 1 / EDGE else ">" if ratio > EDGE else full


def colour_of(ratio):
    return BETTER if ratio >= 1 else WORSE


def ratio_axis(axes, shown):
    """A row that we lose is as far from the line as one that we win by as much."""
    from matplotlib.ticker import FuncFormatter

    values = [1 / 3, 3, *(place_of(row.ratio) for row in shown), *(place_of(row.wine) for row in shown if row.wine)]
    # Room for the names of peers.
    axes.set_xlim(min(values) / 1.3, max(values) * 7)
    axes.axvline(1, color="black", linewidth=0.8)
    axes.xaxis.set_major_formatter(FuncFormatter(lambda value, _: f"{value:g}"))
    axes.set_xlabel("the strongest peer's time or memory by ours: ours is better to the right of 1, worse to the left")


def draw_overview(shown):
    programs = list(dict.fromkeys(row.program for row in shown))
    figure, axes = new_log_axes(len(programs))
    labels = []
    for line, program in enumerate(programs):
        part = [row.ratio for row in shown if row.program == program]
        for ratio in part:
            axes.plot([place_of(ratio)], [line], mark_of(ratio, "o"), color=colour_of(ratio), markersize=4, alpha=0.6, markeredgewidth=0)
        labels.append(f"{program}: {sum(ratio >= 1 for ratio in part)} of {len(part)} better")
    axes.set_yticks(range(len(programs)), labels)
    ratio_axis(axes, shown)
    return figure


def draw_ratios(shown):
    lines = []
    for row in shown:
        if not lines or lines[-1][0] != row.program:
            lines.append((row.program, None))
        lines.append((row.program, row))
    figure, axes = new_log_axes(len(lines))
    for line, (_, row) in enumerate(lines):
        if not row:
            continue
        ends = [1, place_of(row.ratio)]
        axes.plot(ends, [line, line], color=colour_of(row.ratio), linewidth=1.2)
        axes.plot(ends[1:], [line], mark_of(row.ratio, "o"), color=colour_of(row.ratio), markersize=3.5)
        if row.wine:
            ends.append(place_of(row.wine))
            axes.plot(ends[2:], [line], mark_of(row.wine, "D"), color=colour_of(row.wine), markersize=3.5, fillstyle="none")
        name = row.peer if mark_of(row.ratio, "o") == "o" else f"{row.peer} ({row.ratio:.3g})"
        axes.annotate(name, (max(ends), line), xytext=(6, 0), textcoords="offset points", va="center", color=OTHER, fontsize=6.5)
    axes.set_yticks(range(len(lines)), [row.what.replace(" processors:all", "") if row else program for program, row in lines],
                    fontsize=7)
    for label, (_, row) in zip(axes.get_yticklabels(), lines):
        label.set_fontweight("normal" if row else "bold")
    ratio_axis(axes, shown)
    if any(row.wine for row in shown):
        axes.set_title("full: Linux; hollow: under Wine", loc="right", fontsize=7)
    return figure


def decades(values):
    least, most = (math.log10(value) for value in (min(values), max(values)))
    return 10 ** math.floor(least + 0.01), 10 ** math.ceil(most - 0.01)


def draw_growth(curves):
    columns = 3
    rows = -(-len(curves) // columns)
    figure, grid = plt.subplots(rows, columns, figsize=(WIDTH, 2.1 * rows), squeeze=False)
    figure.subplots_adjust(left=0.07, right=0.98, top=1 - 0.35 / (2.1 * rows), bottom=0.4 / (2.1 * rows), wspace=0.28, hspace=0.55)
    for axes in grid.flat[len(curves):]:
        axes.set_visible(False)
    for axes, (what, unit, curve) in zip(grid.flat, curves):
        colours = iter(PEER_COLOURS)
        for name, points in curve.items():
            is_ours = name == plot_tables.OURS
            colour = BETTER if is_ours else next(colours, OTHER)
            axes.plot(*zip(*points), "o-", color=colour, markersize=3, linewidth=1.5 if is_ours else 1, label=name)
        # Whole decades, so that each axis has numbers.
        axes.set_xlim(decades([size for points in curve.values() for size, _ in points]))
        axes.set_ylim(decades([time for points in curve.values() for _, time in points]))
        axes.set_xscale("log")
        axes.set_yscale("log")
        axes.minorticks_off()
        axes.set_title(what, fontsize=7)
        axes.set_ylabel("seconds" if unit == "s" else unit, fontsize=6)
        axes.grid(color=GREY, linewidth=0.5)
        axes.legend(fontsize=6, frameon=False, loc="upper left")
    return figure


def draw_fuzz(targets):
    figure, axes = new_log_axes(len(targets) * 2)
    for place, (inputs32, inputs64, failed) in enumerate(targets.values()):
        for offset, count, colour in ((0.1, inputs64, BETTER), (0.9, inputs32, OTHER)):
            if count:
                axes.barh(2 * place + offset, count, height=0.7, color=colour)
        if failed:
            runs = "one run has" if failed == 1 else f"{failed} runs have"
            axes.text(max(inputs32, inputs64) * 1.3, 2 * place + 0.5, f"{runs} found a fault", va="center", color=WORSE)
    axes.set_yticks([2 * place + 0.5 for place in range(len(targets))], targets)
    axes.set_xlim(left=1000)
    axes.set_xlabel("inputs, all runs of the account together: 64 bits above, 32 bits below")
    return figure


def draw_soak(runs):
    figure, axes = new_log_axes(len(runs))
    labels = []
    for place, (target, date, seconds, first, last, outcome) in enumerate(runs):
        labels.append(f"{target}, {date}" + (f", {seconds:,} s" if seconds else ""))
        if seconds:
            axes.plot([first, last], [place, place], color=BETTER, linewidth=1.2)
            axes.plot([first], [place], "o", color=BETTER, markersize=4, fillstyle="none")
            axes.plot([last], [place], "o", color=BETTER, markersize=4)
            axes.text(last * 1.15, place, f"{first:,} to {last:,}, {outcome}", va="center", color=OTHER, fontsize=6.5)
        else:
            axes.text(1100, place, outcome, va="center", color=WORSE, fontsize=6.5)
    axes.set_yticks(range(len(runs)), labels)
    axes.set_xlim(1000, 400000)
    axes.set_xlabel("KiB of memory: hollow at the beginning, full at the end")
    return figure


def draw_mutation(areas):
    figure, axes = new_axes(len(areas))
    kinds = (("noticed by a test", BETTER), ("hung, and so noticed", "#7fb3c4"), ("nobody can notice", GREY), ("not noticed", WORSE))
    for place, counts in enumerate(areas.values()):
        begin = 0
        for (name, colour), count in zip(kinds, counts):
            axes.barh(place, count, left=begin, height=0.75, color=colour, label=name if place == 0 else None)
            begin += count
        axes.text(begin + 1, place, str(counts[3]) if counts[3] else "", va="center", color=WORSE)
    axes.set_yticks(range(len(areas)), areas)
    axes.legend(loc="lower right", fontsize=7, frameon=False)
    axes.set_xlabel("changes of the code, by folder of src/vorlund; the number behind a bar: not noticed")
    return figure


def prepare():
    """Text stays text, names of parts come from the plot, and no plot has a date."""
    global plt
    import matplotlib

    matplotlib.use("svg")
    from matplotlib import pyplot as plt

    plt.rcParams.update({"svg.hashsalt": "vorlund", "svg.fonttype": "none", "font.family": "sans-serif", "font.size": 7.5,
                         "font.sans-serif": ["DejaVu Sans", "Verdana", "sans-serif"]})


def draw(folder):
    prepare()
    found = tables()
    for name, (how, figures, title) in found.items():
        figure = how(figures)
        figure.savefig(folder / f"{PREFIX}{name}.svg", metadata={
            "Date": None, "Title": title, "Description": f"Made by scripts/plots.py; sum {sum_of(figures)}"})
        plt.close(figure)
    for path in folder.glob(f"{PREFIX}*.svg"):
        if path.stem.removeprefix(PREFIX) not in found:
            path.unlink()
    return found


def check():
    faults = []
    found = tables()
    for name, (_, figures, _) in found.items():
        path = PICTURES / f"{PREFIX}{name}.svg"
        if not path.exists():
            faults.append(f"{path.name} is not there")
        elif sum_of(figures) not in path.read_text():
            faults.append(f"{path.name} shows other figures than the table that it is made of")
    for path in PICTURES.glob(f"{PREFIX}*.svg"):
        if path.stem.removeprefix(PREFIX) not in found:
            faults.append(f"{path.name} has no table")
    for fault in faults:
        print(f"plots: {fault}; scripts/plots.py draws them anew", file=sys.stderr)
    print(f"{len(found)} plots, {len(faults)} faults")
    return 1 if faults else 0


if __name__ == "__main__":
    if sys.argv[1:] == ["--check"]:
        sys.exit(check())
    PICTURES.mkdir(exist_ok=True)
    print(f"{len(draw(PICTURES))} plots in {PICTURES.relative_to(ROOT)}")
