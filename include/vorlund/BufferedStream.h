/// \file
/// Filters that collect small reads and writes into blocks. Put them between a stream and what reads or
/// writes many small values, such as `CVarReader`, `CVarWriter` and `CTextWriter`: the stream below then sees
/// one call for each block, and with it one lock, one system call or one conversion.
#pragma once

#include <vorlund/StreamFilter.h>

#include <cstddef>

namespace vorlund {

/// Bytes of a block, unless another size is asked for. Since version 0.1.
inline constexpr std::size_t kDefaultBlockSize = 65536;

/// An input filter that reads blocks ahead. Its bytes, format, length and positions are those of the
/// connected stream.
///
/// `Read` fills the buffer as long as the stream delivers; more than a block goes to the buffer directly.
/// What the stream raises behind bytes that were already delivered is raised by the next `Read`. `Skip`
/// moves, by a seek where the stream has positions, else by reading.
///
/// The stream is ahead of the filter. `Flush` sets a stream with positions back to where the filter is and
/// then calls the stream's `Flush`; so does nothing else: `Disconnect` and `Connect` drop what was read
/// ahead. An error in reading a file is told by `GetReadError` (StreamErrors.h) of the filter.
///
/// The stream may use the filter from inside its own operations: inside its `Read` it finds nothing read
/// ahead. When it seeks, flushes or connects the filter there, the bytes of that read are dropped.
///
/// \param blockSize  bytes that are read ahead at most; below 16 counts as 16
/// \return a new filter with one reference for the caller
///
/// Raises `std::bad_alloc`, and `CBugException` "Not initialized" while the library is closed. One thread at
/// a time. Since version 0.1.
VRL_API IInputStreamFilter* CreateBufferedInput(std::size_t blockSize = kDefaultBlockSize);

/// An output filter that collects what is written into blocks. A block goes to the stream when it is full,
/// and with `Flush`, `Seek`, `GetLength`, `SetFormat`, `Close`, `Disconnect`, `Connect` and the last
/// `Release`. A write of a block or more goes there directly, behind what was collected. `Tell` counts what
/// was collected.
///
/// What the stream raises for a block passes on from any of these operations but `Release`, which raises
/// nothing: end with `Close` or `CloseOutput` (StreamErrors.h), or with `Flush` where the stream goes on. A
/// block that the stream refused is kept and tried again with the next of them, so a stream that took a part
/// of it before gets that part twice; `Close`, `Disconnect` and `Connect` drop it, and close or release the
/// stream even when they raise. `FlushOutput` hands the blocks of these filters on, too.
///
/// The stream may use the filter from inside its own operations: inside its `Write` the filter collects
/// nothing and passes on what is written.
///
/// \param blockSize  bytes that are collected; below 16 counts as 16
/// \return a new filter with one reference for the caller
///
/// Raises `std::bad_alloc`, and `CBugException` "Not initialized" while the library is closed. One thread at
/// a time. Since version 0.1.
VRL_API IOutputStreamFilter* CreateBufferedOutput(std::size_t blockSize = kDefaultBlockSize);

} // namespace vorlund
