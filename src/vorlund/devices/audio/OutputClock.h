// What the device has taken, kept by the thread of the port and read by all others.
#pragma once

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdint>

namespace vorlund {

/// Counts frames and gaps. `Note` comes from one thread and never waits; a reader that meets it looks again.
class COutputClock {
public:
    struct TCounts {
        /// Frames that the device has taken, silence not counted.
        std::uint64_t taken = 0;
        /// How many of them came since the last silence, and how many frames of silence were before these.
        /// While it is silent, the first number is 0.
        std::uint64_t sinceSilence = 0;
        std::uint64_t silence = 0;
        /// All that the device has got, silence too.
        std::uint64_t passed = 0;
        /// Gaps that have ended.
        std::uint64_t gaps = 0;
        /// Whether the device wants frames and there are none.
        bool isInGap = false;

        /// How many frames have been heard when the device still has `delay` frames to play. Exact as long as
        /// these lie across no more than one run of silence.
        std::uint64_t GetHeard(std::uint64_t delay) const {
            const std::uint64_t recent = std::min(delay, sinceSilence);
            const std::uint64_t older = delay - recent - std::min(delay - recent, silence);
            return taken - std::min(taken, recent + older);
        }
    };

    /// The device has got `frames` frames and then `silence` frames of silence. `isGap` tells that it wanted
    /// frames in their place.
    void Note(std::uint64_t frames, std::uint64_t silence, bool isGap) noexcept {
        TCounts next = counts_;
        next.passed += frames + silence;
        if (frames > 0) {
            if (next.isInGap && !IsEnd(next.taken)) ++next.gaps;
            next.isInGap = false;
            next.taken += frames;
            next.sinceSilence += frames;
        }
        if (silence > 0) {
            if (next.sinceSilence > 0) next.silence = 0;
            next.sinceSilence = 0;
            next.silence += silence;
            if (isGap && next.taken > 0) next.isInGap = true;
        }
        Publish(next);
    }

    /// What comes after the first `taken` frames is no gap but an end. One thread at a time.
    void NoteEnd(std::uint64_t taken) noexcept {
        if (IsEnd(taken)) return;
        ends_[nextEnd_].store(taken, std::memory_order_release);
        nextEnd_ = (nextEnd_ + 1) % ends_.size();
    }

    TCounts Get() const noexcept {
        for (;;) {
            const std::uint32_t before = version_.load(std::memory_order_acquire);
            TCounts counts;
            counts.taken = taken_.load(std::memory_order_acquire);
            counts.sinceSilence = sinceSilence_.load(std::memory_order_acquire);
            counts.silence = silence_.load(std::memory_order_acquire);
            counts.passed = passed_.load(std::memory_order_acquire);
            counts.gaps = gaps_.load(std::memory_order_acquire);
            counts.isInGap = isInGap_.load(std::memory_order_acquire);
            if (before % 2 == 0 && version_.load(std::memory_order_relaxed) == before) return counts;
        }
    }

    /// Gaps so far, the present one included.
    std::uint64_t GetGaps() const noexcept {
        const TCounts counts = Get();
        return counts.gaps + (counts.isInGap && !IsEnd(counts.taken) ? 1 : 0);
    }

private:
    bool IsEnd(std::uint64_t taken) const noexcept {
        return std::any_of(ends_.begin(), ends_.end(), [&](const std::atomic<std::uint64_t>& end) {
            return end.load(std::memory_order_acquire) == taken;
        });
    }

    void Publish(const TCounts& next) noexcept {
        counts_ = next;
        const std::uint32_t version = version_.load(std::memory_order_relaxed);
        version_.store(version + 1, std::memory_order_relaxed);
        // Whoever sees one of the following sees the odd number too.
        taken_.store(next.taken, std::memory_order_release);
        sinceSilence_.store(next.sinceSilence, std::memory_order_release);
        silence_.store(next.silence, std::memory_order_release);
        passed_.store(next.passed, std::memory_order_release);
        gaps_.store(next.gaps, std::memory_order_release);
        isInGap_.store(next.isInGap, std::memory_order_release);
        version_.store(version + 2, std::memory_order_release);
    }

    /// The thread's own copy.
    TCounts counts_;
    std::atomic<std::uint32_t> version_{0};
    std::atomic<std::uint64_t> taken_{0};
    std::atomic<std::uint64_t> sinceSilence_{0};
    std::atomic<std::uint64_t> silence_{0};
    std::atomic<std::uint64_t> passed_{0};
    std::atomic<std::uint64_t> gaps_{0};
    std::atomic<bool> isInGap_{false};
    /// The last few ends; more than one of them can be ahead of the device when short sounds follow each
    /// other.
    std::array<std::atomic<std::uint64_t>, 16> ends_ = {};
    std::size_t nextEnd_ = 0;
};

} // namespace vorlund
