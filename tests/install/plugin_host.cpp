// The application around it, which finds it in the folder "plugins" beside the program.
#include <vorlund/PluginReport.h>
#include <vorlund/RefPtr.h>
#include <vorlund/Vorlund.h>

#include <cstdio>

using namespace vorlund;

/// The plug-in's report says that it came through the scan, whose program is installed with the library.
static bool IsReported() {
    CPluginStore& store = v.GetPluginStore();
    for (unsigned int i = 0; i < store.GetReportCount(); ++i)
        if (store.GetReport(i).outcome == PLUGIN_LOADED) return true;
    return false;
}

int main() {
    v.GetPluginStore().SetScanMode(PLUGIN_SCAN_CHILD);
    v.Init();
    const bool isLoaded = v.GetPluginStore().IsPluginLoaded(VRL_L("consumer_plugin"));
    const bool isCreated =
        isLoaded && CRefPtr<IObject>::Adopt(v.GetClassStore().CreateObject(VRL_L("consumer::CPluginClass")));
    const bool isReported = IsReported();
    v.Close();
    std::printf("plugin_host: %s, %s, %s\n", isLoaded ? "loaded" : "not loaded",
                isCreated ? "created" : "not created", isReported ? "reported" : "not reported");
    return isCreated && isReported ? 0 : 1;
}
