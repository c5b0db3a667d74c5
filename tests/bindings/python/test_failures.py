"""Failures, files that lie, and what is left behind them."""
import errno
import io
import pickle
import resource
import struct
import subprocess
import sys
import typing

import numpy as np
import pytest
import soundfile
import vorlund


def test_a_missing_file(tmp_path):
    with pytest.raises(FileNotFoundError) as caught:
        vorlund.read(tmp_path / "none.wav")
    error = caught.value
    assert isinstance(error, vorlund.FileMissingError) and isinstance(error, vorlund.Error)
    assert error.errno == errno.ENOENT and "none.wav" in str(error) and error.method and error.type


def test_the_report_says_why():
    with pytest.raises(vorlund.FormatError) as caught:
        vorlund.read(b"no sound at all" * 100)
    report = caught.value.report
    assert report.explanation == str(caught.value) and len(report.entries) >= 2
    assert all(entry.outcome == "refused" and entry.reason for entry in report.entries)
    for use in (vorlund.info, vorlund.open, vorlund.peaks, lambda source: next(vorlund.blocks(source))):
        with pytest.raises(vorlund.FormatError) as caught:
            use(b"no sound")
        assert caught.value.report.entries


def test_failures_can_be_sent_to_other_processes(tmp_path):
    for source in (b"no sound", tmp_path / "none.wav"):
        with pytest.raises(vorlund.Error) as caught:
            vorlund.read(source)
        again = pickle.loads(pickle.dumps(caught.value))
        assert type(again) is type(caught.value) and str(again) == str(caught.value)
        assert again.report == caught.value.report and again.code == caught.value.code
        assert getattr(again, "errno", None) == getattr(caught.value, "errno", None)


@pytest.mark.parametrize("wrong", [OSError(5, "gone"), KeyboardInterrupt(), ZeroDivisionError("own")])
@pytest.mark.parametrize("use", [vorlund.read, vorlund.info, vorlund.open, vorlund.peaks])
def test_what_a_file_raises_comes_through(wrong, use):
    class Broken(io.BytesIO):
        def read(self, size=-1):
            raise wrong

    with pytest.raises(type(wrong)) as caught:
        use(Broken(b"x" * 1000))
    assert caught.value is wrong


def test_a_file_that_breaks_in_the_middle(wav_bytes):
    class Breaking(io.BytesIO):
        whole = True

        def read(self, size=-1):
            if not self.whole:
                raise OSError(errno.EIO, "broken")
            return super().read(size)

    file = Breaking(wav_bytes)
    with vorlund.open(file) as stream:
        file.whole = False
        with pytest.raises(OSError, match="broken"):
            stream.read()
        file.whole = True
        stream.seek(0)
        assert stream.read().shape == (3000, 1)


class Wrong(io.BytesIO):
    def __init__(self, given):
        super().__init__(b"x" * 1000)
        self.given = given

    def read(self, size=-1):
        return self.given


@pytest.mark.parametrize("given", ["text", None, b"x" * 10**6, 5])
def test_a_file_that_reads_nonsense(given):
    with pytest.raises((TypeError, ValueError, BlockingIOError)):
        vorlund.read(Wrong(given))


def test_a_length_that_is_claimed_costs_nothing():
    """A header of 44 bytes that promises four gigabytes."""
    header = struct.pack("<4sI4s4sIHHIIHH4sI", b"RIFF", 0xFFFFFFF0, b"WAVE", b"fmt ", 16, 1, 2, 48000, 192000, 4, 16, b"data", 0xFFFFFFC0)
    before = resource.getrusage(resource.RUSAGE_SELF).ru_maxrss
    try:
        assert len(vorlund.read(header + b"\1\2\3\4" * 10).samples) <= 10
    except vorlund.Error as error:
        assert isinstance(error, vorlund.FormatError)
    # In kilobytes.
    assert resource.getrusage(resource.RUSAGE_SELF).ru_maxrss - before < 100_000


@pytest.mark.parametrize("kind, subtype", [("WAV", "PCM_16"), ("WAV", "PCM_24"), ("FLAC", "PCM_16"), ("OGG", "VORBIS"), ("AIFF", "PCM_16")])
def test_damaged_files(kind, subtype):
    """Each is read or refused; whatever is read has its shape."""
    file = io.BytesIO()
    soundfile.write(file, np.random.default_rng(3).uniform(-0.5, 0.5, (4000, 2)), 44100, format=kind, subtype=subtype)
    data = file.getvalue()
    rng = np.random.default_rng(5)
    outcomes = set()
    damaged = [data[:length] for length in (0, 1, 11, 12, 43, 44, 45, 100, len(data) // 2, len(data) - 1)]
    for _ in range(60):
        copy = bytearray(data)
        for place in rng.integers(0, min(len(data), 300), 3):
            copy[place] = rng.integers(0, 256)
        damaged.append(bytes(copy))
    for source in damaged:
        try:
            samples, rate = vorlund.read(source, frames=10**6)
            assert samples.ndim == 2 and 0 <= rate
            outcomes.add("read")
        except vorlund.Error as error:
            assert str(error)
            outcomes.add("refused")
    assert outcomes == {"read", "refused"}


def resident():
    with open("/proc/self/statm") as file:
        return int(file.read().split()[1]) * 4096


def test_nothing_grows(strings, wav_bytes):
    def work():
        for _ in range(20):
            vorlund.read(strings, dtype="float64")
            vorlund.read(io.BytesIO(wav_bytes), rate=16000)
            vorlund.peaks(strings, 50)
            vorlund.measure(strings)
            vorlund.write(io.BytesIO(), np.zeros(10000), 8000, kind="wav")
            with pytest.raises(vorlund.FormatError):
                vorlund.read(b"no sound")

    work()
    before = resident()
    for _ in range(10):
        work()
    # One array that is kept each time would be 325 MB.
    assert resident() - before < 24_000_000


def test_a_process_ends_well_with_everything_open(strings):
    code = f"""
import io, threading, vorlund
stream = vorlund.open({str(strings)!r})
other = vorlund.open(io.BytesIO(open({str(strings)!r}, "rb").read()))
writer = vorlund.create(io.BytesIO(), 8000, 1, kind="wav")
playing = vorlund.play({str(strings)!r}, device=vorlund.NULL_DEVICE, wait=False)
recording = threading.Thread(target=vorlund.rec, args=(60,), kwargs=dict(device=vorlund.NULL_DEVICE), daemon=True)
recording.start()
print("end")
"""
    result = subprocess.run([sys.executable, "-X", "dev", "-c", code], capture_output=True, text=True, timeout=60)
    assert (result.returncode, result.stdout) == (0, "end\n"), result.stderr
    # The thread that records may tell that the library is closed.
    assert "Fatal" not in result.stderr


def test_everything_public_has_types():
    for name in vorlund.__all__:
        item = getattr(vorlund, name)
        if callable(item) and not isinstance(item, type):
            assert "return" in typing.get_type_hints(item), name
            assert item.__doc__, name
