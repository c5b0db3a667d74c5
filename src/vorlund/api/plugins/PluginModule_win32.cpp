#include "vorlund/api/plugins/PluginModule.h"

#include "vorlund/api/platform/WindowsLean.h"
#include "vorlund/api/plugins/PluginEntries.h"

namespace vorlund::pluginmodule {
namespace {

/// Room for the host's path, terminator included. A longer path would be cut, and name another folder.
constexpr DWORD kHostPathCapacity = 256;

/// Keeps the system from showing a box about a file that it cannot load.
class CQuietLoader {
public:
    CQuietLoader() { SetThreadErrorMode(SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX, &former_); }
    CQuietLoader(const CQuietLoader&) = delete;
    CQuietLoader& operator=(const CQuietLoader&) = delete;
    ~CQuietLoader() { SetThreadErrorMode(former_, nullptr); }

private:
    DWORD former_ = 0;
};

/// The loader wants backslashes, and takes a path that is not full for one of its own folders.
wstring GetFullPath(const wchar* path) {
    wstring full(GetFullPathNameW(path, 0, nullptr, nullptr), L'\0');
    if (full.empty()) return full;
    full.resize(GetFullPathNameW(path, static_cast<DWORD>(full.size()), full.data(), nullptr));
    return full;
}

template <class TEntry> TEntry Find(void* module, const char* name) {
    return reinterpret_cast<TEntry>(
        reinterpret_cast<void (*)()>(GetProcAddress(static_cast<HMODULE>(module), name)));
}

} // namespace

const wchar kSeparator = VRL_L('\\');
const wchar* const kExtension = VRL_L("dll");

wstring GetHostPath() {
    wchar path[kHostPathCapacity];
    const DWORD length = GetModuleFileNameW(nullptr, path, kHostPathCapacity);
    return length < kHostPathCapacity ? wstring(path, length) : wstring();
}

void* Load(const wchar* path) {
    const CQuietLoader quiet;
    return LoadLibraryW(GetFullPath(path).c_str());
}

TInitEntry FindInitEntry(void* module) {
    return Find<TInitEntry>(module, kInitEntryName.whole);
}

TCloseEntry FindCloseEntry(void* module) {
    return Find<TCloseEntry>(module, kCloseEntryName.whole);
}

void Unload(void* module) {
    FreeLibrary(static_cast<HMODULE>(module));
}

} // namespace vorlund::pluginmodule
