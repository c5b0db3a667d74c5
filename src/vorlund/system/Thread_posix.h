// What the POSIX files need of threads and clocks beyond Thread.h. A POSIX port supplies both functions in
// its Thread_<system>.cpp.
#pragma once

#include "vorlund/system/Thread.h"

namespace vorlund {

/// The present time on a clock that nobody sets, from an unspecified beginning.
std::int64_t MonotonicNanoseconds() noexcept;

/// Like `ParkWhile`, but at the latest until `MonotonicNanoseconds` reaches `deadline`.
void ParkWhileUntil(const std::atomic<std::uint32_t>& word, std::uint32_t value,
                    std::int64_t deadline) noexcept;

} // namespace vorlund
