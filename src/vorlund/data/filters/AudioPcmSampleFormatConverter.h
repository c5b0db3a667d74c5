// The converter of PCM sample formats.
#pragma once

#include "vorlund/data/filters/PcmConverterImpl.h"

#include <vorlund/AudioPcmConverters.h>
#include <vorlund/ClassIds.h>

#include <cstdint>

namespace vorlund {

extern const TPcmConverterFailures kAudioPcmSampleFormatConverterFailures;

/// Chooses its routine when it is connected.
class CAudioPcmSampleFormatConverter
    : public CPcmConverterImpl<IAudioPcmSampleFormatConverter, kAudioPcmSampleFormatConverterFailures> {
public:
    static constexpr CId ClassId = classid::CAudioPcmSampleFormatConverter;

    IAudioPcmSampleFormatConverter* SetSampleFormat(std::uint32_t sampleFormat) override;

private:
    void OnConnected() override;
    void SetRatio();

    bool followsSource_ = true;
};

} // namespace vorlund
