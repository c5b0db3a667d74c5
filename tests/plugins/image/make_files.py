#!/usr/bin/env python3
"""Pictures of many kinds, and what other programs read in them, for the tests of the plug-in image.
usage: tests/plugins/image/make_files.py FOLDER

The pictures are those of the tests of Go (Debian's golang-1.19-src, PngSuite among them), and others that ImageMagick,
ffmpeg and cjpeg write. FOLDER/files.txt has a line for each: "NAME WIDTH HEIGHT TOLERANCE". The pixels are in NAME.bgra:
of PNG those that the decoder of ffmpeg delivers, of JPEG those of djpeg, which is the same library; ffmpeg's own decoder
must come near them. Rules of ours are applied to them here: 16 bits become 8 by rounding to nearest, grey is three equal
colours, a picture without alpha has 255. FOLDER/hostile.txt names files that nobody should take for what they say.
"""
import pathlib
import re
import shutil
import struct
import subprocess
import sys
import zlib

GO = next(iter(sorted(pathlib.Path("/usr/share").glob("go-1.*/src/image"))), None)
if GO is None:
    sys.exit("no pictures of Go's tests (Debian: golang-1.19-src)")
folder = pathlib.Path(sys.argv[1])
shutil.rmtree(folder, ignore_errors=True)
folder.mkdir(parents=True)
rows = []


def run(*command, data=None):
    return subprocess.run([str(c) for c in command], input=data, check=True, stdout=subprocess.PIPE).stdout


def ffmpeg(*arguments):
    return run("ffmpeg", "-nostdin", "-v", "error", *arguments)


def to8(high, low):
    return (((high << 8 | low) * 255) + 32767) // 65535


def scaled(raw):
    """Big-endian numbers of 16 bits as bytes."""
    return bytes(to8(raw[i], raw[i + 1]) for i in range(0, len(raw), 2))


def from_grey(raw):
    return b"".join(bytes((g, g, g, 255)) for g in raw)


def from_grey_alpha(raw):
    return b"".join(bytes((raw[i],) * 3 + (raw[i + 1],)) for i in range(0, len(raw), 2))


def from_rgb(raw):
    out = bytearray(b"\xff") * (len(raw) // 3 * 4)
    out[0::4], out[1::4], out[2::4] = raw[2::3], raw[1::3], raw[0::3]
    return bytes(out)


def from_rgba(raw):
    out = bytearray(len(raw))
    out[0::4], out[1::4], out[2::4], out[3::4] = raw[2::4], raw[1::4], raw[0::4], raw[3::4]
    return bytes(out)


# What the decoder of ffmpeg delivers, in the layout that it has decoded to: its conversions are other ones than ours.
LAYOUTS = {
    "gray": from_grey,
    "ya8": from_grey_alpha,
    "rgb24": from_rgb,
    "rgba": from_rgba,
    "gray16be": lambda raw: from_grey(scaled(raw)),
    "ya16be": lambda raw: from_grey_alpha(scaled(raw)),
    "rgb48be": lambda raw: from_rgb(scaled(raw)),
    "rgba64be": lambda raw: from_rgba(scaled(raw)),
}


def layout_of(data):
    """To what the decoder of ffmpeg decodes a PNG file, by the file's head."""
    depth, colours = data[24], data[25]
    transparent = b"tRNS" in data
    if colours == 3:
        return "bgra"
    if colours == 0:
        # Few bits become eight there, and their transparent grey is not seen.
        return {16: "ya16be", 8: "ya8"}.get(depth, "gray") if transparent else "gray16be" if depth == 16 else "gray"
    if colours == 4:
        return "ya16be" if depth == 16 else "ya8"
    alpha = "a" if colours == 6 or transparent else ""
    return f"rgb{alpha}64be" if alpha and depth == 16 else "rgb48be" if depth == 16 else "rgba" if alpha else "rgb24"


def add(name, width, height, pixels, tolerance=0):
    assert len(pixels) == width * height * 4, name
    (folder / (name + ".bgra")).write_bytes(pixels)
    rows.append(f"{name} {width} {height} {tolerance}")


def add_pngs(names):
    """All in few runs of ffmpeg, whose start takes longer than a small picture."""
    for start in range(0, len(names), 25):
        some = names[start:start + 25]
        layouts = {name: layout_of((folder / name).read_bytes()) for name in some}
        inputs = [word for name in some for word in ("-i", folder / name)]
        outputs = [word for i, name in enumerate(some) for word in
                   ("-map", i, "-f", "rawvideo", "-pix_fmt", layouts[name], folder / (name + ".raw"))]
        ffmpeg("-y", *inputs, *outputs)
        for name in some:
            add_png(name, layouts[name])


def add_png(name, layout):
    data = (folder / name).read_bytes()
    raw = (folder / (name + ".raw")).read_bytes()
    (folder / (name + ".raw")).unlink()
    width, height = struct.unpack(">II", data[16:24])
    pixels = raw if layout == "bgra" else LAYOUTS[layout](raw)
    if data[25] == 0 and data[24] < 8 and b"tRNS" in data:
        alpha = run("convert", folder / name, "-alpha", "extract", "-depth", "8", "gray:-")
        pixels = b"".join(pixels[i * 4:i * 4 + 3] + alpha[i:i + 1] for i in range(len(alpha)))
    add(name, width, height, pixels)


def read_pixmap(data):
    """A portable greymap or pixmap of 8 bits."""
    kind, width, height, end = re.match(rb"(P[56])\s+(\d+)\s+(\d+)\s+255\s", data).groups() + (None,)
    head = re.match(rb"P[56]\s+\d+\s+\d+\s+255\s", data).end()
    raw = data[head:]
    return int(width), int(height), from_grey(raw) if kind == b"P5" else from_rgb(raw)


def distance(one, other):
    return max(abs(a - b) for a, b in zip(one, other))


def add_jpeg(name, near=None):
    width, height, pixels = read_pixmap(run("djpeg", "-pnm", folder / name))
    if near is not None:
        grey = ffmpeg("-i", folder / name, "-f", "rawvideo", "-pix_fmt", "bgra", "-sws_flags", "accurate_rnd+full_chroma_int", "-")
        assert distance(pixels, grey) <= near, (name, distance(pixels, grey))
    add(name, width, height, pixels)


def copy(path, name=None):
    shutil.copyfile(path, folder / (name or path.name))
    return name or path.name


# Pictures of others.
others = sorted((GO / "png/testdata/pngsuite").glob("*.png")) + sorted((GO / "png/testdata").glob("[bg]*.png"))
pngs = [copy(path) for path in [*others, GO / "testdata/video-001.png"]]
for path in sorted((GO / "testdata").glob("*.jpeg")):
    if "truncated" not in path.name and "cmyk" not in path.name:
        add_jpeg(copy(path))

# PNG by ImageMagick: every type of colour with every depth, plain and interlaced, with and without alpha.
source = folder / "video-001.png"
for colours, depths in ((0, (1, 2, 4, 8, 16)), (2, (8, 16)), (3, (1, 2, 4, 8)), (4, (8, 16)), (6, (8, 16))):
    for depth in depths:
        for interlace in ("none", "PNG"):
            name = f"im-{colours}-{depth}-{interlace.lower()}.png"
            options = ["-resize", "67x41!"]
            if depth == 16:
                # Numbers that fill 16 bits.
                options += ["-gamma", "1.3"]
            if colours in (0, 4):
                options += ["-colorspace", "Gray"]
            if colours == 3:
                options += ["-colors", str(2 ** depth)]
            if colours in (4, 6):
                options += ["-alpha", "set", "-channel", "A", "-fx", "(i+j)/(w+h)"]
            run("convert", source, *options, "-strip", "-interlace", interlace, "-define", f"png:color-type={colours}",
                "-define", f"png:bit-depth={depth}", folder / name)
            head = (folder / name).read_bytes()[24:29]
            assert head == bytes((depth, colours, 0, 0, interlace == "PNG")), (name, head)
            pngs.append(name)
# Small and interlaced: some of the passes are empty.
for width, height in [*((i, i) for i in range(1, 10)), (1, 7), (9, 1), (2, 4), (5, 3)]:
    name = f"im-{width}x{height}.png"
    run("convert", source, "-resize", f"{width}x{height}!", "-strip", "-interlace", "PNG", "-define", "png:color-type=2",
        folder / name)
    pngs.append(name)
# By ffmpeg, with each of its filters.
outputs = []
for layout in ("gray", "gray16be", "ya8", "ya16be", "rgb24", "rgba", "rgb48be", "rgba64be", "pal8", "monob"):
    for predictor in ("none", "sub", "up", "avg", "paeth", "mixed") if layout in ("rgb24", "gray16be", "ya8") else ("mixed",):
        name = f"ff-{layout}-{predictor}.png"
        outputs += ["-map", 0, "-frames:v", 1, "-update", 1, "-pix_fmt", layout, "-pred", predictor, folder / name]
        pngs.append(name)
ffmpeg("-i", source, *outputs)
add_pngs(pngs)

# JPEG by cjpeg, with each of its options.
pixmap = run("convert", source, "-resize", "101x67!", "-depth", "8", "ppm:-")
greymap = run("convert", source, "-resize", "101x67!", "-colorspace", "Gray", "-depth", "8", "pgm:-")
OPTIONS = {
    "grey": ["-grayscale"],
    "rgb": ["-rgb"],
    "q1": ["-quality", "1"],
    "q100": ["-quality", "100"],
    "optimised": ["-optimize"],
    "progressive": ["-progressive"],
    "arithmetic": ["-arithmetic"],
    "arithmetic-progressive": ["-arithmetic", "-progressive"],
    "restart": ["-restart", "1"],
    "restart-blocks": ["-restart", "3B"],
    "baseline": ["-quality", "3", "-baseline"],
    "smooth": ["-smooth", "50"],
    "float": ["-dct", "float"],
    "fast": ["-dct", "fast"],
    **{f"sample-{s}": ["-sample", s] for s in ("1x1", "2x1", "1x2", "2x2", "4x1", "1x4", "4x2", "2x4")},
    "sample-each": ["-sample", "2x2,1x2,2x1"],
    "progressive-1x1": ["-progressive", "-sample", "1x1"],
}
for label, options in OPTIONS.items():
    name = f"cjpeg-{label}.jpg"
    (folder / name).write_bytes(run("cjpeg", *options, data=pixmap))
    # ffmpeg widens chroma in another way, and knows no arithmetic coding and no pictures of RGB in this form.
    add_jpeg(name, near=6 if label in ("grey", "sample-1x1", "progressive-1x1") else None)
(folder / "cjpeg-pgm.jpg").write_bytes(run("cjpeg", data=greymap))
add_jpeg("cjpeg-pgm.jpg", near=2)
for sampling in ("yuvj420p", "yuvj422p", "yuvj444p"):
    name = f"ff-{sampling}.jpg"
    ffmpeg("-i", source, "-frames:v", "1", "-update", "1", "-pix_fmt", sampling, "-q:v", "3", folder / name)
    add_jpeg(name, near=6 if sampling == "yuvj444p" else None)

# Pictures in four colours: ImageMagick reads them as they are, and the rule is ours.
copy(GO / "testdata/video-001.cmyk.jpeg")
run("convert", source, "-colorspace", "CMYK", "-quality", "95", folder / "im-cmyk.jpg")
run("convert", source, "-colorspace", "CMYK", "-quality", "95", "-sampling-factor", "2x2", folder / "im-cmyk-2x2.jpg")
for name in ("video-001.cmyk.jpeg", "im-cmyk.jpg", "im-cmyk-2x2.jpg"):
    # Ink from 0 to 255, whatever way the file stores it.
    raw = run("convert", folder / name, "-depth", "8", "CMYK:-")
    light = bytes(255 - ink for ink in raw)
    pixels = bytearray()
    for i in range(0, len(light), 4):
        c, m, y, k = light[i:i + 4]
        pixels += bytes(((y * k + 127) // 255, (m * k + 127) // 255, (c * k + 127) // 255, 255))
    width, height = map(int, run("identify", "-format", "%w %h", folder / name).split())
    add(name, width, height, bytes(pixels))
# The same numbers without the mark of Adobe's programs are ink.
data = (folder / "im-cmyk.jpg").read_bytes()
at = data.index(b"\xff\xee\x00\x0eAdobe")
(folder / "cmyk-ink.jpg").write_bytes(data[:at] + data[at + 16:])
# ImageMagick turns them round whatever they are, which makes them light.
light = run("convert", folder / "cmyk-ink.jpg", "-depth", "8", "CMYK:-")
pixels = bytearray()
for i in range(0, len(light), 4):
    c, m, y, k = light[i:i + 4]
    pixels += bytes(((y * k + 127) // 255, (m * k + 127) // 255, (c * k + 127) // 255, 255))
add("cmyk-ink.jpg", width, height, bytes(pixels))

# Cut by others, and what djpeg makes of it.
name = copy(GO / "testdata/video-001.progressive.truncated.jpeg")
add_jpeg(name)


# Files that are built to be too much. The data of a chunk, with its length and its sum.
def chunk(kind, data):
    return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))


def png(width, height, depth, colours, rest, interlace=0):
    head = chunk(b"IHDR", struct.pack(">IIBBBBB", width, height, depth, colours, 0, 0, interlace))
    return b"\x89PNG\r\n\x1a\n" + head + rest


def row_stream(size):
    packer = zlib.compressobj(9)
    zeros = bytes(1 << 20)
    out = b"".join(packer.compress(zeros[:min(len(zeros), size - at)]) for at in range(0, size, len(zeros)))
    return out + packer.flush()


end = chunk(b"IEND", b"")
tiny = chunk(b"IDAT", zlib.compress(bytes(4)))
text = chunk(b"zTXt", b"Comment\0\0" + zlib.compress(bytes(64 << 20), 9))
profile = chunk(b"iCCP", b"Profile\0\0" + zlib.compress(bytes(64 << 20), 9))
hostile = {
    "side.png": png(0x7FFFFFFF, 0x7FFFFFFF, 8, 6, tiny + end),
    "wide.png": png(0x7FFFFFFF, 1, 1, 0, tiny + end),
    "high.png": png(1, 0x7FFFFFFF, 16, 6, tiny + end),
    "beyond.png": png(0xFFFFFFFF, 0xFFFFFFFF, 8, 2, tiny + end),
    "unheld.png": png(11000, 11000, 8, 6, tiny + end),
    "unheld-interlaced.png": png(11000, 11000, 8, 6, tiny + end, 1),
    # More rows are in it than the picture has.
    "overflow.png": png(8, 8, 8, 0, chunk(b"IDAT", row_stream(256 << 20)) + end),
    "bomb-text.png": png(8, 8, 8, 0, text * 20 + chunk(b"IDAT", zlib.compress(bytes(72))) + end),
    "bomb-profile.png": png(8, 8, 8, 0, profile + chunk(b"IDAT", zlib.compress(bytes(72))) + end),
    "flood-text.png": png(8, 8, 8, 0, chunk(b"tEXt", b"a\0b") * 100000 + chunk(b"IDAT", zlib.compress(bytes(72))) + end),
    "flood-unknown.png": png(8, 8, 8, 0, chunk(b"abCd", b"") * 100000 + chunk(b"IDAT", zlib.compress(bytes(72))) + end),
    "flood-empty.png": png(8, 8, 8, 0, chunk(b"IDAT", b"") * 100000 + chunk(b"IDAT", zlib.compress(bytes(72))) + end),
    "flood-behind.png": png(8, 8, 8, 0, chunk(b"IDAT", zlib.compress(bytes(72))) + chunk(b"tEXt", b"a\0b") * 100000 + end),
    "palette.png": png(8, 8, 8, 3, chunk(b"PLTE", bytes(3)) + chunk(b"IDAT", zlib.compress(b"\0\xff\x80" * 24)) + end),
    "flat.png": png(4096, 4096, 1, 0, chunk(b"IDAT", row_stream(4096 * 513)) + end),
    "flat-interlaced.png": png(2048, 2048, 8, 6, chunk(b"IDAT", row_stream(2048 * 2048 * 4 + 4000)) + end, 1),
}


def resize(data, width, height):
    """A JPEG file that declares another size."""
    at = next(i for i in range(len(data)) if data[i] == 0xFF and data[i + 1] in (0xC0, 0xC1, 0xC2, 0xC9, 0xCA))
    return data[:at + 5] + struct.pack(">HH", height, width) + data[at + 9:]


for label in ("sample-2x2", "progressive", "arithmetic", "arithmetic-progressive", "restart"):
    data = (folder / f"cjpeg-{label}.jpg").read_bytes()
    hostile[f"{label}-65500.jpg"] = resize(data, 65500, 65500)
    hostile[f"{label}-11000.jpg"] = resize(data, 11000, 11000)
    hostile[f"{label}-2048.jpg"] = resize(data, 2048, 2048)
    hostile[f"{label}-65535x1.jpg"] = resize(data, 65535, 1)
    hostile[f"{label}-0.jpg"] = resize(data, 0, 0)
# The last scan again and again.
data = (folder / "cjpeg-progressive.jpg").read_bytes()
scan = data[data.rindex(b"\xff\xda"):-2]
hostile["scans.jpg"] = resize(data[:-2] + scan * 5000 + data[-2:], 1024, 1024)
hostile["comments.jpg"] = data[:2] + b"\xff\xfe\x00\x02" * 100000 + data[2:]
hostile["profiles.jpg"] = data[:2] + (b"\xff\xe2\xff\xff" + bytes(65533)) * 100 + data[2:]
for name, data in hostile.items():
    (folder / name).write_bytes(data)
(folder / "hostile.txt").write_text("".join(name + "\n" for name in hostile))
(folder / "files.txt").write_text("".join(row + "\n" for row in rows))
