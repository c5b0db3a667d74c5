/// \file
/// `DecodeStream` over arbitrary bytes: it decodes exactly what the WAV decoder accepts, and gives back the
/// stream, or an exception, for everything else.
#include "WavFuzz.h"

#include <vorlund/ClassIds.h>
#include <vorlund/CodecClassStore.h>
#include <vorlund/DataFormat.h>
#include <vorlund/StreamSelector.h>

using namespace vorlund;
using namespace vorlund::fuzz;

namespace {

/// Null when the store refuses. With a reliable stream the only refusal is "Cannot decode stream".
CRefPtr<IInputStream> Decode(IInputStream* stream, const CId& wanted) {
    try {
        return CRefPtr<IInputStream>::Adopt(CInputStreamSelector(stream).DecodeStream(wanted));
    } catch (const CDataFormatException&) {
        return {};
    }
}

void CheckPcm(IInputStream& decoded, const test::CWavModel& model, const std::uint8_t* data) {
    const test::TWavModelAnswer answer = model.Decode();
    Check(decoded.GetClassId() == classid::CWavDecoder);
    Check(decoded.GetFormat().id == TDataFormat_AudioPcm::FormatId);
    const auto& format = static_cast<const TDataFormat_AudioPcm&>(decoded.GetFormat());
    Check(format.channels == answer.channels && format.samplesPerSec == answer.samplesPerSec);
    CheckWhole(decoded, data + answer.dataOffset, model.GetStored(*model.Find("data")), 4096);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    OpenLibrary();
    const test::CWavModel model(data, size);
    const bool isWav = model.Decode().reason.empty();
    CDice dice(data, size);
    const auto stream = CFuzzStream::Create(data, size);
    stream->Seek(static_cast<std::int64_t>(dice.Roll(size + 1)));

    {
        const auto decoded = Decode(stream.Get(), TDataFormat_AudioPcm::FormatId);
        Check(static_cast<bool>(decoded) == isWav);
        if (decoded) CheckPcm(*decoded, model, data);
        Check(stream->GetReferences() == (isWav ? 2 : 1));
    }
    Check(stream->GetReferences() == 1);
    {
        // Nothing wanted: the longest chain, or the stream itself.
        const auto decoded = Decode(stream.Get(), CId::Null());
        Check(static_cast<bool>(decoded));
        if (isWav) {
            CheckPcm(*decoded, model, data);
        } else {
            Check(decoded.Get() == stream.Get());
        }
    }
    // Formats that no decoder makes, and the one that the stream has already.
    Check(!Decode(stream.Get(), TDataFormat_ImageRgb::FormatId));
    Check(!Decode(stream.Get(), CId(1, 2, 3, 4)));
    Check(stream->GetReferences() == 1);

    // A stream that fails somewhere is refused like one that is no WAV.
    stream->failsAt = static_cast<std::int64_t>(dice.Roll(size + 1));
    if (const auto decoded = Decode(stream.Get(), TDataFormat_AudioPcm::FormatId)) Check(isWav);
    Check(stream->GetReferences() == 1);
    return 0;
}
