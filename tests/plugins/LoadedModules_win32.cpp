#include "plugins/LoadedModules.h"

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

namespace vorlund::test {

const char* const kPluginEnding = ".dll";

bool IsInProcess(const std::filesystem::path& file) {
    std::filesystem::path path = file;
    return GetModuleHandleW(path.make_preferred().c_str()) != nullptr;
}

} // namespace vorlund::test
