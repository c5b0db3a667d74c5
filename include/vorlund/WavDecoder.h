/// \file
/// The decoders of RIFF/WAVE files. The format: RFC 2361 and the "WAVE Audio File Format" description of the
/// Library of Congress (fdd000001).
#pragma once

#include <vorlund/StreamFilter.h>
#include <vorlund/String.h>

namespace vorlund {

class IObjectList;

/// A chunk of a RIFF file.
struct TWavChunkInfo {
    /// The four id bytes, widened; a zero byte ends the id early.
    CString id;
    /// Position of the first data byte in the file. Only the low 32 bits are kept, with their sign: a
    /// position of 2 to 4 GiB is negative, and a greater one is modulo 2^32.
    std::int64_t dataOffset = 0;
    /// The declared size in bytes.
    std::uint64_t size = 0;
};

/// Indexes the top-level chunks of a RIFF/WAVE file and reads one of them at a time: byte 0 is the chunk's
/// first data byte. Chunks follow each other by their declared sizes, without padding to even sizes. One
/// thread at a time.
///
/// \warning `Skip` moves only the connected stream: `Tell`, `Eof` and the limit of `Read` count from where
/// they were. Use `Seek(Tell() + count)` instead.
///
///
/// `Connect` raises `CDataFormatException` "Seek unsupported", "Tell unsupported" and "Invalid header".
/// `GetFormat` is the empty format.
///
/// \code{.cpp}
/// const auto chunks = CreateAs<IWavChunkDecoder>(classid::CWavChunkDecoder);
/// const CInputStreamSelector file(VRL_L("strings.wav"));
/// chunks->Connect(file.GetInputStreamTmp());
/// chunks->SelectChunk(VRL_L("data"));
/// std::printf("%d bytes at %d\n", static_cast<int>(chunks->GetChunkSize()),
///             static_cast<int>(chunks->GetChunkOffset())); // prints 405720 bytes at 44
/// \endcode
class IWavChunkDecoder : public IInputStreamFilter {
public:
    using TBase = IInputStreamFilter;
    static constexpr CId InterfaceId{0x3C718E0B, 0xF5A5403B, 0xBCE6CE73, 0x8A5092CC};

    /// A new list, owned by the caller, of one `IStringObject` per chunk with its id, in file order.
    virtual IObjectList* EnumerateChunks() = 0;
    /// The selected chunk's size, or 0 when none is selected.
    virtual std::uint64_t GetChunkSize() = 0;
    /// The selected chunk's data offset, or -1 when none is selected.
    virtual std::int64_t GetChunkOffset() = 0;
    /// Selects the first chunk with that id (case is ignored) and goes to its first byte; null selects none.
    /// Raises `CObjectNotFoundException` "Stream is not connected" and "Cannot find chunk"; none is then
    /// selected.
    virtual void SelectChunk(const wchar* id) = 0;

protected:
    ~IWavChunkDecoder() = default;
};

/// Decodes RIFF/WAVE files of 8-bit or 16-bit integer PCM: reads the bytes of the "data" chunk, and
/// `GetFormat` is a `TDataFormat_AudioPcm`. `Connect` raises `CDataFormatException` with the reasons of the
/// chunk decoder and "Cannot find fmt chunk", "Invalid fmt chunk size", "Unsupported wave format",
/// "Usupported bits per sample" and "Cannot find data chunk ", and passes `CIOException` on; the decoder is
/// then unconnected. One thread at a time.
///
/// \warning `Skip` moves only the connected stream: `Tell`, `Eof` and the limit of `Read` count from where
/// they were. Use `Seek(Tell() + count)` instead.
///
/// \code{.cpp}
/// const auto sound = CreateAs<IWavDecoder>(classid::CWavDecoder);
/// const CInputStreamSelector file(VRL_L("strings.wav"));
/// sound->Connect(file.GetInputStreamTmp()); // raises CDataFormatException for what it does not read
/// const auto* const format = FormatCast<TDataFormat_AudioPcm>(sound->GetFormat());
/// std::printf("%u channels, %u Hz\n", format->channels, format->samplesPerSec);
/// // prints 2 channels, 22050 Hz
/// \endcode
class IWavDecoder : public IInputStreamFilter {
public:
    using TBase = IInputStreamFilter;
    static constexpr CId InterfaceId{0xC4B0F257, 0xA5504AA6, 0x917BB449, 0x30680C16};

protected:
    ~IWavDecoder() = default;
};

} // namespace vorlund
