#include "Levels.h"

#include <vorlund/AudioConversion.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

using namespace vorlund;

namespace {

/// Frames that share a peak: less than what the eye tells apart.
constexpr std::size_t kPieceFrames = 1024;

} // namespace

float CPeakFinder::Find(const void* samples, std::size_t frames) {
    if (frames == 0 || format_.GetBlockSize() == 0) return 0;
    floats_.resize(frames * format_.channels);
    ConvertAudio(floats_.data(), samples, frames,
                 {.from = format_.sampleFormat, .to = BUFFER_FORMAT_FLOAT, .channels = format_.channels});
    float peak = 0;
    for (const float sample : floats_) peak = std::max(peak, std::abs(sample));
    return peak;
}

void CHeardSound::SetFormat(const TDataFormat_AudioPcm& format, bool areSamplesKept) {
    format_ = format;
    areSamplesKept_ = areSamplesKept;
    finder_ = CPeakFinder(format);
}

void CHeardSound::Add(const void* samples, std::size_t frames, std::uint64_t first) {
    const auto* const bytes = static_cast<const std::uint8_t*>(samples);
    for (std::size_t at = 0; at < frames; at += kPieceFrames) {
        TPiece piece{first + at, 0, {}};
        piece.peak = finder_.Find(bytes + at * format_.GetBlockSize(), std::min(kPieceFrames, frames - at));
        if (areSamplesKept_) piece.samples = finder_.GetSamples();
        const std::lock_guard lock(mutex_);
        pieces_.push_back(std::move(piece));
    }
}

float CHeardSound::Take(std::uint64_t end, const TSink& sink) {
    const std::lock_guard lock(mutex_);
    float peak = 0;
    while (!pieces_.empty() && pieces_.front().first < end) {
        TPiece& piece = pieces_.front();
        peak = std::max(peak, piece.peak);
        const std::size_t frames = piece.samples.size() / std::max(format_.channels, 1U);
        const auto heard = static_cast<std::size_t>(std::min<std::uint64_t>(frames, end - piece.first));
        if (sink && heard > 0) sink(piece.samples.data(), heard);
        if (heard < frames) {
            piece.samples.erase(piece.samples.begin(), piece.samples.begin() + static_cast<std::ptrdiff_t>(
                                                                                   heard * format_.channels));
            piece.first += heard;
            break;
        }
        pieces_.pop_front();
    }
    return peak;
}

void CHeardSound::Forget() {
    const std::lock_guard lock(mutex_);
    pieces_.clear();
}
