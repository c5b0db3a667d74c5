#include "system/ProcessResources.h"

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include <tlhelp32.h>

namespace vorlund::test {

int CountThreads() {
    const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
    int count = 0;
    THREADENTRY32 entry{};
    entry.dwSize = sizeof entry;
    for (BOOL isThere = Thread32First(snapshot, &entry); isThere; isThere = Thread32Next(snapshot, &entry))
        if (entry.th32OwnerProcessID == GetCurrentProcessId()) ++count;
    CloseHandle(snapshot);
    return count;
}

bool AreThreadsCheap() {
    return false;
}

int CountHandles() {
    DWORD count = 0;
    GetProcessHandleCount(GetCurrentProcess(), &count);
    return static_cast<int>(count);
}

} // namespace vorlund::test
