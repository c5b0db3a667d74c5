/// \file
/// What the stream operations do not tell: whether a stream ended because its file could not be read, and
/// whether everything that was written has reached its file.
///
/// The functions look through filters, decoders and converters, the library's own and those of plug-ins
/// alike: from `stream` along `IInputStreamFilter::GetInputStream`, or
/// `IOutputStreamFilter::GetOutputStream`, to the stream at the end. When that is an open or closed file
/// stream of the library, they speak of its file; of every other stream nothing is known, and there is no
/// error. The thread that uses the streams calls them.
#pragma once

#include <vorlund/Stream.h>

#include <cstdint>

namespace vorlund {

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
/// the closing. Does nothing when there is no open file. Raises `CIOException` "fwrite failed", as
/// `IFileOutputStream::Flush`. Since version 0.1.
VRL_API void FlushOutput(IOutputStream& stream);

/// Closes `stream`, and with it the file below, and raises `CIOException` "fwrite failed", as
/// `IFileOutputStream::Write`, when there has been an error in writing the file since it was opened, reported
/// before or not. Raises what `Close` raises. Since version 0.1.
VRL_API void CloseOutput(IOutputStream& stream);

} // namespace vorlund
