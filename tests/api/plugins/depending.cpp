// The plug-in that needs another library and tells whose it got.
#include "api/plugins/Report.h"

extern "C" const char* GetDependencyAuthor();

bool VrlInitPlugin() {
    vorlund::test::Report("init with the library of", GetDependencyAuthor());
    return true;
}

void VrlClosePlugin() {}
