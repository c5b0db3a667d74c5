"""Loudness, length and faults of every file in a folder as one table, by the threads of one machine.

usage: archive_futures.py FOLDER TABLE.csv [PATTERN]

Decoding and measuring hold no lock of the interpreter, so threads are enough.
"""
import os
import sys
from concurrent.futures import ThreadPoolExecutor

from archive import find_files, measure_file, write_table


def scan(files, workers=os.cpu_count()):
    """The rows of the files, in their order."""
    with ThreadPoolExecutor(workers) as pool:
        return list(pool.map(measure_file, files))


def main(folder, target, pattern="*"):
    rows = scan(find_files(folder, pattern))
    with open(target, "w", newline="", encoding="utf-8") as file:
        print(write_table(rows, folder, file))


if __name__ == "__main__":
    main(*sys.argv[1:])
