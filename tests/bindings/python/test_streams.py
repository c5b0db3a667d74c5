"""Streams, and threads that share them."""
import io
import threading
import time
from concurrent.futures import ThreadPoolExecutor

import numpy as np
import pytest
import vorlund

LIMIT = 30


def test_reads_bit_by_bit(strings):
    whole = vorlund.read(strings).samples
    with vorlund.open(strings) as stream:
        assert (stream.frames, stream.rate, stream.channels, stream.dtype) == (101430, 22050, 2, np.float32)
        np.testing.assert_array_equal(stream.read(1000), whole[:1000])
        assert stream.tell() == 1000
        stream.seek(50000)
        np.testing.assert_array_equal(stream.read(10), whole[50000:50010])
        np.testing.assert_array_equal(stream.read(), whole[50010:])
        assert stream.read(5).shape == (0, 2) and stream.read().shape == (0, 2)
        stream.seek(10**9)
        assert stream.tell() == 101430
        stream.seek(101000)
        assert sum(len(block) for block in stream) == 430
    assert stream.closed
    with pytest.raises(vorlund.ClosedError):
        stream.read(1)
    stream.close()


def test_reads_into_memory_of_the_caller(strings):
    whole = vorlund.read(strings, dtype="int16").samples
    with vorlund.open(strings, dtype="int16") as stream:
        out = np.zeros((2000, 2), np.int16)
        assert stream.read_into(out[:1500]) == 1500
        np.testing.assert_array_equal(out[:1500], whole[:1500])
        assert not out[1500:].any()
        for wrong in (np.zeros((5, 2), np.float32), np.zeros((5, 1), np.int16), np.zeros(5, np.int16), out[::2], out.T, [1]):
            with pytest.raises(ValueError):
                stream.read_into(wrong)
        stream.seek(101425)
        assert stream.read_into(out) == 5


def test_another_form(strings):
    with vorlund.open(strings, rate=16000, mono=True, dtype="float64") as stream:
        assert (stream.rate, stream.channels) == (16000, 1)
        samples = stream.read()
    assert samples.ndim == 1 and samples.dtype == np.float64
    np.testing.assert_allclose(samples, vorlund.read(strings, rate=16000, mono=True, dtype="float64").samples, atol=1e-6)


def test_a_buffer_lives_as_long_as_its_stream(wav_bytes):
    stream = vorlund.open(bytearray(wav_bytes))
    assert stream.read().shape == (3000, 1)
    stream.close()
    data = bytearray(wav_bytes)
    stream = vorlund.open(data)
    with pytest.raises(BufferError):
        data.clear()
    stream.close()
    del stream
    data.clear()


def test_forgotten_streams_are_freed(strings):
    before = vorlund.handle_count()
    for _ in range(20):
        vorlund.open(strings).read(10)
    assert vorlund.handle_count() == before


class SlowFile(io.BytesIO):
    """Stops in the middle of a read, when it is told to."""

    def __init__(self, data):
        super().__init__(data)
        self.stops = False
        self.has_stopped = threading.Event()
        self.goes_on = threading.Event()

    def read(self, size=-1):
        if self.stops:
            self.has_stopped.set()
            assert self.goes_on.wait(LIMIT)
        return super().read(size)


def test_two_threads_on_one_stream(wav_bytes):
    file = SlowFile(wav_bytes)
    with vorlund.open(file) as stream, ThreadPoolExecutor(1) as pool:
        file.stops = True
        reading = pool.submit(stream.read)
        assert file.has_stopped.wait(LIMIT)
        try:
            for operation in (lambda: stream.read(1), stream.tell, lambda: stream.seek(0), stream.close):
                with pytest.raises(vorlund.BusyError):
                    operation()
        finally:
            file.goes_on.set()
        assert reading.result(LIMIT).shape == (3000, 1)


class SlowTarget(io.BytesIO):
    """A file that stops in the first write after `stops` is set."""

    def __init__(self):
        super().__init__()
        self.stops = False
        self.has_stopped = threading.Event()
        self.goes_on = threading.Event()

    def write(self, data):
        if self.stops:
            self.has_stopped.set()
            assert self.goes_on.wait(LIMIT)
        return super().write(data)


def test_two_threads_on_one_writer():
    file = SlowTarget()
    samples = np.full((200000, 1), 0.25, np.float32)
    with vorlund.create(file, 8000, 1, kind="wav") as writer, ThreadPoolExecutor(1) as pool:
        file.stops = True
        writing = pool.submit(writer.write, samples)
        assert file.has_stopped.wait(LIMIT)
        try:
            for operation in (lambda: writer.write(samples), writer.close):
                with pytest.raises(vorlund.BusyError):
                    operation()
        finally:
            file.goes_on.set()
        writing.result(LIMIT)
    assert np.array_equal(vorlund.read(file.getvalue()).samples, samples)


def test_a_stream_used_by_its_own_source(wav_bytes):
    class Nested(io.BytesIO):
        stream = None

        def read(self, size=-1):
            if self.stream:
                self.stream.read(1)
            return super().read(size)

    file = Nested(wav_bytes)
    with vorlund.open(file) as stream:
        file.stream = stream
        with pytest.raises(vorlund.BusyError):
            stream.read(10)


def test_calls_hold_no_lock_of_the_interpreter():
    """This thread runs in the middle of a call that takes a tenth of a second; with the lock held it never would."""

    def record():
        began = time.monotonic()
        vorlund.rec(0.1, rate=8000, device=vorlund.NULL_DEVICE)
        return began, time.monotonic()

    vorlund.rec(frames=1, device=vorlund.NULL_DEVICE)
    for _ in range(20):
        with ThreadPoolExecutor(1) as pool:
            recording = pool.submit(record)
            times = []
            while not recording.done():
                times.append(time.monotonic())
            began, ended = recording.result(LIMIT)
        middle = [began + (ended - began) * part for part in (0.3, 0.7)]
        if any(middle[0] < at < middle[1] for at in times):
            return
    pytest.fail("no other thread ran")


def test_many_threads_with_streams_of_their_own(strings):
    whole = vorlund.read(strings).samples
    data = strings.read_bytes()

    def work(number):
        source = (strings, data, io.BytesIO(data))[number % 3]
        return np.array_equal(vorlund.read(source).samples, whole)

    with ThreadPoolExecutor(8) as pool:
        assert all(pool.map(work, range(60)))


def test_threads_that_fight_for_one_stream(strings):
    """Every call gives the right frames or raises; nothing else happens."""
    whole = vorlund.read(strings).samples
    refused = []
    with vorlund.open(strings) as stream:

        def work(_):
            got = 0
            for _ in range(50):
                try:
                    got += len(stream.read(100))
                except vorlund.BusyError:
                    refused.append(1)
            return got

        with ThreadPoolExecutor(4) as pool:
            total = sum(pool.map(work, range(4)))
        assert stream.tell() == total == 100 * (200 - len(refused))
        np.testing.assert_array_equal(stream.read(7), whole[total : total + 7])
