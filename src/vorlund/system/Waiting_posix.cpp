// An event is one word: the number of its changes, which is odd while it is set, and a bit that says that
// somebody waits. While nobody waits, setting and resetting are one atomic operation each, and a wait for an
// event that is set is one load. A wait for several reads their words twice: if the numbers have the same sum
// the second time, none has changed in between, and what was seen was true at one moment.
//
// Whoever must sleep joins, under one lock for all waits, the lists of all its events and marks them watched.
// A watched event changes only under that lock. So the thread that sets it knows whom that satisfies, takes
// those waiters out of all lists, notes their results and wakes them: the setter alone releases them, and
// what happens to the events afterwards changes nothing. A wait for all counts how many of its events are not
// set, and every setting and resetting corrects that count. Each sleeper sleeps on a word of its own.
//
// A waiter is on its thread's stack. From the moment its word says that it is released, it may be gone.
// The event may be gone as soon as setting it has released somebody, or has shown a state that somebody reads
// without sleeping; nothing touches it after that.
#include "vorlund/system/Waiting_posix.h"
#include "vorlund/system/PlainLock.h"
#include "vorlund/system/Thread_posix.h"

#include <algorithm>
#include <limits>
#include <new>
#include <utility>

namespace vorlund::waiting {
namespace {

constexpr std::uint32_t kSet = 1;
/// The highest bit, so that it changes no other in a sum of words.
constexpr std::uint32_t kWatched = 1u << 31;

/// The word with one change more.
constexpr std::uint32_t Changed(std::uint32_t word) {
    return (word & kWatched) | ((word + 1) & ~kWatched);
}

/// The result of a waiter that has none yet.
constexpr std::uint32_t kPending = 0xFFFFFFFE;

/// The deadline of a wait without a limit.
constexpr std::int64_t kNever = std::numeric_limits<std::int64_t>::max();

/// Guards who waits for what, and the states of watched events.
constinit CPlainLock lock;

/// A waiter or a watch in the list of one event.
struct TLink {
    TEvent* event;
    TWaiter* waiter; ///< null in a watch
    TLink* next;
    TLink** back; ///< what leads here
};

/// Words whose sleepers are to be woken when the lock has been given back: a thread that runs at once would
/// wait for the lock. The words may be gone by then.
class CWakes {
public:
    CWakes() = default;
    CWakes(const CWakes&) = delete;
    CWakes& operator=(const CWakes&) = delete;
    ~CWakes() {
        for (int index = 0; index < count_; ++index) UnparkOne(addresses_[index]);
    }

    void Add(const void* address) {
        if (!address) return;
        if (count_ < kMaxLater)
            addresses_[count_++] = address;
        else
            UnparkOne(address);
    }

private:
    static constexpr int kMaxLater = 8;
    const void* addresses_[kMaxLater];
    int count_ = 0;
};

} // namespace

struct TEvent {
    std::atomic<std::uint32_t> word{0};
    /// How many handles there are. For a watched event it becomes 0 under the lock, and the last link frees
    /// it.
    std::atomic<std::uint32_t> references{1};
    TLink* first = nullptr;
};

/// Stays in the event's list from its start to its end, so the event stays watched.
struct TWatch : TLink {
    const TSignalled signalled;
    void* const argument;
    bool isArmed = false; ///< under the lock
};

struct TWaiter {
    std::atomic<std::uint32_t> released{0};
    std::uint32_t result = kPending;
    TWaiter* nextReleased = nullptr;
    TInterrupt* interrupt = nullptr;
    bool isForAll = false;
    std::uint32_t missing = 0; ///< when waiting for all: how many are not set
    std::uint32_t linked = 0;
    TLink links[kMaxEvents]; ///< the first `linked` are in use
};

namespace {

/// Puts the link into its event's list, and returns whether the event is set. Under the lock, like `Unlink`.
bool Link(TLink& link) {
    TEvent& event = *link.event;
    link.next = event.first;
    link.back = &event.first;
    if (event.first) event.first->back = &link.next;
    event.first = &link;
    return event.word.fetch_or(kWatched, std::memory_order_acquire) & kSet;
}

void Unlink(const TLink& link) {
    *link.back = link.next;
    if (link.next) link.next->back = link.back;
    TEvent& event = *link.event;
    if (event.first) return;
    if (event.references.load(std::memory_order_relaxed) == 0) {
        delete &event;
        return;
    }
    // A plain store, as nobody else changes a watched event. It comes last: from then on whoever closes
    // the event frees it without the lock.
    const std::uint32_t word = event.word.load(std::memory_order_relaxed);
    event.word.store(word & ~kWatched, std::memory_order_release);
}

void UnlinkAll(TWaiter& waiter) {
    for (std::uint32_t index = 0; index < waiter.linked; ++index) Unlink(waiter.links[index]);
    waiter.linked = 0;
    if (waiter.interrupt) waiter.interrupt->waiter = nullptr;
}

/// Wakes those whose results have been noted. Without the lock.
void WakeAll(TWaiter* waiter) {
    while (waiter) {
        TWaiter* const next = waiter->nextReleased;
        const void* const address = &waiter->released;
        waiter->released.store(1, std::memory_order_release);
        UnparkOne(address);
        waiter = next;
    }
}

/// Notes the results of the waiters that the setting of a watched event satisfies, takes them out of all
/// lists and returns them in a chain; watches call. Under the lock.
TWaiter* TakeSatisfied(const TEvent& event, CWakes& wakes) {
    TWaiter* satisfied = nullptr;
    for (TLink* link = event.first; link; link = link->next) {
        if (!link->waiter) {
            TWatch& watch = static_cast<TWatch&>(*link);
            if (std::exchange(watch.isArmed, false)) wakes.Add(watch.signalled(watch.argument));
            continue;
        }
        TWaiter& waiter = *link->waiter;
        if (waiter.isForAll && --waiter.missing > 0) continue;
        if (waiter.result == kPending) {
            waiter.nextReleased = satisfied;
            satisfied = &waiter;
        }
        // A wait may name an event twice; the lowest position counts.
        const auto index = static_cast<std::uint32_t>(link - waiter.links);
        waiter.result = waiter.isForAll ? 0 : std::min(waiter.result, index);
    }
    for (TWaiter* waiter = satisfied; waiter; waiter = waiter->nextReleased) UnlinkAll(*waiter);
    return satisfied;
}

/// Sets the event unless it is watched and `evenIfWatched` is false. Returns the word from which it changed,
/// or the word that kept it from changing. Setting an event that is set is a change too: what the caller did
/// before must be seen by whoever resets it.
std::uint32_t SetWord(TEvent& event, bool evenIfWatched) {
    std::uint32_t seen = event.word.load(std::memory_order_relaxed);
    while (evenIfWatched || !(seen & kWatched)) {
        const std::uint32_t set = seen & kSet ? seen : Changed(seen);
        if (event.word.compare_exchange_weak(seen, set, std::memory_order_release, std::memory_order_relaxed))
            break;
    }
    return seen;
}

/// The same for resetting; nothing needs to change when the event is not set.
std::uint32_t ResetWord(TEvent& event, bool evenIfWatched) {
    std::uint32_t seen = event.word.load(std::memory_order_relaxed);
    while ((seen & kSet) && (evenIfWatched || !(seen & kWatched))) {
        if (event.word.compare_exchange_weak(seen, Changed(seen), std::memory_order_acquire,
                                             std::memory_order_relaxed))
            break;
    }
    return seen;
}

[[gnu::noinline]] void SetWatched(TEvent& event) {
    CWakes wakes;
    TWaiter* released = nullptr;
    {
        const CPlainLockGuard guard(lock);
        // When nobody watches any more, the event may be gone once it is set.
        if ((SetWord(event, true) & (kWatched | kSet)) == kWatched) released = TakeSatisfied(event, wakes);
    }
    WakeAll(released);
}

[[gnu::noinline]] void ResetWatched(TEvent& event) {
    const CPlainLockGuard guard(lock);
    if ((ResetWord(event, true) & (kWatched | kSet)) != (kWatched | kSet)) return;
    // Only waits for all go on while one of their events is set.
    for (const TLink* link = event.first; link; link = link->next) {
        if (link->waiter) ++link->waiter->missing;
    }
}

/// The time at which a wait of that length ends; 0, which is always in the past, for no wait at all.
std::int64_t DeadlineAfter(std::uint32_t milliseconds) {
    if (milliseconds == kForever) return kNever;
    return milliseconds == 0 ? 0 : MonotonicNanoseconds() + std::int64_t{milliseconds} * 1000000;
}

/// Links the waiter to the events, and notes a result if there is one at once.
void LinkAll(TWaiter& waiter, std::uint32_t count, const TEventHandle* events) {
    for (std::uint32_t index = 0; index < count; ++index) {
        if (!events[index]) {
            waiter.result = kFailed;
            return;
        }
        TLink& link = waiter.links[waiter.linked++];
        link.event = events[index];
        link.waiter = &waiter;
        if (!Link(link)) {
            ++waiter.missing;
        } else if (!waiter.isForAll) {
            // The events before it are watched and not set, so this is the lowest.
            waiter.result = index;
            return;
        }
    }
    if (waiter.isForAll && waiter.missing == 0) waiter.result = 0;
}

/// Sleeps until the waiter is released or `deadline` has passed, and returns the result.
std::uint32_t Sleep(TWaiter& waiter, std::int64_t deadline) {
    while (deadline != kNever && !waiter.released.load(std::memory_order_acquire)) {
        if (MonotonicNanoseconds() < deadline) {
            ParkWhileUntil(waiter.released, 0, deadline);
            continue;
        }
        const CPlainLockGuard guard(lock);
        if (waiter.result == kPending) {
            UnlinkAll(waiter);
            return kTimeout;
        }
        deadline = kNever;
    }
    while (!waiter.released.load(std::memory_order_acquire)) ParkWhile(waiter.released, 0);
    return waiter.result;
}

/// Waits in the lists of the events.
[[gnu::noinline]] std::uint32_t WaitInLists(TWaiter& waiter, std::uint32_t count, const TEventHandle* events,
                                            std::int64_t deadline) {
    {
        const CPlainLockGuard guard(lock);
        LinkAll(waiter, count, events);
        if (waiter.result == kPending && deadline == 0) waiter.result = kTimeout;
        if (waiter.result != kPending) {
            UnlinkAll(waiter);
            return waiter.result;
        }
    }
    return Sleep(waiter, deadline);
}

/// The result of a wait for several that is already satisfied, or `kPending` when that is not certain.
std::uint32_t LookAtAll(std::uint32_t count, const TEventHandle* events, bool isForAll) {
    const std::uint32_t passed = isForAll ? kSet : 0;
    const auto look = [=](std::uint32_t index) {
        return events[index]->word.load(std::memory_order_acquire);
    };
    std::uint32_t sum = 0;
    std::uint32_t index = 0;
    for (; index < count; ++index) {
        if (!events[index]) return kFailed;
        const std::uint32_t word = look(index);
        if ((word & kSet) != passed) break;
        sum += word;
    }
    // A wait for all ends here at an event that is not set, a wait for any when none is set.
    if (isForAll ? index < count : index == count) return kPending;
    for (std::uint32_t again = 0; again < index; ++again) sum -= look(again);
    if ((sum & ~kWatched) != 0) return kPending;
    return isForAll ? 0 : index;
}

} // namespace

TEventHandle Create() noexcept {
    return new (std::nothrow) TEvent;
}

TEventHandle Duplicate(TEventHandle event) noexcept {
    if (event) event->references.fetch_add(1, std::memory_order_relaxed);
    return event;
}

void Close(TEventHandle event) noexcept {
    if (!event) return;
    std::uint32_t seen = event->references.load(std::memory_order_acquire);
    while (seen > 1) {
        if (event->references.compare_exchange_weak(seen, seen - 1, std::memory_order_acq_rel)) return;
    }
    // The last handle: from now on only threads that already wait know the event.
    bool isWatched = false;
    if (event->word.load(std::memory_order_acquire) & kWatched) {
        const CPlainLockGuard guard(lock);
        event->references.store(0, std::memory_order_relaxed);
        isWatched = event->first;
    }
    if (!isWatched) delete event;
}

void Set(TEventHandle event) noexcept {
    if (event && (SetWord(*event, false) & kWatched)) SetWatched(*event);
}

void Reset(TEventHandle event) noexcept {
    if (event && (ResetWord(*event, false) & (kWatched | kSet)) == (kWatched | kSet)) ResetWatched(*event);
}

bool IsSet(TEventHandle event) noexcept {
    return event && (event->word.load(std::memory_order_acquire) & kSet);
}

std::uint32_t Wait(TEventHandle event, std::uint32_t milliseconds) noexcept {
    if (!event) return kFailed;
    if (event->word.load(std::memory_order_acquire) & kSet) return 0;
    if (milliseconds == 0) return kTimeout;
    return WaitUntil(event, DeadlineAfter(milliseconds));
}

std::uint32_t WaitUntil(TEventHandle event, std::int64_t deadline) noexcept {
    TWaiter waiter;
    return WaitInLists(waiter, 1, &event, deadline);
}

std::uint32_t WaitForSeveral(std::uint32_t count, const TEventHandle* events, bool isForAll,
                             std::uint32_t milliseconds) noexcept {
    if (count == 0 || count > kMaxEvents) return kFailed;
    const std::uint32_t result = LookAtAll(count, events, isForAll);
    if (result != kPending) return result;
    TWaiter waiter;
    waiter.isForAll = isForAll;
    return WaitInLists(waiter, count, events, DeadlineAfter(milliseconds));
}

void EndWait(TInterrupt& interrupt) noexcept {
    TWaiter* waiter = nullptr;
    {
        const CPlainLockGuard guard(lock);
        waiter = interrupt.waiter;
        interrupt.isPending = !waiter;
        if (waiter) {
            waiter->result = interrupt.result;
            UnlinkAll(*waiter);
        }
    }
    // A chain of one, or none.
    WakeAll(waiter);
}

std::uint32_t WaitUnlessEnded(TInterrupt& interrupt, std::uint32_t count, const TEventHandle* events,
                              bool isForAll, std::uint32_t milliseconds) noexcept {
    TWaiter waiter;
    waiter.isForAll = isForAll;
    waiter.interrupt = &interrupt;
    {
        const CPlainLockGuard guard(lock);
        if (std::exchange(interrupt.isPending, false)) {
            waiter.result = interrupt.result;
        } else {
            if (count > 0) LinkAll(waiter, count, events);
            interrupt.waiter = &waiter;
        }
        if (waiter.result != kPending) {
            UnlinkAll(waiter);
            return waiter.result;
        }
    }
    return Sleep(waiter, DeadlineAfter(milliseconds));
}

TWatcherHandle StartWatcher() noexcept {
    return nullptr;
}

void EndWatcher(TWatcherHandle) noexcept {}

TWatchHandle StartWatch(TWatcherHandle, TEventHandle event, TSignalled signalled, void* argument) noexcept {
    if (!event) return nullptr;
    auto* const watch = new (std::nothrow) TWatch{{event, nullptr, nullptr, nullptr}, signalled, argument};
    if (!watch) return nullptr;
    const CPlainLockGuard guard(lock);
    Link(*watch);
    return watch;
}

bool Arm(TWatchHandle watch) noexcept {
    if (!watch) return false;
    const CPlainLockGuard guard(lock);
    if (IsSet(watch->event)) return true;
    watch->isArmed = true;
    return false;
}

void EndWatch(TWatchHandle watch) noexcept {
    if (!watch) return;
    {
        const CPlainLockGuard guard(lock);
        Unlink(*watch);
    }
    delete watch;
}

} // namespace vorlund::waiting
