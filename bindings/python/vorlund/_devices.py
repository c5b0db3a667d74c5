"""Playing and recording."""
from __future__ import annotations

import time
from dataclasses import dataclass
from typing import Any, List, Optional

import numpy as np
from numpy.typing import NDArray

from . import _arrays
from ._errors import DeviceError, check, text_of
from ._native import ffi, lib
from ._reading import Stream
from ._sources import ensure_open

#: A device that drops what it plays, and hears silence, at the pace of a clock.
NULL_DEVICE = "null"
# How long one call waits, so that Ctrl+C works.
_SLICE_MS = 100
_KINDS = ("output", "input", "loopback")


@dataclass(frozen=True)
class Device:
    """A sound device."""

    #: By which it is opened.
    id: str
    #: For people.
    name: str
    #: "output", "input", or "loopback", an input that records what an output plays.
    kind: str
    is_default: bool
    #: What it likes best; 0 where the system does not say.
    channels: int
    rate: int


def devices(kind: str = "output") -> List[Device]:
    """The devices that there are now. Needs the plug-in audio."""
    if kind not in _KINDS:
        raise ValueError(f"kind must be one of {', '.join(_KINDS)}, not {kind!r}")
    ensure_open()
    place = ffi.new("vorlund_device_list*")
    check(lib.vorlund_device_list_create(_KINDS.index(kind), place))
    try:
        count = ffi.new("uint32_t*")
        check(lib.vorlund_device_list_count(place[0], count))
        return [_device(place[0], index) for index in range(count[0])]
    finally:
        lib.vorlund_release(place[0])


def _device(devices: Any, index: int) -> Device:
    record = ffi.new("vorlund_device_info*")
    record.size = ffi.sizeof("vorlund_device_info")
    check(lib.vorlund_device_list_get(devices, index, record))
    name, title = (text_of(lib.vorlund_device_list_text, devices, index, field) for field in (0, 1))
    return Device(name, title, _KINDS[record.kind], bool(record.is_default), record.channels, record.rate)


def _made(device: Any, kind: str) -> Any:
    """A new output or input."""
    ensure_open()
    place = ffi.new(f"vorlund_{kind}*")
    if device == NULL_DEVICE:
        check(getattr(lib, f"vorlund_{kind}_create_null")(place))
    else:
        name = device.id if isinstance(device, Device) else device
        text = ffi.NULL if name is None else ffi.new("char[]", str(name).encode("utf-8"))
        check(getattr(lib, f"vorlund_{kind}_create")(text, place))
    return place[0]


def _format(sample_format: int, channels: int, rate: int) -> Any:
    return ffi.new("vorlund_audio_format*", [ffi.sizeof("vorlund_audio_format"), sample_format, channels, rate])


class Playback:
    """A sound that is playing. Any thread may use it. `with` waits for the end, and stops at an exception."""

    def __init__(self, output: Any, source: Optional[Stream], rate: int) -> None:
        self._output = output
        self._rate = rate
        # What the stream reads lives as long as it plays.
        self._source = source

    def wait(self, timeout: Optional[float] = None) -> bool:
        """Waits until everything has been heard; False when that takes more than `timeout` seconds."""
        end = None if timeout is None else time.monotonic() + timeout
        while self._output:
            left = _SLICE_MS if end is None else min(_SLICE_MS, max(0, int((end - time.monotonic()) * 1000)))
            code = lib.vorlund_output_wait_streams(self._output, left)
            if code == 0:
                return self._heard(end)
            if code == lib.VORLUND_ERROR_HANDLE:
                # Stopped by another thread.
                return True
            if code != lib.VORLUND_ERROR_TIMEOUT:
                check(code)
            if end is not None and time.monotonic() >= end:
                return False
        return True

    def _heard(self, end: Optional[float]) -> bool:
        """Waits for what is queued, and raises what the source has raised."""
        delay = ffi.new("uint64_t*")
        while lib.vorlund_output_delay(self._output, delay) == 0 and delay[0] > 0:
            if end is not None and time.monotonic() >= end:
                return False
            time.sleep(min(0.01, delay[0] / self._rate))
        if self._source is not None:
            self._source._place.raise_error()
        if text := text_of(lib.vorlund_output_stream_error, self._output):
            raise DeviceError(text)
        return True

    @property
    def playing(self) -> bool:
        """Whether there is something left to play."""
        return bool(self._output) and lib.vorlund_output_wait_streams(self._output, 0) != 0

    @property
    def position(self) -> int:
        """Frames that have been heard."""
        frames = ffi.new("uint64_t*")
        check(lib.vorlund_output_position(self._output, frames))
        return frames[0]

    @property
    def volume(self) -> float:
        """A factor for every sample, 0 to 16; 1 at first."""
        factor = ffi.new("float*")
        check(lib.vorlund_output_volume(self._output, factor))
        return factor[0]

    @volume.setter
    def volume(self, factor: float) -> None:
        check(lib.vorlund_output_set_volume(self._output, factor))

    def pause(self) -> None:
        check(lib.vorlund_output_set_paused(self._output, 1))

    def resume(self) -> None:
        check(lib.vorlund_output_set_paused(self._output, 0))

    def stop(self) -> None:
        """Drops what is not yet played, and gives the device back."""
        output, self._output = self._output, ffi.NULL
        if output:
            lib.vorlund_output_close(output)
            lib.vorlund_release(output)

    def __enter__(self) -> "Playback":
        return self

    def __exit__(self, kind: Any, *_: Any) -> None:
        try:
            if kind is None:
                self.wait()
        finally:
            self.stop()

    def __del__(self) -> None:
        if getattr(self, "_output", None):
            self.stop()


def play(sound: Any, rate: Optional[int] = None, *, device: Any = None, volume: float = 1.0, latency: float = 0.0,
         wait: bool = True) -> Optional[Playback]:
    """Plays samples, a source, or a stream from where it is, which is closed then.

    rate is that of samples, and of nothing else. device is a Device, its id, None for the default one, or
    NULL_DEVICE. Samples are copied. With wait=False it returns at once what plays, until that is stopped or freed.
    """
    source = None
    place = ffi.new("vorlund_stream*")
    if isinstance(sound, (np.ndarray, list, tuple)):
        if rate is None:
            raise ValueError("samples need a rate")
        array, frames, channels, sample_format = _arrays.taken(sound)
        if sample_format == lib.ENGINE_DOUBLE:
            array, frames, channels, sample_format = _arrays.taken(array.astype(np.float32))
        form = _format(sample_format, channels, _arrays.count_of(rate, "rate", 1, 2**31 - 1))
    else:
        if rate is not None:
            raise ValueError("a source has a rate of its own")
        source = sound if isinstance(sound, Stream) else Stream(sound, dtype=None)
        form = _format(source._native_format, source._native_channels, source.rate)
    output = _made(device, "output")
    try:
        check(lib.vorlund_output_open(output, form, latency))
        check(lib.vorlund_output_set_volume(output, volume))
        if source is None:
            check(lib.engine_copy_stream(_arrays.pointer(array), array.nbytes, form, place))
        else:
            place[0] = source._take()
        code = lib.vorlund_output_play(output, place[0])
        if code != 0:
            lib.vorlund_release(place[0])
            check(code)
    except BaseException:
        lib.vorlund_release(output)
        raise
    playback = Playback(output, source, form.rate)
    if not wait:
        return playback
    with playback:
        pass
    return None


def rec(seconds: Optional[float] = None, *, frames: Optional[int] = None, rate: int = 48000, channels: int = 1,
        dtype: Any = "float32", device: Any = None, latency: float = 0.0) -> NDArray[Any]:
    """Records so many seconds or frames, and waits for them. Gives frames and channels.

    device is an input's or a loopback's Device, its id, None for the default one, or NULL_DEVICE.
    """
    if (seconds is None) == (frames is None):
        raise ValueError("either seconds or frames are needed")
    count = _arrays.count_of(frames if frames is not None else round((seconds or 0) * rate), "frames", 0, 2**40)
    rate = _arrays.count_of(rate, "rate", 1, 2**31 - 1)
    sample_format = _arrays.format_of(np.dtype(dtype))
    taken_as = lib.VORLUND_SAMPLE_FLOAT if sample_format == lib.ENGINE_DOUBLE else sample_format
    made = np.empty((count, _arrays.count_of(channels, "channels", 1, 8)), dtype)
    source = _made(device, "input")
    stream = ffi.new("vorlund_stream*")
    try:
        check(lib.vorlund_input_open(source, _format(taken_as, channels, rate), latency))
        check(lib.vorlund_input_get_stream(source, stream))
        got = ffi.new("uint64_t*")
        at = 0
        while at < count:
            part = made[at : at + max(1, rate * _SLICE_MS // 1000)]
            check(lib.engine_fill(stream[0], sample_format, channels, channels, _arrays.pointer(part), len(part), got))
            at += got[0]
            if got[0] < len(part):
                raise DeviceError(f"the device was lost after {at} of {count} frames")
    finally:
        lib.vorlund_release(stream[0])
        lib.vorlund_release(source)
    return made
