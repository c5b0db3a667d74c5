"""Sound files that are written, and sounds in another form."""
from __future__ import annotations

import os
import threading
from typing import Any, List, Mapping, Optional

import numpy as np
from numpy.typing import NDArray

from . import _arrays
from ._errors import ClosedError, check
from ._native import ffi, lib
from ._reading import _Alone
from ._sources import Source, SourcePlace, Target, TargetPlace, ensure_open

#: Kinds of sound files by the endings of their names. All but WAV need the plug-in sndfile.
KINDS = {
    ".wav": "wav",
    ".wave": "wav",
    ".aiff": "aiff",
    ".aif": "aiff",
    ".flac": "flac",
    ".mp3": "mp3",
    ".ogg": "ogg",
    ".oga": "ogg",
    ".opus": "opus",
}
_SAMPLES = {
    "uint8": lib.VORLUND_SAMPLE_8BIT,
    "int16": lib.VORLUND_SAMPLE_16BIT,
    "int24": lib.VORLUND_SAMPLE_24BIT,
    "int32": lib.VORLUND_SAMPLE_32BIT,
    "float32": lib.VORLUND_SAMPLE_FLOAT,
}


def _kind_of(target: Target, kind: Optional[str]) -> str:
    if kind is not None:
        if kind not in KINDS.values():
            raise ValueError(f"kind must be one of {', '.join(sorted(set(KINDS.values())))}, not {kind!r}")
        return kind
    name = os.fsdecode(target) if isinstance(target, (str, os.PathLike)) else getattr(target, "name", None)
    if not isinstance(name, str):
        raise ValueError("a file without a name needs a kind: kind='wav'")
    ending = os.path.splitext(name)[1].lower()
    if ending not in KINDS:
        raise ValueError(f"the ending of {name!r} is none of {', '.join(KINDS)}; say which kind it is: kind='wav'")
    return KINDS[ending]


def _sample_of(sample: Optional[str], otherwise: int) -> int:
    if sample is None:
        return lib.VORLUND_SAMPLE_FLOAT if otherwise == lib.ENGINE_DOUBLE else otherwise
    if sample not in _SAMPLES:
        raise ValueError(f"sample must be one of {', '.join(_SAMPLES)}, not {sample!r}")
    return _SAMPLES[sample]


class _Plan:
    """A sound file to be written, for the native part."""

    def __init__(self, kind: str, sample_format: int, channels: int, rate: int, options: Optional[Mapping[str, Any]],
                 tags: Optional[Mapping[str, str]]) -> None:
        self._kept: List[Any] = []
        self.record = ffi.new("engine_plan*")
        self.record.kind = self._text(kind)
        self.record.sample_format = sample_format
        self.record.channels = channels
        self.record.rate = rate
        self.record.options, self.record.option_count = self._pairs(options)
        self.record.tags, self.record.tag_count = self._pairs(tags)

    def _text(self, text: Any) -> Any:
        data = str(text).encode("utf-8")
        if b"\0" in data:
            raise ValueError("a text with a zero in it")
        made = ffi.new("char[]", data)
        self._kept.append(made)
        return made

    def _pairs(self, values: Optional[Mapping[str, Any]]) -> Any:
        if not values:
            return ffi.NULL, 0
        made = ffi.new("engine_pair[]", len(values))
        self._kept.append(made)
        for pair, (name, text) in zip(made, values.items()):
            pair.name = self._text(name)
            pair.text = self._text(text)
        return made, len(values)


def write(target: Target, samples: Any, rate: int, *, kind: Optional[str] = None, sample: Optional[str] = None,
          options: Optional[Mapping[str, Any]] = None, tags: Optional[Mapping[str, str]] = None) -> None:
    """Writes a sound file.

    samples has frames, or frames and channels; what is beyond full scale is cut where integers are stored.
    kind is "wav", "aiff", "flac", "mp3", "ogg" or "opus"; by default what the ending of the name says.
    sample is what the file has: "uint8", "int16", "int24" (WAV only), "int32" or "float32"; by default what the
    array has, and float32 for float64. `options` are those of the encoder, {"bits": 24} for FLAC.
    tags are texts about the sound: {"title": "Rain"}; for WAV by their four characters: {"INAM": "Rain"}.
    """
    kind = _kind_of(target, kind)
    array, frames, channels, sample_format = _arrays.taken(samples)
    rate = _arrays.count_of(rate, "rate", 1, 2**31 - 1)
    plan = _Plan(kind, _sample_of(sample, sample_format), channels, rate, options, tags)
    with TargetPlace(target) as place:
        memory = _arrays.pointer(array)
        place.check(lib.engine_write(place.record, plan.record, sample_format, memory, frames))


class Writer:
    """A sound file that is written bit by bit. Made by `vorlund.create`; `with` completes it."""

    def __init__(self, target: Target, rate: int, channels: int, *, kind: Optional[str] = None, sample: str = "float32",
                 options: Optional[Mapping[str, Any]] = None, tags: Optional[Mapping[str, str]] = None) -> None:
        self._lock = threading.Lock()
        self._writer = ffi.new("engine_writer*")
        kind = _kind_of(target, kind)
        #: Frames of a second, and samples of a frame.
        self.rate = _arrays.count_of(rate, "rate", 1, 2**31 - 1)
        self.channels = _arrays.count_of(channels, "channels", 1, lib.ENGINE_CHANNELS)
        plan = _Plan(kind, _sample_of(sample, lib.VORLUND_SAMPLE_FLOAT), self.channels, self.rate, options, tags)
        self._place = TargetPlace(target)
        try:
            self._place.check(lib.engine_writer_open(self._place.record, plan.record, self._writer))
        except BaseException:
            self._free()
            raise

    @property
    def closed(self) -> bool:
        return not self._writer.writer

    def write(self, samples: Any) -> None:
        """Appends frames."""
        array, frames, channels, sample_format = _arrays.taken(samples)
        if channels != self.channels:
            raise ValueError(f"the file has {self.channels} channels, the samples have {channels}")
        with _Alone(self._lock):
            if self.closed:
                raise ClosedError("The file is complete")
            memory = _arrays.pointer(array)
            self._place.check(lib.engine_writer_write(self._writer, sample_format, channels, memory, frames))

    def close(self) -> None:
        """Completes the file. When it returns, everything has reached the system, or the file that was given."""
        with _Alone(self._lock):
            if self.closed:
                return
            try:
                self._place.check(lib.engine_writer_finish(self._writer))
            finally:
                self._free()

    def __enter__(self) -> "Writer":
        return self

    def __exit__(self, kind: Any, *_: Any) -> None:
        if kind is None:
            return self.close()
        # What was written so far is kept if it can be; the exception that is under way matters more.
        try:
            self.close()
        except Exception:
            pass

    def __del__(self) -> None:
        if hasattr(self, "_place"):
            self._free()

    def _free(self) -> None:
        lib.vorlund_release(self._writer.writer)
        lib.vorlund_release(self._writer.sink)
        self._writer.writer = ffi.NULL
        self._writer.sink = ffi.NULL
        self._place.forget()


def create(target: Target, rate: int, channels: int, *, kind: Optional[str] = None, sample: str = "float32",
           options: Optional[Mapping[str, Any]] = None, tags: Optional[Mapping[str, str]] = None) -> Writer:
    """Begins a sound file; the arguments are those of `write`."""
    return Writer(target, rate, channels, kind=kind, sample=sample, options=options, tags=tags)


def _is_same(source: Any, target: Any) -> bool:
    if source is target:
        return True
    if not all(isinstance(file, (str, os.PathLike)) for file in (source, target)):
        return False
    try:
        return os.path.samefile(source, target)
    except OSError:
        return False


def convert(source: Source, target: Target, *, kind: Optional[str] = None, sample: Optional[str] = None,
            rate: Optional[int] = None, channels: Optional[int] = None, quality: str = "high",
            options: Optional[Mapping[str, Any]] = None, tags: Optional[Mapping[str, str]] = None) -> int:
    """Writes the sound of one file into another, and tells how many frames that are.

    What is None stays as it is in the source. The sound is never as a whole in memory.
    """
    kind = _kind_of(target, kind)
    if _is_same(source, target):
        raise ValueError("the source and the target are the same file")
    settings = _arrays.wanted(0, None, rate, channels, None, quality)
    plan = _Plan(kind, _sample_of(sample, lib.VORLUND_SAMPLE_KEEP), settings.channels, settings.rate, options, tags)
    frames = ffi.new("uint64_t*")
    report = ffi.new("vorlund_report*")
    with SourcePlace(source) as place, TargetPlace(target) as out:
        code = lib.engine_convert(place.record, out.record, plan.record, settings.quality, frames, report)
        if out.failed:
            lib.vorlund_release(report[0])
            out.check(code)
        place.check(code, report)
    return frames[0]


def resample(samples: Any, from_rate: int, to_rate: int, *, quality: str = "high") -> NDArray[Any]:
    """Samples at another rate, as float32. `quality`: "quick", "low", "medium", "high" or "best"."""
    ensure_open()
    array = np.asarray(samples)
    if array.dtype.kind != "f":
        raise ValueError(f"samples are floats, not {array.dtype}")
    array, frames, channels, _ = _arrays.taken(array.astype(np.float32, copy=False))
    rates = [_arrays.count_of(rate, "a rate", 1, 2**31 - 1) for rate in (from_rate, to_rate)]
    made = ffi.new("engine_array*")
    code = lib.engine_resample(ffi.cast("float*", array.ctypes.data), frames, channels, *rates, _arrays.quality_of(quality), made)
    if code != 0:
        lib.engine_free(made.samples)
        check(code)
    return _arrays.over(made, channels, array.ndim == 1)
