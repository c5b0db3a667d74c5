// Format records: layout, identifiers, constants, sizes and the conversions between times and positions.
#include <vorlund/DataFormat.h>

#include "support/Text.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <string>
#include <type_traits>
#include <vector>

namespace vorlund::test {
namespace {

// Plain records: copies are byte copies.
template <class TRecord>
constexpr bool kIsPlain = std::is_trivially_copyable_v<TRecord>&& std::is_trivially_destructible_v<TRecord> &&
                          !std::is_polymorphic_v<TRecord> && alignof(TRecord) == 4;
static_assert(kIsPlain<TDataFormat> && sizeof(TDataFormat) == 20);
static_assert(kIsPlain<TDataFormat_AudioPcm> && sizeof(TDataFormat_AudioPcm) == 32);
static_assert(kIsPlain<TPixelFormat> && sizeof(TPixelFormat) == 40);
static_assert(kIsPlain<TDataFormat_ImageRgb> && sizeof(TDataFormat_ImageRgb) == 68);
static_assert(kIsPlain<TDataFormat_VideoRgb> && sizeof(TDataFormat_VideoRgb) == 92);

constexpr std::int64_t kMin = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t kMax = std::numeric_limits<std::int64_t>::max();
constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
/// The greatest float below 2^63.
constexpr float kBelowLimit = 9223371487098961920.0F;

/// Equal, or both not a number.
void ExpectSeconds(float actual, float expected) {
    if (std::isnan(expected)) {
        EXPECT_TRUE(std::isnan(actual)) << actual;
    } else {
        EXPECT_EQ(actual, expected);
    }
}

/// The 32-bit words of a record.
template <class TRecord> std::vector<std::uint32_t> WordsOf(const TRecord& record) {
    std::vector<std::uint32_t> words(sizeof record / 4);
    std::memcpy(words.data(), &record, sizeof record);
    return words;
}

std::uint32_t BitsOf(float value) {
    std::uint32_t bits;
    std::memcpy(&bits, &value, sizeof bits);
    return bits;
}

// Records.

struct TRecordRow {
    const char* name;
    TDataFormat head;
    CId id;
    std::uint32_t size;
};
class DataFormatHead : public testing::TestWithParam<TRecordRow> {};

TEST_P(DataFormatHead, IdentifierAndSize) {
    EXPECT_EQ(Narrow(GetParam().head.id.ToString()), Narrow(GetParam().id.ToString()));
    EXPECT_EQ(GetParam().head.size, GetParam().size);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, DataFormatHead,
    testing::Values(
        TRecordRow{"Default", TDataFormat(), {0, 0, 0, 0}, 20},
        TRecordRow{"Empty", GetEmptyFormat(), {0, 0, 0, 0}, 20},
        TRecordRow{"AudioPcm", TDataFormat_AudioPcm(), {0x47A8ECCB, 0x40364B9F, 0xA014B125, 0x721626DF}, 32},
        TRecordRow{"ImageRgb", TDataFormat_ImageRgb(), {0xA50703CF, 0x72074A9B, 0x88FADF0C, 0xCCB1EEA5}, 68},
        TRecordRow{"VideoRgb", TDataFormat_VideoRgb(), {0x1EF1EB17, 0xD158429A, 0x862DA3D5, 0x897BF1D1}, 92},
        TRecordRow{"ImageInVideo",
                   TDataFormat_VideoRgb().image,
                   {0xA50703CF, 0x72074A9B, 0x88FADF0C, 0xCCB1EEA5},
                   68}),
    [](const auto& row) { return row.param.name; });

TEST(DataFormat, EmptyFormatIsOneRecord) {
    EXPECT_EQ(&GetEmptyFormat(), &GetEmptyFormat());
}

TEST(DataFormat, RecordsLieInTheOrderOfTheirFields) {
    EXPECT_EQ(WordsOf(TDataFormat{{1, 2, 3, 4}, 5}), (std::vector<std::uint32_t>{1, 2, 3, 4, 5}));
    EXPECT_EQ(WordsOf(TDataFormat_AudioPcm(3, 6, 48000)),
              (std::vector<std::uint32_t>{0x47A8ECCB, 0x40364B9F, 0xA014B125, 0x721626DF, 32, 3, 6, 48000}));
    EXPECT_EQ(WordsOf(TPixelFormat{1, 2, 3, 4, 5, 6, 7, 8, 9, 10}),
              (std::vector<std::uint32_t>{1, 2, 3, 4, 5, 6, 7, 8, 9, 10}));
    TDataFormat_ImageRgb image;
    image.pixelFormat = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10};
    image.width = 11;
    image.height = 12;
    EXPECT_EQ(WordsOf(image), (std::vector<std::uint32_t>{0xA50703CF, 0x72074A9B, 0x88FADF0C, 0xCCB1EEA5, 68,
                                                          1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}));
}

TEST(DataFormat, VideoDefaults) {
    TDataFormat_VideoRgb video;
    std::memset(static_cast<void*>(&video), 0xA5, sizeof video);
    video.SetDefaults();
    EXPECT_EQ(WordsOf(video), (std::vector<std::uint32_t>{0x1EF1EB17,
                                                          0xD158429A,
                                                          0x862DA3D5,
                                                          0x897BF1D1,
                                                          92,
                                                          0xA50703CF,
                                                          0x72074A9B,
                                                          0x88FADF0C,
                                                          0xCCB1EEA5,
                                                          68,
                                                          0,
                                                          32,
                                                          8,
                                                          0,
                                                          8,
                                                          8,
                                                          8,
                                                          16,
                                                          8,
                                                          24,
                                                          640,
                                                          480,
                                                          BitsOf(30.0F)}));
    EXPECT_EQ(video.image.GetSizeInBytes(), 1228800U);
    EXPECT_EQ(video.TimeToByte(1.0F), 36864000);
    EXPECT_EQ(video.ByteToTime(1228799), 0.0F);
    EXPECT_EQ(video.ByteToTime(1228800), static_cast<float>(1 / 30.0));
}

// Constants.

struct TAudioConstantRow {
    const char* name;
    const TDataFormat_AudioPcm* format;
    std::uint32_t channels;
};
class DataFormatAudioConstant : public testing::TestWithParam<TAudioConstantRow> {};

TEST_P(DataFormatAudioConstant, Fields) {
    const TDataFormat_AudioPcm& format = *GetParam().format;
    EXPECT_EQ(format.id, TDataFormat_AudioPcm::FormatId);
    EXPECT_EQ(format.size, 32U);
    EXPECT_EQ(format.sampleFormat, 1U);
    EXPECT_EQ(format.channels, GetParam().channels);
    EXPECT_EQ(format.samplesPerSec, 44100U);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, DataFormatAudioConstant,
    testing::Values(TAudioConstantRow{"Mono", &TDataFormat_AudioPcm::FORMAT_44100HZ_16BIT_MONO, 1},
                    TAudioConstantRow{"Stereo", &TDataFormat_AudioPcm::FORMAT_44100HZ_16BIT_STEREO, 2},
                    TAudioConstantRow{"Surround", &TDataFormat_AudioPcm::FORMAT_44100HZ_16BIT_51, 6}),
    [](const auto& row) { return row.param.name; });

struct TPixelConstantRow {
    const char* name;
    const TPixelFormat* format;
    TPixelFormat fields;
};
#define PIXEL_ROW(name, ...)                                                                                 \
    TPixelConstantRow {                                                                                      \
#name, &TPixelFormat::FORMAT_##name, TPixelFormat {                                                  \
            __VA_ARGS__                                                                                      \
        }                                                                                                    \
    }
const TPixelConstantRow kPixelConstants[] = {
    PIXEL_ROW(A1, 0, 1, 1, 0, 0, 0, 0, 0, 0, 0),
    PIXEL_ROW(A8, 0, 8, 8, 0, 0, 0, 0, 0, 0, 0),
    PIXEL_ROW(A8R8G8B8, 0, 32, 8, 0, 8, 8, 8, 16, 8, 24),
    PIXEL_ROW(R3G3B2),
    PIXEL_ROW(R5G6B5),
    PIXEL_ROW(A1R5G5B5),
    PIXEL_ROW(R5G5B5A1),
    PIXEL_ROW(A2R2G2B2),
    PIXEL_ROW(R2G2B2A2),
    PIXEL_ROW(R8G8B8A8),
    PIXEL_ROW(A2R10G10B10),
    PIXEL_ROW(R10G10B10A2),
    PIXEL_ROW(R11G11B10),
    PIXEL_ROW(R16G16B16),
    PIXEL_ROW(R16G16B16A16),
    PIXEL_ROW(A16R16G16B16),
    PIXEL_ROW(A32),
    PIXEL_ROW(A32F),
    PIXEL_ROW(A32R32G32B32),
    PIXEL_ROW(R32G32B32A32),
    PIXEL_ROW(A32R32G32B32F),
    PIXEL_ROW(R32G32B32A32F),
};
#undef PIXEL_ROW
class DataFormatPixelConstant : public testing::TestWithParam<TPixelConstantRow> {};

TEST_P(DataFormatPixelConstant, Fields) {
    EXPECT_EQ(WordsOf(*GetParam().format), WordsOf(GetParam().fields));
    for (const TPixelConstantRow& other : kPixelConstants) {
        EXPECT_EQ(*GetParam().format == *other.format, WordsOf(GetParam().fields) == WordsOf(other.fields))
            << other.name;
    }
}

INSTANTIATE_TEST_SUITE_P(Rows, DataFormatPixelConstant, testing::ValuesIn(kPixelConstants),
                         [](const auto& row) { return row.param.name; });

TEST(DataFormat, PixelFormatsAreEqualWhenAllTenWordsAre) {
    EXPECT_TRUE(TPixelFormat::FORMAT_R5G6B5 == TPixelFormat::FORMAT_A32F);
    EXPECT_TRUE(TPixelFormat::FORMAT_A8 != TPixelFormat::FORMAT_A1);
    for (std::size_t word = 0; word < 10; ++word) {
        TPixelFormat changed = TPixelFormat::FORMAT_A8R8G8B8;
        std::uint32_t value;
        char* const at = reinterpret_cast<char*>(&changed) + 4 * word;
        std::memcpy(&value, at, 4);
        value ^= 0x80000000;
        std::memcpy(at, &value, 4);
        EXPECT_FALSE(changed == TPixelFormat::FORMAT_A8R8G8B8) << word;
        EXPECT_TRUE(changed != TPixelFormat::FORMAT_A8R8G8B8) << word;
    }
}

// Sizes.

struct TAudioSizeRow {
    const char* name;
    TDataFormat_AudioPcm format;
    std::uint32_t sampleSize;
    std::uint32_t blockSize;
    std::uint32_t bytesPerSec;
    std::uint8_t zeroByte;
};
class DataFormatAudioSize : public testing::TestWithParam<TAudioSizeRow> {};

TEST_P(DataFormatAudioSize, Sizes) {
    const auto& [name, format, sampleSize, blockSize, bytesPerSec, zeroByte] = GetParam();
    EXPECT_EQ(format.GetSampleSize(), sampleSize);
    EXPECT_EQ(format.GetBlockSize(), blockSize);
    EXPECT_EQ(format.GetBytesPerSec(), bytesPerSec);
    EXPECT_EQ(format.GetZeroByte(), zeroByte);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, DataFormatAudioSize,
    testing::Values(TAudioSizeRow{"Stereo16", TDataFormat_AudioPcm::FORMAT_44100HZ_16BIT_STEREO, 2, 4, 176400,
                                  0},
                    TAudioSizeRow{"Mono8", {0, 1, 8000}, 1, 1, 8000, 128},
                    TAudioSizeRow{"Integer32", {2, 2, 48000}, 4, 8, 384000, 0},
                    TAudioSizeRow{"Float32", {3, 6, 96000}, 4, 24, 2304000, 0},
                    TAudioSizeRow{"Code4", {4, 2, 44100}, 0, 0, 0, 0},
                    TAudioSizeRow{"Code7", {7, 2, 44100}, 0, 0, 0, 0},
                    TAudioSizeRow{"Code2To32Minus1", {0xFFFFFFFF, 2, 44100}, 0, 0, 0, 0},
                    TAudioSizeRow{"NoChannels", {1, 0, 44100}, 2, 0, 0, 0},
                    TAudioSizeRow{"BlockSizeWraps", {1, 0x80000001, 3}, 2, 2, 6, 0},
                    TAudioSizeRow{"BytesPerSecWrap", {2, 0x10000, 0x4001}, 4, 0x40000, 0x40000, 0}),
    [](const auto& row) { return row.param.name; });

struct TImageSizeRow {
    const char* name;
    std::uint32_t bitsPerPixel;
    std::uint32_t width;
    std::uint32_t height;
    std::uint32_t widthInBytes;
    std::uint32_t sizeInPixels;
    std::uint32_t sizeInBytes;
};
class DataFormatImageSize : public testing::TestWithParam<TImageSizeRow> {};

TEST_P(DataFormatImageSize, Sizes) {
    TDataFormat_ImageRgb image;
    image.pixelFormat.bitsPerPixel = GetParam().bitsPerPixel;
    image.width = GetParam().width;
    image.height = GetParam().height;
    EXPECT_EQ(image.GetWidthInBytes(), GetParam().widthInBytes);
    EXPECT_EQ(image.GetSizeInPixels(), GetParam().sizeInPixels);
    EXPECT_EQ(image.GetSizeInBytes(), GetParam().sizeInBytes);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, DataFormatImageSize,
    testing::Values(TImageSizeRow{"Vga", 32, 640, 480, 2560, 307200, 1228800},
                    TImageSizeRow{"ThreePixelsOfOneBit", 1, 3, 1, 0, 3, 0},
                    // Nine bits in all, though no row holds a whole byte.
                    TImageSizeRow{"RowsAreNotRounded", 1, 3, 3, 0, 9, 1},
                    TImageSizeRow{"TwelveBits", 12, 3, 3, 4, 9, 13}, TImageSizeRow{"Zero", 0, 0, 0, 0, 0, 0},
                    TImageSizeRow{"WidthWraps", 8, 0x20000001, 1, 1, 0x20000001, 1},
                    TImageSizeRow{"PixelsWrap", 32, 0x10000, 0x10001, 0x40000, 0x10000, 0x40000},
                    TImageSizeRow{"PixelsWrapToZero", 32, 0x10000, 0x10000, 0x40000, 0, 0},
                    TImageSizeRow{"BitsWrap", 32, 0x8000000, 2, 0, 0x10000000, 0},
                    TImageSizeRow{"Greatest", 0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF, 0, 1, 0x1FFFFFFF}),
    [](const auto& row) { return row.param.name; });

// Times.

struct TAudioTimeRow {
    const char* name;
    TDataFormat_AudioPcm format;
    float seconds;
    std::int64_t sample;
    std::int64_t byte;
};
class DataFormatAudioTime : public testing::TestWithParam<TAudioTimeRow> {};

TEST_P(DataFormatAudioTime, Positions) {
    EXPECT_EQ(GetParam().format.TimeToSample(GetParam().seconds), GetParam().sample);
    EXPECT_EQ(GetParam().format.TimeToByte(GetParam().seconds), GetParam().byte);
}

constexpr TDataFormat_AudioPcm kStereo{1, 2, 44100};
/// One byte and one frame per second.
constexpr TDataFormat_AudioPcm kUnit{0, 1, 1};
INSTANTIATE_TEST_SUITE_P(
    Rows, DataFormatAudioTime,
    testing::Values(
        TAudioTimeRow{"Zero", kStereo, 0.0F, 0, 0}, TAudioTimeRow{"MinusZero", kStereo, -0.0F, 0, 0},
        TAudioTimeRow{"OneSecond", kStereo, 1.0F, 44100, 176400},
        TAudioTimeRow{"Truncated", kStereo, 0.99999F, 44099, 176396},
        TAudioTimeRow{"TruncatedTowardZero", kStereo, -0.99999F, -44099, -176396},
        TAudioTimeRow{"BelowOneFrame", kStereo, 0.00002F, 0, 0},
        // 44113229.46...: a product in single precision would be a multiple of 4.
        TAudioTimeRow{"DoublePrecision", kStereo, 1000.3F, 44113229, 176452916},
        TAudioTimeRow{"NotANumber", kUnit, kNaN, kMin, kMin},
        TAudioTimeRow{"Infinity", kUnit, kInfinity, kMin, kMin},
        TAudioTimeRow{"MinusInfinity", kUnit, -kInfinity, kMin, kMin},
        TAudioTimeRow{"Huge", kUnit, 1e30F, kMin, kMin},
        TAudioTimeRow{"MinusHuge", kUnit, -1e30F, kMin, kMin},
        TAudioTimeRow{"LimitItself", kUnit, 0x1p63F, kMin, kMin},
        TAudioTimeRow{"MinusLimit", kUnit, -0x1p63F, kMin, kMin},
        TAudioTimeRow{"BelowLimit", kUnit, kBelowLimit, 9223371487098961920, 9223371487098961920},
        TAudioTimeRow{"AboveMinusLimit", kUnit, -kBelowLimit, -9223371487098961920, -9223371487098961920},
        TAudioTimeRow{"ProductAtLimit", {0, 1, 2}, 0x1p62F, kMin, kMin},
        TAudioTimeRow{"GreatestRate", {0, 1, 0xFFFFFFFF}, 0x1p31F, 9223372034707292160, 9223372034707292160},
        TAudioTimeRow{"NoRate", {1, 2, 0}, 5.0F, 0, 0},
        TAudioTimeRow{"NoRateForever", {0, 1, 0}, kInfinity, kMin, kMin},
        TAudioTimeRow{"NoBlock", {7, 2, 44100}, 1.0F, 44100, 0},
        TAudioTimeRow{"NotANumberTimesFour", kStereo, kNaN, kMin, 0},
        TAudioTimeRow{"NotANumberTimesThree", {0, 3, 1}, kNaN, kMin, kMin},
        TAudioTimeRow{"ProductWrapsToZero", {1, 2, 1}, 0x1p62F, 0x4000000000000000, 0},
        TAudioTimeRow{"ProductWrapsToTheLeast", {1, 3, 1}, 0x1p62F, 0x4000000000000000, kMin},
        TAudioTimeRow{"ProductWrapsToSmall", {1, 3, 3}, 0x1p60F, 0x3000000000000000, 0x2000000000000000},
        TAudioTimeRow{"NegativeProductWraps", {1, 3, 3}, -0x1p60F, -0x3000000000000000, -0x2000000000000000}),
    [](const auto& row) { return row.param.name; });

struct TAudioSecondsRow {
    const char* name;
    TDataFormat_AudioPcm format;
    std::int64_t position;
    float sampleSeconds;
    float byteSeconds;
};
class DataFormatAudioSeconds : public testing::TestWithParam<TAudioSecondsRow> {};

TEST_P(DataFormatAudioSeconds, Seconds) {
    ExpectSeconds(GetParam().format.SampleToTime(GetParam().position), GetParam().sampleSeconds);
    ExpectSeconds(GetParam().format.ByteToTime(GetParam().position), GetParam().byteSeconds);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, DataFormatAudioSeconds,
    testing::Values(
        TAudioSecondsRow{"Zero", kStereo, 0, 0.0F, 0.0F},
        TAudioSecondsRow{"InsideAFrame", kStereo, 2, static_cast<float>(2 / 44100.0),
                         static_cast<float>(2 / 176400.0)},
        TAudioSecondsRow{"OneSecond", kStereo, 176400, 4.0F, 1.0F},
        TAudioSecondsRow{"Negative", kStereo, -88200, -2.0F, -0.5F},
        TAudioSecondsRow{"Third", {0, 1, 3}, 1, static_cast<float>(1 / 3.0), static_cast<float>(1 / 3.0)},
        TAudioSecondsRow{"Greatest", kUnit, kMax, 0x1p63F, 0x1p63F},
        TAudioSecondsRow{"Least", kUnit, kMin, -0x1p63F, -0x1p63F},
        // 16777217 has no single-precision form.
        TAudioSecondsRow{"DoublePrecision", kStereo, 16777217, static_cast<float>(16777217 / 44100.0),
                         static_cast<float>(16777217 / 176400.0)},
        TAudioSecondsRow{"NoRate", {1, 2, 0}, 1, kInfinity, kInfinity},
        TAudioSecondsRow{"NoRateNegative", {1, 2, 0}, -1, -kInfinity, -kInfinity},
        TAudioSecondsRow{"NothingByNothing", {1, 2, 0}, 0, kNaN, kNaN},
        TAudioSecondsRow{"NoBlock", {7, 2, 44100}, 44100, 1.0F, kInfinity}),
    [](const auto& row) { return row.param.name; });

/// A video of frames of `frameSize` bytes.
TDataFormat_VideoRgb Video(float frameRate, std::uint32_t frameSize) {
    TDataFormat_VideoRgb video;
    video.frameRate = frameRate;
    video.image.pixelFormat.bitsPerPixel = 8;
    video.image.width = frameSize;
    video.image.height = 1;
    return video;
}

struct TVideoTimeRow {
    const char* name;
    float frameRate;
    std::uint32_t frameSize;
    float seconds;
    std::int64_t frame;
    std::int64_t byte;
};
class DataFormatVideoTime : public testing::TestWithParam<TVideoTimeRow> {};

TEST_P(DataFormatVideoTime, Positions) {
    const TDataFormat_VideoRgb video = Video(GetParam().frameRate, GetParam().frameSize);
    EXPECT_EQ(video.TimeToFrame(GetParam().seconds), GetParam().frame);
    EXPECT_EQ(video.TimeToByte(GetParam().seconds), GetParam().byte);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, DataFormatVideoTime,
    testing::Values(TVideoTimeRow{"OneSecond", 30.0F, 1000, 1.0F, 30, 30000},
                    TVideoTimeRow{"Truncated", 30.0F, 1000, 0.999F, 29, 29000},
                    TVideoTimeRow{"TruncatedTowardZero", 30.0F, 1000, -0.999F, -29, -29000},
                    TVideoTimeRow{"Ntsc", 29.97F, 10, 1000.0F, 29969, 299690},
                    TVideoTimeRow{"NotANumber", 30.0F, 1, kNaN, kMin, kMin},
                    TVideoTimeRow{"RateNotANumber", kNaN, 1, 1.0F, kMin, kMin},
                    TVideoTimeRow{"Infinity", 30.0F, 1, kInfinity, kMin, kMin},
                    TVideoTimeRow{"MinusInfinity", 30.0F, 3, -kInfinity, kMin, kMin},
                    TVideoTimeRow{"Huge", 1e38F, 2, 1e38F, kMin, 0},
                    TVideoTimeRow{"MinusLimit", 1.0F, 1, -0x1p63F, kMin, kMin},
                    TVideoTimeRow{"NoRate", 0.0F, 1000, 5.0F, 0, 0},
                    TVideoTimeRow{"NegativeRate", -30.0F, 1000, 1.0F, -30, -30000},
                    TVideoTimeRow{"ProductWraps", 1.0F, 6, 0x1p61F, 0x2000000000000000, -0x4000000000000000},
                    TVideoTimeRow{"NoFrameSize", 30.0F, 0, 1.0F, 30, 0}),
    [](const auto& row) { return row.param.name; });

struct TVideoSecondsRow {
    const char* name;
    float frameRate;
    std::uint32_t frameSize;
    std::int64_t position;
    float frameSeconds;
    float byteSeconds;
};
class DataFormatVideoSeconds : public testing::TestWithParam<TVideoSecondsRow> {};

TEST_P(DataFormatVideoSeconds, Seconds) {
    const TDataFormat_VideoRgb video = Video(GetParam().frameRate, GetParam().frameSize);
    ExpectSeconds(video.FrameToTime(GetParam().position), GetParam().frameSeconds);
    ExpectSeconds(video.ByteToTime(GetParam().position), GetParam().byteSeconds);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, DataFormatVideoSeconds,
    testing::Values(TVideoSecondsRow{"Zero", 30.0F, 1000, 0, 0.0F, 0.0F},
                    TVideoSecondsRow{"LastByteOfAFrame", 25.0F, 1000, 999, 39.96F, 0.0F},
                    TVideoSecondsRow{"FirstByteOfAFrame", 25.0F, 1000, 1000, 40.0F, 0.04F},
                    TVideoSecondsRow{"Negative", 25.0F, 1000, -1999, -79.96F, -0.04F},
                    TVideoSecondsRow{"Greatest", 1.0F, 1, kMax, 0x1p63F, 0x1p63F},
                    TVideoSecondsRow{"Least", 1.0F, 1, kMin, -0x1p63F, -0x1p63F},
                    TVideoSecondsRow{"NoRate", 0.0F, 1, 1, kInfinity, kInfinity},
                    TVideoSecondsRow{"NothingByNothing", 0.0F, 2, 0, kNaN, kNaN},
                    TVideoSecondsRow{"QuotientBeyondFloats", 1e-38F, 1, kMax, kInfinity, kInfinity},
                    TVideoSecondsRow{"NoFrameSize", 30.0F, 0, 30, 1.0F, 0.0F}),
    [](const auto& row) { return row.param.name; });

} // namespace
} // namespace vorlund::test
