// How a thread gets in, in terms of two counters and a mutex:
// - A new reader waits until there are no writers, then counts as reading.
// - A new writer counts as a writer at once, which keeps new readers out, waits until nobody reads and the
//   writers' mutex is free, then takes the mutex.
// - An upgrader (a reader that asks for the write lock) stops counting as reading, counts as a writer at once
//   and waits until nobody reads. It does not take the writers' mutex.
// "Writers" are those that wait and those that hold. A thread that holds the lock never waits for a further
// read lock. An upgraded lock keeps out readers only, because it lacks the mutex. Kept for applications that
// were written against this lock; <vorlund/ReadWriteLock.h> says so.
//
// Those who must wait sleep in one queue. Whoever changes the counters looks through the queue before it
// gives back the guard. An upgrader whose condition has come true owns the lock from then on: so two
// upgraders both get through, whatever the second one does next. Readers and writers are only woken, and look
// again when they run. By then another thread may hold the lock, and they go back to sleep. Handing the lock
// to the sleepers instead would leave it unused until they run, every time, and once a few threads wait that
// would never end. Writers are woken one at a time.
//
// Nearly always nobody waits, and the state is then one of few: n readers, or one writer, or one writer
// without the mutex. Those states are numbers in one atomic word, which operations change by compare-and-swap
// without the guard. The bit kManaged means that the counters are in force instead. It is set by whoever
// finds that the word is not enough and takes the guard, and it is replaced by a number again when the guard
// is given back with an empty queue and a state that has a number. While it is set nothing changes without
// the guard.
//
// Before a thread joins the queue it looks around for a moment (Spin.h); its request counts from when it
// joins.
//
// Nobody but the thread itself reads its entry in the table, so nested locks touch nothing that is shared.
// The guard is never held while a thread sleeps, allocates or prints, and a thread that needs memory gets it
// before it counts as anything.
#include "vorlund/system/ReadWriteLockData.h"

#include "vorlund/system/Spin.h"

#include <vorlund/Debug.h>

namespace vorlund {
namespace {

constexpr const wchar* kNotLockedInUnlock = VRL_L("[vorlund::TReadWriteLockData::Unlock] Not locked!");
// Kept for callers who compare it: GetParam prints GetLockMode's text too.
constexpr const wchar* kNotLocked = VRL_L("[vorlund::TReadWriteLockData::GetLockMode] Not locked!");

} // namespace

void TReadWriteLockData::TWaiter::Sleep() {
    while (!released.load(std::memory_order_acquire)) ParkWhile(released, 0);
}

void TReadWriteLockData::Lock(TLockMode mode, unsigned int param) {
    const unsigned int thread = CurrentThreadId();
    // A thread that holds a lock cannot see its word free.
    if (word_.load(std::memory_order_relaxed) != kFree) {
        if (CLockThreadEntry* const entry = threads_.Find(thread)) {
            // First what may have to wait for memory: an upgrade keeps out new readers.
            entry->Push(mode);
            if (mode == LOCK_MODE_READ) {
                ++entry->reads;
            } else {
                if (entry->writes == 0) Upgrade();
                ++entry->writes;
            }
            entry->param = param;
            return;
        }
    }

    // Kept for existing callers: a first lock does not record its parameter. The entry comes before the lock,
    // because there may be no memory for one: then nobody else waits for this thread.
    CLockThreadEntry& entry = threads_.Insert(thread);
    entry.Push(mode);
    if (mode == LOCK_MODE_READ)
        AcquireRead();
    else
        AcquireWrite();
    ++(mode == LOCK_MODE_READ ? entry.reads : entry.writes);
}

void TReadWriteLockData::Unlock() {
    CLockThreadEntry* const entry = threads_.Find(CurrentThreadId());
    if (!entry) {
        CDebug::PrintMessage(DEBUG_MESSAGE_BOX, kNotLockedInUnlock);
        return;
    }
    if (entry->Pop() == LOCK_MODE_READ) {
        if (--entry->reads > 0 || entry->writes > 0) return;
        threads_.Remove(*entry);
        ReleaseRead();
        return;
    }
    if (--entry->writes > 0) return;
    // Modes come off in the reverse order, so read locks that are left were taken before the first write
    // lock.
    if (entry->reads > 0) {
        ReleaseUpgrade();
        return;
    }
    threads_.Remove(*entry);
    ReleaseWrite();
}

TLockMode TReadWriteLockData::GetLockMode() {
    if (const CLockThreadEntry* const entry = threads_.Find(CurrentThreadId())) return entry->GetTop();
    CDebug::PrintMessage(DEBUG_MESSAGE_BOX, kNotLocked);
    return LOCK_MODE_READ;
}

unsigned int TReadWriteLockData::GetParam() {
    if (const CLockThreadEntry* const entry = threads_.Find(CurrentThreadId())) return entry->param;
    CDebug::PrintMessage(DEBUG_MESSAGE_BOX, kNotLocked);
    return 0;
}

void TReadWriteLockData::AcquireRead() {
    for (;;) {
        for (int spins = 1; spins <= kMaxSpins; spins *= 2) {
            std::uint32_t seen = word_.load(std::memory_order_relaxed);
            while (seen < kMaxReaders) {
                if (word_.compare_exchange_weak(seen, seen + 1, std::memory_order_acquire,
                                                std::memory_order_relaxed))
                    return;
            }
            Spin(spins);
        }
        EnterManaged();
        if (writers_ == 0) {
            ++readingThreads_;
            LeaveManaged();
            return;
        }
        TWaiter waiter(TWaiter::kReader);
        Append(waiter);
        LeaveManaged();
        waiter.Sleep();
    }
}

void TReadWriteLockData::AcquireWrite() {
    std::uint32_t seen = kFree;
    if (word_.compare_exchange_strong(seen, kWriter, std::memory_order_acquire, std::memory_order_relaxed))
        return;
    LookAroundForWrite();
    EnterManaged();
    ++writers_;
    if (!IsWritable()) {
        do {
            TWaiter waiter(TWaiter::kWriter);
            Append(waiter);
            LeaveManaged();
            waiter.Sleep();
            LookAroundForWrite();
            EnterManaged();
            writerWoken_ = false;
        } while (!IsWritable());
    }
    writerHeld_ = true;
    LeaveManaged();
}

void TReadWriteLockData::LookAroundForWrite() const {
    for (int spins = 1; spins <= kMaxSpins; spins *= 2) {
        const std::uint32_t seen = word_.load(std::memory_order_relaxed);
        if (seen == kFree || seen == kMutexlessWriter || seen == (kManaged | kManagedWritable)) return;
        Spin(spins);
    }
}

void TReadWriteLockData::Upgrade() {
    std::uint32_t seen = 1;
    if (word_.compare_exchange_strong(seen, kMutexlessWriter, std::memory_order_acquire,
                                      std::memory_order_relaxed))
        return;
    EnterManaged();
    --readingThreads_;
    ++writers_;
    if (readingThreads_ == 0) {
        LeaveManaged();
        return;
    }
    TWaiter waiter(TWaiter::kUpgrader);
    Append(waiter);
    LeaveManaged();
    waiter.Sleep();
}

void TReadWriteLockData::ReleaseRead() {
    std::uint32_t seen = word_.load(std::memory_order_relaxed);
    while (seen <= kMaxReaders) {
        if (word_.compare_exchange_weak(seen, seen - 1, std::memory_order_release, std::memory_order_relaxed))
            return;
    }
    EnterManaged();
    --readingThreads_;
    LeaveManaged();
}

void TReadWriteLockData::ReleaseWrite() {
    std::uint32_t seen = kWriter;
    if (word_.compare_exchange_strong(seen, kFree, std::memory_order_release, std::memory_order_relaxed))
        return;
    EnterManaged();
    writerHeld_ = false;
    --writers_;
    LeaveManaged();
}

void TReadWriteLockData::ReleaseUpgrade() {
    std::uint32_t seen = kMutexlessWriter;
    if (word_.compare_exchange_strong(seen, 1, std::memory_order_release, std::memory_order_relaxed)) return;
    EnterManaged();
    --writers_;
    ++readingThreads_;
    LeaveManaged();
}

/// Takes the guard and puts the counters in force.
void TReadWriteLockData::EnterManaged() {
    guard_.Lock();
    if (word_.load(std::memory_order_relaxed) & kManaged) {
        word_.store(kManaged, std::memory_order_relaxed);
        return;
    }
    const std::uint32_t state = word_.exchange(kManaged, std::memory_order_acquire);
    readingThreads_ = state <= kMaxReaders ? static_cast<int>(state) : 0;
    writers_ = state == kWriter || state == kMutexlessWriter ? 1 : 0;
    writerHeld_ = state == kWriter;
}

/// Gives back the guard, with the state in the word if it has a number, and wakes those whose turn has come.
void TReadWriteLockData::LeaveManaged() {
    TWaiter* released = TakeReleased();
    std::uint32_t state = kManaged | (IsWritable() ? kManagedWritable : 0);
    if (!firstWaiter_) {
        if (writers_ == 0)
            state = static_cast<std::uint32_t>(readingThreads_);
        else if (writers_ == 1 && readingThreads_ == 0)
            state = writerHeld_ ? kWriter : kMutexlessWriter;
    }
    word_.store(state, std::memory_order_release);
    guard_.Unlock();
    while (released) {
        TWaiter& waiter = *released;
        released = waiter.next;
        // After the store the waiter may be gone.
        const void* const address = &waiter.released;
        waiter.released.store(1, std::memory_order_release);
        UnparkOne(address);
    }
}

void TReadWriteLockData::Append(TWaiter& waiter) {
    *waitersEnd_ = &waiter;
    waitersEnd_ = &waiter.next;
}

bool TReadWriteLockData::CanGo(TWaiter::TKind kind) const {
    switch (kind) {
    case TWaiter::kReader:
        return writers_ == 0;
    case TWaiter::kWriter:
        return IsWritable() && !writerWoken_;
    case TWaiter::kUpgrader:
        return readingThreads_ == 0;
    }
    return false;
}

/// Takes those out of the queue whose turn has come.
TReadWriteLockData::TWaiter* TReadWriteLockData::TakeReleased() {
    TWaiter* released = nullptr;
    TWaiter** releasedEnd = &released;
    TWaiter** link = &firstWaiter_;
    while (TWaiter* const waiter = *link) {
        if (!CanGo(waiter->kind)) {
            link = &waiter->next;
            continue;
        }
        if (waiter->kind == TWaiter::kWriter) writerWoken_ = true;
        *link = waiter->next;
        waiter->next = nullptr;
        *releasedEnd = waiter;
        releasedEnd = &waiter->next;
    }
    waitersEnd_ = link;
    return released;
}

int TReadWriteLockData::CountWaiting() {
    const CPlainLockGuard guard(guard_);
    int count = 0;
    for (const TWaiter* waiter = firstWaiter_; waiter; waiter = waiter->next) ++count;
    return count;
}

} // namespace vorlund
