/// \file
/// Filters that change the sample format or the number of channels of PCM audio.
///
/// Both connect alike: the codec class store first decodes the given stream into PCM, whatever it is, and
/// `GetInputStream` is that decoded stream. `Connect` passes the failures of the search on ("Cannot decode
/// stream") and raises `CDataFormatException` when what comes out of it is no 32-byte `TDataFormat_AudioPcm`
/// record; the converter is then unconnected. What the format says when the stream is connected holds for the
/// whole connection.
///
/// `GetFormat` is always a `TDataFormat_AudioPcm`, at first 16-bit stereo at 44,100 Hz; it outlives
/// disconnecting and failed connections. Until the target is set, the converters follow their source and hand
/// its bytes through.
///
/// Lengths, positions and counts are rescaled in unsigned 64-bit arithmetic that multiplies first, wraps, and
/// gives 0 where it would have to divide by 0. Without a stream `Seek`, `Tell`, `Flush` and `GetLength` raise
/// `COperationNotSupportedException`, `Read` and `Skip` `CIOException`, all of them "Stream is not
/// connected".
///
/// A `Read` that converts takes at most `kMaxPcmConverterInput` bytes from its input and allocates nothing,
/// so callers loop. It asks for whole frames as long as they fit; of an input that stops inside a frame, the
/// last, partial frame counts in the result while its bytes in the buffer stay as they were. Where that
/// matters, ask for counts whose input stays under `kMaxPcmConverterInput` bytes. Before `Eof`, a result of 0
/// means that the buffer holds no frame.
///
/// One thread uses a converter at a time.
#pragma once

#include <vorlund/StreamFilter.h>

#include <cstdint>

namespace vorlund {

/// The most bytes that one `Read` of a converter takes from its input when it converts, at any ratio.
constexpr std::uint32_t kMaxPcmConverterInput = 1024;

/// Delivers PCM audio in another sample format, with the channels and the rate of its source.
///
/// Integers become wider by zeros below and narrower by dropping what is below; 8-bit samples are unsigned
/// around 128. Integers become floats by dividing by 128, 32768 or 2^31. Floats are scaled in double
/// precision, (s + 1.0) x 127.5 for 8, s x 32767.0 for 16 and s x 214743648.0 for 32 bits, and truncated to a
/// 32-bit integer whose low bits are the sample: nothing is clipped. Products beyond 32 bits, and what is not
/// a number, count as -2^31 on every system. The factor for 32 bits is meant: full scale is about a tenth of
/// what 32 bits hold.
///
/// `Connect` raises `CDataFormatException` "Unsupported format in decoded stream".
///
/// \code{.cpp}
/// const auto floats = CreateAs<IAudioPcmSampleFormatConverter>(classid::CAudioPcmSampleFormatConverter);
/// floats->SetSampleFormat(SAMPLE_FORMAT_FLOAT);
/// const CInputStreamSelector file(VRL_L("strings.wav"));
/// floats->Connect(file.GetInputStreamTmp()); // decodes the file first
/// std::printf("%d bytes\n", static_cast<int>(floats->GetLength())); // prints 811440 bytes
/// \endcode
class IAudioPcmSampleFormatConverter : public IInputStreamFilter {
public:
    using TBase = IInputStreamFilter;
    static constexpr CId InterfaceId{0xAC5A56E3, 0x8AF34504, 0xA83BB959, 0xAE09FCC9};

    /// The sample format to deliver, a `TSampleFormat`; from or to any other code bytes pass unchanged.
    /// Returns the converter itself, without a reference.
    ///
    /// Call it before `Connect`, which chooses the conversion: on a connected converter `GetFormat` and the
    /// rescaling follow at once, but `Read` goes on as before until the next `Connect`.
    virtual IAudioPcmSampleFormatConverter* SetSampleFormat(std::uint32_t sampleFormat) = 0;

protected:
    ~IAudioPcmSampleFormatConverter() = default;
};

/// Delivers PCM audio with 1, 2 or 6 channels, in the sample format and at the rate of its source.
///
/// The channels of 6 are front left, front right, centre, low-frequency, rear left, rear right. Mono goes to
/// every channel; stereo goes to the front and leaves the others silent. 6 become mono as the sum of their
/// sixths, stereo as the sums of the quarters of one side with centre and low-frequency; stereo becomes mono
/// as the sum of the halves. Each term is divided before the sum, rounding toward zero where samples are
/// integers, so nothing overflows and nothing is clipped. From other numbers of channels bytes pass
/// unchanged.
///
/// `Connect` raises `CDataFormatException` "Unsupported data format after decoding".
///
/// \code{.cpp}
/// const auto mono = CreateAs<IAudioPcmChannelNumberConverter>(classid::CAudioPcmChannelNumberConverter);
/// mono->SetNumChannels(1);
/// const CInputStreamSelector file(VRL_L("strings.wav"));
/// mono->Connect(file.GetInputStreamTmp());
/// std::printf("%d bytes\n", static_cast<int>(mono->GetLength())); // prints 202860 bytes
/// \endcode
class IAudioPcmChannelNumberConverter : public IInputStreamFilter {
public:
    using TBase = IInputStreamFilter;
    static constexpr CId InterfaceId{0x17887FAA, 0xA4B4425B, 0x93A9364C, 0x34D35B81};

    /// The number of channels to deliver, at once also on a connected converter. Raises
    /// `CInvalidParameterException` "Channel amount must be 1, 2 or 6" and then changes nothing.
    virtual void SetNumChannels(std::uint32_t count) = 0;

protected:
    ~IAudioPcmChannelNumberConverter() = default;
};

/// Fills `buffer` with what `stream` delivers, in one step of any size: a converter of this file takes its
/// input in large pieces, and out of a memory stream, a resource, a file or a WAV decoder without a copy.
/// Whole frames only, also where a `Read` would end inside one, so the result is what `Read` delivers for
/// counts on whole frames. Of an input that ends inside a frame, the part is left out. Any other stream, and
/// a converter that hands its bytes through, is read until the buffer is full.
///
/// \param stream  any; nobody else uses it meanwhile
/// \param buffer  room for `size` bytes; null raises as `Read` does
/// \param size  in bytes; what is over a whole number of frames is not used
/// \return the bytes that were delivered: less than the whole frames of `size` only at the end, or when the
/// stream
///         below has used the converter meanwhile; 0 also for frames of more than 8,192 bytes
///
/// Raises what `Read` raises; what was delivered before is lost then. Allocates nothing. One thread uses a
/// stream at a time. Since version 0.1.
VRL_API std::uint64_t ReadFrames(IInputStream& stream, void* buffer, std::uint64_t size);

} // namespace vorlund
