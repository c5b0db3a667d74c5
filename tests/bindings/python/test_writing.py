"""Files that are written, as soundfile and wave read them."""
import io
import wave

import numpy as np
import pytest
import soundfile
import vorlund

RNG = np.random.default_rng(7)
FLOATS = RNG.uniform(-0.9, 0.9, (5000, 2))
ARRAYS = {
    "uint8": RNG.integers(0, 256, (5000, 2)).astype(np.uint8),
    "int16": RNG.integers(-32768, 32768, (5000, 2)).astype(np.int16),
    "int32": RNG.integers(-(2**31), 2**31, (5000, 2)).astype(np.int32),
    "float32": FLOATS.astype(np.float32),
    "float64": FLOATS,
}


@pytest.mark.parametrize("dtype, subtype", [("uint8", "PCM_U8"), ("int16", "PCM_16"), ("int32", "PCM_32"), ("float32", "FLOAT"), ("float64", "FLOAT")])
def test_wav_keeps_samples(tmp_path, dtype, subtype):
    path = tmp_path / "a.wav"
    vorlund.write(path, ARRAYS[dtype], 48000)
    assert soundfile.info(path).subtype == subtype and soundfile.info(path).samplerate == 48000
    own = vorlund.read(path, dtype=None).samples
    np.testing.assert_array_equal(own, ARRAYS[dtype].astype(own.dtype))
    if dtype != "uint8":
        read, _ = soundfile.read(path, dtype="float32" if dtype == "float64" else dtype)
        np.testing.assert_array_equal(read, ARRAYS[dtype].astype(read.dtype))


def test_wave_reads_what_is_written(tmp_path):
    path = tmp_path / "a.wav"
    vorlund.write(path, FLOATS[:, 0], 8000, sample="int16")
    with wave.open(str(path)) as file:
        assert (file.getsampwidth(), file.getnchannels(), file.getnframes(), file.getframerate()) == (2, 1, 5000, 8000)
        written = np.frombuffer(file.readframes(5000), "<i2")
    np.testing.assert_allclose(written / 32768, FLOATS[:, 0], atol=2**-15)


def test_24_bits(tmp_path):
    path = tmp_path / "a.wav"
    vorlund.write(path, FLOATS[:, 0], 8000, sample="int24")
    assert soundfile.info(path).subtype == "PCM_24"
    np.testing.assert_allclose(soundfile.read(path)[0], FLOATS[:, 0], atol=2**-23)


@pytest.mark.parametrize("kind, samples", [("flac", "int16"), ("aiff", "int16"), ("aiff", "float32")])
def test_lossless_kinds(tmp_path, kind, samples):
    path = tmp_path / f"a.{kind}"
    vorlund.write(path, ARRAYS[samples], 44100, tags={"title": "Rain"})
    np.testing.assert_array_equal(soundfile.read(path, dtype=samples)[0], ARRAYS[samples])


def test_options_and_tags(tmp_path):
    path = tmp_path / "a.flac"
    vorlund.write(path, FLOATS, 44100, options={"bits": 24}, tags={"title": "Regen – Küste"})
    with soundfile.SoundFile(path) as file:
        assert file.subtype == "PCM_24" and file.title == "Regen – Küste"


@pytest.mark.parametrize("kind", ["ogg", "mp3", "opus"])
def test_lossy_kinds(tmp_path, kind):
    path = tmp_path / f"a.{kind}"
    tone = np.sin(np.arange(48000) * 0.05) * 0.5
    vorlund.write(path, tone, 48000)
    read = vorlund.read(path, mono=True).samples
    assert abs(len(read) - 48000) < 2000
    assert 0.3 < np.abs(read).max() < 0.7


def test_into_an_open_file(tmp_path):
    memory = io.BytesIO()
    vorlund.write(memory, ARRAYS["int16"], 8000, kind="wav")
    np.testing.assert_array_equal(soundfile.read(io.BytesIO(memory.getvalue()), dtype="int16")[0], ARRAYS["int16"])
    with open(tmp_path / "a.flac", "wb") as file:
        vorlund.write(file, ARRAYS["int16"], 8000)
        assert not file.closed
    np.testing.assert_array_equal(soundfile.read(tmp_path / "a.flac", dtype="int16")[0], ARRAYS["int16"])


def test_views_and_other_orders_of_bytes(tmp_path):
    path = tmp_path / "a.wav"
    for array in (ARRAYS["int16"][::2], ARRAYS["int16"].astype(">i2"), np.asfortranarray(ARRAYS["int16"])):
        vorlund.write(path, array, 8000)
        np.testing.assert_array_equal(soundfile.read(path, dtype="int16")[0], array)


def test_writer(tmp_path):
    path = tmp_path / "a.wav"
    with vorlund.create(path, 8000, 2, sample="int16") as writer:
        for part in np.array_split(ARRAYS["int16"], 7):
            writer.write(part)
        with pytest.raises(ValueError, match="2 channels"):
            writer.write(FLOATS[:, 0])
    assert writer.closed
    np.testing.assert_array_equal(soundfile.read(path, dtype="int16")[0], ARRAYS["int16"])
    with pytest.raises(vorlund.ClosedError):
        writer.write(FLOATS)


def test_a_writer_that_an_exception_ends_leaves_a_file(tmp_path):
    path = tmp_path / "a.wav"
    with pytest.raises(KeyError):
        with vorlund.create(path, 8000, 2) as writer:
            writer.write(FLOATS)
            raise KeyError("other")
    assert soundfile.info(path).frames == 5000


def test_convert(tmp_path, tone):
    path, expected = tone("WAV", "PCM_16")
    assert vorlund.convert(path, tmp_path / "a.flac") == len(expected)
    np.testing.assert_array_equal(soundfile.read(tmp_path / "a.flac")[0], expected)
    frames = vorlund.convert(path.read_bytes(), tmp_path / "b.wav", rate=22050, channels=1, sample="float32")
    known = soundfile.info(tmp_path / "b.wav")
    assert (known.frames, known.samplerate, known.channels, known.subtype) == (frames, 22050, 1, "FLOAT")
    memory = io.BytesIO()
    vorlund.convert(io.BytesIO(path.read_bytes()), memory, kind="wav")
    np.testing.assert_array_equal(soundfile.read(io.BytesIO(memory.getvalue()))[0], expected)


def test_convert_onto_itself(tone):
    path, expected = tone()
    with pytest.raises(ValueError, match="same file"):
        vorlund.convert(path, path.parent / "." / path.name)
    np.testing.assert_array_equal(soundfile.read(path)[0], expected)


def test_kinds_by_name(tmp_path):
    with pytest.raises(ValueError, match="ending"):
        vorlund.write(tmp_path / "a.xyz", FLOATS, 8000)
    with pytest.raises(ValueError, match="needs a kind"):
        vorlund.write(io.BytesIO(), FLOATS, 8000)
    with pytest.raises(ValueError, match="kind must be"):
        vorlund.write(tmp_path / "a.wav", FLOATS, 8000, kind="au")
    assert not list(tmp_path.iterdir())


def test_what_cannot_be_written(tmp_path):
    for wrong in (np.zeros((2, 2, 2)), np.zeros(3, complex), np.zeros((3, 0)), "text"):
        with pytest.raises(ValueError):
            vorlund.write(tmp_path / "a.wav", wrong, 8000)
    with pytest.raises(vorlund.FileMissingError) as caught:
        vorlund.write(tmp_path / "none" / "a.wav", FLOATS, 8000)
    assert isinstance(caught.value, FileNotFoundError)


def test_a_file_that_refuses():
    class Full(io.BytesIO):
        def write(self, data):
            raise OSError(28, "No space left on device")

    with pytest.raises(OSError, match="No space left"):
        vorlund.write(Full(), FLOATS, 8000, kind="wav")
    with pytest.raises(OSError, match="No space left"):
        vorlund.convert(wav_of(FLOATS), Full(), kind="flac")


def wav_of(samples):
    memory = io.BytesIO()
    soundfile.write(memory, samples, 8000, format="WAV")
    return memory.getvalue()
