/// \file
/// `CReadWriteLock`, a recursive lock with many readers or one writer.
#pragma once

#include <vorlund/Platform.h>

namespace vorlund {

struct TReadWriteLockData;

/// How a `CReadWriteLock` is taken. Every non-zero value acts as write.
enum TLockMode {
    LOCK_MODE_READ = 0, ///< shared
    LOCK_MODE_WRITE = 1 ///< exclusive
};

/// A recursive many-readers, one-writer lock. Waiting writers go before new readers, but a thread that holds
/// the lock in either mode may always take a further read lock, and a holder of the write lock further locks
/// of both modes. A reader that asks for the write lock waits until it is the last reader; it shuts out
/// readers, but not another reader that upgrades at the same time: two readers that upgrade wait for each
/// other.
///
/// Any thread may call any operation. Never raises; misuse only prints a `DEBUG_MESSAGE_BOX` message.
class VRL_API CReadWriteLock {
public:
    /// Free.
    CReadWriteLock();
    CReadWriteLock(const CReadWriteLock&) = delete;
    CReadWriteLock& operator=(const CReadWriteLock&) = delete;
    ~CReadWriteLock();

    /// Takes the lock, waiting without limit. `param` is the caller's own and is recorded with every lock
    /// that a holder takes, but not with a first lock.
    void Lock(TLockMode mode, unsigned int param);

    /// Gives back the calling thread's innermost lock. Without one, prints
    /// "[vorlund::TReadWriteLockData::Unlock] Not locked!".
    void Unlock();

    /// The mode of the calling thread's innermost lock. Without one, prints
    /// "[vorlund::TReadWriteLockData::GetLockMode] Not locked!" and gives `LOCK_MODE_READ`.
    TLockMode GetLockMode();

    /// The parameter that the calling thread recorded last, 0 when it recorded none. Without a lock, prints
    /// "[vorlund::TReadWriteLockData::GetLockMode] Not locked!" and gives 0.
    unsigned int GetParam();

private:
    TReadWriteLockData* data_;
};

/// Holds a `CReadWriteLock` from construction to destruction.
class CReadWriteLockGuard {
public:
    CReadWriteLockGuard(CReadWriteLock& lock, TLockMode mode) : lock_(lock) { lock_.Lock(mode, 0); }
    CReadWriteLockGuard(const CReadWriteLockGuard&) = delete;
    CReadWriteLockGuard& operator=(const CReadWriteLockGuard&) = delete;
    ~CReadWriteLockGuard() { lock_.Unlock(); }

private:
    CReadWriteLock& lock_;
};

} // namespace vorlund
