// The output that writes a file.
#include "vorlund/devices/audio/AudioClient.h"
#include "vorlund/devices/audio/PortThread.h"
#include "vorlund/system/Deadline.h"

#include <vorlund/AudioDevices.h>
#include <vorlund/DataFormat.h>
#include <vorlund/Exception.h>
#include <vorlund/ObjectImpl.h>
#include <vorlund/RefPtr.h>

#include <algorithm>
#include <exception>
#include <memory>
#include <vector>

namespace vorlund {
namespace {

constexpr TFailure kNoPath{VRL_L("vorlund::CreateFileAudioOutput"),
                           VRL_L("src/vorlund/devices/audio/FilePort"), 1, VRL_L("path is NULL")};

/// Frames that are written at a time, where no latency is wished.
constexpr std::uint32_t kPeriodFrames = 4096;
constexpr std::uint32_t kPeriods = 4;
constexpr std::int64_t kLongRest = 3600 * std::int64_t{1000000000};

/// Takes what frames there are and waits for more.
class CFilePort : public CObjectImpl<IAudioPort> {
public:
    static constexpr CId ClassId{0x5E90B3C7, 0xD4184F62, 0x8A7B06E1, 0x29CF54D8};

    void SetPath(const wchar* path) { path_ = path; }

    TAudioPortFormat Open(const TAudioPortFormat& wish, IAudioPortClient& client) override {
        Close();
        const TDataFormat_AudioPcm pcm(wish.sampleFormat, wish.channels, wish.samplesPerSec);
        writer_ = std::make_unique<CWavWriter>(COutputStreamSelector(path_.c_str()), TWavWriterFormat(pcm));
        frameSize_ = pcm.GetBlockSize();
        format_ = wish;
        if (format_.periodFrames == 0) format_.periodFrames = kPeriodFrames;
        if (format_.periods == 0) format_.periods = kPeriods;
        block_.resize(std::size_t{format_.periodFrames} * frameSize_);
        error_ = nullptr;
        delay_ = 0;
        client_ = static_cast<CAudioClient*>(&client);
        client_->SetListener(&thread_.GetSignal());
        return format_;
    }
    void Close() override {
        CFilePort::Stop();
        if (!client_) return;
        client_->SetListener(nullptr);
        client_ = nullptr;
        const auto writer = std::move(writer_);
        if (error_) std::rethrow_exception(std::exchange(error_, nullptr));
        writer->Close();
    }
    void Start() override {
        if (client_) thread_.Start([this] { Run(); });
    }
    void Stop() override { thread_.Stop(); }
    std::uint32_t GetDelay() override { return delay_; }

protected:
    ~CFilePort() {
        try {
            CFilePort::Close();
        } catch (...) {
            // Already reported when it was built.
        }
    }

private:
    void Run() {
        while (!thread_.IsStopping()) {
            const std::uint32_t frames = std::min(client_->GetReadyFrames(), format_.periodFrames);
            if (frames == 0) {
                thread_.GetSignal().WaitUntil(waiting::NowNanoseconds() + kLongRest);
                continue;
            }
            delay_ = frames;
            client_->Process(block_.data(), frames);
            try {
                writer_->Write(block_.data(), std::uint64_t{frames} * frameSize_);
            } catch (...) {
                error_ = std::current_exception();
                client_->NoteLost();
                return;
            }
            delay_ = 0;
            client_->NoteProgress();
        }
    }

    wstring path_;
    CAudioClient* client_ = nullptr;
    TAudioPortFormat format_{};
    std::uint32_t frameSize_ = 0;
    std::unique_ptr<CWavWriter> writer_;
    std::vector<std::byte> block_;
    /// Frames that were taken and not written yet.
    std::atomic<std::uint32_t> delay_{0};
    std::exception_ptr error_;
    CPortThread thread_;
};

} // namespace

IAudioOutput* CreateFileAudioOutput(const wchar* path) {
    if (!path) Raise<CNullPtrException>(kNoPath);
    const auto port = CRefPtr<CFilePort>::Adopt(static_cast<CFilePort*>(NewObject<CFilePort>()));
    port->SetPath(path);
    return CreateAudioOutput(port.Get());
}

} // namespace vorlund
