#include "vorlund/devices/audio/ReadStream.h"

#include <vorlund/StreamImpl.h>

#include <utility>

namespace vorlund {
namespace {

class CReadStream : public CInputStreamImpl<IInputStream> {
public:
    static constexpr CId ClassId{0x27E8A4D1, 0xB0634C9F, 0x8F15D37A, 0xC46E92B0};

    void Begin(const TDataFormat_AudioPcm& format, TReadFunction read) {
        format_ = format;
        read_ = std::move(read);
    }

    std::uint32_t GetCapabilities() override { return STREAM_CAPABILITY_READ; }
    const TDataFormat& GetFormat() override { return format_; }
    bool Eof() override { return false; }
    using CInputStreamImpl::Read;
    std::uint64_t Read(void* buffer, std::uint64_t size) override { return read_(buffer, size); }

protected:
    ~CReadStream() = default;

private:
    TDataFormat_AudioPcm format_;
    TReadFunction read_;
};

} // namespace

CRefPtr<IInputStream> MakeReadStream(const TDataFormat_AudioPcm& format, TReadFunction read) {
    const auto stream = CRefPtr<CReadStream>::Adopt(static_cast<CReadStream*>(NewObject<CReadStream>()));
    stream->Begin(format, std::move(read));
    return CRefPtr<IInputStream>::Share(stream.Get());
}

} // namespace vorlund
