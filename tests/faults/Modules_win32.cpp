// The import tables of Windows modules.
#include "faults/Hooks.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string_view>
#include <unordered_map>

#include <windows.h>
// After windows.h, which they need.
#include <tlhelp32.h>

namespace vorlund::faults {
namespace {

/// A function that a module imports, and the place of its address.
using TOnImport = std::function<void(const char* name, void** place)>;

void ForEachImport(HMODULE module, const TOnImport& onImport) {
    auto* const base = reinterpret_cast<std::uint8_t*>(module);
    const auto* const start = reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
    const auto* const headers = reinterpret_cast<const IMAGE_NT_HEADERS*>(base + start->e_lfanew);
    const IMAGE_DATA_DIRECTORY& table = headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
    if (table.VirtualAddress == 0) return;
    const auto* source = reinterpret_cast<const IMAGE_IMPORT_DESCRIPTOR*>(base + table.VirtualAddress);
    for (; source->Name != 0 && source->OriginalFirstThunk != 0; ++source) {
        const auto* name = reinterpret_cast<const IMAGE_THUNK_DATA*>(base + source->OriginalFirstThunk);
        auto* place = reinterpret_cast<IMAGE_THUNK_DATA*>(base + source->FirstThunk);
        for (; name->u1.AddressOfData != 0; ++name, ++place) {
            if (IMAGE_SNAP_BY_ORDINAL(name->u1.Ordinal)) continue;
            const auto* const import =
                reinterpret_cast<const IMAGE_IMPORT_BY_NAME*>(base + name->u1.AddressOfData);
            onImport(reinterpret_cast<const char*>(import->Name),
                     reinterpret_cast<void**>(&place->u1.Function));
        }
    }
}

using THooksByName = std::unordered_map<std::string_view, const THook*>;

THooksByName Index(const std::vector<THook>& hooks) {
    THooksByName byName;
    for (const THook& hook : hooks) byName.emplace(hook.name, &hook);
    return byName;
}

void Patch(HMODULE module, const THooksByName& hooks) {
    ForEachImport(module, [&](const char* name, void** place) {
        const auto found = hooks.find(name);
        if (found == hooks.end() || *place == found->second->replacement) return;
        // All modules have it from the same one.
        if (!*found->second->real) *found->second->real = *place;
        DWORD former = 0;
        VirtualProtect(place, sizeof *place, PAGE_READWRITE, &former);
        *place = found->second->replacement;
        VirtualProtect(place, sizeof *place, former, &former);
    });
}

/// The library, its plug-ins and what else lies beside this program: the standard library is there as well.
/// The runtime of the compiler and of threads allocate for every program and end it when they cannot.
bool IsCaught(const std::wstring& path) {
    wchar_t program[MAX_PATH];
    GetModuleFileNameW(nullptr, program, MAX_PATH);
    const std::wstring folder = std::filesystem::path(program).parent_path().native() + L'\\';
    const std::wstring name = std::filesystem::path(path).filename().native();
    return path.rfind(folder, 0) == 0 && name.rfind(L"libgcc", 0) != 0 &&
           name.rfind(L"libwinpthread", 0) != 0;
}

template <class TAct> void ForEachModule(TAct act) {
    const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPMODULE, 0);
    MODULEENTRY32W entry{};
    entry.dwSize = sizeof entry;
    for (BOOL isThere = Module32FirstW(snapshot, &entry); isThere; isThere = Module32NextW(snapshot, &entry))
        act(entry.hModule, std::wstring(entry.szExePath));
    CloseHandle(snapshot);
}

} // namespace

void PatchModules() {
    static const std::vector<THook> own = GetOwnHooks();
    static const THooksByName allHooks = Index(GetHooks());
    static const THooksByName ownHooks = Index(own);
    ForEachModule([&](HMODULE module, const std::wstring& path) {
        if (module == GetModuleHandleW(nullptr)) {
            Patch(module, ownHooks);
        } else if (IsCaught(path)) {
            Patch(module, allHooks);
        }
    });
}

std::vector<std::string> GetLibraryImports() {
    std::vector<std::string> imports;
    ForEachImport(GetModuleHandleW(L"vorlund.dll"),
                  [&](const char* name, void**) { imports.emplace_back(name); });
    return imports;
}

std::string DescribeAddress(const void* address) {
    HMODULE module = nullptr;
    const DWORD flags = GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT;
    if (!GetModuleHandleExW(flags, static_cast<const wchar_t*>(address), &module)) return "nowhere";
    char path[MAX_PATH] = {};
    GetModuleFileNameA(module, path, MAX_PATH);
    const std::string text = path;
    char offset[32];
    std::snprintf(offset, sizeof offset, "+0x%lx",
                  static_cast<unsigned long>(reinterpret_cast<std::uintptr_t>(address) -
                                             reinterpret_cast<std::uintptr_t>(module)));
    return text.substr(text.rfind('\\') + 1) + offset;
}

} // namespace vorlund::faults
