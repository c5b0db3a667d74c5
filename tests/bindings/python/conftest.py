"""What the tests share. Files are made and read by soundfile and by Python's own wave, never by what is tested."""
import gc
import io
from pathlib import Path

import numpy as np
import pytest
import soundfile
import vorlund

ROOT = Path(__file__).resolve().parents[3]
STRINGS = ROOT / "examples/data/strings.wav"


@pytest.fixture(autouse=True)
def nothing_is_left():
    """Every test frees what it has opened."""
    gc.collect()
    before = vorlund.handle_count()
    yield
    gc.collect()
    assert vorlund.handle_count() == before


@pytest.fixture
def strings():
    return STRINGS


@pytest.fixture
def tone(tmp_path):
    """Makes a file of a kind: its path and what soundfile reads in it as float64."""

    def make(kind="WAV", subtype=None, seconds=0.5, rate=44100, channels=2):
        time = np.arange(int(seconds * rate)) / rate
        samples = np.stack([0.5 * np.sin(2 * np.pi * (440 + 110 * i) * time) for i in range(channels)], axis=1)
        path = tmp_path / f"tone-{subtype}-{channels}.{kind.lower()}"
        soundfile.write(path, samples, rate, subtype=subtype, format=kind)
        return path, soundfile.read(path, always_2d=True)[0]

    return make


@pytest.fixture
def wav_bytes():
    """A WAV file in memory."""
    file = io.BytesIO()
    soundfile.write(file, np.linspace(-0.9, 0.9, 3000), 8000, subtype="PCM_16", format="WAV")
    return file.getvalue()
