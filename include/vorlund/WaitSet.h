/// \file
/// `CWaitSet`, which waits for any number of events with a few threads.
#pragma once

#include <vorlund/Event.h>

namespace vorlund {

struct TWaitSetData;

/// The most threads of a `CWaitSet`. Since version 0.1.
inline constexpr int kMaxWaitSetThreads = 64;

/// What the adding calls of a `CWaitSet` return when it has been stopped. Since version 0.1.
inline constexpr unsigned int kNoWaitNumber = 0xFFFFFFFF;

/// A set of events, each with a callback, served by one thread or a small pool of them. Where the
/// asynchronous waits of `CEvent` take a thread each, a set takes as many as it was made with, whatever the
/// number of events; on Windows the system adds one of its own for every 63 events, or fewer.
///
/// An event stays set until somebody resets it. So the callback of a repeated entry is called again and again
/// while its event is set, until the callback resets it or the entry is removed; an entry that is added once
/// is removed before its one call. Entries whose events are set are served in turn. No callback runs on two
/// threads at once for the same entry; those of different entries do when the set has several threads.
///
/// An entry refers to the platform event as a copy of the `CEvent` does, so the object that was given may be
/// destroyed or assigned to while it is in the set; the entry stays with the event that it was added with.
///
/// Any thread may call any operation, callbacks included. Callbacks must not raise, and must not destroy
/// their own set. Since version 0.1.
///
/// \code{.cpp}
/// CEvent asked, answered;
/// CWaitSet waits;
/// waits.AddOnce(asked, [](CWaitSet::TCbData& it) { static_cast<CEvent*>(it.userData)->SetState(true); },
///               &answered);
/// asked.SetState(true);
/// answered.Wait(); // the callback has run on a thread of the set
/// waits.Stop();    // and none runs any more
/// \endcode
class VRL_API CWaitSet {
public:
    /// What a callback is given.
    struct TCbData {
        /// The set's own copy of the event that is set; until the callback returns.
        CEvent* event;
        /// The number that the adding call returned.
        unsigned int number;
        /// The pointer that was given to the adding call.
        void* userData;
    };
    using TCallback = void (*)(TCbData&);

    /// An empty set with `threads` threads for its callbacks, 1 to `kMaxWaitSetThreads`; other numbers
    /// give the nearest. The threads start with the first entry. Raises `COutOfMemoryException` "malloc
    /// failed".
    explicit CWaitSet(int threads = 1);
    CWaitSet(const CWaitSet&) = delete;
    CWaitSet& operator=(const CWaitSet&) = delete;

    /// `Stop()`.
    ~CWaitSet();

    /// Adds an entry: `cb` is called whenever `event` is set. The same event may be there several times.
    ///
    /// \param event  the entry is for the event that this is now
    /// \param cb    runs on a thread of the set; null calls nothing
    /// \param data  handed to the callback as `userData`
    /// \return the number of the entry in this set: 0 for the first one, then 1, and so on; `kNoWaitNumber`,
    /// and nothing is added, when the set has been stopped
    ///
    /// Raises `COutOfMemoryException` "malloc failed". What the system refuses, threads for example, is not
    /// reported: nothing is called then.
    unsigned int Add(CEvent& event, TCallback cb, void* data);

    /// The same for one call.
    unsigned int AddOnce(CEvent& event, TCallback cb, void* data);

    /// Takes out an entry; an unknown number is ignored. No call of its callback begins after this has
    /// returned. One that has begun before may still run: it is not waited for.
    void Remove(unsigned int number);

    /// Takes out all entries for good and waits for the threads: when this has returned, no callback runs.
    /// Called by a callback of the set, it waits for nothing, and no further callback begins.
    void Stop();

private:
    TWaitSetData* data_;
};

} // namespace vorlund
