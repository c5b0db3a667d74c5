#include "PcmPipeline.h"

#include "Diagnostics.h"

#include <vorlund/AudioPcmConverters.h>
#include <vorlund/ClassIds.h>
#include <vorlund/ObjectServices.h>

#include <algorithm>
#include <string>
#include <utility>

using namespace vorlund;

namespace {

const TDataFormat_AudioPcm& GetPcmFormat(IInputStream& stream) {
    return static_cast<const TDataFormat_AudioPcm&>(stream.GetFormat());
}

[[noreturn]] void Refuse(const wchar* job, const wstring& name, const std::string& reason) {
    throw TProgramError{(job + (VRL_L(" '") + name)) + VRL_L("': ") + wstring(reason.begin(), reason.end())};
}

} // namespace

CPcmPipeline::CPcmPipeline(CRefPtr<IInputStream> decoded, const TPcmTarget& target, const wstring& name)
    : end_(std::move(decoded)), format_(GetPcmFormat(*end_)) {
    // The largest frame that some converter has to read.
    std::uint64_t frame = 0;
    if (target.sampleFormat) {
        if (*target.sampleFormat != format_.sampleFormat) {
            frame = std::uint64_t{format_.GetSampleSize()} * format_.channels;
            if (frame == 0 || frame > kMaxPcmConverterInput)
                Refuse(VRL_L("Cannot convert"), name, "Its frames have " + std::to_string(frame) + " bytes");
        }
        const auto converter =
            CreateAs<IAudioPcmSampleFormatConverter>(classid::CAudioPcmSampleFormatConverter);
        converter->SetSampleFormat(*target.sampleFormat);
        converter->Connect(end_.Get());
        end_ = CRefPtr<IInputStream>::Share(converter.Get());
        format_ = GetPcmFormat(*end_);
    }
    if (target.channels) {
        if (format_.channels != 1 && format_.channels != 2 && format_.channels != 6)
            Refuse(VRL_L("Cannot mix"), name,
                   "It has " + std::to_string(format_.channels) + " channels, not 1, 2 or 6");
        if (*target.channels != format_.channels)
            frame = std::max<std::uint64_t>(frame, format_.GetBlockSize());
        const auto converter =
            CreateAs<IAudioPcmChannelNumberConverter>(classid::CAudioPcmChannelNumberConverter);
        converter->SetNumChannels(*target.channels);
        converter->Connect(end_.Get());
        end_ = CRefPtr<IInputStream>::Share(converter.Get());
        format_ = GetPcmFormat(*end_);
    }
    if (frame > 0) step_ = kMaxPcmConverterInput / frame * format_.GetBlockSize();
}

std::uint64_t CPcmPipeline::Read(std::uint8_t* buffer, std::uint64_t size) {
    if (step_ == 0) return end_->Read(buffer, size);
    std::uint64_t total = 0;
    while (size - total >= step_) {
        const std::uint64_t count = end_->Read(buffer + total, step_);
        total += count - count % format_.GetBlockSize();
        if (count < step_) break;
    }
    return total;
}
