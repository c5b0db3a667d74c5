// What is listed of a device.
#pragma once

#include <vorlund/AudioSystem.h>
#include <vorlund/RefPtr.h>

namespace vorlund {

struct TAudioDeviceRecord {
    wstring id;
    wstring name;
    TAudioDirection direction = AUDIO_DIRECTION_OUTPUT;
    bool isDefault = false;
    std::uint32_t channels = 0;
    std::uint32_t samplesPerSec = 0;
};

CRefPtr<IAudioDeviceInfo> MakeAudioDeviceInfo(const TAudioDeviceRecord& record);

} // namespace vorlund
