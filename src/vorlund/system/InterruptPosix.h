// Ending a thread's wait from outside, on POSIX.
#pragma once

#include "vorlund/system/Waiting.h"

namespace vorlund::waiting {

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
