// A wait's record belongs to the list until the wait is stopped, then to its thread, which frees it. Stopping
// and entering the callback are changes of one word: whichever comes first keeps the other from happening, so
// a callback never begins after its stop has returned. The lock is held while the list and the number are
// read or changed, never while a callback runs or a thread is woken.
//
// A record keeps references of its own to the platform events, so that its thread waits for the events that
// the wait was started with, whatever becomes of the objects.
#include "vorlund/system/AsyncWaits.h"

#include "vorlund/api/values/ClassMemory.h"
#include "vorlund/system/EventCell.h"
#include "vorlund/system/WaitThread.h"

#include <algorithm>

namespace vorlund {

constinit CAsyncWaits asyncWaits;

struct CAsyncWaits::TWait : TClassMemory {
    enum TState : std::uint32_t { kWaiting, kCalling, kStopped };

    explicit TWait(const TAsyncRequest& request);
    TWait(const TWait&) = delete;
    TWait& operator=(const TWait&) = delete;
    ~TWait();

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
    CEvent* events[kMaxListed];
    int handleCount = 0;
    waiting::TEventHandle handles[waiting::kMaxEvents];
};

CAsyncWaits::TWait::TWait(const TAsyncRequest& request)
    : callback(request.callback), userData(request.userData), isForAll(request.isForAll),
      count(static_cast<std::uint32_t>(request.count)), listed(std::clamp(request.count, 0, kMaxListed)) {
    std::copy_n(request.events, listed, events);
    // Longer lists are not waited for.
    if (count > waiting::kMaxEvents) return;
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
    // Before the thread starts: it may stop its own wait, and looks without the lock whether there is one.
    waits_.Append(*wait);
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
            // Without a callback there is nothing to do, and a wait that failed once fails again.
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
    // Every event asks this when it is destroyed, and nearly always there is no wait. The caller's own waits
    // are seen without the lock.
    if (waits_.IsEmpty()) return false;
    TWait* wait = nullptr;
    waiting::TThreadHandle thread = nullptr;
    {
        const CPlainLockGuard guard(lock_);
        wait = waits_.GetFirst();
        while (wait && !isMeant(*wait)) wait = wait->next;
        if (!wait) return false;
        waits_.Remove(*wait);
        thread = wait->thread;
        // From here on the record belongs to the thread, if there is one.
        wait->state.store(TWait::kStopped, std::memory_order_release);
    }
    if (thread)
        waiting::Interrupt(thread);
    else
        delete wait;
    return true;
}

void CAsyncWaits::End() noexcept {
    // Then there is no thread left to stop, and the lock may be held for ever.
    if (waiting::IsThreadLast()) return;
    {
        const CPlainLockGuard guard(lock_);
        hasEnded_ = true;
    }
    while (StopFirst([](const TWait&) { return true; })) {
    }
    waiting::AwaitInterrupted();
}

} // namespace vorlund
