// The plug-in that brings an audio device.
#include "api/plugins/Report.h"

#include <vorlund/Device.h>
#include <vorlund/ObjectImpl.h>
#include <vorlund/Vorlund.h>

using namespace vorlund;

namespace {

class CSpeaker : public CObjectImpl<IDevice> {
public:
    static constexpr CId ClassId{0x7E57C1A5, 4, 5, 6};

    void Open() override { test::Report("open", "device"); }
    void Close() override { test::Report("close", "device"); }
};

} // namespace

bool VrlInitPlugin() {
    v.GetClassStore().RegisterClassVrl({CSpeaker::ClassId, VRL_L("test::CSpeaker"), &NewObject<CSpeaker>});
    v.GetDeviceClassStore().RegisterDevice({CSpeaker::ClassId, DEVICE_TYPE_AUDIO});
    return true;
}

void VrlClosePlugin() {}
