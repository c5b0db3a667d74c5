#include "Player.h"

#include "Diagnostics.h"
#include "OpenCauses.h"

#include <vorlund/Exception.h>
#include <vorlund/Path.h>
#include <vorlund/Vorlund.h>

#include <algorithm>
#include <cmath>
#include <utility>

using namespace vorlund;

namespace {

/// So much of sound waits behind the file that is read, and no more files than that.
constexpr double kAheadSeconds = 2;
constexpr std::size_t kMostAhead = 32;
constexpr std::uint32_t kErrorRoom = 512;

wstring CannotPlay(const wstring& path, const wstring& reason) {
    return VRL_L("Cannot play '") + path + VRL_L("': ") + reason;
}

/// What an output says of a stream, and what helps.
wstring AdviseOn(const wchar* reason) {
    wstring text = reason;
    if (!text.starts_with(VRL_L("No resampler"))) return text;
    return text +
           VRL_L("; that needs the plug-in 'resample', and 'vorlund plugins' tells why it is not loaded");
}

double GetSeconds(const CPlayedFile& file) {
    const auto frames = file.GetFrames();
    const double known = frames ? static_cast<double>(*frames) : 0;
    // As long as that, so that it counts, when nobody knows.
    return frames
               ? std::max(known - static_cast<double>(file.GetFrame()), 0.0) / file.GetFormat().samplesPerSec
               : kAheadSeconds;
}

} // namespace

CPlayer::CPlayer(TPlayedList list, std::function<void(const wstring&)> onBegin,
                 std::function<void(const wstring&)> onFailure)
    : list_(std::move(list)), onBegin_(std::move(onBegin)), onFailure_(std::move(onFailure)),
      failed_(list_.files.size()) {}

bool CPlayer::HasPlace(std::uint64_t place) const {
    return list_.times == 0 || place / list_.files.size() < list_.times;
}

const TDataFormat_AudioPcm* CPlayer::Begin() {
    first_ = OpenNext();
    return first_ ? &first_->GetFormat() : nullptr;
}

CPlayer::~CPlayer() {
    if (!output_) return;
    try {
        output_->Flush();
    } catch (...) {
        // A closed output has nothing of this.
    }
}

void CPlayer::PlayOn(IAudioOutput& output, std::uint32_t rate) {
    output_ = &output;
    rate_ = rate;
    Give(std::move(first_), next_ - 1);
    GiveAhead();
}

/// Opens files until one can be played. `next_` is the place behind it then.
std::unique_ptr<CPlayedFile> CPlayer::OpenNext() {
    while (HasPlace(next_)) {
        const std::uint64_t place = next_++;
        const std::size_t number = GetNumber(place);
        const std::string& name = list_.files[number];
        if (failed_[number]) {
            // An endless list of nothing ends.
            if (std::find(failed_.begin(), failed_.end(), false) == failed_.end()) return {};
            continue;
        }
        try {
            auto file = std::make_unique<CPlayedFile>(name, notice_, list_.listening);
            const double from = std::exchange(list_.from, 0);
            if (place == 0 && from > 0)
                file->Seek(static_cast<std::uint64_t>(std::llround(from * file->GetFormat().samplesPerSec)));
            // Nor does one of nothing but empty files play for ever.
            empty_ = file->GetFrames() == 0U ? empty_ + 1 : 0;
            if (list_.times == 0 && empty_ > list_.files.size()) return {};
            return file;
        } catch (const TProgramError& error) {
            Fail(number, error.text);
        } catch (const CFileAccessException& error) {
            Fail(number, error.GetReason() + DescribeCause(error));
        } catch (const CException& error) {
            Fail(number, CannotPlay(PathFromUtf8(name.c_str()), error.GetReason()));
        }
    }
    return {};
}

void CPlayer::Fail(std::size_t number, const wstring& reason) {
    // What the failure has left locked must not be in the way of other threads.
    v.GiveBackLocks();
    if (!failed_[number]) onFailure_(reason);
    failed_[number] = true;
}

void CPlayer::Give(std::unique_ptr<CPlayedFile> file, std::uint64_t place, bool isTold) {
    TGiven given{.file = std::move(file), .place = place, .isTold = isTold};
    given.firstFrame = given.file->GetFrame();
    if (given_.empty()) {
        // Whatever the device still plays is heard before.
        given.beginsAt = output_->GetPosition() + output_->GetDelay();
    } else if (given_.back().endsAt) {
        given.beginsAt = *given_.back().endsAt;
    }
    try {
        output_->Play(&given.file->GetStream());
    } catch (const CDataFormatException& error) {
        return Fail(GetNumber(place), CannotPlay(given.file->GetPath(), error.GetReason()));
    } catch (const CFailedException& error) {
        return Fail(GetNumber(place), CannotPlay(given.file->GetPath(), AdviseOn(error.GetReason())));
    }
    given_.push_back(std::move(given));
}

void CPlayer::GiveAhead() {
    for (;;) {
        double seconds = 0;
        std::size_t waiting = 0;
        for (const TGiven& given : given_) {
            if (given.endsAt) continue;
            ++waiting;
            // The one that is read may end any moment.
            if (waiting > 1) seconds += GetSeconds(*given.file);
        }
        if (waiting > 1 && (seconds >= kAheadSeconds || waiting > kMostAhead)) return;
        auto file = OpenNext();
        if (!file) return;
        Give(std::move(file), next_ - 1);
    }
}

/// The output reads its streams in order, so those that it does not have any more are the first ones.
void CPlayer::FindEnds() {
    const std::size_t playing = output_->GetPlayingStreams();
    const std::size_t ended = given_.size() - std::min(playing, given_.size());
    for (std::size_t i = 0; i < ended; ++i) {
        TGiven& given = given_[i];
        if (given.endsAt) continue;
        NoteEnd(given);
        if (i + 1 < given_.size()) given_[i + 1].beginsAt = *given.endsAt;
    }
}

void CPlayer::NoteEnd(TGiven& given) {
    const double frames = static_cast<double>(given.file->GetFrame() - given.firstFrame);
    given.endsAt = given.beginsAt + static_cast<std::uint64_t>(
                                        std::llround(frames * rate_ / given.file->GetFormat().samplesPerSec));
    if (const wstring failure = given.file->GetFailure(); !failure.empty())
        return Fail(GetNumber(given.place), failure);
    if (given.file->HasEnded()) return;
    // The output has not read it to its end.
    wchar reason[kErrorRoom];
    output_->GetStreamError(reason, kErrorRoom);
    Fail(GetNumber(given.place), CannotPlay(given.file->GetPath(), AdviseOn(reason)));
}

/// Whether it has been heard to its end. Another rate makes the end a little uncertain, so the last one ends
/// with the output.
bool CPlayer::IsHeard(const TGiven& given) {
    if (!given.endsAt) return false;
    return given_.size() == 1 ? output_->GetDelay() == 0 : output_->GetPosition() >= *given.endsAt;
}

bool CPlayer::Update() {
    FindEnds();
    GiveAhead();
    while (!given_.empty()) {
        TGiven& first = given_.front();
        const bool isHeard = IsHeard(first);
        if (!first.isTold && (isHeard || output_->GetPosition() >= first.beginsAt)) {
            first.isTold = true;
            onBegin_(first.file->GetPath());
        }
        if (!isHeard) return true;
        given_.pop_front();
    }
    return false;
}

std::uint64_t CPlayer::GetHeardFrame(const TGiven& given) const {
    const std::uint64_t position = output_->GetPosition();
    const double heard = position > given.beginsAt ? static_cast<double>(position - given.beginsAt) : 0;
    const auto frames = static_cast<std::uint64_t>(heard * given.file->GetFormat().samplesPerSec / rate_);
    const std::uint64_t frame = given.firstFrame + frames;
    return std::min(frame, given.file->GetFrames().value_or(frame));
}

TPlaying CPlayer::GetPlaying() const {
    if (given_.empty()) return {};
    const TGiven& heard = given_.front();
    const double rate = heard.file->GetFormat().samplesPerSec;
    TPlaying playing{.number = GetNumber(heard.place),
                     .time = static_cast<double>(GetHeardFrame(heard)) / rate};
    if (const auto frames = heard.file->GetFrames()) playing.length = static_cast<double>(*frames) / rate;
    return playing;
}

float CPlayer::TakeHeard(const CHeardSound::TSink& sink) {
    if (given_.empty()) return 0;
    return given_.front().file->GetHeard().Take(GetHeardFrame(given_.front()), sink);
}

const TDataFormat_AudioPcm* CPlayer::GetHeardFormat() const {
    return given_.empty() ? nullptr : &given_.front().file->GetFormat();
}

std::size_t CPlayer::GetFailed() const {
    return static_cast<std::size_t>(std::count(failed_.begin(), failed_.end(), true));
}

void CPlayer::MoveBy(double seconds) {
    if (given_.empty()) return;
    TGiven& heard = given_.front();
    const std::uint64_t place = heard.place;
    const double rate = heard.file->GetFormat().samplesPerSec;
    const double wanted = static_cast<double>(GetHeardFrame(heard)) + seconds * rate;
    const auto frame = static_cast<std::uint64_t>(std::max(wanted, 0.0));
    if (heard.file->GetFrames() && frame >= *heard.file->GetFrames()) return GoToNext();
    output_->Flush();
    std::unique_ptr<CPlayedFile> file = std::move(heard.file);
    const bool isTold = heard.isTold;
    given_.clear();
    next_ = place + 1;
    try {
        file->Seek(frame);
        Give(std::move(file), place, isTold);
    } catch (const TProgramError& error) {
        Fail(GetNumber(place), error.text);
    } catch (const CException& error) {
        Fail(GetNumber(place),
             CannotPlay(PathFromUtf8(list_.files[GetNumber(place)].c_str()), error.GetReason()));
    }
    GiveAhead();
}

void CPlayer::GoToNext() {
    if (!given_.empty()) JumpTo(given_.front().place + 1);
}

void CPlayer::GoToPrevious() {
    if (given_.empty()) return;
    std::uint64_t place = given_.front().place;
    for (std::uint64_t before = place; before-- > 0;) {
        if (failed_[GetNumber(before)]) continue;
        place = before;
        break;
    }
    JumpTo(place);
}

void CPlayer::JumpTo(std::uint64_t place) {
    output_->Flush();
    given_.clear();
    next_ = place;
    GiveAhead();
}
