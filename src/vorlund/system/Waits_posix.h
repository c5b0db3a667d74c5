// What the POSIX side offers beyond Waiting.h: waits until a point in time, and such that end from outside.
#pragma once

#include "vorlund/system/Waiting.h"

namespace vorlund::waiting {

/// Like `Wait`, until `MonotonicNanoseconds` reaches `deadline`.
std::uint32_t WaitUntil(TEventHandle event, std::int64_t deadline) noexcept;

/// What ends the waits of one thread.
struct TInterrupt {
    const std::uint32_t result; ///< what a wait that it ends returns
    // Under the lock of the waits:
    bool isRaised = false;
    struct TWaiter* waiter = nullptr; ///< the thread's present wait
};

/// Ends the present wait, and every later one at once.
void Raise(TInterrupt& interrupt) noexcept;

/// Like `WaitForSeveral` without a limit, until `interrupt` is raised; with a count of 0 until then in any
/// case.
std::uint32_t WaitUnlessRaised(TInterrupt& interrupt, std::uint32_t count, const TEventHandle* events,
                               bool isForAll) noexcept;

} // namespace vorlund::waiting
