#include "vorlund/system/PlainLock.h"

namespace vorlund {
namespace {

// Sections under these locks are short, so a look around is often cheaper than sleep. The looks become rarer,
// because each one takes the word away from the thread that works with it; all together last one or two
// microseconds.
constexpr int kLongestPause = 32;

} // namespace

bool CPlainLock::LookAround(std::uint32_t held) noexcept {
    for (int pause = 1; pause <= kLongestPause; pause *= 2) {
        for (int turn = 0; turn < pause; ++turn) RelaxProcessor();
        std::uint32_t seen = word_.load(std::memory_order_relaxed);
        if (seen == kFree &&
            word_.compare_exchange_strong(seen, held, std::memory_order_acquire, std::memory_order_relaxed))
            return true;
    }
    return false;
}

void CPlainLock::LockContended() noexcept {
    if (LookAround(kHeld)) return;
    // From here on the word says "with sleepers", also when this thread gets the lock: it cannot know whether
    // it was the last one, and a wake too many does no harm.
    while (word_.exchange(kHeldWithSleepers, std::memory_order_acquire) != kFree) {
        ParkWhile(word_, kHeldWithSleepers);
        if (LookAround(kHeldWithSleepers)) return;
    }
}

} // namespace vorlund
