// The converter of PCM channel numbers: what it makes of its source, and how much of it. The arithmetic of
// the mixes has its own suite.
#include "data/base/InterfaceChain.h"
#include "data/filters/PcmConverterSource.h"
#include "support/Failures.h"
#include "support/LibraryScope.h"

#include <vorlund/AudioPcmConverters.h>
#include <vorlund/ClassIds.h>
#include <vorlund/RefPtr.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <numeric>

namespace vorlund::test {
namespace {

class AudioPcmChannelNumberConverter : public testing::Test {
protected:
    ~AudioPcmChannelNumberConverter() noexcept override {}
    /// Connects a source of `bytes`; the former one is forgotten.
    void Connect(std::uint32_t code, std::uint32_t channels, TBytes bytes) {
        source_ = PcmSource({code, channels, 8000}, std::move(bytes), &log_);
        converter_->Connect(source_.Get());
        log_.clear();
    }
    /// One read of what `samples` become.
    template <class TSample>
    std::vector<TSample> Mix(std::uint32_t code, std::uint32_t from, std::uint32_t to,
                             const std::vector<TSample>& samples) {
        converter_->SetNumChannels(to);
        Connect(code, from, BytesOf(samples));
        return SamplesOf<TSample>(ReadOnce(*converter_, samples.size() * sizeof(TSample) / from * to));
    }

    CLibraryScope library_;
    TCallLog log_;
    CRefPtr<CFaultyInputStream> source_;
    CRefPtr<IAudioPcmChannelNumberConverter> converter_ =
        CreateAs<IAudioPcmChannelNumberConverter>(classid::CAudioPcmChannelNumberConverter);
};

TEST_F(AudioPcmChannelNumberConverter, Identity) {
    EXPECT_EQ(converter_->GetClassId(), CId(0xA95E1C18, 0xDE2A4C17, 0xBE5566E2, 0x1DED4C07));
    ExpectChain(converter_.Get(), {IInputStreamFilter::InterfaceId, IInputStream::InterfaceId,
                                   IStream::InterfaceId, IObject::InterfaceId});
    EXPECT_TRUE(converter_.Query<IAudioPcmChannelNumberConverter>());
    EXPECT_FALSE(converter_.Query<IAudioPcmSampleFormatConverter>());
}

// The target.

TEST_F(AudioPcmChannelNumberConverter, RefusesOtherNumbers) {
    const TFailure failure{VRL_L("vorlund::CAudioPcmChannelNumberConverter::SetNumChannels"),
                           VRL_L("src/vorlund/data/filters/AudioPcmChannelNumberConverter"), 593,
                           VRL_L("Channel amount must be 1, 2 or 6")};
    Connect(SAMPLE_FORMAT_8BIT, 5, {1, 2, 3, 4, 5});
    for (const std::uint32_t count : {0u, 3u, 4u, 5u, 7u, 8u, 0x40000001u, 0xFFFFFFFFu}) {
        ExpectRaises<CInvalidParameterException>(failure, [&] { converter_->SetNumChannels(count); });
    }
    // Still following.
    EXPECT_EQ(PcmText(*converter_), "code 0, channels 5, rate 8000");
    Connect(SAMPLE_FORMAT_16BIT, 1, {1, 2});
    EXPECT_EQ(PcmText(*converter_), "code 1, channels 1, rate 8000");
}

TEST_F(AudioPcmChannelNumberConverter, KeepsTheFormatAndTheRateOfItsSource) {
    converter_->SetNumChannels(6);
    EXPECT_EQ(PcmText(*converter_), "code 1, channels 6, rate 44100");
    source_ = PcmSource({SAMPLE_FORMAT_FLOAT, 2, 96000}, {});
    converter_->Connect(source_.Get());
    EXPECT_EQ(PcmText(*converter_), "code 3, channels 6, rate 96000");
    converter_->Disconnect();
    EXPECT_EQ(PcmText(*converter_), "code 3, channels 6, rate 96000");
}

TEST_F(AudioPcmChannelNumberConverter, TakesATargetAtOnce) {
    Connect(SAMPLE_FORMAT_8BIT, 2, {10, 20, 30, 40, 50, 60});
    EXPECT_EQ(ReadOnce(*converter_, 2), (TBytes{10, 20}));
    converter_->SetNumChannels(1);
    EXPECT_EQ(PcmText(*converter_), "code 0, channels 1, rate 8000");
    EXPECT_EQ(converter_->GetLength(), 3);
    EXPECT_EQ(converter_->Tell(), 1);
    EXPECT_EQ(ReadOnce(*converter_, 1), TBytes{35});
    converter_->SetNumChannels(6);
    EXPECT_EQ(ReadOnce(*converter_, 6), (TBytes{50, 60, 0x80, 0x80, 0x80, 0x80}));
    converter_->SetNumChannels(2);
    converter_->Seek(2);
    EXPECT_EQ(ReadOnce(*converter_, 3), (TBytes{30, 40, 50}));
}

TEST_F(AudioPcmChannelNumberConverter, HandsOtherNumbersThrough) {
    for (const std::uint32_t channels : {0u, 3u, 4u, 5u, 7u, 0x40000001u, 0xFFFFFFFFu}) {
        converter_->SetNumChannels(2);
        Connect(SAMPLE_FORMAT_16BIT, channels, {1, 2, 3, 4, 5});
        EXPECT_EQ(ReadOnce(*converter_, 3), (TBytes{1, 2, 3}));
        EXPECT_EQ(PcmText(*converter_), "code 1, channels 2, rate 8000");
        // The numbers are rescaled all the same.
        EXPECT_EQ(converter_->GetLength(), channels == 0 ? 0 : 10 / channels);
        EXPECT_EQ(converter_->Tell(), channels == 0 ? 0 : 6 / channels);
        converter_->Seek(2);
        EXPECT_EQ(source_->position, channels);
        source_->position = 0;
        converter_->Skip(2);
        EXPECT_EQ(source_->position, channels);
    }
    for (const std::uint32_t code : {4u, 0xFFFFFFFFu}) {
        converter_->SetNumChannels(1);
        Connect(code, 2, {1, 2, 3, 4, 5});
        EXPECT_EQ(ReadOnce(*converter_, 3), (TBytes{1, 2, 3}));
        EXPECT_EQ(converter_->GetLength(), 2);
    }
}

// The samples.

TEST_F(AudioPcmChannelNumberConverter, Examples) {
    using TS16 = std::vector<std::int16_t>;
    using TS32 = std::vector<std::int32_t>;
    using TFloats = std::vector<float>;
    EXPECT_EQ(Mix(1, 2, 1, TS16{1000, -1001}), TS16{0});
    EXPECT_EQ(Mix(1, 6, 2, TS16{100, 200, 40, 4, 8, 12}), (TS16{38, 64}));
    EXPECT_EQ(Mix(1, 2, 6, TS16{1, 2}), (TS16{1, 2, 0, 0, 0, 0}));
    EXPECT_EQ(Mix(1, 1, 2, TS16{-3, 4}), (TS16{-3, -3, 4, 4}));
    EXPECT_EQ(Mix(1, 6, 1, TS16{6, 12, 18, 24, 30, -11}), TS16{14});
    EXPECT_EQ(Mix(0, 2, 6, TBytes{1, 2}), (TBytes{1, 2, 0x80, 0x80, 0x80, 0x80}));
    EXPECT_EQ(Mix(0, 2, 1, TBytes{0xFF, 0xFF}), TBytes{0xFE});
    EXPECT_EQ(Mix(0, 6, 1, TBytes(6, 0x80)), TBytes{0x7E});
    EXPECT_EQ(Mix(0, 6, 2, TBytes{100, 200, 40, 4, 8, 12}), (TBytes{38, 64}));
    EXPECT_EQ(Mix(0, 1, 6, TBytes{9}), TBytes(6, 9));
    EXPECT_EQ(Mix(2, 2, 1, TS32{2147483647, 2147483647}), TS32{2147483646});
    EXPECT_EQ(Mix(2, 1, 6, TS32{-5}), TS32(6, -5));
    EXPECT_EQ(Mix(3, 2, 1, TFloats{0.5f, 2}), TFloats{1.25f});
    EXPECT_EQ(Mix(3, 6, 2, TFloats{1, 2, 4, 8, 16, 32}), (TFloats{7.25f, 11.5f}));
    EXPECT_EQ(Mix(3, 1, 2, TFloats{0.25f}), TFloats(2, 0.25f));
}

// How much.

TEST_F(AudioPcmChannelNumberConverter, ReadsAtMost1024BytesAtOnce) {
    converter_->SetNumChannels(2);
    Connect(SAMPLE_FORMAT_16BIT, 1, TBytes(3000));
    EXPECT_EQ(ReadOnce(*converter_, 4096).size(), 2048u);
    EXPECT_EQ(ReadOnce(*converter_, 2052).size(), 2048u);
    EXPECT_EQ(ReadOnce(*converter_, 2044).size(), 1904u);
    EXPECT_EQ(ReadOnce(*converter_, 4096).size(), 0u);
    EXPECT_EQ(log_, (TCallLog{"Read 1024", "Read 1024", "Read 1022", "Read 1024"}));
    TBytes buffer(2048);
    source_->position = 0;
    EXPECT_EQ(converter_->Read(buffer.data(), ~std::uint64_t{0}), 2048u);
    EXPECT_EQ(converter_->Read(buffer.data(), std::uint64_t{1} << 32), 2048u);
}

TEST_F(AudioPcmChannelNumberConverter, MonoBecomesSixTimesAsLong) {
    converter_->SetNumChannels(6);
    Connect(SAMPLE_FORMAT_8BIT, 1, TBytes(2000, 7));
    EXPECT_EQ(ReadOnce(*converter_, 10000), TBytes(6144, 7));
    EXPECT_EQ(source_->position, 1024);
}

TEST_F(AudioPcmChannelNumberConverter, ReadsWholeFramesOnly) {
    converter_->SetNumChannels(6);
    Connect(SAMPLE_FORMAT_16BIT, 2, TBytes(100));
    EXPECT_EQ(ReadOnce(*converter_, 0).size(), 0u);
    EXPECT_EQ(ReadOnce(*converter_, 11).size(), 0u);
    EXPECT_TRUE(log_.empty());
    EXPECT_EQ(ReadOnce(*converter_, 12).size(), 12u);
    EXPECT_EQ(ReadOnce(*converter_, 35).size(), 24u);
    EXPECT_EQ(log_, (TCallLog{"Read 4", "Read 8"}));
}

TEST_F(AudioPcmChannelNumberConverter, TheLimitCutsFrames) {
    // 1024 bytes are 42 frames of 24 bytes and 16 bytes more, and the input goes on inside a frame.
    converter_->SetNumChannels(2);
    Connect(SAMPLE_FORMAT_FLOAT, 6, BytesOf(std::vector<float>(600, 1)));
    TBytes expected = BytesOf(std::vector<float>(84, 1));
    expected.insert(expected.end(), 5, kUnwritten);
    ASSERT_EQ(expected.size(), 341u);
    EXPECT_EQ(ReadOnce(*converter_, 4096), expected);
    EXPECT_EQ(source_->position, 1024);
    EXPECT_EQ(log_, TCallLog{"Read 1024"});
    EXPECT_EQ(converter_->Tell(), 341);
    // Counts whose input stays under the limit keep to the frames.
    source_->position = 0;
    EXPECT_EQ(ReadOnce(*converter_, 336), BytesOf(std::vector<float>(84, 1)));
    EXPECT_EQ(source_->position, 1008);
}

TEST_F(AudioPcmChannelNumberConverter, LeavesAPartialFrameUnwrittenButCountsIt) {
    converter_->SetNumChannels(1);
    Connect(SAMPLE_FORMAT_16BIT, 2, {2, 0, 4, 0, 6, 0});
    EXPECT_EQ(ReadOnce(*converter_, 100), (TBytes{3, 0, kUnwritten}));
    // Unlike the converter of sample formats, this one rescales single bytes.
    Connect(SAMPLE_FORMAT_16BIT, 2, {2, 0, 4, 0, 6});
    EXPECT_EQ(ReadOnce(*converter_, 100), (TBytes{3, 0}));
    converter_->SetNumChannels(2);
    Connect(SAMPLE_FORMAT_16BIT, 1, {2, 0, 4});
    EXPECT_EQ(ReadOnce(*converter_, 100), (TBytes{2, 0, 2, 0, kUnwritten, kUnwritten}));
    Connect(SAMPLE_FORMAT_8BIT, 6, TBytes(8, 8));
    EXPECT_EQ(ReadOnce(*converter_, 100), (TBytes{8, 8}));
    Connect(SAMPLE_FORMAT_8BIT, 6, TBytes(9, 8));
    EXPECT_EQ(ReadOnce(*converter_, 100), (TBytes{8, 8, kUnwritten}));
}

TEST_F(AudioPcmChannelNumberConverter, CutsWhatAStreamClaims) {
    converter_->SetNumChannels(6);
    Connect(SAMPLE_FORMAT_8BIT, 1, TBytes(10, 5));
    for (const std::uint64_t exaggeration :
         {std::uint64_t{1}, std::uint64_t{1} << 32, ~std::uint64_t{0} - 10}) {
        source_->position = 0;
        source_->exaggeration = exaggeration;
        EXPECT_EQ(ReadOnce(*converter_, 60), TBytes(60, 5));
    }
}

TEST_F(AudioPcmChannelNumberConverter, ASourceThatChangesItsFormatDoesNoHarm) {
    converter_->SetNumChannels(1);
    Connect(SAMPLE_FORMAT_8BIT, 6, TBytes(600, 6));
    source_->format = TDataFormat_AudioPcm(SAMPLE_FORMAT_FLOAT, 1, 8000);
    EXPECT_EQ(ReadOnce(*converter_, 2000), TBytes(100, 6));
    EXPECT_EQ(converter_->GetLength(), 100);
    source_->position = 0;
    converter_->SetNumChannels(2);
    EXPECT_EQ(ReadOnce(*converter_, 2000), TBytes(200, 4));
}

// Rescaling.

TEST_F(AudioPcmChannelNumberConverter, RescalesPositions) {
    converter_->SetNumChannels(2);
    Connect(SAMPLE_FORMAT_16BIT, 1, TBytes(1000));
    EXPECT_EQ(converter_->GetLength(), 2000);
    converter_->Seek(100);
    converter_->Skip(7);
    EXPECT_EQ(converter_->Tell(), 106);
    EXPECT_EQ(log_, (TCallLog{"Seek 50", "Skip 3"}));
    Connect(SAMPLE_FORMAT_16BIT, 6, TBytes(1000));
    EXPECT_EQ(converter_->GetLength(), 333);
    converter_->Seek(7);
    converter_->Skip(3);
    EXPECT_EQ(log_, (TCallLog{"Seek 21", "Skip 9"}));
}

TEST_F(AudioPcmChannelNumberConverter, RescalesIn64BitsUnsignedAndMultipliesFirst) {
    converter_->SetNumChannels(2);
    Connect(SAMPLE_FORMAT_16BIT, 6, {});
    const auto length = [&](std::int64_t claimed) {
        source_->claimedLength = claimed;
        return converter_->GetLength();
    };
    EXPECT_EQ(length(std::int64_t{9} << 40), std::int64_t{3} << 40);
    // -3 x 2 is 2^64 - 6, and a sixth of it is positive.
    EXPECT_EQ(length(-3), 3074457345618258601);
    EXPECT_EQ(length(std::numeric_limits<std::int64_t>::min() + 9), 3);
    converter_->Seek(-1);
    EXPECT_EQ(source_->position, std::numeric_limits<std::int64_t>::max() - 2);
}

} // namespace
} // namespace vorlund::test
