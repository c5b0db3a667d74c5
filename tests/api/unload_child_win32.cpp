#include "api/unload_child.h"

#include <string>

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

namespace vorlund::test {

void* LoadModule(const char* name) {
    return LoadLibraryA((std::string(name) + ".dll").c_str());
}

void (*FindFunction(void* module, const char* name))() {
    return reinterpret_cast<void (*)()>(GetProcAddress(static_cast<HMODULE>(module), name));
}

bool UnloadModule(void* module) {
    return FreeLibrary(static_cast<HMODULE>(module)) != 0;
}

bool IsLoaded(const char* name) {
    return GetModuleHandleA((std::string(name) + ".dll").c_str()) != nullptr;
}

} // namespace vorlund::test
