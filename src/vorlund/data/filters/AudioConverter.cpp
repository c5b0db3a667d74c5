// The filter over `ConvertAudio`.
#include "vorlund/data/filters/AudioConverter.h"

#include "vorlund/data/filters/AudioConversion.h"

#include <vorlund/Exception.h>
#include <vorlund/RefPtr.h>

namespace vorlund {
namespace {

constexpr const wchar* kFile = VRL_L("src/vorlund/data/filters/AudioConverter");
constexpr const wchar* kCreate = VRL_L("vorlund::CreateAudioConverter");

constexpr TFailure kUnknownFormat{kCreate, kFile, 1, VRL_L("Unknown sample format")};
constexpr TFailure kBadLayout{kCreate, kFile, 2, VRL_L("A layout must have 1 to 8 channels")};
constexpr TFailure kBadMatrix{kCreate, kFile, 3,
                              VRL_L("The matrix must have 1 to 8 channels and finite weights")};
constexpr TFailure kBadSource{VRL_L("vorlund::CAudioConverter::Connect"), kFile, 4,
                              VRL_L("Unsupported format in decoded stream")};
constexpr TFailure kNegative{VRL_L("vorlund::CAudioConverter::Seek"), kFile, 5,
                             VRL_L("Position is negative")};

bool IsLayout(std::uint32_t layout) {
    return GetChannelCount(layout) <= kMaxMixChannels;
}

} // namespace

void CAudioConverter::SetTarget(const TAudioTarget& target) {
    target_ = target;
    if (target.mix) {
        mix_ = *target.mix;
        target_.mix = &mix_;
    }
    format_.sampleFormat = target.sampleFormat;
}

void CAudioConverter::BeginSource() {
    if (!IsPossible(input_)) Raise<CDataFormatException>(kBadSource);
    conversion_ = {input_.sampleFormat, target_.sampleFormat, input_.channels, nullptr,
                   target_.clipsFloats, target_.dither,       target_.seed};
    format_.channels = input_.channels;
    format_.samplesPerSec = input_.samplesPerSec;
    if (target_.mix) {
        if (mix_.inputs != input_.channels) Raise<CDataFormatException>(kBadSource);
    } else if (target_.layout != 0) {
        const bool isTold = GetChannelCount(target_.sourceLayout) == input_.channels;
        const std::uint32_t layout = isTold ? target_.sourceLayout : GetDefaultLayout(input_.channels);
        if (layout == 0) Raise<CDataFormatException>(kBadSource);
        if (layout == target_.layout) return;
        mix_ = MakeMixMatrix(layout, target_.layout, target_.mixLevel);
    } else {
        return;
    }
    conversion_.mix = &mix_;
    format_.channels = mix_.outputs;
}

void CAudioConverter::Make(CBlockBuffer& output, const std::byte* block, std::size_t frames, bool) {
    ConvertAudio(output.Append(frames * format_.GetBlockSize()), block, frames, conversion_, frame_);
    frame_ += frames;
}

void CAudioConverter::Seek(std::int64_t position) {
    if (!stream_) return TLayer::Seek(position);
    if (position < 0) Raise<CIOException>(kNegative);
    const auto self = CRefPtr<IInputStream>::Share(this);
    const std::int64_t end = GetLength();
    if (!stream_) return;
    const auto wanted = static_cast<std::uint64_t>(std::min(position, end));
    const std::uint64_t frame = wanted / format_.GetBlockSize();
    if (!RestartAt(frame)) return;
    position_ = static_cast<std::int64_t>(frame * format_.GetBlockSize());
    Take(nullptr, wanted - static_cast<std::uint64_t>(position_));
}

IInputStreamFilter* CreateAudioConverter(const TAudioTarget& target) {
    if (target.sampleFormat > SAMPLE_FORMAT_FLOAT) Raise<CInvalidParameterException>(kUnknownFormat);
    if (!IsLayout(target.layout) || !IsLayout(target.sourceLayout))
        Raise<CInvalidParameterException>(kBadLayout);
    if (target.mix && !IsGoodMatrix(*target.mix)) Raise<CInvalidParameterException>(kBadMatrix);
    auto filter =
        CRefPtr<CAudioConverter>::Adopt(static_cast<CAudioConverter*>(NewObject<CAudioConverter>()));
    filter->SetTarget(target);
    return filter.Detach();
}

} // namespace vorlund
