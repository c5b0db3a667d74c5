#include "vorlund/devices/audio/InputClient.h"

#include <cstring>

namespace vorlund {

void CInputClient::Process(void* buffer, std::uint32_t frames) noexcept {
    if (!isPaused_.load(std::memory_order_relaxed)) {
        const auto* const from = static_cast<const std::byte*>(buffer);
        std::size_t taken = 0;
        // In two pieces where the ring begins anew.
        while (taken < frames) {
            const std::span<std::byte> piece = ring_->BeginWrite(frames - taken);
            if (piece.empty()) break;
            std::memcpy(piece.data(), from + taken * ring_->GetFrameSize(), piece.size());
            ring_->EndWrite(piece.size() / ring_->GetFrameSize());
            taken += piece.size() / ring_->GetFrameSize();
        }
        const bool isDropping = taken < frames;
        if (isDropping && !isDropping_) xruns_.fetch_add(1, std::memory_order_relaxed);
        isDropping_ = isDropping;
    }
    told_.fetch_add(1);
    signal_.Notify();
}

void CInputClient::NoteXruns(std::uint32_t count) noexcept {
    xruns_.fetch_add(count, std::memory_order_relaxed);
}

void CInputClient::NoteLost() noexcept {
    isLost_ = true;
    told_.fetch_add(1);
    signal_.Notify();
}

void CInputClient::NoteReturned() noexcept {
    isReturned_ = true;
    told_.fetch_add(1);
    signal_.Notify();
}

void CInputClient::SetRing(const TDataFormat_AudioPcm& format, std::size_t frames) {
    ring_ = std::make_unique<CFrameRing>(format.GetBlockSize(), frames);
    deviceFormat_ = format;
}

} // namespace vorlund
