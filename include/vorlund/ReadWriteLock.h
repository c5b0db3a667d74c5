/// \file
/// `CReadWriteLock`, a recursive lock with many readers or one writer.
#pragma once

#include <vorlund/Platform.h>

namespace vorlund {

struct TReadWriteLockData;

/// How a `CReadWriteLock` is taken. Every non-zero value acts as write.
enum TLockMode : int {
    LOCK_MODE_READ = 0, ///< shared
    LOCK_MODE_WRITE = 1 ///< exclusive
};

/// A recursive many-readers, one-writer lock. Any number of threads read while no writer waits or holds; one
/// writer holds at a time; waiting writers go before new readers. A thread that holds the lock in either mode
/// may always take a further read lock without waiting, and a holder of the write lock further locks of both
/// modes.
///
/// A reader may ask for the write lock (an upgrade). It then no longer counts as a reader, keeps new readers
/// out, and goes on when no reader is left; when it gives back its outermost write lock it counts as a reader
/// again.
///
/// \warning An upgrade keeps out new readers only: a second reader that upgrades, and other writers, hold the
/// write lock at the same time. So two readers that upgrade together do not block each other, they both
/// write; and one that went back to reading may read while the other still writes. Where threads must not
/// write together, take the write lock first instead of upgrading, or guard upgrades otherwise.
///
/// Any thread may call any operation, except that nobody may use a lock while it is destroyed. Misuse raises
/// nothing and only prints a `DEBUG_MESSAGE_BOX` message, with nothing held. The operations never raise:
/// `Lock` keeps a small record for each holder, and while there is no memory for one, it waits. It does so
/// before it takes anything, so others are not held up by that. The lock itself is at most 64 bytes, with
/// room for the record of a thread that finds it free; the first time that two threads meet in it, it takes
/// less than a kibibyte more and keeps that.
///
/// \code{.cpp}
/// CReadWriteLock lock;
/// {
///     const CReadWriteLockGuard reading(lock, LOCK_MODE_READ); // with others that read
/// }
/// {
///     const CReadWriteLockGuard writing(lock, LOCK_MODE_WRITE); // alone
/// }
/// \endcode
class VRL_API CReadWriteLock {
public:
    /// Free. Raises `COutOfMemoryException` "malloc failed" when there is no memory for its data.
    CReadWriteLock();
    CReadWriteLock(const CReadWriteLock&) = delete;
    CReadWriteLock& operator=(const CReadWriteLock&) = delete;

    /// Nothing is checked: what threads still hold is forgotten, and threads that still wait never return.
    ~CReadWriteLock();

    /// Takes the lock, waiting without limit. `param` has no meaning to the lock: it is recorded for
    /// `GetParam` when the calling thread already holds the lock, but not with a first lock.
    void Lock(TLockMode mode, unsigned int param);

    /// Gives back the calling thread's innermost lock; the recorded parameter stays. Without a lock, prints
    /// "[vorlund::TReadWriteLockData::Unlock] Not locked!".
    void Unlock();

    /// The mode of the calling thread's innermost lock. Without one, prints
    /// "[vorlund::TReadWriteLockData::GetLockMode] Not locked!" and gives `LOCK_MODE_READ`.
    TLockMode GetLockMode();

    /// The parameter that the calling thread recorded last since its first lock, also when that lock has been
    /// given back; 0 when it recorded none. Without a lock, prints
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
