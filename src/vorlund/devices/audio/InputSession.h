// An input between its opening and its closing.
#pragma once

#include "vorlund/devices/audio/AudioFormats.h"
#include "vorlund/devices/audio/InputClient.h"

#include <vorlund/AudioInput.h>

#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace vorlund {

/// How an input is to be opened.
struct TInputOpening {
    IAudioPort* port;
    bool reopens;
    TDataFormat_AudioPcm format;
    double latency;
};

// The port's thread fills a ring in the format of the device. The carrier, a thread of the session, brings
// what is there to the format that was asked for, by the resampler where the rate differs, and into a second,
// longer ring, from which the application reads. Who waits does so under `mutex_` for `changed_`.
class CInputSession final : public CInputClient {
public:
    /// Opens the port and starts it. Raises what `OpenInput` does.
    static std::shared_ptr<CInputSession> Open(const TInputOpening& opening);
    /// Not for others: see `Open`.
    explicit CInputSession(const TInputOpening& opening);

    const TDataFormat_AudioPcm& GetFormat() const { return format_; }
    /// Reads until the buffer is full, or nothing more will come.
    std::uint64_t Read(void* buffer, std::uint64_t size);
    std::uint64_t GetReadable();
    bool IsAtEnd();
    bool HasLost();
    void SetPaused(bool isPaused);
    /// Returns when everything that was recorded can be read.
    void Stop();
    std::uint64_t GetPosition();
    std::uint64_t GetXruns() const { return xruns_ + dropped_; }
    TAudioState GetState();
    const TDataFormat_AudioPcm& GetDeviceFormat();
    double GetLatency();

    /// Stops, and closes the port; once.
    void End();

    void WaitUntilReady(std::uint32_t frames) override;

private:
    using TLock = std::unique_lock<std::mutex>;

    void OpenPort();
    void SetDevice(const TAudioPortFormat& granted);
    void Tell();
    void RunCarrier();
    bool CarryOnce(TLock& lock);
    void Rest(TLock& lock, std::uint32_t told);
    void CarryConverted();
    void CarryResampled(TLock& lock);
    /// What the resampler reads.
    std::uint64_t ReadCaptured(void* buffer, std::uint64_t size);
    void PutOut(const std::byte* bytes, std::size_t size);
    void Reopen(TLock& lock);

    IAudioPort* const port_;
    const bool reopens_;
    const TDataFormat_AudioPcm format_;
    const double latency_;

    std::mutex mutex_;
    std::condition_variable changed_;
    std::thread carrier_;

    /// \name Under `mutex_`
    /// @{
    bool isStopped_ = false;
    bool isEnded_ = false;
    bool isPortOpen_ = false;
    /// Nothing more will come.
    bool isOver_ = false;
    bool wasLost_ = false;
    /// Bytes for the application.
    CFrameRing out_;
    bool isDropping_ = false;
    std::uint32_t seen_ = 0;
    bool isResting_ = false;
    std::deque<TDataFormat_AudioPcm> deviceFormats_;
    double deviceLatency_ = 0;
    /// @}
    std::atomic<std::uint64_t> dropped_{0};

    /// \name Of the carrier
    /// @{
    CFrameConversion conversion_;
    std::unique_ptr<CFormatChain> chain_;
    bool isInSound_ = false;
    std::vector<std::byte> block_;
    /// Of a lost device: when it may be tried again, and what it had delivered when that was tried last.
    std::int64_t nextOpening_ = 0;
    std::uint64_t writtenAtOpening_ = 0;
    /// @}
};

} // namespace vorlund
