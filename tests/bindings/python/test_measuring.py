"""Loudness and faults, against what they are by definition."""
import io
import math

import numpy as np
import pytest
import soundfile
import vorlund


def sine(amplitude=0.5, seconds=5, rate=48000, frequency=997):
    time = np.arange(seconds * rate) / rate
    return (amplitude * np.sin(2 * np.pi * frequency * time)).astype(np.float32)


def test_a_sine_has_the_loudness_of_the_standard(tmp_path):
    # A sine of 997 Hz at full scale in one channel is -3.01 LUFS.
    samples = sine()
    levels = vorlund.measure(samples, 48000)
    assert levels.integrated == pytest.approx(20 * math.log10(0.5) - 3.01, abs=0.1)
    assert levels.frames == len(samples)
    assert levels.peak == np.abs(samples).max()
    assert levels.peak_frame == np.argmax(np.abs(samples))
    assert levels.rms == pytest.approx(0.5 / math.sqrt(2), rel=1e-4)
    assert levels.true_peak == pytest.approx(0.5, rel=0.01)
    assert (levels.clipped_samples, levels.silent_frames, levels.not_finite) == (0, 0, 0)
    soundfile.write(tmp_path / "sine.wav", samples, 48000, subtype="PCM_16")
    assert vorlund.measure(tmp_path / "sine.wav").integrated == pytest.approx(levels.integrated, abs=0.01)


def test_every_source_measures_alike(strings):
    levels = vorlund.measure(strings)
    data = strings.read_bytes()
    assert vorlund.measure(data) == vorlund.measure(io.BytesIO(data)) == levels
    samples, rate = vorlund.read(strings)
    assert vorlund.measure(samples, rate) == levels
    assert vorlund.measure(samples.astype(np.float64), rate) == levels


def test_faults_are_counted():
    samples = sine(0.9)
    samples[48000:96000] = 0
    samples[100:110] = 1
    samples[200] = np.nan
    levels = vorlund.measure(samples, 48000)
    assert levels.clipped_samples == 10
    assert levels.not_finite == 1
    assert 48000 <= levels.silent_frames < 48010
    assert vorlund.measure(np.zeros(100, np.float32), 48000).integrated == -math.inf


def test_what_it_refuses(strings):
    with pytest.raises(ValueError, match="need a rate"):
        vorlund.measure(np.zeros(10, np.float32))
    with pytest.raises(ValueError, match="floats"):
        vorlund.measure(np.zeros(10, np.int16), 8000)
    with pytest.raises(ValueError, match="rate of its own"):
        vorlund.measure(strings, 8000)
    with pytest.raises(vorlund.ArgumentError):
        vorlund.measure(np.zeros(10, np.float32), 1)
    with pytest.raises(vorlund.FormatError) as raised:
        vorlund.measure(b"no sound at all")
    assert raised.value.report.entries
    with pytest.raises(FileNotFoundError):
        vorlund.measure("missing.wav")
