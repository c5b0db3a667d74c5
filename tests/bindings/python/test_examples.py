"""The examples in Python: what they print, and that the two scans of an archive give the same table, whatever dies."""
import csv
import os
import signal
import subprocess
import sys
import wave

import numpy as np
import pytest
from conftest import ROOT
from dask.config import set as dask_settings
from distributed import Client, as_completed

EXAMPLES = ROOT / "examples/python"
FILES = 2000
RATE = 8000
LIMIT = 100


def run(*words):
    environment = {**os.environ, "PYTHONDONTWRITEBYTECODE": "1"}
    done = subprocess.run([sys.executable, *map(str, words)], cwd=ROOT / "examples/data", env=environment, capture_output=True,
                          text=True, timeout=LIMIT, check=False)
    assert done.returncode == 0, done.stderr
    return done.stdout


@pytest.fixture(scope="module")
def archive(tmp_path_factory):
    """A folder with folders of files, some of which are no sound, and what is wrong with these."""
    folder = tmp_path_factory.mktemp("archive")
    time = np.arange(RATE) / RATE
    tone = np.sin(2 * np.pi * 440 * time)
    for number in range(FILES):
        path = folder / f"{number % 10}" / f"{number:04}.wav"
        path.parent.mkdir(exist_ok=True)
        with wave.open(str(path), "wb") as file:
            file.setparams((1, 2, RATE, 0, "NONE", ""))
            file.writeframes(np.round(tone * (number + 1) / FILES * 32000).astype(np.int16).tobytes())
    bad = {"0/0010.wav": b"", "1/0011.wav": b"no sound " * 100, "2/0012.wav": (folder / "2/0012.wav").read_bytes()[:30]}
    for name, data in bad.items():
        (folder / name).write_bytes(data)
    clipped = np.clip(tone * 2, -1, 1) * 32767
    with wave.open(str(folder / "3/0013.wav"), "wb") as file:
        file.setparams((1, 2, RATE, 0, "NONE", ""))
        file.writeframes(clipped.astype(np.int16).tobytes())
    return folder, bad


@pytest.fixture
def scans(monkeypatch):
    """The modules of the two scans."""
    monkeypatch.syspath_prepend(str(EXAMPLES))
    import archive_dask
    import archive_futures

    return archive_futures, archive_dask


def test_the_readme_has_what_the_examples_print(tmp_path):
    readme = (EXAMPLES / "README.md").read_text()
    printed = run(EXAMPLES / "loudness.py")
    assert printed == (EXAMPLES / "loudness.expected.txt").read_text()
    assert printed in readme
    for name in ("archive_futures", "archive_dask"):
        table = tmp_path / f"{name}.csv"
        assert run(EXAMPLES / f"{name}.py", ".", table) in readme
        assert table.read_text() == (EXAMPLES / "archive.expected.csv").read_text()


def test_the_loudness_takes_ten_lines():
    code = [line for line in (EXAMPLES / "loudness.py").read_text().splitlines() if line and not line.startswith('"""')]
    assert len(code) <= 10


def test_a_failing_file_is_a_row(archive, scans):
    folder, bad = archive
    files = scans[0].find_files(folder)
    rows = scans[0].scan(files)
    assert [row[0] for row in rows] == files
    by_name = {os.path.relpath(row[0], folder): row for row in rows}
    for name in bad:
        assert by_name[name][1:-1] == ("",) * 5
        assert by_name[name][-1]
    assert "samples clipped" in by_name["3/0013.wav"][-1]
    assert by_name["4/0014.wav"][1:4] == ("1.000", RATE, 1)
    assert sum(row[-1] != "" for row in rows) == len(bad) + 1
    # Twice the amplitude is 6 dB more.
    louder, softer = (float(by_name[f"9/{number:04}.wav"][4]) for number in (1999, 999))
    assert louder - softer == pytest.approx(6.02, abs=0.02)
    assert scans[0].scan([str(folder / "missing.wav")])[0][-1] != ""


def test_the_pattern_chooses_files(archive, scans, tmp_path):
    folder, _ = archive
    scans[0].main(folder, tmp_path / "table.csv", "001?.wav")
    with open(tmp_path / "table.csv", newline="", encoding="utf-8") as file:
        names = [row["file"] for row in csv.DictReader(file)]
    assert names == [f"{number}/{number + 10:04}.wav" for number in range(10)]


class Killing:
    """A client that kills a worker when some of the work is done."""

    def __init__(self, client):
        self.client = client
        self.killed = None

    def upload_file(self, path):
        self.client.upload_file(path)

    def map(self, *arguments, **options):
        return self.client.map(*arguments, **options)

    def gather(self, futures, **options):
        for done, _ in enumerate(as_completed(futures), 1):
            if done == 20:
                break
        self.killed = min(self.client.run(os.getpid).values())
        os.kill(self.killed, signal.SIGKILL)
        unfinished = sum(not future.done() for future in futures)
        assert unfinished > 0
        return self.client.gather(futures, **options)


def test_a_killed_worker_loses_nothing(archive, scans):
    folder, _ = archive
    futures, dask = scans
    files = futures.find_files(folder)
    expected = futures.scan(files)
    with Client(n_workers=2, threads_per_worker=1, dashboard_address=None) as client:
        killing = Killing(client)
        assert dask.scan(killing, files) == expected
        client.wait_for_workers(2, timeout=LIMIT)
        workers = set(client.run(os.getpid).values())
        assert len(workers) == 2 and killing.killed not in workers


def test_a_file_that_kills_every_worker_is_a_row(scans, strings, monkeypatch):
    _, dask = scans
    measure = dask.measure_file

    def measure_or_die(path):
        return os.kill(os.getpid(), signal.SIGKILL) if path == "deadly.wav" else measure(path)

    monkeypatch.setattr(dask, "measure_file", measure_or_die)
    with dask_settings({"distributed.scheduler.allowed-failures": 1}), Client(n_workers=2, threads_per_worker=1, dashboard_address=None) as client:
        rows = dask.scan(client, [str(strings), "deadly.wav", str(strings)])
    assert [row[0] for row in rows] == [str(strings), "deadly.wav", str(strings)]
    assert rows[0] == rows[2] and rows[0][-1] == ""
    assert rows[1][1] == "" and rows[1][-1]
