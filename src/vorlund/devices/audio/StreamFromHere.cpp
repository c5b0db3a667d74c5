#include "vorlund/devices/audio/StreamFromHere.h"

#include <vorlund/StreamFilterImpl.h>

#include <algorithm>
#include <cstring>
#include <utility>

namespace vorlund {
namespace {

class CStreamFromHere : public CInputFilterImpl<IInputStreamFilter> {
    using TLayer = CInputFilterImpl<IInputStreamFilter>;

public:
    static constexpr CId ClassId{0x4F0C7A93, 0x18E2452B, 0xA64DC05F, 0x7B1E93D6};

    void Begin(const TDataFormat_AudioPcm& format, std::vector<std::byte> bytes) {
        format_ = format;
        bytes_ = std::move(bytes);
    }

    std::uint32_t GetCapabilities() override { return STREAM_CAPABILITY_READ; }
    const TDataFormat& GetFormat() override { return format_; }
    bool Eof() override { return taken_ == bytes_.size() && TLayer::Eof(); }
    using TLayer::Read;
    std::uint64_t Read(void* buffer, std::uint64_t size) override {
        if (taken_ == bytes_.size()) return stream_ ? stream_->Read(buffer, size) : 0;
        const auto count = static_cast<std::size_t>(std::min<std::uint64_t>(size, bytes_.size() - taken_));
        std::memcpy(buffer, bytes_.data() + taken_, count);
        taken_ += count;
        return count;
    }

protected:
    ~CStreamFromHere() noexcept(false) = default;

private:
    TDataFormat_AudioPcm format_;
    std::vector<std::byte> bytes_;
    std::size_t taken_ = 0;
};

} // namespace

CRefPtr<IInputStream> MakeStreamFromHere(const CRefPtr<IInputStream>& source,
                                         const TDataFormat_AudioPcm& format, std::vector<std::byte> bytes) {
    const auto stream =
        CRefPtr<CStreamFromHere>::Adopt(static_cast<CStreamFromHere*>(NewObject<CStreamFromHere>()));
    stream->Begin(format, std::move(bytes));
    stream->Connect(source.Get());
    return CRefPtr<IInputStream>::Share(stream.Get());
}

} // namespace vorlund
