// The thread of an output.
#include "vorlund/devices/audio/OutputSession.h"
#include "vorlund/system/Deadline.h"

#include <vorlund/Exception.h>
#include <vorlund/StreamErrors.h>
#include <vorlund/String.h>

#include <algorithm>
#include <cstring>
#include <exception>
#include <optional>

namespace vorlund {
namespace {

constexpr TFailure kCannotRead{VRL_L("vorlund::CAudioOutput::Play"),
                               VRL_L("src/vorlund/devices/audio/AudioOutput"), 27,
                               VRL_L("Stream cannot be read")};

constexpr std::int64_t kSecond = 1000000000;
/// Nothing is expected before something is told.
constexpr std::int64_t kLongRest = 3600 * kSecond;
/// Between two looks at how far the device has come, which tells nothing itself.
constexpr std::int64_t kShortestRest = kSecond / 2000;
constexpr std::int64_t kLongestLook = kSecond / 50;

/// The exception that is being handled, as a line.
wstring DescribeException() {
    try {
        throw;
    } catch (const CException& exception) {
        return exception.ToString().GetBuffer();
    } catch (const std::exception& exception) {
        const char* const text = exception.what();
        return wstring(text, text + std::strlen(text));
    } catch (...) {
        return VRL_L("Unknown exception");
    }
}

/// What `act` raises, as a line. The feeder has nobody to pass an exception on to.
template <class TAct> wstring CatchText(TAct&& act) noexcept {
    try {
        act();
        return {};
    } catch (...) {
        try {
            return DescribeException();
        } catch (...) {
            // So short that it needs no memory.
            return VRL_L("Failed");
        }
    }
}

/// Nobody is there to take what a release raises, and it was reported when it was built.
template <class TRelease> void ReleaseQuietly(TRelease&& release) {
    static_cast<void>(CatchText(release));
}

} // namespace

bool COutputSession::IsQuiet() const {
    if (!isResting_ || seen_ != told_) return false;
    return !isWriting_ || GetWriteRoom() == 0;
}

void COutputSession::WaitUntilReady(std::uint32_t frames) {
    TLock lock(mutex_);
    while (!isEnded_ && GetReadyFrames() < frames && !IsQuiet()) {
        signal_.Notify();
        changed_.wait(lock);
    }
}

void COutputSession::RunFeeder() {
    TLock lock(mutex_);
    while (!isEnded_) {
        const std::uint32_t told = told_;
        if (!FeedOnce(lock)) Rest(lock, told);
    }
    dropCount_ = streams_.size();
    DropStreams(lock);
    ReleaseQuietly([&] { remains_.Reset(); });
    ReleaseQuietly([&] {
        if (queue_) queue_->Reset();
    });
}

bool COutputSession::FeedOnce(TLock& lock) {
    if (readGeneration_ != generation_) {
        readGeneration_ = generation_;
        partBytes_ = 0;
        ReleaseQuietly([&] { remains_.Reset(); });
        if (queue_) queue_->EndSegment();
    }
    if (dropCount_ > 0) {
        DropStreams(lock);
        return true;
    }
    if (isLost_ && reopens_ && MayReopen()) {
        isReturned_ = false;
        Reopen(lock);
        nextOpening_ = waiting::NowNanoseconds() + kSecond;
        passedAtOpening_ = clock_->Get().passed;
        return true;
    }
    if (!CanRead()) return false;
    ReadSome(lock);
    return true;
}

bool COutputSession::MayReopen() const {
    // At once when the device has moved since it was opened, else a second after the last time.
    return isReturned_ || clock_->Get().passed != passedAtOpening_ ||
           waiting::NowNanoseconds() >= nextOpening_;
}

bool COutputSession::CanRead() const {
    if (!HasWorthyRoom()) return false;
    if (remains_ || (queue_ && (queue_->IsInSegment() || queue_->Bytes().GetReadable() > 0))) return true;
    return !streams_.empty() && !isWriting_;
}

void COutputSession::Rest(TLock& lock, std::uint32_t told) {
    const bool isInSegment = queue_ && queue_->IsInSegment();
    if (!streams_.empty() || waiters_ > 0 || remains_ || isInSegment) {
        WantRoom();
        if (!isInSegment && CanRead()) return;
    }
    seen_ = told;
    isResting_ = true;
    restWaiters_ = waiters_;
    restDrainers_ = drainers_;
    changed_.notify_all();
    const std::int64_t deadline = GetNextLook();
    lock.unlock();
    signal_.WaitUntil(deadline);
    lock.lock();
    isResting_ = false;
}

std::int64_t COutputSession::GetNextLook() {
    const std::int64_t now = waiting::NowNanoseconds();
    if (isLost_) return reopens_ ? nextOpening_ : now + kLongRest;
    if (drainers_ == 0 || !IsReadOut() || ring_->GetReadable() > 0) return now + kLongRest;
    const std::uint64_t left = GetQueued() - std::min(GetQueued(), GetHeard());
    const auto rest = static_cast<std::int64_t>(left) * kSecond / deviceFormats_.back().samplesPerSec;
    return now + std::clamp(rest, kShortestRest, kLongestLook);
}

void COutputSession::ReadSome(TLock& lock) {
    const bool isWritten =
        queue_ && !remains_ && (queue_->IsInSegment() || queue_->Bytes().GetReadable() > 0);
    const bool isBegin = isWritten && !queue_->IsInSegment();
    if (isBegin) {
        queue_->BeginSegment();
        segmentOut_ = 0;
    }
    const std::size_t frameSize = ring_->GetFrameSize();
    const std::size_t wanted = std::min(ring_->GetRoom() * frameSize, block_.size()) - partBytes_;
    IInputStream* const other = remains_ ? remains_.Get() : isWritten ? nullptr : streams_.front();
    lock.unlock();
    std::uint64_t got = 0;
    wstring error = CatchText([&] {
        if (isBegin) queue_->Connect();
        IInputStream& source = other ? *other : queue_->GetResult();
        got = std::min<std::uint64_t>(source.Read(block_.data() + partBytes_, wanted), wanted);
        if (got == 0 && GetReadError(source) != 0) Raise<CIOException>(kCannotRead);
    });
    lock.lock();
    if (!error.empty()) {
        streamError_ = std::move(error);
        got = 0;
    }
    if (generation_ != readGeneration_ || isEnded_) return;
    if (got == 0) return EndSource();
    const std::size_t bytes = partBytes_ + static_cast<std::size_t>(got);
    const std::size_t frames = bytes / frameSize;
    if (isWritten) segmentOut_ += frames;
    const TDataFormat_AudioPcm& device = deviceFormats_.back();
    Put(block_.data(), frames, CFrameConversion(device, device));
    partBytes_ = bytes - frames * frameSize;
    std::copy_n(block_.data() + frames * frameSize, partBytes_, block_.data());
}

void COutputSession::EndSource() {
    partBytes_ = 0;
    if (remains_) {
        ReleaseQuietly([&] { remains_.Reset(); });
    } else if (queue_ && queue_->IsInSegment()) {
        queue_->EndSegment();
        segmentIn_ = queue_->Bytes().GetReadable() / format_.GetBlockSize();
        segmentOut_ = 0;
    } else {
        dropCount_ = 1;
        if (streams_.size() == 1) NoteEndOfFrames();
    }
    changed_.notify_all();
}

void COutputSession::DropStreams(TLock& lock) {
    partBytes_ = 0;
    while (dropCount_ > 0) {
        IInputStream* const stream = streams_.front();
        lock.unlock();
        ReleaseQuietly([&] { stream->Release(); });
        lock.lock();
        streams_.pop_front();
        --dropCount_;
    }
    if (streams_.empty()) common_->idle.SetState(true);
    changed_.notify_all();
}

std::uint64_t COutputSession::ReadWritten(void* buffer, std::uint64_t size) {
    TLock lock(mutex_);
    CFrameRing& bytes = queue_->Bytes();
    std::optional<std::uint64_t> emptySince;
    for (;;) {
        const std::uint32_t told = told_;
        if (isEnded_ || generation_ != readGeneration_) return 0;
        const std::span<const std::byte> piece =
            bytes.BeginRead(static_cast<std::size_t>(std::min<std::uint64_t>(size, bytes.GetCapacity())));
        if (!piece.empty()) {
            std::memcpy(buffer, piece.data(), piece.size());
            bytes.EndRead(piece.size());
            if (waiters_ > 0) changed_.notify_all();
            return piece.size();
        }
        if (!emptySince) emptySince = clock_->Get().passed;
        if (IsSegmentOver(*emptySince)) return 0;
        Rest(lock, told);
    }
}

bool COutputSession::IsSegmentOver(std::uint64_t emptySince) const {
    if (isLost_ || isChanging_) return true;
    if (isWriting_) return false;
    if (!streams_.empty() || drainers_ > 0) return true;
    // The device runs dry, and what was written a period ago has not been enough.
    return !isPaused_ && ring_->GetReadable() < GetWorthyRoom() &&
           clock_->Get().passed >= emptySince + GetWorthyRoom();
}

} // namespace vorlund
