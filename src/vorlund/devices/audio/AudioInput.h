// The input over a port.
#pragma once

#include "vorlund/devices/audio/CaptureStream.h"
#include "vorlund/devices/audio/InputSession.h"
#include "vorlund/devices/audio/SessionSlot.h"

#include <vorlund/AudioInput.h>
#include <vorlund/AudioPort.h>
#include <vorlund/ObjectImpl.h>
#include <vorlund/RefPtr.h>

namespace vorlund {

class CAudioInput : public CObjectImpl<IAudioInput> {
public:
    static constexpr CId ClassId{0x4C68A5F2, 0x91DE47B3, 0xA70B3E84, 0x6D25C91E};

    void SetPort(IAudioPort* port, bool reopens);

    void Open() override;
    void Close() override;
    void OpenInput(const TDataFormat_AudioPcm& format, double latency) override;
    IInputStream* GetStream() override;
    std::uint64_t GetReadable() override;
    void SetPaused(bool isPaused) override;
    void Stop() override;
    std::uint64_t GetPosition() override;
    std::uint64_t GetXruns() override;
    TAudioState GetState() override;
    const TDataFormat_AudioPcm& GetDeviceFormat() override;
    double GetLatency() override;

protected:
    CAudioInput() = default;
    ~CAudioInput();

private:
    /// The open session. Raises the failure without one.
    std::shared_ptr<CInputSession> Session(const TFailure& failure);
    void EndSession(CInputSession& session);

    CRefPtr<IAudioPort> port_;
    bool reopens_ = false;
    CSessionSlot<CInputSession> slot_;
    /// Of the last opening: whoever reads it may do so after `Close`, and counts it meanwhile.
    CRefPtr<IInputStream> stream_;
    /// Of the last session.
    std::atomic<std::uint64_t> xruns_{0};
};

} // namespace vorlund
