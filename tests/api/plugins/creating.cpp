// The plug-in that makes objects at the beginning, and has a class of its own.
#include "api/plugins/Report.h"

#include <vorlund/ClassIds.h>
#include <vorlund/ObjectImpl.h>
#include <vorlund/RefPtr.h>
#include <vorlund/Vorlund.h>

using namespace vorlund;

namespace {

class CPluginObject : public CObjectImpl<IObject> {
public:
    static constexpr CId ClassId{0x7E57C1A5, 1, 2, 3};
};

} // namespace

bool VrlInitPlugin() {
    v.GetClassStore().RegisterClassVrl(
        {CPluginObject::ClassId, VRL_L("test::CPluginObject"), &NewObject<CPluginObject>});
    const auto object = CreateAs<IObject>(classid::CObject);
    const auto own = CreateAs<IObject>(CPluginObject::ClassId);
    test::Report(own->GetObjectNumber() == object->GetObjectNumber() + 1 ? "init" : "wrong number in",
                 "creating");
    return true;
}

void VrlClosePlugin() {
    test::Report("close", "creating");
}
