// A plug-in of somebody else, by the installed package.
#include <vorlund/ObjectImpl.h>
#include <vorlund/Plugin.h>
#include <vorlund/Vorlund.h>

using namespace vorlund;

namespace {

class CPluginClass : public CObjectImpl<IObject> {
public:
    static constexpr CId ClassId{0xC0275B3E, 0x92D1F684, 0x7E03A9B5, 0x41C86FD0};
};

} // namespace

bool VrlInitPlugin() {
    v.GetClassStore().RegisterClassVrl(
        {CPluginClass::ClassId, VRL_L("consumer::CPluginClass"), &NewObject<CPluginClass>});
    return true;
}

void VrlClosePlugin() {}
