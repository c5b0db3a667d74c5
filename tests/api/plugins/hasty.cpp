// The plug-in that registers a class and then does not want to be loaded.
#include "api/plugins/Report.h"

#include <vorlund/ObjectImpl.h>
#include <vorlund/Vorlund.h>

using namespace vorlund;

namespace {

class CHasty : public CObjectImpl<IObject> {
public:
    static constexpr CId ClassId{0x7E57C1A5, 7, 8, 9};
};

} // namespace

bool VrlInitPlugin() {
    v.GetClassStore().RegisterClassVrl({CHasty::ClassId, VRL_L("test::CHasty"), &NewObject<CHasty>});
    return false;
}

void VrlClosePlugin() {
    test::Report("close", "hasty");
}
