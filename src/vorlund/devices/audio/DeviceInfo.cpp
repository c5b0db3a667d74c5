#include "vorlund/devices/audio/DeviceInfo.h"

#include <vorlund/ObjectImpl.h>

namespace vorlund {
namespace {

class CDeviceInfo : public CObjectImpl<IAudioDeviceInfo> {
public:
    static constexpr CId ClassId{0x64B9F13A, 0xE5074D28, 0x8C31AB96, 0x0D7E42F5};

    void SetRecord(const TAudioDeviceRecord& record) { record_ = record; }

    const wchar* GetId() override { return record_.id.c_str(); }
    const wchar* GetName() override { return record_.name.c_str(); }
    TAudioDirection GetDirection() override { return record_.direction; }
    bool IsDefault() override { return record_.isDefault; }
    std::uint32_t GetChannels() override { return record_.channels; }
    std::uint32_t GetSamplesPerSec() override { return record_.samplesPerSec; }

protected:
    ~CDeviceInfo() = default;

private:
    TAudioDeviceRecord record_;
};

} // namespace

CRefPtr<IAudioDeviceInfo> MakeAudioDeviceInfo(const TAudioDeviceRecord& record) {
    const auto info = CRefPtr<CDeviceInfo>::Adopt(static_cast<CDeviceInfo*>(NewObject<CDeviceInfo>()));
    info->SetRecord(record);
    return CRefPtr<IAudioDeviceInfo>::Share(info.Get());
}

} // namespace vorlund
