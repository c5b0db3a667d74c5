#include "Folders.h"

#include <vorlund/Debug.h>
#include <vorlund/Path.h>
#include <vorlund/Vorlund.h>

#include <filesystem>
#include <type_traits>

using namespace vorlund;
namespace fs = std::filesystem;

namespace {

fs::path ToSystem(const wchar* path) {
    if constexpr (std::is_same_v<fs::path::value_type, wchar>)
        return fs::path(path);
    else
        return fs::path(PathToUtf8(path));
}

/// The path without what leads nowhere: a separator at its end, "." and the like.
fs::path ToNormal(const fs::path& path) {
    std::error_code ignored;
    const fs::path normal = fs::absolute(path, ignored).lexically_normal();
    return normal.has_filename() ? normal : normal.parent_path();
}

/// Whether both name one folder. On Windows the system's answer is not to be had for every folder.
bool AreSame(const fs::path& one, const fs::path& other) {
    std::error_code ignored;
    return fs::equivalent(one, other, ignored) || ToNormal(one) == ToNormal(other);
}

} // namespace

bool IsFolder(const wchar* path) {
    std::error_code ignored;
    return fs::is_directory(ToSystem(path), ignored);
}

bool IsFile(const std::string& path) {
    std::error_code ignored;
    return fs::is_regular_file(ToSystem(PathFromUtf8(path.c_str()).c_str()), ignored);
}

void AddPluginFolder(const std::string& path) {
    const wstring folder = PathFromUtf8(path.c_str());
    if (!IsFolder(folder.c_str())) {
        CDebug::PrintMessage(DEBUG_MESSAGE_STDERR,
                             VRL_L("vorlund: warning: the plug-in path '%s' is no folder"), folder.c_str());
        return;
    }
    CPluginStore& store = v.GetPluginStore();
    for (unsigned int i = 0; i < store.GetPluginPathCount(); ++i)
        if (AreSame(ToSystem(store.GetPluginPath(i)), ToSystem(folder.c_str()))) return;
    store.AddPluginPath(folder.c_str());
}
