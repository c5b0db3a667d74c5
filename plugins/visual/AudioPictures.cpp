#include "AudioPictures.h"

#include "Settings.h"

#include "../support/PixelForm.h"

#include <vorlund/AudioConversion.h>
#include <vorlund/Exception.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

using namespace vorlund;

namespace {

constexpr const wchar* kFile = VRL_L("plugins/visual/AudioPictures");
constexpr const wchar* kDraw = VRL_L("CAudioPictures::Draw");
constexpr const wchar* kWrite = VRL_L("CAudioPictures::Write");
constexpr const wchar* kNotStarted = VRL_L("Not started");

constexpr TFailure kBadSettings{VRL_L("CAudioPictures::SetSettings"), kFile, 1,
                                VRL_L("Settings out of range")};
constexpr TFailure kBadSource{VRL_L("CAudioPictures::Connect"), kFile, 2,
                              VRL_L("Unsupported format in decoded stream")};
constexpr TFailure kNegative{VRL_L("CAudioPictures::Seek"), kFile, 3, VRL_L("Position is negative")};
constexpr TFailure kBadStart{VRL_L("CAudioPictures::Start"), kFile, 4,
                             VRL_L("Channels or sample rate out of range")};
constexpr TFailure kWriteNotStarted{kWrite, kFile, 5, kNotStarted};
constexpr TFailure kNoSamples{kWrite, kFile, 6, VRL_L("samples is NULL")};
constexpr TFailure kDrawNotStarted{kDraw, kFile, 7, kNotStarted};
constexpr TFailure kNoPicture{kDraw, kFile, 8, VRL_L("picture is NULL")};

/// Frames of sound that are asked for at a time.
constexpr std::int64_t kMostFrames = 65536;

void MakeFinite(float* samples, std::size_t count) {
    std::replace_if(
        samples, samples + count, [](float sample) { return !std::isfinite(sample); }, 0.0F);
}

} // namespace

CAudioPictures::TLive::TLive(const TAudioPictureSettings& settings, std::uint32_t channels,
                             std::uint32_t samplesPerSec)
    : painter(settings, std::min(channels, COscilloscope::kMaxLanes), samplesPerSec),
      kept(std::min(channels, COscilloscope::kMaxLanes)), sound(channels, kept, painter.GetReach()) {}

void CAudioPictures::SetSettings(const TAudioPictureSettings& settings) {
    if (!AreInRange(settings)) Raise<CInvalidParameterException>(kBadSettings);
    settings_ = settings;
}

void CAudioPictures::Disconnect() {
    painter_.reset();
    sound_ = {};
    part_ = {};
    TLayer::Disconnect();
}

void CAudioPictures::BeginSource() {
    if (!IsPossible(input_) || input_.samplesPerSec > kMaxRate) Raise<CDataFormatException>(kBadSource);
    format_ = {SAMPLE_FORMAT_FLOAT, input_.channels, input_.samplesPerSec};
    video_.image.pixelFormat = kPixelForm;
    video_.image.width = settings_.width;
    video_.image.height = settings_.height;
    video_.frameRate = settings_.frameRate;
    kept_ = std::min(input_.channels, COscilloscope::kMaxLanes);
    painter_ = std::make_unique<CPainter>(settings_, kept_, input_.samplesPerSec);
    at_ = 0;
}

void CAudioPictures::BeginAt(std::uint64_t frame) {
    painter_->Forget();
    taken_ = static_cast<std::int64_t>(frame);
    isEnded_ = false;
    partAt_ = -1;
    // Before the beginning of the sound it is silent.
    soundFirst_ = frame == 0 ? -static_cast<std::int64_t>(painter_->GetReach().back) : taken_;
    sound_.assign(static_cast<std::size_t>(taken_ - soundFirst_) * kept_, 0.0F);
    next_ = frame == 0 ? 0 : GetPictureAt(taken_ + static_cast<std::int64_t>(painter_->GetReach().back));
}

void CAudioPictures::Make(CBlockBuffer& output, const std::byte* block, std::size_t frames, bool) {
    if (frames == 0) return;
    const std::size_t samples = frames * input_.channels;
    auto* const floats = reinterpret_cast<float*>(output.Append(samples * sizeof(float)));
    if (input_.sampleFormat == SAMPLE_FORMAT_FLOAT)
        std::memcpy(floats, block, samples * sizeof(float));
    else
        ConvertSamples(floats, BUFFER_FORMAT_FLOAT, block, input_.sampleFormat, samples);
}

const TDataFormat& CAudioPictures::GetFormat() {
    if (!stream_) return GetEmptyFormat();
    return video_;
}

std::int64_t CAudioPictures::GetCentre(std::int64_t picture) const {
    return static_cast<std::int64_t>(static_cast<double>(picture) * input_.samplesPerSec /
                                     static_cast<double>(video_.frameRate));
}

std::int64_t CAudioPictures::GetPictureAt(std::int64_t frame) const {
    if (frame <= 0) return 0;
    // Near it; what is rounded is put right.
    const double near =
        static_cast<double>(frame) * static_cast<double>(video_.frameRate) / input_.samplesPerSec;
    auto picture = static_cast<std::int64_t>(std::min(near, 0x1p60));
    while (picture > 0 && GetCentre(picture - 1) >= frame) --picture;
    while (GetCentre(picture) < frame) ++picture;
    return picture;
}

std::int64_t CAudioPictures::GetLength() {
    const std::int64_t bytes = TLayer::GetLength();
    if (!stream_) return 0;
    const std::int64_t pictures = GetPictureAt(bytes / format_.GetBlockSize());
    return std::min(pictures, std::numeric_limits<std::int64_t>::max() / GetPictureSize()) * GetPictureSize();
}

void CAudioPictures::Seek(std::int64_t position) {
    if (!stream_) return TLayer::Seek(position);
    if (position < 0) Raise<CIOException>(kNegative);
    // A source without positions says so itself.
    if (!HasSeek()) return TLayer::Seek(position);
    const CFilterCalls::CCall call(calls_);
    const std::int64_t length = GetLength();
    if (call.IsUnchanged()) at_ = std::min(position, length);
}

bool CAudioPictures::Eof() {
    if (!stream_) return true;
    if (isReading_ || partAt_ == at_ / GetPictureSize()) return false;
    const std::int64_t centre = GetCentre(at_ / GetPictureSize());
    if (isEnded_) return centre >= taken_;
    if (HasSeek()) return at_ >= GetLength();
    return centre >= taken_ && !KeepAround(centre);
}

bool CAudioPictures::BeginNear(std::int64_t picture) {
    // What is before has no effect.
    const std::int64_t first = GetPictureAt(GetCentre(picture) - painter_->GetMemory());
    if (next_ >= first && next_ <= picture) return true;
    const std::int64_t from =
        std::max<std::int64_t>(GetCentre(first) - static_cast<std::int64_t>(painter_->GetReach().back), 0);
    const bool isNear = next_ <= picture && (from - taken_ <= kMostFrames || !HasSeek());
    if (!isNear && !RestartAt(static_cast<std::uint64_t>(from))) return false;
    next_ = first;
    return true;
}

bool CAudioPictures::AnalyseUntil(std::int64_t picture) {
    if (next_ == picture + 1) return true;
    if (!BeginNear(picture)) return false;
    for (; next_ <= picture; ++next_) {
        const std::int64_t centre = GetCentre(next_);
        if (!KeepAround(centre)) return false;
        painter_->Analyse(GetSound(centre), centre);
    }
    return true;
}

bool CAudioPictures::KeepAround(std::int64_t centre) {
    const TReach reach = painter_->GetReach();
    const std::int64_t first = centre - static_cast<std::int64_t>(reach.back);
    const std::int64_t end = centre + static_cast<std::int64_t>(reach.ahead);
    while (taken_ < end && !isEnded_) {
        if (!TakeSound(static_cast<std::size_t>(std::min(end - taken_, kMostFrames)))) return false;
        // Seldom, because the rest is moved.
        const std::int64_t over = std::min(first, taken_) - soundFirst_;
        if (over > static_cast<std::int64_t>(reach.back + reach.ahead)) {
            sound_.erase(sound_.begin(), sound_.begin() + static_cast<std::ptrdiff_t>(over) *
                                                              static_cast<std::ptrdiff_t>(kept_));
            soundFirst_ += over;
        }
    }
    if (centre >= taken_) return false;
    const auto size = static_cast<std::size_t>(end - soundFirst_) * kept_;
    if (sound_.size() < size) sound_.resize(size, 0.0F);
    return true;
}

bool CAudioPictures::TakeSound(std::size_t frames) {
    // Not into the members: the source may connect the filter to another one meanwhile.
    std::vector<float> samples(frames * input_.channels);
    const std::size_t frameSize = input_.channels * sizeof(float);
    const CFilterCalls::CCall call(calls_);
    const std::uint64_t count = Take(reinterpret_cast<std::byte*>(samples.data()), frames * frameSize);
    if (!call.IsUnchanged()) return false;
    const auto got = static_cast<std::size_t>(count / frameSize);
    MakeFinite(samples.data(), got * input_.channels);
    for (std::size_t i = 0; i < got; ++i) {
        const float* const frame = samples.data() + i * input_.channels;
        sound_.insert(sound_.end(), frame, frame + kept_);
    }
    taken_ += static_cast<std::int64_t>(got);
    isEnded_ = got < frames;
    return true;
}

TSound CAudioPictures::GetSound(std::int64_t centre) const {
    const TReach reach = painter_->GetReach();
    const auto first = static_cast<std::size_t>(centre - soundFirst_) - reach.back;
    return {sound_.data() + first * kept_, kept_, reach.back + reach.ahead, reach.back};
}

std::uint64_t CAudioPictures::Read(void* buffer, std::uint64_t size) {
    if (!buffer || !stream_) return TLayer::Read(buffer, size);
    if (isReading_) return 0;
    // The source may release the last reference to this filter.
    const auto self = CRefPtr<IInputStream>::Share(this);
    struct TReading {
        explicit TReading(bool& flag) : isReading(flag) { isReading = true; }
        TReading(const TReading&) = delete;
        TReading& operator=(const TReading&) = delete;
        ~TReading() { isReading = false; }
        bool& isReading;
    } const reading(isReading_);
    auto* const bytes = static_cast<std::byte*>(buffer);
    std::uint64_t total = 0;
    while (total < size && stream_) {
        const std::uint64_t count = ReadPart(bytes + total, size - total);
        if (count == 0) break;
        total += count;
        at_ += static_cast<std::int64_t>(count);
    }
    return total;
}

std::uint64_t CAudioPictures::ReadPart(std::byte* buffer, std::uint64_t size) {
    const std::int64_t pictureSize = GetPictureSize();
    const std::int64_t picture = at_ / pictureSize;
    const std::int64_t inside = at_ % pictureSize;
    const auto whole = static_cast<std::uint64_t>(pictureSize);
    const bool isAligned = reinterpret_cast<std::uintptr_t>(buffer) % alignof(std::uint32_t) == 0;
    if (partAt_ != picture) {
        if (!AnalyseUntil(picture)) return 0;
        const TSound sound = GetSound(GetCentre(picture));
        if (inside == 0 && size >= whole && isAligned) {
            painter_->Draw(sound, reinterpret_cast<std::uint32_t*>(buffer));
            return whole;
        }
        part_.resize(static_cast<std::size_t>(pictureSize) / sizeof(std::uint32_t));
        painter_->Draw(sound, part_.data());
        partAt_ = picture;
    }
    const std::uint64_t count = std::min(size, static_cast<std::uint64_t>(pictureSize - inside));
    std::memcpy(buffer, reinterpret_cast<const std::byte*>(part_.data()) + inside,
                static_cast<std::size_t>(count));
    return count;
}

void CAudioPictures::Skip(std::uint64_t count) {
    if (!stream_ || isReading_) return;
    const auto most = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max() - at_);
    const std::int64_t target = at_ + static_cast<std::int64_t>(std::min(count, most));
    if (HasSeek()) return Seek(target);
    const auto self = CRefPtr<IInputStream>::Share(this);
    while (at_ < target) {
        if (!AnalyseUntil(at_ / GetPictureSize())) return;
        at_ = std::min(target, (at_ / GetPictureSize() + 1) * GetPictureSize());
    }
}

void CAudioPictures::Start(std::uint32_t channels, std::uint32_t samplesPerSec) {
    if (channels == 0 || channels > kMaxSoundChannels || samplesPerSec == 0 || samplesPerSec > kMaxRate)
        Raise<CInvalidParameterException>(kBadStart);
    live_ = std::make_unique<TLive>(settings_, channels, samplesPerSec);
}

void CAudioPictures::Write(const float* samples, std::size_t frames) {
    if (!live_) Raise<CBugException>(kWriteNotStarted);
    if (!samples && frames > 0) Raise<CNullPtrException>(kNoSamples);
    live_->sound.Write(samples, frames);
}

void CAudioPictures::Draw(std::uint32_t* picture) {
    if (!live_) Raise<CBugException>(kDrawNotStarted);
    if (!picture) Raise<CNullPtrException>(kNoPicture);
    const std::int64_t written = live_->sound.Copy(live_->samples);
    MakeFinite(live_->samples.data(), live_->samples.size());
    const TReach reach = live_->painter.GetReach();
    const TSound sound{live_->samples.data(), live_->kept, reach.back + reach.ahead, reach.back};
    live_->painter.Analyse(sound, written - static_cast<std::int64_t>(reach.ahead));
    live_->painter.Draw(sound, picture);
}
