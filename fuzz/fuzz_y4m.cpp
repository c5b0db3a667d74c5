/// \file
/// The decoder of the plug-in y4m over arbitrary bytes: it refuses them by a data format exception, or its
/// length and what it delivers from any place agree with a reading from the start.
#include "WavFuzz.h"

#include "../plugins/y4m/Y4mDecoder.h"

using namespace vorlund;
using namespace vorlund::fuzz;

namespace {

std::vector<std::uint8_t> ReadAll(IInputStream& stream, std::size_t step) {
    std::vector<std::uint8_t> bytes;
    while (true) {
        const std::size_t at = bytes.size();
        bytes.resize(at + step);
        const std::uint64_t count = stream.Read(bytes.data() + at, step);
        Check(count <= step);
        bytes.resize(at + static_cast<std::size_t>(count));
        if (count == 0) return bytes;
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    OpenLibrary();
    CDice dice(data, size);
    const auto stream = CFuzzStream::Create(data, size);
    if (dice.Roll(4) == 0) stream->mostPerRead = 1 + dice.Roll(40);
    const auto decoder = CRefPtr<CY4mDecoder>::Adopt(static_cast<CY4mDecoder*>(NewObject<CY4mDecoder>()));
    try {
        decoder->Connect(stream.Get());
    } catch (const CDataFormatException&) {
        Check(stream->GetReferences() == 1 && decoder->Eof());
        return 0;
    }
    const auto& format = static_cast<const TDataFormat_VideoRgb&>(decoder->GetFormat());
    const std::vector<std::uint8_t> whole = ReadAll(*decoder, 1 + static_cast<std::size_t>(dice.Roll(4096)));
    Check(decoder->Eof() && decoder->GetLength() == static_cast<std::int64_t>(whole.size()));
    Check(whole.size() <= 4 * size && whole.size() % format.image.GetSizeInBytes() == 0);
    for (int i = 0; i < 8 && !whole.empty(); ++i) {
        const auto at = static_cast<std::size_t>(dice.Roll(whole.size()));
        std::uint8_t part[64];
        decoder->Seek(static_cast<std::int64_t>(at));
        const auto count = static_cast<std::size_t>(decoder->Read(part, sizeof part));
        Check(count == std::min(sizeof part, whole.size() - at));
        Check(std::memcmp(part, whole.data() + at, count) == 0);
    }
    return 0;
}
