#include "api/plugins/LoadedModules.h"

#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <link.h>

namespace vorlund::test {

const char* const kProgramEnding = "";
const std::size_t kScanStep = 64;
const char* const kPluginEnding = ".so";

std::size_t GetHeaderSize(const std::string& image) {
    ElfW(Ehdr) header;
    std::memcpy(&header, image.data(), sizeof(header));
    return header.e_phoff + header.e_phnum * sizeof(ElfW(Phdr));
}

void EndProcessAtFaults() {}

bool IsInProcess(const std::filesystem::path& file) {
    void* const module = dlopen(file.c_str(), RTLD_NOW | RTLD_NOLOAD);
    if (module) dlclose(module);
    return module != nullptr;
}

void SetEnvironment(const char* name, const char* value) {
    setenv(name, value, 1);
}

} // namespace vorlund::test
