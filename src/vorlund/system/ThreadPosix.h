// What the POSIX side needs to know about threads beyond Thread.h.
#pragma once

#include "vorlund/system/Thread.h"

#include <ctime>

namespace vorlund {

/// Like `ParkWhile`, but no longer than until `deadline` on CLOCK_MONOTONIC.
void ParkWhileUntil(const std::atomic<std::uint32_t>& word, std::uint32_t value,
                    const std::timespec& deadline) noexcept;

/// The present time on CLOCK_MONOTONIC.
std::timespec MonotonicNow() noexcept;

} // namespace vorlund
