// The command "record".
#include "AudioDevice.h"
#include "Commands.h"
#include "Diagnostics.h"
#include "Interrupt.h"
#include "Keyboard.h"
#include "Recorder.h"
#include "StatusLine.h"

#include <vorlund/Exception.h>
#include <vorlund/Path.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <optional>
#include <vector>

using namespace vorlund;

namespace {

using TClock = std::chrono::steady_clock;

/// The input keeps a second, so that this is often enough.
constexpr std::chrono::milliseconds kTick{50};
constexpr std::chrono::milliseconds kLineInterval{100};
constexpr std::size_t kBlockBytes = 64 * 1024;
constexpr int kLevelWidth = 20;
constexpr std::uint32_t kUsualRate = 48000;
constexpr std::uint32_t kUsualChannels = 2;

/// What is quieter all the time is silence: 80 dB below full scale, where a line without a source hums.
constexpr float kSilence = 1e-4F;

/// As the device has it, where nothing else is wanted.
TRecordedFormat ChooseFormat(const TRecordOptions& options, const std::optional<TAudioDevice>& device) {
    TRecordedFormat format{kUsualRate, kUsualChannels, options.bits};
    if (device && device->samplesPerSec > 0) format.rate = device->samplesPerSec;
    if (device && device->channels > 0) format.channels = std::min(device->channels, kUsualChannels);
    format.rate = options.rate.value_or(format.rate);
    format.channels = options.channels.value_or(format.channels);
    return format;
}

class CRecording {
public:
    CRecording(IAudioInput& input, CRecorder& recorder, const TDataFormat_AudioPcm& format,
               std::optional<std::uint64_t> frames)
        : input_(input), stream_(CRefPtr<IInputStream>::Adopt(input.GetStream())), recorder_(recorder),
          format_(format), frames_(frames),
          block_(std::max(kBlockBytes / format.GetBlockSize(), std::size_t{1}) * format.GetBlockSize()) {}

    /// Until there is enough, or somebody ends it. Returns false when the device is lost.
    bool Run() {
        const CInterrupt interrupt;
        while (!IsFull() && !isEnded_ && !interrupt.IsRaised()) {
            Listen();
            Take();
            Show();
            if (input_.GetState() != AUDIO_STATE_RUNNING && !isPaused_) break;
        }
        const bool isLost = input_.GetState() == AUDIO_STATE_LOST;
        input_.Stop();
        // What was heard up to now.
        while (!IsFull() && TakeBlock(block_.size())) {
        }
        line_.Clear();
        return !isLost;
    }

private:
    bool IsFull() const { return frames_ && recorder_.GetFrames() >= *frames_; }

    void Listen() {
        if (const auto key = keyboard_.Read(kTick)) {
            if (*key == TKey::Quit) isEnded_ = true;
            if (*key == TKey::Pause) SetPaused(!isPaused_);
        }
        if (keyboard_.IsStopWanted()) {
            line_.Clear();
            const bool wasPaused = isPaused_;
            SetPaused(true);
            keyboard_.Stop();
            SetPaused(wasPaused);
        }
    }

    void SetPaused(bool isPaused) {
        if (isPaused_ == isPaused) return;
        isPaused_ = isPaused;
        input_.SetPaused(isPaused);
        Take();
        recorder_.Flush();
    }

    /// What can be had without waiting.
    void Take() {
        while (const std::uint64_t readable = input_.GetReadable()) {
            if (IsFull() || !TakeBlock(readable)) return;
        }
    }

    bool TakeBlock(std::uint64_t most) {
        std::uint64_t size = std::min<std::uint64_t>(most, block_.size());
        if (frames_) size = std::min(size, (*frames_ - recorder_.GetFrames()) * format_.GetBlockSize());
        size -= size % format_.GetBlockSize();
        if (size == 0) return false;
        const std::uint64_t count = stream_->Read(block_.data(), size);
        recorder_.Write(block_.data(), static_cast<std::size_t>(count / format_.GetBlockSize()));
        return count > 0;
    }

    void Show() {
        if (!line_.IsEnabled() || TClock::now() < next_) return;
        next_ = TClock::now() + kLineInterval;
        const double seconds = static_cast<double>(recorder_.GetFrames()) / format_.samplesPerSec;
        std::string text = (isPaused_ ? "Paused     " : "Recording  ") + FormatTime(seconds);
        text += "  " + FormatLevel(recorder_.TakeLevel(), kLevelWidth);
        if (input_.GetXruns() > 0) text += "  lost " + std::to_string(input_.GetXruns());
        line_.Show(text);
    }

    IAudioInput& input_;
    const CRefPtr<IInputStream> stream_;
    CRecorder& recorder_;
    const TDataFormat_AudioPcm format_;
    const std::optional<std::uint64_t> frames_;
    std::vector<std::uint8_t> block_;
    CStatusLine line_;
    CKeyboard keyboard_;
    bool isPaused_ = false;
    bool isEnded_ = false;
    TClock::time_point next_ = TClock::now();
};

void Report(const TRecordOptions& options, const TRecordedFormat& format, const CRecorder& recorder,
            std::uint64_t xruns, const CDiagnostics& diagnostics) {
    char text[64];
    if (options.output != "-") diagnostics.PrintField("Output", PathFromUtf8(options.output.c_str()));
    diagnostics.PrintField("Channels", std::to_string(format.channels));
    diagnostics.PrintField("Rate", std::to_string(format.rate) + " Hz");
    diagnostics.PrintField("Bits", format.bits == "float" ? "32 float" : format.bits);
    std::snprintf(text, sizeof text, "%.3f s", static_cast<double>(recorder.GetFrames()) / format.rate);
    diagnostics.PrintField("Duration", text);
    if (recorder.GetPeak() > 0) {
        std::snprintf(text, sizeof text, "%.1f dB", 20 * std::log10(static_cast<double>(recorder.GetPeak())));
        diagnostics.PrintField("Peak", text);
    }
    if (xruns > 0) {
        const std::string times = std::to_string(xruns) + (xruns == 1 ? " time" : " times");
        diagnostics.PrintError((VRL_L("warning: sound was lost ") + PathFromUtf8(times.c_str()) +
                                VRL_L("; a greater --latency, or a faster disk, may help"))
                                   .c_str());
    }
    if (recorder.GetFrames() > 0 && recorder.GetPeak() < kSilence)
        diagnostics.PrintError(
            VRL_L("warning: there is nothing but silence; is the input muted, or is it another "
                  "one of those that 'vorlund devices' lists?"));
}

} // namespace

void RunRecord(const TRecordOptions& options, CDiagnostics& diagnostics) {
    if (options.output == "-") diagnostics.KeepStandardOutputFree();
    const TFoundInput found = MakeAudioInput(options.device, options.isLoopback);
    const TRecordedFormat format = ChooseFormat(options, found.device);
    const TDataFormat_AudioPcm input = CRecorder::GetInputFormat(format);
    std::optional<std::uint64_t> frames;
    if (options.duration) frames = static_cast<std::uint64_t>(std::llround(*options.duration * format.rate));
    // The device first: where there is none, the file that is there stays.
    OpenAudioInput(*found.input, options.device, input, options.latency);
    const COpenDevice open(found.input);
    CRecorder recorder(options.output, format, frames);
    const bool isWhole = CRecording(*found.input, recorder, input, frames).Run();
    recorder.Finish();
    Report(options, format, recorder, found.input->GetXruns(), diagnostics);
    if (!isWhole) throw TProgramError{VRL_L("The device was lost; what was recorded before is whole")};
}
