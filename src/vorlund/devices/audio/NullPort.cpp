// The output that drops everything, and the input that hears nothing.
#include "vorlund/devices/audio/PortThread.h"
#include "vorlund/system/Deadline.h"

#include <vorlund/AudioDevices.h>
#include <vorlund/AudioPort.h>
#include <vorlund/DataFormat.h>
#include <vorlund/ObjectImpl.h>
#include <vorlund/RefPtr.h>

#include <algorithm>
#include <cmath>
#include <vector>

namespace vorlund {
namespace {

constexpr std::uint32_t kPeriods = 4;
/// A period of 10 ms, where nothing else is wished.
constexpr std::uint32_t kPeriodsPerSec = 100;

/// Moves a period whenever one has passed: one that is played during the next one, or one that was recorded
/// during the last one.
class CNullPort : public CObjectImpl<IAudioPort> {
public:
    static constexpr CId ClassId{0x8D21F6B0, 0x3C974E5A, 0xB2E81740, 0x6F0AD95C};

    void SetDirection(TAudioDirection direction) { direction_ = direction; }

    TAudioPortFormat Open(const TAudioPortFormat& wish, IAudioPortClient& client) override {
        Close();
        client_ = &client;
        format_ = wish;
        if (format_.periodFrames == 0)
            format_.periodFrames = std::max(wish.samplesPerSec / kPeriodsPerSec, 1U);
        if (format_.periods == 0) format_.periods = kPeriods;
        const TDataFormat_AudioPcm pcm(wish.sampleFormat, wish.channels, wish.samplesPerSec);
        block_.assign(std::size_t{format_.periodFrames} * pcm.GetBlockSize(), std::byte{pcm.GetZeroByte()});
        return format_;
    }
    void Close() override {
        CNullPort::Stop();
        client_ = nullptr;
    }
    void Start() override {
        if (client_) thread_.Start([this] { Run(); });
    }
    void Stop() override { thread_.Stop(); }

    std::uint32_t GetDelay() override {
        const std::int64_t moved = movedAt_;
        if (moved == 0) return 0;
        const double seconds = static_cast<double>(waiting::NowNanoseconds() - moved) * 1e-9;
        const double passed =
            std::clamp(seconds * format_.samplesPerSec, 0.0, static_cast<double>(format_.periodFrames));
        const double waiting =
            direction_ == AUDIO_DIRECTION_OUTPUT ? std::ceil(format_.periodFrames - passed) : passed;
        return static_cast<std::uint32_t>(waiting);
    }

protected:
    ~CNullPort() { CNullPort::Close(); }

private:
    void Run() {
        const waiting::CExactWaits exactWaits;
        const std::int64_t start = waiting::NowNanoseconds();
        const double period = 1e9 * format_.periodFrames / format_.samplesPerSec;
        const std::uint64_t first = direction_ == AUDIO_DIRECTION_OUTPUT ? 0 : 1;
        for (std::uint64_t tick = first; !thread_.IsStopping();) {
            const std::int64_t due = start + std::llround(static_cast<double>(tick) * period);
            if (waiting::NowNanoseconds() < due) {
                thread_.GetSignal().WaitUntil(due);
                continue;
            }
            client_->Process(block_.data(), format_.periodFrames);
            movedAt_ = due;
            ++tick;
        }
        movedAt_ = 0;
    }

    TAudioDirection direction_ = AUDIO_DIRECTION_OUTPUT;
    IAudioPortClient* client_ = nullptr;
    TAudioPortFormat format_{};
    std::vector<std::byte> block_;
    /// When the present period began; 0 for none.
    std::atomic<std::int64_t> movedAt_{0};
    CPortThread thread_;
};

CRefPtr<CNullPort> MakePort(TAudioDirection direction) {
    auto port = CRefPtr<CNullPort>::Adopt(static_cast<CNullPort*>(NewObject<CNullPort>()));
    port->SetDirection(direction);
    return port;
}

} // namespace

IAudioOutput* CreateNullAudioOutput() {
    return CreateAudioOutput(MakePort(AUDIO_DIRECTION_OUTPUT).Get());
}

IAudioInput* CreateNullAudioInput() {
    return CreateAudioInput(MakePort(AUDIO_DIRECTION_INPUT).Get());
}

} // namespace vorlund
