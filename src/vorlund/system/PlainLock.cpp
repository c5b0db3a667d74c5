#include "vorlund/system/PlainLock.h"

namespace vorlund {

void CPlainLock::LockContended() noexcept {
    // Sections under these locks are short, so a look around is often cheaper than sleep.
    for (int turn = 0; turn < 100; ++turn) {
        std::uint32_t seen = word_.load(std::memory_order_relaxed);
        if (seen == kFree &&
            word_.compare_exchange_weak(seen, kHeld, std::memory_order_acquire, std::memory_order_relaxed))
            return;
        RelaxProcessor();
    }
    // From here on the word says "with sleepers", also when this thread gets the lock: it cannot know whether
    // it was the last one, and a wake too many does no harm.
    while (word_.exchange(kHeldWithSleepers, std::memory_order_acquire) != kFree)
        ParkWhile(word_, kHeldWithSleepers);
}

} // namespace vorlund
