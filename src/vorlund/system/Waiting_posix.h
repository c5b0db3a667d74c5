// What Waiting_posix.cpp offers beyond Waiting.h: waits until a point in time, and waits that another thread
// ends.
#pragma once

#include "vorlund/system/Waiting.h"

namespace vorlund::waiting {

/// Like `Wait`, until `MonotonicNanoseconds` reaches `deadline`.
std::uint32_t WaitUntil(TEventHandle event, std::int64_t deadline) noexcept;

/// How a wait of one thread is ended by another.
struct TInterrupt {
    const std::uint32_t result; ///< what a wait that it ends returns
    // Under the lock of the waits:
    bool isPending = false;
    struct TWaiter* waiter = nullptr; ///< the thread's present wait
};

/// Ends the present wait of the thread, or else its next one.
void EndWait(TInterrupt& interrupt) noexcept;

/// Like `WaitForSeveral`, but `EndWait` ends it; with a count of 0 nothing but that and the limit does.
std::uint32_t WaitUnlessEnded(TInterrupt& interrupt, std::uint32_t count, const TEventHandle* events,
                              bool isForAll, std::uint32_t milliseconds) noexcept;

} // namespace vorlund::waiting
