// The plug-in that gives an object back when it is too late.
#include "api/plugins/Report.h"

#include <vorlund/ClassIds.h>
#include <vorlund/Object.h>
#include <vorlund/ObjectServices.h>

namespace {
vorlund::IObject* object = nullptr;
}

bool VrlInitPlugin() {
    object = vorlund::services::CreateObject(vorlund::classid::CObject);
    vorlund::test::Report("init", "late");
    return true;
}

void VrlClosePlugin() {
    vorlund::test::Report("close", "late");
    object->Release();
}
