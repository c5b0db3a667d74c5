// The plug-in with a table that nobody can use, which has registered a class itself.
#include <vorlund/ObjectImpl.h>
#include <vorlund/PluginTable.h>
#include <vorlund/Vorlund.h>

using namespace vorlund;

namespace {

class CTabled : public CObjectImpl<IObject> {
public:
    static constexpr CId ClassId{0x7E57C1A5, 30, 31, 32};
};

} // namespace

// The names of plug-ins in C, which have a table.
extern "C" VRL_PLUGIN_ENTRY bool VrlInitPlugin();
extern "C" VRL_PLUGIN_ENTRY void VrlClosePlugin();
extern "C" VRL_PLUGIN_ENTRY vorlund_plugin_table vorlund_plugin_v1;

vorlund_plugin_table vorlund_plugin_v1 = {};

bool VrlInitPlugin() {
    v.GetClassStore().RegisterClassVrl({CTabled::ClassId, VRL_L("test::CTabled"), &NewObject<CTabled>});
    return true;
}

void VrlClosePlugin() {}
