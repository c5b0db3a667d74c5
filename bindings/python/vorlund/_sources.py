"""The life of the library, and where bytes come from and go to."""
from __future__ import annotations

import atexit
import io
import os
import threading
from typing import Any, BinaryIO, Callable, Optional, Protocol, Set, Union

from ._errors import check
from ._native import ffi, lib

_opening = threading.Lock()
_is_open = False


def ensure_open() -> None:
    """Opens the library before its first use, with the plug-ins that are installed beside it."""
    global _is_open
    if _is_open:
        return
    with _opening:
        if not _is_open:
            check(lib.vorlund_open(lib.VORLUND_OPEN_INSTALLED_PLUGINS | lib.VORLUND_OPEN_WITHOUT_BOXES))
            atexit.register(lib.vorlund_close)
            _is_open = True


class Readable(Protocol):
    """An object with `read`, and where it has positions, `seek`, `tell` and `seekable`."""

    def read(self, size: int = ..., /) -> bytes: ...


class Writable(Protocol):
    """An object with `write`, and where it has positions, `seek` and `seekable`."""

    def write(self, data: Any, /) -> Any: ...


Path = Union[str, os.PathLike[str], os.PathLike[bytes]]
#: A path; bytes or another buffer with a file in it; or an open file.
Source = Union[Path, bytes, bytearray, memoryview, Readable, BinaryIO]
#: A path, or an open file.
Target = Union[Path, Writable, BinaryIO]

# The objects that streams and sinks of the library use, each through its handle, until they are freed.
_used: Set[Any] = set()


class _Object:
    """An object of Python below a stream or a sink. What it raises is kept, and raised by the call that used it."""

    def __init__(self, file: Any) -> None:
        self.file = file
        self.error: Optional[BaseException] = None
        self.handle = ffi.new_handle(self)
        _used.add(self.handle)

    def forget(self) -> None:
        _used.discard(self.handle)

    def raise_error(self) -> None:
        error, self.error = self.error, None
        if error is not None:
            raise error


def _call(handle: Any, work: Callable[[Any], Any]) -> int:
    target = ffi.from_handle(handle)
    try:
        work(target.file)
    except BaseException as error:  # raised by the call that is under way
        if target.error is None:
            target.error = error
        return 1
    return 0


@ffi.def_extern(error=1)
def python_read(handle: Any, buffer: Any, size: int, count: Any) -> int:
    def read(file: Any) -> None:
        data = file.read(size)
        if data is None:
            raise BlockingIOError("the file has no bytes yet, and does not wait for them")
        if isinstance(data, str):
            raise TypeError("the file is open for text, not for bytes")
        if len(data) > size:
            raise ValueError("the file gave more bytes than were asked for")
        ffi.buffer(buffer, size)[: len(data)] = data
        count[0] = len(data)

    return _call(handle, read)


@ffi.def_extern(error=1)
def python_seek(handle: Any, position: Any) -> int:
    return _call(handle, lambda file: file.seek(position[0]))


@ffi.def_extern(error=1)
def python_length(handle: Any, length: Any) -> int:
    def measure(file: Any) -> None:
        at = file.tell()
        file.seek(0, io.SEEK_END)
        length[0] = file.tell()
        file.seek(at)

    return _call(handle, measure)


@ffi.def_extern(error=1)
def python_write(handle: Any, data: Any, count: int) -> int:
    def write(file: Any) -> None:
        view = memoryview(ffi.buffer(data, count)).toreadonly()
        # Files without a buffer may take a part.
        while len(view):
            taken = file.write(bytes(view))
            if taken is None:
                return
            if taken <= 0:
                raise BlockingIOError("the file took no bytes")
            view = view[taken:]

    return _call(handle, write)


@ffi.def_extern(error=1)
def python_flush(handle: Any) -> int:
    return _call(handle, lambda file: getattr(file, "flush", lambda: None)())


@ffi.def_extern()
def python_release(handle: Any) -> None:
    _used.discard(handle)


def is_path(value: Any) -> bool:
    return isinstance(value, str) or isinstance(value, os.PathLike)


def _can_seek(file: Any) -> bool:
    seekable = getattr(file, "seekable", None)
    return bool(seekable()) if callable(seekable) else hasattr(file, "seek") and hasattr(file, "tell")


class _Place:
    """What sources and targets share: a record for the native part and what must live as long as that."""

    record: Any
    object: Optional[_Object] = None
    kept: Any = None

    @property
    def failed(self) -> bool:
        """Whether the object has raised something."""
        return self.object is not None and self.object.error is not None

    def raise_error(self) -> None:
        """Raises what the object has raised."""
        if self.object is not None:
            self.object.raise_error()

    def check(self, code: int, report: Any = None) -> None:
        """Raises what the object has raised, or what the code says."""
        if self.failed:
            # What the library made of it tells less.
            if report is not None and report[0]:
                lib.vorlund_release(report[0])
                report[0] = ffi.NULL
            self.raise_error()
        check(code, report)

    def forget(self) -> None:
        """After the last stream over it is gone."""
        if self.object is not None:
            self.object.forget()

    def __enter__(self) -> Any:
        return self

    def __exit__(self, *_: Any) -> None:
        self.forget()


class SourcePlace(_Place):
    """A source for the native part."""

    def __init__(self, source: Source) -> None:
        if not _is_open:
            ensure_open()
        self.record = ffi.new("engine_source*")
        if is_path(source):
            self.kept = ffi.new("char[]", os.fsencode(source))  # type: ignore[arg-type]
            self.record.path = self.kept
            return
        if hasattr(source, "read"):
            if _can_seek(source):
                self.object = _Object(source)
                self.record.object = self.object.handle
                return
            # Decoders go back and forth.
            source = source.read()  # type: ignore[union-attr]
        try:
            self.kept = ffi.from_buffer(source)
        except TypeError:
            raise TypeError(f"a path, a buffer of bytes or a file is needed, not {type(source).__name__}") from None
        self.record.bytes = self.kept
        self.record.count = len(self.kept)


class TargetPlace(_Place):
    """A target for the native part."""

    def __init__(self, target: Target) -> None:
        if not _is_open:
            ensure_open()
        self.record = ffi.new("engine_target*")
        if is_path(target):
            self.kept = ffi.new("char[]", os.fsencode(target))  # type: ignore[arg-type]
            self.record.path = self.kept
        elif hasattr(target, "write"):
            if not _can_seek(target):
                raise io.UnsupportedOperation("sound files are written into files that have positions")
            self.object = _Object(target)
            self.record.object = self.object.handle
        else:
            raise TypeError(f"a path or a file is needed, not {type(target).__name__}")
