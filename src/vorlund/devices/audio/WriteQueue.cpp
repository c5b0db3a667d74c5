#include "vorlund/devices/audio/WriteQueue.h"

#include <utility>

namespace vorlund {

CWriteQueue::CWriteQueue(const TDataFormat_AudioPcm& from, const TDataFormat_AudioPcm& to, std::size_t frames,
                         TReadFunction read, const TFailure& failure)
    : bytes_(1, frames * from.GetBlockSize()), chain_(from, to, failure),
      source_(MakeReadStream(from, std::move(read))) {}

void CWriteQueue::Connect() {
    chain_.Connect(source_);
}

void CWriteQueue::Reset() {
    chain_.Reset();
    source_.Reset();
}

} // namespace vorlund
