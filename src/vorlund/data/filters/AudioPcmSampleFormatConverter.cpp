#include "vorlund/data/filters/AudioPcmSampleFormatConverter.h"

#include "vorlund/data/filters/PcmConversions.h"

namespace vorlund {
namespace {

constexpr const wchar* kFile = VRL_L("src/vorlund/data/filters/AudioPcmSampleFormatConverter");
constexpr const wchar* kRead = VRL_L("vorlund::CAudioPcmSampleFormatConverter::Read");
constexpr const wchar* kNotConnected = VRL_L("Stream is not connected");

} // namespace

constexpr TPcmConverterFailures kAudioPcmSampleFormatConverterFailures{
    {
        .seekNotConnected{VRL_L("vorlund::CAudioPcmSampleFormatConverter::Seek"), kFile, 252, kNotConnected},
        .tellNotConnected{VRL_L("vorlund::CAudioPcmSampleFormatConverter::Tell"), kFile, 260, kNotConnected},
        .flushNotConnected{VRL_L("vorlund::CAudioPcmSampleFormatConverter::Flush"), kFile, 274,
                           kNotConnected},
        .readNoBuffer{kRead, kFile, 292, VRL_L("buffer is NULL")},
        .readNotConnected{kRead, kFile, 294, kNotConnected},
        .readNoSample{kRead, kFile, 329, VRL_L("sample is NULL")},
        .readSample{kRead, kFile, 330, VRL_L("Media samples are not supported")},
        .skipNotConnected{VRL_L("vorlund::CAudioPcmSampleFormatConverter::Skip"), kFile, 336, kNotConnected},
    },
    {VRL_L("vorlund::CAudioPcmSampleFormatConverter::GetLength"), kFile, 284, kNotConnected},
    {VRL_L("vorlund::CAudioPcmSampleFormatConverter::Connect"), kFile, 353,
     VRL_L("Unsupported format in decoded stream")}};

IAudioPcmSampleFormatConverter* CAudioPcmSampleFormatConverter::SetSampleFormat(std::uint32_t sampleFormat) {
    // Kept for callers: the routine, and with it the step, stays until the next Connect.
    format_.sampleFormat = sampleFormat;
    followsSource_ = false;
    SetRatio();
    return this;
}

void CAudioPcmSampleFormatConverter::OnConnected() {
    format_.channels = input_.channels;
    format_.samplesPerSec = input_.samplesPerSec;
    if (followsSource_) format_.sampleFormat = input_.sampleFormat;
    SetRatio();
    const pcm::TRoutine routine = pcm::FindConversion(input_.sampleFormat, format_.sampleFormat);
    if (!routine) {
        step_ = {};
        return;
    }
    const std::uint64_t channels = input_.channels;
    // A sample that arrives only in part is dropped; the units of the routine are the samples of a frame.
    step_ = {routine,      channels * ratio_.input, channels * ratio_.output, ratio_,
             ratio_.input, input_.channels};
}

void CAudioPcmSampleFormatConverter::SetRatio() {
    ratio_ = {input_.GetSampleSize(), format_.GetSampleSize()};
}

} // namespace vorlund
