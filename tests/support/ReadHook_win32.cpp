#include "support/ReadHook_win32.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>

#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#include <io.h>
#include <windows.h>

namespace vorlund::test {
namespace {

std::int64_t limit;
bool isError;

int __cdecl ReadToTheLimit(int file, void* buffer, unsigned int size) {
    const std::int64_t rest = std::max<std::int64_t>(limit - _telli64(file), 0);
    if (rest > 0 || !isError)
        return _read(file, buffer, static_cast<unsigned int>(std::min<std::int64_t>(size, rest)));
    errno = EIO;
    _doserrno = ERROR_CRC;
    return -1;
}

template <class T> T* At(std::byte* base, DWORD offset) {
    return reinterpret_cast<T*>(base + offset);
}

/// Where the library keeps the address of the function `name` that it imports; null when it does not.
void** FindImport(const char* name) {
    auto* const base = reinterpret_cast<std::byte*>(GetModuleHandleW(L"vorlund.dll"));
    if (!base) return nullptr;
    const auto* const headers =
        At<IMAGE_NT_HEADERS>(base, static_cast<DWORD>(At<IMAGE_DOS_HEADER>(base, 0)->e_lfanew));
    const IMAGE_DATA_DIRECTORY& directory =
        headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
    for (auto* from = At<IMAGE_IMPORT_DESCRIPTOR>(base, directory.VirtualAddress); from->Name; ++from) {
        const auto* names = At<IMAGE_THUNK_DATA>(base, from->OriginalFirstThunk);
        auto* addresses = At<IMAGE_THUNK_DATA>(base, from->FirstThunk);
        for (; names->u1.AddressOfData; ++names, ++addresses) {
            if (IMAGE_SNAP_BY_ORDINAL(names->u1.Ordinal)) continue;
            const auto* const import =
                At<IMAGE_IMPORT_BY_NAME>(base, static_cast<DWORD>(names->u1.AddressOfData));
            if (std::strcmp(reinterpret_cast<const char*>(import->Name), name) == 0)
                return reinterpret_cast<void**>(&addresses->u1.Function);
        }
    }
    return nullptr;
}

bool SetRead(int(__cdecl* read)(int, void*, unsigned int)) {
    void** const import = FindImport("_read");
    DWORD former = 0;
    if (!import || !VirtualProtect(import, sizeof *import, PAGE_READWRITE, &former)) return false;
    *import = reinterpret_cast<void*>(read);
    VirtualProtect(import, sizeof *import, former, &former);
    return true;
}

} // namespace

bool LimitReads(std::int64_t newLimit, bool isNewError) {
    limit = newLimit;
    isError = isNewError;
    return SetRead(&ReadToTheLimit);
}

void UnlimitReads() {
    SetRead(&_read);
}

} // namespace vorlund::test
