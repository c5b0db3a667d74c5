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
// A thread that finds the word free takes the lock and the entry inside it with the one change of the word.
// It owns that entry until it gives back its last lock, and it empties the entry before that: so whoever
// finds the word free again finds the entry free too. A thread that finds somebody else there takes an entry
// in the table, which is made with the guard and the queue, the "crowd", when two threads meet for the first
// time, and stays as long as the lock. So every change of the word by a thread that is in the table releases,
// and the owner of the entry inside acquires before it looks for the crowd.
//
// Nobody but the thread itself reads its entry, so nested locks touch nothing that is shared.
// The guard is never held while a thread sleeps, allocates or prints, and a thread that needs memory gets it
// before it counts as anything.
#include "vorlund/system/ReadWriteLockData.h"

#include "vorlund/system/PlainLock.h"
#include "vorlund/system/Spin.h"

#include <vorlund/Debug.h>

#include <new>

namespace vorlund {
namespace {

constexpr const wchar* kNotLockedInUnlock = VRL_L("[vorlund::TReadWriteLockData::Unlock] Not locked!");
// Kept for callers who compare it: GetParam prints GetLockMode's text too.
constexpr const wchar* kNotLocked = VRL_L("[vorlund::TReadWriteLockData::GetLockMode] Not locked!");

} // namespace

/// A thread in the queue, on its own stack.
struct TReadWriteLockData::TWaiter {
    enum class TKind { Reader, Writer, Upgrader };

    explicit TWaiter(TKind waiterKind) : kind(waiterKind) {}
    void Sleep() {
        while (!released.load(std::memory_order_acquire)) ParkWhile(released, 0);
    }

    const TKind kind;
    TWaiter* next = nullptr;
    std::atomic<std::uint32_t> released{0};
};

/// What a lock has only once two threads have met in it.
struct TReadWriteLockData::TCrowd {
    void Append(TWaiter& waiter) {
        *waitersEnd = &waiter;
        waitersEnd = &waiter.next;
    }
    bool IsWritable() const { return readingThreads == 0 && !writerHeld; }
    bool CanGo(TWaiter::TKind kind) const;
    TWaiter* TakeReleased();

    CLockThreadTable threads;
    CPlainLock guard;

    // Under the guard, and in force only while the word says so.
    int readingThreads = 0;  ///< threads counted as readers
    int writers = 0;         ///< writers and upgraders that wait or hold
    bool writerHeld = false; ///< a writer that is no upgrader holds: the writers' mutex
    /// A writer has been taken out of the queue and has not looked again yet.
    bool writerWoken = false;
    TWaiter* firstWaiter = nullptr;
    TWaiter** waitersEnd = &firstWaiter;
};

TReadWriteLockData::~TReadWriteLockData() {
    delete crowd_.load(std::memory_order_acquire);
}

inline CLockThreadEntry* TReadWriteLockData::Find(unsigned int thread) {
    // Only a thread itself ever writes its number there or takes it out.
    if (owner_.load(std::memory_order_relaxed) == thread) return &own_;
    TCrowd* const crowd = crowd_.load(std::memory_order_acquire);
    return crowd ? crowd->threads.Find(thread) : nullptr;
}

inline bool TReadWriteLockData::TryLockFree(unsigned int thread, TLockMode mode) {
    std::uint32_t seen = kFree;
    if (word_.load(std::memory_order_relaxed) != kFree ||
        !word_.compare_exchange_strong(seen, WordOfOne(mode), std::memory_order_acquire,
                                       std::memory_order_relaxed))
        return false;
    owner_.store(thread, std::memory_order_relaxed);
    own_.PushFirst(mode);
    return true;
}

void TReadWriteLockData::Lock(TLockMode mode, unsigned int param) {
    const unsigned int thread = NotedThreadId();
    if (thread == kUnknownThread || !TryLockFree(thread, mode)) LockInAnyState(mode, param);
}

void TReadWriteLockData::LockInAnyState(TLockMode mode, unsigned int param) {
    const unsigned int thread = CurrentThreadId();
    // A thread that holds a lock cannot see its word free.
    if (CLockThreadEntry* const entry = Find(thread))
        LockNested(*entry, mode, param);
    else if (!TryLockFree(thread, mode))
        LockBesideOthers(thread, mode);
}

void TReadWriteLockData::LockNested(CLockThreadEntry& entry, TLockMode mode, unsigned int param) {
    // First what may have to wait for memory: an upgrade keeps out new readers.
    entry.Push(mode);
    if (mode != LOCK_MODE_READ) {
        if (entry.writes == 0) Upgrade();
        ++entry.writes;
    }
    entry.param = param;
}

void TReadWriteLockData::LockBesideOthers(unsigned int thread, TLockMode mode) {
    // The entry comes before the lock, because there may be no memory for one: then nobody else waits for
    // this thread. Kept for existing callers: a first lock does not record its parameter.
    NeedCrowd().threads.Insert(thread).PushFirst(mode);
    if (mode == LOCK_MODE_READ)
        AcquireRead();
    else
        AcquireWrite();
}

void TReadWriteLockData::Unlock() {
    if (owner_.load(std::memory_order_relaxed) != NotedThreadId() || !own_.HoldsJustOne()) {
        UnlockInAnyState();
        return;
    }
    const TLockMode mode = own_.GetTop();
    own_.PopLast();
    owner_.store(kNoThread, std::memory_order_relaxed);
    std::uint32_t seen = WordOfOne(mode);
    if (word_.compare_exchange_strong(seen, kFree, std::memory_order_release, std::memory_order_relaxed))
        return;
    if (mode == LOCK_MODE_READ)
        ReleaseRead();
    else
        ReleaseWrite();
}

void TReadWriteLockData::UnlockInAnyState() {
    CLockThreadEntry* const entry = Find(CurrentThreadId());
    if (!entry) {
        CDebug::PrintMessage(DEBUG_MESSAGE_BOX, kNotLockedInUnlock);
        return;
    }
    if (entry->Pop() == LOCK_MODE_READ) {
        if (!entry->IsEmpty()) return;
        GiveBack(*entry);
        ReleaseRead();
        return;
    }
    if (--entry->writes > 0) return;
    // Modes come off in the reverse order, so what is left are read locks that were taken before the first
    // write lock.
    if (!entry->IsEmpty()) {
        ReleaseUpgrade();
        return;
    }
    GiveBack(*entry);
    ReleaseWrite();
}

/// Frees the calling thread's empty entry, before the word is changed.
void TReadWriteLockData::GiveBack(CLockThreadEntry& entry) {
    if (&entry != &own_) {
        crowd_.load(std::memory_order_acquire)->threads.Remove(entry);
        return;
    }
    own_.Clear();
    owner_.store(kNoThread, std::memory_order_relaxed);
}

TLockMode TReadWriteLockData::GetLockMode() {
    if (const CLockThreadEntry* const entry = Find(CurrentThreadId())) return entry->GetTop();
    CDebug::PrintMessage(DEBUG_MESSAGE_BOX, kNotLocked);
    return LOCK_MODE_READ;
}

unsigned int TReadWriteLockData::GetParam() {
    if (const CLockThreadEntry* const entry = Find(CurrentThreadId())) return entry->param;
    CDebug::PrintMessage(DEBUG_MESSAGE_BOX, kNotLocked);
    return 0;
}

void TReadWriteLockData::AcquireRead() {
    for (;;) {
        for (int spins = 1; spins <= kMaxSpins; spins *= 2) {
            std::uint32_t seen = word_.load(std::memory_order_relaxed);
            while (seen < kMaxReaders) {
                if (word_.compare_exchange_weak(seen, seen + 1, std::memory_order_acq_rel,
                                                std::memory_order_relaxed))
                    return;
            }
            Spin(spins);
        }
        TCrowd& crowd = EnterManaged();
        if (crowd.writers == 0) {
            ++crowd.readingThreads;
            LeaveManaged(crowd);
            return;
        }
        TWaiter waiter(TWaiter::TKind::Reader);
        crowd.Append(waiter);
        LeaveManaged(crowd);
        waiter.Sleep();
    }
}

void TReadWriteLockData::AcquireWrite() {
    std::uint32_t seen = kFree;
    if (word_.compare_exchange_strong(seen, kWriter, std::memory_order_acq_rel, std::memory_order_relaxed))
        return;
    LookAroundForWrite();
    TCrowd& crowd = EnterManaged();
    ++crowd.writers;
    if (!crowd.IsWritable()) {
        do {
            TWaiter waiter(TWaiter::TKind::Writer);
            crowd.Append(waiter);
            LeaveManaged(crowd);
            waiter.Sleep();
            LookAroundForWrite();
            EnterManaged();
            crowd.writerWoken = false;
        } while (!crowd.IsWritable());
    }
    crowd.writerHeld = true;
    LeaveManaged(crowd);
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
    if (word_.compare_exchange_strong(seen, kMutexlessWriter, std::memory_order_acq_rel,
                                      std::memory_order_relaxed))
        return;
    TCrowd& crowd = EnterManaged();
    --crowd.readingThreads;
    ++crowd.writers;
    if (crowd.readingThreads == 0) {
        LeaveManaged(crowd);
        return;
    }
    TWaiter waiter(TWaiter::TKind::Upgrader);
    crowd.Append(waiter);
    LeaveManaged(crowd);
    waiter.Sleep();
}

void TReadWriteLockData::ReleaseRead() {
    std::uint32_t seen = word_.load(std::memory_order_relaxed);
    while (seen <= kMaxReaders) {
        if (word_.compare_exchange_weak(seen, seen - 1, std::memory_order_release, std::memory_order_relaxed))
            return;
    }
    TCrowd& crowd = EnterManaged();
    --crowd.readingThreads;
    LeaveManaged(crowd);
}

void TReadWriteLockData::ReleaseWrite() {
    std::uint32_t seen = kWriter;
    if (word_.compare_exchange_strong(seen, kFree, std::memory_order_release, std::memory_order_relaxed))
        return;
    TCrowd& crowd = EnterManaged();
    crowd.writerHeld = false;
    --crowd.writers;
    LeaveManaged(crowd);
}

void TReadWriteLockData::ReleaseUpgrade() {
    std::uint32_t seen = kMutexlessWriter;
    if (word_.compare_exchange_strong(seen, 1, std::memory_order_release, std::memory_order_relaxed)) return;
    TCrowd& crowd = EnterManaged();
    --crowd.writers;
    ++crowd.readingThreads;
    LeaveManaged(crowd);
}

/// The crowd, made when there is none yet. Waits for memory, so nothing may be held.
TReadWriteLockData::TCrowd& TReadWriteLockData::NeedCrowd() {
    TCrowd* crowd = crowd_.load(std::memory_order_acquire);
    if (crowd) return *crowd;
    TCrowd* made = nullptr;
    while (!(made = new (std::nothrow) TCrowd)) WaitForMemory();
    if (crowd_.compare_exchange_strong(crowd, made, std::memory_order_acq_rel, std::memory_order_acquire))
        return *made;
    delete made;
    return *crowd;
}

/// Takes the guard and puts the counters in force. Only where somebody else's change of the word has been
/// seen.
TReadWriteLockData::TCrowd& TReadWriteLockData::EnterManaged() {
    // Whoever has made the crowd did so before that change, which this acquires.
    static_cast<void>(word_.load(std::memory_order_acquire));
    TCrowd& crowd = *crowd_.load(std::memory_order_acquire);
    crowd.guard.Lock();
    if (word_.load(std::memory_order_relaxed) & kManaged) {
        word_.store(kManaged, std::memory_order_release);
        return crowd;
    }
    const std::uint32_t state = word_.exchange(kManaged, std::memory_order_acq_rel);
    crowd.readingThreads = state <= kMaxReaders ? static_cast<int>(state) : 0;
    crowd.writers = state == kWriter || state == kMutexlessWriter ? 1 : 0;
    crowd.writerHeld = state == kWriter;
    return crowd;
}

/// Gives back the guard, with the state in the word if it has a number, and wakes those whose turn has come.
void TReadWriteLockData::LeaveManaged(TCrowd& crowd) {
    TWaiter* released = crowd.TakeReleased();
    std::uint32_t state = kManaged | (crowd.IsWritable() ? kManagedWritable : 0);
    if (!crowd.firstWaiter) {
        if (crowd.writers == 0)
            state = static_cast<std::uint32_t>(crowd.readingThreads);
        else if (crowd.writers == 1 && crowd.readingThreads == 0)
            state = crowd.writerHeld ? kWriter : kMutexlessWriter;
    }
    word_.store(state, std::memory_order_release);
    crowd.guard.Unlock();
    while (released) {
        TWaiter& waiter = *released;
        released = waiter.next;
        // After the store the waiter may be gone.
        const void* const address = &waiter.released;
        waiter.released.store(1, std::memory_order_release);
        UnparkOne(address);
    }
}

bool TReadWriteLockData::TCrowd::CanGo(TWaiter::TKind kind) const {
    switch (kind) {
    case TWaiter::TKind::Reader:
        return writers == 0;
    case TWaiter::TKind::Writer:
        return IsWritable() && !writerWoken;
    case TWaiter::TKind::Upgrader:
        return readingThreads == 0;
    }
    return false;
}

/// Takes those out of the queue whose turn has come.
TReadWriteLockData::TWaiter* TReadWriteLockData::TCrowd::TakeReleased() {
    TWaiter* released = nullptr;
    TWaiter** releasedEnd = &released;
    TWaiter** link = &firstWaiter;
    while (TWaiter* const waiter = *link) {
        if (!CanGo(waiter->kind)) {
            link = &waiter->next;
            continue;
        }
        if (waiter->kind == TWaiter::TKind::Writer) writerWoken = true;
        *link = waiter->next;
        waiter->next = nullptr;
        *releasedEnd = waiter;
        releasedEnd = &waiter->next;
    }
    waitersEnd = link;
    return released;
}

int TReadWriteLockData::CountWaiting() {
    TCrowd* const crowd = crowd_.load(std::memory_order_acquire);
    if (!crowd) return 0;
    const CPlainLockGuard guard(crowd->guard);
    int count = 0;
    for (const TWaiter* waiter = crowd->firstWaiter; waiter; waiter = waiter->next) ++count;
    return count;
}

} // namespace vorlund
