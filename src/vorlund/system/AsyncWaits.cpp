// A wait's record belongs to the list until the wait is stopped, then to its thread, which frees it. Stopping
// and entering the callback are changes of one word: whichever comes first keeps the other from happening, so
// a callback never begins after its stop has returned. The lock is held while the list and the number are
// read or changed, never while a callback runs or a thread is woken.
//
// A record keeps references of its own to the platform events, so that its thread waits for what was there
// when it was started, whatever becomes of the objects.
#include "vorlund/system/AsyncWaits.h"

#include "vorlund/system/EventCell.h"
#include "vorlund/system/WaitThread.h"

#include <vorlund/ClassObject.h>

#include <algorithm>
#include <new>

namespace vorlund {

constinit CAsyncWaits asyncWaits;

struct CAsyncWaits::TWait {
    enum TState : std::uint32_t { kWaiting, kCalling, kStopped };

    explicit TWait(const TAsyncRequest& request);
    TWait(const TWait&) = delete;
    TWait& operator=(const TWait&) = delete;
    ~TWait();

    static void* operator new(std::size_t size) { return CClassObject::operator new(size); }
    static void operator delete(void* memory) { CClassObject::operator delete(memory); }

    /// From one state to another, unless the wait has been stopped.
    bool Change(TState from, TState to) {
        std::uint32_t seen = from;
        return state.compare_exchange_strong(seen, to, std::memory_order_acq_rel);
    }
    bool IsStopped() const { return state.load(std::memory_order_acquire) == kStopped; }
    bool Lists(const CEvent* event) const {
        return std::find(events, events + listed, event) != events + listed;
    }

    TWait* previous = nullptr;
    TWait* next = nullptr;
    std::atomic<std::uint32_t> state{kWaiting};
    unsigned int number = 0;
    waiting::TThreadHandle thread = nullptr;
    const TAsyncCallback callback;
    void* const userData;
    const bool isForAll;
    const std::uint32_t count;
    const int listed;
    CEvent* events[kMostListed];
    int handleCount = 0;
    waiting::TEventHandle handles[waiting::kMostEvents];
};

CAsyncWaits::TWait::TWait(const TAsyncRequest& request)
    : callback(request.callback), userData(request.userData), isForAll(request.isForAll),
      count(static_cast<std::uint32_t>(request.count)), listed(std::clamp(request.count, 0, kMostListed)) {
    std::copy_n(request.events, listed, events);
    // Longer lists are not waited for.
    if (count > waiting::kMostEvents) return;
    for (; handleCount < listed; ++handleCount)
        handles[handleCount] = waiting::Duplicate(TEventAccess::HandleOf(events[handleCount]));
}

CAsyncWaits::TWait::~TWait() {
    for (int index = 0; index < handleCount; ++index) waiting::Close(handles[index]);
}

unsigned int CAsyncWaits::Start(const TAsyncRequest& request) {
    TWait* const wait = new TWait(request);
    const CPlainLockGuard guard(lock_);
    const unsigned int number = nextNumber_++;
    if (hasEnded_) {
        delete wait;
        return number;
    }
    wait->number = number;
    // First: the thread may stop its own wait, and looks without the lock whether there is one.
    Append(*wait);
    wait->thread = waiting::StartInterruptible(&Run, wait);
    return number;
}

void CAsyncWaits::Run(void* argument) noexcept {
    TWait* const wait = static_cast<TWait*>(argument);
    CEvent::TAsyncCbData data{nullptr, 0, wait->number, wait->userData};
    while (!wait->IsStopped()) {
        const std::uint32_t result = waiting::WaitInterruptibly(wait->count, wait->handles, wait->isForAll);
        if (result == waiting::kInterrupted) continue;
        if (result >= wait->count || !wait->callback) {
            // What failed once fails again.
            waiting::SleepInterruptibly();
            continue;
        }
        data.index = wait->isForAll ? 0 : result;
        data.event = wait->events[data.index];
        if (!wait->Change(TWait::kWaiting, TWait::kCalling)) break;
        waiting::EnterCallback();
        wait->callback(data);
        waiting::LeaveCallback();
        if (!wait->Change(TWait::kCalling, TWait::kWaiting)) break;
    }
    delete wait;
}

void CAsyncWaits::Stop(unsigned int number) {
    StopFirst([number](const TWait& wait) { return wait.number == number; });
}

void CAsyncWaits::Stop(TAsyncCallback callback) {
    StopFirst([callback](const TWait& wait) { return wait.callback == callback; });
}

void CAsyncWaits::Stop(const CEvent* event) {
    while (StopFirst([event](const TWait& wait) { return wait.Lists(event); })) {
    }
}

template <class TPredicate> bool CAsyncWaits::StopFirst(TPredicate isMeant) {
    // Every event asks this when it goes, and nearly always there is nothing. A wait that the caller can know
    // of is seen without the lock.
    if (!first_.load(std::memory_order_relaxed)) return false;
    lock_.Lock();
    TWait* wait = first_.load(std::memory_order_relaxed);
    while (wait && !isMeant(*wait)) wait = wait->next;
    if (!wait) {
        lock_.Unlock();
        return false;
    }
    Remove(*wait);
    const waiting::TThreadHandle thread = wait->thread;
    // From here on the record is the thread's.
    wait->state.store(TWait::kStopped, std::memory_order_release);
    lock_.Unlock();
    if (thread)
        waiting::Interrupt(thread);
    else
        delete wait;
    return true;
}

void CAsyncWaits::End() noexcept {
    // Nobody is left to be stopped then, and the lock may be held for ever.
    if (waiting::IsThreadLast()) return;
    lock_.Lock();
    hasEnded_ = true;
    lock_.Unlock();
    while (StopFirst([](const TWait&) { return true; })) {
    }
    waiting::AwaitInterrupted();
}

void CAsyncWaits::Append(TWait& wait) {
    wait.previous = last_;
    if (last_)
        last_->next = &wait;
    else
        first_.store(&wait, std::memory_order_relaxed);
    last_ = &wait;
}

void CAsyncWaits::Remove(TWait& wait) {
    if (wait.previous)
        wait.previous->next = wait.next;
    else
        first_.store(wait.next, std::memory_order_relaxed);
    (wait.next ? wait.next->previous : last_) = wait.previous;
}

} // namespace vorlund
