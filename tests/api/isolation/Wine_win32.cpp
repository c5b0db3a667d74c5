#include "api/isolation/Wine.h"

#include <windows.h>

namespace vorlund::test {

bool IsWine() {
    return GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version") != nullptr;
}

} // namespace vorlund::test
