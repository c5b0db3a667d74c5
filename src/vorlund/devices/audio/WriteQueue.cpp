#include "vorlund/devices/audio/WriteQueue.h"

#include <utility>

namespace vorlund {

CWriteQueue::CWriteQueue(const TDataFormat_AudioPcm& from, const TDataFormat_AudioPcm& to,
                         const CRefPtr<IInputStreamFilter>& resampler, std::size_t frames, TReadFunction read)
    : bytes_(1, frames * from.GetBlockSize()), chain_(from, to, resampler),
      source_(MakeReadStream(from, std::move(read))) {}

void CWriteQueue::Connect() {
    chain_.Connect(source_);
}

void CWriteQueue::Reset() {
    chain_.Reset();
    source_.Reset();
}

} // namespace vorlund
