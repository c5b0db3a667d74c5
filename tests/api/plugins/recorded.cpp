// The plug-in that tells what it is, and registers one of everything.
#include "api/plugins/Report.h"

#include <vorlund/Device.h>
#include <vorlund/ObjectImpl.h>
#include <vorlund/PluginInfo.h>
#include <vorlund/Vorlund.h>

using namespace vorlund;

VRL_PLUGIN_INFO("recorded", "2.5", "MIT")

namespace {

class CRecorded : public CObjectImpl<IDevice> {
public:
    static constexpr CId ClassId{0x7E57C1A5, 10, 11, 12};

    void Open() override {}
    void Close() override {}
};

} // namespace

bool VrlInitPlugin() {
    test::Report("init", "recorded");
    NotePluginLibrary(VRL_L("libone 1.0"));
    NotePluginLibrary(nullptr);
    NotePluginLibrary(VRL_L(""));
    NotePluginLibrary(VRL_L("libtwo 2.0"));
    const CId& id = CRecorded::ClassId;
    v.GetClassStore().RegisterClassVrl({id, VRL_L("test::CRecorded"), &NewObject<CRecorded>});
    v.GetCodecClassStore().RegisterDecoder({id, CId(1, 2, 3, 4), CId(5, 6, 7, 8)});
    v.GetCodecClassStore().RegisterEncoder({id, CId(1, 2, 3, 4), CId(5, 6, 7, 8)});
    v.GetDeviceClassStore().RegisterDevice({id, DEVICE_TYPE_AUDIO});
    return true;
}

void VrlClosePlugin() {
    test::Report("close", "recorded");
}
