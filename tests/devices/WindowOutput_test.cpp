// The plug-in "window-output": what is on the screen.
#include <vorlund/ClassIds.h>
#include <vorlund/DataFormat.h>
#include <vorlund/Exception.h>
#include <vorlund/PluginStore.h>
#include <vorlund/RefPtr.h>
#include <vorlund/VideoOutput.h>

#include "data/file/TemporaryFolder.h"
#include "devices/WindowProbe.h"
#include "support/ChildProcess.h"
#include "support/Failures.h"
#include "support/LibraryScope.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <initializer_list>
#include <optional>
#include <vector>

namespace vorlund::test {
namespace {

/// Opens the library with the plug-in, through a plug-in store of its own.
class CPluginScope {
public:
    CPluginScope() {
        store_.AddPluginPath(ToVorlund(BesideProgram("vorlund-plugins")).c_str());
        store_.LoadPlugin(VRL_L("window-output"));
    }
    CPluginScope(const CPluginScope&) = delete;
    CPluginScope& operator=(const CPluginScope&) = delete;
    ~CPluginScope() { store_.Close(); }

private:
    CLibraryScope library_;
    CPluginStore store_;
};

constexpr const wchar* kFile = VRL_L("plugins/window-output/WindowOutput");
constexpr const wchar* kOpen = VRL_L("CWindowOutput::Open");
constexpr TFailure kWrongFormat{kOpen, kFile, 1, VRL_L("Unsupported format ID")};
constexpr TFailure kWrongPixels{kOpen, kFile, 2, VRL_L("Unsupported pixel format")};

TDataFormat_VideoRgb MakeFormat(std::uint32_t width, std::uint32_t height, std::uint32_t redShift,
                                std::uint32_t greenShift, std::uint32_t blueShift) {
    TDataFormat_VideoRgb format;
    format.image.pixelFormat = {.bitsPerPixel = 32,
                                .redBits = 8,
                                .redShift = redShift,
                                .greenBits = 8,
                                .greenShift = greenShift,
                                .blueBits = 8,
                                .blueShift = blueShift};
    format.image.width = width;
    format.image.height = height;
    format.frameRate = 30;
    return format;
}

class WindowOutput : public testing::Test {
protected:
    void SetUp() override {
        if (!CanShowWindows()) GTEST_SKIP() << "no display";
        output_ = CreateAs<IVideoOutput>(classid::CVideoDevice).Detach();
        ASSERT_NE(output_, nullptr);
    }
    void TearDown() override {
        if (output_) output_->Release();
    }

    CPluginScope plugin_;
    IVideoOutput* output_ = nullptr;
};

/// The window of the device, which has no operation that tells it: found by its title.
testing::AssertionResult Shows(const wstring& title, int x, int y, std::uint32_t colour) {
    std::optional<TWindowPixels> picture;
    const bool isShown = WaitUntil([&] {
        picture = GetWindowPixels(FindWindowByTitle(title));
        return picture && x < picture->width && y < picture->height && picture->At(x, y) == colour;
    });
    if (isShown) return testing::AssertionSuccess();
    if (!picture) return testing::AssertionFailure() << "no picture";
    return testing::AssertionFailure() << std::hex << picture->At(x, y);
}

struct TShiftRow {
    std::uint32_t red;
    std::uint32_t green;
    std::uint32_t blue;
};

TEST_F(WindowOutput, ShowsFramesByTheirShifts) {
    constexpr std::uint32_t kRed = 0x12;
    constexpr std::uint32_t kGreen = 0xAB;
    constexpr std::uint32_t kBlue = 0xF0;
    for (const TShiftRow row :
         {TShiftRow{16, 8, 0}, TShiftRow{8, 16, 24}, TShiftRow{0, 8, 16}, TShiftRow{24, 0, 8}}) {
        ASSERT_TRUE(output_->Open(MakeFormat(200, 120, row.red, row.green, row.blue), VRL_L("Shifts")));
        const std::vector<std::uint32_t> frame(200 * 120,
                                               kRed << row.red | kGreen << row.green | kBlue << row.blue);
        ASSERT_TRUE(output_->Present(frame.data()));
        EXPECT_TRUE(Shows(VRL_L("Shifts"), 100, 60, kRed << 16 | kGreen << 8 | kBlue));
    }
}

TEST_F(WindowOutput, RowsGoFromTopToBottom) {
    ASSERT_TRUE(output_->Open(MakeFormat(200, 120, 16, 8, 0), VRL_L("Rows")));
    std::vector<std::uint32_t> frame(200 * 120);
    for (std::size_t i = 0; i < frame.size(); ++i)
        frame[i] = static_cast<std::uint32_t>(i / 200 << 16 | i % 200);
    ASSERT_TRUE(output_->Present(frame.data()));
    EXPECT_TRUE(Shows(VRL_L("Rows"), 199, 119, 119 << 16 | 199));
    EXPECT_TRUE(Shows(VRL_L("Rows"), 7, 3, 3 << 16 | 7));
    const auto picture = GetWindowPixels(FindWindowByTitle(VRL_L("Rows")));
    ASSERT_TRUE(picture);
    EXPECT_EQ(picture->width, 200);
    EXPECT_EQ(picture->height, 120);
    EXPECT_TRUE(SavePixmap(*picture, std::filesystem::path(VORLUND_TEST_ARTEFACTS) / "window-output.ppm"));
}

TEST_F(WindowOutput, WithoutASurfaceNothingIsShown) {
    const std::vector<std::uint32_t> frame(16);
    EXPECT_FALSE(output_->Present(frame.data()));
    output_->Close();
    ASSERT_TRUE(output_->Open(MakeFormat(4, 4, 16, 8, 0), VRL_L("Short")));
    output_->Close();
    EXPECT_FALSE(output_->Present(frame.data()));
    EXPECT_EQ(FindWindowByTitle(VRL_L("Short")), nullptr);
}

TEST_F(WindowOutput, TheUserClosesTheWindow) {
    ASSERT_TRUE(output_->Open(MakeFormat(200, 120, 16, 8, 0), VRL_L("Closed")));
    const std::vector<std::uint32_t> frame(200 * 120);
    ASSERT_TRUE(output_->Present(frame.data()));
    CloseWindowByUser(FindWindowByTitle(VRL_L("Closed")));
    EXPECT_TRUE(WaitUntil([&] { return !output_->Present(frame.data()); }));
    ASSERT_TRUE(output_->Open(MakeFormat(200, 120, 16, 8, 0), VRL_L("Again")));
    EXPECT_TRUE(output_->Present(frame.data()));
}

TEST_F(WindowOutput, OpenOfADeviceTakesTheDefaults) {
    output_->Open();
    const std::vector<std::uint32_t> frame(640 * 480, 0x80'40'20'00);
    EXPECT_TRUE(output_->Present(frame.data()));
    output_->Close();
    EXPECT_FALSE(output_->Present(frame.data()));
}

TEST_F(WindowOutput, RefusesWhatItCannotShow) {
    TDataFormat_VideoRgb format = MakeFormat(4, 4, 16, 8, 0);
    format.id = TDataFormat_ImageRgb::FormatId;
    ExpectRaises<CDataFormatException>(kWrongFormat, [&] { output_->Open(format, VRL_L("")); });

    using TChange = void (*)(TDataFormat_ImageRgb&);
    for (const TChange change : std::initializer_list<TChange>{
             [](TDataFormat_ImageRgb& image) { image.width = 0; },
             [](TDataFormat_ImageRgb& image) { image.height = 0; },
             [](TDataFormat_ImageRgb& image) { image.width = 32768; },
             [](TDataFormat_ImageRgb& image) { image.height = 0xFFFFFFFF; },
             [](TDataFormat_ImageRgb& image) { image.pixelFormat.bitsPerPixel = 24; },
             [](TDataFormat_ImageRgb& image) { image.pixelFormat.redBits = 5; },
             [](TDataFormat_ImageRgb& image) { image.pixelFormat.greenShift = 25; },
             [](TDataFormat_ImageRgb& image) { image.pixelFormat = {}; },
         }) {
        format = MakeFormat(4, 4, 16, 8, 0);
        change(format.image);
        ExpectRaises<CDataFormatException>(kWrongPixels, [&] { output_->Open(format, VRL_L("")); });
    }
}

} // namespace
} // namespace vorlund::test
