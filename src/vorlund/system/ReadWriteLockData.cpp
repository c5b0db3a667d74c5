// How a thread gets in, in terms of two counters and a mutex:
//   a new reader     waits until there are no writers, then counts as reading;
//   a new writer     counts as a writer at once, which keeps new readers out, waits until nobody reads and
//   the
//                    writers' mutex is free, then takes the mutex;
//   an upgrader      (a reader that asks for the write lock) stops counting as reading, counts as a writer at
//   once
//                    and waits until nobody reads. It does not take the writers' mutex.
// "Writers" are those that wait and those that hold. A thread that holds the lock never waits for a further
// read lock. An upgraded lock therefore keeps out readers only. That is how this lock has always been; see
// the header.
//
// Those who wait stand in one queue, in the order of their coming. Whoever changes the counters lets in,
// before it gives back the guard, everyone in the queue whose condition has become true, and does the
// counting for them. So nobody overtakes a thread that could have gone, and two upgraders always both get
// through: the second one's request lets the first one in, whatever the second does next.
//
// Nearly always nobody waits, and the state is then one of few: n readers, or one writer, or one upgraded
// writer. Those states are numbers in one atomic word, which operations change by compare-and-swap without
// the guard. The word kManaged means that the counters hold instead. It is set by whoever finds that the word
// does not do and takes the guard, and replaced by a number again when the guard is given back with an empty
// queue and a state that has a number. While it is set nothing changes without the guard.
//
// Before a thread joins the queue it looks around for a moment; its request counts from when it joins.
//
// What a thread holds is its own business: nobody else reads its entry in the table, so that nested locks
// touch nothing that is shared. The guard is never held while a thread sleeps, allocates or prints.
#include "vorlund/system/ReadWriteLockData.h"

#include <vorlund/Debug.h>

namespace vorlund {
namespace {

constexpr const wchar* kNotLockedInUnlock = VRL_L("[vorlund::TReadWriteLockData::Unlock] Not locked!");
// Kept on purpose: GetParam prints GetLockMode's text too.
constexpr const wchar* kNotLocked = VRL_L("[vorlund::TReadWriteLockData::GetLockMode] Not locked!");

constexpr int kLookAroundTurns = 100;

} // namespace

void TReadWriteLockData::TWaiter::Wait() {
    for (int turn = 0; turn < kLookAroundTurns; ++turn) {
        if (granted.load(std::memory_order_acquire)) return;
        RelaxProcessor();
    }
    while (!granted.load(std::memory_order_acquire)) ParkWhile(granted, 0);
}

void TReadWriteLockData::Lock(TLockMode mode, unsigned int param) {
    const unsigned int thread = CurrentThreadId();
    // A thread that holds a lock cannot see its word free.
    if (word_.load(std::memory_order_relaxed) != kFree) {
        if (CLockThreadEntry* const entry = threads_.Find(thread)) {
            if (mode == LOCK_MODE_READ) {
                ++entry->reads;
            } else {
                if (entry->writes == 0) Upgrade();
                ++entry->writes;
            }
            entry->Push(mode);
            entry->param = param;
            return;
        }
    }

    if (mode == LOCK_MODE_READ)
        AcquireRead();
    else
        AcquireWrite();
    // Kept on purpose: a first lock does not record its parameter.
    CLockThreadEntry& entry = threads_.Insert(thread);
    ++(mode == LOCK_MODE_READ ? entry.reads : entry.writes);
    entry.Push(mode);
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
    // Modes come off in the reverse order, so read locks that are left were there before the first write
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
    for (int turn = 0; turn < kLookAroundTurns; ++turn) {
        std::uint32_t seen = word_.load(std::memory_order_relaxed);
        while (seen < kMaxReaders) {
            if (word_.compare_exchange_weak(seen, seen + 1, std::memory_order_acquire,
                                            std::memory_order_relaxed))
                return;
        }
        RelaxProcessor();
    }
    EnterManaged();
    if (writers_ > 0) return LeaveManagedAndWait(TWaiter::kReader);
    ++readingThreads_;
    LeaveManaged();
}

void TReadWriteLockData::AcquireWrite() {
    for (int turn = 0; turn < kLookAroundTurns; ++turn) {
        std::uint32_t seen = word_.load(std::memory_order_relaxed);
        if (seen == kFree &&
            word_.compare_exchange_weak(seen, kWriter, std::memory_order_acquire, std::memory_order_relaxed))
            return;
        RelaxProcessor();
    }
    EnterManaged();
    ++writers_;
    if (readingThreads_ > 0 || writerHeld_) return LeaveManagedAndWait(TWaiter::kWriter);
    writerHeld_ = true;
    LeaveManaged();
}

void TReadWriteLockData::Upgrade() {
    std::uint32_t oneReader = 1;
    if (word_.compare_exchange_strong(oneReader, kUpgradedWriter, std::memory_order_acquire,
                                      std::memory_order_relaxed))
        return;
    EnterManaged();
    --readingThreads_;
    ++writers_;
    if (readingThreads_ > 0) return LeaveManagedAndWait(TWaiter::kUpgrader);
    LeaveManaged();
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
    std::uint32_t seen = kUpgradedWriter;
    if (word_.compare_exchange_strong(seen, 1, std::memory_order_release, std::memory_order_relaxed)) return;
    EnterManaged();
    --writers_;
    ++readingThreads_;
    LeaveManaged();
}

void TReadWriteLockData::EnterManaged() {
    guard_.Lock();
    if (word_.load(std::memory_order_relaxed) == kManaged) return;
    const std::uint32_t state = word_.exchange(kManaged, std::memory_order_acquire);
    readingThreads_ = state <= kMaxReaders ? static_cast<int>(state) : 0;
    writers_ = state == kWriter || state == kUpgradedWriter ? 1 : 0;
    writerHeld_ = state == kWriter;
}

void TReadWriteLockData::LeaveManaged() {
    TWaiter* granted = TakeGranted();
    if (!firstWaiter_) {
        if (writers_ == 0)
            word_.store(static_cast<std::uint32_t>(readingThreads_), std::memory_order_release);
        else if (writers_ == 1 && readingThreads_ == 0)
            word_.store(writerHeld_ ? kWriter : kUpgradedWriter, std::memory_order_release);
    }
    guard_.Unlock();
    while (granted) {
        TWaiter& waiter = *granted;
        granted = waiter.next;
        // From the store on the waiter may be gone.
        const void* const address = &waiter.granted;
        waiter.granted.store(1, std::memory_order_release);
        UnparkOne(address);
    }
}

void TReadWriteLockData::LeaveManagedAndWait(TWaiter::TKind kind) {
    TWaiter waiter(kind);
    *waitersEnd_ = &waiter;
    waitersEnd_ = &waiter.next;
    LeaveManaged();
    waiter.Wait();
}

/// Lets in those who can go, and gives them back as a list. One pass does: letting one in never makes room
/// for another.
TReadWriteLockData::TWaiter* TReadWriteLockData::TakeGranted() {
    TWaiter* granted = nullptr;
    TWaiter** grantedEnd = &granted;
    TWaiter** link = &firstWaiter_;
    while (TWaiter* const waiter = *link) {
        bool canGo = false;
        switch (waiter->kind) {
        case TWaiter::kReader:
            canGo = writers_ == 0;
            if (canGo) ++readingThreads_;
            break;
        case TWaiter::kWriter:
            canGo = readingThreads_ == 0 && !writerHeld_;
            if (canGo) writerHeld_ = true;
            break;
        case TWaiter::kUpgrader:
            canGo = readingThreads_ == 0;
            break;
        }
        if (!canGo) {
            link = &waiter->next;
            continue;
        }
        *link = waiter->next;
        waiter->next = nullptr;
        *grantedEnd = waiter;
        grantedEnd = &waiter->next;
    }
    waitersEnd_ = link;
    return granted;
}

int TReadWriteLockData::CountWaiting() {
    const CPlainLockGuard guard(guard_);
    int count = 0;
    for (const TWaiter* waiter = firstWaiter_; waiter; waiter = waiter->next) ++count;
    return count;
}

} // namespace vorlund
