"""What the two scans of an archive share: which files there are, what is known of each, and the table of it."""
import csv
import math
from pathlib import Path

import vorlund

COLUMNS = ("file", "seconds", "rate", "channels", "lufs", "true_peak_db", "faults")


def find_files(folder, pattern="*"):
    """All files in a folder and those below it, in the order of their names."""
    return sorted(str(path) for path in Path(folder).rglob(pattern) if path.is_file())


def measure_file(path):
    """The row of a file. What fails becomes a row too, with the reason as its fault."""
    try:
        known, levels = vorlund.info(path), vorlund.measure(path)
    except (vorlund.Error, OSError) as error:
        return failed(path, error)
    faults = []
    if levels.frames == 0:
        faults.append("no sound in it")
    elif levels.peak == 0:
        faults.append("nothing but silence")
    if known.frames is not None and levels.frames < known.frames:
        faults.append(f"{known.frames - levels.frames} frames missing")
    if levels.clipped_samples:
        faults.append(f"{levels.clipped_samples} samples clipped")
    if levels.not_finite:
        faults.append(f"{levels.not_finite} samples are no numbers")
    seconds = levels.frames / known.rate if known.rate else 0.0
    peak = 20 * math.log10(levels.true_peak) if levels.true_peak > 0 else -math.inf
    return (path, f"{seconds:.3f}", known.rate, known.channels, f"{levels.integrated:.2f}", f"{peak:.2f}", ", ".join(faults))


def failed(path, reason):
    """The row of a file that could not be measured."""
    return (path, "", "", "", "", "", str(reason))


def write_table(rows, folder, target):
    """The rows as a table with commas, files as they are called within the folder, and a line about all of them."""
    table = csv.writer(target, lineterminator="\n")
    table.writerow(COLUMNS)
    for path, *values in rows:
        table.writerow([Path(path).relative_to(folder).as_posix(), *values])
    measured = sum(row[1] != "" for row in rows)
    return f"{len(rows)} files, {measured} measured, {sum(row[-1] != '' for row in rows)} with faults"
