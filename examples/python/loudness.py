"""How loud a sound file is. usage: loudness.py [FILE]"""
import math
import sys

import vorlund

path = sys.argv[1] if len(sys.argv) > 1 else "strings.wav"
known, levels = vorlund.info(path), vorlund.measure(path)
print(f"{path}: {known.duration:.1f} s, {known.channels} channels at {known.rate} Hz")
print(f"{levels.integrated:.1f} LUFS, true peak {20 * math.log10(levels.true_peak):.1f} dBTP, {levels.clipped_samples} samples clipped")
