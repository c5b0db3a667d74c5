// The output over a port.
#pragma once

#include "vorlund/devices/audio/OutputSession.h"

#include <vorlund/AudioOutput.h>
#include <vorlund/AudioPort.h>
#include <vorlund/ObjectImpl.h>
#include <vorlund/RefPtr.h>

#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>

namespace vorlund {

// An opening is a session of its own, so that what other threads are still doing with the last one ends there
// while the next one begins. The port belongs to one session at a time: `isBusy_` is set while one is opened
// or ended.
class CAudioOutput : public CObjectImpl<IAudioOutput> {
public:
    static constexpr CId ClassId{0xC1D5832E, 0x7A604F19, 0x95BE2D43, 0xE80F6A17};

    void SetPort(IAudioPort* port, bool reopens);

    void Open() override;
    void Close() override;
    void OpenOutput(const TDataFormat_AudioPcm& format, double latency) override;
    std::uint64_t Write(const void* buffer, std::uint64_t size) override;
    std::uint64_t GetWritable() override;
    void Play(IInputStream* stream) override;
    std::uint32_t GetPlayingStreams() override;
    CEvent& GetIdleEvent() override { return common_->idle; }
    std::uint32_t GetStreamError(wchar* text, std::uint32_t room) override;
    void SetPaused(bool isPaused) override;
    bool Drain() override;
    void Flush() override;
    std::uint64_t GetPosition() override;
    std::uint64_t GetDelay() override;
    void SetVolume(float volume) override;
    float GetVolume() override { return common_->volume; }
    std::uint64_t GetXruns() override;
    TAudioState GetState() override;
    const TDataFormat_AudioPcm& GetDeviceFormat() override;
    double GetLatency() override;

protected:
    CAudioOutput();
    ~CAudioOutput();

private:
    /// The open session. Raises the failure without one.
    std::shared_ptr<COutputSession> Session(const TFailure& failure);
    /// Takes the port over and gives back the session that has it.
    std::shared_ptr<COutputSession> TakePort(std::unique_lock<std::mutex>& lock);
    void EndSession(COutputSession& session);

    CRefPtr<IAudioPort> port_;
    bool reopens_ = false;
    const std::shared_ptr<TOutputCommon> common_ = std::make_shared<TOutputCommon>();

    std::mutex mutex_;
    std::condition_variable changed_;
    bool isBusy_ = false;
    std::shared_ptr<COutputSession> session_;
    /// The feeder of a session that it has closed itself.
    std::thread ended_;
    /// Of the last session.
    std::uint64_t xruns_ = 0;
    wstring streamError_;
};

} // namespace vorlund
