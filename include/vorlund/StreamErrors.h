/// \file
/// What the stream operations do not tell: why a file could not be opened, whether a stream ended because its
/// file could not be read, and whether everything that was written has reached its file.
///
/// `GetReadError` and what follows it look through filters, decoders and converters, the library's own and
/// those of plug-ins alike: from `stream` along `IInputStreamFilter::GetInputStream`, or
/// `IOutputStreamFilter::GetOutputStream`, to the stream at the end. When that is an open or closed file
/// stream of the library, they speak of its file; of every other stream nothing is known, and there is no
/// error. The thread that uses the streams calls them.
#pragma once

#include <vorlund/Stream.h>

#include <cstdint>

namespace vorlund {

/// Why the system does not open a file. Since version 0.1.
enum TOpenCause {
    /// It has not refused anything.
    OPEN_CAUSE_NONE,
    /// There is nothing of that name, or no folder to put it into.
    OPEN_CAUSE_MISSING,
    /// It is a folder.
    OPEN_CAUSE_FOLDER,
    /// The user may not, or the device is read-only.
    OPEN_CAUSE_NOT_PERMITTED,
    /// Somebody else uses it and shares it with nobody.
    OPEN_CAUSE_BUSY,
    /// It has no positions: a pipe, a terminal, a socket.
    OPEN_CAUSE_NO_POSITIONS,
    /// The name is too long, or none that the system knows.
    OPEN_CAUSE_NAME,
    /// The process or the system has no room for another open file.
    OPEN_CAUSE_TOO_MANY_FILES,
    /// Something else; the code says what.
    OPEN_CAUSE_OTHER,
};

/// A refused opening. Since version 0.1.
struct TOpenFailure {
    TOpenCause cause;
    /// The system's number: `errno`, or `GetLastError` on Windows; 0 when it gave none.
    std::uint32_t code;
};

/// Why the last `Open` of one of the library's file streams that raised `CFileAccessException` in the calling
/// thread did so; it stays until the next one. What opens files for its callers (selectors, `DecodeFile`,
/// resources) counts. Raises nothing. Since version 0.1.
VRL_API TOpenFailure GetOpenFailure();

/// The cause in a few words, without a full stop: "there is no such file". Since version 0.1.
VRL_API const wchar* DescribeOpenCause(TOpenCause cause);

/// The system's number of the first error in reading the file below `stream` since it was opened: a value of
/// `errno`, or of `GetLastError` on Windows. 0 when there was none. `Read` delivers what came before the
/// error and then ends like a stream at the end of its data, so who has read 0 asks here. The number stays
/// when the stream is closed, until it is opened again; a filter that is no longer connected leads nowhere,
/// so ask before, or ask the file stream. Raises nothing of its own. Since version 0.1.
VRL_API std::uint32_t GetReadError(IInputStream& stream);

/// The system's number of the first error in writing the file below `stream` since it was opened, by `Write`,
/// by `Flush`, or by the closing, which itself never raises. 0 when there was none; what is still buffered
/// has not failed yet. The number stays when the stream is closed, until it is opened again. Raises nothing
/// of its own. Since version 0.1.
VRL_API std::uint32_t GetWriteError(IOutputStream& stream);

/// Hands what the file below `stream` has buffered to the system, so that a full device shows now and not at
/// the closing, and before that what the filters of `CreateBufferedOutput` (BufferedStream.h) on the way to
/// it have collected. Does nothing else when there is no open file. Raises `CIOException` "fwrite failed", as
/// `IFileOutputStream::Flush`, and what the streams raise. Since version 0.1.
VRL_API void FlushOutput(IOutputStream& stream);

/// Closes `stream`, and with it the file below, and raises `CIOException` "fwrite failed", as
/// `IFileOutputStream::Write`, when there has been an error in writing the file since it was opened, reported
/// before or not. Raises what `Close` raises. Since version 0.1.
VRL_API void CloseOutput(IOutputStream& stream);

} // namespace vorlund
