#include "vorlund/api/plugins/PluginModule.h"

#include "vorlund/api/plugins/PluginEntries.h"
#include "vorlund/data/file/PathCodec_posix.h"

#include <algorithm>
#include <string>
#include <string_view>

#include <dlfcn.h>
#include <link.h>
#include <unistd.h>

namespace vorlund::pluginmodule {
const wchar kSeparator = VRL_L('/');
const wchar* const kExtension = VRL_L("so");
const wchar* const kHelperName = VRL_L("vorlund-plugin-scan");
const wchar* const kProgramsFromLibrary = VRL_L("" VORLUND_PROGRAMS_FROM_LIBRARY "/");

namespace {

/// The loader says "object: reason", the reason in the user's language. Only an object that was looked for
/// and not found is named without a folder.
void Explain(const char* error, std::string_view path, TRefusal& refusal) {
    constexpr std::string_view kMark = ": ";
    std::string_view text = error ? error : "";
    const std::string_view object = text.substr(0, text.find(kMark));
    if (object == path)
        text.remove_prefix(std::min(text.size(), path.size() + kMark.size()));
    else if (object.size() < text.size() && object.find('/') == std::string_view::npos)
        refusal.missing = pathcodec::Decode(object);
    refusal.text = pathcodec::Decode(text);
}

/// A symbol of the module itself. The search goes on in the libraries that it needs.
void* FindOwn(void* module, const char* name) {
    void* const found = dlsym(module, name);
    link_map* own = nullptr;
    Dl_info info;
    void* owner = nullptr;
    if (!found || dlinfo(module, RTLD_DI_LINKMAP, &own) != 0 ||
        dladdr1(found, &info, &owner, RTLD_DL_LINKMAP) == 0)
        return nullptr;
    return owner == own ? found : nullptr;
}

} // namespace

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

void* Load(const wchar* path, TRefusal& refusal) {
    refusal = {};
    std::string bytes;
    if (!pathcodec::Encode(path, bytes)) return nullptr;
    // A name alone would be looked for in the system's folders.
    if (bytes.find('/') == std::string::npos) bytes.insert(0, "./");
    // RTLD_NOW, so that a missing symbol shows here and not in the first call; RTLD_LOCAL, so that no plug-in
    // uses the symbols of another.
    void* const module = dlopen(bytes.c_str(), RTLD_NOW | RTLD_LOCAL);
    // NOLINTNEXTLINE(concurrency-mt-unsafe): glibc keeps the text for each thread.
    if (!module) Explain(dlerror(), bytes, refusal);
    return module;
}

TInitEntry FindInitEntry(void* module) {
    return reinterpret_cast<TInitEntry>(dlvsym(module, kInitEntryName.symbol, kInitEntryName.version));
}

TCloseEntry FindCloseEntry(void* module) {
    return reinterpret_cast<TCloseEntry>(dlvsym(module, kCloseEntryName.symbol, kCloseEntryName.version));
}

const vorlund_plugin_table* FindTable(void* module) {
    if (const void* const table = FindOwn(module, kTableName.data()))
        return static_cast<const vorlund_plugin_table*>(table);
    const auto get = reinterpret_cast<TTableFunction>(FindOwn(module, kTableFunctionName.data()));
    return get ? get() : nullptr;
}

void Unload(void* module) {
    dlclose(module);
}

} // namespace vorlund::pluginmodule
