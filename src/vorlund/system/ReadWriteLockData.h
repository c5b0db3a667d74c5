// The state of a CReadWriteLock.
#pragma once

#include "vorlund/api/values/ClassMemory.h"
#include "vorlund/system/LockThreadTable.h"
#include "vorlund/system/Thread.h"

namespace vorlund {

/// A recursive lock with many readers or one writer; `CReadWriteLock` tells what its operations mean.
struct TReadWriteLockData : TClassMemory {
public:
    TReadWriteLockData() = default;
    TReadWriteLockData(const TReadWriteLockData&) = delete;
    TReadWriteLockData& operator=(const TReadWriteLockData&) = delete;
    ~TReadWriteLockData();

    void Lock(TLockMode mode, unsigned int param);
    void Unlock();
    TLockMode GetLockMode();
    unsigned int GetParam();

    /// How many threads wait in the queue. A thread that is still looking around does not count.
    int CountWaiting();

private:
    struct TWaiter;
    struct TCrowd;

    // The word: the whole state while nobody waits in the queue.
    static constexpr std::uint32_t kFree = 0; ///< up to kMaxReaders: the number of readers
    static constexpr std::uint32_t kMaxReaders = (1u << 28) - 1;
    static constexpr std::uint32_t kWriter = 1u << 28; ///< one writer, who holds the writers' mutex
    /// One writer without it: a reader that upgraded, or a woken writer that does not hold yet.
    static constexpr std::uint32_t kMutexlessWriter = 1u << 29;
    static constexpr std::uint32_t kManaged = 1u << 31;         ///< the counters of the crowd are in force,
    static constexpr std::uint32_t kManagedWritable = 1u << 30; ///< and a writer could get in

    /// The word while one thread holds the lock.
    static constexpr std::uint32_t WordOfOne(TLockMode mode) { return mode == LOCK_MODE_READ ? 1 : kWriter; }

    /// Takes a free lock, with the entry inside, for the calling thread.
    bool TryLockFree(unsigned int thread, TLockMode mode);
    [[gnu::noinline]] void LockInAnyState(TLockMode mode, unsigned int param);
    [[gnu::noinline]] void UnlockInAnyState();
    /// What the calling thread, which is `thread`, holds; null for nothing.
    CLockThreadEntry* Find(unsigned int thread);
    void LockNested(CLockThreadEntry& entry, TLockMode mode, unsigned int param);
    void LockBesideOthers(unsigned int thread, TLockMode mode);
    void GiveBack(CLockThreadEntry& entry);

    void AcquireRead();
    void AcquireWrite();
    void LookAroundForWrite() const;
    void Upgrade();
    [[gnu::noinline]] void ReleaseRead();
    [[gnu::noinline]] void ReleaseWrite();
    void ReleaseUpgrade();

    TCrowd& NeedCrowd();
    TCrowd& EnterManaged();
    void LeaveManaged(TCrowd& crowd);

    std::atomic<std::uint32_t> word_{kFree};
    std::atomic<unsigned int> owner_{kNoThread}; ///< whose entry is `own_`
    std::atomic<TCrowd*> crowd_{nullptr};        ///< from the first time on that two threads meet
    CLockThreadEntry own_;
};

} // namespace vorlund
