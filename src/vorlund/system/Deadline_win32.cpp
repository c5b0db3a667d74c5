// Waits count whole milliseconds and may end a little early, so a wait is made of several: nobody returns
// before the deadline.
#include "vorlund/api/platform/WindowsLean.h"
#include "vorlund/system/Deadline.h"

#include <algorithm>
#include <mmsystem.h>

namespace vorlund::waiting {
namespace {

constexpr std::int64_t kMillisecond = 1000000;
constexpr std::int64_t kSecond = 1000 * kMillisecond;
/// A wait without a limit has another number.
constexpr std::int64_t kLongestWait = 0x7FFFFFFF;

} // namespace

std::int64_t NowNanoseconds() noexcept {
    LARGE_INTEGER frequency, count;
    QueryPerformanceFrequency(&frequency);
    QueryPerformanceCounter(&count);
    // In two parts: the product of the whole does not fit.
    return count.QuadPart / frequency.QuadPart * kSecond +
           count.QuadPart % frequency.QuadPart * kSecond / frequency.QuadPart;
}

bool WaitUntilDeadline(TEventHandle stop, std::int64_t deadline) noexcept {
    if (stop && IsSet(stop)) return true;
    for (;;) {
        const std::int64_t left = deadline - NowNanoseconds();
        if (left <= 0) return false;
        const auto milliseconds =
            static_cast<std::uint32_t>(std::min((left + kMillisecond - 1) / kMillisecond, kLongestWait));
        const std::uint32_t result = stop ? Wait(stop, milliseconds) : kFailed;
        if (result == 0) return true;
        if (result == kFailed) Sleep(milliseconds);
    }
}

CExactWaits::CExactWaits() noexcept {
    timeBeginPeriod(1);
}

CExactWaits::~CExactWaits() {
    timeEndPeriod(1);
}

} // namespace vorlund::waiting
