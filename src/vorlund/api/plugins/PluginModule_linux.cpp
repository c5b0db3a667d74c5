#include "vorlund/api/plugins/PluginModule.h"

#include "vorlund/api/plugins/PluginEntries.h"
#include "vorlund/data/file/PathCodec_posix.h"

#include <string>
#include <string_view>

#include <dlfcn.h>
#include <unistd.h>

namespace vorlund::pluginmodule {
const wchar kSeparator = VRL_L('/');
const wchar* const kExtension = VRL_L("so");
const wchar* const kHelperName = VRL_L("vorlund-plugin-scan");
const wchar* const kProgramsFromLibrary = VRL_L("" VORLUND_PROGRAMS_FROM_LIBRARY "/");

wstring GetHostPath() {
    std::string path(256, '\0');
    for (;;) {
        const ssize_t length = readlink("/proc/self/exe", path.data(), path.size());
        if (length < 0) return {};
        if (static_cast<std::size_t>(length) < path.size())
            return pathcodec::Decode(std::string_view(path.data(), static_cast<std::size_t>(length)));
        // A full buffer may hold a path that was cut.
        path.resize(path.size() * 2);
    }
}

wstring GetLibraryPath() {
    Dl_info info;
    // A path that is not full meant the working folder of the program's start.
    const bool isFull = dladdr(&kSeparator, &info) != 0 && info.dli_fname && info.dli_fname[0] == '/';
    return isFull ? pathcodec::Decode(info.dli_fname) : wstring();
}

void* Load(const wchar* path, int& error) {
    error = 0;
    std::string bytes;
    if (!pathcodec::Encode(path, bytes)) return nullptr;
    // A name alone would be looked for in the system's folders.
    if (bytes.find('/') == std::string::npos) bytes.insert(0, "./");
    // RTLD_NOW, so that a missing symbol shows here and not in the first call; RTLD_LOCAL, so that no plug-in
    // uses the symbols of another.
    return dlopen(bytes.c_str(), RTLD_NOW | RTLD_LOCAL);
}

TInitEntry FindInitEntry(void* module) {
    return reinterpret_cast<TInitEntry>(dlvsym(module, kInitEntryName.symbol, kInitEntryName.version));
}

TCloseEntry FindCloseEntry(void* module) {
    return reinterpret_cast<TCloseEntry>(dlvsym(module, kCloseEntryName.symbol, kCloseEntryName.version));
}

void Unload(void* module) {
    dlclose(module);
}

} // namespace vorlund::pluginmodule
