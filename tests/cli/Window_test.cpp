// The command "window", with the first-party video device.
#include "devices/WindowProbe.h"
#include "support/ChildProcess.h"
#include "support/Text.h"

#include <vorlund/WindowEvents.h>

#include <gtest/gtest.h>

#include <string>
#include <thread>

namespace vorlund::test {
namespace {

TChildEnd RunWindow(std::vector<std::string> options) {
    std::vector<std::string> arguments = {"window"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    return RunChild("vorlund", {.arguments = arguments});
}

/// The text behind a label of the report, or nothing.
std::string Field(const std::string& report, const std::string& label) {
    const std::size_t at = report.find(label);
    if (at == std::string::npos) return {};
    const std::size_t from = report.find_first_not_of(' ', at + label.size());
    return report.substr(from, report.find_first_of("\r\n", from) - from);
}

TEST(WindowCommand, ShowsFramesAndEndsByItself) {
    if (!CanShowWindows()) GTEST_SKIP() << "no display";
    const TChildEnd end = RunWindow({"--size", "96x64", "--frames", "7"});
    EXPECT_TRUE(end.IsSuccess()) << end.errors;
    EXPECT_EQ(Field(end.output, "Size"), "96 x 64");
    EXPECT_EQ(Field(end.output, "Frames"), "7");
    EXPECT_FALSE(Field(end.output, "Dropped").empty());
    EXPECT_NE(Field(end.output, "Rate").find(" per second"), std::string::npos);
    EXPECT_EQ(Field(end.output, "Nominal"), "30.00 per second");
}

/// Runs it without an end of its own, does something to its window as soon as there is one, and waits.
TChildEnd RunWindowAnd(void (*act)(void* window)) {
    std::thread user([act] {
        void* window = nullptr;
        if (WaitUntil([&] { return (window = FindWindowByTitle(VRL_L("Plasma"))) != nullptr; })) act(window);
    });
    const TChildEnd end = RunWindow({"--size", "96x64"});
    user.join();
    return end;
}

TEST(WindowCommand, EndsWithEscapeOrItsWindow) {
    if (!CanShowWindows()) GTEST_SKIP() << "no display";
    const TChildEnd byKey = RunWindowAnd([](void* window) {
        PressKey(window, 'a');
        PressKey(window, WINDOW_KEY_ESCAPE);
    });
    EXPECT_TRUE(byKey.IsSuccess()) << byKey.errors;
    EXPECT_EQ(Field(byKey.output, "Size"), "96 x 64");
    const TChildEnd byButton = RunWindowAnd(&CloseWindowByUser);
    EXPECT_TRUE(byButton.IsSuccess()) << byButton.errors;
    EXPECT_EQ(Field(byButton.output, "Size"), "96 x 64");
}

TEST(WindowCommand, WithoutADeviceItSaysSoInOneLine) {
    const TChildEnd end = RunChild("vorlund", {.arguments = {"--no-plugins", "window", "--frames", "1"}});
    EXPECT_FALSE(end.IsSuccess());
    EXPECT_EQ(end.output, "");
    EXPECT_EQ(end.errors.find("vorlund: There is no video device"), 0u) << end.errors;
    EXPECT_EQ(end.errors.find('\n'), end.errors.size() - 1);
}

TEST(WindowCommand, WrongOptionsAreOneLine) {
    for (const char* size : {"0x0", "640", "x", "-1x5", "99999x1"}) {
        const TChildEnd end = RunWindow({"--size", size});
        EXPECT_EQ(end.exitCode, 2u) << size;
        EXPECT_EQ(end.errors.find('\n'), end.errors.size() - 1) << end.errors;
    }
}

} // namespace
} // namespace vorlund::test
