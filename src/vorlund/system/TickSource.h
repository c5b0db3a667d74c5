// The clock of the timers. A port supplies everything declared here in a file TickSource_<system>.cpp.
// Nothing here raises.
#pragma once

#include "vorlund/system/Waiting.h"

namespace vorlund::waiting {

/// Ticks once per millisecond, for one thread that waits. Of the ticks that come while nobody waits, one is
/// kept and the others are lost. Made and destroyed without a lock of ours (see WaitThread.h).
class CTickSource {
public:
    CTickSource() noexcept;
    CTickSource(const CTickSource&) = delete;
    CTickSource& operator=(const CTickSource&) = delete;
    ~CTickSource();

    /// Waits for a tick or for `stop` without limit. True for a tick; false when `stop` is set, even if there
    /// is a tick too, and when the wait fails.
    bool WaitForTick(TEventHandle stop) noexcept;

private:
    struct TState;
    TState* state_; ///< null when there is no memory for it; then nothing ticks
};

} // namespace vorlund::waiting
