// How loud a sound is.

#include "vorlund_c/measure.h"

#include "Calls.h"
#include "Records.h"
#include "StreamObject.h"

#include <vorlund/AudioMeter.h>

#include <algorithm>
#include <vector>

namespace vorlund::capi {

namespace {

/// Samples that are measured at a time.
constexpr std::uint32_t kPiece = 16384;

CRefPtr<IAudioMeter> StartMeter(const TDataFormat_AudioPcm& format) {
    auto meter = CreateAs<IAudioMeter>(classid::CAudioMeter);
    if (!meter) throw CFailure(VORLUND_ERROR_CLASS_NOT_FOUND, "The class of the meter is another one");
    TAudioMeterSettings settings{.samplesPerSec = format.samplesPerSec, .channels = format.channels};
    // The highest sample of 8 bits.
    if (format.sampleFormat == SAMPLE_FORMAT_8BIT) settings.fullScale = 127.0F / 128;
    meter->Start(settings);
    return meter;
}

void GiveLevels(IAudioMeter& meter, vorlund_levels* levels) {
    const TAudioLevels measured = meter.GetLevels();
    vorlund_levels full{};
    full.frames = measured.frames;
    full.peak = measured.peak;
    full.peak_frame = measured.peakFrame;
    full.true_peak = measured.truePeak;
    full.rms = measured.rms;
    full.integrated = measured.integrated;
    full.range = measured.range;
    full.momentary_max = measured.momentaryMax;
    full.short_term_max = measured.shortTermMax;
    full.clipped_samples = measured.clippedSamples;
    full.silent_frames = measured.silentFrames;
    full.not_finite = measured.notFinite;
    GiveRecord(full, levels, sizeof(full));
}

} // namespace

} // namespace vorlund::capi

using namespace vorlund::capi;

int32_t VORLUND_CALL vorlund_measure_stream(vorlund_stream stream, vorlund_levels* levels) {
    return On<CStreamObject>(__func__, stream, [&](CStreamObject& object) {
        RequirePointer(levels);
        const vorlund::TDataFormat_AudioPcm format = object.GetPcm();
        const auto meter = StartMeter(format);
        const std::uint32_t frames = std::max<std::uint32_t>(1, kPiece / format.channels);
        std::vector<float> samples(std::size_t{frames} * format.channels);
        std::uint32_t count = 0;
        do {
            object.ReadFrames(VORLUND_SAMPLE_FLOAT, samples.data(), frames, &count);
            meter->Write(samples.data(), count);
        } while (count == frames);
        GiveLevels(*meter, levels);
    });
}

int32_t VORLUND_CALL vorlund_measure_samples(const float* samples, uint32_t frames, uint32_t channels,
                                             uint32_t rate, vorlund_levels* levels) {
    return Guarded(__func__, [&] {
        RequirePointer(levels);
        RequireBuffer(samples, frames);
        const auto meter = StartMeter({vorlund::SAMPLE_FORMAT_FLOAT, channels, rate});
        meter->Write(samples, frames);
        GiveLevels(*meter, levels);
    });
}
