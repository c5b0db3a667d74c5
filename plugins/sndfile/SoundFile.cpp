#include "SoundFile.h"

#include "Container.h"
#include "MpegHead.h"
#include "Notes.h"
#include "OggPages.h"

#include <vorlund/DecoderRefusal.h>
#include <vorlund/Exception.h>

#include <algorithm>
#include <limits>
#include <string>

using namespace vorlund;

namespace {

constexpr const wchar* kFile = VRL_L("plugins/sndfile/SoundFile");
constexpr const wchar* kConnect = VRL_L("CSndfileDecoder::Connect");

constexpr TFailure kUnknown{kConnect, kFile, 1, VRL_L("Not a sound file of a known kind")};
constexpr TFailure kRefused{kConnect, kFile, 2, VRL_L("Damaged or unsupported sound file")};
constexpr TFailure kCannotReopen{VRL_L("CSndfileDecoder::Read"), kFile, 3,
                                 VRL_L("Cannot go back in sound file")};

constexpr std::size_t kScratchSize = 64 * 1024;
/// Frames that are decoded behind a jump in Vorbis: two blocks of the largest size.
constexpr std::int64_t kPagesRunUp = 2 * 8192;
/// libsndfile jumps only over more than this many seconds; below, it skips without preparing the decoder.
constexpr std::int64_t kShortestJump = 2;

} // namespace

CSoundFile::CSoundFile(IInputStream& stream, const CRefusal& refusal)
    : virtualFile_(stream), scratch_(kScratchSize) {
    const TContainerAt at = FindContainer(virtualFile_);
    virtualFile_.RethrowFailure();
    if (at.container == TContainer::None) {
        refusal.Raise<CDataFormatException>(kUnknown);
        return;
    }
    if (at.container == TContainer::Mpeg) CompleteMpegHead(virtualFile_, at.start);
    // Before libsndfile begins: it trusts that nobody else moves the file.
    const std::int64_t lastPage = at.container == TContainer::Ogg ? CountFramesOfLastPage(virtualFile_) : -1;
    virtualFile_.RethrowFailure();
    Open();
    virtualFile_.RethrowFailure();
    if (!file_ || info_.channels < 1 || info_.samplerate < 1) {
        file_.reset();
        refusal.Raise<CDataFormatException>(kRefused);
        return;
    }

    const TSoundFormat format = GetSoundFormat(info_);
    format_ = {format.sampleFormat, static_cast<std::uint32_t>(info_.channels),
               static_cast<std::uint32_t>(info_.samplerate)};
    seekRule_ = format.seekRule;
    frames_ = info_.frames;
    if (frames_ < 0 || frames_ > std::numeric_limits<std::int64_t>::max() / format_.GetBlockSize())
        CountFrames();
    if (lastPage >= 0) lastJump_ = frames_ - lastPage - kPagesRunUp;
    virtualFile_.RethrowFailure();
}

void CSoundFile::Open() {
    file_.reset();
    virtualFile_.Seek(0);
    info_ = {};
    file_.reset(sf_open_virtual(CVirtualFile::GetCallbacks(), SFM_READ, &info_, &virtualFile_));
    if (!file_) NoteRefusal(sf_strerror(nullptr));
    next_ = 0;
}

std::int64_t CSoundFile::Read(std::int64_t frame, void* buffer, std::int64_t count) {
    if (isBusy_) return 0;
    isBusy_ = true;
    std::int64_t got = 0;
    try {
        if (frame != next_) GoTo(frame);
        if (frame == next_)
            got = std::max<std::int64_t>(ReadFrames(file_.get(), format_.sampleFormat, buffer, count), 0);
        next_ += got;
        virtualFile_.RethrowFailure();
    } catch (...) {
        // Where libsndfile is after a failure is not known.
        next_ = -1;
        isBusy_ = false;
        throw;
    }
    isBusy_ = false;
    if (got == 0 && count > 0 && frame == next_ && frame < frames_) {
        Note("the file ends after frame " + std::to_string(frame) + " of " + std::to_string(frames_));
        frames_ = frame;
    }
    return got;
}

void CSoundFile::GoTo(std::int64_t frame) {
    if (seekRule_ == TSeekRule::Direct && file_ && next_ >= 0 && Jump(frame)) return;
    if (seekRule_ == TSeekRule::Pages && file_ && next_ >= 0) GoByPages(frame);
    DecodeOnTo(frame);
}

bool CSoundFile::Jump(std::int64_t frame) {
    const sf_count_t reached = sf_seek(file_.get(), frame, SEEK_SET);
    // The place is unknown after a failure.
    next_ = reached < 0 ? -1 : reached;
    return reached == frame;
}

void CSoundFile::GoByPages(std::int64_t frame) {
    const std::int64_t target = std::min(frame - kPagesRunUp, lastJump_);
    const std::int64_t shortest = kShortestJump * format_.samplesPerSec;
    // Decoding on is right and nearer.
    if (frame >= next_ && target - next_ <= shortest) return;
    // From the start, every jump is a search for a page.
    if (target > shortest && Jump(0)) Jump(target);
}

void CSoundFile::DecodeOnTo(std::int64_t frame) {
    if (!file_ || next_ < 0 || next_ > frame) {
        Open();
        virtualFile_.RethrowFailure();
        if (!file_) Raise<CIOException>(kCannotReopen);
    }
    const std::int64_t step = static_cast<std::int64_t>(kScratchSize / format_.GetBlockSize());
    while (next_ < frame) {
        const std::int64_t got =
            ReadFrames(file_.get(), format_.sampleFormat, scratch_.data(), std::min(step, frame - next_));
        if (got <= 0) break;
        next_ += got;
    }
}

void CSoundFile::CountFrames() {
    Note("the file does not tell its length: it is decoded once to find it");
    frames_ = std::numeric_limits<std::int64_t>::max();
    DecodeOnTo(frames_);
    frames_ = next_;
    next_ = -1;
}
