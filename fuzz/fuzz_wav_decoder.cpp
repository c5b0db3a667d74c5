/// \file
/// The WAV decoder over arbitrary bytes, against `CWavModel`: what it refuses and why, the format, the data.
#include "WavFuzz.h"

#include <vorlund/ClassIds.h>
#include <vorlund/DataFormat.h>
#include <vorlund/WavDecoder.h>

using namespace vorlund;
using namespace vorlund::fuzz;

namespace {

std::string Narrowed(const wchar* text) {
    std::string narrow;
    for (; *text; ++text) narrow += static_cast<char>(*text);
    return narrow;
}

/// The reason of the `CDataFormatException`, or empty.
std::string Connect(IWavDecoder& decoder, IInputStream* stream) {
    try {
        decoder.Connect(stream);
    } catch (const CDataFormatException& exception) {
        return Narrowed(exception.GetReason());
    }
    return "";
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    OpenLibrary();
    const test::CWavModel model(data, size);
    const test::TWavModelAnswer answer = model.Decode();
    CDice dice(data, size);
    const auto stream = CFuzzStream::Create(data, size);
    const auto decoder = CreateAs<IWavDecoder>(classid::CWavDecoder);
    const auto& format = static_cast<const TDataFormat_AudioPcm&>(decoder->GetFormat());
    if (dice.Roll(4) == 0) stream->mostPerRead = 1 + dice.Roll(40);
    stream->Seek(static_cast<std::int64_t>(dice.Roll(size + 1)));

    // First with a stream that fails somewhere: whatever comes of it, a failed connection leaves nothing.
    bool wasRead = false;
    if (dice.Roll(8) == 0) {
        stream->failsAt = static_cast<std::int64_t>(dice.Roll(size + 1));
        bool hasFailed = true;
        try {
            hasFailed = !Connect(*decoder, stream.Get()).empty();
        } catch (const CIOException&) {
        }
        Check(stream->GetReferences() == (hasFailed ? 1 : 2));
        stream->failsAt = std::numeric_limits<std::int64_t>::max();
        wasRead = format.channels != 1 || format.samplesPerSec != 44100 || format.sampleFormat != 1;
    }

    Check(Connect(*decoder, stream.Get()) == answer.reason);
    Check(format.id == TDataFormat_AudioPcm::FormatId && format.size == 32);
    if (answer.channels) {
        Check(format.channels == *answer.channels && format.samplesPerSec == answer.samplesPerSec);
        Check(format.sampleFormat == (answer.bits == 8 ? SAMPLE_FORMAT_8BIT : SAMPLE_FORMAT_16BIT));
    } else {
        Check(!wasRead && format.channels == 1 && format.samplesPerSec == 44100);
    }
    if (!answer.reason.empty()) {
        Check(stream->GetReferences() == 1);
        Check(decoder->GetInputStream() == nullptr);
        Check(decoder->Eof() && decoder->GetLength() == 0 && decoder->GetCapabilities() == 0);
        return 0;
    }
    Check(stream->GetReferences() == 2);
    Check(decoder->Tell() == 0);
    CheckReading(*decoder, *stream, data, size, answer.dataOffset, answer.dataSize, dice);
    const std::uint64_t stored = model.GetStored(*model.Find("data"));
    // Seldom a second time, because it takes most of the time.
    for (int i = dice.Roll(4) == 0 ? 0 : 1; i < 2; ++i) {
        CheckWhole(*decoder, data + answer.dataOffset, stored, 1 + static_cast<std::size_t>(dice.Roll(600)));
    }
    return 0;
}
