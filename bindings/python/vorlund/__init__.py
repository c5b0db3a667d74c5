"""Reads, writes, converts, plays and records sound.

    samples, rate = vorlund.read("song.flac")

Sources are paths, bytes and other buffers with a file in them, and open files; targets are paths and open files.
Samples are arrays of numpy, frames and channels. Calls hold no lock of the interpreter while they work, so threads
decode at the same time.
"""
from ._devices import NULL_DEVICE, Device, Playback, devices, play, rec
from ._errors import (
    ArgumentError,
    BusyError,
    ClosedError,
    DeviceError,
    Error,
    FileError,
    FileMissingError,
    FormatError,
    OutOfMemoryError,
    PluginMissingError,
    Report,
    ReportEntry,
    UnsupportedError,
)
from ._measuring import Levels, measure
from ._native import ffi as _ffi
from ._native import lib as _lib
from ._reading import Info, Sound, Stream, blocks, info, open, peaks, read
from ._writing import KINDS, Writer, convert, create, resample, write

__version__ = "0.1.0"


def library_version() -> str:
    """The version of the library, for example "0.1.0"."""
    number = _ffi.new("int32_t*")
    _lib.vorlund_version(number, _ffi.NULL)
    return f"{number[0] // 1000000}.{number[0] // 1000 % 1000}.{number[0] % 1000}"


def handle_count() -> int:
    """How many streams, writers and so on are alive in the library, to find those that a program forgets."""
    count = _ffi.new("uint32_t*")
    _lib.vorlund_handle_count(count)
    return count[0]


__all__ = [
    "ArgumentError",
    "BusyError",
    "ClosedError",
    "Device",
    "DeviceError",
    "Error",
    "FileError",
    "FileMissingError",
    "FormatError",
    "Info",
    "KINDS",
    "Levels",
    "NULL_DEVICE",
    "OutOfMemoryError",
    "Playback",
    "PluginMissingError",
    "Report",
    "ReportEntry",
    "Sound",
    "Stream",
    "UnsupportedError",
    "Writer",
    "blocks",
    "convert",
    "create",
    "devices",
    "handle_count",
    "info",
    "library_version",
    "measure",
    "open",
    "peaks",
    "play",
    "read",
    "rec",
    "resample",
    "write",
]
