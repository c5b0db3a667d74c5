/// \file
/// `CBinaryLock`, a recursive mutual-exclusion lock that checks its use.
#pragma once

#include <vorlund/ClassObject.h>

namespace vorlund {

/// A recursive lock: one thread at a time holds it, and that thread may take it again. Any thread may call
/// any operation, except that nobody may use a lock while it is destroyed.
///
/// \code{.cpp}
/// CBinaryLock lock;
/// {
///     const CBinaryLockGuard guard(lock);
///     lock.Lock(); // once more, by the same thread
///     std::printf("%d\n", lock.GetHoldCount()); // prints 2
///     lock.Unlock();
/// }
/// std::printf("%d\n", lock.GetHoldCount()); // prints 0
/// \endcode
class VRL_API CBinaryLock : public CClassObject {
public:
    /// Free. Raises `COutOfMemoryException` "malloc failed" when there is no memory for its data.
    CBinaryLock();
    CBinaryLock(const CBinaryLock&) = delete;
    CBinaryLock& operator=(const CBinaryLock&) = delete;

    /// Raises `CBugException` "Still locked" while held. The lock's data, a separate block, then stays as it
    /// is and is never freed; its holder still holds it.
    ~CBinaryLock() noexcept(false) override;

    /// Takes the lock, waiting without limit for another thread that holds it; counts up when the caller
    /// holds it.
    void Lock();

    /// Gives back one `Lock` of the calling thread. Raises `CBugException` "Not locked" when the lock is free
    /// and "Locked in another thread" when another thread holds it; the lock stays as it was.
    void Unlock();

    /// How many times the calling thread holds the lock; 0 when it does not.
    int GetHoldCount() const;

private:
    struct TData;
    TData* data_;
};

/// Holds a lock from construction to destruction. `Leave` gives up the duty to unlock: the lock then stays
/// held. Never build one on a lock that the guarded code may destroy.
class CBinaryLockGuard {
public:
    explicit CBinaryLockGuard(CBinaryLock& lock) : lock_(&lock) { lock.Lock(); }
    CBinaryLockGuard(const CBinaryLockGuard&) = delete;
    CBinaryLockGuard& operator=(const CBinaryLockGuard&) = delete;
    ~CBinaryLockGuard() { Unlock(); }

    /// Unlocks now instead of at the end.
    void Unlock() {
        if (CBinaryLock* const lock = lock_) {
            lock_ = nullptr;
            lock->Unlock();
        }
    }

    /// Leaves the lock held.
    void Leave() { lock_ = nullptr; }

private:
    CBinaryLock* lock_;
};

} // namespace vorlund
