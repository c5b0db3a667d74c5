#!/usr/bin/env python3
"""Floats around full scale, and what sox makes of them, for the tests of the conversion at true scale.
usage: tests/data/filters/sox/make_files.py FOLDER

FOLDER/floats.raw holds floats of 32 bits, the low byte first; s16.raw, s24.raw and s32.raw what sox makes of them
without dither. Infinities, and what is not a number, are left out: sox has no rule for them.
"""
import pathlib
import random
import shutil
import struct
import subprocess
import sys

folder = pathlib.Path(sys.argv[1])
shutil.rmtree(folder, ignore_errors=True)
folder.mkdir(parents=True)

noise = random.Random(1)
floats = [0.0, 1.0, -1.0, 1.5, -1.5, 100.0, -100.0, 1e30, -1e30, 1e-30, -1e-30]
for bits in (8, 16, 24, 32):
    step = 2.0 ** (1 - bits)
    for n in range(-40, 41):
        floats += [n * step / 4, 1 + n * step / 4, -1 + n * step / 4]
floats += [noise.uniform(-1.2, 1.2) for _ in range(100000)]
floats += [noise.uniform(-1, 1) * 2.0 ** -noise.randrange(32) for _ in range(100000)]

raw = folder / "floats.raw"
raw.write_bytes(struct.pack(f"<{len(floats)}f", *floats))
form = ["-t", "raw", "-r", "48000", "-c", "1", "-L"]
for bits in (16, 24, 32):
    result = folder / f"s{bits}.raw"
    subprocess.run(
        ["sox", "-V1", "-D", *form, "-e", "float", "-b", "32", raw, *form, "-e", "signed", "-b", str(bits), result],
        check=True,
    )
    if result.stat().st_size != len(floats) * bits // 8:
        sys.exit(f"sox has written {result.stat().st_size} bytes")
