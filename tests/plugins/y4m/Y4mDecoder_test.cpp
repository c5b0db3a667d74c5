// What the plug-in makes of whole files, pixel by pixel, compared with what ffmpeg reads in them.
#include "plugins/y4m/Y4mTest.h"

#include <cstdlib>

namespace vorlund::test {
namespace {

using Y4mDecoder = Y4mTest;

int Distance(const TBytes& one, const TBytes& other) {
    int worst = 0;
    for (std::size_t i = 0; i < one.size(); ++i) worst = std::max(worst, std::abs(one[i] - other[i]));
    return worst;
}

TEST_F(Y4mDecoder, EveryFileIsWhatOthersRead) {
    const auto rows = LoadRows();
    ASSERT_GE(rows.size(), 30u);
    for (const TVideoRow& row : rows) {
        SCOPED_TRACE(row.name);
        const auto decoded = DecodeFile(row.name);
        const auto& format = static_cast<const TDataFormat_VideoRgb&>(decoded->GetFormat());
        EXPECT_EQ(format.id, TDataFormat_VideoRgb::FormatId);
        EXPECT_EQ(format.size, 92u);
        EXPECT_EQ(format.image.id, TDataFormat_ImageRgb::FormatId);
        EXPECT_EQ(format.image.pixelFormat, kPixels);
        EXPECT_EQ(format.image.width, row.width);
        EXPECT_EQ(format.image.height, row.height);
        EXPECT_FLOAT_EQ(format.frameRate, row.rate);
        const std::int64_t length = decoded->GetLength();
        const TBytes pixels = ReadAll(*decoded);
        const TBytes expected = Load(row.name + ".bgra");
        ASSERT_EQ(pixels.size(), expected.size());
        // The expected values are computed in floating point.
        EXPECT_LE(Distance(pixels, expected), 1);
        EXPECT_TRUE(decoded->Eof());
        EXPECT_EQ(decoded->GetLength(), static_cast<std::int64_t>(pixels.size()));
        EXPECT_EQ(length, decoded->GetLength());
        EXPECT_EQ(Narrowed(report_.GetFurthest()->container), "YUV4MPEG2");
    }
}

TEST_F(Y4mDecoder, ReadsOfAnySizeFromAnyPlaceGiveTheSameBytes) {
    for (const char* const name :
         {"long.y4m", "parameters.y4m", "some-parameters.y4m", "middle-parameters.y4m"}) {
        SCOPED_TRACE(name);
        const auto decoded = DecodeFile(name);
        const TBytes whole = ReadAll(*DecodeFile(name));
        ExpectPositions(*decoded, whole);
    }
}

TEST_F(Y4mDecoder, RefusalsNameTheReason) {
    const std::string frame = "FRAME\n" + std::string(6, 'x');
    const struct {
        std::string text;
        const char* refusal;
    } rows[] = {
        {"YUV4MPEG2 W2 H2 C420p10\n" + frame,
         "YUV4MPEG2: Unsupported colour space (colour space \"420p10\")"},
        {"YUV4MPEG2 W2 H2 C\n" + frame, "YUV4MPEG2: Unsupported colour space (colour space \"\")"},
        {"YUV4MPEG2 H2\n" + frame, "YUV4MPEG2: Invalid YUV4MPEG2 header (parameter \"W\")"},
        {"YUV4MPEG2 W2\n" + frame, "YUV4MPEG2: Invalid YUV4MPEG2 header (parameter \"H\")"},
        {"YUV4MPEG2 W0 H2\n" + frame, "YUV4MPEG2: Invalid YUV4MPEG2 header (parameter \"W0\")"},
        {"YUV4MPEG2 W2 H-2\n" + frame, "YUV4MPEG2: Invalid YUV4MPEG2 header (parameter \"H-2\")"},
        {"YUV4MPEG2 W2 H2x\n" + frame, "YUV4MPEG2: Invalid YUV4MPEG2 header (parameter \"H2x\")"},
        {"YUV4MPEG2 W2 H99999999999\n" + frame,
         "YUV4MPEG2: Invalid YUV4MPEG2 header (parameter \"H99999999999\")"},
        {"YUV4MPEG2 W2 H2 F25\n" + frame, "YUV4MPEG2: Invalid YUV4MPEG2 header (parameter \"F25\")"},
        {"YUV4MPEG2 W2 H2 F:\n" + frame, "YUV4MPEG2: Invalid YUV4MPEG2 header (parameter \"F:\")"},
        {"YUV4MPEG2 W2147483647 H2147483647\n" + frame,
         "YUV4MPEG2: Frame is too large (width 2147483647, height 2147483647)"},
        {"YUV4MPEG2 W11000 H11000\n" + frame, "YUV4MPEG2: No whole frame"},
        {"YUV4MPEG2 W2 H2\n", "YUV4MPEG2: No whole frame"},
        {"YUV4MPEG2 W2 H2\nframe\nxxxxxx", "YUV4MPEG2: No whole frame"},
        {"YUV4MPEG2 W2 H2\nFRAMES\nxxxxxx", "YUV4MPEG2: No whole frame"},
        {"YUV4MPEG2 W2 H2", "YUV4MPEG2: Endless YUV4MPEG2 header"},
        {"YUV4MPEG2 W2 H2 X" + std::string(2000, 'x') + "\n" + frame, "YUV4MPEG2: Endless YUV4MPEG2 header"},
        {"YUV4MPEG2 W2 H2\nFRAME X" + std::string(2000, 'x') + "\nxxxxxx", "YUV4MPEG2: No whole frame"},
        {"YUV4MPEG2W2 H2\n", "no loaded decoder knows this kind of file"},
        {"", "it is empty"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(Refusal(MakeBytes(row.text)), row.refusal) << row.text.substr(0, 60);
    for (const char* const name : {"yuv420p10le.y4m", "gray10le.y4m", "yuv444p16le.y4m"}) {
        EXPECT_EQ(Refusal(Load(name)).find("YUV4MPEG2: Unsupported colour space (colour space "), 0u) << name;
    }
}

TEST_F(Y4mDecoder, RemarksSayWhatIsMissing) {
    const std::string head = "YUV4MPEG2 W2 H2 F30:1";
    const std::string frame = "FRAME\n" + std::string(6, '\x80');
    const struct {
        std::string text;
        std::int64_t frames;
        float rate;
        const char* remarks;
    } rows[] = {
        {head + "\n" + frame + frame, 2, 30, ""},
        {head + "\n" + frame + frame.substr(0, 11), 1, 30, "ends inside a frame"},
        {head + "\n" + frame + "x", 1, 30, "ends inside a frame"},
        {head + "\nFRAME X\n" + frame.substr(6) + frame + "FRAM", 2, 30,
         "ends inside a frame, or has something else in it"},
        {head + " Ip\n" + frame, 1, 30, ""},
        {head + " It\n" + frame, 1, 30, "interlaced, frames are delivered as they are"},
        {"YUV4MPEG2 W2 H2\n" + frame, 1, 25, "frame rate unknown, taken for 25"},
        {"YUV4MPEG2 W2 H2 F0:0\n" + frame, 1, 25, "frame rate unknown, taken for 25"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text.substr(0, 60));
        const auto decoded = DecodeBytes(MakeBytes(row.text));
        EXPECT_EQ(decoded->GetLength(), row.frames * 16);
        EXPECT_EQ(static_cast<const TDataFormat_VideoRgb&>(decoded->GetFormat()).frameRate, row.rate);
        EXPECT_EQ(ReadAll(*decoded).size(), static_cast<std::size_t>(row.frames) * 16);
        EXPECT_EQ(GetRemarks(), row.remarks);
    }
}

TEST_F(Y4mDecoder, AFrameThatIsNoneEndsTheVideo) {
    std::string text = "YUV4MPEG2 W2 H2 F30:1\n";
    for (int i = 0; i < 9; ++i) text += (i == 5 ? "FRAM!\n" : "FRAME\n") + std::string(6, '\x80');
    const auto decoded = DecodeBytes(MakeBytes(text));
    EXPECT_EQ(decoded->GetLength(), 9 * 16);
    EXPECT_EQ(ReadAll(*decoded, 16).size(), 5u * 16);
    EXPECT_EQ(decoded->GetLength(), 5 * 16);
    EXPECT_TRUE(decoded->Eof());
    decoded->Seek(16 * 16);
    EXPECT_EQ(decoded->Tell(), 5 * 16);
}

TEST_F(Y4mDecoder, WithoutAStreamItIsAnEmptyFilter) {
    const auto filter = DecodeFile("long.y4m").Query<IInputStreamFilter>();
    filter->Disconnect();
    EXPECT_EQ(filter->GetFormat().id, CId::Null());
    EXPECT_TRUE(filter->Eof());
    EXPECT_THROW(filter->GetLength(), COperationNotSupportedException);
    std::uint8_t byte = 0;
    EXPECT_THROW(filter->Read(&byte, 1), CIOException);
}

} // namespace
} // namespace vorlund::test
