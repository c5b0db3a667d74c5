// The side of an input that the thread of the port runs. Nothing there allocates, raises, or takes a lock.
#pragma once

#include "vorlund/devices/audio/AudioClient.h"
#include "vorlund/devices/audio/FrameRing.h"

#include <vorlund/DataFormat.h>

#include <memory>

namespace vorlund {

/// Puts the frames of the device into a ring, and drops those that have no room. Who empties the ring waits
/// for `signal_`.
class CInputClient : public CAudioClient {
public:
    void Process(void* buffer, std::uint32_t frames) noexcept final;
    void NoteXruns(std::uint32_t count) noexcept final;
    void NoteLost() noexcept final;
    void NoteReturned() noexcept final;
    void NoteProgress() noexcept final {}
    std::uint32_t GetReadyFrames() noexcept final { return 0; }

protected:
    ~CInputClient() = default;

    /// An empty ring of `frames` frames of `format`; while nobody calls `Process`.
    void SetRing(const TDataFormat_AudioPcm& format, std::size_t frames);

    std::unique_ptr<CFrameRing> ring_;
    /// Of the ring.
    TDataFormat_AudioPcm deviceFormat_;
    CSignal signal_;
    /// Nothing is taken.
    std::atomic<bool> isPaused_ = false;
    std::atomic<bool> isLost_ = false;
    std::atomic<bool> isReturned_ = false;
    std::atomic<std::uint64_t> xruns_{0};
    /// Grows with everything that the port tells.
    std::atomic<std::uint32_t> told_{0};

private:
    /// The last frames had no room. Of the port's thread.
    bool isDropping_ = false;
};

} // namespace vorlund
