// The system's library. It brings the run time of OpenMP, which ends the process when it gets no memory while
// it is loaded: so it is loaded for those who resample, and not for every program that loads the plug-in.
#include "SoxrLibrary.h"

#include <optional>

#include <dlfcn.h>

namespace {

template <class TFunction> bool Find(void* module, const char* name, TFunction& function) {
    function = reinterpret_cast<TFunction>(dlsym(module, name));
    return function != nullptr;
}

std::optional<TSoxrLibrary> Load() {
    // It stays in the process: its threads may outlive the plug-in.
    void* const module = dlopen("libsoxr.so.0", RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
    TSoxrLibrary library{};
    if (module && Find(module, "soxr_create", library.create) &&
        Find(module, "soxr_delete", library.destroy) && Find(module, "soxr_process", library.process) &&
        Find(module, "soxr_quality_spec", library.qualitySpec) &&
        Find(module, "soxr_runtime_spec", library.runtimeSpec))
        return library;
    return std::nullopt;
}

} // namespace

const TSoxrLibrary* FindSoxrLibrary() {
    static const std::optional<TSoxrLibrary> library = Load();
    return library ? &*library : nullptr;
}
