// The plug-in "window-output": what is on the screen.
#include <vorlund/ClassIds.h>
#include <vorlund/DataFormat.h>
#include <vorlund/Exception.h>
#include <vorlund/PluginStore.h>
#include <vorlund/RefPtr.h>
#include <vorlund/WindowedOutput.h>

#include "data/file/TemporaryFolder.h"
#include "devices/EventRecorder.h"
#include "devices/WindowProbe.h"
#include "support/ChildProcess.h"
#include "support/Failures.h"
#include "support/LibraryScope.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <initializer_list>
#include <optional>
#include <utility>
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

/// Whether the picture shows a frame twice as wide as high, red and green, as large as it can be in the
/// middle of black.
bool HasShape(const TWindowPixels& picture) {
    const bool isWide = picture.width > 2 * picture.height;
    const int width = isWide ? 2 * picture.height : picture.width;
    const int height = isWide ? picture.height : (picture.width + 1) / 2;
    const int left = (picture.width - width) / 2;
    const int top = (picture.height - height) / 2;
    for (int y = 0; y < picture.height; ++y) {
        for (int x = 0; x < picture.width; ++x) {
            const bool isInside = x >= left && x < left + width && y >= top && y < top + height;
            // In the very middle it depends on how pixels are chosen.
            if (isInside && std::abs(2 * (x - left) + 1 - width) <= 2) continue;
            const std::uint32_t colour = !isInside ? 0 : 2 * (x - left) < width ? 0xFF0000 : 0x00FF00;
            if (picture.At(x, y) != colour) return false;
        }
    }
    return true;
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

TEST_F(WindowOutput, KeepsTheShapeOfItsFrames) {
    ASSERT_TRUE(output_->Open(MakeFormat(200, 100, 16, 8, 0), VRL_L("Shape")));
    // The left half is red, the right one green.
    std::vector<std::uint32_t> frame(200 * 100);
    for (std::size_t i = 0; i < frame.size(); ++i) frame[i] = i % 200 < 100 ? 0xFF0000 : 0x00FF00;
    ASSERT_TRUE(output_->Present(frame.data()));
    void* const window = FindWindowByTitle(VRL_L("Shape"));
    const std::pair<int, int> sizes[] = {{400, 400}, {500, 150}, {300, 600}, {420, 210}, {131, 117}};
    for (const auto& [width, height] : sizes) {
        ResizeWindowByUser(window, width, height);
        // Nobody presents anything: the device draws what it has.
        std::optional<TWindowPixels> picture;
        EXPECT_TRUE(WaitUntil([&, w = width, h = height] {
            picture = GetWindowPixels(window);
            if (!picture || picture->width > w || picture->height > h) return false;
            if (picture->width < w - 40 || picture->height < h - 60) return false;
            return HasShape(*picture);
        })) << width
            << " x " << height;
    }
    const auto picture = GetWindowPixels(window);
    ASSERT_TRUE(picture);
    EXPECT_TRUE(SavePixmap(*picture, std::filesystem::path(VORLUND_TEST_ARTEFACTS) / "window-shape.ppm"));
}

TEST_F(WindowOutput, DrawsWhatWasCovered) {
    ASSERT_TRUE(output_->Open(MakeFormat(200, 120, 16, 8, 0), VRL_L("Covered")));
    const std::vector<std::uint32_t> frame(200 * 120, 0x345678);
    ASSERT_TRUE(output_->Present(frame.data()));
    ASSERT_TRUE(Shows(VRL_L("Covered"), 100, 60, 0x345678));
    SpoilWindow(FindWindowByTitle(VRL_L("Covered")));
    EXPECT_TRUE(Shows(VRL_L("Covered"), 100, 60, 0x345678));
}

TEST_F(WindowOutput, TellsOfItsWindow) {
    const auto windowed = CRefPtr<IVideoOutput>::Share(output_).Query<IWindowedOutput>();
    ASSERT_TRUE(windowed);
    CEventRecorder recorder;
    windowed->SetHandler(&CEventRecorder::OnEvent, &recorder);
    for (int round = 0; round < 2; ++round) {
        recorder.Clear();
        ASSERT_TRUE(output_->Open(MakeFormat(200, 120, 16, 8, 0), VRL_L("Told")));
        ASSERT_TRUE(WaitUntil([&] { return recorder.HasSize(200, 120); }));
        PressKey(FindWindowByTitle(VRL_L("Told")), WINDOW_KEY_ESCAPE);
        ASSERT_TRUE(WaitUntil([&] { return recorder.Has(WINDOW_EVENT_KEY_PRESSED); }));
        EXPECT_EQ(recorder.GetKeys()[0], std::uint32_t{WINDOW_KEY_ESCAPE});
        EXPECT_FALSE(recorder.Has(WINDOW_EVENT_CLOSED));
        if (round == 0) {
            CloseWindowByUser(FindWindowByTitle(VRL_L("Told")));
            EXPECT_TRUE(WaitUntil([&] { return recorder.Has(WINDOW_EVENT_CLOSED); }));
        }
    }
    windowed->SetHandler(nullptr);
    recorder.Clear();
    PressKey(FindWindowByTitle(VRL_L("Told")), 'a');
    output_->Close();
    EXPECT_TRUE(recorder.GetEvents().empty());
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
