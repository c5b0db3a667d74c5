#include "vorlund/api/plugins/PluginModule.h"

#include "vorlund/api/platform/WindowsLean.h"
#include "vorlund/api/plugins/PluginEntries.h"
#include "vorlund/api/plugins/PluginImage.h"

#include <algorithm>
#include <iterator>
#include <string>
#include <vector>

/// The beginning of the image that this code is part of; the linker defines it.
extern "C" char __ImageBase[];

namespace vorlund::pluginmodule {
namespace {

/// Room for the path of a module, terminator included. A longer path would be cut, and name another folder.
constexpr DWORD kPathCapacity = 256;

/// More libraries than this lie beside no plug-in.
constexpr std::size_t kMaxWalk = 64;

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

/// The system's words for an error, in one line without a full stop.
wstring DescribeError(DWORD error) {
    wchar text[256];
    const DWORD length = FormatMessageW(
        FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS | FORMAT_MESSAGE_MAX_WIDTH_MASK, nullptr,
        error, 0, text, static_cast<DWORD>(std::size(text)), nullptr);
    wstring line(text, length);
    while (!line.empty() && (line.back() <= L' ' || line.back() == L'.')) line.pop_back();
    return line;
}

/// Whether the loader finds a library in the folders of programs and of the system. It is not run.
bool IsKnownLibrary(const wstring& name) {
    // The names of sets of functions, which are no files.
    if (name.starts_with(L"api-ms-") || name.starts_with(L"ext-ms-")) return true;
    if (GetModuleHandleW(name.c_str())) return true;
    const HMODULE module =
        LoadLibraryExW(name.c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE | LOAD_LIBRARY_SEARCH_DEFAULT_DIRS);
    if (module) FreeLibrary(module);
    return module != nullptr;
}

/// The first library that the file needs, or one of those beside it, and that is not there: a walk over the
/// tables of imports, as the loader names nobody. Empty when all are there.
wstring FindMissing(const wstring& path) {
    const wstring folder = path.substr(0, path.rfind(kSeparator) + 1);
    std::vector<wstring> files{path};
    for (std::size_t i = 0; i < files.size(); ++i) {
        for (const std::string& narrow : CImageFile(files[i].c_str()).ReadNeeded()) {
            const wstring name(narrow.begin(), narrow.end());
            const wstring beside = folder + name;
            if (GetFileAttributesW(beside.c_str()) != INVALID_FILE_ATTRIBUTES) {
                if (files.size() < kMaxWalk && std::find(files.begin(), files.end(), beside) == files.end())
                    files.push_back(beside);
            } else if (!IsKnownLibrary(name)) {
                return name;
            }
        }
    }
    return {};
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

void* Load(const wchar* path, TRefusal& refusal) {
    refusal = {};
    DWORD error = ERROR_NOT_SUPPORTED;
    if (CanChooseFolders()) {
        const CQuietLoader quiet;
        const wstring full = GetFullPath(path);
        void* const module = LoadLibraryExW(
            full.c_str(), nullptr, LOAD_LIBRARY_SEARCH_DLL_LOAD_DIR | LOAD_LIBRARY_SEARCH_DEFAULT_DIRS);
        if (module) return module;
        error = GetLastError();
        if (error == ERROR_MOD_NOT_FOUND) refusal.missing = FindMissing(full);
    }
    refusal.error = static_cast<int>(error);
    refusal.text = DescribeError(error);
    return nullptr;
}

TInitEntry FindInitEntry(void* module) {
    return Find<TInitEntry>(module, kInitEntryName.whole);
}

TCloseEntry FindCloseEntry(void* module) {
    return Find<TCloseEntry>(module, kCloseEntryName.whole);
}

const vorlund_plugin_table* FindTable(void* module) {
    if (const void* const table = Find<const void*>(module, kTableName.data()))
        return static_cast<const vorlund_plugin_table*>(table);
    const auto get = Find<TTableFunction>(module, kTableFunctionName.data());
    return get ? get() : nullptr;
}

void Unload(void* module) {
    FreeLibrary(static_cast<HMODULE>(module));
}

} // namespace vorlund::pluginmodule
