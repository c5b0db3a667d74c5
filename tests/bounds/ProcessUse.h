/// \file
/// What the running process has used so far.
#pragma once

#include <cstdint>

namespace vorlund::test {

struct TProcessUse {
    /// Processor time of all threads, in milliseconds: what other processes do meanwhile does not count.
    std::uint64_t milliseconds;
    /// The most memory that was in use at once.
    std::uint64_t peakBytes;
};

TProcessUse GetProcessUse();

} // namespace vorlund::test
