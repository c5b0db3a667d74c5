/// \file
/// `CEvent`, a manual-reset event that threads wait for, alone, any of several or all together.
#pragma once

#include <vorlund/Platform.h>

#include <concepts>

namespace vorlund {

/// An event that stays set until it is reset. A copy refers to the same platform event: setting or waiting
/// for either object acts on one event, which lives until the last object that refers to it is destroyed.
///
/// Any thread may set, reset and wait. Nobody may use an object while it is assigned to or destroyed; a
/// thread that waits at that moment stays with the event that it began to wait for.
///
/// Time limits: milliseconds are `seconds` times 1000.0, truncated toward zero to 64 bits, of which the low
/// 32 count as an unsigned number; 0xFFFFFFFF waits without limit. So -0.001 s has no limit, other negative
/// times are very long, and a product that does not fit into 64 bits, or is not a number, does not wait at
/// all. Limits run on a clock that nobody sets.
///
/// Lists: `count` arguments of type `CEvent*`. The platform waits for 1 to 64 events; with another count, or
/// an event that the platform could not create, the wait fails at once: `WaitOne` then returns 0xFFFFFFFF,
/// `WaitAll` returns, and an asynchronous wait does nothing until it is stopped. An event must not be twice
/// in a list of which all are waited for: Windows may refuse that. `WaitAny` and `WaitAll` of EventWaits.h
/// check their lists, take times of `std::chrono` and return what a time limit raises here.
///
/// \code{.cpp}
/// CEvent isReady;
/// std::thread worker([&] { isReady.SetState(true); });
/// isReady.Wait();                                // without limit
/// std::printf("%d\n", isReady.GetState());       // prints 1
/// isReady.SetState(false);                       // it stays set until somebody resets it
/// std::printf("%d\n", WaitFor(isReady, 1ms));    // prints 0
/// worker.join();
/// \endcode
class VRL_API CEvent {
public:
    /// What the callback of an asynchronous wait is given.
    struct TAsyncCbData {
        /// The event whose signal satisfied the wait; the first of the list when all are waited for.
        CEvent* event;
        /// Its position in the list; 0 when all are waited for.
        unsigned int index;
        /// The number that the starting call returned.
        unsigned int handle;
        /// The pointer that was given to the starting call.
        void* userData;
    };

    /// Not set. Raises `COutOfMemoryException` "malloc failed" when there is no memory for its cell.
    CEvent();

    /// Shares the event of `other`. Raises `COutOfMemoryException` like `CEvent()`.
    CEvent(const CEvent& other);

    /// Gives up the own event and shares the one of `other`. Asynchronous waits that list this object go on
    /// with the event that they were started with.
    CEvent& operator=(const CEvent& other);

    /// Stops every asynchronous wait whose list contains this object.
    virtual ~CEvent();

    /// Sets or resets the event. Setting releases every thread that waits at that moment, even when the event
    /// is reset right afterwards.
    void SetState(bool state);

    /// True while the event is set.
    bool GetState();

    /// Waits without limit.
    void Wait();

    /// Waits at most `seconds`. Raises `CTimeoutException` "Timeout".
    void Wait(float seconds);

    /// The same as `event.Wait()`.
    static void Wait(CEvent& event);

    /// The same as `event.Wait(seconds)`, but raises under its own line.
    static void Wait(float seconds, CEvent& event);

    /// Waits until one of `count` events is set, and returns its position, the lowest when several are set.
    static unsigned int WaitOne(int count, ...);

    /// The same for at most `seconds`. Raises `CTimeoutException` "Timeout".
    static unsigned int WaitOne(float seconds, int count, ...);

    /// Waits until all of `count` events are set at the same time.
    static void WaitAll(int count, ...);

    /// The same for at most `seconds`. Raises `CTimeoutException` "Timeout".
    static void WaitAll(float seconds, int count, ...);

    /// The same two with whole seconds, which would be ambiguous: `WaitOne(1, 2, &a, &b)`. Since version 0.1.
    template <std::integral TSeconds, std::integral TCount, std::convertible_to<CEvent*>... TEvents>
    requires(sizeof...(TEvents) > 0) static unsigned int WaitOne(TSeconds seconds, TCount count,
                                                                 TEvents... events) {
        return WaitOne(static_cast<float>(seconds), static_cast<int>(count), static_cast<CEvent*>(events)...);
    }
    template <std::integral TSeconds, std::integral TCount, std::convertible_to<CEvent*>... TEvents>
    requires(sizeof...(TEvents) > 0) static void WaitAll(TSeconds seconds, TCount count, TEvents... events) {
        WaitAll(static_cast<float>(seconds), static_cast<int>(count), static_cast<CEvent*>(events)...);
    }

    /// Starts an asynchronous wait for this event: a thread of its own calls `cb` whenever the event is set,
    /// again and again while it stays set, until the wait is stopped. So a callback resets the event or stops
    /// the wait.
    ///
    /// The callback may stop its own wait, destroy its events and start other waits. It must not raise. For
    /// many events, `CWaitSet` takes a few threads.
    ///
    /// \param cb    runs on the wait's thread; null calls nothing
    /// \param data  handed to the callback as `userData`
    /// \return the number of the wait: 0 for the first one of a process, then 1, and so on
    ///
    /// Raises `COutOfMemoryException` "malloc failed". A thread that the system refuses is not reported: the
    /// wait then does nothing.
    unsigned int WaitAsync(void (*cb)(TAsyncCbData&), void* data);

    /// The same as `event.WaitAsync(cb, data)`.
    static unsigned int WaitAsync(void (*cb)(TAsyncCbData&), void* data, CEvent& event);

    /// Starts an asynchronous wait for one of `count` events, as `WaitOne` waits. The events at the time of
    /// the call are waited for, and at most 256 of the list are kept.
    static unsigned int WaitOneAsync(void (*cb)(TAsyncCbData&), void* data, int count, ...);

    /// Starts an asynchronous wait for all of `count` events, as `WaitAll` waits.
    static unsigned int WaitAllAsync(void (*cb)(TAsyncCbData&), void* data, int count, ...);

    /// Stops the wait with that number; an unknown number is ignored. No call of the callback begins after
    /// this has returned.
    ///
    /// \warning A call that has begun before may still be running when this returns: it is not waited for.
    /// Free what the callback uses only when it has said that it has ended, for example by an event that it
    /// sets as its last step. A running callback keeps this library loaded on Windows; elsewhere unloading it
    /// waits for the callback, which must not load or unload anything then. No callback may unload it.
    static void StopAsync(unsigned int handle);

    /// Stops the wait that was started first of those that have this callback, in the same way. Others with
    /// the same callback go on.
    static void StopAsync(void (*cb)(TAsyncCbData&));

    /// `StopAsync(unsigned int)`, for literal numbers. Since version 0.1.
    template <std::same_as<int> THandle> static void StopAsync(THandle handle) {
        StopAsync(static_cast<unsigned int>(handle));
    }

private:
    friend struct TEventAccess;
    struct TCell;
    TCell* cell_;
};

} // namespace vorlund
