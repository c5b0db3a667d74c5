// The last sound that was heard.
#pragma once

#include "Sound.h"

#include <cstddef>
#include <cstdint>
#include <mutex>
#include <vector>

/// One thread writes while another one takes copies.
class CLiveSound {
public:
    /// \param kept  of the channels; the first ones
    CLiveSound(std::uint32_t channels, std::uint32_t kept, const TReach& reach);

    void Write(const float* samples, std::size_t frames);
    /// Copies the last frames in order, silence before the first ones, and tells how many were written.
    std::int64_t Copy(std::vector<float>& samples) const;

private:
    const std::uint32_t channels_;
    const std::uint32_t kept_;
    mutable std::mutex mutex_;
    /// A ring; the next frame goes to `next_`.
    std::vector<float> ring_;
    std::size_t next_ = 0;
    std::int64_t written_ = 0;
};
