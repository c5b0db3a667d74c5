"""Whole sounds against what soundfile and wave read."""
import io
import mmap
import wave

import numpy as np
import pytest
import soundfile
import vorlund

KINDS = [
    ("WAV", "PCM_U8"),
    ("WAV", "PCM_16"),
    ("WAV", "PCM_24"),
    ("WAV", "PCM_32"),
    ("WAV", "FLOAT"),
    ("WAV", "DOUBLE"),
    ("WAV", "ULAW"),
    ("AIFF", "PCM_16"),
    ("FLAC", "PCM_16"),
    ("FLAC", "PCM_24"),
    ("OGG", "VORBIS"),
]


@pytest.mark.parametrize("kind, subtype", KINDS)
@pytest.mark.parametrize("channels", [1, 2])
def test_equals_soundfile(tone, kind, subtype, channels):
    path, expected = tone(kind, subtype, channels=channels)
    samples, rate = vorlund.read(path, dtype="float64")
    assert rate == 44100
    assert samples.shape == expected.shape and samples.dtype == np.float64
    np.testing.assert_allclose(samples, expected, rtol=0, atol=1e-7 if subtype in ("DOUBLE", "VORBIS") else 0)


@pytest.mark.parametrize("dtype", ["int16", "int32", "float32", "float64"])
@pytest.mark.parametrize("subtype", ["PCM_16", "PCM_24", "PCM_32"])
def test_each_dtype_equals_soundfile(tone, dtype, subtype):
    path, _ = tone("WAV", subtype)
    expected, _ = soundfile.read(path, dtype=dtype, always_2d=True)
    samples, _ = vorlund.read(path, dtype=dtype)
    assert samples.dtype == np.dtype(dtype)
    if dtype == "int16" and subtype != "PCM_16":
        # Rounded here, cut there.
        assert np.abs(samples.astype(int) - expected).max() <= 1
    else:
        np.testing.assert_array_equal(samples, expected)


def test_equals_wave(strings):
    with wave.open(str(strings)) as file:
        expected = np.frombuffer(file.readframes(file.getnframes()), "<i2").reshape(-1, file.getnchannels())
        rate = file.getframerate()
    sound = vorlund.read(strings, dtype=None)
    assert sound.rate == rate and sound.samples.dtype == np.int16
    np.testing.assert_array_equal(sound.samples, expected)


def test_every_source(strings):
    expected = vorlund.read(strings).samples
    data = strings.read_bytes()
    with open(strings, "rb") as file, open(strings, "rb", buffering=0) as raw, open(strings, "rb") as low:
        mapped = mmap.mmap(low.fileno(), 0, access=mmap.ACCESS_READ)
        sources = [str(strings), data, bytearray(data), memoryview(data), np.frombuffer(data, np.uint8), mapped, file, raw]
        for source in sources + [io.BytesIO(data)]:
            np.testing.assert_array_equal(vorlund.read(source).samples, expected)
        del source, sources
        mapped.close()
        assert not file.closed


def test_a_file_without_positions_is_read_as_a_whole(wav_bytes):
    class Pipe:
        def __init__(self):
            self.file = io.BytesIO(wav_bytes)

        def read(self, size=-1):
            return self.file.read(size)

    assert vorlund.read(Pipe()).samples.shape == (3000, 1)


@pytest.mark.parametrize("start, frames", [(0, 10), (100, 50), (22000, 100), (22050, 5), (10**12, 5), (7, None), (0, 0)])
@pytest.mark.parametrize("kind", ["WAV", "FLAC", "OGG"])
def test_a_part_is_a_slice_of_the_whole(tone, kind, start, frames):
    path, _ = tone(kind)
    whole = vorlund.read(path).samples
    part = vorlund.read(path, start=start, frames=frames).samples
    np.testing.assert_array_equal(part, whole[start:][:frames])


def test_mono_has_one_dimension(tone):
    path, expected = tone("WAV", "FLOAT")
    samples, _ = vorlund.read(path, mono=True, dtype="float64")
    np.testing.assert_allclose(samples, expected.mean(axis=1), atol=1e-6)
    part, _ = vorlund.read(path, mono=True, dtype="float64", start=1000, frames=100)
    np.testing.assert_array_equal(part, samples[1000:1100])


def test_another_rate(tone):
    path, expected = tone("WAV", "FLOAT")
    samples, rate = vorlund.read(path, rate=22050, dtype="float64")
    assert rate == 22050 and samples.shape == (len(expected) // 2, 2)
    # A tone far below the half of both rates stays what it is.
    np.testing.assert_allclose(samples[500:-500], expected[::2][500:-500], atol=1e-3)
    np.testing.assert_array_equal(vorlund.read(path, rate=44100).samples, vorlund.read(path).samples)
    integers = vorlund.read(path, rate=22050, dtype="int16").samples
    np.testing.assert_allclose(integers / 32768, samples, atol=1 / 32768)


def test_resample_equals_reading_at_that_rate(tone):
    path, _ = tone("WAV", "FLOAT")
    samples, rate = vorlund.read(path)
    np.testing.assert_array_equal(vorlund.resample(samples, rate, 16000), vorlund.read(path, rate=16000).samples)
    one = vorlund.resample(samples[:, 0], rate, 16000)
    assert one.ndim == 1 and len(one) == 8000


def test_arrays_are_whole_arrays(strings):
    samples, _ = vorlund.read(strings)
    assert samples.flags.writeable and samples.flags.c_contiguous and samples.flags.aligned
    samples *= 0.5
    view = samples[10:20]
    del samples
    assert view.shape == (10, 2)


def test_info(tone, strings):
    path, expected = tone("FLAC", "PCM_24")
    known = vorlund.info(path)
    assert (known.frames, known.rate, known.channels, known.dtype) == (len(expected), 44100, 2, "int32")
    assert known.duration == pytest.approx(0.5)
    assert any("Sndfile" in name for name in known.chain)
    outcomes = {entry.decoder: entry.outcome for entry in known.report.entries}
    assert outcomes["vorlund::CWavDecoder"] == "refused" and "connected" in outcomes.values()
    assert str(known.report) == known.report.text and not known.report.explanation
    assert vorlund.info(strings.read_bytes()).frames == 101430


@pytest.mark.parametrize("count", [1, 7, 1000])
def test_peaks(tone, count):
    path, _ = tone("WAV", "PCM_16")
    samples = vorlund.read(path).samples
    peaks = vorlund.peaks(path, count)
    bounds = [len(samples) * i // count for i in range(count + 1)]
    expected = np.stack([[samples[a:b].min(0), samples[a:b].max(0)] for a, b in zip(bounds, bounds[1:])])
    np.testing.assert_array_equal(peaks, expected.transpose(0, 2, 1))
    assert vorlund.peaks(path, count, mono=True).shape == (count, 2)


def test_peaks_of_few_frames(tone):
    path, expected = tone("WAV", "FLOAT", seconds=0.0001)
    peaks = vorlund.peaks(path)
    assert peaks.shape == (4, 2, 2)
    np.testing.assert_allclose(peaks[:, :, 0], expected, atol=1e-7)
    np.testing.assert_array_equal(peaks[:, :, 0], peaks[:, :, 1])


@pytest.mark.parametrize("size, overlap", [(1000, 0), (1024, 512), (22050, 0), (50000, 1), (10, 9)])
def test_blocks(tone, size, overlap):
    path, _ = tone("WAV", seconds=0.1 if size == 10 else 0.5)
    whole = vorlund.read(path).samples
    starts = range(0, max(1, len(whole) - overlap), size - overlap)
    blocks = list(vorlund.blocks(path, size, overlap=overlap))
    assert len(blocks) == len(starts)
    for start, block in zip(starts, blocks):
        np.testing.assert_array_equal(block, whole[start : start + size])


def test_blocks_of_a_part(tone):
    path, _ = tone()
    whole = vorlund.read(path).samples
    part = np.concatenate(list(vorlund.blocks(path, 100, start=50, frames=1234)))
    np.testing.assert_array_equal(part, whole[50:1284])


@pytest.mark.parametrize(
    "wrong",
    [{"start": -1}, {"frames": -2}, {"rate": 0}, {"dtype": "int64"}, {"dtype": ">i2"}, {"channels": 9}, {"quality": "fine"},
     {"mono": True, "channels": 2}],
)
def test_wrong_arguments(strings, wrong):
    with pytest.raises(ValueError):
        vorlund.read(strings, **wrong)


def test_settings_are_those_of_the_call(strings):
    class Counter:
        """A number that changes, and stays the same object."""

        at = 0

        def __index__(self):
            return self.at

    whole = vorlund.read(strings, dtype="int16").samples
    counter = Counter()
    for counter.at in (5, 6):
        np.testing.assert_array_equal(vorlund.read(strings, dtype="int16", start=counter, frames=2).samples, whole[counter.at :][:2])
    # What equals a number is none yet.
    assert vorlund.read(strings, start=1, frames=True).samples.shape == (1, 2)
    for wrong in ({"start": 1.0}, {"frames": 1.0}, {"rate": 22050.0}, {"channels": "2"}):
        with pytest.raises(TypeError):
            vorlund.read(strings, **wrong)
    # One that cannot be looked up.
    with pytest.raises(ValueError, match="dtype must be one of"):
        vorlund.read(strings, dtype=[("a", "i2")])


def test_a_source_of_another_type():
    for source in (None, 5, ["a.wav"]):
        with pytest.raises(TypeError, match="a path, a buffer of bytes or a file"):
            vorlund.read(source)
