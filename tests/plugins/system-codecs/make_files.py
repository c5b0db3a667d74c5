#!/usr/bin/env python3
"""AAC and ALAC files written by FFmpeg, and their samples, for the tests of the plug-in system-codecs.
usage: tests/plugins/system-codecs/make_files.py FOLDER

FOLDER/files.txt has a line for each: "NAME FORMAT CHANNELS RATE FRAMES KIND", where FORMAT is s16, s32 or f32 and KIND
exact or lossy; the samples are in NAME.pcm. Those of ALAC are the sound that was encoded. Those of AAC are what ffmpeg
makes of the file, once they have been compared with that sound: at the same place, and with little noise.
"""
import array
import math
import pathlib
import shutil
import struct
import subprocess
import sys

folder = pathlib.Path(sys.argv[1])
shutil.rmtree(folder, ignore_errors=True)
folder.mkdir(parents=True)
rows = []


def make_sound(seconds, channels, rate):
    """Tones, as integers of 32 bits of which the upper 24 are used."""
    sound = array.array("i")
    for i in range(int(seconds * rate)):
        for c in range(channels):
            tone = 0.4 * math.sin(i * (0.03 + 0.02 * c) + 1e-6 * i * i) + 0.2 * math.sin(i * 0.31)
            sound.append(int(tone * 0x7FFFFF) << 8)
    return sound


def run(*command):
    subprocess.run(command, check=True, stdin=subprocess.DEVNULL)


def ffmpeg(*arguments):
    run("ffmpeg", "-v", "error", "-y", *arguments)


def write(name, form, channels, rate, sound, *options):
    """Encodes a sound; notes its samples."""
    path = folder / name
    bits = {"s16": "s16le", "s32": "s32le", "f32": "s32le"}[form]
    samples = array.array("h", (value >> 16 for value in sound)) if form == "s16" else sound
    raw = folder / "source"
    raw.write_bytes(samples.tobytes())
    ffmpeg("-f", bits, "-ar", str(rate), "-ac", str(channels), "-i", str(raw), *options, str(path))
    raw.unlink()
    pcm = folder / f"{name}.pcm"
    if form != "f32":
        pcm.write_bytes(samples.tobytes())
        size = 2 if form == "s16" else 4
    else:
        ffmpeg("-i", str(path), "-f", "f32le", str(pcm))
        size = 4
        check_noise(name, sound, pcm.read_bytes(), channels)
    frames = pcm.stat().st_size // size // channels
    rows.append(f"{name} {form} {channels} {rate} {frames} {'lossy' if form == 'f32' else 'exact'}")


def check_noise(name, sound, decoded, channels):
    values = struct.unpack(f"<{len(decoded) // 4}f", decoded)
    # Files with nothing but frames, and such in pieces, do not say what the encoder has put in front.
    shift = 1024 * channels if name in ("aac.aac", "aac-pieces.m4a") else 0
    pairs = list(zip((value / 0x80000000 for value in sound), values[shift:]))
    assert len(pairs) >= len(sound) - 1024 * channels, (name, len(pairs), len(sound))
    signal = sum(a * a for a, _ in pairs)
    noise = sum((a - b) ** 2 for a, b in pairs)
    assert noise * 30 < signal, (name, 10 * math.log10(signal / noise))


stereo = make_sound(1.5, 2, 44100)
mono = make_sound(1, 1, 48000)
write("alac16.m4a", "s16", 2, 44100, stereo, "-c:a", "alac")
write("alac24.m4a", "s32", 2, 44100, stereo, "-c:a", "alac", "-sample_fmt", "s32p", "-bits_per_raw_sample", "24")
write("alac-mono.m4a", "s16", 1, 48000, mono, "-c:a", "alac")
write("alac.mp4", "s16", 2, 44100, stereo, "-c:a", "alac", "-movflags", "faststart")
write("aac.m4a", "f32", 2, 44100, stereo, "-c:a", "aac", "-b:a", "192k")
write("aac-mono.m4a", "f32", 1, 48000, mono, "-c:a", "aac", "-b:a", "128k")
write("aac-pieces.m4a", "f32", 2, 44100, stereo, "-c:a", "aac", "-b:a", "192k", "-movflags", "frag_keyframe+empty_moov")
write("aac.aac", "f32", 2, 44100, stereo, "-c:a", "aac", "-b:a", "192k")
(folder / "files.txt").write_text("\n".join(rows) + "\n")
