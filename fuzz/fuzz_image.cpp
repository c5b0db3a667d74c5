/// \file
/// The decoder of the plug-in image over arbitrary bytes: it refuses them by a data format exception, or it
/// delivers as many bytes as its format says. A stream that fails in the middle leaves nothing behind.
#include "WavFuzz.h"

#include "../plugins/image/ImageDecoder.h"

using namespace vorlund;
using namespace vorlund::fuzz;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    OpenLibrary();
    CDice dice(data, size);
    const auto stream = CFuzzStream::Create(data, size);
    if (dice.Roll(4) == 0) stream->mostPerRead = 1 + dice.Roll(40);
    const auto decoder =
        CRefPtr<CImageDecoder>::Adopt(static_cast<CImageDecoder*>(NewObject<CImageDecoder>()));
    if (dice.Roll(4) == 0) {
        stream->failsAt = static_cast<std::int64_t>(dice.Roll(size + 1));
        try {
            decoder->Connect(stream.Get());
            decoder->Disconnect();
        } catch (const CDataFormatException&) {
        } catch (const CIOException&) {
        }
        Check(stream->GetReferences() == 1 && decoder->Eof());
        stream->failsAt = std::numeric_limits<std::int64_t>::max();
    }
    try {
        decoder->Connect(stream.Get());
    } catch (const CDataFormatException&) {
        Check(stream->GetReferences() == 1 && decoder->Eof());
        return 0;
    }
    const auto& format = static_cast<const TDataFormat_ImageRgb&>(decoder->GetFormat());
    const std::uint64_t length = std::uint64_t{format.width} * format.height * 4;
    Check(length > 0 && format.GetSizeInBytes() == length);
    Check(decoder->GetLength() == static_cast<std::int64_t>(length));
    std::vector<std::uint8_t> pixels(static_cast<std::size_t>(length));
    Check(decoder->Read(pixels.data(), length + 1) == length && decoder->Eof());
    const auto at = static_cast<std::size_t>(dice.Roll(length));
    std::uint8_t pixel = 0;
    decoder->Seek(static_cast<std::int64_t>(at));
    Check(decoder->Read(&pixel, 1) == 1 && pixel == pixels[at]);
    return 0;
}
