#include "vorlund/devices/audio/WriteQueue.h"

#include <vorlund/StreamImpl.h>

#include <algorithm>
#include <utility>

namespace vorlund {
namespace {

class CQueueStream : public CInputStreamImpl<IInputStream> {
public:
    static constexpr CId ClassId{0x27E8A4D1, 0xB0634C9F, 0x8F15D37A, 0xC46E92B0};

    void Begin(const TDataFormat_AudioPcm& format, CWriteQueue::TRead read) {
        format_ = format;
        read_ = std::move(read);
    }

    std::uint32_t GetCapabilities() override { return STREAM_CAPABILITY_READ; }
    const TDataFormat& GetFormat() override { return format_; }
    bool Eof() override { return false; }
    using CInputStreamImpl::Read;
    std::uint64_t Read(void* buffer, std::uint64_t size) override { return read_(buffer, size); }

protected:
    ~CQueueStream() = default;

private:
    TDataFormat_AudioPcm format_;
    CWriteQueue::TRead read_;
};

} // namespace

CWriteQueue::CWriteQueue(const TDataFormat_AudioPcm& from, const TDataFormat_AudioPcm& to, std::size_t frames,
                         TRead read, const TFailure& failure)
    : bytes_(1, frames * from.GetBlockSize()), chain_(from, to, failure) {
    const auto stream = CRefPtr<CQueueStream>::Adopt(static_cast<CQueueStream*>(NewObject<CQueueStream>()));
    stream->Begin(from, std::move(read));
    source_ = CRefPtr<IInputStream>::Share(stream.Get());
}

void CWriteQueue::Connect() {
    chain_.Connect(source_);
}

void CWriteQueue::Reset() {
    chain_.Reset();
    source_.Reset();
}

} // namespace vorlund
