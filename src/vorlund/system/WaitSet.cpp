// Every entry has a watch that tells when its event is set, and then puts the entry into a queue, which the
// threads of the set serve. An entry is armed, ready (in the queue), or busy: it is being added, or a thread
// is in its callback, and only that thread arms and ends the watch then. An entry that is taken out while it
// is armed belongs to whoever takes it out; otherwise to the thread that has it or will take it from the
// queue.
//
// A watch calls with the system's lock around it, so ours is taken inside that one: nothing of Waiting.h is
// called while ours is held.
//
// The threads share the set's state with the object, so a callback that destroys its own set only leaves a
// thread behind that nobody joins.
#include <vorlund/WaitSet.h>

#include "vorlund/api/values/ClassMemory.h"
#include "vorlund/system/EventCell.h"
#include "vorlund/system/IntrusiveList.h"
#include "vorlund/system/PlainLock.h"
#include "vorlund/system/WaitThread.h"

#include <algorithm>

namespace vorlund {

/// What the object and its threads share.
struct TWaitSetData : TClassMemory {
    struct TEntry;

    explicit TWaitSetData(int count) : threadCount(std::clamp(count, 1, kMaxWaitSetThreads)) {}
    TWaitSetData(const TWaitSetData&) = delete;
    TWaitSetData& operator=(const TWaitSetData&) = delete;
    ~TWaitSetData() { waiting::EndWatcher(watcher); }

    static void Run(void* argument) noexcept;
    static const void* OnSignalled(void* argument);

    unsigned int Add(const CEvent& event, CWaitSet::TCallback cb, void* data, bool isOnce);
    void Start();
    void BeginStop();
    void Join();
    void Release();
    bool IsOwnThread() const;

    CIntrusiveList<TEntry>& BucketOf(unsigned int number) { return buckets[number % kBuckets]; }
    TEntry* Find(unsigned int number);
    /// Takes an entry out of its bucket. True when it then belongs to the caller. Under the lock.
    bool TakeOut(TEntry& entry);
    /// Puts an entry into the queue. Returns what `UnparkOne` is to be called for. Under the lock.
    const void* MakeReady(TEntry& entry);
    /// The next entry of the queue, for the calling thread alone; null when the set has stopped. An entry
    /// that is not to be called is only to be deleted.
    TEntry* TakeReady(bool& isToBeCalled);
    /// Arms the calling thread's entry, or puts it into the queue, or deletes it when it has been taken out.
    void Settle(TEntry& entry);

    static constexpr unsigned int kBuckets = 256;

    const int threadCount;
    std::atomic<int> users{1}; ///< the object and the threads
    waiting::TWatcherHandle watcher = nullptr;

    CPlainLock startLock; ///< taken before the other one, and never by a thread of the set that has started
    std::atomic<int> started{0};
    bool isJoined = false;
    waiting::TWorkHandle threads[kMaxWaitSetThreads];
    std::atomic<unsigned int> threadIds[kMaxWaitSetThreads]{};
    std::atomic<int> numbered{0}; ///< how many have begun

    CPlainLock lock;
    bool isStopping = false;
    unsigned int nextNumber = 0;
    TEntry* firstReady = nullptr;
    TEntry** readyEnd = &firstReady;
    int sleepers = 0;
    std::atomic<std::uint32_t> wakes{0}; ///< changes when sleepers are to look again
    CIntrusiveList<TEntry> buckets[kBuckets];
};

struct TWaitSetData::TEntry : TClassMemory {
    enum TState { kBusy, kArmed, kReady };

    TEntry(TWaitSetData& owner, const CEvent& watched, CWaitSet::TCallback called, void* data,
           bool isForOneCall)
        : shared(owner), event(watched), callback(called), userData(data), isOnce(isForOneCall) {}
    TEntry(const TEntry&) = delete;
    TEntry& operator=(const TEntry&) = delete;
    ~TEntry() { waiting::EndWatch(watch); }

    TWaitSetData& shared;
    CEvent event;
    const CWaitSet::TCallback callback;
    void* const userData;
    const bool isOnce;
    waiting::TWatchHandle watch = nullptr;

    // Under the lock:
    TState state = kBusy;
    bool hasSignalled = false; ///< while it was busy
    bool isRemoved = false;
    unsigned int number = 0;
    TEntry* previous = nullptr; ///< in its bucket
    TEntry* next = nullptr;
    TEntry* nextReady = nullptr;
};

CWaitSet::CWaitSet(int threads) : data_(new TWaitSetData(threads)) {}

CWaitSet::~CWaitSet() {
    // The threads are gone without having given back what they held.
    if (waiting::IsThreadLast()) return;
    Stop();
    data_->Release();
}

unsigned int CWaitSet::Add(CEvent& event, TCallback cb, void* data) {
    return data_->Add(event, cb, data, false);
}

unsigned int CWaitSet::AddOnce(CEvent& event, TCallback cb, void* data) {
    return data_->Add(event, cb, data, true);
}

void CWaitSet::Remove(unsigned int number) {
    TWaitSetData::TEntry* mine = nullptr;
    {
        const CPlainLockGuard guard(data_->lock);
        TWaitSetData::TEntry* const entry = data_->Find(number);
        if (entry && data_->TakeOut(*entry)) mine = entry;
    }
    delete mine;
}

void CWaitSet::Stop() {
    data_->BeginStop();
    if (!data_->IsOwnThread()) data_->Join();
}

unsigned int TWaitSetData::Add(const CEvent& event, CWaitSet::TCallback cb, void* data, bool isOnce) {
    auto* const entry = new TEntry(*this, event, cb, data, isOnce);
    Start();
    if (cb)
        entry->watch =
            waiting::StartWatch(watcher, TEventAccess::HandleOf(&entry->event), &OnSignalled, entry);
    unsigned int number = kNoWaitNumber;
    {
        const CPlainLockGuard guard(lock);
        if (!isStopping) {
            number = entry->number = nextNumber++;
            BucketOf(number).Append(*entry);
        }
    }
    if (number == kNoWaitNumber)
        delete entry;
    else
        Settle(*entry);
    return number;
}

/// Starts what is missing of the watcher and the threads.
void TWaitSetData::Start() {
    if (started.load(std::memory_order_acquire) > 0) return;
    const CPlainLockGuard guard(startLock);
    if (isJoined) return;
    if (!watcher) watcher = waiting::StartWatcher();
    int count = started.load(std::memory_order_relaxed);
    if (count > 0) return;
    for (; count < threadCount; ++count) {
        users.fetch_add(1, std::memory_order_relaxed);
        threads[count] = waiting::StartWork(&Run, this);
        if (threads[count]) continue;
        users.fetch_sub(1, std::memory_order_relaxed);
        break;
    }
    started.store(count, std::memory_order_release);
}

void TWaitSetData::BeginStop() {
    TEntry* mine = nullptr;
    int sleeping = 0;
    {
        const CPlainLockGuard guard(lock);
        isStopping = true;
        for (CIntrusiveList<TEntry>& bucket : buckets) {
            while (TEntry* const entry = bucket.GetFirst()) {
                if (!TakeOut(*entry)) continue;
                entry->nextReady = mine;
                mine = entry;
            }
        }
        wakes.fetch_add(1, std::memory_order_relaxed);
        sleeping = sleepers;
    }
    for (; sleeping > 0; --sleeping) UnparkOne(&wakes);
    while (mine) {
        TEntry* const entry = mine;
        mine = entry->nextReady;
        delete entry;
    }
}

void TWaitSetData::Join() {
    const CPlainLockGuard guard(startLock);
    if (isJoined) return;
    isJoined = true;
    const int count = started.load(std::memory_order_relaxed);
    for (int index = 0; index < count; ++index) waiting::EndWork(threads[index]);
    // Those that never began never give back what they share.
    users.fetch_sub(count - numbered.load(std::memory_order_acquire), std::memory_order_relaxed);
    // Only when the system had no threads to give.
    bool isToBeCalled = false;
    while (TEntry* const entry = TakeReady(isToBeCalled)) delete entry;
}

void TWaitSetData::Release() {
    if (users.fetch_sub(1, std::memory_order_acq_rel) == 1) delete this;
}

bool TWaitSetData::IsOwnThread() const {
    const auto* const end = threadIds + numbered.load(std::memory_order_acquire);
    return std::find(threadIds, end, CurrentThreadId()) != end;
}

void TWaitSetData::Run(void* argument) noexcept {
    TWaitSetData& shared = *static_cast<TWaitSetData*>(argument);
    {
        const CPlainLockGuard guard(shared.lock);
        const int index = shared.numbered.load(std::memory_order_relaxed);
        shared.threadIds[index].store(CurrentThreadId(), std::memory_order_relaxed);
        shared.numbered.store(index + 1, std::memory_order_release);
    }
    bool isToBeCalled = false;
    while (TEntry* const entry = shared.TakeReady(isToBeCalled)) {
        if (isToBeCalled) {
            CWaitSet::TCbData data{&entry->event, entry->number, entry->userData};
            entry->callback(data);
        }
        if (isToBeCalled && !entry->isOnce)
            shared.Settle(*entry);
        else
            delete entry;
    }
    // Another thread may get the number now.
    std::atomic<unsigned int>* const end = shared.threadIds + shared.numbered.load(std::memory_order_acquire);
    std::find(shared.threadIds, end, CurrentThreadId())->store(kNoThread, std::memory_order_relaxed);
    shared.Release();
}

const void* TWaitSetData::OnSignalled(void* argument) {
    TEntry& entry = *static_cast<TEntry*>(argument);
    const CPlainLockGuard guard(entry.shared.lock);
    if (entry.state == TEntry::kArmed && !entry.isRemoved) return entry.shared.MakeReady(entry);
    entry.hasSignalled = true;
    return nullptr;
}

TWaitSetData::TEntry* TWaitSetData::Find(unsigned int number) {
    TEntry* entry = BucketOf(number).GetFirst();
    while (entry && entry->number != number) entry = entry->next;
    return entry;
}

bool TWaitSetData::TakeOut(TEntry& entry) {
    BucketOf(entry.number).Remove(entry);
    entry.isRemoved = true;
    return entry.state == TEntry::kArmed;
}

const void* TWaitSetData::MakeReady(TEntry& entry) {
    entry.state = TEntry::kReady;
    entry.nextReady = nullptr;
    *readyEnd = &entry;
    readyEnd = &entry.nextReady;
    wakes.fetch_add(1, std::memory_order_relaxed);
    return sleepers > 0 ? &wakes : nullptr;
}

TWaitSetData::TEntry* TWaitSetData::TakeReady(bool& isToBeCalled) {
    for (bool hasSlept = false;; hasSlept = true) {
        std::uint32_t seen = 0;
        {
            const CPlainLockGuard guard(lock);
            if (hasSlept) --sleepers;
            if (TEntry* const entry = firstReady) {
                firstReady = entry->nextReady;
                if (!firstReady) readyEnd = &firstReady;
                isToBeCalled = !entry->isRemoved;
                if (isToBeCalled && entry->isOnce) TakeOut(*entry);
                entry->state = TEntry::kBusy;
                entry->hasSignalled = false;
                return entry;
            }
            if (isStopping) return nullptr;
            ++sleepers;
            seen = wakes.load(std::memory_order_relaxed);
        }
        ParkWhile(wakes, seen);
    }
}

void TWaitSetData::Settle(TEntry& entry) {
    const bool isSet = waiting::Arm(entry.watch);
    const void* address = nullptr;
    bool isMine = false;
    {
        const CPlainLockGuard guard(lock);
        isMine = entry.isRemoved;
        if (!isMine) {
            if (isSet || entry.hasSignalled)
                address = MakeReady(entry);
            else
                entry.state = TEntry::kArmed;
        }
    }
    if (address) UnparkOne(address);
    if (isMine) delete &entry;
}

} // namespace vorlund
