#include "vorlund/devices/audio/OutputSession.h"

#include "vorlund/devices/audio/Finally.h"

#include <vorlund/CodecClassStore.h>
#include <vorlund/Exception.h>
#include <vorlund/ObjectServices.h>

#include <algorithm>
#include <system_error>

namespace vorlund {
namespace {

constexpr const wchar* kFile = VRL_L("src/vorlund/devices/audio/AudioOutput");
constexpr const wchar* kOpen = VRL_L("vorlund::CAudioOutput::OpenOutput");
constexpr const wchar* kWrite = VRL_L("vorlund::CAudioOutput::Write");
constexpr const wchar* kPlay = VRL_L("vorlund::CAudioOutput::Play");
constexpr const wchar* kNoResampler = VRL_L("No resampler: the device plays at another rate");
constexpr const wchar* kLost = VRL_L("Device is lost");

constexpr TAudioFailures kOpenFailures{
    {kOpen, kFile, 1, VRL_L("Unsupported audio format")},
    {kOpen, kFile, 2, VRL_L("Latency must be 1 millisecond to 10 seconds")},
    {kOpen, kFile, 3, VRL_L("Device has an impossible format")},
    {kOpen, kFile, 4, kNoResampler},
    {kOpen, kFile, 5, VRL_L("Cannot start a thread")}};
constexpr TFailure kWriteNull{kWrite, kFile, 6, VRL_L("buffer is NULL")};
constexpr TFailure kWriteSize{kWrite, kFile, 7, VRL_L("Size is no whole number of frames")};
constexpr TFailure kWritePlaying{kWrite, kFile, 8, VRL_L("A stream is playing")};
constexpr TFailure kWriteLost{kWrite, kFile, 9, kLost};
constexpr TFailure kPlayNull{kPlay, kFile, 10, VRL_L("stream is NULL")};
constexpr TFailure kPlayFormat{kPlay, kFile, 11, VRL_L("Unsupported format in decoded stream")};
constexpr TFailure kPlayResampler{kPlay, kFile, 12, kNoResampler};
constexpr TFailure kDrainLost{VRL_L("vorlund::CAudioOutput::Drain"), kFile, 13, kLost};

} // namespace

COutputSession::COutputSession(const TOutputOpening& opening, const std::shared_ptr<TOutputCommon>& common)
    : COutputClient(common->volume), port_(opening.port), reopens_(opening.reopens), format_(opening.format),
      latency_(opening.latency), common_(common) {}

std::shared_ptr<COutputSession> COutputSession::Open(const TOutputOpening& opening,
                                                     const std::shared_ptr<TOutputCommon>& common) {
    CheckAudioWish(opening.format, opening.latency, kOpenFailures);
    const auto session = std::make_shared<COutputSession>(opening, common);
    session->OpenPort();
    return session;
}

void COutputSession::OpenPort() {
    const TAudioPortFormat granted = port_->Open(MakePortWish(format_, latency_), *this);
    try {
        const TDataFormat_AudioPcm device = GetPortFormat(granted, kOpenFailures);
        if (device.samplesPerSec != format_.samplesPerSec) Raise<CFailedException>(kOpenFailures.resampler);
        const std::size_t frames = GetRingFrames(granted);
        SetRing(device, frames);
        SetWakeRoom(std::max<std::size_t>(granted.periodFrames, frames / 4));
        block_.resize(frames * device.GetBlockSize());
        conversion_ = CFrameConversion(format_, device);
        deviceFormats_.push_back(device);
        deviceLatency_ = static_cast<double>(frames) / device.samplesPerSec;
        isPortOpen_ = true;
        {
            const TLock lock(mutex_);
            feeder_ = std::thread([self = shared_from_this()] { self->RunFeeder(); });
            feederId_ = feeder_.get_id();
        }
        port_->Start();
    } catch (const std::system_error&) {
        port_->Close();
        Raise<CFailedException>(kOpenFailures.thread);
    } catch (...) {
        if (feeder_.joinable())
            End();
        else
            port_->Close();
        throw;
    }
}

std::thread COutputSession::End() {
    std::thread feeder;
    {
        const TLock lock(mutex_);
        isEnded_ = true;
        isPaused_ = true;
        feeder.swap(feeder_);
        changed_.notify_all();
    }
    signal_.Notify();
    if (!IsOnFeeder()) feeder.join();
    {
        const TLock lock(mutex_);
        isPortOpen_ = false;
    }
    try {
        port_->Close();
    } catch (...) {
        if (feeder.joinable()) feeder.detach();
        throw;
    }
    return feeder;
}

std::size_t COutputSession::Put(const void* frames, std::size_t count, const CFrameConversion& conversion) {
    const auto* from = static_cast<const std::byte*>(frames);
    const std::size_t fromSize = conversion.GetInputSize();
    std::size_t done = 0;
    while (done < count) {
        const std::span<std::byte> piece = ring_->BeginWrite(count - done);
        if (piece.empty()) break;
        const std::size_t part = piece.size() / ring_->GetFrameSize();
        conversion.Convert(piece.data(), from + done * fromSize, part);
        ring_->EndWrite(part);
        done += part;
    }
    if (done > 0) TellListener();
    return done;
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
    const auto* const from = static_cast<const std::byte*>(buffer);
    std::uint64_t done = 0;
    isWriting_ = true;
    const CFinally guard([&] {
        isWriting_ = false;
        changed_.notify_all();
        signal_.Notify();
    });
    while (done < size && !isOver()) {
        const auto left = static_cast<std::size_t>(
            std::min<std::uint64_t>((size - done) / frameSize, ring_->GetCapacity()));
        const std::size_t count = Put(from + done, left, conversion_);
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
    return std::uint64_t{ring_->GetRoom()} * format_.GetBlockSize();
}

void COutputSession::Play(IInputStream* stream) {
    if (!stream) Raise<CNullPtrException>(kPlayNull);
    const auto decoded = CRefPtr<IInputStream>::Adopt(
        services::CodecClassStore().DecodeStream(stream, TDataFormat_AudioPcm::FormatId));
    if (!IsPlayable(decoded->GetFormat())) Raise<CDataFormatException>(kPlayFormat);
    auto chain = BringToFormat(decoded, GetDeviceFormat(), kPlayResampler);
    const TLock lock(mutex_);
    if (isEnded_) return;
    streams_.push_back(chain.Get());
    static_cast<void>(chain.Detach());
    common_->idle.SetState(false);
    signal_.Notify();
}

std::uint32_t COutputSession::GetPlayingStreams() {
    const TLock lock(mutex_);
    return static_cast<std::uint32_t>(streams_.size());
}

wstring COutputSession::GetStreamError() {
    const TLock lock(mutex_);
    return streamError_;
}

void COutputSession::SetPaused(bool isPaused) {
    const TLock lock(mutex_);
    if (isEnded_) return;
    isPaused_ = isPaused;
    changed_.notify_all();
    TellListener();
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
    NoteEndOfFrames();
    changed_.notify_all();
    signal_.Notify();
    if (IsOnFeeder()) return;
    while (dropCount_ > 0) changed_.wait(lock);
}

std::uint64_t COutputSession::GetHeard() {
    // A call of the port's thread between the two would let the frame that is heard jump ahead.
    COutputClock::TCounts counts = clock_.Get();
    std::uint32_t delay = 0;
    if (isPortOpen_ && !isLost_) {
        for (int tries = 0; tries < 8; ++tries) {
            delay = port_->GetDelay();
            const COutputClock::TCounts again = clock_.Get();
            const bool isSame = again.taken == counts.taken && again.silence == counts.silence;
            counts = again;
            if (isSame) break;
        }
    }
    lastHeard_ = std::max(lastHeard_, counts.GetHeard(delay));
    return lastHeard_;
}

std::uint64_t COutputSession::ToOpened(std::uint64_t frames) const {
    return GetResampledFrames(frames, deviceFormats_.back().samplesPerSec, format_.samplesPerSec);
}

std::uint64_t COutputSession::GetPosition() {
    const TLock lock(mutex_);
    return ToOpened(GetHeard());
}

std::uint64_t COutputSession::GetDelay() {
    const TLock lock(mutex_);
    const std::uint64_t heard = GetHeard();
    return ToOpened(GetQueued() - std::min(GetQueued(), heard));
}

std::uint64_t COutputSession::GetXruns() const noexcept {
    return clock_.GetGaps() + systemXruns_.load(std::memory_order_relaxed);
}

TAudioState COutputSession::GetState() {
    const TLock lock(mutex_);
    if (isEnded_) return AUDIO_STATE_CLOSED;
    if (isLost_) return AUDIO_STATE_LOST;
    return isPaused_ ? AUDIO_STATE_PAUSED : AUDIO_STATE_RUNNING;
}

const TDataFormat_AudioPcm& COutputSession::GetDeviceFormat() {
    const TLock lock(mutex_);
    return deviceFormats_.back();
}

double COutputSession::GetLatency() {
    const TLock lock(mutex_);
    return deviceLatency_;
}

} // namespace vorlund
