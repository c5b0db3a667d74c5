#include "PlayWindow.h"

#include "Diagnostics.h"
#include "VideoDevice.h"

#include "../../plugins/support/PixelForm.h"

#include <vorlund/Exception.h>
#include <vorlund/Vorlund.h>

#include <algorithm>
#include <cmath>

using namespace vorlund;

namespace {

constexpr std::uint32_t kWidth = 960;
constexpr std::uint32_t kHeight = 540;
constexpr double kRate = 60;
/// Also while the sound stands still.
constexpr double kLongestWait = 0.1;

CRefPtr<IAudioPictures> MakePictures(TAudioPictureKind kind) {
    CRefPtr<IAudioPictures> pictures;
    try {
        pictures = CreateAs<IAudioPictures>(classid::CAudioPictures);
    } catch (const CClassNotFoundException&) {
        v.GiveBackLocks();
        throw TProgramError{VRL_L(
            "Pictures of sound need the plug-in 'visual', which is not loaded; 'vorlund plugins' tells why")};
    }
    TAudioPictureSettings settings;
    settings.kind = kind;
    settings.width = kWidth;
    settings.height = kHeight;
    settings.frameRate = static_cast<float>(kRate);
    pictures->SetSettings(settings);
    return pictures;
}

std::optional<TKey> FindKey(std::uint32_t key) {
    switch (key) {
    case WINDOW_KEY_LEFT:
        return TKey::Back;
    case WINDOW_KEY_RIGHT:
        return TKey::Forward;
    case WINDOW_KEY_UP:
        return TKey::Next;
    case WINDOW_KEY_DOWN:
        return TKey::Previous;
    case WINDOW_KEY_ESCAPE:
        return TKey::Quit;
    default:
        break;
    }
    if (key == 0 || key > 0x7E) return {};
    // The others are the characters that a terminal sends.
    std::string letter(1, static_cast<char>(key));
    return TakeKey(letter, true);
}

} // namespace

CPlayWindow::CPlayWindow(TAudioPictureKind kind, const wstring& title, IAudioOutput& output,
                         CEndNotice& notice)
    : notice_(notice), clock_(&output), pictures_(MakePictures(kind)), output_(MakeVideoOutput()),
      windowed_(output_.Query<IWindowedOutput>()), picture_(std::size_t{kWidth} * kHeight),
      format_(SAMPLE_FORMAT_FLOAT, 0, 0) {
    TDataFormat_VideoRgb format;
    format.image.pixelFormat = kPixelForm;
    format.image.width = kWidth;
    format.image.height = kHeight;
    format.frameRate = static_cast<float>(kRate);
    if (windowed_) windowed_->SetHandler(&OnEvent, this);
    OpenVideoOutput(*output_, format, title);
}

CPlayWindow::~CPlayWindow() {
    try {
        if (windowed_) windowed_->SetHandler(nullptr);
        output_->Close();
    } catch (...) {
        // The window goes with its device.
    }
}

void CPlayWindow::OnEvent(const TWindowEvent& event, void* user) {
    static_cast<CPlayWindow*>(user)->Note(event);
}

void CPlayWindow::Note(const TWindowEvent& event) {
    if (event.type != WINDOW_EVENT_KEY_PRESSED && event.type != WINDOW_EVENT_CLOSED) return;
    const auto key = event.type == WINDOW_EVENT_CLOSED ? TKey::Quit : FindKey(event.key);
    if (!key) return;
    try {
        const std::lock_guard lock(mutex_);
        keys_.push_back(*key);
    } catch (...) {
        // A key that is lost can be pressed again.
    }
    notice_.Tell();
}

std::optional<TKey> CPlayWindow::TakeKey() {
    const std::lock_guard lock(mutex_);
    if (keys_.empty()) return {};
    const TKey key = keys_.front();
    keys_.pop_front();
    return key;
}

std::chrono::milliseconds CPlayWindow::GetWait() const {
    const double wait = std::min(clock_.GetWait(next_), kLongestWait);
    return std::chrono::milliseconds(std::llround(std::ceil(wait * 1000)));
}

std::optional<float> CPlayWindow::Show(CPlayer& player) {
    const double time = clock_.GetTime();
    // While the sound stands still, pictures go on slowly, for keys that move it.
    if (time < next_ && clock_.GetWait(next_) < kLongestWait) return 0.0F;
    next_ = (std::floor(time * kRate) + 1) / kRate;
    const TDataFormat_AudioPcm* const format = player.GetHeardFormat();
    if (format && (format->channels != format_.channels || format->samplesPerSec != format_.samplesPerSec)) {
        format_ = *format;
        pictures_->Start(format->channels, format->samplesPerSec);
    }
    if (format_.channels == 0) return 0.0F;
    const float peak = player.TakeHeard(
        [this](const float* samples, std::size_t frames) { pictures_->Write(samples, frames); });
    pictures_->Draw(picture_.data());
    if (!output_->Present(picture_.data())) return {};
    return peak;
}
