// What the library's own ports ask of their clients beyond `IAudioPortClient`. Every client is one of these,
// because the library makes them all.
#pragma once

#include "vorlund/system/Signal.h"

#include <vorlund/AudioPort.h>

#include <atomic>
#include <cstdint>
#include <memory>

namespace vorlund {

class CAudioClient : public IAudioPortClient, public std::enable_shared_from_this<CAudioClient> {
public:
    /// Output: how many frames `Process` would find now; none while paused. Any thread.
    virtual std::uint32_t GetReadyFrames() noexcept = 0;

    /// The device's delay has become less without a call of `Process`. Does not wait.
    virtual void NoteProgress() noexcept = 0;

    /// A device that was lost may be there again. Does not wait.
    virtual void NoteReturned() noexcept = 0;

    /// Returns when `frames` frames are ready, of an input when there is room for them, or when nobody is
    /// about to change that and everything that the port has told is dealt with, the opening of another
    /// device included. By a thread that holds nothing which `Open` and `Close` of the port wait for.
    virtual void WaitUntilReady(std::uint32_t frames) = 0;

    /// Notified whenever frames have become ready; null for none. It lives until it is replaced while nobody
    /// brings frames, that is between `Open` and `Close`.
    void SetListener(CSignal* listener) noexcept { listener_.store(listener, std::memory_order_release); }

protected:
    ~CAudioClient() = default;

    void TellListener() noexcept {
        if (CSignal* const listener = listener_.load(std::memory_order_acquire)) listener->Notify();
    }

private:
    std::atomic<CSignal*> listener_ = nullptr;
};

} // namespace vorlund
