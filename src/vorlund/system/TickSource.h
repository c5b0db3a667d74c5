// The clock of the timers. A port supplies everything declared here in a file Timer<System>.cpp. Nothing here
// raises.
#pragma once

#include "vorlund/system/Waiting.h"

namespace vorlund::waiting {

/// Ticks once per millisecond, for the thread that makes it. A tick that nobody waits for is kept, but only
/// one: further ones are lost with it.
class CTickSource {
public:
    CTickSource() noexcept;
    CTickSource(const CTickSource&) = delete;
    CTickSource& operator=(const CTickSource&) = delete;
    ~CTickSource();

    /// Waits for a tick or for `stop` without limit. True for a tick; false when `stop` is set, whatever has
    /// ticked, or when the wait fails.
    bool WaitForTick(TEventHandle stop) noexcept;

private:
    struct TState;
    TState* state_; ///< null when there is no clock to be had; then nothing ticks
};

} // namespace vorlund::waiting
