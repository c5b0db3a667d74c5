// The callback video source.
#include <vorlund/CbVideoSource.h>
#include <vorlund/ClassIds.h>
#include <vorlund/StreamSelector.h>

#include "data/base/InterfaceChain.h"
#include "data/sources/EndlessSources.h"
#include "support/LibraryScope.h"

#include <new>
#include <stdexcept>
#include <type_traits>

namespace vorlund::test {
namespace {

constexpr const wchar* kFile = VRL_L("src/vorlund/data/sources/CbVideoSource");
constexpr const wchar* kRead = VRL_L("vorlund::CCbVideoSource::Read");
constexpr const wchar* kSetFormat = VRL_L("vorlund::CCbVideoSource::SetFormat");
constexpr TEndlessRows kRows{
    {VRL_L("vorlund::CCbVideoSource::Seek"), kFile, 126, VRL_L("Seek is not supported")},
    {VRL_L("vorlund::CCbVideoSource::Tell"), kFile, 130, VRL_L("Tell is not supported")},
    {VRL_L("vorlund::CCbVideoSource::GetLength"), kFile, 138, VRL_L("GetLength is not supported")},
    {kRead, kFile, 143, VRL_L("buffer is NULL")},
    {kRead, kFile, 161, VRL_L("sample is NULL")},
    {kRead, kFile, 162, VRL_L("Media samples are not supported")}};
constexpr TFailure kFormatIsNull{kSetFormat, kFile, 171, VRL_L("format is NULL")};
constexpr TFailure kUnsupportedFormat{kSetFormat, kFile, 172, VRL_L("Unsupported format ID")};

using TCbData = ICbVideoSource::TCbData;
using TPixels = std::vector<std::uint32_t>;
static_assert(std::is_same_v<ICbVideoSource::TCallback, void (*)(TCbData&)>);

/// What the callbacks have seen; the first eight pixels of each frame are theirs.
std::vector<TCbData> seen;
constexpr std::size_t kPixels = 8;

/// Paints the frame number, plus one, into every pixel.
void Paint(TCbData& data) {
    seen.push_back(data);
    std::fill_n(static_cast<std::uint32_t*>(data.pixels), kPixels, data.frameNumber + 1);
}

/// Paints three pixels and fails.
void PaintAndFail(TCbData& data) {
    seen.push_back(data);
    std::fill_n(static_cast<std::uint32_t*>(data.pixels), 3, 0x55555555);
    throw std::runtime_error("on purpose");
}

/// Does not touch the frame.
void PaintNothing(TCbData& data) {
    seen.push_back(data);
}

class CbVideoSource : public testing::Test {
protected:
    CbVideoSource() { seen.clear(); }
    ~CbVideoSource() noexcept override {}

    void SetSize(std::uint32_t width, std::uint32_t height) {
        const TDataFormat_VideoRgb format = VideoFormat(width, height);
        source_->SetFormat(&format);
    }

    CLibraryScope library_;
    CRefPtr<ICbVideoSource> source_ = CreateAs<ICbVideoSource>(classid::CCbVideoSource);
};

TEST_F(CbVideoSource, Identity) {
    EXPECT_EQ(source_->GetClassId(), CId(0xA85B8713, 0xF0CF421C, 0xB374BA80, 0x329D801D));
    EXPECT_EQ(ICbVideoSource::InterfaceId, CId(0x7D2ACBA0, 0x2A1B4C5E, 0x9B07DBB6, 0x7A03AE9C));
    ExpectChain(source_.Get(), {ICbVideoSource::InterfaceId, IInputStream::InterfaceId, IStream::InterfaceId,
                                IObject::InterfaceId});
}

TEST_F(CbVideoSource, IsEndless) {
    SetSize(4, 2);
    source_->SetCallback(&Paint);
    ExpectEndless(*source_, kRows, 8);
    EXPECT_TRUE(seen.empty());
    EXPECT_EQ(ReadPixels(*source_, 8), TPixels(8, 1));
    ExpectEndless(*source_, kRows, 8);
    EXPECT_EQ(ReadPixels(*source_, 8), TPixels(8, 2));
}

// Formats.

TEST_F(CbVideoSource, FormatAtFirst) {
    ExpectVideoFormat(source_->GetFormat(), 640, 480, 30);
}

TEST_F(CbVideoSource, TakesSizeAndRateOnly) {
    const TDataFormat_VideoRgb format = VideoFormat(2, 2, 12.5F);
    EXPECT_EQ(source_->SetFormat(&format), source_.Get());
    EXPECT_EQ(ReferencesOf(source_.Get()), 1);
    ExpectVideoFormat(source_->GetFormat(), 2, 2, 12.5F);
    std::uint32_t pixels[8] = {};
    EXPECT_EQ(source_->Read(pixels, sizeof pixels), 16U);
    EXPECT_EQ(TPixels(pixels, pixels + 5), (TPixels{0xFF000088, 0xFF000088, 0xFF000088, 0xFF000088, 0}));
}

TEST_F(CbVideoSource, OtherFormatsAreRefused) {
    const TDataFormat_ImageRgb image;
    const TDataFormat* const formats[] = {&TDataFormat_AudioPcm::FORMAT_44100HZ_16BIT_MONO, &image,
                                          &GetEmptyFormat()};
    for (const TDataFormat* const format : formats) {
        ExpectRaises<CDataFormatException>(kUnsupportedFormat, [&] { source_->SetFormat(format); });
    }
    ExpectRaises<CNullPtrException>(kFormatIsNull, [&] { source_->SetFormat(nullptr); });
    ExpectVideoFormat(source_->GetFormat(), 640, 480, 30);
}

// Frames.

TEST_F(CbVideoSource, DarkBlueWithoutACallback) {
    EXPECT_EQ(ReadPixels(*source_, 640 * 480), TPixels(640 * 480, 0xFF000088));
    EXPECT_EQ(ReadPixels(*source_, 640 * 480), TPixels(640 * 480, 0xFF000088));
}

TEST_F(CbVideoSource, CallsOncePerFrame) {
    SetSize(4, 2);
    EXPECT_EQ(source_->SetCallback(&Paint), source_.Get());
    EXPECT_EQ(ReferencesOf(source_.Get()), 1);
    EXPECT_TRUE(seen.empty());
    for (std::uint32_t frame = 0; frame < 3; ++frame) {
        EXPECT_EQ(ReadPixels(*source_, kPixels), TPixels(kPixels, frame + 1));
        ASSERT_EQ(seen.size(), frame + 1);
        EXPECT_EQ(seen[frame].frameNumber, frame);
        EXPECT_NE(seen[frame].pixels, nullptr);
        // The buffer stays where it is while the size does.
        EXPECT_EQ(seen[frame].pixels, seen[0].pixels);
        EXPECT_EQ(seen[frame].pixelFormat, (TPixelFormat{0, 32, 8, 24, 8, 16, 8, 8, 8, 0}));
    }
}

TEST_F(CbVideoSource, TheCallbackMayChangeAndGo) {
    SetSize(4, 2);
    source_->SetCallback(&Paint);
    ReadPixels(*source_, kPixels);
    source_->SetCallback(nullptr);
    EXPECT_EQ(ReadPixels(*source_, kPixels), TPixels(kPixels, 0xFF000088));
    source_->SetCallback(&PaintNothing);
    // What was painted before, and every frame has counted.
    EXPECT_EQ(ReadPixels(*source_, kPixels), TPixels(kPixels, 0xFF000088));
    EXPECT_EQ(seen.back().frameNumber, 2U);
}

TEST_F(CbVideoSource, ANewBufferIsZeros) {
    source_->SetCallback(&PaintNothing);
    for (const std::uint32_t width : {4U, 100U, 1U}) {
        SetSize(width, 2);
        EXPECT_EQ(ReadPixels(*source_, width * 2), TPixels(width * 2, 0));
    }
}

TEST_F(CbVideoSource, PiecesAreTheFirstBytesAgainAndAgain) {
    SetSize(4, 2);
    source_->SetCallback(&Paint);
    for (std::uint32_t frame = 1; frame <= 2; ++frame) {
        for (const std::size_t count : {3U, 1U, 4U})
            EXPECT_EQ(ReadPixels(*source_, count), TPixels(count, frame));
    }
    // Beyond the frame's end there is no way back.
    for (int i = 0; i < 10; ++i) EXPECT_EQ(ReadPixels(*source_, 3), TPixels(3, 3));
    EXPECT_EQ(seen.size(), 3U);
}

TEST_F(CbVideoSource, ANewFormatWaitsForTheNextFrame) {
    SetSize(4, 2);
    source_->SetCallback(&Paint);
    ReadPixels(*source_, 2);
    SetSize(16, 1);
    EXPECT_EQ(ReadPixels(*source_, 6), TPixels(6, 1));
    TPixels expected(16, 0);
    std::fill_n(expected.begin(), kPixels, 2);
    EXPECT_EQ(ReadPixels(*source_, 16), expected);
    EXPECT_EQ(seen.size(), 2U);
}

TEST_F(CbVideoSource, FramesWithoutPixels) {
    std::uint8_t byte = 42;
    for (const bool hasCallback : {false, true}) {
        source_->SetCallback(hasCallback ? &PaintNothing : nullptr);
        const std::pair<std::uint32_t, std::uint32_t> sizes[] = {{0, 0}, {0, 7}, {7, 0}, {0, ~0U}, {~0U, 0}};
        for (const auto& [width, height] : sizes) {
            SetSize(width, height);
            EXPECT_EQ(source_->Read(&byte, 1), 0U);
        }
    }
    EXPECT_EQ(byte, 42);
    ASSERT_EQ(seen.size(), 5U);
    EXPECT_EQ(seen.back().frameNumber, 9U);
    EXPECT_NE(seen.back().pixels, nullptr);
}

TEST_F(CbVideoSource, FramesBeyond32BitsAreRefused) {
    source_->SetCallback(&Paint);
    for (const auto& [width, height] : kTooLargeSizes) {
        SetSize(width, height);
        std::uint32_t pixel = 0;
        EXPECT_THROW(source_->Read(&pixel, 4), std::bad_alloc) << width << " x " << height;
        EXPECT_THROW(source_->Read(&pixel, 4), std::bad_alloc) << width << " x " << height;
    }
    EXPECT_TRUE(seen.empty());
    SetSize(4, 2);
    EXPECT_EQ(ReadPixels(*source_, kPixels), TPixels(kPixels, 1));
}

// Exceptions of the callback.

TEST_F(CbVideoSource, AnExceptionPassesAndTheFrameDoesNotCount) {
    SetSize(4, 2);
    source_->SetCallback(&Paint);
    ReadPixels(*source_, kPixels);
    source_->SetCallback(&PaintAndFail);
    std::uint32_t pixels[kPixels] = {};
    EXPECT_THROW(source_->Read(pixels, sizeof pixels), std::runtime_error);
    EXPECT_EQ(pixels[0], 0U);
    EXPECT_EQ(seen.size(), 2U);

    // The buffer is delivered from its start as the function left it, then comes the same frame number again.
    source_->SetCallback(&Paint);
    const TPixels left{0x55555555, 0x55555555, 0x55555555, 1, 1, 1, 1, 1};
    EXPECT_EQ(ReadPixels(*source_, kPixels), left);
    EXPECT_EQ(seen.size(), 2U);
    EXPECT_EQ(ReadPixels(*source_, kPixels), TPixels(kPixels, 2));
    EXPECT_EQ(seen.back().frameNumber, 1U);
}

TEST_F(CbVideoSource, AnExceptionInTheFirstFrameLeavesZeros) {
    SetSize(4, 2);
    source_->SetCallback(&PaintAndFail);
    std::uint32_t pixel = 0;
    EXPECT_THROW(source_->Read(&pixel, 4), std::runtime_error);
    EXPECT_EQ(ReadPixels(*source_, kPixels), (TPixels{0x55555555, 0x55555555, 0x55555555, 0, 0, 0, 0, 0}));
    EXPECT_THROW(source_->Read(&pixel, 4), std::runtime_error);
    EXPECT_EQ(seen.back().frameNumber, 0U);
}

// The selector.

TEST_F(CbVideoSource, SelectorMakesOneThroughTheClassStore) {
    const int number = source_->GetObjectNumber();
    const CInputStreamSelector selector(&PaintNothing);
    IInputStream* const stream = selector.GetInputStreamTmp();
    EXPECT_EQ(stream->GetClassId(), classid::CCbVideoSource);
    EXPECT_EQ(stream->GetObjectNumber(), number + 1);
    EXPECT_EQ(ReferencesOf(stream), 1);
    EXPECT_EQ(ReadPixels(*stream, 640 * 480), TPixels(640 * 480, 0));
    EXPECT_EQ(seen.size(), 1U);
}

TEST_F(CbVideoSource, SelectorTakesNoFunction) {
    const CInputStreamSelector selector(static_cast<ICbVideoSource::TCallback>(nullptr));
    std::uint32_t pixel = 0;
    EXPECT_EQ(selector.GetInputStreamTmp()->Read(&pixel, 4), 4U);
    EXPECT_EQ(pixel, 0xFF000088);
}

TEST_F(CbVideoSource, SamplesReadItThroughASelector) {
    const auto sample = CreateAs<ISwBufferMediaSample>(classid::CSwBufferMediaSample);
    sample->SetBufferSize(640 * 480 * 4);
    const CInputStreamSelector selector(&Paint);
    EXPECT_TRUE(sample->ReadFrom(selector));
    EXPECT_EQ(sample->GetDataSize(), 1228800U);
    ExpectVideoFormat(*sample->GetFormat(), 640, 480, 30);
    EXPECT_EQ(*static_cast<const std::uint32_t*>(sample->GetBuffer()), 1U);
}

} // namespace
} // namespace vorlund::test
