/// \file
/// Measuring sound: peaks, mean level, loudness, silence, clipping and offset. The plug-in "measure" has the
/// class.
#pragma once

#include <vorlund/Object.h>

#include <cmath>
#include <cstddef>
#include <cstdint>

namespace vorlund {

/// What is measured, and where limits are. Since version 0.1.
struct TAudioMeterSettings {
    /// Frames of a second, 16 to 1,000,000.
    std::uint32_t samplesPerSec = 48000;
    /// 1 to 64; and not more than 4,194,304 samples of all channels in a second: three seconds are kept, 24
    /// bytes for each sample.
    std::uint32_t channels = 2;
    /// The loudspeakers of the channels, as in the channel mask of WAVEFORMATEXTENSIBLE, the lowest bit
    /// first; channels without a bit count as others in front do. 0 for what is usual for the number: mono,
    /// stereo, 3.0, 4.0 with the surrounds, 5.0, 5.1, 6.1 and 7.1.
    std::uint32_t channelMask = 0;
    /// A sample this far from 0, or further, is at full scale. The default is the highest sample of 16 bits;
    /// of 8 bits it is 127 / 128.
    float fullScale = 32767.0F / 32768;
    /// That many samples of a channel at full scale, one behind the other, are clipped; at least 1.
    std::uint32_t clippedRun = 3;
    /// A frame whose samples are all this near to 0, or nearer, is silent; -60 dB of full scale.
    float silence = 0.001F;
    /// That many silent frames, one behind the other, are a silence; at least 1. 0 for half a second.
    std::uint32_t silentRun = 0;
};

/// What was measured in all channels together. Levels are factors of full scale, 1 for the sample 1.0;
/// `ToDecibels` makes dBFS or dBTP of them. Since version 0.1.
struct TAudioLevels {
    std::uint64_t frames;
    /// The sample furthest from 0, its frame, and the same of the signal between the samples: at least four
    /// times oversampled below 96 kHz, twice below 192 kHz (ITU-R BS.1770-4, annex 2).
    double peak;
    std::uint64_t peakFrame;
    double truePeak;
    /// Root of the mean square of all samples: 0.707 for a sine of full scale.
    double rms;
    /// Loudness of the whole, in LUFS, gated (EBU R 128); minus infinity when nothing is above the gate of
    /// -70 LUFS, or below 400 ms.
    double integrated;
    /// Loudness range, in LU (EBU Tech 3342); 0 below 3 s.
    double range;
    /// The highest loudness of 400 ms and of 3 s, in LUFS, a value each 100 ms (EBU Tech 3341); what is
    /// before the first frame counts as silence.
    double momentaryMax;
    double shortTermMax;
    /// Samples in clipped runs, and silent frames in silences.
    std::uint64_t clippedSamples;
    std::uint64_t silentFrames;
    /// Samples that are no numbers, or infinite; they count as 0.
    std::uint64_t notFinite;
};

/// What was measured in one channel; factors of full scale as in `TAudioLevels`. Since version 0.1.
struct TChannelLevels {
    double peak;
    double truePeak;
    double rms;
    /// The mean of the samples: the offset from 0.
    double dc;
    std::uint64_t clippedSamples;
};

/// What `IAudioMeter::GetRanges` finds. Since version 0.1.
enum TAudioFinding : std::uint32_t {
    AUDIO_FINDING_SILENCE = 1,
    /// In any channel.
    AUDIO_FINDING_CLIPPING = 2,
};

/// Frames one behind the other; frame 0 is the first that was measured. Since version 0.1.
struct TFrameRange {
    std::uint64_t first;
    std::uint64_t count;
};

/// A factor in decibels: 0 for 1, minus infinity for 0. Since version 0.1.
inline double ToDecibels(double factor) {
    return 20 * std::log10(factor);
}

/// Measures sound, frame by frame as it comes; the results do not depend on how the frames are divided among
/// the calls. One thread at a time. Since version 0.1.
class IAudioMeter : public IObject {
public:
    using TBase = IObject;
    static constexpr CId InterfaceId{0xCA7EA54F, 0xE6AC0B3B, 0x200B73CC, 0x36764D6A};

    /// The most ranges that are kept of each kind; later ones are counted in the sums alone.
    static constexpr std::size_t kMaxRanges = 1000;

    /// Forgets what was measured, and begins anew. It comes before the first `Write`.
    ///
    /// Raises `CInvalidParameterException` for settings outside their ranges, and `std::bad_alloc`.
    virtual void Start(const TAudioMeterSettings& settings) = 0;

    /// Measures the next frames: interleaved samples, 1.0 at full scale; larger ones count as they are.
    ///
    /// \param samples  `frames` times the number of channels; null only with 0 frames
    /// \param frames   how many, for each channel
    ///
    /// Raises `CBugException` "Not started", `CNullPtrException` and `std::bad_alloc`.
    virtual void Write(const float* samples, std::size_t frames) = 0;

    /// What the frames so far amount to; more may follow. Raises `CBugException` "Not started".
    virtual TAudioLevels GetLevels() = 0;

    /// The same of a channel, 0 for the first. Raises `CBugException` "Not started" and
    /// `CInvalidParameterException` for a channel that there is not.
    virtual TChannelLevels GetChannelLevels(std::uint32_t channel) = 0;

    /// Where the silences or the clipped runs are, in order; runs of several channels that touch are one.
    ///
    /// \param finding silences or clipped runs
    /// \param ranges  room for `room` of them; null only with a room of 0
    /// \param room    in ranges
    /// \return how many there are, at most `kMaxRanges`; the first of them, up to `room`, are in `ranges`
    ///
    /// Raises `CBugException` "Not started", `CInvalidParameterException` for another finding, and
    /// `CNullPtrException`.
    virtual std::size_t GetRanges(TAudioFinding finding, TFrameRange* ranges, std::size_t room) = 0;

protected:
    ~IAudioMeter() = default;
};

namespace classid {

/// The class of the plug-in "measure", for `CreateAs<IAudioMeter>`. Without the plug-in the class store knows
/// no such class. Since version 0.1.
inline constexpr CId CAudioMeter{0xC8286418, 0x310DC8B8, 0xEA746FF7, 0xFEB43A30};

} // namespace classid

} // namespace vorlund
