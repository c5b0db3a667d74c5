"""Loudness, length and faults of every file in a folder as one table, by the workers of Dask.

usage: archive_dask.py FOLDER TABLE.csv [PATTERN]

The workers are two processes of this machine. Those of a cluster are one changed line away, if they see the folder
under the same name and have the package vorlund.
"""
import sys
from pathlib import Path

import archive
from archive import failed, find_files, measure_file, write_table
from distributed import Client


def measure_files(files):
    return [measure_file(file) for file in files]


def scan(client, files, at_once=25):
    """The rows of the files, in their order. What a worker has not done when it dies, another one does."""
    # Workers elsewhere have no such file.
    client.upload_file(archive.__file__)
    parts = [files[i : i + at_once] for i in range(0, len(files), at_once)]
    futures = client.map(measure_files, parts, pure=False)
    client.gather(futures, errors="skip")
    rows = []
    for part, future in zip(parts, futures):
        if future.status == "finished":
            rows += future.result()
        elif len(part) > 1:
            # One worker after the other has died of it: file by file, to find out of which.
            rows += scan(client, part, 1)
        else:
            rows.append(failed(part[0], future.exception()))
    return rows


def main(folder, target, pattern="*"):
    # A cluster instead: with Client("tcp://its-scheduler:8786") as client:
    with Client(n_workers=2, threads_per_worker=1, dashboard_address=None) as client:
        rows = scan(client, find_files(Path(folder).resolve(), pattern))
    with open(target, "w", newline="", encoding="utf-8") as file:
        print(write_table(rows, Path(folder).resolve(), file))


if __name__ == "__main__":
    main(*sys.argv[1:])
