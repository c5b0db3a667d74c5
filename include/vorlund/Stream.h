/// \file
/// The stream interfaces. Positions and lengths are signed 64-bit byte counts from the start of the stream;
/// sizes and counts are unsigned 64-bit.
///
/// Every stream follows the same rules: an argument check comes before a state check; failures are
/// exceptions; one thread uses a stream at a time. `CInputStreamImpl` and `COutputStreamImpl` (StreamImpl.h)
/// hold the defaults.
#pragma once

#include <vorlund/Object.h>

#include <cstdint>

namespace vorlund {

class IMediaSample;
struct TDataFormat;

/// Bits of `IStream::GetCapabilities`.
enum TStreamCapability : std::uint32_t {
    STREAM_CAPABILITY_SEEK = 1, ///< positions can be set
    STREAM_CAPABILITY_TELL = 2, ///< positions can be asked for
    STREAM_CAPABILITY_READ = 4, ///< bytes can be read
    STREAM_CAPABILITY_WRITE = 8 ///< bytes can be written
};

/// A sequence of bytes with a position.
class IStream : public IObject {
public:
    using TBase = IObject;
    static constexpr CId InterfaceId{0x22C30DFF, 0xBD4042C7, 0xAAC861B7, 0xBEB00D39};

    /// Releases what the stream holds; nothing happens when it is closed.
    virtual void Close() = 0;
    /// `TStreamCapability` bits.
    virtual std::uint32_t GetCapabilities() = 0;
    /// Length in bytes. Raises `COperationNotSupportedException` where the stream has none.
    virtual std::int64_t GetLength() = 0;
    /// Writes out what the stream has buffered. Where there is nothing to write, it does nothing or raises
    /// `COperationNotSupportedException`, by class.
    virtual void Flush() = 0;
    /// Sets the position, in bytes from the start. Raises `COperationNotSupportedException` where the stream
    /// has no positions.
    virtual void Seek(std::int64_t position) = 0;
    /// The position, in bytes from the start. Raises `COperationNotSupportedException` where the stream has
    /// none.
    virtual std::int64_t Tell() = 0;

protected:
    ~IStream() = default;
};

/// A stream that is read.
///
/// \code{.cpp}
/// const CInputStreamSelector file(VRL_L("strings.wav"));
/// IInputStream& stream = *file.GetInputStreamTmp();
/// char magic[4];
/// const std::uint64_t count = stream.Read(magic, 4); // may be less: only 0 is the end
/// std::printf("%.*s, then at %d\n", static_cast<int>(count), magic, static_cast<int>(stream.Tell()));
/// // prints RIFF, then at 4
/// \endcode
class IInputStream : public IStream {
public:
    using TBase = IStream;
    static constexpr CId InterfaceId{0xE3105CB8, 0xCEBD4B10, 0x829C75B7, 0x76ACBBB3};

    /// True when no further byte can be read.
    virtual bool Eof() = 0;
    /// What the bytes mean; valid while the stream lives and its format is not changed.
    virtual const TDataFormat& GetFormat() = 0;
    /// Reads into a media sample. No stream of this library does: raises `CNullPtrException` "sample is
    /// NULL", else "Media samples are not supported" (`CInvalidStateException` or
    /// `CInvalidParameterException`, by class).
    virtual void Read(IMediaSample* sample) = 0;
    /// Reads at most `size` bytes into `buffer`; returns the number of bytes read, 0 at the end and behind
    /// an error (`GetReadError` tells which). Raises `CNullPtrException` "buffer is NULL", whatever the size.
    virtual std::uint64_t Read(void* buffer, std::uint64_t size) = 0;
    /// False in every class of the library.
    virtual bool SupportsMediaSamples(std::uint32_t argument) = 0;
    /// Moves forward by `count` bytes without delivering them.
    ///
    /// \warning Several streams of the library do nothing here, or move without `Tell` following, as their
    /// headers say. `Seek(Tell() + count)` moves every stream that can seek.
    virtual void Skip(std::uint64_t count) = 0;

protected:
    ~IInputStream() = default;
};

/// A stream that is written.
///
/// \code{.cpp}
/// const auto memory = CRefPtr<IMemoryOutputStream>::Adopt(CreateMemoryOutput());
/// memory->Write("hello", 5);
/// memory->Seek(1);
/// memory->Write("a", 1);
/// std::printf("%.5s\n", static_cast<const char*>(memory->GetData())); // prints hallo
/// \endcode
class IOutputStream : public IStream {
public:
    using TBase = IStream;
    static constexpr CId InterfaceId{0x52EA12BA, 0x7E5D408D, 0x8E0B8BF7, 0x6DA4B54A};

    /// Announces what the bytes to be written mean. The record need not live longer than the call.
    virtual void SetFormat(const TDataFormat* format) = 0;
    /// Writes all `size` bytes of `buffer`. Raises `CIOException` when the stream cannot take them.
    virtual void Write(const void* buffer, std::uint64_t size) = 0;

protected:
    ~IOutputStream() = default;
};

} // namespace vorlund
