"""Failures as exceptions, and reports of searches for decoders."""
from __future__ import annotations

import errno
from dataclasses import dataclass
from typing import Any, Callable, Dict, Optional, Tuple

from ._native import ffi, lib

_OUTCOMES = ("connected", "refused", "unreadable", "raised", "not created", "forbidden", "died")


@dataclass(frozen=True)
class ReportEntry:
    """What came of one decoder."""

    #: The name of its class.
    decoder: str
    #: "connected", "refused", "unreadable", "raised", "not created", "forbidden" or "died".
    outcome: str
    #: How many decoders are below it; 0 directly over the source.
    depth: int
    #: Why it did not take its input; empty when it did.
    reason: str
    #: The kind of file that it has recognised; may be empty.
    container: str
    #: The values that it objected to; may be empty.
    values: str
    #: What else it has noted; may be empty.
    remarks: str
    #: How many bytes it was given.
    bytes_read: int
    #: How long it took.
    seconds: float


@dataclass(frozen=True)
class Report:
    """What a search for decoders has tried. `str` gives a line for each entry."""

    entries: Tuple[ReportEntry, ...]
    #: Why nothing decodes the source, one sentence; empty when it is decoded.
    explanation: str
    #: The kind of file, when nothing decodes it and it is known.
    container: str
    #: The plug-in that would decode it; empty when none is known.
    plugin: str
    #: A line for each entry.
    text: str

    def __str__(self) -> str:
        return self.text


class Error(Exception):
    """A failure of the library. All others are kinds of it."""

    #: The number of the failure, VORLUND_ERROR_ of the C interface.
    code: int = 0
    #: The type of the exception inside the library, and what raised it.
    type: str = ""
    method: str = ""
    #: Why, one sentence.
    reason: str = ""
    #: The system's number and its cause in a few words; 0 and empty when the system had no part in it.
    system_code: int = 0
    cause: str = ""
    #: What was tried to decode the source; None where nothing was decoded.
    report: Optional[Report] = None

    def __reduce__(self) -> Any:
        return _rebuild, (type(self), str(self), dict(self.__dict__))

    def __str__(self) -> str:
        return str(self.args[0]) if self.args else ""


def _rebuild(kind: type, text: str, values: Dict[str, Any]) -> Error:
    made = kind(text)
    made.__dict__.update(values)
    if isinstance(made, OSError):
        made.errno = values.get("system_code", 0)
    return made


class FormatError(Error, ValueError):
    """No decoder takes the source, or what is in it is damaged; `report` says why."""


class FileError(Error, OSError):
    """A file cannot be opened, read or written. `errno` is the system's number."""


class FileMissingError(FileError, FileNotFoundError):
    """There is no such file."""


class PluginMissingError(Error):
    """A plug-in is needed that is not installed."""


class UnsupportedError(Error, ValueError):
    """The source, the target or the device cannot do this."""


class ArgumentError(Error, ValueError):
    """A value is out of its range."""


class BusyError(Error, RuntimeError):
    """The stream is inside another operation, of another thread for example."""


class ClosedError(Error, ValueError):
    """The stream, the writer or the library is closed."""


class OutOfMemoryError(Error, MemoryError):
    """There is not enough memory."""


class DeviceError(Error):
    """A sound device failed, or there is none."""


_KINDS = {
    lib.VORLUND_ERROR_CLASS_NOT_FOUND: PluginMissingError,
    lib.VORLUND_ERROR_OUT_OF_MEMORY: OutOfMemoryError,
    lib.VORLUND_ERROR_FILE_ACCESS: FileError,
    lib.VORLUND_ERROR_IO: FileError,
    lib.VORLUND_ERROR_DATA_FORMAT: FormatError,
    lib.VORLUND_ERROR_DATA_NOT_SUPPORTED: UnsupportedError,
    lib.VORLUND_ERROR_NOT_SUPPORTED: UnsupportedError,
    lib.VORLUND_ERROR_INVALID_PARAMETER: ArgumentError,
    lib.VORLUND_ERROR_ARGUMENT: ArgumentError,
    lib.VORLUND_ERROR_BUSY: BusyError,
    lib.VORLUND_ERROR_HANDLE: ClosedError,
    lib.VORLUND_ERROR_NOT_OPEN: ClosedError,
    lib.VORLUND_ERROR_DEVICE_FAILED: DeviceError,
}


def text_of(function: Callable[..., int], *arguments: Any) -> str:
    """A text that a function of the C interface gives."""
    length = ffi.new("uint32_t*")
    if function(*arguments, ffi.NULL, 0, length) != 0:
        return ""
    room = length[0] + 1
    buffer = ffi.new("char[]", room)
    if function(*arguments, buffer, room, length) != 0:
        return ""
    return ffi.string(buffer).decode("utf-8", "replace")


def take_report(place: Any) -> Optional[Report]:
    """The report at `place` as data; its handle is freed."""
    handle = place[0]
    if not handle:
        return None
    place[0] = ffi.NULL
    try:
        count = ffi.new("uint32_t*")
        lib.vorlund_report_count(handle, count)
        return Report(
            tuple(_entry(handle, index) for index in range(count[0])),
            *(text_of(lib.vorlund_report_text, handle, field) for field in range(4)),
        )
    finally:
        lib.vorlund_release(handle)


def _entry(handle: Any, index: int) -> ReportEntry:
    entry = ffi.new("vorlund_report_entry*")
    entry.size = ffi.sizeof("vorlund_report_entry")
    lib.vorlund_report_get_entry(handle, index, entry)

    def text(field: int) -> str:
        return text_of(lib.vorlund_report_entry_text, handle, index, field)

    outcome = _OUTCOMES[entry.outcome] if entry.outcome < len(_OUTCOMES) else str(entry.outcome)
    return ReportEntry(text(0), outcome, entry.depth, text(2), text(3), text(4), text(5), entry.bytes_read, entry.seconds)


def _decoded(text: Any) -> str:
    return ffi.string(text).decode("utf-8", "replace") if text else ""


def failure(code: int) -> Error:
    """The exception for a code that the calling thread just got."""
    record = ffi.new("vorlund_error*")
    record.size = ffi.sizeof("vorlund_error")
    kind = _KINDS.get(code, Error)
    values: Dict[str, Any] = {"code": code}
    # What the native part refuses by itself leaves no record.
    if lib.vorlund_last_error(record) == 0 and record.code == code:
        values.update(
            type=_decoded(record.type),
            method=_decoded(record.method),
            reason=_decoded(record.reason),
            cause=_decoded(record.cause),
            system_code=record.system_code,
        )
    if kind is FileError and values.get("system_code") == errno.ENOENT:
        kind = FileMissingError
    text = values.get("reason") or (kind.__doc__ or "").split("\n")[0]
    cause = values.get("cause")
    if cause and cause not in text:
        text += f": {cause}"
    return _rebuild(kind, text, values)


def check(code: int, report: Any = None) -> None:
    """Raises what a code says, with the report at the place `report`, whose handle is freed in any case."""
    if code != 0:
        made = failure(code)
        # The texts of the record end with the next failure, so the report is read after it.
        found = take_report(report) if report is not None else None
        if found:
            made = _rebuild(type(made), found.explanation or str(made), dict(made.__dict__, report=found))
        raise made
    if report is not None and report[0]:
        lib.vorlund_release(report[0])
        report[0] = ffi.NULL
