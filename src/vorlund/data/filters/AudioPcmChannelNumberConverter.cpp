#include "vorlund/data/filters/AudioPcmChannelNumberConverter.h"

#include "vorlund/data/filters/PcmMixes.h"

namespace vorlund {
namespace {

constexpr const wchar* kFile = VRL_L("src/vorlund/data/filters/AudioPcmChannelNumberConverter");
constexpr const wchar* kRead = VRL_L("vorlund::CAudioPcmChannelNumberConverter::Read");
constexpr const wchar* kNotConnected = VRL_L("Stream is not connected");

constexpr TFailure kBadNumber{VRL_L("vorlund::CAudioPcmChannelNumberConverter::SetNumChannels"), kFile, 593,
                              VRL_L("Channel amount must be 1, 2 or 6")};

} // namespace

constexpr TPcmConverterFailures kAudioPcmChannelNumberConverterFailures{
    {
        .seekNotConnected{VRL_L("vorlund::CAudioPcmChannelNumberConverter::Seek"), kFile, 465, kNotConnected},
        .tellNotConnected{VRL_L("vorlund::CAudioPcmChannelNumberConverter::Tell"), kFile, 473, kNotConnected},
        .flushNotConnected{VRL_L("vorlund::CAudioPcmChannelNumberConverter::Flush"), kFile, 487,
                           kNotConnected},
        .readNoBuffer{kRead, kFile, 505, VRL_L("buffer is NULL")},
        .readNotConnected{kRead, kFile, 507, kNotConnected},
        .readNoSample{kRead, kFile, 542, VRL_L("sample is NULL")},
        .readSample{kRead, kFile, 543, VRL_L("Media samples are not supported")},
        .skipNotConnected{VRL_L("vorlund::CAudioPcmChannelNumberConverter::Skip"), kFile, 549, kNotConnected},
    },
    {VRL_L("vorlund::CAudioPcmChannelNumberConverter::GetLength"), kFile, 497, kNotConnected},
    {VRL_L("vorlund::CAudioPcmChannelNumberConverter::Connect"), kFile, 566,
     VRL_L("Unsupported data format after decoding")}};

void CAudioPcmChannelNumberConverter::SetNumChannels(std::uint32_t count) {
    if (count != 1 && count != 2 && count != 6) Raise<CInvalidParameterException>(kBadNumber);
    format_.channels = count;
    followsSource_ = false;
    ChooseStep();
}

void CAudioPcmChannelNumberConverter::OnConnected() {
    format_.sampleFormat = input_.sampleFormat;
    format_.samplesPerSec = input_.samplesPerSec;
    if (followsSource_) format_.channels = input_.channels;
    ChooseStep();
}

void CAudioPcmChannelNumberConverter::ChooseStep() {
    ratio_ = {input_.channels, format_.channels};
    const pcm::TRoutine mix = pcm::FindMix(input_.channels, format_.channels, format_.sampleFormat);
    // Kept for callers: a full step need not end with a whole frame; the input is then inside one.
    step_ = mix ? pcm::CStep(mix, input_.GetBlockSize(), format_.GetBlockSize(), ratio_, 1, 1) : pcm::CStep();
}

} // namespace vorlund
