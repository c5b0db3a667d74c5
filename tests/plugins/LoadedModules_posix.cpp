#include "plugins/LoadedModules.h"

#include <dlfcn.h>

namespace vorlund::test {

const char* const kPluginEnding = ".so";

bool IsInProcess(const std::filesystem::path& file) {
    void* const module = dlopen(file.c_str(), RTLD_NOW | RTLD_NOLOAD);
    if (module) dlclose(module);
    return module != nullptr;
}

} // namespace vorlund::test
