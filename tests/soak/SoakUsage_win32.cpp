#include "soak/SoakUsage.h"

#include "system/ProcessResources.h"

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include <psapi.h>

namespace vorlund::soak {
namespace {

/// Wine counts no handles. Handles are numbered from below in steps of four, and one that was given back is
/// used again: what a new one is called says how many there are.
std::int64_t EstimateHandles() {
    const HANDLE handle = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    CloseHandle(handle);
    return static_cast<std::int64_t>(reinterpret_cast<std::uintptr_t>(handle) / 4);
}

} // namespace

TUsage GetUsage() {
    PROCESS_MEMORY_COUNTERS memory{};
    K32GetProcessMemoryInfo(GetCurrentProcess(), &memory, sizeof memory);
    const int handles = test::CountHandles();
    return {static_cast<std::int64_t>(memory.PagefileUsage), handles > 0 ? handles : EstimateHandles(),
            test::CountThreads()};
}

} // namespace vorlund::soak
