// Sound in another form.

#include "vorlund_c/convert.h"

#include "Calls.h"
#include "Records.h"
#include "StreamObject.h"

#include <vorlund/AudioConversion.h>
#include <vorlund/FormatCast.h>
#include <vorlund/Resampler.h>
#include <vorlund/Vorlund.h>

namespace vorlund::capi {

namespace {

/// Connects a filter to a stream and gives the filter.
template <class TFilter> CRefPtr<IInputStream> Through(CRefPtr<TFilter> filter, IInputStream& stream) {
    filter->Connect(&stream);
    return CRefPtr<IInputStream>(std::move(filter));
}

CRefPtr<IResampler> MakeResampler() {
    auto resampler = CreateAs<IResampler>(kResamplerClassId);
    if (!resampler)
        throw CFailure(VORLUND_ERROR_CLASS_NOT_FOUND, "The class of the resampler is another one");
    return resampler;
}

CRefPtr<IInputStream> ConvertStream(IInputStream& source, const vorlund_conversion& conversion) {
    auto stream = CRefPtr<IInputStream>::Adopt(
        v.GetCodecClassStore().DecodeStream(&source, TDataFormat_AudioPcm::FormatId));
    // A copy: the format is the stream's own.
    const CStreamObject decoded(stream);
    const TDataFormat_AudioPcm format = decoded.GetPcm();
    if (conversion.rate != 0 && conversion.rate != format.samplesPerSec) {
        auto resampler = MakeResampler();
        resampler->SetTarget(conversion.rate, conversion.quality);
        stream = Through(std::move(resampler), *stream);
    }
    TAudioTarget target;
    target.sampleFormat =
        conversion.sample_format == VORLUND_SAMPLE_KEEP ? format.sampleFormat : conversion.sample_format;
    if (conversion.channels != 0 && conversion.channels != format.channels)
        target.layout = GetDefaultLayout(conversion.channels);
    target.clipsFloats = conversion.clips_floats != 0;
    target.dither = conversion.dithers != 0 ? DITHER_TRIANGULAR : DITHER_NONE;
    target.seed = conversion.seed;
    return Through(CRefPtr<IInputStreamFilter>::Adopt(CreateAudioConverter(target)), *stream);
}

void CheckRates(std::uint32_t from, std::uint32_t to) {
    Require(from > 0 && to > 0, "A rate is 0");
}

} // namespace

} // namespace vorlund::capi

using namespace vorlund::capi;

int32_t VORLUND_CALL vorlund_convert_stream(vorlund_stream source, const vorlund_conversion* conversion,
                                            vorlund_stream* stream) {
    return Guarded(__func__, [&] {
        RequirePointer(stream);
        const auto taken = TakeRecord(conversion, sizeof(vorlund_conversion));
        Require(taken.sample_format <= VORLUND_SAMPLE_FLOAT || taken.sample_format == VORLUND_SAMPLE_KEEP,
                "Unknown sample format");
        Require(taken.channels <= vorlund::kMaxMixChannels, "There must be 1 to 8 channels");
        Require(taken.quality <= VORLUND_QUALITY_BEST, "Unknown quality");
        const CUse<CStreamObject> object(source);
        MakeHandle<CStreamObject>(stream, ConvertStream(object->Get(), taken), object.Share());
    });
}

int32_t VORLUND_CALL vorlund_convert_samples(void* destination, uint32_t to, const void* source,
                                             uint32_t from, uint32_t channels, uint32_t frames,
                                             uint64_t* clipped) {
    return Guarded(__func__, [&] {
        RequireBuffer(destination, frames);
        RequireBuffer(source, frames);
        const uint64_t count = vorlund::ConvertAudio(destination, source, frames,
                                                     {.from = from, .to = to, .channels = channels});
        if (clipped) *clipped = count;
    });
}

int32_t VORLUND_CALL vorlund_mix_samples(float* destination, uint32_t to_channels, const float* source,
                                         uint32_t from_channels, uint32_t frames) {
    return Guarded(__func__, [&] {
        RequireBuffer(destination, frames);
        RequireBuffer(source, frames);
        const auto matrix =
            vorlund::MakeMixMatrix(vorlund::GetDefaultLayout(from_channels),
                                   vorlund::GetDefaultLayout(to_channels), vorlund::MIX_LEVEL_SAFE);
        vorlund::ConvertAudio(
            destination, source, frames,
            {.from = vorlund::BUFFER_FORMAT_FLOAT, .to = vorlund::BUFFER_FORMAT_FLOAT, .mix = &matrix});
    });
}

int32_t VORLUND_CALL vorlund_resampled_frames(uint64_t frames, uint32_t from_rate, uint32_t to_rate,
                                              uint64_t* result) {
    return Guarded(__func__, [&] {
        RequirePointer(result);
        CheckRates(from_rate, to_rate);
        *result = vorlund::GetResampledFrames(frames, from_rate, to_rate);
    });
}

int32_t VORLUND_CALL vorlund_resampled_frames_ptr(const uint64_t* frames, uint32_t from_rate,
                                                  uint32_t to_rate, uint64_t* result) {
    return Guarded(__func__, [&] {
        RequirePointer(frames);
        RequirePointer(result);
        CheckRates(from_rate, to_rate);
        *result = vorlund::GetResampledFrames(*frames, from_rate, to_rate);
    });
}

int32_t VORLUND_CALL vorlund_resample(float* destination, uint32_t room, const float* source, uint32_t frames,
                                      uint32_t channels, uint32_t from_rate, uint32_t to_rate,
                                      uint32_t quality) {
    return Guarded(__func__, [&] {
        RequireBuffer(destination, room);
        RequireBuffer(source, frames);
        CheckRates(from_rate, to_rate);
        Require(vorlund::GetResampledFrames(frames, from_rate, to_rate) <= room,
                "The buffer is too small for the frames");
        MakeResampler()->Resample(
            destination, source, frames,
            {.inputRate = from_rate, .outputRate = to_rate, .channels = channels, .quality = quality});
    });
}
