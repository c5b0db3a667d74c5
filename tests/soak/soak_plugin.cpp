// The plug-in that the soak loads again and again; it brings the devices.
#include <vorlund/Device.h>
#include <vorlund/ObjectImpl.h>
#include <vorlund/Plugin.h>
#include <vorlund/Vorlund.h>

using namespace vorlund;

namespace {

class CSoakDevice : public CObjectImpl<IDevice> {
public:
    static constexpr CId ClassId{0x50AC0001, 0x7E57, 1, 1};

    void Open() override {}
    void Close() override {}
};

} // namespace

bool VrlInitPlugin() {
    v.GetClassStore().RegisterClassVrl(
        {CSoakDevice::ClassId, VRL_L("soak::CSoakDevice"), &NewObject<CSoakDevice>});
    v.GetDeviceClassStore().RegisterDevice({CSoakDevice::ClassId, DEVICE_TYPE_AUDIO});
    return true;
}

void VrlClosePlugin() {}
