#include "api/unload_child.h"

#include <dlfcn.h>
#include <filesystem>
#include <link.h>
#include <string>

namespace vorlund::test {
namespace {

std::string FileName(const char* name) {
    return "lib" + std::string(name) + ".so";
}

} // namespace

void* LoadModule(const char* name) {
    // By its whole path: AddressSanitizer's own dlopen does not know the program's run path.
    const auto program = std::filesystem::read_symlink("/proc/self/exe");
    return dlopen((program.parent_path() / FileName(name)).c_str(), RTLD_NOW | RTLD_LOCAL);
}

void (*FindFunction(void* module, const char* name))() {
    return reinterpret_cast<void (*)()>(dlsym(module, name));
}

bool UnloadModule(void* module) {
    return dlclose(module) == 0;
}

bool IsLoaded(const char* name) {
    // The name under which the loader knows it carries the version.
    std::string wanted = FileName(name);
    return dl_iterate_phdr(
               [](dl_phdr_info* module, std::size_t, void* prefix) {
                   const std::string file = std::filesystem::path(module->dlpi_name).filename();
                   return static_cast<int>(file.starts_with(*static_cast<const std::string*>(prefix)));
               },
               &wanted) != 0;
}

} // namespace vorlund::test
