// The plug-in that uses the store while the store uses it.
#include "api/plugins/Report.h"

#include <vorlund/Vorlund.h>

using namespace vorlund;

bool VrlInitPlugin() {
    test::Report("init", "nesting");
    // The lists of the store move.
    for (int i = 0; i < 100; ++i) {
        v.GetPluginStore().AddPluginPath(VRL_L("no/such/folder"));
        v.GetPluginStore().AddPluginExtension(VRL_L("none"));
    }
    if (!v.GetPluginStore().IsPluginLoaded(VRL_L("accepting")))
        v.GetPluginStore().LoadPlugin(VRL_L("accepting"));
    test::Report("end of init", "nesting");
    return true;
}

void VrlClosePlugin() {
    test::Report("close", "nesting");
    v.GetPluginStore().Close();
    test::Report("end of close", "nesting");
}
