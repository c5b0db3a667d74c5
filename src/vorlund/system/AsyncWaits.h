// The asynchronous waits of a process.
#pragma once

#include "vorlund/system/IntrusiveList.h"
#include "vorlund/system/PlainLock.h"
#include "vorlund/system/WaitThread.h"

#include <vorlund/Event.h>

#include <cstdint>

namespace vorlund {

using TAsyncCallback = void (*)(CEvent::TAsyncCbData&);

/// How many events of a list a wait looks at.
inline constexpr int kMaxListed = 256;

/// What an asynchronous wait is asked to do.
struct TAsyncRequest {
    TAsyncCallback callback;
    void* userData;
    bool isForAll;
    int count;             ///< as the caller gave it
    CEvent* const* events; ///< as many as `count`, but at most `kMaxListed`
};

/// The list of running waits, in the order in which they were started. The one object is constant-initialised
/// and never destroyed, so that threads which outlive the library's end at the end of a process find it
/// whole. Any thread.
class CAsyncWaits {
public:
    constexpr CAsyncWaits() = default;
    CAsyncWaits(const CAsyncWaits&) = delete;
    CAsyncWaits& operator=(const CAsyncWaits&) = delete;

    /// Starts a wait and returns its number. Raises `COutOfMemoryException`.
    unsigned int Start(const TAsyncRequest& request);

    void Stop(unsigned int number);
    /// Stops the first one with this callback.
    void Stop(TAsyncCallback callback);
    /// Stops all that list this object.
    void Stop(const CEvent* event);

    /// At the end of the library: stops all and waits for their threads; at the end of a process, those
    /// inside a callback excepted. Waits that are started later do nothing.
    void End() noexcept;

private:
    struct TWait;
    struct TServer;

    static void Run(void* argument) noexcept;
    static void Serve(TWait& wait);

    /// Stops the first wait that `isMeant`; false when there is none.
    template <class TPredicate> bool StopFirst(TPredicate isMeant);

    // Under the lock:
    /// A thread for the wait, or null when the system has none to give.
    TServer* ServerFor(TWait& wait, waiting::CLibraryHold& hold);
    void AddLeaving(TServer& server);
    void RemoveLeaving(TServer& server);

    // On the thread of `server`:
    /// What it does next, or null when it is to leave.
    TWait* NextFor(TServer& server);
    void Leave(TServer& server);

    CPlainLock lock_;
    CIntrusiveList<TWait> waits_;
    CIntrusiveList<TServer> leaving_; ///< threads without a wait that have not begun to end
    int ending_ = 0;                  ///< threads that have begun to end
    waiting::TThreadHandle lastEnded_ = nullptr;
    unsigned int nextNumber_ = 0;
    bool hasEnded_ = false;
};

extern constinit CAsyncWaits asyncWaits;

} // namespace vorlund
