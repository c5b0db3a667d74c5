// The plasma generator.
#include <vorlund/ClassIds.h>
#include <vorlund/PlasmaVideoGenerator.h>

#include "data/base/InterfaceChain.h"
#include "data/sources/EndlessSources.h"
#include "data/sources/PlasmaModel.h"
#include "support/LibraryScope.h"

#include <new>

namespace vorlund::test {
namespace {

constexpr const wchar* kFile = VRL_L("src/vorlund/data/sources/PlasmaVideoGenerator");
constexpr const wchar* kRead = VRL_L("vorlund::CPlasmaVideoGenerator::Read");
constexpr const wchar* kSetFormat = VRL_L("vorlund::CPlasmaVideoGenerator::SetFormat");
constexpr TEndlessRows kRows{
    {VRL_L("vorlund::CPlasmaVideoGenerator::Seek"), kFile, 135, VRL_L("Seek is not supported")},
    {VRL_L("vorlund::CPlasmaVideoGenerator::Tell"), kFile, 139, VRL_L("Tell is not supported")},
    {VRL_L("vorlund::CPlasmaVideoGenerator::GetLength"), kFile, 147, VRL_L("GetLength is not supported")},
    {kRead, kFile, 152, VRL_L("buffer is NULL")},
    {kRead, kFile, 170, VRL_L("sample is NULL")},
    {kRead, kFile, 171, VRL_L("Media samples are not supported")}};
constexpr TFailure kFormatIsNull{kSetFormat, kFile, 180, VRL_L("format is NULL")};
constexpr TFailure kUnsupportedFormat{kSetFormat, kFile, 181, VRL_L("Unsupported format ID")};

class PlasmaVideoGenerator : public testing::Test {
protected:
    ~PlasmaVideoGenerator() noexcept override {}
    void SetSize(std::uint32_t width, std::uint32_t height) {
        const TDataFormat_VideoRgb format = VideoFormat(width, height);
        generator_->SetFormat(&format);
    }
    /// Whole frames from number `first` on, each equal to the definition.
    void ExpectFrames(std::uint32_t width, std::uint32_t height, std::uint32_t first, std::uint32_t count) {
        for (std::uint32_t t = first; t < first + count; ++t) {
            ASSERT_EQ(ReadPixels(*generator_, std::size_t{width} * height), PlasmaFrame(width, height, t))
                << width << " x " << height << ", frame " << t;
        }
    }

    CLibraryScope library_;
    CRefPtr<IPlasmaVideoGenerator> generator_ =
        CreateAs<IPlasmaVideoGenerator>(classid::CPlasmaVideoGenerator);
};

TEST_F(PlasmaVideoGenerator, Identity) {
    EXPECT_EQ(generator_->GetClassId(), CId(0x7C9D79C6, 0x9C43493B, 0xA216D830, 0x03F13ADF));
    ExpectChain(generator_.Get(), {IPlasmaVideoGenerator::InterfaceId, IInputStream::InterfaceId,
                                   IStream::InterfaceId, IObject::InterfaceId});
}

TEST_F(PlasmaVideoGenerator, IsEndless) {
    SetSize(4, 2);
    ExpectEndless(*generator_, kRows, 0);
    ExpectFrames(4, 2, 0, 1);
    ExpectEndless(*generator_, kRows, 0);
    ExpectFrames(4, 2, 1, 1);
}

// Formats.

TEST_F(PlasmaVideoGenerator, FormatAtFirst) {
    ExpectVideoFormat(generator_->GetFormat(), 400, 300, 30);
    // The constant of the same name has other shifts.
    EXPECT_NE(static_cast<const TDataFormat_VideoRgb&>(generator_->GetFormat()).image.pixelFormat,
              TPixelFormat::FORMAT_A8R8G8B8);
}

TEST_F(PlasmaVideoGenerator, TakesSizeAndRateOnly) {
    const TDataFormat_VideoRgb format = VideoFormat(320, 240, 12.5F);
    EXPECT_EQ(generator_->SetFormat(&format), generator_.Get());
    EXPECT_EQ(ReferencesOf(generator_.Get()), 1);
    ExpectVideoFormat(generator_->GetFormat(), 320, 240, 12.5F);
    TBytes frame(400000);
    EXPECT_EQ(generator_->Read(frame.data(), frame.size()), 307200U);
}

TEST_F(PlasmaVideoGenerator, OtherFormatsAreRefused) {
    const TDataFormat_ImageRgb image;
    const TDataFormat* const formats[] = {&TDataFormat_AudioPcm::FORMAT_44100HZ_16BIT_MONO, &image,
                                          &GetEmptyFormat()};
    for (const TDataFormat* const format : formats) {
        ExpectRaises<CDataFormatException>(kUnsupportedFormat, [&] { generator_->SetFormat(format); });
    }
    ExpectRaises<CNullPtrException>(kFormatIsNull, [&] { generator_->SetFormat(nullptr); });
    ExpectVideoFormat(generator_->GetFormat(), 400, 300, 30);
}

TEST_F(PlasmaVideoGenerator, MayTakeItsOwnFormat) {
    SetSize(3, 5);
    generator_->SetFormat(&generator_->GetFormat());
    ExpectVideoFormat(generator_->GetFormat(), 3, 5, 25);
}

// Pictures.

TEST_F(PlasmaVideoGenerator, FirstPixel) {
    SetSize(1, 1);
    EXPECT_EQ(ReadPixels(*generator_, 1), std::vector<std::uint32_t>{0xFFCCFF88});
}

TEST_F(PlasmaVideoGenerator, WaveOfTheModel) {
    // The model's table at places that are known, and no value near enough to the next integer for another C
    // library's sine to matter.
    const std::vector<int> wave = PlasmaWave();
    EXPECT_EQ(wave[0], 127);
    EXPECT_EQ(wave[64], 253);
    EXPECT_EQ(wave[125], 136);
    EXPECT_EQ(wave[128], 126);
    EXPECT_EQ(wave[192], 0);
}

TEST_F(PlasmaVideoGenerator, FirstTwoFramesOfTheDefaultSize) {
    ExpectFrames(400, 300, 0, 2);
}

TEST_F(PlasmaVideoGenerator, OddAndLargeSizes) {
    const std::pair<std::uint32_t, std::uint32_t> sizes[] = {
        {1, 1},     {1, 600},   {600, 1},   {3, 7},   {37, 23},   {255, 5},  {511, 3},
        {512, 512}, {513, 515}, {515, 513}, {5, 513}, {1025, 33}, {1537, 2}, {17, 1100}};
    std::uint32_t t = 0;
    for (const auto& [width, height] : sizes) {
        SetSize(width, height);
        ExpectFrames(width, height, t, 2);
        t += 2;
    }
}

TEST_F(PlasmaVideoGenerator, ManyFrames) {
    const std::pair<std::uint32_t, std::uint32_t> sizes[] = {{1, 1}, {7, 3}, {1, 5}, {9, 1}};
    std::uint32_t t = 0;
    for (const auto& [width, height] : sizes) {
        SetSize(width, height);
        ExpectFrames(width, height, t, 600);
        t += 600;
    }
}

TEST_F(PlasmaVideoGenerator, AnyAlignment) {
    SetSize(21, 5);
    for (std::uint32_t t = 0; t < 20; ++t) {
        TBytes block(500, 0xA5);
        EXPECT_EQ(generator_->Read(block.data() + t, 420), 420U);
        const std::vector<std::uint32_t> pixels = PlasmaFrame(21, 5, t);
        TBytes expected(t, 0xA5);
        for (const std::uint32_t pixel : pixels) {
            for (int shift = 0; shift < 32; shift += 8)
                expected.push_back(static_cast<std::uint8_t>(pixel >> shift));
        }
        expected.resize(500, 0xA5);
        EXPECT_EQ(block, expected) << t;
    }
}

// Reading.

TEST_F(PlasmaVideoGenerator, OneFrameAtMost) {
    SetSize(4, 2);
    for (std::uint32_t t = 0; t < 3; ++t) {
        std::uint32_t pixels[20] = {};
        EXPECT_EQ(generator_->Read(pixels, sizeof pixels), 32U);
        const std::vector<std::uint32_t> frame = PlasmaFrame(4, 2, t);
        EXPECT_EQ(std::vector<std::uint32_t>(pixels, pixels + 8), frame);
        EXPECT_EQ(pixels[8], 0U);
    }
}

TEST_F(PlasmaVideoGenerator, PiecesAreTheFirstBytesAgainAndAgain) {
    SetSize(4, 2);
    for (std::uint32_t t = 0; t < 3; ++t) {
        const std::vector<std::uint32_t> frame = PlasmaFrame(4, 2, t);
        for (const std::size_t count : {3U, 1U, 4U}) {
            EXPECT_EQ(ReadPixels(*generator_, count),
                      std::vector<std::uint32_t>(frame.begin(),
                                                 frame.begin() + static_cast<std::ptrdiff_t>(count)));
        }
    }
}

TEST_F(PlasmaVideoGenerator, PiecesThatOvershootStayAtTheirFrame) {
    SetSize(4, 2);
    const std::vector<std::uint32_t> frame = PlasmaFrame(4, 2, 0);
    for (int i = 0; i < 10; ++i) {
        EXPECT_EQ(ReadPixels(*generator_, 3), std::vector<std::uint32_t>(frame.begin(), frame.begin() + 3));
    }
    for (int i = 0; i < 3; ++i) EXPECT_EQ(ReadPixels(*generator_, 8), frame);
}

TEST_F(PlasmaVideoGenerator, ReadingNothingMakesTheFrame) {
    SetSize(4, 2);
    std::uint8_t byte = 42;
    EXPECT_EQ(generator_->Read(&byte, 0), 0U);
    EXPECT_EQ(generator_->Read(&byte, 0), 0U);
    EXPECT_EQ(byte, 42);
    ExpectFrames(4, 2, 0, 2);
}

TEST_F(PlasmaVideoGenerator, ANewFormatWaitsForTheNextFrame) {
    SetSize(4, 2);
    const std::vector<std::uint32_t> first = PlasmaFrame(4, 2, 0);
    EXPECT_EQ(ReadPixels(*generator_, 2), std::vector<std::uint32_t>(first.begin(), first.begin() + 2));
    SetSize(3, 1);
    std::uint32_t pixels[20] = {};
    // The size of the frame that there is limits the read.
    EXPECT_EQ(generator_->Read(pixels, 24), 24U);
    EXPECT_EQ(std::vector<std::uint32_t>(pixels, pixels + 6),
              std::vector<std::uint32_t>(first.begin(), first.begin() + 6));
    ExpectFrames(3, 1, 1, 1);
    SetSize(2, 2);
    ExpectFrames(2, 2, 2, 1);
}

TEST_F(PlasmaVideoGenerator, ANewFormatWithinAFrameOfMorePixels) {
    SetSize(4, 2);
    ReadPixels(*generator_, 2);
    SetSize(100, 100);
    std::uint32_t pixels[20] = {};
    EXPECT_EQ(generator_->Read(pixels, sizeof pixels), 32U);
    EXPECT_EQ(generator_->Read(pixels, sizeof pixels), 32U);
}

TEST_F(PlasmaVideoGenerator, FramesWithoutPixels) {
    std::uint8_t byte = 42;
    std::uint32_t t = 0;
    const std::pair<std::uint32_t, std::uint32_t> sizes[] = {{0, 0}, {0, 7}, {7, 0}, {0, ~0U}, {~0U, 0}};
    for (const auto& [width, height] : sizes) {
        SetSize(width, height);
        for (const std::uint64_t size : {std::uint64_t{0}, std::uint64_t{1}, std::uint64_t{1}}) {
            EXPECT_EQ(generator_->Read(&byte, size), 0U);
            ++t;
        }
    }
    EXPECT_EQ(byte, 42);
    SetSize(4, 2);
    // Each of them was a frame.
    ExpectFrames(4, 2, t, 1);
    ReadPixels(*generator_, 2);
    SetSize(0, 1);
    ReadPixels(*generator_, 6);
    EXPECT_EQ(generator_->Read(&byte, 1), 0U);
    SetSize(4, 2);
    ExpectFrames(4, 2, t + 3, 1);
}

TEST_F(PlasmaVideoGenerator, FramesBeyond32BitsAreRefused) {
    SetSize(4, 2);
    ExpectFrames(4, 2, 0, 1);
    std::uint32_t t = 1;
    for (const auto& [width, height] : kTooLargeSizes) {
        SetSize(width, height);
        std::uint32_t pixels[20] = {};
        for (const std::uint64_t size : {std::uint64_t{sizeof pixels}, std::uint64_t{0}, std::uint64_t{80}}) {
            EXPECT_THROW(generator_->Read(pixels, size), std::bad_alloc) << width << " x " << height;
        }
        EXPECT_EQ(pixels[0], 0U);
        // No frame was made, and it goes on with a size that can be.
        SetSize(4, 2);
        ExpectFrames(4, 2, t++, 1);
    }
}

TEST_F(PlasmaVideoGenerator, ATooLargeFormatSparesTheFrameThatThereIs) {
    SetSize(4, 2);
    const std::vector<std::uint32_t> frame = PlasmaFrame(4, 2, 0);
    ReadPixels(*generator_, 2);
    SetSize(65536, 65536);
    EXPECT_EQ(ReadPixels(*generator_, 6), std::vector<std::uint32_t>(frame.begin(), frame.begin() + 6));
    std::uint32_t pixel = 0;
    EXPECT_THROW(generator_->Read(&pixel, 4), std::bad_alloc);
}

} // namespace
} // namespace vorlund::test
