// The application around it, which finds it in the folder "plugins" beside the program.
#include <vorlund/RefPtr.h>
#include <vorlund/Vorlund.h>

#include <cstdio>

using namespace vorlund;

int main() {
    v.Init();
    const bool isLoaded = v.GetPluginStore().IsPluginLoaded(VRL_L("consumer_plugin"));
    const bool isCreated =
        isLoaded && CRefPtr<IObject>::Adopt(v.GetClassStore().CreateObject(VRL_L("consumer::CPluginClass")));
    v.Close();
    std::printf("plugin_host: %s, %s\n", isLoaded ? "loaded" : "not loaded",
                isCreated ? "created" : "not created");
    return isCreated ? 0 : 1;
}
