// A progress bar for jobs that take long.
#pragma once

#include <chrono>
#include <cstdint>

/// Draws share, rate and time left on the standard error stream when that is a terminal and the job has run
/// for a while; cleans up after itself.
class CProgress {
public:
    /// \param total  bytes of the whole job, 0 when unknown
    explicit CProgress(std::uint64_t total);
    CProgress(const CProgress&) = delete;
    CProgress& operator=(const CProgress&) = delete;
    ~CProgress();

    /// States how far the job is.
    void Show(std::uint64_t done);

private:
    using TClock = std::chrono::steady_clock;

    std::uint64_t total_;
    bool isEnabled_;
    bool isShown_ = false;
    TClock::time_point begin_;
    TClock::time_point next_;
};
