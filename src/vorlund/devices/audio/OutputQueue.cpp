// What puts frames behind others, waits for them and drops them.
#include "vorlund/devices/audio/Finally.h"
#include "vorlund/devices/audio/OutputSession.h"

#include <vorlund/CodecClassStore.h>
#include <vorlund/Exception.h>
#include <vorlund/ObjectServices.h>

#include <algorithm>
#include <cstring>

namespace vorlund {
namespace {

constexpr const wchar* kFile = VRL_L("src/vorlund/devices/audio/AudioOutput");
constexpr const wchar* kWrite = VRL_L("vorlund::CAudioOutput::Write");
constexpr const wchar* kPlay = VRL_L("vorlund::CAudioOutput::Play");
constexpr const wchar* kLost = VRL_L("Device is lost");
constexpr const wchar* kNoResampler = VRL_L("No resampler: the device plays at another rate");

constexpr TFailure kWriteNull{kWrite, kFile, 6, VRL_L("buffer is NULL")};
constexpr TFailure kWriteSize{kWrite, kFile, 7, VRL_L("Size is no whole number of frames")};
constexpr TFailure kWritePlaying{kWrite, kFile, 8, VRL_L("A stream is playing")};
constexpr TFailure kWriteLost{kWrite, kFile, 9, kLost};
constexpr TFailure kPlayNull{kPlay, kFile, 10, VRL_L("stream is NULL")};
constexpr TFailure kPlayFormat{kPlay, kFile, 11, VRL_L("Unsupported format in decoded stream")};
constexpr TFailure kPlayResampler{kPlay, kFile, 12, kNoResampler};
constexpr TFailure kDrainLost{VRL_L("vorlund::CAudioOutput::Drain"), kFile, 13, kLost};

} // namespace

void COutputSession::WaitForChange(TLock& lock) {
    ++waiters_;
    // A feeder that rests with this waiter in mind tells him when there is reason to; woken for each wait, it
    // would wake him in turn, without end.
    if (!isResting_ || waiters_ > restWaiters_ || drainers_ > restDrainers_) signal_.Notify();
    changed_.wait(lock);
    --waiters_;
}

bool COutputSession::IsReadOut() const {
    if (queue_ && (queue_->IsInSegment() || queue_->Bytes().GetReadable() > 0)) return false;
    return !remains_ && streams_.empty() && !isWriting_;
}

std::size_t COutputSession::GetWriteRoom() const {
    // What another device has left goes first.
    if (remains_ || isChanging_) return 0;
    return queue_ ? queue_->Bytes().GetRoom() / format_.GetBlockSize() : ring_->GetRoom();
}

std::size_t COutputSession::Put(const std::byte* frames, std::size_t count,
                                const CFrameConversion& conversion) {
    std::size_t done = 0;
    while (done < count) {
        const std::span<std::byte> piece = ring_->BeginWrite(count - done);
        if (piece.empty()) break;
        const std::size_t part = piece.size() / ring_->GetFrameSize();
        conversion.Convert(piece.data(), frames + done * conversion.GetInputSize(), part);
        ring_->EndWrite(part);
        done += part;
    }
    if (done > 0) TellListener();
    return done;
}

std::size_t COutputSession::PutWritten(const std::byte* frames, std::size_t count) {
    count = std::min(count, GetWriteRoom());
    if (!queue_ || count == 0) return Put(frames, count, conversion_);
    for (std::size_t bytes = count * format_.GetBlockSize(); bytes > 0;) {
        const std::span<std::byte> piece = queue_->Bytes().BeginWrite(bytes);
        std::memcpy(piece.data(), frames, piece.size());
        queue_->Bytes().EndWrite(piece.size());
        frames += piece.size();
        bytes -= piece.size();
    }
    segmentIn_ += count;
    Tell();
    return count;
}

std::uint64_t COutputSession::Write(const void* buffer, std::uint64_t size) {
    if (!buffer && size > 0) Raise<CNullPtrException>(kWriteNull);
    const std::uint64_t frameSize = format_.GetBlockSize();
    if (size % frameSize != 0) Raise<CInvalidParameterException>(kWriteSize);
    TLock lock(mutex_);
    const std::uint32_t generation = generation_;
    const auto isOver = [&] { return isEnded_ || generation_ != generation; };
    while (isWriting_ && !isOver()) changed_.wait(lock);
    if (isOver()) return 0;
    if (!streams_.empty()) Raise<CInvalidStateException>(kWritePlaying);
    isWriting_ = true;
    const CFinally guard([&] {
        isWriting_ = false;
        Tell();
    });
    std::uint64_t done = 0;
    while (done < size && !isOver()) {
        constexpr std::size_t kMost = 0x7FFFFFFF;
        const auto left = static_cast<std::size_t>(std::min<std::uint64_t>((size - done) / frameSize, kMost));
        const std::size_t count = PutWritten(static_cast<const std::byte*>(buffer) + done, left);
        done += count * frameSize;
        if (count > 0) continue;
        if (IsGone()) Raise<CFailedException>(kWriteLost);
        WaitForChange(lock);
    }
    return done;
}

std::uint64_t COutputSession::GetWritable() {
    const TLock lock(mutex_);
    if (isWriting_ || !streams_.empty()) return 0;
    return std::uint64_t{GetWriteRoom()} * format_.GetBlockSize();
}

void COutputSession::Play(IInputStream* stream) {
    if (!stream) Raise<CNullPtrException>(kPlayNull);
    auto decoded = CRefPtr<IInputStream>::Adopt(
        services::CodecClassStore().DecodeStream(stream, TDataFormat_AudioPcm::FormatId));
    if (!IsPlayable(decoded->GetFormat())) Raise<CDataFormatException>(kPlayFormat);
    const auto format = static_cast<const TDataFormat_AudioPcm&>(decoded->GetFormat());
    const TDataFormat_AudioPcm* device = &GetDeviceFormat();
    auto chain = BringToFormat(decoded, format, *device, kPlayResampler);
    // The feeder is the only one who counts it from now on.
    decoded.Reset();
    TLock lock(mutex_);
    // The device can have become another one meanwhile.
    while (device != &deviceFormats_.back()) {
        const TDataFormat_AudioPcm* const next = &deviceFormats_.back();
        lock.unlock();
        chain = BringToFormat(chain, *device, *next, kPlayResampler);
        device = next;
        lock.lock();
    }
    if (isEnded_) return;
    streams_.push_back(chain.Get());
    static_cast<void>(chain.Detach());
    common_->idle.SetState(false);
    Tell();
}

bool COutputSession::Drain() {
    TLock lock(mutex_);
    const std::uint32_t generation = generation_;
    if (IsOnFeeder()) return false;
    ++drainers_;
    const CFinally guard([&] { --drainers_; });
    while (!isEnded_ && generation_ == generation && !isPaused_) {
        if (IsReadOut()) {
            NoteEndOfFrames();
            if (GetHeard() >= GetQueued()) return true;
        }
        if (IsGone()) Raise<CFailedException>(kDrainLost);
        WaitForChange(lock);
    }
    return false;
}

void COutputSession::Flush() {
    TLock lock(mutex_);
    ++generation_;
    dropCount_ = streams_.size();
    dropped_ += ClearRing();
    if (queue_) queue_->Bytes().Clear();
    segmentIn_ = segmentOut_ = 0;
    NoteEndOfFrames();
    Tell();
    if (IsOnFeeder()) return;
    while (dropCount_ > 0) changed_.wait(lock);
}

} // namespace vorlund
