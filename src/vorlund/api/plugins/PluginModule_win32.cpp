#include "vorlund/api/plugins/PluginModule.h"

#include "vorlund/api/platform/WindowsLean.h"
#include "vorlund/api/plugins/PluginEntries.h"

/// The beginning of the image that this code is part of; the linker defines it.
extern "C" char __ImageBase[];

namespace vorlund::pluginmodule {
namespace {

/// Room for the path of a module, terminator included. A longer path would be cut, and name another folder.
constexpr DWORD kPathCapacity = 256;

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

wstring GetModulePath(HMODULE module) {
    wchar path[kPathCapacity];
    const DWORD length = GetModuleFileNameW(module, path, kPathCapacity);
    return length < kPathCapacity ? wstring(path, length) : wstring();
}

/// The loader wants backslashes, and takes a path that is not full for one of its own folders.
wstring GetFullPath(const wchar* path) {
    wstring full(GetFullPathNameW(path, 0, nullptr, nullptr), L'\0');
    if (full.empty()) return full;
    full.resize(GetFullPathNameW(path, static_cast<DWORD>(full.size()), full.data(), nullptr));
    return full;
}

/// Whether the loader can be told where to look for the libraries that a plug-in needs. Otherwise it takes
/// them from the working folder and from the folders of programs, where anybody's file may lie. The system
/// says that it knows the flags by exporting a function that came with them.
bool CanChooseFolders() {
    static const bool can = GetProcAddress(GetModuleHandleW(L"kernel32.dll"), "AddDllDirectory") != nullptr;
    return can;
}

template <class TEntry> TEntry Find(void* module, const char* name) {
    return reinterpret_cast<TEntry>(
        reinterpret_cast<void (*)()>(GetProcAddress(static_cast<HMODULE>(module), name)));
}

} // namespace

const wchar kSeparator = VRL_L('\\');
const wchar* const kExtension = VRL_L("dll");
const wchar* const kHelperName = VRL_L("vorlund-plugin-scan.exe");
const wchar* const kProgramsFromLibrary = VRL_L("");

wstring GetHostPath() {
    return GetModulePath(nullptr);
}

wstring GetLibraryPath() {
    return GetModulePath(reinterpret_cast<HMODULE>(__ImageBase));
}

void* Load(const wchar* path, int& error) {
    error = 0;
    if (!CanChooseFolders()) {
        error = ERROR_NOT_SUPPORTED;
        return nullptr;
    }
    const CQuietLoader quiet;
    void* const module = LoadLibraryExW(GetFullPath(path).c_str(), nullptr,
                                        LOAD_LIBRARY_SEARCH_DLL_LOAD_DIR | LOAD_LIBRARY_SEARCH_DEFAULT_DIRS);
    if (!module) error = static_cast<int>(GetLastError());
    return module;
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
