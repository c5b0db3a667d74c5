// A library that a variant of the program is linked with: refuses memory to the program, to the library and
// to the standard library. The allocation whose number is in the environment fails, from 1 on, and all that
// follow it unless only one is to be refused. The system prepares this library before most others, so that
// what they take while they are loaded counts too.
#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <cstring>

#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#include <windows.h>

namespace {

LONG calls = 0;
LONG refused = 0;
bool isOnce = false;

bool IsRefused() {
    const LONG call = InterlockedIncrement(&calls);
    const bool is = refused > 0 && (isOnce ? call == refused : call >= refused);
    if (is) errno = ENOMEM;
    return is;
}

void* Malloc(std::size_t size) {
    return IsRefused() ? nullptr : std::malloc(size);
}
void* Calloc(std::size_t count, std::size_t size) {
    return IsRefused() ? nullptr : std::calloc(count, size);
}
void* Realloc(void* memory, std::size_t size) {
    return IsRefused() ? nullptr : std::realloc(memory, size);
}

struct THook {
    const char* name;
    void* replacement;
};

const THook kHooks[] = {{"malloc", reinterpret_cast<void*>(&Malloc)},
                        {"calloc", reinterpret_cast<void*>(&Calloc)},
                        {"realloc", reinterpret_cast<void*>(&Realloc)}};

template <class T> T* At(std::byte* base, std::size_t offset) {
    return reinterpret_cast<T*>(base + offset);
}

void Replace(void** place, const char* name) {
    for (const THook& hook : kHooks) {
        DWORD former = 0;
        if (std::strcmp(hook.name, name) != 0) continue;
        if (!VirtualProtect(place, sizeof *place, PAGE_READWRITE, &former)) std::abort();
        *place = hook.replacement;
        VirtualProtect(place, sizeof *place, former, &former);
    }
}

void HookImports(HMODULE module) {
    if (!module) std::abort();
    auto* const base = reinterpret_cast<std::byte*>(module);
    const auto* const headers =
        At<IMAGE_NT_HEADERS>(base, static_cast<std::size_t>(At<IMAGE_DOS_HEADER>(base, 0)->e_lfanew));
    const IMAGE_DATA_DIRECTORY& table = headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
    for (auto* from = At<IMAGE_IMPORT_DESCRIPTOR>(base, table.VirtualAddress); from->Name; ++from) {
        const auto* names = At<IMAGE_THUNK_DATA>(base, from->OriginalFirstThunk);
        auto* addresses = At<IMAGE_THUNK_DATA>(base, from->FirstThunk);
        for (; names->u1.AddressOfData; ++names, ++addresses) {
            if (IMAGE_SNAP_BY_ORDINAL(names->u1.Ordinal)) continue;
            const auto* const import =
                At<IMAGE_IMPORT_BY_NAME>(base, static_cast<std::size_t>(names->u1.AddressOfData));
            Replace(reinterpret_cast<void**>(&addresses->u1.Function),
                    reinterpret_cast<const char*>(import->Name));
        }
    }
}

} // namespace

/// What the variant of the program takes from this library, so that it is loaded with it.
extern "C" __declspec(dllexport) const int refusesAllocations = 1;

extern "C" BOOL WINAPI DllMain(HINSTANCE, DWORD reason, LPVOID) {
    char number[16];
    if (reason != DLL_PROCESS_ATTACH ||
        !GetEnvironmentVariableA("VORLUND_TEST_REFUSE", number, sizeof number))
        return TRUE;
    refused = std::atol(number);
    isOnce = GetEnvironmentVariableA("VORLUND_TEST_REFUSE_ONCE", nullptr, 0) != 0;
    // The program's own module calls these functions in the compiler's startup code alone, which does not
    // look at what it gets.
    HookImports(GetModuleHandleW(L"vorlund.dll"));
    HookImports(GetModuleHandleW(L"libstdc++-6.dll"));
    return TRUE;
}
