#!/usr/bin/env python3
"""Sound files of many kinds, and what libsndfile itself reads in them, for the tests of the plug-in sndfile.
usage: tests/plugins/sndfile/make_files.py FOLDER

The files are written by flac, oggenc, opusenc, lame and sox, by libsndfile, and byte by byte here. FOLDER/files.txt has a
line for each: "NAME FORMAT CHANNELS RATE FRAMES KIND", where FORMAT is s16, s32 or f32 and KIND exact or lossy. The
samples are in NAME.pcm: those that libsndfile, opened on the file itself, delivers from the beginning to the end. Before
they are written they are compared with the sound that was encoded: all of it for exact kinds, its length for lossy ones.
"""
import ctypes
import math
import pathlib
import random
import shutil
import struct
import subprocess
import sys

SF = ctypes.CDLL("libsndfile.so.1")


class Info(ctypes.Structure):
    _fields_ = [
        ("frames", ctypes.c_int64),
        ("rate", ctypes.c_int),
        ("channels", ctypes.c_int),
        ("format", ctypes.c_int),
        ("sections", ctypes.c_int),
        ("seekable", ctypes.c_int),
    ]


SF.sf_open.restype = ctypes.c_void_p
SF.sf_open.argtypes = [ctypes.c_char_p, ctypes.c_int, ctypes.POINTER(Info)]
SF.sf_close.argtypes = [ctypes.c_void_p]
READERS = {"s16": (SF.sf_readf_short, 2), "s32": (SF.sf_readf_int, 4), "f32": (SF.sf_readf_float, 4)}
for reader, _ in READERS.values():
    reader.restype = ctypes.c_int64
    reader.argtypes = [ctypes.c_void_p, ctypes.c_void_p, ctypes.c_int64]
for writer in (SF.sf_writef_int, SF.sf_writef_float):
    writer.restype = ctypes.c_int64
    writer.argtypes = [ctypes.c_void_p, ctypes.c_void_p, ctypes.c_int64]

READ, WRITE = 0x10, 0x20
folder = pathlib.Path(sys.argv[1])
shutil.rmtree(folder, ignore_errors=True)
folder.mkdir(parents=True)
rows = []


def make_sound(seconds, channels, rate, seed):
    """Tones and noise, as a list of integers of 24 bits."""
    noise = random.Random(seed)
    sound = []
    for i in range(int(seconds * rate)):
        for c in range(channels):
            tone = 0.4 * math.sin(i * (0.03 + 0.02 * c) + 1e-6 * i * i) + 0.2 * math.sin(i * 0.31)
            sound.append(int((tone + 0.2 * (noise.random() - 0.5)) * 0x7FFFFF))
    return sound


def pack16(sound):
    return struct.pack(f"<{len(sound)}h", *(s >> 8 for s in sound))


def pack24(sound, order="little"):
    return b"".join(s.to_bytes(3, order, signed=True) for s in sound)


def pack32(sound):
    return struct.pack(f"<{len(sound)}i", *(s << 8 for s in sound))


def packf(sound):
    return struct.pack(f"<{len(sound)}f", *(s / 0x800000 for s in sound))


def read_all(path, sample_format):
    """What libsndfile reads in a file; the channels and the rate."""
    info = Info()
    file = SF.sf_open(str(path).encode(), READ, ctypes.byref(info))
    assert file, path
    reader, size = READERS[sample_format]
    result = b""
    block = ctypes.create_string_buffer(4096 * info.channels * size)
    while (count := reader(file, block, 4096)) > 0:
        result += block.raw[: count * info.channels * size]
    SF.sf_close(file)
    return result, info.channels, info.rate


def add(name, sample_format, kind, frames, expected=None, reference=None, pcm=None):
    """A file that is there: `frames` of sound were encoded, `expected` is what must come out where that is known.
    `reference` is another file with the same sound that libsndfile itself reads in full, `pcm` what it reads there."""
    found, channels, rate = read_all(folder / (reference or name), sample_format)
    pcm = pcm or found
    size = READERS[sample_format][1] * channels
    assert expected is None or pcm == expected, f"{name}: libsndfile reads another sound"
    assert len(pcm) == frames * size, f"{name}: {len(pcm) // size} frames, not {frames}"
    (folder / f"{name}.pcm").write_bytes(pcm)
    rows.append(f"{name} {sample_format} {channels} {rate} {frames} {kind}")


def run(*command):
    subprocess.run(command, cwd=folder, check=True, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)


def chunk(name, data, pad=True):
    return name + struct.pack("<I", len(data)) + data + (b"\0" if pad and len(data) % 2 else b"")


def fmt(tag, channels, rate, bits, extra=b""):
    block = channels * bits // 8
    return chunk(b"fmt ", struct.pack("<HHIIHH", tag, channels, rate, rate * block, block, bits) + extra)


def wav(*chunks, head=b"RIFF", size=None):
    body = b"WAVE" + b"".join(chunks)
    return head + struct.pack("<I", len(body) if size is None else size) + body


def extensible(channels, rate, bits, tag, valid=None):
    guid = struct.pack("<H", tag) + bytes.fromhex("000000001000800000AA00389B71")
    return fmt(0xFFFE, channels, rate, bits, struct.pack("<HHI", 22, valid or bits, 0) + guid)


RATE = 22050
SOUND = make_sound(0.6, 2, RATE, 1)
FRAMES = len(SOUND) // 2
MONO = make_sound(0.6, 1, RATE, 2)


def put(name, data):
    (folder / name).write_bytes(data)


def make_wavs():
    """Byte by byte: what the built-in decoder refuses."""
    s16, s24, s32 = pack16(SOUND), pack24(SOUND), pack32(SOUND)
    floats = packf(SOUND)
    doubles = struct.pack(f"<{len(SOUND)}d", *(s / 0x800000 for s in SOUND))
    data24, fmt24 = chunk(b"data", s24), fmt(1, 2, RATE, 24)
    exact = {
        "24.wav": ("s32", s32, wav(fmt24, data24)),
        "32.wav": ("s32", s32, wav(fmt(1, 2, RATE, 32), chunk(b"data", s32))),
        "float.wav": ("f32", floats, wav(fmt(3, 2, RATE, 32), chunk(b"data", floats))),
        "double.wav": ("f32", floats, wav(fmt(3, 2, RATE, 64), chunk(b"data", doubles))),
        "extensible16.wav": ("s16", s16, wav(extensible(2, RATE, 16, 1), chunk(b"data", s16))),
        "extensible24.wav": ("s32", s32, wav(extensible(2, RATE, 24, 1), data24)),
        "extensiblefloat.wav": ("f32", floats, wav(extensible(2, RATE, 32, 3), chunk(b"data", floats))),
        "junk.wav": ("s32", s32, wav(chunk(b"JUNK", b"x" * 29), fmt24, chunk(b"LIST", b"INFOxyz"), data24)),
        "behind.wav": ("s32", s32, wav(fmt24, data24, chunk(b"LIST", b"INFO"), chunk(b"id3 ", b"abc"))),
        "longsize.wav": ("s32", s32, wav(fmt24, b"data" + struct.pack("<I", len(s24) + 5000), s24)),
        "riffsize.wav": ("s32", s32, wav(fmt24, data24, size=0x7FFFFFF0)),
        "riffzero.wav": ("s32", s32, wav(fmt24, data24, size=0)),
        "streamed.wav": ("s32", s32, wav(fmt24, b"data" + struct.pack("<I", 0xFFFFFFFF), s24, size=0xFFFFFFFF)),
    }
    sizes = struct.pack("<QQQI", 0, len(s24), FRAMES, 0)
    for name, head in (("rf64.wav", b"RF64"), ("bw64.wav", b"BW64")):
        file = wav(chunk(b"ds64", sizes), fmt24, b"data" + struct.pack("<I", 0xFFFFFFFF), s24, head=head, size=0xFFFFFFFF)
        exact[name] = ("s32", s32, file)
    for name, (sample_format, expected, data) in exact.items():
        put(name, data)
        # The same under the name that libsndfile knows.
        reference = "rf64.wav" if name == "bw64.wav" else None
        add(name, sample_format, "exact", FRAMES, expected, reference)


# Name, libsndfile's number, our format, and whether it keeps every sample of 16 or 24 bits.
WRITTEN = (
    ("alaw.wav", 0x10011, "s16", 0),
    ("ulaw.wav", 0x10010, "s16", 0),
    ("ima.wav", 0x10012, "s16", 0),
    ("ms.wav", 0x10013, "s16", 0),
    ("gsm.wav", 0x10020, "s16", 0),
    ("g721.wav", 0x10030, "s16", 0),
    ("rifx.wav", 0x20010002, "s16", 16),
    ("rifx24.wav", 0x20010003, "s32", 24),
    ("24.w64", 0xB0003, "s32", 24),
    ("float.w64", 0xB0006, "f32", 24),
    ("16.aiff", 0x20002, "s16", 16),
    ("24.aiff", 0x20003, "s32", 24),
    ("float.aiff", 0x20006, "f32", 24),
    ("double.aiff", 0x20007, "f32", 24),
    ("ulaw.aiff", 0x20010, "s16", 0),
    ("dwvw.aiff", 0x20041, "s16", 16),
    ("sowt.aiff", 0x10020002, "s16", 16),
    ("16.au", 0x30002, "s16", 16),
    ("24.au", 0x30003, "s32", 24),
    ("float.au", 0x30006, "f32", 24),
    ("ulaw.au", 0x30010, "s16", 0),
    ("g723.au", 0x30032, "s16", 0),
    ("little.au", 0x10030002, "s16", 16),
    ("16.caf", 0x180002, "s16", 16),
    ("24.caf", 0x180003, "s32", 24),
    ("float.caf", 0x180006, "f32", 24),
    ("alac16.caf", 0x180070, "s16", 16),
    ("alac24.caf", 0x180072, "s32", 24),
)


def make_written():
    """By libsndfile."""
    for name, number, sample_format, bits in WRITTEN:
        is_mono = name in ("gsm.wav", "g721.wav", "g723.au", "dwvw.aiff")
        sound, channels = (MONO, 1) if is_mono else (SOUND, 2)
        # What the file keeps; blocks are filled up, so there are whole ones.
        frames = 16 * 505 if bits == 0 and not is_mono else len(sound) // channels
        if name == "ms.wav":
            frames = 26 * 500
        if is_mono and bits == 0:
            frames = 12800
        kept = [s >> 24 - bits << 24 - bits for s in sound[: frames * channels]] if bits else sound[: frames * channels]
        info = Info(rate=RATE, channels=channels, format=number)
        file = SF.sf_open(str(folder / name).encode(), WRITE, ctypes.byref(info))
        assert file, name
        writer, pack = (SF.sf_writef_float, packf) if sample_format == "f32" else (SF.sf_writef_int, pack32)
        assert writer(file, pack(kept), frames) == frames
        SF.sf_close(file)
        expected = {"s16": pack16, "s32": pack32, "f32": packf}[sample_format](kept) if bits else None
        pcm, _, _ = read_all(folder / name, sample_format)
        if not bits:
            frames = len(pcm) // channels // READERS[sample_format][1]
        add(name, sample_format, "exact", frames, expected)


def make_flacs():
    for name, sound, bits in (("16.flac", SOUND, 16), ("24.flac", SOUND, 24), ("mono.flac", MONO, 16)):
        channels = 1 if sound is MONO else 2
        raw = pack16(sound) if bits == 16 else pack24(sound)
        put("raw", raw)
        options = ["--endian=little", "--sign=signed", f"--channels={channels}", f"--bps={bits}", f"--sample-rate={RATE}"]
        run("flac", "-s", "-f", "--force-raw-format", *options, "-T", "TITLE=Töne", "raw", "-o", name)
        expected = pack16(sound) if bits == 16 else pack32(sound)
        add(name, "s16" if bits == 16 else "s32", "exact", len(sound) // channels, expected)


def source(name, sound, channels, rate):
    data = pack16(sound)
    put(name, wav(fmt(1, channels, rate, 16), chunk(b"data", data)))
    return len(sound) // channels


def make_lossy():
    # Long enough for jumps over pages, and with a silence of few bytes at the end.
    long_sound = make_sound(7, 1, RATE, 3) + [0] * (RATE * 5)
    frames = source("long.wav", long_sound, 1, RATE)
    run("oggenc", "-Q", "-q", "3", "--serial=1", "long.wav", "-o", "long.ogg")
    add("long.ogg", "f32", "lossy", frames)
    frames = source("source.wav", SOUND, 2, RATE)
    run("oggenc", "-Q", "-q", "6", "--serial=1", "source.wav", "-o", "stereo.ogg")
    add("stereo.ogg", "f32", "lossy", frames)
    sound48 = make_sound(0.5, 2, 48000, 4)
    frames48 = source("48.wav", sound48, 2, 48000)
    run("opusenc", "--quiet", "--serial", "1", "48.wav", "stereo.opus")
    add("stereo.opus", "f32", "lossy", frames48)

    frames = source("short.wav", make_sound(1.1, 2, 44100, 5), 2, 44100)
    run("lame", "-S", "-b", "128", "short.wav", "cbr.mp3")
    add("cbr.mp3", "f32", "lossy", frames)
    run("lame", "-S", "-V", "5", "--add-id3v2", "--id3v2-utf16", "--tt", "Töne", "short.wav", "vbr.mp3")
    add("vbr.mp3", "f32", "lossy", frames)
    frames = source("low.wav", MONO, 1, RATE)
    run("lame", "-S", "-V", "9", "low.wav", "low.mp3")
    rate = read_all(folder / "low.mp3", "f32")[2]
    add("low.mp3", "f32", "lossy", math.ceil(frames * rate / RATE))
    make_constant_rate()
    make_mp3_heads()


DECODER_DELAY = 529


def frame_size(head):
    """Of a frame of MPEG 1, layer III, 44100 Hz."""
    rates = (0, 32, 40, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320)
    return 144000 * rates[head[2] >> 4] // 44100 + (head[2] >> 1 & 1)


def make_constant_rate():
    """The frames of cbr.mp3 alone, of which libsndfile itself finds the end, but which it does not trim."""
    data = (folder / "cbr.mp3").read_bytes()
    put("constant.mp3", data[frame_size(data) :])
    pcm, channels, _ = read_all(folder / "constant.mp3", "f32")
    add("constant.mp3", "f32", "lossy", len(pcm) // 4 // channels - DECODER_DELAY, pcm=pcm[DECODER_DELAY * 4 * channels :])


def make_mp3_heads():
    """The frames of vbr.mp3 without the record of the encoder, and with it in a tag."""
    data = (folder / "vbr.mp3").read_bytes()
    begin = data.index(b"\xff\xfb")
    record = data[begin : begin + frame_size(data[begin:])]
    sound = data[begin + len(record) :]
    lame = record.index(b"LAME")
    delay = record[lame + 21] << 4 | record[lame + 22] >> 4
    padding = (record[lame + 22] & 15) << 8 | record[lame + 23]
    frames = struct.unpack(">I", record[record.index(b"Xing") + 8 :][:4])[0]

    # All that is in the frames, without what the decoder itself puts in front: libsndfile reads it when the record has
    # no delays.
    put("untrimmed", record[:lame] + bytes(len(record) - lame) + sound)
    put("norecord.mp3", sound)
    add("norecord.mp3", "f32", "lossy", frames * 1152 - DECODER_DELAY, reference="untrimmed")
    put("oldtag.mp3", sound + b"TAG" + b"Tones".ljust(125, b"\0"))
    add("oldtag.mp3", "f32", "lossy", frames * 1152 - DECODER_DELAY, reference="untrimmed")
    for name, encoding, code in (("itunes.mp3", "latin-1", b"\0"), ("itunes16.mp3", "utf-16", b"\1")):
        length = frames * 1152 - delay - padding
        text = f" 00000000 {delay:08X} {padding:08X} {length:016X} 00000000 00000000"
        mark = "\0".encode(encoding)
        body = code + "iTunSMPB".encode(encoding) + mark[-2:] + text.encode(encoding)
        tag = b"TXXX" + struct.pack(">IH", len(body), 0) + body
        size = len(tag)
        head = b"ID3\3\0\0" + bytes([size >> 21 & 127, size >> 14 & 127, size >> 7 & 127, size & 127])
        put(name, head + tag + sound)
        add(name, "f32", "lossy", length, reference="vbr.mp3")


def make_others():
    """By sox, an encoder of its own."""
    source("source.wav", SOUND, 2, RATE)
    for name, options in (("sox.aiff", []), ("sox.au", []), ("sox24.wav", ["-b", "24"]), ("soxfloat.wav", ["-e", "float", "-b", "32"])):
        run("sox", "-D", "source.wav", *options, name)
    add("sox.aiff", "s16", "exact", FRAMES, pack16(SOUND))
    add("sox.au", "s16", "exact", FRAMES, pack16(SOUND))
    add("sox24.wav", "s32", "exact", FRAMES, pack32([s >> 8 << 8 for s in SOUND]))
    add("soxfloat.wav", "f32", "exact", FRAMES, packf([s >> 8 << 8 for s in SOUND]))


make_wavs()
make_written()
make_flacs()
make_lossy()
make_others()
(folder / "files.txt").write_text("\n".join(rows) + "\n")
for name in ("raw", "untrimmed", "48.wav", "low.wav", "short.wav", "long.wav", "source.wav"):
    (folder / name).unlink()
print(len(rows), "files")
