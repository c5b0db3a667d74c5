#!/usr/bin/env python3
"""The package for Python beside other readers of sound for Python. It speaks the protocol of Google Benchmark that
scripts/bench.py needs, and its rows are named as all others are (README.md). All rows run in one process, mixed at random.

PYTHONPATH names the folder in which the package is installed.
"""
import importlib
import io
import json
import os
import random
import re
import sys
import tempfile
import threading
import time
import wave

import numpy as np
import vorlund

RATE = 44100
IS_SHORT = "VORLUND_BENCH_SHORT" in os.environ
SECONDS, LONG_SECONDS = (1, 6) if IS_SHORT else (10, 60)
TYPES = {"int16": np.int16, "float32": np.float32, "float64": np.float64}


def peer(name):
    """A module to compare with, or None."""
    try:
        return importlib.import_module(name)
    except ImportError:
        return None


soundfile, scipy = peer("soundfile"), peer("scipy.io.wavfile")


def make_sound(seconds):
    """Two channels of tones with some noise."""
    time_of = np.arange(seconds * RATE) / RATE
    tones = np.stack([0.5 * np.sin(2 * np.pi * 440 * time_of), 0.4 * np.sin(2 * np.pi * 660 * time_of)], axis=1)
    noise = np.random.default_rng(1).standard_normal(tones.shape) * 0.01
    return np.round((tones + noise) * 32767).astype(np.int16)


def scaled(samples, kind):
    """Integers as the samples of another type, full scale at 1."""
    return samples if kind == "int16" else samples * TYPES[kind](2.0**-15)


def read_wave(source, kind):
    with wave.open(source) as file:
        samples = np.frombuffer(file.readframes(file.getnframes()), np.int16)
        return scaled(samples.reshape(-1, file.getnchannels()), kind)


def touched(shape, kind):
    array = np.empty(shape, kind)
    array.fill(0)
    return array


def reads(sound, path, data, kind):
    """(contender, by path, by bytes) for a whole WAV file."""
    yield "vorlund", lambda: vorlund.read(path, dtype=kind), lambda: vorlund.read(data, dtype=kind)
    if kind == "int16":
        yield "numpy.fromfile", lambda: np.fromfile(path, np.int16, offset=44).reshape(-1, 2), None
    if soundfile:
        yield "soundfile", lambda: soundfile.read(path, dtype=kind), lambda: soundfile.read(io.BytesIO(data), dtype=kind)
    if scipy:
        yield "scipy", lambda: scaled(scipy.read(path)[1], kind), lambda: scaled(scipy.read(io.BytesIO(data))[1], kind)
    yield "wave", lambda: read_wave(path, kind), lambda: read_wave(io.BytesIO(data), kind)
    yield "limit touched array", lambda: touched(sound.shape, kind), lambda: touched(sound.shape, kind)


def by_threads(count, work):
    """The work on that many threads at a time, once for each."""

    def run():
        threads = [threading.Thread(target=work) for _ in range(count)]
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join()

    return run


def make_rows(folder):
    """(name, work, how many results one call has) in the order of the table."""
    sound, long_sound = make_sound(SECONDS), make_sound(LONG_SECONDS)
    path, long_path, flac = (f"{folder}/{name}" for name in ("sound.wav", "long.wav", "sound.flac"))
    vorlund.write(path, sound, RATE)
    vorlund.write(long_path, long_sound, RATE)
    with open(path, "rb") as file:
        data = file.read()
    rows = []
    for kind in TYPES:
        contenders = list(reads(sound, path, data, kind))
        for place, way in (("path", 1), ("bytes", 2)):
            rows += [(f"WAV of 10 s/{place}/{kind}/{entry[0]}", entry[way], 1) for entry in contenders if entry[way]]
    start, frames = LONG_SECONDS * RATE // 3, LONG_SECONDS * RATE // 12
    part = "5 s of a WAV of 60 s/path/float32/"
    rows.append((part + "vorlund", lambda: vorlund.read(long_path, start=start, frames=frames), 1))
    rows.append((part + "vorlund whole", lambda: vorlund.read(long_path), 1))
    if soundfile:
        rows.append((part + "soundfile", lambda: soundfile.read(long_path, frames, start, dtype="float32"), 1))
    threaded = {"WAV of 60 s": lambda: vorlund.read(long_path)}
    try:
        vorlund.write(flac, sound, RATE)
    except vorlund.PluginMissingError:
        pass
    else:
        threaded["FLAC of 10 s"] = lambda: vorlund.read(flac)
        for kind in ("int16", "float32"):
            row = f"FLAC of 10 s/path/{kind}/"
            rows.append((row + "vorlund", lambda kind=kind: vorlund.read(flac, dtype=kind), 1))
            if soundfile:
                rows.append((row + "soundfile", lambda kind=kind: soundfile.read(flac, dtype=kind), 1))
    for what, work in threaded.items():
        row = f"two_processors/a file of many/{what}/"
        rows.append((row + "vorlund/real_time", by_threads(2, lambda work=work: [work() for _ in range(10)]), 20))
        rows.append((row + "vorlund one thread/real_time", by_threads(1, lambda work=work: [work() for _ in range(20)]), 20))
    return rows


def measure(work, results, least):
    """One repetition of a row, as nanoseconds of a result."""
    work()
    count, rounds = 0, 1
    real, processor = time.perf_counter(), time.process_time()
    while True:
        for _ in range(rounds):
            work()
        count += rounds
        elapsed = time.perf_counter() - real
        if elapsed >= least:
            break
        rounds = count
    spent = time.process_time() - processor
    return count, elapsed * 1e9 / (count * results), spent * 1e9 / (count * results)


def main():
    options = dict(word[2:].split("=", 1) for word in sys.argv[1:] if word.startswith("--") and "=" in word)
    with tempfile.TemporaryDirectory() as folder:
        rows = make_rows(folder)
        if options.get("benchmark_list_tests") == "true":
            print("\n".join(name for name, _, _ in rows))
            return 0
        pattern = re.compile(options.get("benchmark_filter", ""))
        chosen = [row for row in rows if pattern.search(row[0])]
        runs = []
        for repetition in range(int(options.get("benchmark_repetitions", "1"))):
            for name, work, results in random.sample(chosen, len(chosen)):
                count, real, processor = measure(work, results, float(options.get("benchmark_min_time", "0.5").rstrip("s")))
                runs.append({"name": name, "run_type": "iteration", "repetition_index": repetition, "iterations": count,
                             "real_time": real, "cpu_time": processor, "time_unit": "ns"})
        print(json.dumps({"context": {"executable": sys.argv[0]}, "benchmarks": runs}, indent=1))
    return 0


if __name__ == "__main__":
    sys.exit(main())
