/// \file
/// The chunk decoder over arbitrary bytes, against `CWavModel`: header, table, selection, reading.
#include "WavFuzz.h"

#include <vorlund/ClassIds.h>
#include <vorlund/ObjectList.h>
#include <vorlund/WavDecoder.h>

#include <iterator>

using namespace vorlund;
using namespace vorlund::fuzz;

namespace {

wstring Widened(const std::string& id) {
    wstring text;
    for (const char unit : id) text += static_cast<wchar>(static_cast<signed char>(unit));
    return text;
}

void CheckTable(IWavChunkDecoder& decoder, const test::CWavModel& model) {
    const auto list = CRefPtr<IObjectList>::Adopt(decoder.EnumerateChunks());
    Check(list->GetObjectCount() == model.GetChunks().size());
    for (unsigned int i = 0; i < list->GetObjectCount(); ++i) {
        const auto text = CRefPtr<IObject>::Adopt(list->GetObject(i)).Query<IStringObject>();
        Check(Widened(model.GetChunks()[i].id) == text->GetString().GetBuffer());
    }
}

void CheckSelection(IWavChunkDecoder& decoder, const CFuzzStream& stream, const test::CWavModel& model,
                    const std::string& id, const std::uint8_t* data, std::size_t size, CDice& dice) {
    const test::TWavModelChunk* const chunk = model.Find(id);
    bool isFound = true;
    try {
        decoder.SelectChunk(Widened(id).c_str());
    } catch (const CObjectNotFoundException&) {
        isFound = false;
    }
    Check(isFound == (chunk != nullptr));
    if (!chunk) {
        Check(decoder.GetChunkSize() == 0 && decoder.GetChunkOffset() == -1);
        Check(decoder.GetLength() == 0 && decoder.Tell() == 0 && decoder.Eof());
        return;
    }
    Check(decoder.GetChunkOffset() == static_cast<std::int64_t>(chunk->offset));
    Check(decoder.GetChunkSize() == chunk->size);
    CheckReading(decoder, stream, data, size, chunk->offset, chunk->size, dice);
    // Seldom a second time, because it takes most of the time.
    for (int i = dice.Roll(4) == 0 ? 0 : 1; i < 2; ++i) {
        CheckWhole(decoder, data + chunk->offset, model.GetStored(*chunk),
                   1 + static_cast<std::size_t>(dice.Roll(300)));
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    OpenLibrary();
    const test::CWavModel model(data, size);
    CDice dice(data, size);
    const auto stream = CFuzzStream::Create(data, size);
    const auto decoder = CreateAs<IWavChunkDecoder>(classid::CWavChunkDecoder);
    if (dice.Roll(4) == 0) stream->mostPerRead = 1 + dice.Roll(7);
    stream->Seek(static_cast<std::int64_t>(dice.Roll(size + 1)));

    // First with a stream that fails somewhere: what was found stays, and the next connection is whole.
    if (dice.Roll(4) == 0) {
        stream->failsAt = static_cast<std::int64_t>(dice.Roll(size + 1));
        try {
            decoder->Connect(stream.Get());
        } catch (const CIOException&) {
            const auto list = CRefPtr<IObjectList>::Adopt(decoder->EnumerateChunks());
            Check(list->GetObjectCount() <= model.GetChunks().size());
        } catch (const CDataFormatException&) {
            Check(stream->GetReferences() == 1);
        }
        stream->failsAt = std::numeric_limits<std::int64_t>::max();
    }

    bool isConnected = true;
    try {
        decoder->Connect(stream.Get());
    } catch (const CDataFormatException&) {
        isConnected = false;
    }
    Check(isConnected == model.HasHeader());
    Check(stream->GetReferences() == (isConnected ? 2 : 1));
    if (isConnected) {
        Check(stream->GetPosition() == 0);
        CheckTable(*decoder, model);
        // Two of the usual ones and two that the file has itself: an input like this one takes others.
        constexpr const char* kUsual[] = {"fmt ", "data", "DATA", "LIST", ""};
        for (int i = 0; i < 2; ++i) {
            const char* const id = kUsual[dice.Roll(std::size(kUsual))];
            CheckSelection(*decoder, *stream, model, id, data, size, dice);
        }
        const std::size_t count = model.GetChunks().size();
        for (std::size_t i = 0; i < std::min<std::size_t>(count, 2); ++i) {
            const std::string& id = model.GetChunks()[static_cast<std::size_t>(dice.Roll(count))].id;
            CheckSelection(*decoder, *stream, model, id, data, size, dice);
        }
        decoder->SelectChunk(nullptr);
        Check(decoder->GetChunkOffset() == -1);
    }
    if (dice.Roll(2) == 0) {
        decoder->Disconnect();
        Check(stream->GetReferences() == 1);
    }
    return 0;
}
