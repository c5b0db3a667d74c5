#include "vorlund/devices/audio/StreamFromHere.h"

#include <vorlund/DataFormat.h>
#include <vorlund/StreamFilterImpl.h>

namespace vorlund {
namespace {

class CStreamFromHere : public CInputFilterImpl<IInputStreamFilter> {
public:
    static constexpr CId ClassId{0x4F0C7A93, 0x18E2452B, 0xA64DC05F, 0x7B1E93D6};

    std::uint32_t GetCapabilities() override { return STREAM_CAPABILITY_READ; }
    const TDataFormat& GetFormat() override { return stream_ ? stream_->GetFormat() : GetEmptyFormat(); }

protected:
    ~CStreamFromHere() noexcept(false) = default;
};

} // namespace

CRefPtr<IInputStream> MakeStreamFromHere(const CRefPtr<IInputStream>& source) {
    const auto stream =
        CRefPtr<CStreamFromHere>::Adopt(static_cast<CStreamFromHere*>(NewObject<CStreamFromHere>()));
    stream->Connect(source.Get());
    return CRefPtr<IInputStream>::Share(stream.Get());
}

} // namespace vorlund
