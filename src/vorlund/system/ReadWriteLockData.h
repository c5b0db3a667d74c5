// The state of a CReadWriteLock.
#pragma once

#include "vorlund/api/values/ClassMemory.h"
#include "vorlund/system/LockThreadTable.h"
#include "vorlund/system/PlainLock.h"

namespace vorlund {

/// A recursive lock with many readers or one writer; `CReadWriteLock` tells what its operations mean.
struct TReadWriteLockData : TClassMemory {
public:
    TReadWriteLockData() = default;
    TReadWriteLockData(const TReadWriteLockData&) = delete;
    TReadWriteLockData& operator=(const TReadWriteLockData&) = delete;

    void Lock(TLockMode mode, unsigned int param);
    void Unlock();
    TLockMode GetLockMode();
    unsigned int GetParam();

    /// How many threads wait in the queue. A thread that is still looking around does not count.
    int CountWaiting();

private:
    /// A thread in the queue, on its own stack.
    struct TWaiter {
        enum TKind { kReader, kWriter, kUpgrader };

        explicit TWaiter(TKind waiterKind) : kind(waiterKind) {}
        void Sleep();

        const TKind kind;
        TWaiter* next = nullptr;
        std::atomic<std::uint32_t> released{0};
    };

    // The word: the whole state while nobody waits in the queue.
    static constexpr std::uint32_t kFree = 0; ///< up to kMaxReaders: the number of readers
    static constexpr std::uint32_t kMaxReaders = (1u << 28) - 1;
    static constexpr std::uint32_t kWriter = 1u << 28; ///< one writer, who holds the writers' mutex
    /// One writer without it: a reader that upgraded, or a woken writer that does not hold yet.
    static constexpr std::uint32_t kMutexlessWriter = 1u << 29;
    static constexpr std::uint32_t kManaged = 1u << 31;         ///< the counters below are in force,
    static constexpr std::uint32_t kManagedWritable = 1u << 30; ///< and a writer could get in

    void AcquireRead();
    void AcquireWrite();
    void LookAroundForWrite() const;
    void Upgrade();
    void ReleaseRead();
    void ReleaseWrite();
    void ReleaseUpgrade();

    void EnterManaged();
    void LeaveManaged();
    void Append(TWaiter& waiter);
    bool IsWritable() const { return readingThreads_ == 0 && !writerHeld_; }
    bool CanGo(TWaiter::TKind kind) const;
    TWaiter* TakeReleased();

    std::atomic<std::uint32_t> word_{kFree};
    CLockThreadTable threads_;

    // Under the guard, and in force only while the word says so.
    CPlainLock guard_;
    int readingThreads_ = 0;  ///< threads counted as readers
    int writers_ = 0;         ///< writers and upgraders that wait or hold
    bool writerHeld_ = false; ///< a writer that is no upgrader holds: the writers' mutex
    /// A writer has been taken out of the queue and has not looked again yet.
    bool writerWoken_ = false;
    TWaiter* firstWaiter_ = nullptr;
    TWaiter** waitersEnd_ = &firstWaiter_;
};

} // namespace vorlund
