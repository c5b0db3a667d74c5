#include "vorlund/devices/XcbLibrary.h"

#include <dlfcn.h>

namespace vorlund {
namespace {

template <class TFunction> bool Find(void* module, const char* name, TFunction& function) {
    function = reinterpret_cast<TFunction>(dlsym(module, name));
    return function != nullptr;
}

bool Load(TXcbLibrary& library) {
    void* const module = dlopen("libxcb.so.1", RTLD_NOW | RTLD_LOCAL);
    if (!module) return false;
    bool complete = true;
#define VRL_XCB_FIND(name) complete &= Find(module, #name, library.name);
    VRL_XCB_FUNCTIONS(VRL_XCB_FIND)
#undef VRL_XCB_FIND
    if (!complete) dlclose(module);
    return complete;
}

} // namespace

const TXcbLibrary* LoadXcb() noexcept {
    static TXcbLibrary library;
    static const bool isLoaded = Load(library);
    return isLoaded ? &library : nullptr;
}

} // namespace vorlund
