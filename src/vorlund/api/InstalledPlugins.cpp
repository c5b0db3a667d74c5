#include "vorlund/api/plugins/PluginModule.h"
#include "vorlund/data/file/FileSystem.h"

#include <vorlund/Vorlund.h>

namespace vorlund {

bool AddInstalledPlugins() {
    const wstring library = pluginmodule::GetLibraryPath();
    const std::size_t separator = library.rfind(pluginmodule::kSeparator);
    if (separator == wstring::npos) return false;
    const wstring folder = library.substr(0, separator + 1) + VRL_L("vorlund-plugins");
    if (filesystem::GetKind(folder.c_str()) != filesystem::TEntryKind::Directory) return false;
    CPluginStore& store = v.GetPluginStore();
    if (!store.HasPluginPath(folder.c_str())) store.AddPluginPath(folder.c_str());
    return true;
}

} // namespace vorlund
