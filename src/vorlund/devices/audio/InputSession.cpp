#include "vorlund/devices/audio/InputSession.h"

#include "vorlund/devices/audio/Finally.h"
#include "vorlund/devices/audio/ReadStream.h"
#include "vorlund/system/Deadline.h"

#include <vorlund/Exception.h>

#include <algorithm>
#include <cstring>
#include <system_error>

namespace vorlund {
namespace {

constexpr const wchar* kFile = VRL_L("src/vorlund/devices/audio/AudioInput");
constexpr const wchar* kOpen = VRL_L("vorlund::CAudioInput::OpenInput");
constexpr TAudioFailures kOpening{
    {kOpen, kFile, 1, VRL_L("Unsupported audio format")},
    {kOpen, kFile, 2, VRL_L("Latency must be 1 millisecond to 10 seconds")},
    {kOpen, kFile, 3, VRL_L("Device has an impossible format")},
    {kOpen, kFile, 4, VRL_L("No resampler: the device records at another rate")},
    {kOpen, kFile, 5, VRL_L("Cannot start a thread")}};

constexpr std::int64_t kSecond = 1000000000;
constexpr std::int64_t kLongRest = 3600 * kSecond;
/// What is added to the second that a reader may be late: a resampler delivers blocks.
constexpr std::size_t kBlocks = 16384;

std::size_t GetOutFrames(const TDataFormat_AudioPcm& format, double latency) {
    return format.samplesPerSec + static_cast<std::size_t>(2 * latency * format.samplesPerSec) + kBlocks;
}

} // namespace

CInputSession::CInputSession(const TInputOpening& opening)
    : port_(opening.port), reopens_(opening.reopens), format_(opening.format), latency_(opening.latency),
      out_(1, GetOutFrames(opening.format, opening.latency) * opening.format.GetBlockSize()) {}

std::shared_ptr<CInputSession> CInputSession::Open(const TInputOpening& opening) {
    CheckAudioWish(opening.format, opening.latency, kOpening);
    auto session = std::make_shared<CInputSession>(opening);
    session->OpenPort();
    return session;
}

void CInputSession::OpenPort() {
    const TAudioPortFormat granted = port_->Open(MakePortWish(format_, latency_), *this);
    const auto undo = [this] {
        if (carrier_.joinable())
            End();
        else
            port_->Close();
    };
    try {
        SetDevice(granted);
        isPortOpen_ = true;
        carrier_ = std::thread([this, self = shared_from_this()] { RunCarrier(); });
        port_->Start();
    } catch (const std::system_error&) {
        undo();
        Raise<CFailedException>(kOpening.thread);
    } catch (...) {
        undo();
        throw;
    }
}

void CInputSession::SetDevice(const TAudioPortFormat& granted) {
    const TDataFormat_AudioPcm device = GetPortFormat(granted, kOpening);
    std::unique_ptr<CFormatChain> chain;
    if (device.samplesPerSec != format_.samplesPerSec)
        chain = std::make_unique<CFormatChain>(device, format_,
                                               CreateResampler(device, format_, kOpening.resampler));
    // Half a second, because the carrier is a thread like others.
    const std::size_t frames = std::max<std::size_t>(GetRingFrames(granted), device.samplesPerSec / 2);
    SetRing(device, frames);
    conversion_ = CFrameConversion(device, format_);
    chain_ = std::move(chain);
    block_.resize(frames * std::max(device.GetBlockSize(), format_.GetBlockSize()));
    deviceFormats_.push_back(device);
    deviceLatency_ = static_cast<double>(GetRingFrames(granted)) / device.samplesPerSec;
}

void CInputSession::Tell() {
    told_.fetch_add(1);
    changed_.notify_all();
    signal_.Notify();
}

void CInputSession::End() {
    {
        const TLock lock(mutex_);
        isStopped_ = true;
        isEnded_ = true;
        Tell();
    }
    carrier_.join();
    port_->Close();
}

void CInputSession::Stop() {
    TLock lock(mutex_);
    isStopped_ = true;
    Tell();
    while (!isOver_) changed_.wait(lock);
}

std::uint64_t CInputSession::Read(void* buffer, std::uint64_t size) {
    auto* const to = static_cast<std::byte*>(buffer);
    std::uint64_t done = 0;
    TLock lock(mutex_);
    while (done < size) {
        const auto left = static_cast<std::size_t>(std::min<std::uint64_t>(size - done, out_.GetCapacity()));
        const std::span<const std::byte> piece = out_.BeginRead(left);
        if (piece.empty()) {
            if (isOver_) break;
            changed_.wait(lock);
            continue;
        }
        std::memcpy(to + done, piece.data(), piece.size());
        out_.EndRead(piece.size());
        done += piece.size();
    }
    return done;
}

std::uint64_t CInputSession::GetReadable() {
    const TLock lock(mutex_);
    return out_.GetReadable();
}

bool CInputSession::IsAtEnd() {
    const TLock lock(mutex_);
    return isOver_ && out_.GetReadable() == 0;
}

bool CInputSession::HasLost() {
    const TLock lock(mutex_);
    return wasLost_;
}

void CInputSession::SetPaused(bool isPaused) {
    isPaused_ = isPaused;
}

std::uint64_t CInputSession::GetPosition() {
    const TLock lock(mutex_);
    return out_.GetWritten() / format_.GetBlockSize();
}

TAudioState CInputSession::GetState() {
    const TLock lock(mutex_);
    if (isEnded_) return AUDIO_STATE_CLOSED;
    // Who stops it closes the port without having lost the device.
    if (wasLost_ || isLost_ || (!isPortOpen_ && !isStopped_)) return AUDIO_STATE_LOST;
    return isPaused_ || isStopped_ ? AUDIO_STATE_PAUSED : AUDIO_STATE_RUNNING;
}

const TDataFormat_AudioPcm& CInputSession::GetDeviceFormat() {
    const TLock lock(mutex_);
    return deviceFormats_.back();
}

double CInputSession::GetLatency() {
    const TLock lock(mutex_);
    return deviceLatency_;
}

void CInputSession::WaitUntilReady(std::uint32_t frames) {
    TLock lock(mutex_);
    while (!isEnded_ && ring_->GetRoom() < frames && (!isResting_ || seen_ != told_)) {
        signal_.Notify();
        changed_.wait(lock);
    }
}

void CInputSession::RunCarrier() {
    TLock lock(mutex_);
    while (!isEnded_ || !isOver_) {
        const std::uint32_t told = told_;
        if (!CarryOnce(lock)) Rest(lock, told);
    }
    chain_.reset();
}

bool CInputSession::CarryOnce(TLock& lock) {
    if (isOver_) return false;
    if (isInSound_ || ring_->GetReadable() > 0) {
        if (chain_)
            CarryResampled(lock);
        else
            CarryConverted();
        changed_.notify_all();
        return true;
    }
    if (isStopped_) {
        if (isPortOpen_) {
            isPortOpen_ = false;
            lock.unlock();
            port_->Stop();
            lock.lock();
            return true;
        }
        isOver_ = true;
        changed_.notify_all();
        return true;
    }
    if (!isLost_) return false;
    if (!reopens_) {
        wasLost_ = true;
        isOver_ = true;
        changed_.notify_all();
        return true;
    }
    // At once when the device has delivered something since it was opened, else a second after the last time.
    const bool hasMoved = ring_->GetWritten() != writtenAtOpening_;
    if (!isReturned_ && !hasMoved && waiting::NowNanoseconds() < nextOpening_) return false;
    isReturned_ = false;
    Reopen(lock);
    nextOpening_ = waiting::NowNanoseconds() + kSecond;
    writtenAtOpening_ = ring_->GetWritten();
    return true;
}

void CInputSession::Rest(TLock& lock, std::uint32_t told) {
    seen_ = told;
    isResting_ = true;
    changed_.notify_all();
    const bool isWaiting = isLost_ && reopens_ && !isStopped_;
    const std::int64_t deadline = isWaiting ? nextOpening_ : waiting::NowNanoseconds() + kLongRest;
    lock.unlock();
    signal_.WaitUntil(deadline);
    lock.lock();
    isResting_ = false;
}

void CInputSession::PutOut(const std::byte* bytes, std::size_t size) {
    // Whole frames, so that a reader that is late finds the next one where it belongs.
    const std::size_t frameSize = format_.GetBlockSize();
    std::size_t left = std::min(size, out_.GetRoom() / frameSize * frameSize);
    const bool isDropping = left < size;
    if (isDropping && !isDropping_) ++dropped_;
    isDropping_ = isDropping;
    while (left > 0) {
        const std::span<std::byte> piece = out_.BeginWrite(left);
        std::memcpy(piece.data(), bytes, piece.size());
        out_.EndWrite(piece.size());
        bytes += piece.size();
        left -= piece.size();
    }
}

void CInputSession::CarryConverted() {
    const std::span<const std::byte> piece = ring_->BeginRead(ring_->GetReadable());
    const std::size_t frames = piece.size() / ring_->GetFrameSize();
    conversion_.Convert(block_.data(), piece.data(), frames);
    ring_->EndRead(frames);
    PutOut(block_.data(), frames * format_.GetBlockSize());
}

void CInputSession::CarryResampled(TLock& lock) {
    const bool isBegin = !isInSound_;
    isInSound_ = true;
    lock.unlock();
    std::uint64_t got = 0;
    try {
        if (isBegin)
            chain_->Connect(MakeReadStream(deviceFormats_.back(), [this](void* buffer, std::uint64_t size) {
                return ReadCaptured(buffer, size);
            }));
        got = chain_->GetResult()->Read(block_.data(),
                                        block_.size() / format_.GetBlockSize() * format_.GetBlockSize());
    } catch (...) {
        // Reported when it was built. What the resampler had is lost.
    }
    lock.lock();
    if (got == 0)
        isInSound_ = false;
    else
        PutOut(block_.data(), static_cast<std::size_t>(got));
}

std::uint64_t CInputSession::ReadCaptured(void* buffer, std::uint64_t size) {
    TLock lock(mutex_);
    for (;;) {
        const std::uint32_t told = told_;
        const std::span<const std::byte> piece = ring_->BeginRead(static_cast<std::size_t>(
            std::min<std::uint64_t>(size / ring_->GetFrameSize(), ring_->GetCapacity())));
        if (!piece.empty()) {
            std::memcpy(buffer, piece.data(), piece.size());
            ring_->EndRead(piece.size() / ring_->GetFrameSize());
            return piece.size();
        }
        if (isLost_ || (isStopped_ && !isPortOpen_)) return 0;
        if (isStopped_) {
            // Nothing more comes into the ring when the port has stopped.
            isPortOpen_ = false;
            lock.unlock();
            port_->Stop();
            lock.lock();
            continue;
        }
        Rest(lock, told);
    }
}

void CInputSession::Reopen(TLock& lock) {
    isPortOpen_ = false;
    lock.unlock();
    bool isOpen = false;
    try {
        port_->Close();
        isLost_ = false;
        const TAudioPortFormat granted = port_->Open(MakePortWish(format_, latency_), *this);
        lock.lock();
        SetDevice(granted);
        lock.unlock();
        port_->Start();
        isOpen = true;
    } catch (...) {
        // It is tried again in a second.
    }
    if (!lock.owns_lock()) lock.lock();
    isPortOpen_ = isOpen;
    if (!isOpen) isLost_ = true;
    changed_.notify_all();
}

} // namespace vorlund
