/// \file
/// What the process holds of the system, and whether it grows.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace vorlund::soak {

struct TUsage {
    std::int64_t memory;  ///< bytes that the process has of its own
    std::int64_t handles; ///< handles or file descriptors
    std::int64_t threads;
};

/// What this process holds now.
TUsage GetUsage();

/// Takes samples of a run, and compares its last fifth with the first one after the warm-up. Made before the
/// run begins.
class CGrowth {
public:
    /// Takes a sample; waits a while for threads that are about to end, such as those that the library keeps
    /// for the next asynchronous wait.
    void Sample();

    TUsage GetFirst() const { return Typical(samples_.size() / kParts, samples_.size() * 2 / kParts); }
    TUsage GetLast() const { return Typical(samples_.size() * (kParts - 1) / kParts, samples_.size()); }

    /// What has grown, in words, or the empty text. `expected` is how many bytes must have come.
    std::string Describe(std::int64_t expected) const;

    /// With fewer samples nothing can be said.
    bool HasEnough() const { return samples_.size() >= 2 * kParts; }

private:
    static constexpr std::size_t kParts = 5; ///< the first of them is the warm-up

    /// The medians of some samples.
    TUsage Typical(std::size_t first, std::size_t end) const;

    std::int64_t threadsAtRest_ = GetUsage().threads;
    std::vector<TUsage> samples_;
};

} // namespace vorlund::soak
