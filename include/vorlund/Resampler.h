/// \file
/// Resampling: PCM audio at another rate. The class is that of a plug-in: load it, for example by
/// `AddInstalledPlugins`, and create a resampler by `CreateAs<IResampler>(kResamplerClassId)`, which raises
/// `CClassNotFoundException` without the plug-in.
#pragma once

#include <vorlund/StreamFilter.h>

#include <cstddef>
#include <cstdint>

namespace vorlund {

/// The class of the plug-in `resample`. Since version 0.1.
inline constexpr CId kResamplerClassId{0x91C4E27A, 0x4DB0638F, 0xA25F17C8, 0x3E96D04B};

/// Qualities, from the fastest to the best; docs/resampling.md has what the tests measure of each. Since
/// version 0.1.
enum TResamplerQuality : std::uint32_t {
    RESAMPLER_QUICK = 0,  ///< a curve through four samples; keeps no aliases away
    RESAMPLER_LOW = 1,    ///< 16 bits with a narrow passband
    RESAMPLER_MEDIUM = 2, ///< 16 bits
    RESAMPLER_HIGH = 3,   ///< 20 bits: aliases and images below -120 dB, passband to 0.91 of Nyquist
    RESAMPLER_BEST = 4    ///< 28 bits
};

/// The greatest ratio between two rates, either way. Since version 0.1.
constexpr std::uint32_t kMaxResamplerRatio = 256;

/// How many frames `frames` become: frames x `outputRate` / `inputRate`, rounded to the nearest number,
/// halves up. 0 for a rate of 0. Since version 0.1.
constexpr std::uint64_t GetResampledFrames(std::uint64_t frames, std::uint32_t inputRate,
                                           std::uint32_t outputRate) {
    if (inputRate == 0) return 0;
    return frames / inputRate * outputRate + (frames % inputRate * outputRate + inputRate / 2) / inputRate;
}

/// What to do with a plain buffer. Since version 0.1.
struct TResampling {
    std::uint32_t inputRate = 0;
    std::uint32_t outputRate = 0;
    std::uint32_t channels = 1;
    /// A `TResamplerQuality`.
    std::uint32_t quality = RESAMPLER_HIGH;
};

/// A filter that delivers PCM audio at another rate, as floats, with the channels of its source.
///
/// `Connect` has the codec class store decode the given stream into PCM, as the converters do, and goes to
/// its beginning where it has positions. Frame n of the result belongs to the time n / rate of the source:
/// there is no delay. The number of frames is `GetResampledFrames`. The result does not depend on how it is
/// read, nor on how the source delivers: the same bytes come out, on the same machine. Of a source that ends
/// inside a frame the part is left out. Samples may go beyond full scale by what the filter swings over;
/// `ConvertAudio` clips them.
///
/// `Seek` and `Tell` count bytes of the result, parts of frames too; positions behind the end are the end.
/// Going on resamples what lies between, going back everything from the beginning, so that the bytes are the
/// same.
///
/// `Connect` raises `CDataFormatException` "Unsupported format in decoded stream", also for rates further
/// apart than `kMaxResamplerRatio` and more than 1,024 channels; `Seek` `CIOException` "Position is
/// negative"; `Read` and `Resample` `CFailedException` "Cannot resample". One thread at a time. Since version
/// 0.1.
class IResampler : public IInputStreamFilter {
public:
    using TBase = IInputStreamFilter;
    static constexpr CId InterfaceId{0x2B75D9E0, 0x46C18A3F, 0x9E04B7D2, 0x58F1C36A};

    /// The rate and the quality from the next `Connect` on; at first a rate of 0, which is that of the
    /// source, and `RESAMPLER_HIGH`. At the rate of the source samples become floats and nothing else. Raises
    /// `CInvalidParameterException` "Unknown quality".
    virtual void SetTarget(std::uint32_t samplesPerSec, std::uint32_t quality = RESAMPLER_HIGH) = 0;

    /// Resamples a whole sound, as the filter would, whatever that is connected to.
    ///
    /// \param destination  room for `GetResampledFrames(frames, ...)` frames of floats
    /// \param source  `frames` frames of floats, channels interleaved; the two must not overlap
    /// \param frames  of the source
    /// \param resampling  both rates, the channels and the quality
    ///
    /// Raises `CInvalidParameterException` "Unknown quality", "Rates or channels cannot be resampled" and
    /// `CNullPtrException` "buffer is NULL", which is for buffers with at least one frame.
    virtual void Resample(float* destination, const float* source, std::size_t frames,
                          const TResampling& resampling) = 0;

protected:
    ~IResampler() = default;
};

} // namespace vorlund
