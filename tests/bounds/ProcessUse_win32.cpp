#include "bounds/ProcessUse.h"

// The first name is the system's, and it needs the second one from there.
#include <windows.h>

#include <psapi.h>

namespace vorlund::test {

TProcessUse GetProcessUse() {
    FILETIME created{}, ended{}, kernel{}, user{};
    GetProcessTimes(GetCurrentProcess(), &created, &ended, &kernel, &user);
    const auto milliseconds = [](const FILETIME& time) {
        return ((static_cast<std::uint64_t>(time.dwHighDateTime) << 32) | time.dwLowDateTime) / 10000;
    };
    PROCESS_MEMORY_COUNTERS memory{};
    K32GetProcessMemoryInfo(GetCurrentProcess(), &memory, sizeof memory);
    return {milliseconds(kernel) + milliseconds(user), memory.PeakWorkingSetSize};
}

} // namespace vorlund::test
