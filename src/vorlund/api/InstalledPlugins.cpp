#include "vorlund/api/plugins/InstalledFolder.h"

#include <vorlund/Vorlund.h>

namespace vorlund {

bool AddInstalledPlugins() {
    const wstring folder = FindInstalledPlugins();
    if (folder.empty()) return false;
    CPluginStore& store = v.GetPluginStore();
    if (!store.HasPluginPath(folder.c_str())) store.AddPluginPath(folder.c_str());
    return true;
}

} // namespace vorlund
