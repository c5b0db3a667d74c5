/// \file
/// The search for decoders over arbitrary bytes, with the decoder of the plug-in sndfile beside the library's
/// own, and its report: what is found reads to its end, what is refused is explained. A stream that fails in
/// the middle leaves nothing behind.
#include "WavFuzz.h"

#include "../plugins/sndfile/SndfileDecoder.h"

#include <vorlund/CodecClassStore.h>
#include <vorlund/DecodeReport.h>

using namespace vorlund;
using namespace vorlund::fuzz;

namespace {

constexpr std::uint64_t kMaxRead = 256 * 1024;

void RegisterDecoder() {
    static const bool isDone = [] {
        v.GetClassStore().RegisterClassVrl(
            {CSndfileDecoder::ClassId, VRL_L("sndfile::CSndfileDecoder"), &NewObject<CSndfileDecoder>});
        v.GetCodecClassStore().RegisterDecoder(
            {CSndfileDecoder::ClassId, CId::Null(), TDataFormat_AudioPcm::FormatId});
        return true;
    }();
    Check(isDone);
}

/// Null when it is refused.
CRefPtr<IInputStream> Decode(CFuzzStream& stream, CDecodeReport& report) {
    try {
        return CRefPtr<IInputStream>::Adopt(v.GetCodecClassStore().DecodeStream(
            &stream, TDataFormat_AudioPcm::FormatId, {.report = &report}));
    } catch (const CDataFormatException&) {
        return {};
    }
}

/// At most `kMaxRead` bytes from here; each read moves by what it delivers.
void ReadOn(IInputStream& decoded, CDice& dice) {
    std::vector<std::uint8_t> block(1 + static_cast<std::size_t>(dice.Roll(9000)));
    for (std::uint64_t total = 0; total < kMaxRead;) {
        const std::int64_t before = decoded.Tell();
        const std::uint64_t count = decoded.Read(block.data(), block.size());
        Check(count <= block.size() && decoded.Tell() == before + static_cast<std::int64_t>(count));
        if (count == 0) return;
        total += count;
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    OpenLibrary();
    RegisterDecoder();
    CDice dice(data, size);
    const auto stream = CFuzzStream::Create(data, size);
    if (dice.Roll(4) == 0) stream->mostPerRead = 1 + dice.Roll(40);
    if (dice.Roll(4) == 0) stream->failsAt = static_cast<std::int64_t>(dice.Roll(size + 1));
    CDecodeReport report;
    auto decoded = Decode(*stream, report);
    const bool isRead = static_cast<bool>(decoded);
    // The library's own decoder and this one.
    Check(isRead || report.GetEntries().size() == 2);
    Check((report.Explain().Length() == 0) == isRead && report.ToString().Length() > 0);
    if (!isRead) {
        Check(stream->GetReferences() == 1);
        return 0;
    }
    Check(ListChain(*decoded).size() == 2 && report.GetEntries().back().outcome == DECODE_CONNECTED);
    const auto& format = static_cast<const TDataFormat_AudioPcm&>(decoded->GetFormat());
    Check(format.channels > 0 && format.GetSampleSize() > 0 && decoded->GetLength() >= 0);
    try {
        ReadOn(*decoded, dice);
        decoded->Seek(
            static_cast<std::int64_t>(dice.Roll(static_cast<std::uint64_t>(decoded->GetLength()) + 1)));
        ReadOn(*decoded, dice);
    } catch (const CIOException&) {
    }
    decoded.Reset();
    Check(stream->GetReferences() == 1);
    return 0;
}
