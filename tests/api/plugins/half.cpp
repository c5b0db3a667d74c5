// The shared library that has one entry point of a plug-in only.
#include "api/plugins/Report.h"

bool VrlInitPlugin() {
    vorlund::test::Report("init", "half");
    return true;
}
