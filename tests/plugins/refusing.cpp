// The plug-in that does not want to stay.
#include "plugins/Report.h"

bool VrlInitPlugin() {
    vorlund::test::Report("init", "refusing");
    return false;
}

void VrlClosePlugin() {
    vorlund::test::Report("close", "refusing");
}
