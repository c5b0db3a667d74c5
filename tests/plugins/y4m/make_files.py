#!/usr/bin/env python3
"""Uncompressed videos, and their pixels, for the tests of the plug-in y4m.
usage: tests/plugins/y4m/make_files.py FOLDER

ffmpeg writes the videos. FOLDER/files.txt has a line for each: "NAME WIDTH HEIGHT FRAMES RATE". The pixels are in
NAME.bgra: made here, in floating point, of the planes that ffmpeg reads in the file, by the equations of BT.601 with each
chroma sample for all of its pixels. Where no chroma has to be widened, ffmpeg's own conversion must come near them.
"""
import pathlib
import shutil
import subprocess
import sys

folder = pathlib.Path(sys.argv[1])
shutil.rmtree(folder, ignore_errors=True)
folder.mkdir(parents=True)
rows = []


def ffmpeg(*arguments):
    command = ["ffmpeg", "-nostdin", "-v", "error", *map(str, arguments)]
    return subprocess.run(command, check=True, stdout=subprocess.PIPE).stdout


# Shifts of the chroma planes in x and y.
LAYOUTS = {"yuv420p": (1, 1), "yuv422p": (1, 0), "yuv444p": (0, 0), "yuv411p": (2, 0), "gray": None}


def cut(value):
    return min(max(int(value + 0.5), 0), 255) if value > 0 else 0


def convert(planes, width, height, shifts, full, alpha=False):
    offset, scale, chroma = (0, 1, 1) if full else (16, 255 / 219, 255 / 224)
    out = bytearray()
    count = width * height
    chroma_width = (width + (1 << shifts[0]) - 1) >> shifts[0] if shifts else 0
    chroma_height = (height + (1 << shifts[1]) - 1) >> shifts[1] if shifts else 0
    size = chroma_width * chroma_height
    for y in range(height):
        for x in range(width):
            luma = (planes[y * width + x] - offset) * scale
            cb = cr = 0.0
            if shifts:
                at = count + (y >> shifts[1]) * chroma_width + (x >> shifts[0])
                cb, cr = (planes[at] - 128) * chroma, (planes[at + size] - 128) * chroma
            red = luma + 1.402 * cr
            blue = luma + 1.772 * cb
            green = luma - 1.402 * 0.299 / 0.587 * cr - 1.772 * 0.114 / 0.587 * cb
            out += bytes((cut(blue), cut(green), cut(red), planes[count + 2 * size + y * width + x] if alpha else 255))
    return bytes(out)


def frame_size(width, height, shifts):
    if not shifts:
        return width * height
    return width * height + 2 * (-(-width // (1 << shifts[0]))) * (-(-height // (1 << shifts[1])))


def add(name, width, height, frames, rate, pixels):
    assert len(pixels) == width * height * 4 * frames, name
    (folder / (name + ".bgra")).write_bytes(pixels)
    rows.append(f"{name} {width} {height} {frames} {rate}")


def add_file(name, layout, width, height, rate):
    full = b"XCOLORRANGE=FULL" in (folder / name).read_bytes().split(b"\n", 1)[0]
    shifts = LAYOUTS[layout]
    raw = ffmpeg("-i", folder / name, "-f", "rawvideo", "-pix_fmt", layout, "-")
    size = frame_size(width, height, shifts)
    frames = len(raw) // size
    pixels = b"".join(convert(raw[i * size:(i + 1) * size], width, height, shifts, full) for i in range(frames))
    if layout in ("yuv444p", "gray"):
        other = ffmpeg("-i", folder / name, "-f", "rawvideo", "-pix_fmt", "bgra", "-sws_flags",
                       "accurate_rnd+full_chroma_int+full_chroma_inp+bitexact", "-")
        worst = max(abs(a - b) for a, b in zip(pixels, other))
        assert worst <= 3, (name, worst)
    add(name, width, height, frames, rate, pixels)


def write(name, layout, width, height, rate, *options, frames=5):
    # The source is not made smaller than 16 pixels.
    ffmpeg("-f", "lavfi", "-i", f"testsrc2=size=64x48:rate={rate}", "-vf", f"scale={width}:{height}", "-frames:v", frames,
           "-pix_fmt", layout, *options, folder / name)


for layout in LAYOUTS:
    for width, height in ((48, 32), (47, 31), (1, 1), (5, 3)):
        name = f"{layout}-{width}x{height}.y4m"
        write(name, layout, width, height, "25")
        add_file(name, layout, width, height, "25")
for rate, value in (("30000/1001", 30000 / 1001), ("24", 24), ("60", 60), ("1/2", 0.5)):
    name = f"rate-{rate.replace('/', '-')}.y4m"
    write(name, "yuv420p", 16, 16, rate)
    add_file(name, "yuv420p", 16, 16, value)
for siting in ("left", "center", "topleft"):
    name = f"siting-{siting}.y4m"
    write(name, "yuv420p", 16, 16, "25", "-chroma_sample_location", siting)
    add_file(name, "yuv420p", 16, 16, 25)
write("full.y4m", "yuvj444p", 40, 30, "25", "-color_range", "pc", "-strict", "-1")
assert b"XCOLORRANGE=FULL" in (folder / "full.y4m").read_bytes()[:200]
add_file("full.y4m", "yuv444p", 40, 30, 25)
write("long.y4m", "yuv420p", 16, 12, "25", frames=300)
add_file("long.y4m", "yuv420p", 16, 12, 25)

# The same video in other words: parameters behind some of the lines of frames, and in the header.
data = (folder / "long.y4m").read_bytes()
head, rest = data.split(b"\n", 1)
size = frame_size(16, 12, (1, 1)) + 6
frames = [rest[i + 6:i + size] for i in range(0, len(rest), size)]
pixels = (folder / "long.y4m.bgra").read_bytes()


def rewrite(name, header, lines):
    (folder / name).write_bytes(header + b"\n" + b"".join(lines(i) + b"\n" + f for i, f in enumerate(frames)))
    add(name, 16, 12, 300, 25, pixels)


rewrite("parameters.y4m", head, lambda i: b"FRAME Ip Xnumber=%d" % i)
rewrite("some-parameters.y4m", head, lambda i: b"FRAME" if i % 3 else b"FRAME Ixyz" + b"x" * (i % 50))
# The first and the last are short, so that the others are found out when they are read.
rewrite("middle-parameters.y4m", head, lambda i: b"FRAME Xa" if i in (100, 200) else b"FRAME" if i != 150 else b"FRAME XX")
rewrite("plain.y4m", b"YUV4MPEG2 W16 H12", lambda i: b"FRAME")
rewrite("blanks.y4m", b"YUV4MPEG2  H12   W16 F25:1 I? A0:0 Xsomething=else XA C420 ", lambda i: b"FRAME")
# A plane of alpha, which ffmpeg does not write.
alpha = bytes(range(0, 192))
opaque = ffmpeg("-f", "lavfi", "-i", "testsrc2=size=16x12:rate=25", "-frames:v", 1, "-pix_fmt", "yuv444p", "-f", "rawvideo", "-")
(folder / "alpha.y4m").write_bytes(b"YUV4MPEG2 W16 H12 F25:1 C444alpha\nFRAME\n" + opaque + alpha)
add("alpha.y4m", 16, 12, 1, 25, convert(opaque + alpha, 16, 12, (0, 0), False, alpha=True))

# What the plug-in does not take.
for layout in ("yuv420p10le", "gray10le", "yuv444p16le"):
    write(f"{layout}.y4m", layout, 16, 16, "25", "-strict", "-1")
(folder / "files.txt").write_text("".join(row + "\n" for row in rows))
