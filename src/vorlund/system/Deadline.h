// Points in time for threads that wait. A port supplies everything declared here in a file
// Deadline_<system>.cpp. Nothing here raises. Any thread.
#pragma once

#include "vorlund/system/Waiting.h"

#include <cstdint>

namespace vorlund::waiting {

/// The present time in nanoseconds on a clock that nobody sets, from an unspecified beginning.
std::int64_t NowNanoseconds() noexcept;

/// Waits until `NowNanoseconds` reaches `deadline`, or for `stop`, which may be null. True when `stop` is
/// set, even if the deadline has passed too.
bool WaitUntilDeadline(TEventHandle stop, std::int64_t deadline) noexcept;

/// While there is one, the system's waits end within a millisecond.
class CExactWaits {
public:
    CExactWaits() noexcept;
    CExactWaits(const CExactWaits&) = delete;
    CExactWaits& operator=(const CExactWaits&) = delete;
    ~CExactWaits();
};

} // namespace vorlund::waiting
