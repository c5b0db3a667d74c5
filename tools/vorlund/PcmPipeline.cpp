#include "PcmPipeline.h"

#include "Diagnostics.h"

#include <vorlund/AudioPcmConverters.h>
#include <vorlund/ClassIds.h>
#include <vorlund/ObjectServices.h>

#include <CLI/CLI.hpp>

#include <algorithm>
#include <map>
#include <string>
#include <utility>

using namespace vorlund;

namespace {

const std::map<std::string, std::uint32_t> kSampleFormats{{"u8", SAMPLE_FORMAT_8BIT},
                                                          {"s16", SAMPLE_FORMAT_16BIT},
                                                          {"s32", SAMPLE_FORMAT_32BIT},
                                                          {"f32", SAMPLE_FORMAT_FLOAT}};

const TDataFormat_AudioPcm& GetPcmFormat(IInputStream& stream) {
    return static_cast<const TDataFormat_AudioPcm&>(stream.GetFormat());
}

[[noreturn]] void Refuse(const wchar* job, const wstring& name, const std::string& reason) {
    throw TProgramError{(job + (VRL_L(" '") + name)) + VRL_L("': ") + wstring(reason.begin(), reason.end())};
}

} // namespace

void AddPcmOptions(CLI::App& command, TPcmTarget& target) {
    command
        .add_option_function<std::string>(
            "--format", [&target](const std::string& name) { target.sampleFormat = kSampleFormats.at(name); },
            "Convert the samples: unsigned 8, signed 16 or 32 bits, or 32-bit float")
        ->check(CLI::IsMember(kSampleFormats))
        ->type_name("NAME");
    command.add_option("--channels", target.channels, "Mix to mono, stereo or 5.1")
        ->check(CLI::IsMember({"1", "2", "6"}))
        ->type_name("COUNT");
}

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
