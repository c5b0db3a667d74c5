// What the plug-in makes of whole files, pixel by pixel, compared with what other programs read in them.
#include "plugins/image/ImageTest.h"

#include <vorlund/Bitmap.h>
#include <vorlund/ClassIds.h>

#include <cstdlib>

namespace vorlund::test {
namespace {

using ImageDecoder = ImageTest;

int Distance(const TBytes& one, const TBytes& other) {
    int worst = 0;
    for (std::size_t i = 0; i < one.size(); ++i) worst = std::max(worst, std::abs(one[i] - other[i]));
    return worst;
}

TEST_F(ImageDecoder, EveryFileIsWhatOthersRead) {
    const auto rows = LoadRows();
    ASSERT_GE(rows.size(), 150u);
    for (const TPictureRow& row : rows) {
        SCOPED_TRACE(row.name);
        const auto decoded = DecodeFile(row.name);
        const auto& format = static_cast<const TDataFormat_ImageRgb&>(decoded->GetFormat());
        EXPECT_EQ(format.id, TDataFormat_ImageRgb::FormatId);
        EXPECT_EQ(format.size, 68u);
        EXPECT_EQ(format.pixelFormat, kPixels);
        EXPECT_EQ(format.width, row.width);
        EXPECT_EQ(format.height, row.height);
        EXPECT_EQ(decoded->GetLength(), std::int64_t{format.GetSizeInBytes()});
        const TBytes pixels = ReadAll(*decoded);
        const TBytes expected = Load(row.name + ".bgra");
        ASSERT_EQ(pixels.size(), expected.size());
        EXPECT_LE(Distance(pixels, expected), row.tolerance);
        EXPECT_TRUE(decoded->Eof());
        const bool isPng = row.name.ends_with(".png");
        EXPECT_EQ(Narrowed(report_.GetFurthest()->container), isPng ? "PNG" : "JPEG");
        if (row.name.find("truncated") == std::string::npos) {
            EXPECT_EQ(GetRemarks(), "");
        }
    }
}

TEST_F(ImageDecoder, ReadsOfAnySizeFromAnyPlaceGiveTheSameBytes) {
    for (const char* const name : {"video-001.png", "cjpeg-progressive.jpg"}) {
        SCOPED_TRACE(name);
        ExpectPositions(*DecodeFile(name), Load(std::string(name) + ".bgra"));
    }
}

TEST_F(ImageDecoder, ABitmapTakesAPicture) {
    for (const char* const name : {"basn6a16.png", "cjpeg-sample-2x2.jpg"}) {
        SCOPED_TRACE(name);
        const auto bitmap = CreateAs<IBitmap>(classid::CBitmap);
        const TDataFormat_ImageRgb any;
        bitmap->SetFormat(&any);
        bitmap->LoadDecoded(CInputStreamSelector(ToVorlund(files_ / name).c_str()));
        const TDataFormat_ImageRgb* const format = bitmap->GetImageFormat();
        ASSERT_NE(format, nullptr);
        const TBytes expected = Load(std::string(name) + ".bgra");
        EXPECT_EQ(format->GetSizeInBytes(), expected.size());
        EXPECT_EQ(format->pixelFormat, kPixels);
        ASSERT_EQ(bitmap->GetSize(), expected.size());
        const auto* const pixels = static_cast<const std::uint8_t*>(bitmap->Lock(LOCK_MODE_READ));
        EXPECT_TRUE(std::equal(expected.begin(), expected.end(), pixels));
        bitmap->Unlock();
    }
}

TEST_F(ImageDecoder, TheStreamMayStandAnywhere) {
    const auto stream = Make<CMemoryInputStream>();
    stream->bytes = Load("video-001.png");
    stream->Seek(77);
    EXPECT_EQ(ReadAll(*Decode(stream.Get())), Load("video-001.png.bgra"));
}

TEST_F(ImageDecoder, WithoutAStreamItIsAnEmptyFilter) {
    auto decoded = DecodeFile("video-001.png");
    const auto filter = decoded.Query<IInputStreamFilter>();
    filter->Disconnect();
    EXPECT_EQ(filter->GetFormat().id, CId::Null());
    EXPECT_TRUE(filter->Eof());
    EXPECT_EQ(filter->GetInputStream(), nullptr);
    EXPECT_THROW(filter->GetLength(), COperationNotSupportedException);
    EXPECT_THROW(filter->Seek(0), COperationNotSupportedException);
    std::uint8_t byte = 0;
    EXPECT_THROW(filter->Read(&byte, 1), CIOException);
    filter->Skip(5);
    const auto stream = Make<CMemoryInputStream>();
    stream->bytes = Load("im-1x1.png");
    filter->Connect(stream.Get());
    EXPECT_EQ(filter->GetLength(), 4);
    EXPECT_EQ(filter->Tell(), 0);
}

TEST_F(ImageDecoder, RefusalsNameTheReason) {
    TBytes large = Load("side.png");
    EXPECT_EQ(Refusal(large), "PNG: Picture is too large (width 2147483647, height 2147483647)");
    EXPECT_EQ(Refusal(Load("unheld.png")),
              "PNG: Picture is larger than its file can hold (width 11000, height 11000)");
    EXPECT_EQ(Refusal(Load("sample-2x2-11000.jpg")),
              "JPEG: Picture is larger than its file can hold (width 11000, height 11000)");
    EXPECT_EQ(Refusal(Load("scans.jpg")),
              "JPEG: Damaged or unsupported JPEG file (libjpeg \"too many scans\")");
    TBytes deep = Load("cjpeg-q100.jpg");
    const TBytes frame{0xFF, 0xC0, 0x00, 0x11, 0x08};
    const auto at = std::search(deep.begin(), deep.end(), frame.begin(), frame.end());
    ASSERT_NE(at, deep.end());
    at[4] = 12;
    EXPECT_EQ(Refusal(deep),
              "JPEG: Damaged or unsupported JPEG file (libjpeg \"Unsupported JPEG data precision 12\")");
    EXPECT_EQ(Refusal(TBytes{0xFF, 0xD8, 0xFF, 0xD9}),
              "JPEG: Damaged or unsupported JPEG file (libjpeg \"JPEG datastream contains no image\")");
    EXPECT_EQ(Refusal(TBytes(100, 'x')), "no loaded decoder knows this kind of file");
    EXPECT_EQ(Refusal({}), "it is empty");
}

TEST_F(ImageDecoder, WhatIsMissingAtTheEndIsTransparentBlack) {
    const TBytes whole = Load("benchRGB.png");
    const TBytes expected = Load("benchRGB.png.bgra");
    const auto decoded =
        DecodeBytes(TBytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(whole.size() / 2)));
    EXPECT_EQ(GetRemarks(), "damaged, libpng: the file ends early");
    const TBytes pixels = ReadAll(*decoded);
    ASSERT_EQ(pixels.size(), expected.size());
    const std::size_t same = static_cast<std::size_t>(
        std::mismatch(pixels.begin(), pixels.end(), expected.begin()).first - pixels.begin());
    EXPECT_GT(same, pixels.size() / 8);
    const std::size_t stride =
        static_cast<const TDataFormat_ImageRgb&>(decoded->GetFormat()).GetWidthInBytes();
    EXPECT_EQ(same % stride, 0u);
    EXPECT_TRUE(std::all_of(pixels.begin() + static_cast<std::ptrdiff_t>(same), pixels.end(),
                            [](std::uint8_t byte) { return byte == 0; }));
}

TEST_F(ImageDecoder, ADamagedEndIsARemark) {
    TBytes bytes = Load("video-001.png");
    bytes.resize(bytes.size() - 12);
    EXPECT_EQ(ReadAll(*DecodeBytes(bytes)), Load("video-001.png.bgra"));
    EXPECT_EQ(GetRemarks(), "damaged, libpng: the file ends early");
    for (const char* const name : {"cjpeg-q100.jpg", "cjpeg-restart.jpg"}) {
        bytes = Load(name);
        bytes.resize(bytes.size() * 3 / 4);
        const TBytes pixels = ReadAll(*DecodeBytes(bytes));
        EXPECT_EQ(GetRemarks(), "libjpeg: Premature end of JPEG file") << name;
        EXPECT_EQ(pixels.size(), Load(std::string(name) + ".bgra").size()) << name;
    }
}

TEST_F(ImageDecoder, AProgressivePictureComesWithTheScansThatThereAre) {
    const TBytes whole = Load("cjpeg-progressive.jpg");
    int cuts = 0;
    int pictures = 0;
    for (std::size_t size = whole.size() / 2; size < whole.size(); size += 97) {
        ++cuts;
        // Only inside the head of a scan there is no way on.
        pictures += Refusal(TBytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size))).empty();
    }
    EXPECT_GT(cuts, 10);
    EXPECT_GT(pictures, cuts * 3 / 4) << cuts;
}

} // namespace
} // namespace vorlund::test
