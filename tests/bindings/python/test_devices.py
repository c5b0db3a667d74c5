"""Playing into nothing and recording of nothing, at the pace of a clock; no hardware."""
import threading
import time

import numpy as np
import pytest
import vorlund

NULL = vorlund.NULL_DEVICE


@pytest.mark.parametrize("dtype", ["int16", "float32", "float64"])
def test_plays_samples(dtype):
    began = time.monotonic()
    assert vorlund.play(np.zeros((4800, 2), dtype), 48000, device=NULL) is None
    assert 0.09 < time.monotonic() - began < 10


def test_plays_sources_and_streams(wav_bytes):
    with vorlund.play(wav_bytes, device=NULL, wait=False) as playback:
        assert playback.wait(10)
        assert playback.position >= 3000 and not playback.playing
    stream = vorlund.open(wav_bytes, dtype=None)
    stream.seek(2500)
    vorlund.play(stream, device=NULL)
    assert stream.closed


def test_control():
    playback = vorlund.play(np.zeros(480000), 48000, device=NULL, volume=0.5, wait=False)
    assert playback.volume == 0.5 and playback.playing
    playback.pause()
    playback.volume = 0.25
    playback.resume()
    assert not playback.wait(0.05)
    playback.stop()
    assert not playback.playing and playback.wait()


def test_stopped_by_another_thread():
    playback = vorlund.play(np.zeros(48000 * 60), 48000, device=NULL, wait=False)
    waiting = threading.Thread(target=playback.wait)
    waiting.start()
    playback.stop()
    waiting.join(30)
    assert not waiting.is_alive()


def test_what_a_source_raises_while_it_plays(wav_bytes):
    import io

    class Breaking(io.BytesIO):
        whole = True

        def read(self, size=-1):
            if not self.whole:
                raise OSError("broken")
            return super().read(size)

    file = Breaking(wav_bytes)
    stream = vorlund.open(file, dtype=None)
    file.whole = False
    with pytest.raises(OSError, match="broken"):
        vorlund.play(stream, device=NULL)


def test_records():
    samples = vorlund.rec(0.1, rate=8000, channels=2, device=NULL)
    assert samples.shape == (800, 2) and samples.dtype == np.float32 and not samples.any()
    assert vorlund.rec(frames=100, dtype="float64", device=NULL).shape == (100, 1)
    for wrong in ({}, {"seconds": 1, "frames": 5}, {"seconds": 0.1, "rate": 0}, {"frames": 5, "channels": 9}):
        with pytest.raises(ValueError):
            vorlund.rec(device=NULL, **wrong)


def test_wrong_arguments(wav_bytes):
    with pytest.raises(ValueError, match="need a rate"):
        vorlund.play(np.zeros(10))
    with pytest.raises(ValueError, match="of its own"):
        vorlund.play(wav_bytes, 8000)
    with pytest.raises(ValueError, match="kind must be"):
        vorlund.devices("speaker")
    with pytest.raises(vorlund.Error):
        vorlund.play(np.zeros(10), 8000, device="no such device")
