// The output over a port.
#pragma once

#include "vorlund/devices/audio/OutputSession.h"
#include "vorlund/devices/audio/SessionSlot.h"

#include <vorlund/AudioOutput.h>
#include <vorlund/AudioPort.h>
#include <vorlund/ObjectImpl.h>
#include <vorlund/RefPtr.h>

#include <memory>
#include <mutex>
#include <thread>

namespace vorlund {

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
    const TDataFormat_AudioPcm& GetFormat() override;
    const TDataFormat_AudioPcm& GetDeviceFormat() override;
    double GetLatency() override;

protected:
    CAudioOutput();
    ~CAudioOutput();

private:
    /// The open session. Raises the failure without one.
    std::shared_ptr<COutputSession> Session(const TFailure& failure);
    void EndSession(COutputSession& session);
    void JoinEnded();

    CRefPtr<IAudioPort> port_;
    bool reopens_ = false;
    const std::shared_ptr<TOutputCommon> common_ = std::make_shared<TOutputCommon>();

    CSessionSlot<COutputSession> slot_;
    /// The feeder of a session that it has closed itself; while a session is opened or ended.
    std::thread ended_;

    std::mutex lastMutex_;
    /// \name Of the last session, under `lastMutex_`
    /// @{
    std::uint64_t xruns_ = 0;
    wstring streamError_;
    /// @}
};

} // namespace vorlund
