// The media sample in memory.
#include <vorlund/ClassIds.h>
#include <vorlund/DataFormat.h>
#include <vorlund/Exception.h>
#include <vorlund/RefPtr.h>
#include <vorlund/StreamSelector.h>

#include "data/base/InterfaceChain.h"
#include "support/Failures.h"
#include "support/LibraryScope.h"
#include "support/Probes.h"
#include "support/Streams.h"

#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <stdexcept>

namespace vorlund::test {
namespace {

constexpr const wchar* kFile = VRL_L("src/vorlund/data/SwBufferMediaSample");
constexpr TFailure kWriteToNothing{VRL_L("vorlund::CSwBufferMediaSample::WriteTo"), kFile, 94,
                                   VRL_L("Stream pointer is NULL")};
constexpr TFailure kFormatIsNull{VRL_L("vorlund::CSwBufferMediaSample::SetFormat"), kFile, 127,
                                 VRL_L("format is NULL")};

/// A format that no other record has.
constexpr CId kTestRecordId{0x7E57F043, 1, 2, 3};

/// Bytes that differ from those 256 places further.
TBytes Pattern(std::size_t size) {
    TBytes bytes(size);
    for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<std::uint8_t>(i * 7 + i / 256);
    return bytes;
}

class SwBufferMediaSample : public testing::Test {
protected:
    ~SwBufferMediaSample() noexcept override {}
    CRefPtr<CFaultyInputStream> Source(TBytes bytes) {
        auto stream = Make<CFaultyInputStream>();
        stream->bytes = std::move(bytes);
        stream->log = &log_;
        return stream;
    }
    /// The valid bytes, as far as the buffer holds them.
    TBytes Data() {
        const auto* const bytes = static_cast<const std::uint8_t*>(sample_->GetBuffer());
        return {bytes, bytes + std::min(sample_->GetDataSize(), sample_->GetBufferSize())};
    }
    void Fill(int value) { std::memset(sample_->GetBuffer(), value, sample_->GetBufferSize()); }

    CLibraryScope library_;
    TCallLog log_;
    CRefPtr<ISwBufferMediaSample> sample_ = CreateAs<ISwBufferMediaSample>(classid::CSwBufferMediaSample);
};

TEST_F(SwBufferMediaSample, Identity) {
    EXPECT_EQ(sample_->GetClassId(), CId(0xA5D82DFB, 0x331F4063, 0x83FDCE8D, 0xFF73544F));
    ExpectChain(sample_.Get(),
                {ISwBufferMediaSample::InterfaceId, IMediaSample::InterfaceId, IObject::InterfaceId});
}

TEST_F(SwBufferMediaSample, NewSample) {
    EXPECT_EQ(sample_->GetSampleFlags(), 0U);
    EXPECT_NE(sample_->GetBuffer(), nullptr);
    EXPECT_EQ(sample_->GetBufferSize(), 4096U);
    EXPECT_EQ(sample_->GetDataSize(), 0U);
    EXPECT_EQ(sample_->GetFormat()->id, CId::Null());
    EXPECT_EQ(sample_->GetFormat()->size, 20U);
    // A copy, not the record that streams share.
    EXPECT_NE(sample_->GetFormat(), &GetEmptyFormat());
    Fill(0x55);
}

// Sizes.

TEST_F(SwBufferMediaSample, SameBufferSizeKeepsEverything) {
    Fill(0x31);
    sample_->SetDataSize(77);
    void* const buffer = sample_->GetBuffer();
    sample_->SetBufferSize(4096);
    EXPECT_EQ(sample_->GetBuffer(), buffer);
    EXPECT_EQ(sample_->GetDataSize(), 77U);
    EXPECT_EQ(Data(), TBytes(77, 0x31));
}

TEST_F(SwBufferMediaSample, OtherBufferSizesEmptyTheSample) {
    for (const std::uint32_t size : {4095U, 4097U, 1U, 0U, 1000000U}) {
        sample_->SetDataSize(1);
        sample_->SetBufferSize(size);
        EXPECT_EQ(sample_->GetBufferSize(), size);
        EXPECT_EQ(sample_->GetDataSize(), 0U);
        Fill(0x31);
    }
}

TEST_F(SwBufferMediaSample, DataSizeReturnsTheSampleWithoutAReference) {
    EXPECT_EQ(sample_->SetDataSize(5), sample_.Get());
    EXPECT_EQ(ReferencesOf(sample_.Get()), 1);
    EXPECT_EQ(sample_->GetDataSize(), 5U);
    EXPECT_EQ(sample_->SetDataSize(6)->SetDataSize(7)->GetDataSize(), 7U);
}

TEST_F(SwBufferMediaSample, DataSizeBeyondTheBufferGrowsItOneCallLater) {
    sample_->SetDataSize(10000);
    EXPECT_EQ(sample_->GetDataSize(), 10000U);
    EXPECT_EQ(sample_->GetBufferSize(), 4096U);
    sample_->SetDataSize(5);
    EXPECT_EQ(sample_->GetDataSize(), 5U);
    EXPECT_EQ(sample_->GetBufferSize(), 10000U);
    Fill(0x31);
    sample_->SetDataSize(10000);
    EXPECT_EQ(sample_->GetBufferSize(), 10000U);
    EXPECT_EQ(Data(), TBytes(10000, 0x31));
}

TEST_F(SwBufferMediaSample, DataSizeEqualToTheBufferDoesNotGrowIt) {
    sample_->SetDataSize(4096);
    sample_->SetDataSize(1);
    EXPECT_EQ(sample_->GetBufferSize(), 4096U);
    sample_->SetDataSize(4097);
    EXPECT_EQ(sample_->GetBufferSize(), 4096U);
    sample_->SetDataSize(20000);
    EXPECT_EQ(sample_->GetBufferSize(), 4097U);
    EXPECT_EQ(sample_->GetDataSize(), 20000U);
}

TEST_F(SwBufferMediaSample, BufferSizeForgetsADataSizeBeyondIt) {
    sample_->SetDataSize(10000);
    sample_->SetBufferSize(100);
    sample_->SetDataSize(5);
    EXPECT_EQ(sample_->GetBufferSize(), 100U);
}

// Formats.

TEST_F(SwBufferMediaSample, FormatIsCopiedWhole) {
    TDataFormat_AudioPcm source(3, 6, 96000);
    sample_->SetFormat(&source);
    EXPECT_NE(sample_->GetFormat(), &source);
    EXPECT_EQ(std::memcmp(sample_->GetFormat(), &source, sizeof source), 0);
    const TDataFormat_AudioPcm copy = source;
    source = {0, 1, 1};
    EXPECT_EQ(std::memcmp(sample_->GetFormat(), &copy, sizeof copy), 0);
}

TEST_F(SwBufferMediaSample, FormatOfTheSameKindIsCopiedInPlace) {
    const TDataFormat_AudioPcm first(1, 1, 8000);
    const TDataFormat_AudioPcm second(1, 2, 44100);
    sample_->SetFormat(&first);
    const TDataFormat* const held = sample_->GetFormat();
    sample_->SetFormat(&second);
    EXPECT_EQ(sample_->GetFormat(), held);
    EXPECT_EQ(std::memcmp(held, &second, sizeof second), 0);
    sample_->SetFormat(held);
    EXPECT_EQ(std::memcmp(sample_->GetFormat(), &second, sizeof second), 0);
}

TEST_F(SwBufferMediaSample, FormatsOfOtherKindsAndSizesReplaceTheRecord) {
    TDataFormat_VideoRgb video;
    video.SetDefaults();
    const TDataFormat_ImageRgb image;
    const TDataFormat_AudioPcm audio;
    // The kind stays, the size changes; then the size stays, the kind changes.
    const TDataFormat shortAudio = HeadOnly(TDataFormat_AudioPcm::FormatId);
    const TDataFormat sameSize = HeadOnly(kTestRecordId);
    const TDataFormat* const formats[] = {&video, &image, &audio, &shortAudio, &sameSize, &GetEmptyFormat(),
                                          &video};
    for (const TDataFormat* const format : formats) {
        sample_->SetFormat(format);
        EXPECT_EQ(std::memcmp(sample_->GetFormat(), format, format->size), 0);
    }
}

TEST_F(SwBufferMediaSample, FormatThatClaimsToBeShorterThanItsHeadKeepsTheHead) {
    for (const std::uint32_t size : {0U, 1U, 19U}) {
        TDataFormat format = HeadOnly(kTestRecordId);
        format.size = size;
        sample_->SetFormat(&format);
        EXPECT_EQ(sample_->GetFormat()->id, kTestRecordId);
        EXPECT_EQ(sample_->GetFormat()->size, size);
        sample_->SetFormat(&format);
        EXPECT_EQ(sample_->GetFormat()->size, size);
    }
}

TEST_F(SwBufferMediaSample, NullFormatIsRefused) {
    ExpectRaises<CNullPtrException>(kFormatIsNull, [&] { sample_->SetFormat(nullptr); });
    EXPECT_EQ(sample_->GetFormat()->size, 20U);
}

// Cloning.

TEST_F(SwBufferMediaSample, CloneIsANewEmptySample) {
    sample_->SetBufferSize(100);
    sample_->SetDataSize(50);
    sample_->SetFormat(&TDataFormat_AudioPcm::FORMAT_44100HZ_16BIT_MONO);
    const auto clone = CRefPtr<IMediaSample>::Adopt(sample_->Clone()).Query<ISwBufferMediaSample>();
    ASSERT_TRUE(clone);
    EXPECT_NE(clone.Get(), sample_.Get());
    EXPECT_EQ(ReferencesOf(clone.Get()), 1);
    EXPECT_EQ(clone->GetClassId(), classid::CSwBufferMediaSample);
    EXPECT_EQ(clone->GetObjectNumber(), sample_->GetObjectNumber() + 1);
    EXPECT_EQ(clone->GetBufferSize(), 4096U);
    EXPECT_EQ(clone->GetDataSize(), 0U);
    EXPECT_EQ(clone->GetFormat()->id, CId::Null());
    EXPECT_EQ(clone->GetFormat()->size, 20U);
}

// Reading.

TEST_F(SwBufferMediaSample, FillsTheBuffer) {
    const auto source = Source(Pattern(5000));
    source->format = TDataFormat_AudioPcm::FORMAT_44100HZ_16BIT_STEREO;
    const CInputStreamSelector selector(source.Get());
    EXPECT_TRUE(sample_->ReadFrom(selector));
    EXPECT_EQ(sample_->GetDataSize(), 4096U);
    const TBytes all = Pattern(5000);
    EXPECT_EQ(Data(), TBytes(all.begin(), all.begin() + 4096));
    EXPECT_EQ(std::memcmp(sample_->GetFormat(), &TDataFormat_AudioPcm::FORMAT_44100HZ_16BIT_STEREO, 32), 0);
    // One read, no more than the buffer takes, and no reference kept.
    EXPECT_EQ(log_, TCallLog{"Read 4096"});
    EXPECT_EQ(ReferencesOf(source.Get()), 2);

    EXPECT_TRUE(sample_->ReadFrom(selector));
    EXPECT_EQ(Data(), TBytes(all.begin() + 4096, all.end()));
    EXPECT_FALSE(sample_->ReadFrom(selector));
    EXPECT_EQ(sample_->GetDataSize(), 0U);
}

TEST_F(SwBufferMediaSample, ReadsOnUntilTheBufferIsFullOrTheDataEnd) {
    sample_->SetBufferSize(10);
    const auto source = Source(Pattern(15));
    source->maximumRead = 4;
    const CInputStreamSelector selector(source.Get());
    EXPECT_TRUE(sample_->ReadFrom(selector));
    const TBytes all = Pattern(15);
    EXPECT_EQ(Data(), TBytes(all.begin(), all.begin() + 10));
    EXPECT_EQ(log_, (TCallLog{"Read 4", "Read 4", "Read 2"}));
    log_.clear();
    EXPECT_TRUE(sample_->ReadFrom(selector));
    EXPECT_EQ(Data(), TBytes(all.begin() + 10, all.end()));
    EXPECT_EQ(log_, (TCallLog{"Read 4", "Read 4", "Read 4"}));
}

TEST_F(SwBufferMediaSample, NoBufferReadsNothing) {
    sample_->SetBufferSize(0);
    const auto source = Source(Pattern(15));
    source->format = TDataFormat_AudioPcm::FORMAT_44100HZ_16BIT_STEREO;
    EXPECT_FALSE(sample_->ReadFrom(CInputStreamSelector(source.Get())));
    EXPECT_TRUE(log_.empty());
    EXPECT_EQ(sample_->GetFormat()->id, CId::Null());
    EXPECT_EQ(source->position, 0);
}

TEST_F(SwBufferMediaSample, StreamThatClaimsTooMuchDoesNotOverflow) {
    for (const std::uint64_t exaggeration :
         {std::uint64_t{1}, std::uint64_t{1} << 32, std::uint64_t{1} << 63, ~std::uint64_t{0} - 100}) {
        sample_->SetBufferSize(10);
        const auto source = Source(Pattern(100));
        source->exaggeration = exaggeration;
        source->maximumRead = 4;
        EXPECT_TRUE(sample_->ReadFrom(CInputStreamSelector(source.Get())));
        EXPECT_EQ(sample_->GetDataSize(), 10U);
        EXPECT_EQ(sample_->GetBufferSize(), 10U);
    }
}

TEST_F(SwBufferMediaSample, FailedReadPassesOnAndKeepsTheDataSize) {
    sample_->SetDataSize(3);
    const auto source = Source(Pattern(15));
    source->maximumRead = 4;
    source->failAt = 8;
    const CInputStreamSelector selector(source.Get());
    ExpectRaises<CIOException>(streamfailures::kCannotRead, [&] { sample_->ReadFrom(selector); });
    EXPECT_EQ(sample_->GetDataSize(), 3U);
    source->fail = [] { throw std::runtime_error("other"); };
    EXPECT_THROW(sample_->ReadFrom(selector), std::runtime_error);
    EXPECT_EQ(ReferencesOf(source.Get()), 2);
}

TEST_F(SwBufferMediaSample, ReadDataSurviveTheGrowthOfTheBuffer) {
    sample_->SetDataSize(10000);
    const auto source = Source(Pattern(5000));
    // A block of that size that is made now is likely to hold these bytes, not those that are to survive.
    Source(TBytes(10000, 0xEE)).Reset();
    EXPECT_TRUE(sample_->ReadFrom(CInputStreamSelector(source.Get())));
    EXPECT_EQ(log_, TCallLog{"Read 4096"});
    EXPECT_EQ(sample_->GetBufferSize(), 10000U);
    EXPECT_EQ(sample_->GetDataSize(), 4096U);
    const TBytes all = Pattern(5000);
    EXPECT_EQ(Data(), TBytes(all.begin(), all.begin() + 4096));
}

// Writing.

TEST_F(SwBufferMediaSample, WritesTheValidBytesAtOnce) {
    const TBytes bytes = Pattern(300);
    std::memcpy(sample_->GetBuffer(), bytes.data(), bytes.size());
    sample_->SetDataSize(300);
    sample_->SetFormat(&TDataFormat_AudioPcm::FORMAT_44100HZ_16BIT_STEREO);
    const auto target = Make<CMemoryOutputStream>();
    target->log = &log_;
    const COutputStreamSelector selector(target.Get());
    sample_->WriteTo(selector);
    EXPECT_EQ(log_, TCallLog{"Write 300"});
    EXPECT_EQ(target->bytes, bytes);
    EXPECT_EQ(ReferencesOf(target.Get()), 2);
    sample_->SetDataSize(0);
    sample_->WriteTo(selector);
    EXPECT_EQ(log_, (TCallLog{"Write 300", "Write 0"}));
}

TEST_F(SwBufferMediaSample, WritesNoMoreThanTheBufferHolds) {
    sample_->SetBufferSize(10);
    Fill(0x31);
    sample_->SetDataSize(std::numeric_limits<std::uint32_t>::max());
    const auto target = Make<CMemoryOutputStream>();
    sample_->WriteTo(COutputStreamSelector(target.Get()));
    EXPECT_EQ(target->bytes, TBytes(10, 0x31));
    EXPECT_EQ(sample_->GetDataSize(), std::numeric_limits<std::uint32_t>::max());
}

TEST_F(SwBufferMediaSample, NothingToWriteToIsRefused) {
    const COutputStreamSelector empty(static_cast<IOutputStream*>(nullptr));
    ExpectRaises<CNullPtrException>(kWriteToNothing, [&] { sample_->WriteTo(empty); });
}

TEST_F(SwBufferMediaSample, FailedWritePassesOn) {
    sample_->SetDataSize(300);
    const auto target = Make<CMemoryOutputStream>();
    target->maximumSize = 299;
    const COutputStreamSelector selector(target.Get());
    Fill(0x31);
    ExpectRaises<CIOException>(streamfailures::kCannotWrite, [&] { sample_->WriteTo(selector); });
    EXPECT_EQ(ReferencesOf(target.Get()), 2);
}

} // namespace
} // namespace vorlund::test
