#include "vorlund/api/tables/TablePort.h"

#include "vorlund/api/values/PathReason.h"

#include <vorlund/AudioInput.h>
#include <vorlund/AudioOutput.h>
#include <vorlund/DataFormat.h>
#include <vorlund/Exception.h>
#include <vorlund/RefPtr.h>

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>

namespace vorlund::tables {
namespace {

constexpr const wchar* kFile = VRL_L("src/vorlund/api/tables/TablePort");
constexpr const wchar* kOpen = VRL_L("vorlund::CTablePort::Open");

constexpr TFailure kOpenFailed{kOpen, kFile, 21, VRL_L("Device does not open")};
constexpr TFailure kBadFormat{kOpen, kFile, 22, VRL_L("Device opened with an impossible format")};
constexpr TFailure kClosed{kOpen, kFile, 23, VRL_L("Plug-in is closed")};
constexpr TFailure kStartFailed{VRL_L("vorlund::CTablePort::Start"), kFile, 31,
                                VRL_L("Device does not start")};

constexpr std::uint32_t kMaxPeriodFrames = 1 << 16;
constexpr std::uint32_t kMaxFrames = 1 << 20;
/// A device that tells more has miscounted: ten seconds of the highest rate.
constexpr std::uint32_t kMaxDelay = 10 * 192000;

bool IsProper(const vorlund_plugin_port_format& format) {
    return format.sample_format <= VORLUND_PLUGIN_SAMPLES_FLOAT && format.channels >= 1 &&
           format.channels <= 255 && format.samples_per_sec > 0;
}

/// Sets a flag for the length of a block.
class CFlagScope {
public:
    explicit CFlagScope(bool& flag) : flag_(flag) { flag_ = true; }
    CFlagScope(const CFlagScope&) = delete;
    CFlagScope& operator=(const CFlagScope&) = delete;
    ~CFlagScope() { flag_ = false; }

private:
    bool& flag_;
};

} // namespace

IObject* NewDevice(const TClassPtr& tableClass) {
    const auto port = CRefPtr<IAudioPort>::Adopt(new CFinalObject<CTablePort>(tableClass));
    const bool reopens = tableClass->device.reopens != 0;
    if (tableClass->device.kind == VORLUND_PLUGIN_AUDIO_INPUT) return CreateAudioInput(port.Get(), reopens);
    return CreateAudioOutput(port.Get(), reopens);
}

CTablePort::CTablePort(TClassPtr tableClass) : class_(std::move(tableClass)), record_{} {
    record_.size = sizeof(vorlund_plugin_client);
    record_.process = &OnProcess;
    record_.note_xruns = &OnXruns;
    record_.note_lost = &OnLost;
    record_.explain = &OnExplain;
    record_.owner = this;
}

void CTablePort::RaiseFailed(const TFailure& failure, std::int32_t code) const {
    if (code == VORLUND_PLUGIN_NO_MEMORY) throw std::bad_alloc();
    const wchar* const reason = reason_.empty() ? failure.reason : PathReason(VRL_L("%s"), reason_.c_str());
    Raise<CFailedException>(failure, reason);
}

TAudioPortFormat CTablePort::Open(const TAudioPortFormat& wish, IAudioPortClient& client) {
    Close();
    if (!IsAlive()) Raise<CFailedException>(kClosed);
    vorlund_plugin_port_format format = {sizeof format,      wish.sampleFormat, wish.channels,
                                         wish.samplesPerSec, wish.periodFrames, wish.periods};
    client_ = &client;
    reason_.clear();
    void* instance = nullptr;
    std::int32_t code = VORLUND_PLUGIN_FAILED;
    {
        const CFlagScope explaining(isExplaining_);
        code = class_->device.open(class_->deviceRecord, &record_, &format, &instance);
    }
    if (code != VORLUND_PLUGIN_OK) RaiseFailed(kOpenFailed, code);
    instance_ = instance;
    isOpen_ = true;
    if (!IsProper(format)) {
        Close();
        Raise<CFailedException>(kBadFormat);
    }
    const TDataFormat_AudioPcm frames(format.sample_format, format.channels, format.samples_per_sec);
    frameSize_ = frames.GetBlockSize();
    silence_ = frames.GetZeroByte();
    const std::uint32_t period = std::clamp<std::uint32_t>(format.period_frames, 1, kMaxPeriodFrames);
    return {format.sample_format, format.channels, format.samples_per_sec, period,
            std::clamp<std::uint32_t>(format.periods, 1, kMaxFrames / period)};
}

void CTablePort::Close() {
    if (!isOpen_) return;
    CTablePort::Stop();
    isOpen_ = false;
    if (IsAlive()) class_->device.close(std::exchange(instance_, nullptr));
}

void CTablePort::Start() {
    if (!isOpen_ || isStarted_ || !IsAlive()) return;
    reason_.clear();
    isProcessing_ = true;
    std::int32_t code = VORLUND_PLUGIN_FAILED;
    {
        const CFlagScope explaining(isExplaining_);
        code = class_->device.start(instance_);
    }
    isStarted_ = code == VORLUND_PLUGIN_OK;
    isProcessing_ = isStarted_;
    if (!isStarted_) RaiseFailed(kStartFailed, code);
}

void CTablePort::Stop() {
    if (!std::exchange(isStarted_, false)) return;
    if (IsAlive()) class_->device.stop(instance_);
    isProcessing_ = false;
}

std::uint32_t CTablePort::GetDelay() {
    if (!isOpen_ || !class_->device.delay || !IsAlive()) return 0;
    return std::min(class_->device.delay(instance_), kMaxDelay);
}

CTablePort& CTablePort::Of(const vorlund_plugin_client* client) {
    return *static_cast<const TRecord*>(client)->owner;
}

void CTablePort::OnProcess(const vorlund_plugin_client* client, void* buffer, std::uint32_t frames) {
    if (!client || !buffer || frames == 0) return;
    CTablePort& self = Of(client);
    if (self.isProcessing_) return self.client_->Process(buffer, frames);
    // Too early, or too late. What is recorded then is not taken.
    if (self.class_->device.kind == VORLUND_PLUGIN_AUDIO_OUTPUT)
        std::memset(buffer, self.silence_, std::size_t{frames} * self.frameSize_);
}

void CTablePort::OnXruns(const vorlund_plugin_client* client, std::uint32_t count) {
    if (client && count > 0) Of(client).client_->NoteXruns(count);
}

void CTablePort::OnLost(const vorlund_plugin_client* client) {
    if (client) Of(client).client_->NoteLost();
}

void CTablePort::OnExplain(const vorlund_plugin_client* client, const char* reason) {
    if (!client || !Of(client).isExplaining_) return;
    try {
        Of(client).reason_ = ReadText(reason);
    } catch (const std::bad_alloc&) {
        // The failure goes without it.
    }
}

} // namespace vorlund::tables
