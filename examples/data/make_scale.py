#!/usr/bin/env python3
"""Makes scale.vsa anew: a scale of eight notes, 8000 Hz, 8 bit, mono. The format: plugins/sample/README.md."""
import math
import pathlib
import struct

RATE = 8000
NOTE_FRAMES = RATE // 5
STEPS = (0, 2, 4, 5, 7, 9, 11, 12)

samples = bytearray()
for step in STEPS:
    frequency = 261.63 * 2 ** (step / 12)
    for frame in range(NOTE_FRAMES):
        fade = 1 - frame / NOTE_FRAMES
        samples.append(128 + round(100 * fade * math.sin(2 * math.pi * frequency * frame / RATE)))

header = struct.pack("<4sBBHII", b"VSA1", 1, 8, 0, RATE, len(samples))
pathlib.Path(__file__).with_name("scale.vsa").write_bytes(header + samples)
