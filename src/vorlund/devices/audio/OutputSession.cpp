// Opening, ending, and what can be asked at every moment.
#include "vorlund/devices/audio/OutputSession.h"

#include "vorlund/devices/audio/OutputFailures.h"

#include <vorlund/Exception.h>
#include <vorlund/Resampler.h>

#include <algorithm>
#include <system_error>

namespace vorlund {
namespace {

/// A resampler reads blocks of thousands of frames.
constexpr std::size_t kSmallestQueue = 8192;

} // namespace

COutputSession::COutputSession(const TOutputOpening& opening, const std::shared_ptr<TOutputCommon>& common)
    : COutputClient(common->volume), port_(opening.port), reopens_(opening.reopens), format_(opening.format),
      latency_(opening.latency), common_(common) {}

std::shared_ptr<COutputSession> COutputSession::Open(const TOutputOpening& opening,
                                                     const std::shared_ptr<TOutputCommon>& common) {
    CheckAudioWish(opening.format, opening.latency, kOutputOpening);
    auto session = std::make_shared<COutputSession>(opening, common);
    session->OpenPort();
    return session;
}

void COutputSession::OpenPort() {
    const TAudioPortFormat granted = port_->Open(MakePortWish(format_, latency_), *this);
    const auto undo = [this] {
        if (feeder_.joinable())
            End();
        else
            port_->Close();
    };
    try {
        const TDataFormat_AudioPcm device = GetPortFormat(granted, kOutputOpening);
        queue_ = MakeQueue(device, GetRingFrames(granted));
        SetDevice(device, granted);
        isPortOpen_ = true;
        {
            const TLock lock(mutex_);
            feeder_ = std::thread([this, self = shared_from_this()] { RunFeeder(); });
            feederId_ = feeder_.get_id();
        }
        port_->Start();
    } catch (const std::system_error&) {
        undo();
        Raise<CFailedException>(kOutputOpening.thread);
    } catch (...) {
        undo();
        throw;
    }
}

std::unique_ptr<CWriteQueue> COutputSession::MakeQueue(const TDataFormat_AudioPcm& device,
                                                       std::size_t ringFrames) {
    if (device.samplesPerSec == format_.samplesPerSec) return nullptr;
    const auto frames =
        static_cast<std::size_t>(GetResampledFrames(ringFrames, device.samplesPerSec, format_.samplesPerSec));
    return std::make_unique<CWriteQueue>(
        format_, device, CreateResampler(format_, device, kOutputOpening.resampler),
        std::max(frames, kSmallestQueue),
        [this](void* buffer, std::uint64_t size) { return ReadWritten(buffer, size); });
}

void COutputSession::SetDevice(const TDataFormat_AudioPcm& device, const TAudioPortFormat& granted) {
    const std::size_t frames = GetRingFrames(granted);
    SetRing(device, frames, std::max<std::size_t>(granted.periodFrames, frames / 4));
    block_.resize(frames * device.GetBlockSize());
    if (!queue_) conversion_ = CFrameConversion(format_, device);
    deviceFormats_.push_back(device);
    deviceLatency_ = static_cast<double>(frames) / device.samplesPerSec;
    dropped_ = 0;
    lastHeard_ = 0;
}

std::thread COutputSession::End() {
    std::thread feeder;
    {
        const TLock lock(mutex_);
        isEnded_ = true;
        isPaused_ = true;
        feeder.swap(feeder_);
        Tell();
    }
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

void COutputSession::Tell() {
    told_.fetch_add(1);
    changed_.notify_all();
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
    Tell();
    TellListener();
}

std::uint64_t COutputSession::GetHeard() {
    COutputClock::TCounts counts = clock_->Get();
    std::uint32_t delay = 0;
    if (isPortOpen_ && !isLost_) {
        // A call of the port's thread between the two would let the frame that is heard jump ahead.
        for (int tries = 0; tries < 8; ++tries) {
            delay = port_->GetDelay();
            const COutputClock::TCounts again = clock_->Get();
            const bool isSame = again.passed == counts.passed;
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
    return heardBefore_ + ToOpened(GetHeard());
}

std::uint64_t COutputSession::GetDelay() {
    const TLock lock(mutex_);
    const std::uint64_t heard = GetHeard();
    const std::uint64_t written = segmentIn_ - std::min(segmentIn_, ToOpened(segmentOut_));
    return written + ToOpened(GetQueued() - std::min(GetQueued(), heard));
}

std::uint64_t COutputSession::GetXruns() {
    const TLock lock(mutex_);
    return gapsBefore_ + clock_->GetGaps() + systemXruns_.load(std::memory_order_relaxed);
}

TAudioState COutputSession::GetState() {
    const TLock lock(mutex_);
    if (isEnded_) return AUDIO_STATE_CLOSED;
    if (isLost_ || !isPortOpen_) return AUDIO_STATE_LOST;
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
