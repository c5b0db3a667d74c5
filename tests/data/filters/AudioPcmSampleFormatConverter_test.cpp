// The converter of PCM sample formats: what it makes of its source, and how much of it. The arithmetic of the
// samples has its own suite.
#include "data/base/InterfaceChain.h"
#include "data/filters/PcmConverterSource.h"
#include "support/LibraryScope.h"
#include "support/Probes.h"

#include <vorlund/AudioPcmConverters.h>
#include <vorlund/ClassIds.h>
#include <vorlund/RefPtr.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <numeric>

namespace vorlund::test {
namespace {

class AudioPcmSampleFormatConverter : public testing::Test {
protected:
    ~AudioPcmSampleFormatConverter() noexcept override {}
    /// Connects a source of `bytes`; the former one is forgotten.
    void Connect(std::uint32_t code, std::uint32_t channels, TBytes bytes) {
        source_ = PcmSource({code, channels, 8000}, std::move(bytes), &log_);
        converter_->Connect(source_.Get());
        log_.clear();
    }
    /// The first samples of the output, from a source of mono samples.
    template <class TResult, class TSample>
    std::vector<TResult> Convert(std::uint32_t from, std::uint32_t to, const std::vector<TSample>& samples) {
        converter_->SetSampleFormat(to);
        Connect(from, 1, BytesOf(samples));
        return SamplesOf<TResult>(ReadOnce(*converter_, samples.size() * sizeof(TResult)));
    }

    CLibraryScope library_;
    TCallLog log_;
    CRefPtr<CFaultyInputStream> source_;
    CRefPtr<IAudioPcmSampleFormatConverter> converter_ =
        CreateAs<IAudioPcmSampleFormatConverter>(classid::CAudioPcmSampleFormatConverter);
};

TEST_F(AudioPcmSampleFormatConverter, Identity) {
    EXPECT_EQ(converter_->GetClassId(), CId(0xC78D926E, 0x26B94789, 0x86D3132C, 0xEC7ED1FF));
    ExpectChain(converter_.Get(), {IInputStreamFilter::InterfaceId, IInputStream::InterfaceId,
                                   IStream::InterfaceId, IObject::InterfaceId});
    EXPECT_TRUE(converter_.Query<IAudioPcmSampleFormatConverter>());
    EXPECT_FALSE(converter_.Query<IAudioPcmChannelNumberConverter>());
}

// The target.

TEST_F(AudioPcmSampleFormatConverter, SetSampleFormatGivesTheConverterItself) {
    EXPECT_EQ(converter_->SetSampleFormat(SAMPLE_FORMAT_FLOAT), converter_.Get());
    EXPECT_EQ(ReferencesOf(converter_.Get()), 1);
    EXPECT_EQ(PcmText(*converter_), "code 3, channels 2, rate 44100");
}

TEST_F(AudioPcmSampleFormatConverter, KeepsTheChannelsAndTheRateOfItsSource) {
    converter_->SetSampleFormat(SAMPLE_FORMAT_32BIT);
    source_ = PcmSource({SAMPLE_FORMAT_8BIT, 5, 96000}, {});
    converter_->Connect(source_.Get());
    EXPECT_EQ(PcmText(*converter_), "code 2, channels 5, rate 96000");
    converter_->Disconnect();
    EXPECT_EQ(PcmText(*converter_), "code 2, channels 5, rate 96000");
}

TEST_F(AudioPcmSampleFormatConverter, FollowsEverySourceUntilItHasATarget) {
    Connect(SAMPLE_FORMAT_8BIT, 1, {1, 2});
    EXPECT_EQ(PcmText(*converter_), "code 0, channels 1, rate 8000");
    Connect(SAMPLE_FORMAT_FLOAT, 1, {1, 2, 3, 4});
    EXPECT_EQ(PcmText(*converter_), "code 3, channels 1, rate 8000");
    EXPECT_EQ(ReadOnce(*converter_, 3), (TBytes{1, 2, 3}));
    converter_->SetSampleFormat(SAMPLE_FORMAT_16BIT);
    Connect(SAMPLE_FORMAT_8BIT, 1, {0x80, 0xFF});
    EXPECT_EQ(PcmText(*converter_), "code 1, channels 1, rate 8000");
    Connect(SAMPLE_FORMAT_16BIT, 1, {1, 2, 3});
    EXPECT_EQ(ReadOnce(*converter_, 3), (TBytes{1, 2, 3}));
}

TEST_F(AudioPcmSampleFormatConverter, TakesATargetWithTheNextConnection) {
    Connect(SAMPLE_FORMAT_8BIT, 1, {0x80, 0xFF, 0x00, 0x81});
    converter_->SetSampleFormat(SAMPLE_FORMAT_16BIT);
    // The format and the rescaling follow at once, reading does not.
    EXPECT_EQ(PcmText(*converter_), "code 1, channels 1, rate 8000");
    EXPECT_EQ(converter_->GetLength(), 8);
    EXPECT_EQ(ReadOnce(*converter_, 2), (TBytes{0x80, 0xFF}));
    EXPECT_EQ(converter_->Tell(), 4);
    converter_->Seek(0);
    converter_->Connect(source_.Get());
    EXPECT_EQ(SamplesOf<std::int16_t>(ReadOnce(*converter_, 4)), (std::vector<std::int16_t>{0, 32512}));
    // A routine for other sizes than the format's writes no more than asked for.
    for (const std::uint32_t code : {0u, 2u, 3u, 9u}) {
        converter_->Seek(0);
        converter_->SetSampleFormat(code);
        source_->position = 0;
        EXPECT_EQ(SamplesOf<std::int16_t>(ReadOnce(*converter_, 5)), (std::vector<std::int16_t>{0, 32512}));
    }
}

TEST_F(AudioPcmSampleFormatConverter, HandsBytesThroughToCodesItDoesNotKnow) {
    for (const std::uint32_t code : {4u, 7u, 0xFFFFFFFFu}) {
        converter_->SetSampleFormat(code);
        Connect(SAMPLE_FORMAT_16BIT, 1, {1, 2, 3, 4});
        EXPECT_EQ(ReadOnce(*converter_, 3), (TBytes{1, 2, 3}));
        EXPECT_EQ(converter_->GetLength(), 0);
        EXPECT_EQ(converter_->Tell(), 0);
        converter_->Seek(100);
        EXPECT_EQ(source_->position, 0);
        converter_->Skip(100);
        EXPECT_EQ(source_->position, 0);
    }
    converter_->SetSampleFormat(SAMPLE_FORMAT_16BIT);
    Connect(7, 1, {1, 2, 3, 4});
    EXPECT_EQ(ReadOnce(*converter_, 3), (TBytes{1, 2, 3}));
    EXPECT_EQ(converter_->GetLength(), 0);
}

// The samples.

TEST_F(AudioPcmSampleFormatConverter, Examples) {
    const float tiny = std::numeric_limits<float>::denorm_min();
    const float nan = std::numeric_limits<float>::quiet_NaN();
    using TS16 = std::vector<std::int16_t>;
    using TS32 = std::vector<std::int32_t>;
    using TFloats = std::vector<float>;
    const TBytes bytes{0, 1, 127, 128, 129, 255};
    EXPECT_EQ(Convert<std::int16_t>(0, 1, bytes), (TS16{-32768, -32512, -256, 0, 256, 32512}));
    EXPECT_EQ(Convert<std::int32_t>(0, 2, bytes),
              (TS32{-2147483647 - 1, -2130706432, -16777216, 0, 16777216, 2130706432}));
    EXPECT_EQ(Convert<float>(0, 3, bytes),
              (TFloats{-1, -0.9921875f, -0.0078125f, 0, 0.0078125f, 0.9921875f}));
    const TS16 shorts{-32768, -257, -256, -1, 0, 255, 256, 32767};
    EXPECT_EQ(Convert<std::uint8_t>(1, 0, shorts), (TBytes{0, 126, 127, 127, 128, 128, 129, 255}));
    EXPECT_EQ(Convert<std::int32_t>(1, 2, TS16{-32768, -1, 0, 1, 32767}),
              (TS32{-2147483647 - 1, -65536, 0, 65536, 2147418112}));
    EXPECT_EQ(Convert<float>(1, 3, TS16{-32768, -1, 0, 16384, 32767}),
              (TFloats{-1, -1 / 32768.0f, 0, 0.5f, 32767 / 32768.0f}));
    const TS32 longs{-2147483647 - 1, -16777217, -16777216, -65537,    -1, 0,
                     65535,           65536,     16777216,  2147483647};
    EXPECT_EQ(Convert<std::uint8_t>(2, 0, longs), (TBytes{0, 126, 127, 127, 127, 128, 128, 128, 129, 255}));
    EXPECT_EQ(Convert<std::int16_t>(2, 1, longs), (TS16{-32768, -257, -256, -2, -1, 0, 0, 1, 256, 32767}));
    EXPECT_EQ(Convert<float>(2, 3, TS32{-2147483647 - 1, 0, 1, 1 << 30, 2147483647}),
              (TFloats{-1, 0, 0x1p-31f, 0.5f, 1}));
    EXPECT_EQ(Convert<std::uint8_t>(3, 0, TFloats{-1, -tiny, 0, tiny, 1, 1.01f, -1.01f, -1.1f, nan, 1e30f}),
              (TBytes{0, 127, 127, 127, 255, 0, 255, 244, 0, 0}));
    EXPECT_EQ(Convert<std::int16_t>(3, 1, TFloats{-1, -0.5f, 0, 0.5f, 1, 1.5f, -1.5f, 2, nan, -1e30f}),
              (TS16{-32767, -16383, 0, 16383, 32767, -16386, 16386, -2, 0, 0}));
    EXPECT_EQ(Convert<std::int32_t>(3, 2, TFloats{-1, -0.5f, 0, 0.5f, 1, 10, 10.1f, -10, -10.1f, nan}),
              (TS32{-214743648, -107371824, 0, 107371824, 214743648, 2147436480, -2147483647 - 1, -2147436480,
                    -2147483647 - 1, -2147483647 - 1}));
}

// How much.

TEST_F(AudioPcmSampleFormatConverter, ReadsAtMost1024BytesAtOnce) {
    static_assert(kMaxPcmConverterInput == 1024);
    converter_->SetSampleFormat(SAMPLE_FORMAT_16BIT);
    Connect(SAMPLE_FORMAT_8BIT, 1, TBytes(3000, 0x81));
    EXPECT_EQ(ReadOnce(*converter_, 4096).size(), 2048u);
    EXPECT_EQ(ReadOnce(*converter_, 2050).size(), 2048u);
    EXPECT_EQ(ReadOnce(*converter_, 2046).size(), 1904u);
    EXPECT_EQ(ReadOnce(*converter_, 4096).size(), 0u);
    EXPECT_EQ(log_, (TCallLog{"Read 1024", "Read 1024", "Read 1023", "Read 1024"}));
    log_.clear();
    TBytes buffer(2048);
    source_->position = 0;
    EXPECT_EQ(converter_->Read(buffer.data(), ~std::uint64_t{0}), 2048u);
    EXPECT_EQ(converter_->Read(buffer.data(), std::uint64_t{1} << 32), 2048u);
    EXPECT_EQ(log_, (TCallLog{"Read 1024", "Read 1024"}));
}

TEST_F(AudioPcmSampleFormatConverter, ReadsWholeFramesOnly) {
    converter_->SetSampleFormat(SAMPLE_FORMAT_16BIT);
    Connect(SAMPLE_FORMAT_8BIT, 2, {1, 2, 3, 4, 5, 6});
    EXPECT_EQ(ReadOnce(*converter_, 0).size(), 0u);
    EXPECT_EQ(ReadOnce(*converter_, 3).size(), 0u);
    EXPECT_TRUE(log_.empty());
    EXPECT_EQ(ReadOnce(*converter_, 4).size(), 4u);
    EXPECT_EQ(ReadOnce(*converter_, 11).size(), 8u);
    EXPECT_EQ(log_, (TCallLog{"Read 2", "Read 4"}));
}

TEST_F(AudioPcmSampleFormatConverter, LeavesAPartialFrameUnwrittenButCountsIt) {
    converter_->SetSampleFormat(SAMPLE_FORMAT_16BIT);
    Connect(SAMPLE_FORMAT_8BIT, 2, {0x81, 0x82, 0x83});
    EXPECT_EQ(ReadOnce(*converter_, 8), (TBytes{0, 1, 0, 2, kUnwritten, kUnwritten}));
    // Of a partial sample not even that.
    converter_->SetSampleFormat(SAMPLE_FORMAT_8BIT);
    Connect(SAMPLE_FORMAT_16BIT, 1, {0, 1, 0, 2, 0});
    EXPECT_EQ(ReadOnce(*converter_, 8), (TBytes{0x81, 0x82}));
    Connect(SAMPLE_FORMAT_16BIT, 1, {0});
    EXPECT_EQ(ReadOnce(*converter_, 8), TBytes{});
    // The limit cuts frames as well: 1024 bytes are 341 samples and a third of six-byte frames.
    Connect(SAMPLE_FORMAT_16BIT, 3, TBytes(1200, 0));
    TBytes expected(510, 0x80);
    expected.insert(expected.end(), 2, kUnwritten);
    EXPECT_EQ(ReadOnce(*converter_, 600), expected);
    EXPECT_EQ(source_->position, 1024);
}

TEST_F(AudioPcmSampleFormatConverter, FramesLargerThanTheLimitAreNeverWhole) {
    struct TRow {
        std::uint32_t channels;
        std::uint64_t frame;
    };
    for (const TRow& row : {TRow{1025, 4100},
                            {2048, 8192},
                            {2049, 8196},
                            {0x40000001, 0x100000004},
                            {0x7FFFFFFF, 0x1FFFFFFFC},
                            {0xFFFFFFFF, 0x3FFFFFFFC}}) {
        converter_->SetSampleFormat(SAMPLE_FORMAT_FLOAT);
        Connect(SAMPLE_FORMAT_8BIT, row.channels, TBytes(2000, 0));
        TBytes buffer(4096, kUnwritten);
        EXPECT_EQ(converter_->Read(buffer.data(), row.frame - 1), 0u) << row.channels;
        EXPECT_TRUE(log_.empty());
        EXPECT_EQ(converter_->Read(buffer.data(), row.frame), 4096u) << row.channels;
        EXPECT_EQ(log_, TCallLog{"Read 1024"});
        EXPECT_EQ(buffer, TBytes(4096, kUnwritten));
    }
}

TEST_F(AudioPcmSampleFormatConverter, ReadsNothingWithoutChannels) {
    converter_->SetSampleFormat(SAMPLE_FORMAT_16BIT);
    Connect(SAMPLE_FORMAT_8BIT, 0, {1, 2, 3});
    EXPECT_EQ(ReadOnce(*converter_, 100).size(), 0u);
    EXPECT_TRUE(log_.empty());
    EXPECT_EQ(converter_->GetLength(), 6);
}

TEST_F(AudioPcmSampleFormatConverter, ShortReadsGoOnWhereTheyStopped) {
    converter_->SetSampleFormat(SAMPLE_FORMAT_16BIT);
    Connect(SAMPLE_FORMAT_8BIT, 1, {0x81, 0x82, 0x83, 0x84, 0x85});
    source_->maximumRead = 2;
    EXPECT_EQ(ReadOnce(*converter_, 100), (TBytes{0, 1, 0, 2}));
    EXPECT_EQ(ReadOnce(*converter_, 100), (TBytes{0, 3, 0, 4}));
    EXPECT_EQ(ReadOnce(*converter_, 100), (TBytes{0, 5}));
    EXPECT_EQ(ReadOnce(*converter_, 100), TBytes{});
    EXPECT_TRUE(converter_->Eof());
}

TEST_F(AudioPcmSampleFormatConverter, CutsWhatAStreamClaims) {
    converter_->SetSampleFormat(SAMPLE_FORMAT_FLOAT);
    Connect(SAMPLE_FORMAT_8BIT, 1, TBytes(10, 0x80));
    for (const std::uint64_t exaggeration :
         {std::uint64_t{1}, std::uint64_t{1} << 32, ~std::uint64_t{0} - 10}) {
        source_->position = 0;
        source_->exaggeration = exaggeration;
        EXPECT_EQ(ReadOnce(*converter_, 40), TBytes(40, 0));
    }
}

TEST_F(AudioPcmSampleFormatConverter, ASourceThatChangesItsFormatDoesNoHarm) {
    converter_->SetSampleFormat(SAMPLE_FORMAT_8BIT);
    Connect(SAMPLE_FORMAT_32BIT, 1, TBytes(1000, 0));
    source_->format = TDataFormat_AudioPcm(SAMPLE_FORMAT_8BIT, 6, 8000);
    EXPECT_EQ(ReadOnce(*converter_, 2000), TBytes(250, 0x80));
    EXPECT_EQ(converter_->GetLength(), 250);
    EXPECT_EQ(PcmText(*converter_), "code 0, channels 1, rate 8000");
}

// Rescaling.

TEST_F(AudioPcmSampleFormatConverter, RescalesPositions) {
    converter_->SetSampleFormat(SAMPLE_FORMAT_16BIT);
    Connect(SAMPLE_FORMAT_8BIT, 1, TBytes(1000));
    EXPECT_EQ(converter_->GetLength(), 2000);
    converter_->Seek(2000);
    converter_->Seek(7);
    converter_->Skip(9);
    EXPECT_EQ(converter_->Tell(), 14);
    EXPECT_EQ(log_, (TCallLog{"Seek 1000", "Seek 3", "Skip 4"}));
    converter_->SetSampleFormat(SAMPLE_FORMAT_16BIT);
    Connect(SAMPLE_FORMAT_FLOAT, 1, TBytes(1003));
    EXPECT_EQ(converter_->GetLength(), 501);
    converter_->Seek(7);
    converter_->Skip(3);
    EXPECT_EQ(log_, (TCallLog{"Seek 14", "Skip 6"}));
}

TEST_F(AudioPcmSampleFormatConverter, RescalesIn64BitsUnsignedAndMultipliesFirst) {
    converter_->SetSampleFormat(SAMPLE_FORMAT_FLOAT);
    Connect(SAMPLE_FORMAT_16BIT, 1, {});
    const auto length = [&](std::int64_t claimed) {
        source_->claimedLength = claimed;
        return converter_->GetLength();
    };
    EXPECT_EQ(length(std::int64_t{3} << 40), std::int64_t{6} << 40);
    // -1 x 4 is 2^64 - 4, and half of it is positive.
    EXPECT_EQ(length(-1), std::numeric_limits<std::int64_t>::max() - 1);
    EXPECT_EQ(length((std::int64_t{1} << 62) + 1), 2);
    converter_->Seek(-4);
    EXPECT_EQ(source_->position, (std::int64_t{1} << 62) - 2);
    source_->position = 0;
    converter_->Skip(~std::uint64_t{0});
    EXPECT_EQ(source_->position, (std::int64_t{1} << 62) - 1);
}

} // namespace
} // namespace vorlund::test
