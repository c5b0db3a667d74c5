// The system's library, by the name under which every distribution has it: SDL 2 itself, or what stands for
// it on top of a later one. It is loaded for those who use sound, and not for every program that loads the
// plug-in.
#include "SdlLibrary.h"

#include "Module_posix.h"

#include <cstdarg>
#include <optional>

namespace {

std::optional<TSdlLibrary> Load() {
    // It stays in the process: what it leaves behind, and the application that may use it too, need its code.
    void* const module = dlopen("libSDL2-2.0.so.0", RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
    if (!module) return std::nullopt;
    TSdlLibrary library{};
    bool isWhole = true;
#define VORLUND_SDL_FIND(name) isWhole = isWhole && FindIn(module, "SDL_" #name, library.name);
    VORLUND_SDL_FUNCTIONS(VORLUND_SDL_FIND)
#undef VORLUND_SDL_FIND
    if (isWhole) return library;
    dlclose(module);
    return std::nullopt;
}

} // namespace

const TSdlLibrary* FindSdlLibrary() {
    static const std::optional<TSdlLibrary> library = Load();
    return library ? &*library : nullptr;
}

void SilenceThisThread() {
    using THandler = void (*)(const char* file, int line, const char* function, int error, const char* format,
                              va_list arguments);
    // ALSA's library, which prints a line for each step of an opening that fails. SDL uses the same one.
    void* const module = dlopen("libasound.so.2", RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
    THandler (*setHandler)(THandler) = nullptr;
    if (!module || !FindIn(module, "snd_lib_error_set_local", setHandler)) return;
    setHandler([](const char*, int, const char*, int, const char*, va_list) {});
}
