// The side of an output that the thread of the port runs. Nothing there allocates, raises, or takes a lock.
#pragma once

#include "vorlund/devices/audio/AudioClient.h"
#include "vorlund/devices/audio/FrameRing.h"
#include "vorlund/devices/audio/OutputClock.h"

#include <vorlund/AudioConversion.h>
#include <vorlund/DataFormat.h>

#include <memory>

namespace vorlund {

/// Gives the frames of a ring to the device, and silence where there are none. Who fills the ring waits for
/// `signal_`.
class COutputClient : public CAudioClient {
public:
    void Process(void* buffer, std::uint32_t frames) noexcept final;
    void NoteXruns(std::uint32_t count) noexcept final;
    void NoteLost() noexcept final;
    void NoteReturned() noexcept final;
    void NoteProgress() noexcept final { signal_.Notify(); }
    std::uint32_t GetReadyFrames() noexcept final;

protected:
    explicit COutputClient(const std::atomic<float>& volume) : volume_(volume) {}
    ~COutputClient() = default;

    /// An empty ring of `frames` frames of `format`, and a new clock; while nobody calls `Process`. There is
    /// worthy room when `wakeRoom` frames have some.
    void SetRing(const TDataFormat_AudioPcm& format, std::size_t frames, std::size_t wakeRoom);
    /// Drops what is in the ring and returns how many frames; by the thread that fills it.
    std::size_t ClearRing();
    /// `signal_` is to be notified when the ring has worthy room. Who calls this looks for room afterwards:
    /// because both sides exchange the flag, either sees what the other has done.
    void WantRoom() noexcept { wantsRoom_.exchange(true); }
    bool HasWorthyRoom() const noexcept { return ring_->GetRoom() >= wakeRoom_; }
    std::size_t GetWorthyRoom() const noexcept { return wakeRoom_; }

    std::unique_ptr<CFrameRing> ring_;
    /// Of the ring.
    TDataFormat_AudioPcm deviceFormat_;
    std::unique_ptr<COutputClock> clock_;
    CSignal signal_;
    std::atomic<bool> isPaused_ = false;
    std::atomic<bool> isLost_ = false;
    std::atomic<bool> isReturned_ = false;
    std::atomic<std::uint64_t> systemXruns_{0};
    /// Grows with everything that the port tells.
    std::atomic<std::uint32_t> told_{0};

private:
    std::size_t Give(std::byte* to, std::size_t frames) noexcept;
    void Copy(std::byte* to, const std::byte* from, std::size_t frames) const noexcept;

    const std::atomic<float>& volume_;
    /// Whether `Process` or `ClearRing` is inside.
    std::atomic<bool> isInside_ = false;
    std::atomic<bool> wantsRoom_ = false;
    std::size_t wakeRoom_ = 1;
};

} // namespace vorlund
