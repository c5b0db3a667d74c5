#include "Painter.h"

#include <algorithm>

using namespace vorlund;

namespace {

TReach Max(const TReach& first, const TReach& second) {
    return {std::max(first.back, second.back), std::max(first.ahead, second.ahead)};
}

} // namespace

CPainter::CPainter(const TAudioPictureSettings& settings, std::uint32_t channels, std::uint32_t samplesPerSec)
    : settings_(settings), width_(static_cast<int>(settings.width)),
      height_(static_cast<int>(settings.height)), textScale_(std::max(height_ / 480, 1)) {
    const int upper = settings.kind == AUDIO_PICTURE_BOTH ? height_ / 2 : height_;
    if (settings.kind != AUDIO_PICTURE_SPECTRUM) {
        oscilloscope_.emplace(settings, TArea{0, 0, width_, upper}, channels, samplesPerSec);
        reach_ = Max(reach_, oscilloscope_->GetReach());
    }
    if (settings.kind != AUDIO_PICTURE_OSCILLOSCOPE) {
        const int top = settings.kind == AUDIO_PICTURE_BOTH ? upper : 0;
        spectrum_.emplace(settings, TArea{0, top, width_, height_ - top}, samplesPerSec, textScale_);
        reach_ = Max(reach_, spectrum_->GetReach());
    }
    DrawGround();
}

void CPainter::Forget() {
    if (spectrum_) spectrum_->Forget();
}

void CPainter::Analyse(const TSound& sound, std::int64_t frame) {
    if (spectrum_) spectrum_->Analyse(sound, frame);
}

void CPainter::DrawGround() {
    ground_.assign(std::size_t{settings_.width} * settings_.height, ToPixel(settings_.groundColour));
    if (settings_.hasScales == 0) return;
    CCanvas canvas(ground_.data(), width_, height_);
    if (oscilloscope_) oscilloscope_->DrawGround(canvas, textScale_);
    if (spectrum_) spectrum_->DrawGround(canvas);
}

void CPainter::Draw(const TSound& sound, std::uint32_t* picture) {
    std::copy(ground_.begin(), ground_.end(), picture);
    CCanvas canvas(picture, width_, height_);
    if (oscilloscope_) oscilloscope_->Draw(canvas, sound);
    if (spectrum_) spectrum_->Draw(canvas);
}
