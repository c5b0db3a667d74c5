#include "vorlund/devices/audio/OutputClient.h"

#include "vorlund/system/Spin.h"

#include <cstring>
#include <thread>

namespace vorlund {

void COutputClient::Process(void* buffer, std::uint32_t frames) noexcept {
    auto* const to = static_cast<std::byte*>(buffer);
    std::size_t given = 0;
    bool isGap = false;
    // Who clears the ring is inside for a moment, and what it would have given is dropped anyway.
    if (!isInside_.exchange(true, std::memory_order_acquire)) {
        isGap = !isPaused_.load(std::memory_order_relaxed);
        if (isGap) given = Give(to, frames);
        isInside_.store(false, std::memory_order_release);
    }
    const std::size_t frameSize = ring_->GetFrameSize();
    if (given < frames)
        std::memset(to + given * frameSize, deviceFormat_.GetZeroByte(), (frames - given) * frameSize);
    clock_->Note(given, frames - given, isGap);
    told_.fetch_add(1);
    if (HasWorthyRoom() && wantsRoom_.exchange(false)) signal_.Notify();
}

std::size_t COutputClient::Give(std::byte* to, std::size_t frames) noexcept {
    const std::size_t frameSize = ring_->GetFrameSize();
    std::size_t given = 0;
    // In two pieces where the ring begins anew.
    while (given < frames) {
        const std::span<const std::byte> piece = ring_->BeginRead(frames - given);
        if (piece.empty()) break;
        const std::size_t count = piece.size() / frameSize;
        Copy(to + given * frameSize, piece.data(), count);
        ring_->EndRead(count);
        given += count;
    }
    return given;
}

void COutputClient::Copy(std::byte* to, const std::byte* from, std::size_t frames) const noexcept {
    const float volume = volume_.load(std::memory_order_relaxed);
    if (volume == 1.0F) {
        std::memcpy(to, from, frames * ring_->GetFrameSize());
        return;
    }
    TMixMatrix mix;
    mix.inputs = mix.outputs = deviceFormat_.channels;
    for (std::size_t channel = 0; channel < mix.inputs; ++channel)
        mix.weights[channel][channel] = static_cast<double>(volume);
    ConvertAudio(to, from, frames,
                 {.from = deviceFormat_.sampleFormat, .to = deviceFormat_.sampleFormat, .mix = &mix});
}

void COutputClient::NoteXruns(std::uint32_t count) noexcept {
    systemXruns_.fetch_add(count, std::memory_order_relaxed);
}

void COutputClient::NoteLost() noexcept {
    isLost_.store(true);
    told_.fetch_add(1);
    signal_.Notify();
}

void COutputClient::NoteReturned() noexcept {
    isReturned_.store(true);
    told_.fetch_add(1);
    signal_.Notify();
}

std::uint32_t COutputClient::GetReadyFrames() noexcept {
    if (isPaused_.load(std::memory_order_relaxed)) return 0;
    return static_cast<std::uint32_t>(ring_->GetReadable());
}

void COutputClient::SetRing(const TDataFormat_AudioPcm& format, std::size_t frames, std::size_t wakeRoom) {
    ring_ = std::make_unique<CFrameRing>(format.GetBlockSize(), frames);
    clock_ = std::make_unique<COutputClock>();
    deviceFormat_ = format;
    wakeRoom_ = wakeRoom;
}

std::size_t COutputClient::ClearRing() {
    while (isInside_.exchange(true, std::memory_order_acquire)) {
        Spin(kMaxSpins);
        std::this_thread::yield();
    }
    const std::size_t dropped = ring_->GetReadable();
    ring_->Clear();
    isInside_.store(false, std::memory_order_release);
    return dropped;
}

} // namespace vorlund
