// The thread of an output.
#include "vorlund/devices/audio/OutputSession.h"
#include "vorlund/system/Deadline.h"

#include <vorlund/Exception.h>
#include <vorlund/StreamErrors.h>
#include <vorlund/String.h>

#include <algorithm>
#include <exception>

namespace vorlund {
namespace {

constexpr std::int64_t kSecond = 1000000000;
/// Nothing is expected before something is told.
constexpr std::int64_t kLongRest = 3600 * kSecond;
/// Between two looks at how far the device has come, which tells nothing itself.
constexpr std::int64_t kShortestRest = kSecond / 2000;
constexpr std::int64_t kLongestLook = kSecond / 50;

} // namespace

void COutputSession::WaitForChange(TLock& lock) {
    ++waiters_;
    signal_.Notify();
    changed_.wait(lock);
    --waiters_;
}

bool COutputSession::IsQuiet() const {
    if (!isResting_ || seen_ != told_.load()) return false;
    return !isWriting_ || ring_->GetRoom() == 0;
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
        const std::uint32_t told = told_.load();
        if (!FeedOnce(lock)) Rest(lock, told);
    }
    dropCount_ = streams_.size();
    DropStreams(lock);
}

bool COutputSession::FeedOnce(TLock& lock) {
    if (dropCount_ > 0) {
        DropStreams(lock);
        return true;
    }
    if (!CanRead()) return false;
    ReadSome(lock);
    return true;
}

bool COutputSession::CanRead() const {
    return !streams_.empty() && !isWriting_ && HasWorthyRoom();
}

void COutputSession::Rest(TLock& lock, std::uint32_t told) {
    if (!streams_.empty() || waiters_ > 0) {
        WantRoom();
        if (CanRead()) return;
    }
    seen_ = told;
    isResting_ = true;
    changed_.notify_all();
    const std::int64_t deadline = GetNextLook();
    lock.unlock();
    signal_.WaitUntil(deadline);
    lock.lock();
    isResting_ = false;
}

std::int64_t COutputSession::GetNextLook() {
    const std::int64_t now = waiting::NowNanoseconds();
    if (drainers_ == 0 || !IsReadOut() || ring_->GetReadable() > 0 || isLost_) return now + kLongRest;
    const std::uint64_t left = GetQueued() - std::min(GetQueued(), GetHeard());
    const auto rest = static_cast<std::int64_t>(left) * kSecond / deviceFormats_.back().samplesPerSec;
    return now + std::clamp(rest, kShortestRest, kLongestLook);
}

void COutputSession::ReadSome(TLock& lock) {
    IInputStream* const stream = streams_.front();
    const std::uint32_t generation = generation_;
    const std::size_t frameSize = ring_->GetFrameSize();
    const std::size_t wanted = std::min(ring_->GetRoom() * frameSize, block_.size());
    lock.unlock();
    wstring error;
    std::uint64_t got = 0;
    try {
        got = std::min<std::uint64_t>(stream->Read(block_.data() + partBytes_, wanted - partBytes_),
                                      wanted - partBytes_);
        if (got == 0 && GetReadError(*stream) != 0) error = VRL_L("The file cannot be read");
    } catch (const CException& exception) {
        error = exception.ToString().GetBuffer();
    } catch (const std::exception& exception) {
        for (const char* text = exception.what(); *text; ++text)
            error += static_cast<wchar>(static_cast<unsigned char>(*text));
    } catch (...) {
        error = VRL_L("Unknown exception");
    }
    lock.lock();
    if (!error.empty()) streamError_ = error;
    if (generation_ != generation || isEnded_) return;
    if (got == 0) {
        dropCount_ = 1;
        if (streams_.size() == 1) NoteEndOfFrames();
        return;
    }
    const std::size_t bytes = partBytes_ + static_cast<std::size_t>(got);
    const std::size_t frames = bytes / frameSize;
    Put(block_.data(), frames, CFrameConversion(deviceFormats_.back(), deviceFormats_.back()));
    partBytes_ = bytes - frames * frameSize;
    std::copy_n(block_.data() + frames * frameSize, partBytes_, block_.data());
}

void COutputSession::DropStreams(TLock& lock) {
    partBytes_ = 0;
    while (dropCount_ > 0) {
        IInputStream* const stream = streams_.front();
        lock.unlock();
        try {
            stream->Release();
        } catch (...) {
            // Already reported when it was built, and nobody is there to take it.
        }
        lock.lock();
        streams_.pop_front();
        --dropCount_;
    }
    if (streams_.empty()) common_->idle.SetState(true);
    changed_.notify_all();
}

} // namespace vorlund
