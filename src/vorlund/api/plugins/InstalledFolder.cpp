#include "vorlund/api/plugins/InstalledFolder.h"

#include "vorlund/api/plugins/PluginModule.h"
#include "vorlund/data/file/FileSystem.h"

namespace vorlund {
namespace {

/// From the folder of the library: beside it, and in the two forms of an installation, with the library in
/// "lib" and with the library in "bin".
constexpr const wchar* kPlaces[] = {VRL_L("vorlund-plugins"), VRL_L("vorlund/plugins"),
                                    VRL_L("../lib/vorlund/plugins")};

} // namespace

wstring FindInstalledPlugins() {
    const wstring library = pluginmodule::GetLibraryPath();
    const std::size_t separator = library.rfind(pluginmodule::kSeparator);
    if (separator == wstring::npos) return {};
    for (const wchar* const place : kPlaces) {
        wstring folder = library.substr(0, separator + 1) + place;
        if (filesystem::GetKind(folder.c_str()) == filesystem::TEntryKind::Directory) return folder;
    }
    return {};
}

} // namespace vorlund
