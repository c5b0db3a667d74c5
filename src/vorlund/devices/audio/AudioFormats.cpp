#include "vorlund/devices/audio/AudioFormats.h"

#include "vorlund/devices/audio/StreamFromHere.h"

#include <vorlund/Exception.h>
#include <vorlund/ObjectServices.h>
#include <vorlund/Resampler.h>

#include <algorithm>
#include <cmath>
#include <cstring>

namespace vorlund {
namespace {

constexpr double kMinLatency = 0.001;
constexpr double kMaxLatency = 10;
constexpr std::uint32_t kMinRate = 1000;
constexpr std::uint32_t kMaxRate = 768000;
/// Periods of a latency that the application asks for, and the longest one in seconds.
constexpr std::uint32_t kPeriods = 4;
constexpr double kLongestPeriod = 0.02;

} // namespace

void CheckAudioWish(const TDataFormat_AudioPcm& format, double latency, const TAudioFailures& failures) {
    const bool isPossible = format.sampleFormat <= SAMPLE_FORMAT_FLOAT && format.channels >= 1 &&
                            format.channels <= kMaxMixChannels && format.samplesPerSec >= kMinRate &&
                            format.samplesPerSec <= kMaxRate;
    if (!isPossible) Raise<CDataFormatException>(failures.format);
    const bool isWished = latency >= kMinLatency && latency <= kMaxLatency;
    if (!isWished && latency != kDefaultAudioLatency) Raise<CInvalidParameterException>(failures.latency);
}

TAudioPortFormat MakePortWish(const TDataFormat_AudioPcm& format, double latency) {
    TAudioPortFormat wish{format.sampleFormat, format.channels, format.samplesPerSec, 0, 0};
    if (latency == kDefaultAudioLatency) return wish;
    const double frames = latency * format.samplesPerSec;
    const double period = std::min(frames / kPeriods, kLongestPeriod * format.samplesPerSec);
    wish.periodFrames = static_cast<std::uint32_t>(std::max(period, 1.0));
    wish.periods = std::max(static_cast<std::uint32_t>(std::lround(frames / wish.periodFrames)), 2U);
    return wish;
}

TDataFormat_AudioPcm GetPortFormat(const TAudioPortFormat& format, const TAudioFailures& failures) {
    const bool isPossible = format.sampleFormat <= SAMPLE_FORMAT_FLOAT && format.channels >= 1 &&
                            format.channels <= kMaxMixChannels && format.samplesPerSec >= 1 &&
                            format.periodFrames >= 1;
    if (!isPossible) Raise<CFailedException>(failures.device);
    return {format.sampleFormat, format.channels, format.samplesPerSec};
}

std::size_t GetRingFrames(const TAudioPortFormat& format) {
    return std::size_t{format.periodFrames} * std::max(format.periods, 2U);
}

bool IsSameLayout(const TDataFormat_AudioPcm& one, const TDataFormat_AudioPcm& other) {
    return one.sampleFormat == other.sampleFormat && one.channels == other.channels;
}

bool IsSameFormat(const TDataFormat_AudioPcm& one, const TDataFormat_AudioPcm& other) {
    return IsSameLayout(one, other) && one.samplesPerSec == other.samplesPerSec;
}

CFrameConversion::CFrameConversion(const TDataFormat_AudioPcm& from, const TDataFormat_AudioPcm& to)
    : from_(from), to_(to) {
    if (from.channels != to.channels)
        mix_ = MakeMixMatrix(GetDefaultLayout(from.channels), GetDefaultLayout(to.channels), MIX_LEVEL_SAFE);
}

void CFrameConversion::Convert(void* to, const void* from, std::size_t frames) const {
    if (IsSameLayout(from_, to_)) {
        std::memcpy(to, from, frames * to_.GetBlockSize());
        return;
    }
    TAudioConversion conversion{from_.sampleFormat, to_.sampleFormat, from_.channels};
    if (from_.channels != to_.channels) conversion.mix = &mix_;
    ConvertAudio(to, from, frames, conversion);
}

bool IsPlayable(const TDataFormat& format) {
    if (format.id != TDataFormat_AudioPcm::FormatId || format.size != sizeof(TDataFormat_AudioPcm))
        return false;
    const auto& pcm = static_cast<const TDataFormat_AudioPcm&>(format);
    return pcm.sampleFormat <= SAMPLE_FORMAT_FLOAT && pcm.channels >= 1 && pcm.channels <= kMaxMixChannels &&
           pcm.samplesPerSec >= 1;
}

CRefPtr<IInputStreamFilter> CreateResampler(const TDataFormat_AudioPcm& from, const TDataFormat_AudioPcm& to,
                                            const TFailure& failure) {
    CRefPtr<IResampler> resampler;
    if (from.samplesPerSec == to.samplesPerSec) return {};
    try {
        resampler = CreateAs<IResampler>(kResamplerClassId);
    } catch (const CException&) {
        // A factory may have raised it, and left the store locked.
        services::GiveBackClassStoreLock();
    }
    if (!resampler) Raise<CFailedException>(failure);
    resampler->SetTarget(to.samplesPerSec);
    return CRefPtr<IInputStreamFilter>::Share(resampler.Get());
}

CFormatChain::CFormatChain(const TDataFormat_AudioPcm& from, const TDataFormat_AudioPcm& to,
                           const CRefPtr<IInputStreamFilter>& resampler)
    : resampler_(resampler) {
    const std::uint32_t sampleFormat = resampler ? std::uint32_t{SAMPLE_FORMAT_FLOAT} : from.sampleFormat;
    if (sampleFormat == to.sampleFormat && from.channels == to.channels) return;
    TAudioTarget target;
    target.sampleFormat = to.sampleFormat;
    if (from.channels != to.channels) target.layout = GetDefaultLayout(to.channels);
    target.mixLevel = MIX_LEVEL_SAFE;
    converter_ = CRefPtr<IInputStreamFilter>::Adopt(CreateAudioConverter(target));
}

void CFormatChain::Connect(const CRefPtr<IInputStream>& source) {
    result_ = source;
    for (const auto& filter : {resampler_, converter_}) {
        if (!filter) continue;
        filter->Connect(result_.Get());
        result_ = CRefPtr<IInputStream>::Share(filter.Get());
    }
}

void CFormatChain::Reset() {
    result_.Reset();
    converter_.Reset();
    resampler_.Reset();
}

CRefPtr<IInputStream> BringToFormat(const CRefPtr<IInputStream>& source, const TDataFormat_AudioPcm& from,
                                    const TDataFormat_AudioPcm& to, const TFailure& failure) {
    if (IsSameFormat(from, to)) return source;
    CFormatChain chain(from, to, CreateResampler(from, to, failure));
    chain.Connect(MakeStreamFromHere(source, from));
    return chain.GetResult();
}

} // namespace vorlund
