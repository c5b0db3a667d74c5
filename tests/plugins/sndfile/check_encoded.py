#!/usr/bin/env python3
"""What programs of others read in the files that the tests of the encoders have written.
usage: tests/plugins/sndfile/check_encoded.py FOLDER

FOLDER has "CHANNELS-FORM.ENDING", "CHANNELS-FORM-FRAMES.ENDING" or "tags.ENDING", and the PCM of each with ".pcm" behind its name.
FLAC is read by flac and ffmpeg, AIFF by sox and ffmpeg: every bit, but for floats in sox. MP3 is read by ffmpeg, Vorbis by oggdec
and ffmpeg, Opus by opusdec and ffmpeg: the length, and little noise. sndfile-info finds the length of each. The tags are read by
ffprobe, those of FLAC by metaflac too.
"""
import array
import json
import math
import pathlib
import re
import subprocess
import sys

folder = pathlib.Path(sys.argv[1])
faults = []
checks = 0


def output(*command):
    done = subprocess.run(command, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE, check=False)
    if done.returncode:
        faults.append(f"{' '.join(map(str, command))}: {done.stderr.decode(errors='replace').strip()}")
    return done.stdout


def ffmpeg(path, form):
    return output("ffmpeg", "-v", "error", "-i", path, "-f", form, "-c:a", f"pcm_{form}", "-")


def check(condition, path, what):
    global checks
    checks += 1
    if not condition:
        faults.append(f"{path.name}: {what}")


def samples_of_16(data):
    samples = array.array("h")
    samples.frombytes(data[: len(data) // 2 * 2])
    return samples


def is_near(read, expected):
    one, other = array.array("f"), array.array("f")
    one.frombytes(read)
    other.frombytes(expected)
    return len(one) == len(other) and all(abs(a - b) < 1e-6 for a, b in zip(one, other))


def check_exact(path, form):
    pcm = path.with_name(path.name + ".pcm").read_bytes()
    stored = pcm
    if form == "u8":
        stored = bytes(sample ^ 128 for sample in pcm)
        pcm = bytes(byte for sample in stored for byte in (0, sample))
        form = "s16le"
    elif form == "s32le":
        # The lower byte of 32 bits is not in the file.
        stored = b"".join(pcm[i + 1 : i + 4] for i in range(0, len(pcm), 4))
    # Both find no sound in a file without frames, not even in one of sox's own.
    if not pcm and path.suffix == ".aiff":
        return
    if pcm:
        check(ffmpeg(path, form) == pcm, path, "ffmpeg reads something else")
    if path.suffix == ".aiff":
        kind = {"s16le": ("-e", "signed", "-b", "16"), "s32le": ("-e", "signed", "-b", "32"), "f32le": ("-e", "float", "-b", "32")}
        read = output("sox", path, "-t", "raw", "-L", *kind[form], "-")
        # It makes integers of floats.
        check(is_near(read, pcm) if form == "f32le" else read == pcm, path, "sox reads something else")
    else:
        read = output("flac", "-s", "-d", "-c", "--force-raw-format", "--endian=little", "--sign=signed", path)
        check(read == stored, path, "flac reads something else")


def check_length(path, frames):
    found = re.search(r"^Frames +: (\d+)$", output("sndfile-info", path).decode(errors="replace"), re.MULTILINE)
    if path.suffix == ".flac" and frames == 0:
        # In the head, 0 is an unknown length.
        return
    check(found and int(found.group(1)) == frames, path, f"sndfile-info finds {found and found.group(1)} of {frames} frames")


def check_lossy(path, channels):
    floats = array.array("f")
    floats.frombytes(path.with_name(path.name + ".pcm").read_bytes())
    expected = [value * 32767 for value in floats]
    readers = {"ffmpeg": ffmpeg(path, "s16le")}
    if path.suffix == ".ogg":
        readers["oggdec"] = output("oggdec", "-Q", "-R", "-o", "-", path)
    if path.suffix == ".opus":
        readers["opusdec"] = output("opusdec", "--quiet", "--no-dither", "--rate", "48000", path, "-")
    for reader, data in readers.items():
        read = samples_of_16(data)
        # Of Vorbis, ffmpeg reads whole blocks and leaves out the last one.
        is_vague = path.suffix == ".ogg" and reader == "ffmpeg"
        # Opus is always played at 48 kHz.
        scale = 3 if ".16k." in path.name else 1
        frames, expected_frames = len(read) // channels, len(expected) // channels * scale
        check(abs(frames - expected_frames) <= (1024 if is_vague else 0), path, f"{reader} finds {frames} frames")
        # A sound of a moment is mostly noise, and more channels come in another order.
        if channels <= 2 and expected_frames > 5000 and scale == 1:
            noise = math.sqrt(sum((a - b) ** 2 for a, b in zip(read, expected)) / max(1, len(expected)))
            check(noise < 700, path, f"{reader} reads noise of {noise:.0f}")


def check_tags(path):
    shown = json.loads(output("ffprobe", "-v", "error", "-of", "json", "-show_entries", "format_tags:stream_tags", path) or "{}")
    found = dict(shown.get("format", {}).get("tags", {}))
    for stream in shown.get("streams", []):
        found.update(stream.get("tags", {}))
    found = {name.lower(): text for name, text in found.items()}
    artist = "AC\\DC" if path.suffix == ".aiff" else "AC\\DC \u00e9\u4e2d"
    check(found.get("title") == "Found", path, f"title {found.get('title')}")
    if path.suffix == ".aiff":
        artist = found.get("artist") or found.get("author")
        check(artist == "AC\\DC", path, f"artist {artist}")
        return
    check(found.get("artist") == artist, path, f"artist {found.get('artist')}")
    check(found.get("album") == "Third", path, f"album {found.get('album')}")
    if path.suffix == ".flac":
        tags = output("metaflac", "--show-tag=ARTIST", path).decode("utf-8", errors="replace").strip()
        check(tags.lower() == f"artist={artist}".lower(), path, f"metaflac: {tags}")


files = sorted(path for path in folder.glob("*.*") if path.suffix != ".pcm")
for path in files:
    if path.stem == "tags":
        check_tags(path)
    elif path.stem == "empty":
        output("flac", "-s", "-t", path)
    elif path.name[0].isdigit():
        channels, form = path.stem.split("-")[:2]
        size = {"8": 1, "16": 2}.get(form, 4) * int(channels)
        check_length(path, path.with_name(path.name + ".pcm").stat().st_size // size)
        if form == "lossy":
            check_lossy(path, int(channels))
        else:
            check_exact(path, {"8": "u8", "16": "s16le", "24": "s32le", "32": "s32le", "float": "f32le"}[form])

for fault in faults:
    print(fault)
print(f"{len(files)} files, {checks} checks, {len(faults)} faults")
sys.exit(1 if faults or checks < 600 else 0)
