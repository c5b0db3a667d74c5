// A wait's record belongs to the list until the wait is stopped, then to its thread, which frees it. Stopping
// and entering the callback are changes of one word: whichever comes first keeps the other from happening, so
// a callback never begins after its stop has returned. The lock is held while the list and the number are
// read or changed and threads are woken, never while a callback runs.
//
// A record keeps references of its own to the platform events, so that its thread waits for the events that
// the wait was started with, whatever becomes of the objects.
//
// Nobody waits for the thread of a stopped wait, and yet starting and stopping without a break does not take
// all threads that the system has. A thread without a wait is "leaving": for a moment it sleeps, and a new
// wait takes it over, which is faster than a new thread. To end, it must be one of at most
// `kMaxThreadsEnding`, each of which joins the one before it; until then it goes on leaving. So there are
// never more threads than waits that run, stopped ones that are still inside their callbacks,
// `kMaxThreadsEnding`, and those that were leaving when there were most.
#include "vorlund/system/AsyncWaits.h"

#include "vorlund/api/values/ClassMemory.h"
#include "vorlund/system/EventCell.h"

#include <algorithm>
#include <new>
#include <utility>

namespace vorlund {

constinit CAsyncWaits asyncWaits;

namespace {

constexpr int kMaxThreadsEnding = 32;
constexpr std::uint32_t kLeavingMilliseconds = 20;

} // namespace

/// A thread that serves one wait after the other.
struct CAsyncWaits::TServer {
    TWait* assigned; ///< a wait that the thread has not seen yet; whoever stops it frees it
    TServer* previous = nullptr;
    TServer* next = nullptr;
    bool isLeaving = false;
    waiting::TThreadHandle thread = nullptr;
};

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
    TServer* server = nullptr; ///< null when the system had no thread to give
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
    waiting::CLibraryHold hold;
    const CPlainLockGuard guard(lock_);
    const unsigned int number = nextNumber_++;
    if (hasEnded_) {
        delete wait;
        return number;
    }
    wait->number = number;
    // Before the thread starts: it may stop its own wait, and looks without the lock whether there is one.
    waits_.Append(*wait);
    wait->server = ServerFor(*wait, hold);
    return number;
}

CAsyncWaits::TServer* CAsyncWaits::ServerFor(TWait& wait, waiting::CLibraryHold& hold) {
    if (TServer* const server = leaving_.GetFirst()) {
        RemoveLeaving(*server);
        server->assigned = &wait;
        waiting::Interrupt(server->thread);
        return server;
    }
    auto* const server = new (std::nothrow) TServer{&wait};
    if (!server) return nullptr;
    server->thread = waiting::StartInterruptible(&Run, server, hold);
    if (server->thread) return server;
    delete server;
    return nullptr;
}

void CAsyncWaits::AddLeaving(TServer& server) {
    if (server.isLeaving) return;
    server.isLeaving = true;
    leaving_.Append(server);
}

void CAsyncWaits::RemoveLeaving(TServer& server) {
    if (!server.isLeaving) return;
    server.isLeaving = false;
    leaving_.Remove(server);
}

void CAsyncWaits::Run(void* argument) noexcept {
    TServer& server = *static_cast<TServer*>(argument);
    while (TWait* const wait = asyncWaits.NextFor(server)) {
        Serve(*wait);
        delete wait;
    }
    asyncWaits.Leave(server);
}

void CAsyncWaits::Serve(TWait& wait) {
    CEvent::TAsyncCbData data{nullptr, 0, wait.number, wait.userData};
    while (!wait.IsStopped()) {
        const std::uint32_t result = waiting::WaitInterruptibly(wait.count, wait.handles, wait.isForAll);
        if (result == waiting::kInterrupted) continue;
        if (result >= wait.count || !wait.callback) {
            // Without a callback there is nothing to do, and a wait that failed once fails again.
            waiting::SleepInterruptibly(waiting::kForever);
            continue;
        }
        data.index = wait.isForAll ? 0 : result;
        data.event = wait.events[data.index];
        if (!wait.Change(TWait::kWaiting, TWait::kCalling)) return;
        waiting::EnterCallback();
        wait.callback(data);
        waiting::LeaveCallback();
        if (!wait.Change(TWait::kCalling, TWait::kWaiting)) return;
    }
}

CAsyncWaits::TWait* CAsyncWaits::NextFor(TServer& server) {
    for (bool hasSlept = false;;) {
        {
            const CPlainLockGuard guard(lock_);
            if (server.assigned) return std::exchange(server.assigned, nullptr);
            if (hasEnded_ || (hasSlept && ending_ < kMaxThreadsEnding)) {
                RemoveLeaving(server);
                ++ending_;
                return nullptr;
            }
            AddLeaving(server);
        }
        if (!waiting::SleepInterruptibly(kLeavingMilliseconds)) hasSlept = true;
    }
}

void CAsyncWaits::Leave(TServer& server) {
    waiting::TThreadHandle before = nullptr;
    {
        const CPlainLockGuard guard(lock_);
        before = std::exchange(lastEnded_, server.thread);
    }
    delete &server;
    if (before) waiting::Join(before);
    const CPlainLockGuard guard(lock_);
    --ending_;
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
    if (waits_.IsEmpty() || waiting::IsThreadLast()) return false;
    TWait* unseen = nullptr;
    {
        const CPlainLockGuard guard(lock_);
        TWait* wait = waits_.GetFirst();
        while (wait && !isMeant(*wait)) wait = wait->next;
        if (!wait) return false;
        waits_.Remove(*wait);
        TServer* const server = wait->server;
        if (!server || server->assigned == wait) {
            unseen = wait;
            if (server) {
                server->assigned = nullptr;
                AddLeaving(*server);
            }
        } else if (wait->state.exchange(TWait::kStopped, std::memory_order_acq_rel) == TWait::kWaiting) {
            // From the exchange on the record belongs to the thread. Outside a callback that comes without
            // delay, so it can be taken over from now on.
            AddLeaving(*server);
            waiting::Interrupt(server->thread);
        }
    }
    delete unseen;
    return true;
}

void CAsyncWaits::End() noexcept {
    // Then there is no thread left to stop, and the lock may be held for ever.
    if (waiting::IsThreadLast()) return;
    {
        const CPlainLockGuard guard(lock_);
        hasEnded_ = true;
        for (TServer* server = leaving_.GetFirst(); server; server = server->next)
            waiting::Interrupt(server->thread);
    }
    while (StopFirst([](const TWait&) { return true; })) {
    }
    waiting::AwaitInterrupted();
    waiting::TThreadHandle last = nullptr;
    {
        const CPlainLockGuard guard(lock_);
        last = std::exchange(lastEnded_, nullptr);
    }
    waiting::JoinLast(last);
}

} // namespace vorlund
