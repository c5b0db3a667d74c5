// The output that drops everything.
#include "vorlund/devices/audio/PortThread.h"
#include "vorlund/system/Deadline.h"

#include <vorlund/AudioDevices.h>
#include <vorlund/AudioPort.h>
#include <vorlund/DataFormat.h>
#include <vorlund/ObjectImpl.h>
#include <vorlund/RefPtr.h>

#include <cmath>
#include <vector>

namespace vorlund {
namespace {

constexpr std::uint32_t kPeriods = 4;
/// A period of 10 ms, where nothing else is wished.
constexpr std::uint32_t kPeriodsPerSec = 100;

/// Takes a period whenever one has passed, and plays it during the next one.
class CNullPort : public CObjectImpl<IAudioPort> {
public:
    static constexpr CId ClassId{0x8D21F6B0, 0x3C974E5A, 0xB2E81740, 0x6F0AD95C};

    TAudioPortFormat Open(const TAudioPortFormat& wish, IAudioPortClient& client) override {
        Close();
        client_ = &client;
        format_ = wish;
        if (format_.periodFrames == 0)
            format_.periodFrames = std::max(wish.samplesPerSec / kPeriodsPerSec, 1U);
        if (format_.periods == 0) format_.periods = kPeriods;
        const TDataFormat_AudioPcm pcm(wish.sampleFormat, wish.channels, wish.samplesPerSec);
        block_.resize(std::size_t{format_.periodFrames} * pcm.GetBlockSize());
        return format_;
    }
    void Close() override {
        Stop();
        client_ = nullptr;
    }
    void Start() override {
        if (client_) thread_.Start([this] { Run(); });
    }
    void Stop() override { thread_.Stop(); }

    std::uint32_t GetDelay() override {
        const std::int64_t taken = takenAt_;
        if (taken == 0) return 0;
        const double passed = static_cast<double>(waiting::NowNanoseconds() - taken) * 1e-9;
        const double left = format_.periodFrames - passed * format_.samplesPerSec;
        return left > 0 ? static_cast<std::uint32_t>(std::ceil(left)) : 0;
    }

protected:
    ~CNullPort() { Close(); }

private:
    void Run() {
        const waiting::CExactWaits exactWaits;
        const std::int64_t start = waiting::NowNanoseconds();
        const double period = 1e9 * format_.periodFrames / format_.samplesPerSec;
        for (std::uint64_t tick = 0; !thread_.IsStopping();) {
            const std::int64_t due = start + std::llround(static_cast<double>(tick) * period);
            if (waiting::NowNanoseconds() < due) {
                thread_.GetSignal().WaitUntil(due);
                continue;
            }
            client_->Process(block_.data(), format_.periodFrames);
            takenAt_ = due;
            ++tick;
        }
        takenAt_ = 0;
    }

    IAudioPortClient* client_ = nullptr;
    TAudioPortFormat format_{};
    std::vector<std::byte> block_;
    /// When the period that is played began; 0 for none.
    std::atomic<std::int64_t> takenAt_{0};
    CPortThread thread_;
};

} // namespace

IAudioOutput* CreateNullAudioOutput() {
    const auto port = CRefPtr<IAudioPort>::Adopt(static_cast<CNullPort*>(NewObject<CNullPort>()));
    return CreateAudioOutput(port.Get());
}

} // namespace vorlund
