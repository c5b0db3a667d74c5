// What the POSIX side needs to know about threads beyond Thread.h.
#pragma once

#include "vorlund/system/Thread.h"

namespace vorlund {

/// The present time on a clock that nobody sets.
std::int64_t MonotonicNanoseconds() noexcept;

/// Like `ParkWhile`, but no longer than until that clock shows `deadline`.
void ParkWhileUntil(const std::atomic<std::uint32_t>& word, std::uint32_t value,
                    std::int64_t deadline) noexcept;

} // namespace vorlund
