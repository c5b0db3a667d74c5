/// \file
/// Conversion of PCM audio in plain buffers, and in a stream, at true scale.
///
/// There are two arithmetics. `ConvertSamples` and `MixChannels` have that of the converters in
/// AudioPcmConverters.h: the same routines, which clip nothing and take a tenth of full scale from floats to
/// 32 bits. `ConvertAudio` and `CreateAudioConverter` have true scale and clip:
///
/// - A sample is a real number with full scale at 1: (s - 128) / 128 for 8 bits, s / 2^15, s / 2^23, s /
/// 2^31, and floats as
///   they are. Mixes add in double precision, in the order of the input's channels.
/// - For an integer of N bits the number is scaled by 2^(N - 1); what dither gives and one half are added, in
/// double
///   precision, and the result is rounded down. What is beyond the range becomes its end: 1.0 is 32767 in 16
///   bits, -1.0 is -32768, and so are infinities. What is not a number becomes silence.
/// - For a float the number is rounded to single precision. It may be beyond full scale, unless floats are
/// clipped too.
///
/// The same input gives the same bits on every system, and however it is divided into calls. Buffers may have
/// any alignment and must not overlap. Integers have the low byte first where the system has.
#pragma once

#include <vorlund/ChannelMix.h>
#include <vorlund/DataFormat.h>

#include <cstddef>
#include <cstdint>

namespace vorlund {

class IInputStreamFilter;

/// Sample formats of plain buffers: those of `TSampleFormat` by the same numbers, and one that format records
/// do not have. Since version 0.1.
enum TBufferFormat : std::uint32_t {
    BUFFER_FORMAT_8BIT = SAMPLE_FORMAT_8BIT,
    BUFFER_FORMAT_16BIT = SAMPLE_FORMAT_16BIT,
    BUFFER_FORMAT_32BIT = SAMPLE_FORMAT_32BIT,
    BUFFER_FORMAT_FLOAT = SAMPLE_FORMAT_FLOAT,
    /// Signed, packed in three bytes, the low byte first.
    BUFFER_FORMAT_24BIT = 4
};

/// Bytes per sample: 1, 2, 4, 4 and 3, and 0 for an unknown format. Any thread. Since version 0.1.
VRL_API std::uint32_t GetBufferSampleSize(std::uint32_t format) noexcept;

/// Converts samples as `IAudioPcmSampleFormatConverter` does, with the same routines. 24 bits are the upper
/// three bytes of what 32 bits would be, in and out; equal formats are copied.
///
/// \param destination, source  room for `count` samples each; null only with a count of 0
/// \param to, from  a `TBufferFormat`
/// \param count  samples, of all channels together
///
/// Raises `CNullPtrException` "buffer is NULL", `CInvalidParameterException` "Unknown sample format". Any
/// thread. Since version 0.1.
VRL_API void ConvertSamples(void* destination, std::uint32_t to, const void* source, std::uint32_t from,
                            std::size_t count);

/// Converts samples to double precision with full scale at 1, which loses nothing: (s - 128) / 128 for 8
/// bits, s / 2^15, s / 2^23, s / 2^31, and floats as they are.
///
/// \param destination, source  room for `count` samples each; null only with a count of 0
/// \param from  a `TBufferFormat`
/// \param count  samples, of all channels together
///
/// Raises `CNullPtrException` "buffer is NULL", `CInvalidParameterException` "Unknown sample format". Any
/// thread. Since version 0.1.
VRL_API void ConvertToDoubles(double* destination, const void* source, std::uint32_t from, std::size_t count);

/// Mixes frames as `IAudioPcmChannelNumberConverter` does, with the same routines, 24 bits as 32; equal
/// numbers of channels are copied.
///
/// \param destination, source  room for `frames` frames each; null only with a count of 0
/// \param to, from  numbers of channels: 1, 2 or 6, or two equal ones
/// \param format  of both, a `TBufferFormat`
/// \param frames  samples of one channel
///
/// Raises `CNullPtrException` "buffer is NULL", `CInvalidParameterException` "Unknown sample format" and
/// "Channel amount must be 1, 2 or 6". Any thread. Since version 0.1.
VRL_API void MixChannels(void* destination, std::uint32_t to, const void* source, std::uint32_t from,
                         std::uint32_t format, std::size_t frames);

/// What is added before samples are rounded. Since version 0.1.
enum TDither : std::uint32_t {
    DITHER_NONE = 0,
    /// Noise of triangular distribution between -1 and 1 steps of the result, by which rounding is no
    /// distortion any more. Only integers get it, and only where something is lost: where their source has
    /// more bits, is a float, or is mixed with weights other than 0 and a single 1. The noise is a function
    /// of the seed and the number of the sample, the same on every system.
    DITHER_TRIANGULAR = 1
};

/// A conversion at true scale. Since version 0.1.
struct TAudioConversion {
    /// Each a `TBufferFormat`.
    std::uint32_t from = BUFFER_FORMAT_FLOAT;
    std::uint32_t to = BUFFER_FORMAT_16BIT;
    /// Of both sides, not 0; nothing where there is a matrix.
    std::uint32_t channels = 1;
    /// Null for no mix.
    const TMixMatrix* mix = nullptr;
    /// Clips floats as well: to -1.0 and 1.0, and what is not a number to 0.
    bool clipsFloats = false;
    TDither dither = DITHER_NONE;
    std::uint64_t seed = 0;
};

/// Converts and mixes frames at true scale, by the rules at the head of this file.
///
/// \param destination, source  room for `frames` frames each; null only with a count of 0
/// \param frames  of any number; nothing is allocated
/// \param conversion  from what to what; read during the call only
/// \param firstFrame  which frame of the whole sound the first one is; only dither asks for it
/// \return how many samples of the result were clipped: those beyond -1.0 or 1.0 before dither, and those
/// that were no
///         number. Exactly 1.0 does not count.
///
/// Raises `CNullPtrException` "buffer is NULL", `CInvalidParameterException` "Unknown sample format", "There
/// are no channels" and "The matrix must have 1 to 8 channels and finite weights". Any thread. Since version
/// 0.1.
VRL_API std::uint64_t ConvertAudio(void* destination, const void* source, std::size_t frames,
                                   const TAudioConversion& conversion, std::uint64_t firstFrame = 0);

/// What a converting filter delivers. Since version 0.1.
struct TAudioTarget {
    /// A `TSampleFormat`.
    std::uint32_t sampleFormat = SAMPLE_FORMAT_FLOAT;
    /// Layout of the result; 0 for the channels of the source.
    std::uint32_t layout = 0;
    /// Layout of sources; one with another number of channels, and 0, mean `GetDefaultLayout`.
    std::uint32_t sourceLayout = 0;
    TMixLevel mixLevel = MIX_LEVEL_STANDARD;
    /// In place of the layouts, for sources with its number of channels; copied. Null for none.
    const TMixMatrix* mix = nullptr;
    bool clipsFloats = false;
    TDither dither = DITHER_NONE;
    std::uint64_t seed = 0;
};

/// A filter that delivers PCM audio at true scale. `Connect` has the codec class store decode the given
/// stream into PCM, as the other converters do, and goes to its beginning where it has positions;
/// `GetInputStream` is that decoded stream.
///
/// `Read` delivers any number of bytes, also parts of frames, and the same bytes however they are asked for;
/// it fills the buffer as long as the source delivers. Of a source that ends inside a frame the part is left
/// out. `Seek` and `Tell` count bytes of the result and need a source that can seek; positions behind the end
/// are the end, also for `Skip`.
///
/// \return a new filter with one reference for the caller
///
/// Raises `CInvalidParameterException` "Unknown sample format", "A layout must have 1 to 8 channels" and "The
/// matrix must have 1 to 8 channels and finite weights". `Connect` raises `CDataFormatException` "Unsupported
/// format in decoded stream", also for a source whose number of channels cannot be mixed, and `Seek`
/// `CIOException` "Position is negative". One thread at a time. Since version 0.1.
///
/// \code{.cpp}
/// TAudioTarget target;
/// target.sampleFormat = SAMPLE_FORMAT_16BIT;
/// target.layout = GetDefaultLayout(1); // mono
/// const auto mono = CRefPtr<IInputStreamFilter>::Adopt(CreateAudioConverter(target));
/// const CInputStreamSelector file(VRL_L("strings.wav"));
/// mono->Connect(file.GetInputStreamTmp()); // decodes the file first
/// std::printf("%d bytes\n", static_cast<int>(mono->GetLength())); // prints 202860 bytes
/// \endcode
VRL_API IInputStreamFilter* CreateAudioConverter(const TAudioTarget& target);

} // namespace vorlund
