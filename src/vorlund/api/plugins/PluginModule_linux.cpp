#include "vorlund/api/plugins/PluginModule.h"

#include "vorlund/data/file/PathCodec_posix.h"

#include <string>
#include <string_view>

#include <dlfcn.h>
#include <unistd.h>

namespace vorlund::pluginmodule {
namespace {

// An ELF symbol "name@@version" is `name` in its default version `version`; that is how a name with "@@" in
// it is exported. What follows "?" is the decoration of one Windows compiler.
constexpr const char* kInitName = "?VrlInitPlugin";
constexpr const char* kInitVersion = "YA_NXZ";
constexpr const char* kCloseName = "?VrlClosePlugin";
constexpr const char* kCloseVersion = "YAXXZ";

} // namespace

const wchar kSeparator = VRL_L('/');
const wchar* const kExtension = VRL_L("so");

wstring GetHostPath() {
    std::string path(256, '\0');
    for (;;) {
        const ssize_t length = readlink("/proc/self/exe", path.data(), path.size());
        if (length < 0) return {};
        if (static_cast<std::size_t>(length) < path.size())
            return pathcodec::Decode(std::string_view(path.data(), static_cast<std::size_t>(length)));
        // Perhaps it was cut.
        path.resize(path.size() * 2);
    }
}

void* Load(const wchar* path) {
    std::string bytes;
    if (!pathcodec::Encode(path, bytes)) return nullptr;
    // At once and for itself: what is missing shows here and not in the first call, and the names of one
    // plug-in mean nothing to another.
    return dlopen(bytes.c_str(), RTLD_NOW | RTLD_LOCAL);
}

TInitEntry FindInitEntry(void* module) {
    return reinterpret_cast<TInitEntry>(dlvsym(module, kInitName, kInitVersion));
}

TCloseEntry FindCloseEntry(void* module) {
    return reinterpret_cast<TCloseEntry>(dlvsym(module, kCloseName, kCloseVersion));
}

void Unload(void* module) {
    dlclose(module);
}

} // namespace vorlund::pluginmodule
