// "vorlund play --window": live pictures, and keys in the window.
#include "cli/PlayCommand.h"
#include "devices/WindowProbe.h"

#include <vorlund/WindowEvents.h>

#include <algorithm>
#include <cstdlib>

namespace vorlund::test {
namespace {

class PlayWindow : public PlayCommand {
protected:
    /// Ten minutes of a square wave; its name, which is the title of the window.
    std::string MakeLoud(const std::string& name) const {
        constexpr std::size_t kRate = 8000;
        TBytes samples(600 * kRate);
        for (std::size_t i = 0; i < samples.size(); ++i) samples[i] = i / 20 % 2 ? 64 : 192;
        return MakeWav(name, samples, {.samplesPerSec = kRate, .bits = 8});
    }

    static TChildOptions PlayInWindow(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), {"play", "--window", "--device", "null"});
        return {.arguments = std::move(arguments)};
    }

    static void* WaitForWindow(const std::string& title) {
        void* window = nullptr;
        EXPECT_TRUE(WaitUntil(
            [&] { return (window = FindWindowByTitle(wstring(title.begin(), title.end()))) != nullptr; }));
        return window;
    }
};

/// Whether the curve of the oscilloscope, or something near to its colour, is in the rows above `bottom`.
bool HasWaveAbove(void* window, int bottom) {
    constexpr std::uint32_t kWave = 0x5AD1B0;
    const auto picture = GetWindowPixels(window);
    if (!picture) return false;
    const auto isNear = [](std::uint32_t pixel, int shift) {
        const auto distance = static_cast<int>(pixel >> shift & 255) - static_cast<int>(kWave >> shift & 255);
        return std::abs(distance) < 32;
    };
    const auto end = picture->pixels.begin() + std::min(bottom, picture->height) * picture->width;
    return std::any_of(picture->pixels.begin(), end, [&](std::uint32_t pixel) {
        return isNear(pixel, 0) && isNear(pixel, 8) && isNear(pixel, 16);
    });
}

TEST_F(PlayWindow, ShowsTheSoundUntilEscape) {
    if (!CanShowWindows()) GTEST_SKIP() << "no display";
    for (const char* const kind : {"oscilloscope", "spectrum", "both"}) {
        const std::string name = std::string("vorlund-window-") + kind + ".wav";
        CChildProcess program("vorlund", PlayInWindow({MakeLoud(name), "--picture", kind}));
        void* const window = WaitForWindow(name);
        // Loud sound goes above the middle of its lane, which is at 270, or at 135 beside the spectrum.
        const int lane = kind == std::string("both") ? 100 : 200;
        const bool hasWave = kind != std::string("spectrum");
        EXPECT_TRUE(WaitUntil(
            [&] { return hasWave ? HasWaveAbove(window, lane) : GetWindowPixels(window).has_value(); }));
        // A window may be found before it has its size.
        EXPECT_TRUE(WaitUntil([&] {
            const auto view = LookAtWindow(window);
            return view && view->width == 960 && view->height == 540;
        }));
        if (!hasWave) {
            EXPECT_FALSE(HasWaveAbove(window, lane));
        }
        PressKey(window, WINDOW_KEY_ESCAPE);
        const TChildEnd end = program.Wait();
        EXPECT_TRUE(end.IsSuccess()) << end.errors;
        EXPECT_EQ(end.errors, "");
        EXPECT_NE(end.output.find("Played    "), std::string::npos);
    }
}

TEST_F(PlayWindow, EndsWhenItIsClosed) {
    if (!CanShowWindows()) GTEST_SKIP() << "no display";
    CChildProcess program("vorlund", PlayInWindow({MakeLoud("vorlund-window-closed.wav")}));
    void* const window = WaitForWindow("vorlund-window-closed.wav");
    EXPECT_TRUE(WaitUntil([&] { return HasWaveAbove(window, 100); }));
    CloseWindowByUser(window);
    const TChildEnd end = program.Wait();
    EXPECT_TRUE(end.IsSuccess()) << end.errors;
}

TEST_F(PlayWindow, KeysAreThoseOfTheTerminal) {
    if (!CanShowWindows()) GTEST_SKIP() << "no display";
    const std::string first = MakeLoud("vorlund-window-1.wav");
    const std::string second =
        MakeWav("vorlund-window-2.wav", TBytes(600 * 8000, 128), {.samplesPerSec = 8000, .bits = 8});
    CChildProcess program("vorlund", PlayInWindow({first, second}));
    void* const window = WaitForWindow("vorlund-window-1.wav");
    EXPECT_TRUE(WaitUntil([&] { return HasWaveAbove(window, 100); }));
    // Space, and a seek while it stands still; then to the second file, and behind it.
    const std::uint32_t keys[]{' ', WINDOW_KEY_RIGHT, ' ', WINDOW_KEY_UP};
    for (const std::uint32_t key : keys) {
        PressKey(window, key);
        ReleaseKey(window, key);
    }
    // The second file is silence, and is heard before it is left.
    EXPECT_TRUE(WaitUntil([&] { return !HasWaveAbove(window, 100); }));
    PressKey(window, 'n');
    const TChildEnd end = program.Wait();
    EXPECT_TRUE(end.IsSuccess()) << end.errors;
    EXPECT_EQ(
        WithoutReturns(end.output).rfind("File      " + first + "\nFile      " + second + "\nPlayed    ", 0),
        0u)
        << end.output;
}

TEST_F(PlayWindow, WithoutThePluginItSaysSoInOneLine) {
    const TChildEnd end = RunPlay({MakeWav("file.wav", Ramp(400)), "--window", "--device", "null"});
    EXPECT_EQ(end.exitCode, 1u);
    EXPECT_EQ(end.errors,
              "vorlund: Pictures of sound need the plug-in 'visual', which is not loaded; 'vorlund "
              "plugins' tells why\n");
}

} // namespace
} // namespace vorlund::test
