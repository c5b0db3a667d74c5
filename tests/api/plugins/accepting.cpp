// The plug-in that goes well.
#include "api/plugins/Report.h"

bool VrlInitPlugin() {
    vorlund::test::Report("init", "accepting");
    return true;
}

void VrlClosePlugin() {
    vorlund::test::Report("close", "accepting");
}
