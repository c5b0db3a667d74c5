// The converter of PCM channel numbers.
#pragma once

#include "vorlund/data/filters/PcmConverterImpl.h"

#include <vorlund/AudioPcmConverters.h>
#include <vorlund/ClassIds.h>

#include <cstdint>

namespace vorlund {

extern const TPcmConverterFailures kAudioPcmChannelNumberConverterFailures;

/// Chooses its routine when it is connected and whenever it gets another target.
class CAudioPcmChannelNumberConverter
    : public CPcmConverterImpl<IAudioPcmChannelNumberConverter, kAudioPcmChannelNumberConverterFailures> {
public:
    static constexpr CId ClassId = classid::CAudioPcmChannelNumberConverter;

    void SetNumChannels(std::uint32_t count) override;

private:
    void OnConnected() override;
    void ChooseStep();

    bool followsSource_ = true;
};

} // namespace vorlund
