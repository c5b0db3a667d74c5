// The lock under the locks: one word, no owner, no count, no checks.
#pragma once

#include "vorlund/system/Thread.h"

namespace vorlund {

/// A mutual-exclusion lock that is not recursive. It may be destroyed as soon as nobody holds it or waits for
/// it, even while the last holder has not returned from `Unlock` yet.
class CPlainLock {
public:
    constexpr CPlainLock() = default;
    CPlainLock(const CPlainLock&) = delete;
    CPlainLock& operator=(const CPlainLock&) = delete;

    void Lock() noexcept {
        if (!TryLock()) LockContended();
    }

    bool TryLock() noexcept {
        std::uint32_t free = kFree;
        return word_.compare_exchange_strong(free, kHeld, std::memory_order_acquire,
                                             std::memory_order_relaxed);
    }

    /// The rest of `Lock` after a `TryLock` that failed.
    void LockContended() noexcept;

    void Unlock() noexcept {
        const void* const address = &word_;
        if (word_.exchange(kFree, std::memory_order_release) == kHeldWithSleepers) UnparkOne(address);
    }

private:
    static constexpr std::uint32_t kFree = 0;
    static constexpr std::uint32_t kHeld = 1;
    static constexpr std::uint32_t kHeldWithSleepers = 2; ///< there may be sleepers

    /// Tries for a moment to set the word to `held`.
    bool LookAround(std::uint32_t held) noexcept;

    std::atomic<std::uint32_t> word_{kFree};
};

/// Holds a plain lock from construction to destruction.
class CPlainLockGuard {
public:
    explicit CPlainLockGuard(CPlainLock& lock) noexcept : lock_(lock) { lock_.Lock(); }
    CPlainLockGuard(const CPlainLockGuard&) = delete;
    CPlainLockGuard& operator=(const CPlainLockGuard&) = delete;
    ~CPlainLockGuard() { lock_.Unlock(); }

private:
    CPlainLock& lock_;
};

} // namespace vorlund
