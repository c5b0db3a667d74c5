// The plug-in that does not want to stay.
#include "api/plugins/Report.h"

bool VrlInitPlugin() {
    vorlund::test::Report("init", "refusing");
    return false;
}

void VrlClosePlugin() {
    vorlund::test::Report("close", "refusing");
}
