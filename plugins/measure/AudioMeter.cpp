#include "AudioMeter.h"

#include <vorlund/Exception.h>

#include <algorithm>
#include <cmath>

using namespace vorlund;

namespace {

constexpr const wchar* kFile = VRL_L("plugins/measure/AudioMeter");
constexpr const wchar* kStart = VRL_L("CAudioMeter::Start");
constexpr const wchar* kWrite = VRL_L("CAudioMeter::Write");
constexpr const wchar* kGetMeasurement = VRL_L("CAudioMeter::GetMeasurement");
constexpr const wchar* kGetChannelLevels = VRL_L("CAudioMeter::GetChannelLevels");
constexpr const wchar* kGetRanges = VRL_L("CAudioMeter::GetRanges");

constexpr TFailure kRate{kStart, kFile, 1, VRL_L("Sample rate out of range")};
constexpr TFailure kChannels{kStart, kFile, 2, VRL_L("Number of channels out of range")};
constexpr TFailure kLimits{kStart, kFile, 3, VRL_L("Limit out of range")};
constexpr TFailure kNotStarted{kGetMeasurement, kFile, 4, VRL_L("Not started")};
constexpr TFailure kNoSamples{kWrite, kFile, 5, VRL_L("samples is NULL")};
constexpr TFailure kNoChannel{kGetChannelLevels, kFile, 6, VRL_L("No such channel")};
constexpr TFailure kNoFinding{kGetRanges, kFile, 7, VRL_L("No such finding")};
constexpr TFailure kNoRanges{kGetRanges, kFile, 8, VRL_L("ranges is NULL")};

constexpr std::uint32_t kMinRate = 16;
constexpr std::uint32_t kMaxRate = 1'000'000;
constexpr std::uint32_t kMaxChannels = 64;
constexpr std::uint32_t kMaxSamplesPerSec = 1U << 22;

/// Frames that are cleaned and measured at a time.
constexpr std::size_t kBlockFrames = 1024;

TAudioMeterSettings Checked(TAudioMeterSettings settings) {
    if (settings.samplesPerSec < kMinRate || settings.samplesPerSec > kMaxRate)
        Raise<CInvalidParameterException>(kRate);
    if (settings.channels < 1 || settings.channels > kMaxChannels ||
        settings.channels > kMaxSamplesPerSec / settings.samplesPerSec)
        Raise<CInvalidParameterException>(kChannels);
    // Written so that a limit which is no number is refused.
    const bool areLimits = settings.fullScale > 0 && settings.silence >= 0 && settings.clippedRun > 0;
    if (!areLimits) Raise<CInvalidParameterException>(kLimits);
    if (settings.silentRun == 0) settings.silentRun = settings.samplesPerSec / 2;
    return settings;
}

double GetMeanRoot(double squares, std::uint64_t count) {
    return count == 0 ? 0 : std::sqrt(squares / static_cast<double>(count));
}

} // namespace

CAudioMeter::TMeasurement::TMeasurement(const TAudioMeterSettings& wanted)
    : settings(wanted), loudness(wanted), channels(wanted.channels, TChannel(wanted.clippedRun)),
      silence(wanted.silentRun) {}

void CAudioMeter::TMeasurement::CountFrame(const float* samples) {
    bool isSilent = true;
    for (TChannel& channel : channels) {
        const float sample = *samples++;
        const float size = std::fabs(sample);
        isSilent &= size <= settings.silence;
        channel.clipping.Count(size >= settings.fullScale, frames, clippings);
        channel.sum += sample;
        channel.squares += double{sample} * sample;
        channel.peak = std::max<double>(channel.peak, size);
        if (size > peak) {
            peak = size;
            peakFrame = frames;
        }
    }
    silence.Count(isSilent, frames, silences);
    ++frames;
}

CAudioMeter::TMeasurement& CAudioMeter::GetMeasurement() {
    if (!measurement_) Raise<CBugException>(kNotStarted);
    return *measurement_;
}

void CAudioMeter::Start(const TAudioMeterSettings& settings) {
    const TAudioMeterSettings checked = Checked(settings);
    measurement_.reset();
    measurement_.emplace(checked);
    block_.resize(kBlockFrames * checked.channels);
}

void CAudioMeter::Write(const float* samples, std::size_t frames) {
    TMeasurement& measurement = GetMeasurement();
    if (!samples && frames > 0) Raise<CNullPtrException>(kNoSamples);
    const std::size_t channels = measurement.settings.channels;
    while (frames > 0) {
        const std::size_t count = std::min(frames, kBlockFrames);
        std::transform(samples, samples + count * channels, block_.begin(), [&](float sample) {
            if (std::isfinite(sample)) return sample;
            ++measurement.notFinite;
            return 0.0F;
        });
        measurement.loudness.Write(block_.data(), count);
        for (std::size_t i = 0; i < count; ++i) measurement.CountFrame(&block_[i * channels]);
        samples += count * channels;
        frames -= count;
    }
}

TAudioLevels CAudioMeter::GetLevels() {
    const TMeasurement& measurement = GetMeasurement();
    TAudioLevels levels = {};
    levels.frames = measurement.frames;
    levels.peak = measurement.peak;
    levels.peakFrame = measurement.peakFrame;
    double squares = 0;
    for (std::uint32_t i = 0; i < measurement.settings.channels; ++i) {
        levels.truePeak = std::max(levels.truePeak, measurement.loudness.GetTruePeak(i));
        squares += measurement.channels[i].squares;
        levels.clippedSamples += measurement.channels[i].clipping.GetTotal();
    }
    levels.rms = GetMeanRoot(squares, measurement.frames * measurement.settings.channels);
    levels.integrated = measurement.loudness.GetIntegrated();
    levels.range = measurement.loudness.GetRange();
    levels.momentaryMax = measurement.loudness.GetMomentaryMax();
    levels.shortTermMax = measurement.loudness.GetShortTermMax();
    levels.silentFrames = measurement.silence.GetTotal();
    levels.notFinite = measurement.notFinite;
    return levels;
}

TChannelLevels CAudioMeter::GetChannelLevels(std::uint32_t channel) {
    const TMeasurement& measurement = GetMeasurement();
    if (channel >= measurement.settings.channels) Raise<CInvalidParameterException>(kNoChannel);
    const TChannel& measured = measurement.channels[channel];
    TChannelLevels levels = {};
    levels.peak = measured.peak;
    levels.truePeak = measurement.loudness.GetTruePeak(channel);
    levels.rms = GetMeanRoot(measured.squares, measurement.frames);
    if (measurement.frames > 0) levels.dc = measured.sum / static_cast<double>(measurement.frames);
    levels.clippedSamples = measured.clipping.GetTotal();
    return levels;
}

std::size_t CAudioMeter::GetRanges(TAudioFinding finding, TFrameRange* ranges, std::size_t room) {
    const TMeasurement& measurement = GetMeasurement();
    if (finding != AUDIO_FINDING_SILENCE && finding != AUDIO_FINDING_CLIPPING)
        Raise<CInvalidParameterException>(kNoFinding);
    if (!ranges && room > 0) Raise<CNullPtrException>(kNoRanges);
    const CRangeList& list = finding == AUDIO_FINDING_SILENCE ? measurement.silences : measurement.clippings;
    return list.Get(ranges, room);
}
