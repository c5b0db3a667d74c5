"""How loud a sound is, and what is wrong with it."""
from __future__ import annotations

from dataclasses import dataclass, fields
from typing import Any, Optional

import numpy as np

from . import _arrays
from ._errors import check
from ._native import ffi, lib
from ._sources import SourcePlace, ensure_open


@dataclass(frozen=True)
class Levels:
    """What was measured in all channels together. Levels are factors of full scale: 20 log10 of them are decibels."""

    frames: int
    #: The sample furthest from 0, and its frame.
    peak: float
    peak_frame: int
    #: The peak of the signal between the samples (ITU-R BS.1770-4).
    true_peak: float
    #: The root of the mean square of all samples.
    rms: float
    #: Loudness in LUFS, gated (EBU R 128); minus infinity for silence, or below 400 ms.
    integrated: float
    #: Loudness range in LU (EBU Tech 3342); 0 below 3 s.
    range: float
    #: The highest loudness of 400 ms and of 3 s, in LUFS.
    momentary_max: float
    short_term_max: float
    #: Samples at full scale, three or more of a channel one behind the other.
    clipped_samples: int
    #: Frames below -60 dB, half a second or more of them.
    silent_frames: int
    #: Samples that are no numbers, or infinite.
    not_finite: int


def measure(sound: Any, rate: Optional[int] = None) -> Levels:
    """Measures samples, whose rate is needed, or a source from its beginning to its end.

    Raises PluginMissingError without the plug-in measure, and what `read` raises. A source is never as a whole in
    memory.
    """
    record = ffi.new("vorlund_levels*")
    record.size = ffi.sizeof("vorlund_levels")
    if isinstance(sound, (np.ndarray, list, tuple)):
        if rate is None:
            raise ValueError("samples need a rate")
        ensure_open()
        array, frames, channels, sample_format = _arrays.taken(sound)
        if sample_format not in (lib.VORLUND_SAMPLE_FLOAT, lib.ENGINE_DOUBLE):
            raise ValueError(f"samples are floats, not {array.dtype}")
        array = array.astype(np.float32, copy=False)
        memory = ffi.cast("float*", array.ctypes.data)
        frames = _arrays.count_of(frames, "frames", 0, 2**32 - 1)
        check(lib.vorlund_measure_samples(memory, frames, channels, _arrays.count_of(rate, "rate", 1, 2**31 - 1), record))
    else:
        if rate is not None:
            raise ValueError("a source has a rate of its own")
        report = ffi.new("vorlund_report*")
        with SourcePlace(sound) as place:
            place.check(lib.engine_measure(place.record, record, report), report)
    return Levels(*(getattr(record, field.name) for field in fields(Levels)))
