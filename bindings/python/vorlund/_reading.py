"""Whole sounds, what is known of them, and streams."""
from __future__ import annotations

import os
import threading
from dataclasses import dataclass
from typing import Any, Iterator, NamedTuple, Optional, Tuple

import numpy as np
from numpy.typing import NDArray

from . import _arrays
from ._errors import BusyError, ClosedError, Report, check, take_report, text_of
from ._native import ffi, lib
from ._sources import Source, SourcePlace, ensure_open, is_path

# Looked up once, because a short sound takes little longer than that.
_ARRAY = ffi.typeof("engine_array*")
_REPORT = ffi.typeof("vorlund_report*")


class Sound(NamedTuple):
    """Samples and their rate."""

    #: Frames and channels; only frames when they were read with mono=True.
    samples: NDArray[Any]
    #: Frames of a second.
    rate: int


@dataclass(frozen=True)
class Info:
    """What is known of a sound without decoding it."""

    #: How many frames there are; None where that is not known.
    frames: Optional[int]
    rate: int
    channels: int
    #: The samples that the decoder makes: "uint8", "int16", "int32" or "float32".
    dtype: str
    #: Seconds; None where that is not known.
    duration: Optional[float]
    #: The classes of the streams, from the one that gives sound down to the source.
    chain: Tuple[str, ...]
    #: What was tried to decode it.
    report: Report


def read(source: Source, *, start: int = 0, frames: Optional[int] = None, rate: Optional[int] = None,
         dtype: Any = "float32", mono: bool = False, channels: Optional[int] = None, quality: str = "high") -> Sound:
    """Reads a sound.

    start and frames are a part of it, counted in its own frames; less come where it ends before.
    rate, if not None, is another rate, by `quality`: "quick", "low", "medium", "high" or "best".
    dtype is that of the samples, full scale as usual for each: uint8, int16, int32, float32, float64;
    None for what the decoder makes.
    mono mixes all channels into one, for two their mean, and gives an array with one dimension; channels mixes
    into 1 to 8, so that nothing gets louder than full scale.

    Raises FormatError with the report when nothing decodes the source, FileError when it cannot be read.
    """
    settings = _arrays.wanted(start, frames, rate, _arrays.channels_wanted(mono, channels), dtype, quality)
    array = ffi.new(_ARRAY)
    report = ffi.new(_REPORT)
    try:
        if is_path(source):
            ensure_open()
            check(lib.engine_read_file(os.fsencode(source), settings, array, report), report)
        else:
            with SourcePlace(source) as place:
                place.check(lib.engine_read(place.record, settings, array, report), report)
    except BaseException:
        lib.engine_free(array.samples)
        raise
    return Sound(_arrays.over(array, array.channels, mono), array.rate)


def info(source: Source) -> Info:
    """What is known of a sound without decoding it, with the report of the search for its decoder."""
    sound = ffi.new("engine_sound*")
    report = ffi.new("vorlund_report*")
    with SourcePlace(source) as place:
        code = lib.engine_open(place.record, _arrays.wanted(), sound, report)
        if code != 0 or place.failed:
            lib.vorlund_release(sound.stream)
            place.check(code, report)
        found = take_report(report)
        try:
            count = ffi.new("uint32_t*")
            check(lib.vorlund_stream_chain_count(sound.stream, count))
            chain = tuple(text_of(lib.vorlund_stream_chain_name, sound.stream, i) for i in range(count[0]))
        finally:
            lib.vorlund_release(sound.stream)
    frames = sound.frames if sound.has_frames else None
    duration = None if frames is None or sound.rate == 0 else frames / sound.rate
    assert found is not None
    return Info(frames, sound.rate, sound.channels, _arrays.name_of(sound.sample_format), duration, chain, found)


def peaks(source: Source, count: int = 1000, *, mono: bool = False) -> NDArray[Any]:
    """The least and the greatest sample of each of `count` equal parts, to draw a sound with.

    Gives float32 with three dimensions: part, channel, and least or greatest; two with mono=True. A sound of
    fewer frames has as many parts as frames.
    """
    array = ffi.new("engine_array*")
    report = ffi.new("vorlund_report*")
    with SourcePlace(source) as place:
        parts = _arrays.count_of(count, "count", 1, 2**31 - 1)
        code = lib.engine_peaks(place.record, 1 if mono else 0, parts, array, report)
        try:
            place.check(code, report)
        except BaseException:
            lib.engine_free(array.samples)
            raise
    channels = array.channels
    made = _arrays.over(array, 2 * channels, False)
    return made if mono else made.reshape(-1, channels, 2)


class Stream:
    """A sound that is read bit by bit. Made by `vorlund.open`, closed by `with`.

    One operation at a time: a second one, of another thread, raises BusyError and changes nothing.
    """

    def __init__(self, source: Source, *, rate: Optional[int] = None, dtype: Any = "float32", mono: bool = False,
                 channels: Optional[int] = None, quality: str = "high") -> None:
        self._lock = threading.Lock()
        self._stream = ffi.NULL
        settings = _arrays.wanted(0, None, rate, _arrays.channels_wanted(mono, channels), dtype, quality)
        sound = ffi.new("engine_sound*")
        report = ffi.new("vorlund_report*")
        self._place = SourcePlace(source)
        try:
            code = lib.engine_open(self._place.record, settings, sound, report)
            self._stream = sound.stream
            self._place.check(code, report)
        except BaseException:
            self._free()
            raise
        self._format = sound.sample_format if settings.sample_format == lib.VORLUND_SAMPLE_KEEP else settings.sample_format
        # Those of the native stream, which an output takes.
        self._native_format = sound.sample_format
        self._native_channels = sound.native_channels
        self._dtype = np.dtype(_arrays.name_of(self._format))
        self._mono = mono
        #: Frames of a second, and samples of a frame.
        self.rate: int = sound.rate
        self.channels: int = sound.channels
        #: How many frames there are; None where that is not known.
        self.frames: Optional[int] = sound.frames if sound.has_frames else None

    @property
    def dtype(self) -> np.dtype[Any]:
        """That of the samples."""
        return self._dtype

    @property
    def closed(self) -> bool:
        return not self._stream

    def read(self, frames: Optional[int] = None) -> NDArray[Any]:
        """The next frames, less only at the end; all that are left without a number."""
        if frames is None or frames == -1:
            return self._read_rest()
        count = _arrays.count_of(frames, "frames", 0, 2**40)
        made = np.empty((count, self.channels), self._dtype)
        return self._shaped(made[: self._fill(made, count)])

    def read_into(self, out: NDArray[Any]) -> int:
        """Reads into an array of the same dtype, and tells how many frames; less than its length only at the end.

        The array is contiguous and has the dimensions of what `read` gives.
        """
        dimensions = (1,) if self._mono else (1, 2) if self.channels == 1 else (2,)
        if not isinstance(out, np.ndarray) or out.dtype != self._dtype or out.ndim not in dimensions:
            raise ValueError(f"an array of {self._dtype} with frames{'' if self._mono else ' and channels'} is needed")
        if out.ndim == 2 and out.shape[1] != self.channels:
            raise ValueError(f"there are {self.channels} channels, not {out.shape[1]}")
        if not out.flags.c_contiguous or not out.flags.writeable or not out.flags.aligned:
            raise ValueError("the array must be contiguous and writable")
        return self._fill(out, len(out))

    def blocks(self, size: int = 4096) -> Iterator[NDArray[Any]]:
        """What is left in blocks of `size` frames, the last one shorter. Each is an array of its own."""
        count = _arrays.count_of(size, "size", 1, 2**40)
        while True:
            block = self.read(count)
            if len(block):
                yield block
            if len(block) < count:
                return

    def seek(self, frame: int) -> None:
        """Goes to a frame; to the end when there are less."""
        wanted = _arrays.count_of(frame, "frame", 0, 2**62)
        self._do(lambda: lib.engine_go_to(self._stream, wanted))

    def tell(self) -> int:
        """The frame that comes next."""
        at = ffi.new("uint64_t*")
        self._do(lambda: lib.vorlund_stream_tell_frame(self._stream, at))
        return at[0]

    def close(self) -> None:
        """Gives back the source. A file that was given stays open."""
        with self._alone():
            self._free()

    def __enter__(self) -> "Stream":
        return self

    def __exit__(self, *_: Any) -> None:
        self.close()

    def __iter__(self) -> Iterator[NDArray[Any]]:
        return self.blocks()

    def __del__(self) -> None:
        if getattr(self, "_stream", None):
            self._free()

    def _alone(self) -> Any:
        return _Alone(self._lock)

    def _do(self, work: Any) -> None:
        with self._alone():
            if not self._stream:
                raise ClosedError("The stream is closed")
            self._place.check(work())

    def _fill(self, out: NDArray[Any], frames: int) -> int:
        count = ffi.new("uint64_t*")
        memory = _arrays.pointer(out)
        self._do(lambda: lib.engine_fill(self._stream, self._format, self._native_channels, self.channels, memory, frames, count))
        return count[0]

    def _read_rest(self) -> NDArray[Any]:
        parts = []
        size = 65536
        if self.frames is not None:
            # A file may claim more than it has.
            size = max(1, min(self.frames - self.tell() + 1, 2**24 // self.channels))
        for block in self.blocks(size):
            parts.append(block)
        if len(parts) == 1:
            return parts[0]
        return np.concatenate(parts) if parts else self._shaped(np.empty((0, self.channels), self._dtype))

    def _shaped(self, made: NDArray[Any]) -> NDArray[Any]:
        return made.reshape(-1) if self._mono else made

    def _take(self) -> Any:
        """The handle of the stream, for an output that takes it over."""
        with self._alone():
            if not self._stream:
                raise ClosedError("The stream is closed")
            handle, self._stream = self._stream, ffi.NULL
            return handle

    def _free(self) -> None:
        if self._stream:
            lib.vorlund_release(self._stream)
            self._stream = ffi.NULL
        self._place.forget()


class _Alone:
    """Holds a lock that must be free."""

    def __init__(self, lock: Any) -> None:
        self._lock = lock

    def __enter__(self) -> None:
        if not self._lock.acquire(blocking=False):
            raise BusyError("It is inside another operation")

    def __exit__(self, *_: Any) -> None:
        self._lock.release()


def open(source: Source, *, rate: Optional[int] = None, dtype: Any = "float32", mono: bool = False,
         channels: Optional[int] = None, quality: str = "high") -> Stream:
    """Opens a sound as a stream; everything else is as with `read`."""
    return Stream(source, rate=rate, dtype=dtype, mono=mono, channels=channels, quality=quality)


def blocks(source: Source, size: int = 65536, *, start: int = 0, frames: Optional[int] = None, overlap: int = 0,
           rate: Optional[int] = None, dtype: Any = "float32", mono: bool = False,
           channels: Optional[int] = None) -> Iterator[NDArray[Any]]:
    """A sound in blocks of `size` frames, the last one shorter.

    Each block begins with the last `overlap` frames of the one before. start, frames, size and overlap are counted
    at `rate`, when that is given.
    """
    _arrays.count_of(size, "size", 1, 2**40)
    _arrays.count_of(overlap, "overlap", 0, size - 1)
    left = 2**62 if frames is None or frames == -1 else _arrays.count_of(frames, "frames", 0, 2**62)
    with open(source, rate=rate, dtype=dtype, mono=mono, channels=channels) as stream:
        if start:
            stream.seek(start)
        tail: Optional[NDArray[Any]] = None
        while left > 0:
            wanted = min(left, size - (0 if tail is None else len(tail)))
            block = stream.read(wanted)
            left -= len(block)
            if len(block) == 0:
                return
            whole = block if tail is None else np.concatenate([tail, block])
            if overlap:
                tail = whole[-overlap:].copy()
            yield whole
            if len(block) < wanted:
                return
