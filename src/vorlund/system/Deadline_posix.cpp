#include "vorlund/system/Deadline.h"
#include "vorlund/system/Thread_posix.h"
#include "vorlund/system/Waiting_posix.h"

#include <atomic>

namespace vorlund::waiting {

std::int64_t NowNanoseconds() noexcept {
    return MonotonicNanoseconds();
}

bool WaitUntilDeadline(TEventHandle stop, std::int64_t deadline) noexcept {
    if (stop) return WaitUntil(stop, deadline) == 0;
    const std::atomic<std::uint32_t> word{0};
    while (MonotonicNanoseconds() < deadline) ParkWhileUntil(word, 0, deadline);
    return false;
}

// They do so without being asked.
CExactWaits::CExactWaits() noexcept = default;
CExactWaits::~CExactWaits() = default;

} // namespace vorlund::waiting
