// Damaged files: every truncation and every changed header byte of a good file, against a model that tells
// the outcome from the bytes alone.
#include "data/filters/RecordingStream.h"
#include "support/LibraryScope.h"
#include "support/Outcome.h"
#include "support/WavBuilder.h"
#include "support/WavModel.h"

#include <vorlund/ClassIds.h>
#include <vorlund/DataFormat.h>
#include <vorlund/ObjectList.h>
#include <vorlund/RefPtr.h>
#include <vorlund/StreamSelector.h>
#include <vorlund/WavDecoder.h>

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace vorlund::test {
namespace {

constexpr const char* kCannotDecode = "Cannot decode stream";

/// The reason of the `CDataFormatException` that `act` raises, empty when it raises nothing, else what
/// happened.
template <class TAct> std::string Refusal(const TAct& act) {
    try {
        act();
    } catch (const CDataFormatException& exception) {
        return Narrow(exception.GetReason());
    } catch (const CException& exception) {
        return Describe(exception);
    }
    return "";
}

TBytes ReadToEnd(IInputStream& stream) {
    TBytes bytes;
    TBytes block(1000);
    while (const std::uint64_t count = stream.Read(block.data(), block.size())) {
        bytes.insert(bytes.end(), block.begin(), block.begin() + static_cast<std::ptrdiff_t>(count));
    }
    return bytes;
}

/// Compares format and data with the model.
void ExpectDecoded(IInputStream& decoded, const TBytes& file, const TWavModelAnswer& answer,
                   std::uint64_t stored) {
    const auto& format = static_cast<const TDataFormat_AudioPcm&>(decoded.GetFormat());
    ASSERT_EQ(format.id, TDataFormat_AudioPcm::FormatId);
    EXPECT_EQ(format.channels, answer.channels);
    EXPECT_EQ(format.samplesPerSec, answer.samplesPerSec);
    EXPECT_EQ(format.sampleFormat, answer.bits == 8 ? SAMPLE_FORMAT_8BIT : SAMPLE_FORMAT_16BIT);
    EXPECT_EQ(decoded.GetLength(), answer.dataSize);
    const auto begin = file.begin() + static_cast<std::ptrdiff_t>(answer.dataOffset);
    EXPECT_EQ(ReadToEnd(decoded), TBytes(begin, begin + static_cast<std::ptrdiff_t>(stored)));
}

class WavBadInput : public testing::Test {
protected:
    ~WavBadInput() noexcept override = default;

    /// Decodes `file` in three ways, which must agree with the model and leave nothing behind.
    void Check(const TBytes& file) {
        const CWavModel model(file.data(), file.size());
        const TWavModelAnswer answer = model.Decode();
        const TWavModelChunk* const data = answer.reason.empty() ? model.Find("data") : nullptr;
        const std::uint64_t stored = data ? model.GetStored(*data) : 0;
        accepted_ += answer.reason.empty();
        stream_->bytes = file;

        const auto decoder = CreateAs<IWavDecoder>(classid::CWavDecoder);
        EXPECT_EQ(Refusal([&] { decoder->Connect(stream_.Get()); }), answer.reason);
        if (answer.reason.empty()) {
            ExpectDecoded(*decoder, file, answer, stored);
        } else {
            EXPECT_EQ(decoder->GetInputStream(), nullptr);
            EXPECT_EQ(stream_->GetReferences(), 1);
        }
        decoder->Disconnect();

        const std::string reason = Refusal([&] {
            const auto decoded = CRefPtr<IInputStream>::Adopt(
                CInputStreamSelector(stream_.Get()).DecodeStream(TDataFormat_AudioPcm::FormatId));
            ExpectDecoded(*decoded, file, answer, stored);
        });
        EXPECT_EQ(reason, answer.reason.empty() ? "" : kCannotDecode);

        // With nothing wanted, what nobody can decode comes back as it is.
        const auto any =
            CRefPtr<IInputStream>::Adopt(CInputStreamSelector(stream_.Get()).DecodeStream(CId::Null()));
        EXPECT_EQ(any.Get() == static_cast<IInputStream*>(stream_.Get()), !answer.reason.empty());

        CheckChunks(model);
    }

    void CheckChunks(const CWavModel& model) {
        if (!model.HasHeader()) return;
        const auto decoder = CreateAs<IWavChunkDecoder>(classid::CWavChunkDecoder);
        decoder->Connect(stream_.Get());
        const auto list = CRefPtr<IObjectList>::Adopt(decoder->EnumerateChunks());
        ASSERT_EQ(list->GetObjectCount(), model.GetChunks().size());
        for (unsigned int i = 0; i < list->GetObjectCount(); ++i) {
            const auto text = CRefPtr<IObject>::Adopt(list->GetObject(i)).Query<IStringObject>();
            EXPECT_EQ(CString(model.GetChunks()[i].id.c_str()).CompareTo(text->GetString().GetBuffer()), 0);
        }
    }

    void TearDown() override {
        EXPECT_EQ(stream_->GetReferences(), 1) << "nothing holds on to the stream";
        stream_.Reset();
        EXPECT_EQ(CLiveObject::GetCount(), 0);
    }

    CLibraryScope library_;
    CRefPtr<CRecordingStream> stream_ = CRecordingStream::Create();
    /// Files that the model took for good.
    int accepted_ = 0;
};

/// Heads of all kinds, an odd chunk, and data of both parities.
struct TSourceRow {
    const char* name;
    TBytes file;
    /// The first byte behind the last head.
    std::size_t heads;
};
std::vector<TSourceRow> Sources() {
    const TWavFormat format{.channels = 2, .samplesPerSec = 22050};
    return {
        {"Plain", PlainWav(format, Ramp(20, 200)), 44},
        {"EightBit", PlainWav({.bits = 8}, Ramp(21, 200)), 44},
        {"LongFormat", CWavBuilder().Format(format, 18).Chunk("data", Ramp(20, 200)).Build(), 46},
        {"List", CWavBuilder().Format(format).Chunk("LIST", Ramp(10)).Chunk("data", Ramp(20, 200)).Build(),
         62},
        {"Odd", CWavBuilder().Format(format).Chunk("note", Ramp(3)).Chunk("data", Ramp(20, 200)).Build(), 55},
        {"DataFirst", CWavBuilder().Chunk("data", Ramp(20, 200)).Format(format).Build(), 64}};
}

class WavBadInputDamaged : public WavBadInput, public testing::WithParamInterface<TSourceRow> {};

TEST_P(WavBadInputDamaged, TruncatedAtEveryByte) {
    for (std::size_t size = 0; size <= GetParam().file.size(); ++size) {
        SCOPED_TRACE("cut to " + std::to_string(size));
        TBytes file = GetParam().file;
        file.resize(size);
        Check(file);
        if (HasFailure()) return;
    }
    EXPECT_GT(accepted_, 0);
}

TEST_P(WavBadInputDamaged, WithEveryHeadByteFlipped) {
    for (std::size_t at = 0; at < GetParam().heads; ++at) {
        // Each bit, all bits, letter case, and the values that sizes and offsets are afraid of.
        for (const int change : {1, 2, 4, 8, 16, 32, 64, 128, 255, 0x100, 0x17F, 0x1FF}) {
            TBytes file = GetParam().file;
            file[at] = static_cast<std::uint8_t>(change < 0x100 ? file[at] ^ change : change);
            SCOPED_TRACE("byte " + std::to_string(at) + " is " + std::to_string(file[at]));
            Check(file);
            if (HasFailure()) return;
        }
    }
    EXPECT_GT(accepted_, 0);
}

INSTANTIATE_TEST_SUITE_P(Sources, WavBadInputDamaged, testing::ValuesIn(Sources()),
                         [](const auto& row) { return row.param.name; });

TEST_F(WavBadInput, EveryFileOfNothingButAByte) {
    for (int byte = 0; byte < 256; byte += 5) {
        for (const std::size_t size : {1, 11, 12, 44, 200})
            Check(TBytes(size, static_cast<std::uint8_t>(byte)));
    }
    EXPECT_EQ(accepted_, 0);
}

TEST_F(WavBadInput, EveryTagAndNumberOfBits) {
    for (unsigned int value = 0; value < 0x10000; value += value < 100 ? 1 : 251) {
        const auto half = static_cast<std::uint16_t>(value);
        Check(PlainWav({.tag = half}, Ramp(4)));
        Check(PlainWav({.bits = half}, Ramp(4)));
    }
    EXPECT_EQ(accepted_, 1 + 2) << "tag 1, 8 and 16 bits";
}

TEST_F(WavBadInput, WildSizes) {
    for (const std::uint32_t size : {0u, 1u, 7u, 8u, 15u, 16u, 17u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFF0u,
                                     0xFFFFFFF7u, 0xFFFFFFF8u, 0xFFFFFFFFu}) {
        for (const char* const id : {"fmt ", "data", "LIST"}) {
            Check(CWavBuilder()
                      .Declare(id, size, TWavFormat{}.Record())
                      .Format({})
                      .Chunk("data", Ramp(8))
                      .Build());
            Check(CWavBuilder().Format({}).Declare(id, size, Ramp(8)).Chunk("data", Ramp(8)).Build());
        }
        Check(CWavBuilder().RiffSize(size).Format({}).Chunk("data", Ramp(8)).Build());
    }
}

} // namespace
} // namespace vorlund::test
