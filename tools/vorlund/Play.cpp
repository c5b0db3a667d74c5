// The command "play".
#include "AudioDevice.h"
#include "Commands.h"
#include "Diagnostics.h"
#include "FileNames.h"
#include "Interrupt.h"
#include "Keyboard.h"
#include "PlayWindow.h"
#include "Player.h"
#include "StatusLine.h"

#include <vorlund/Path.h>
#include <vorlund/Resampler.h>
#include <vorlund/Vorlund.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <optional>
#include <system_error>
#include <utility>

using namespace vorlund;
namespace fs = std::filesystem;

namespace {

using TClock = std::chrono::steady_clock;

/// How long nothing is looked at.
constexpr std::chrono::milliseconds kTick{50};
constexpr std::chrono::milliseconds kQuietTick{100};
constexpr std::chrono::milliseconds kLineInterval{100};

/// How long another device may take to become the default one.
constexpr std::chrono::seconds kDeviceWait{10};

constexpr double kJump = 5;
constexpr int kLevelWidth = 20;

/// A step of the volume.
constexpr double kVolumeStep = 0.05;
constexpr double kMostVolume = 16;

/// What a device gets at least, so that the files behind a poor first one do not suffer.
constexpr std::uint32_t kLeastRate = 44100;
constexpr std::uint32_t kLeastChannels = 2;

wstring Counted(std::size_t count) {
    return PathFromUtf8(std::to_string(count).c_str());
}

std::string FormatSeconds(double seconds) {
    char text[32];
    std::snprintf(text, sizeof text, "%.3f s", seconds);
    return text;
}

void CheckFiles(const TPlayOptions& options) {
    const auto inputs = std::count(options.files.begin(), options.files.end(), "-");
    if (inputs > 1 || (inputs > 0 && options.times != 1))
        throw TProgramError{VRL_L("The standard input can be played once only; save it to a file")};
    const auto output = GetFileOfDevice(options.device);
    if (!output) return;
    if (options.times == 0)
        throw TProgramError{VRL_L("A list without an end does not fit into a file; use --loop=COUNT")};
    for (const std::string& file : options.files) {
        std::error_code none;
        if (fs::equivalent(ToPath(file), ToPath(*output), none))
            throw TProgramError{VRL_L("'") + PathFromUtf8(file.c_str()) +
                                VRL_L("' would be played into itself; name another file behind 'file:'")};
    }
}

bool IsResamplerThere() {
    try {
        return static_cast<bool>(CreateAs<IObject>(kResamplerClassId));
    } catch (const CException&) {
        v.GiveBackLocks();
        return false;
    }
}

/// A file holds what its first file is made of. What is heard loses nothing of the files behind the first.
TDataFormat_AudioPcm ChooseFormat(const TDataFormat_AudioPcm& first, const std::string& device) {
    if (device == kNullDevice || GetFileOfDevice(device)) return first;
    TDataFormat_AudioPcm format(SAMPLE_FORMAT_FLOAT, std::max(first.channels, kLeastChannels),
                                first.samplesPerSec);
    if (format.samplesPerSec < kLeastRate && IsResamplerThere()) format.samplesPerSec = kLeastRate;
    return format;
}

/// The list while it is played.
class CPlaying {
public:
    CPlaying(const TPlayOptions& options, IAudioOutput& output, CPlayer& player, CStatusLine& line)
        : options_(options), output_(output), player_(player), line_(line) {
        if (!options.picture) return;
        const std::string title = ToUtf8(ToPath(options.files.front()).filename());
        window_.emplace(*options.picture, PathFromUtf8(title.c_str()), output, player.GetNotice());
    }

    /// Until everything has been heard, or somebody ends it.
    void Run() {
        const CInterrupt interrupt;
        while (player_.Update() && !interrupt.IsRaised() && !isEnded_) {
            CheckDevice();
            Listen();
            Show();
        }
        line_.Clear();
        // What is left of a period is heard as well.
        if (!isEnded_ && !interrupt.IsRaised()) output_.Drain();
    }

private:
    void Listen() {
        std::optional<TKey> key;
        if (window_) {
            player_.Wait(window_->GetWait());
            key = keyboard_.IsThere() ? keyboard_.Read(std::chrono::milliseconds(0)) : key;
            if (!key) key = window_->TakeKey();
        } else if (keyboard_.IsThere()) {
            key = keyboard_.Read(kTick);
        } else {
            player_.Wait(kQuietTick);
        }
        if (key) Act(*key);
        if (keyboard_.IsStopWanted()) Stop();
    }

    void Act(TKey key) {
        switch (key) {
        case TKey::Pause:
            isPaused_ = !isPaused_;
            return output_.SetPaused(isPaused_);
        case TKey::Back:
            return player_.MoveBy(-kJump);
        case TKey::Forward:
            return player_.MoveBy(kJump);
        case TKey::Previous:
            return player_.GoToPrevious();
        case TKey::Next:
            return player_.GoToNext();
        case TKey::Louder:
            return ChangeVolume(kVolumeStep);
        case TKey::Quieter:
            return ChangeVolume(-kVolumeStep);
        case TKey::Quit:
            isEnded_ = true;
        }
    }

    /// To the next whole step.
    void ChangeVolume(double change) {
        const double steps = std::round((static_cast<double>(output_.GetVolume()) + change) / kVolumeStep);
        output_.SetVolume(static_cast<float>(std::clamp(steps * kVolumeStep, 0.0, kMostVolume)));
    }

    /// The process stops, and the sound with it.
    void Stop() {
        line_.Clear();
        output_.SetPaused(true);
        keyboard_.Stop();
        output_.SetPaused(isPaused_);
    }

    void CheckDevice() {
        const bool isLost = output_.GetState() == AUDIO_STATE_LOST;
        if (isLost && !options_.device.empty()) {
            line_.Clear();
            // A file says why.
            CloseAudioOutput(output_, options_.device);
            throw TProgramError{VRL_L("The device '") + PathFromUtf8(options_.device.c_str()) +
                                VRL_L("' is lost")};
        }
        if (!isLost) {
            lostAt_.reset();
        } else if (!lostAt_) {
            lostAt_ = TClock::now();
        } else if (TClock::now() - *lostAt_ > kDeviceWait) {
            line_.Clear();
            throw TProgramError{VRL_L("The sound device is lost, and no other has taken its place")};
        }
    }

    void Show() {
        if (window_) {
            const std::optional<float> peak = window_->Show(player_);
            isEnded_ |= !peak;
            level_ = std::max(level_, peak.value_or(0));
        }
        if (!line_.IsEnabled() || TClock::now() < next_) return;
        next_ = TClock::now() + kLineInterval;
        const TPlaying playing = player_.GetPlaying();
        std::string text = lostAt_ ? "No device " : isPaused_ ? "Paused    " : "Playing   ";
        if (options_.files.size() > 1)
            text += std::to_string(playing.number + 1) + "/" + std::to_string(options_.files.size()) + "  ";
        text += FormatTime(playing.time);
        if (playing.length) text += " / " + FormatTime(*playing.length);
        if (!window_) level_ = player_.TakeHeard();
        text += "  " + FormatLevel(std::exchange(level_, 0.0F), kLevelWidth);
        text += "  " + std::to_string(std::lround(output_.GetVolume() * 100)) + " %";
        line_.Show(text);
    }

    const TPlayOptions& options_;
    IAudioOutput& output_;
    CPlayer& player_;
    CStatusLine& line_;
    std::optional<CPlayWindow> window_;
    CKeyboard keyboard_;
    /// The greatest peak since the line was written.
    float level_ = 0;
    bool isPaused_ = false;
    bool isEnded_ = false;
    /// Since when there has been no device.
    std::optional<TClock::time_point> lostAt_;
    TClock::time_point next_ = TClock::now();
};

} // namespace

void RunPlay(const TPlayOptions& options, CDiagnostics& diagnostics) {
    CheckFiles(options);
    const auto output = MakeAudioOutput(options.device);
    output->SetVolume(static_cast<float>(options.volume));
    CStatusLine line;
    // Of a single file, that is what the command fails with.
    wstring failure;
    const bool isList = options.files.size() > 1;
    const TListening listening = options.picture    ? TListening::Samples
                                 : line.IsEnabled() ? TListening::Levels
                                                    : TListening::Nothing;
    CPlayer player(
        {options.files, options.times, options.from, listening},
        [&](const wstring& path) {
            line.Clear();
            diagnostics.PrintField("File", path);
            std::fflush(stdout);
        },
        [&](const wstring& reason) {
            failure = reason;
            line.Clear();
            if (isList) diagnostics.PrintError(reason.c_str());
        });
    if (const TDataFormat_AudioPcm* const first = player.Begin()) {
        const TDataFormat_AudioPcm format = ChooseFormat(*first, options.device);
        OpenAudioOutput(*output, options.device, format, options.latency);
        const COpenDevice open(output);
        player.PlayOn(*output, format.samplesPerSec);
        CPlaying(options, *output, player, line).Run();
        diagnostics.PrintField(
            "Played", FormatSeconds(static_cast<double>(output->GetPosition()) / format.samplesPerSec));
        if (output->GetXruns() > 0) diagnostics.PrintField("Gaps", std::to_string(output->GetXruns()));
        CloseAudioOutput(*output, options.device);
    }
    if (player.GetFailed() == 0) return;
    if (!isList) throw TProgramError{failure};
    throw TProgramError{Counted(player.GetFailed()) + VRL_L(" of ") + Counted(options.files.size()) +
                        VRL_L(" files were not played")};
}
