#include "Resampler.h"

#include <vorlund/AudioConversion.h>
#include <vorlund/Exception.h>

#include <algorithm>
#include <cstring>

using namespace vorlund;

namespace {

constexpr const wchar* kFile = VRL_L("plugins/resample/Resampler");
constexpr const wchar* kResample = VRL_L("CResampler::Resample");
constexpr const wchar* kUnknownQuality = VRL_L("Unknown quality");

constexpr TFailure kCannotResample{VRL_L("CResampler::Read"), kFile, 1, VRL_L("Cannot resample")};
constexpr TFailure kBadSource{VRL_L("CResampler::Connect"), kFile, 2,
                              VRL_L("Unsupported format in decoded stream")};
constexpr TFailure kNegative{VRL_L("CResampler::Seek"), kFile, 3, VRL_L("Position is negative")};
constexpr TFailure kTargetQuality{VRL_L("CResampler::SetTarget"), kFile, 4, kUnknownQuality};
constexpr TFailure kBufferQuality{kResample, kFile, 5, kUnknownQuality};
constexpr TFailure kBufferRates{kResample, kFile, 6, VRL_L("Rates or channels cannot be resampled")};
constexpr TFailure kNoBuffer{kResample, kFile, 7, VRL_L("buffer is NULL")};

bool IsNear(std::uint64_t one, std::uint64_t other) {
    return one > 0 && other > 0 && one <= other * kMaxResamplerRatio && other <= one * kMaxResamplerRatio;
}

} // namespace

void RaiseCannotResample() {
    Raise<CFailedException>(kCannotResample);
}

CResampledSound::CResampledSound(const TResampling& resampling) : resampling_(resampling) {
    if (resampling.inputRate != resampling.outputRate) engine_ = CreateEngine(resampling);
}

void CResampledSound::Make(CBlockBuffer& output, const float* block, std::size_t frames, bool isLast) {
    const std::size_t frameSize = resampling_.channels * sizeof(float);
    const std::size_t before = output.GetSize();
    const auto countMade = [&] { return (output.GetSize() - before) / frameSize; };
    taken_ += frames;
    // What there should be of the result, of all that was taken.
    const std::uint64_t whole =
        GetResampledFrames(taken_, resampling_.inputRate, resampling_.outputRate) - made_;
    if (engine_) {
        engine_->Process(output, block, frames);
        if (isLast && countMade() < whole)
            engine_->Finish(output, static_cast<std::size_t>(whole - countMade()));
    } else if (frames > 0) {
        std::memcpy(output.Append(frames * frameSize), block, frames * frameSize);
    }
    if (countMade() > whole) output.Cut(before + static_cast<std::size_t>(whole) * frameSize);
    if (isLast && countMade() < whole) {
        const auto lacking = static_cast<std::size_t>(whole - countMade()) * frameSize;
        std::memset(output.Append(lacking), 0, lacking);
    }
    made_ += countMade();
}

void CResampler::Disconnect() {
    sound_.reset();
    TLayer::Disconnect();
}

void CResampler::SetTarget(std::uint32_t samplesPerSec, std::uint32_t quality) {
    if (quality > RESAMPLER_BEST) Raise<CInvalidParameterException>(kTargetQuality);
    rate_ = samplesPerSec;
    quality_ = quality;
}

void CResampler::BeginSource() {
    resampling_ = {input_.samplesPerSec, rate_ ? rate_ : input_.samplesPerSec, input_.channels, quality_};
    if (!IsPossible(input_) || !IsNear(resampling_.inputRate, resampling_.outputRate))
        Raise<CDataFormatException>(kBadSource);
    format_ = {SAMPLE_FORMAT_FLOAT, input_.channels, resampling_.outputRate};
}

void CResampler::BeginAt(std::uint64_t) {
    sound_ = std::make_unique<CResampledSound>(resampling_);
}

std::uint64_t CResampler::GetOutputFrames(std::uint64_t frames) {
    return GetResampledFrames(frames, resampling_.inputRate, resampling_.outputRate);
}

void CResampler::Make(CBlockBuffer& output, const std::byte* block, std::size_t frames, bool isLast) {
    const auto* floats = reinterpret_cast<const float*>(block);
    if (input_.sampleFormat != SAMPLE_FORMAT_FLOAT) {
        block_.resize(frames * input_.channels);
        ConvertSamples(block_.data(), BUFFER_FORMAT_FLOAT, block, input_.sampleFormat, block_.size());
        floats = block_.data();
    }
    sound_->Make(output, floats, frames, isLast);
}

void CResampler::Seek(std::int64_t position) {
    if (!stream_) return TLayer::Seek(position);
    if (position < 0) Raise<CIOException>(kNegative);
    const auto self = CRefPtr<IInputStream>::Share(this);
    if (position < position_) {
        // What the engine has in it depends on all that was before.
        if (!RestartAt(0)) return;
        position_ = 0;
    }
    Take(nullptr, static_cast<std::uint64_t>(position - position_));
}

void CResampler::Resample(float* destination, const float* source, std::size_t frames,
                          const TResampling& resampling) {
    if (resampling.quality > RESAMPLER_BEST) Raise<CInvalidParameterException>(kBufferQuality);
    if (resampling.channels == 0 || resampling.channels > kMaxChannels ||
        !IsNear(resampling.inputRate, resampling.outputRate))
        Raise<CInvalidParameterException>(kBufferRates);
    if (frames == 0) return;
    if (!source || !destination) Raise<CNullPtrException>(kNoBuffer);
    CResampledSound sound(resampling);
    CBlockBuffer result;
    auto* to = reinterpret_cast<std::byte*>(destination);
    for (bool isLast = false; !isLast;) {
        const std::size_t count = std::min<std::size_t>(frames, kBlockFrames);
        isLast = count < kBlockFrames;
        result.Cut(0);
        sound.Make(result, source, count, isLast);
        if (result.GetSize() > 0) std::memcpy(to, result.GetData(), result.GetSize());
        to += result.GetSize();
        source += count * resampling.channels;
        frames -= count;
    }
}
