"""Sample types, arrays over memory of the native part, and arrays that are given to it."""
from __future__ import annotations

import functools
import operator
from typing import Any, Optional, Tuple

import numpy as np
from numpy.typing import NDArray

from ._native import ffi, lib

_FORMATS = {
    "uint8": lib.VORLUND_SAMPLE_8BIT,
    "int16": lib.VORLUND_SAMPLE_16BIT,
    "int32": lib.VORLUND_SAMPLE_32BIT,
    "float32": lib.VORLUND_SAMPLE_FLOAT,
    "float64": lib.ENGINE_DOUBLE,
}
_NAMES = {value: name for name, value in _FORMATS.items()}
_DTYPES = {value: np.dtype(name) for name, value in _FORMATS.items()}
QUALITIES = ("quick", "low", "medium", "high", "best")


def name_of(sample_format: int) -> str:
    return _NAMES[sample_format]


def format_of(dtype: Any) -> int:
    """The sample format of a dtype; None keeps that of the sound."""
    try:
        return _known_format_of(dtype)
    except TypeError:
        # One that cannot be looked up, or none at all.
        return _format_of(dtype)


def _format_of(dtype: Any) -> int:
    if dtype is None:
        return lib.VORLUND_SAMPLE_KEEP
    kind = np.dtype(dtype)
    if kind.name not in _FORMATS or not kind.isnative:
        raise ValueError(f"dtype must be one of {', '.join(_FORMATS)} in the order of this machine, not {kind}")
    return _FORMATS[kind.name]


_known_format_of = functools.lru_cache(maxsize=64)(_format_of)


def count_of(value: Any, name: str, least: int, most: int) -> int:
    """A whole number in its range."""
    number = operator.index(value)
    if not least <= number <= most:
        raise ValueError(f"{name} must be {least} to {most}, not {number}")
    return number


def quality_of(quality: str) -> int:
    if quality not in QUALITIES:
        raise ValueError(f"quality must be one of {', '.join(QUALITIES)}, not {quality!r}")
    return QUALITIES.index(quality)


def wanted(start: int = 0, frames: Optional[int] = None, rate: Optional[int] = None, channels: Optional[int] = None,
           dtype: Any = None, quality: str = "high") -> Any:
    """What is wanted of a sound, for the native part. Calls with the same values share a record, which nobody changes."""
    try:
        # As plain numbers, because others may change their value.
        return _known_wanted(_plain(start), _plain(frames), _plain(rate), _plain(channels), dtype, quality)
    except TypeError:
        # A dtype that cannot be looked up, or a number that is none.
        return _wanted(start, frames, rate, channels, dtype, quality)


def _plain(value: Optional[int]) -> Optional[int]:
    return None if value is None else operator.index(value)


def _wanted(start: int, frames: Optional[int], rate: Optional[int], channels: Optional[int], dtype: Any, quality: str) -> Any:
    # What is left out stays 0.
    record = ffi.new("engine_wanted*")
    record.start = count_of(start, "start", 0, 2**62)
    record.frames = 2**64 - 1 if frames is None or frames == -1 else count_of(frames, "frames", 0, 2**62)
    if rate is not None:
        record.rate = count_of(rate, "rate", 1, 2**31 - 1)
    if channels is not None:
        record.channels = count_of(channels, "channels", 1, 8)
    record.sample_format = format_of(dtype)
    record.quality = quality_of(quality)
    return record


_known_wanted = functools.lru_cache(maxsize=64)(_wanted)


def channels_wanted(mono: bool, channels: Optional[int]) -> Optional[int]:
    if mono and channels not in (None, 1):
        raise ValueError("mono and several channels exclude each other")
    return 1 if mono else channels


def over(array: Any, columns: int, flat: bool) -> NDArray[Any]:
    """An array over the samples that the native part has made, which it owns from now on."""
    dtype = _DTYPES[array.sample_format]
    rows = array.frames
    shape = (rows,) if flat else (rows, columns)
    size = rows * columns * dtype.itemsize
    memory = ffi.gc(array.samples, lib.engine_free, size)
    if size == 0:
        return np.empty(shape, dtype)
    return np.ndarray(shape, dtype, ffi.buffer(memory, size))


def taken(samples: Any) -> Tuple[NDArray[Any], int, int, int]:
    """Samples as the native part takes them: the array, frames, channels and the sample format."""
    array = np.asarray(samples)
    if array.ndim not in (1, 2):
        raise ValueError(f"samples have one dimension, or two: frames and channels; not {array.ndim}")
    if array.dtype.name not in _FORMATS:
        raise ValueError(f"samples are of {', '.join(_FORMATS)}, not {array.dtype}")
    # Without a copy where they are as they should be.
    array = np.ascontiguousarray(array, array.dtype.newbyteorder("="))
    channels = 1 if array.ndim == 1 else array.shape[1]
    if not 1 <= channels <= lib.ENGINE_CHANNELS:
        raise ValueError(f"there must be 1 to {lib.ENGINE_CHANNELS} channels, not {channels}")
    return array, array.shape[0], channels, _FORMATS[array.dtype.name]


def pointer(array: NDArray[Any]) -> Any:
    """The memory of a contiguous array."""
    return ffi.cast("void*", array.ctypes.data)
