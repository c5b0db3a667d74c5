#include "vorlund/system/PlainLock.h"

#include "vorlund/system/Spin.h"

namespace vorlund {

bool CPlainLock::LookAround(std::uint32_t held) noexcept {
    for (int spins = 1; spins <= kMaxSpins; spins *= 2) {
        Spin(spins);
        std::uint32_t seen = word_.load(std::memory_order_relaxed);
        if (seen == kFree &&
            word_.compare_exchange_strong(seen, held, std::memory_order_acquire, std::memory_order_relaxed))
            return true;
    }
    return false;
}

void CPlainLock::LockContended() noexcept {
    if (LookAround(kHeld)) return;
    // From here on the word says "with sleepers", even when this thread gets the lock: it cannot know whether
    // it was the last one, and one wake too many does no harm.
    while (word_.exchange(kHeldWithSleepers, std::memory_order_acquire) != kFree) {
        ParkWhile(word_, kHeldWithSleepers);
        if (LookAround(kHeldWithSleepers)) return;
    }
}

} // namespace vorlund
