// How an output goes on when its device was lost.
#include "vorlund/devices/audio/Finally.h"
#include "vorlund/devices/audio/OutputFailures.h"
#include "vorlund/devices/audio/OutputSession.h"
#include "vorlund/devices/audio/StreamFromHere.h"

#include <vorlund/Exception.h>

#include <algorithm>

namespace vorlund {

void COutputSession::Reopen(TLock& lock) {
    isPortOpen_ = false;
    const TDataFormat_AudioPcm last = deviceFormats_.back();
    lock.unlock();
    TAudioPortFormat granted{};
    TDataFormat_AudioPcm device;
    bool isOpen = false;
    try {
        port_->Close();
        isLost_ = false;
        granted = port_->Open(MakePortWish(format_, latency_), *this);
        device = GetPortFormat(granted, kOutputOpening);
        isOpen = true;
    } catch (...) {
        // It is tried again in a second.
    }
    lock.lock();
    if (isOpen && !isEnded_) {
        try {
            if (!IsSameFormat(device, last)) ChangeFormat(lock, device, granted);
            isPortOpen_ = true;
            lock.unlock();
            port_->Start();
            lock.lock();
            changed_.notify_all();
            return;
        } catch (...) {
            if (!lock.owns_lock()) lock.lock();
            isPortOpen_ = false;
        }
    }
    isLost_ = true;
    changed_.notify_all();
}

std::vector<std::byte> COutputSession::TakeRemains(TLock& lock) {
    std::vector<std::byte> bytes;
    while (ring_->GetReadable() > 0) {
        const std::span<const std::byte> piece = ring_->BeginRead(ring_->GetReadable());
        bytes.insert(bytes.end(), piece.begin(), piece.end());
        ring_->EndRead(piece.size() / ring_->GetFrameSize());
    }
    const auto append = [&](std::uint64_t got) {
        bytes.insert(bytes.end(), block_.data(), block_.data() + std::min<std::uint64_t>(got, block_.size()));
        return got > 0;
    };
    // Nobody else touches these two while they are read.
    while (remains_ && append(remains_->Read(block_.data(), block_.size()))) continue;
    // What the resampler has in it; the segment is over, and nothing is written now.
    while (queue_ && generation_ == readGeneration_ &&
           (queue_->IsInSegment() || queue_->Bytes().GetReadable() > 0)) {
        const bool isBegin = !queue_->IsInSegment();
        queue_->BeginSegment();
        lock.unlock();
        if (isBegin) queue_->Connect();
        const std::uint64_t got = queue_->GetResult().Read(block_.data(), block_.size());
        lock.lock();
        if (!append(got)) queue_->EndSegment();
    }
    if (generation_ != readGeneration_) bytes.clear();
    return bytes;
}

void COutputSession::ChangeFormat(TLock& lock, const TDataFormat_AudioPcm& device,
                                  const TAudioPortFormat& granted) {
    isChanging_ = true;
    const CFinally change([&] { isChanging_ = false; });
    const TDataFormat_AudioPcm last = deviceFormats_.back();
    // Raises where there is no resampler, before anything has changed.
    std::unique_ptr<CWriteQueue> queue = MakeQueue(device, GetRingFrames(granted));
    std::vector<std::byte> bytes = TakeRemains(lock);
    remains_.Reset();
    if (!bytes.empty())
        remains_ = BringToFormat(MakeStreamFromHere({}, last, std::move(bytes)), last, device,
                                 kOutputOpening.resampler);
    // A stream that has delivered a part of a frame goes on behind it.
    std::vector<std::byte> part(block_.data(), block_.data() + partBytes_);
    for (IInputStream*& stream : streams_) {
        const auto source = MakeStreamFromHere(CRefPtr<IInputStream>::Share(stream), last, std::move(part));
        auto next = BringToFormat(source, last, device, kOutputOpening.resampler);
        stream->Release();
        stream = next.Detach();
        part.clear();
    }
    partBytes_ = 0;
    heardBefore_ += ToOpened(GetHeard());
    gapsBefore_ += clock_->GetGaps();
    queue_ = std::move(queue);
    segmentIn_ = segmentOut_ = 0;
    SetDevice(device, granted);
}

} // namespace vorlund
