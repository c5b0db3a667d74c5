// The four destinations without handlers: a debugging parent, the message box, standard streams.
#include "support/ChildProcess.h"
#include "support/DebugRecorder.h"
#include "support/Text.h"

#include <vorlund/Exception.h>
#include <vorlund/String.h>

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <map>
#include <string>
#include <thread>
#include <vector>

#include <windows.h>

namespace vorlund::test {
namespace {

constexpr const char* kChild = "debug_child";
const std::string kFields = " | method=child::Method | file=child/File | line=60 | reason=the reason";

TChildEnd RunMode(std::vector<std::string> arguments) {
    return RunChild(kChild, {.arguments = std::move(arguments)});
}

TChildEnd RunDebugged(std::vector<std::string> arguments) {
    return RunChild(kChild, {.arguments = std::move(arguments), .isDebugged = true});
}

/// The streams are in text mode.
std::string EndedByCrLf(std::string text) {
    for (std::size_t at = 0; (at = text.find('\n', at)) != std::string::npos; at += 2)
        text.insert(at, 1, '\r');
    return text;
}

// Standard streams.

/// `text` in a code page, with that page's substitute.
std::string Encode(unsigned int codePage, const wchar* text) {
    char bytes[100] = {};
    WideCharToMultiByte(codePage, 0, text, -1, bytes, sizeof(bytes), nullptr, nullptr);
    return bytes;
}

std::string Mixed(unsigned int codePage) {
    return Encode(codePage, L"h\u00E9 \u65E5 \U0001F600 ") + Encode(codePage, L"\xD83D") + " end";
}
std::string MixedLines(const std::string& mixed) {
    return EndedByCrLf("first\n" + mixed + "\n\nlast\n");
}

struct TStreamRow {
    const char* name;
    std::vector<std::string> arguments;
    std::string output;
    std::string errors;
};

class DebugDefaultsStreams : public testing::TestWithParam<TStreamRow> {};

TEST_P(DebugDefaultsStreams, GetWholeLinesInTheirCodePage) {
    const TChildEnd end = RunMode(GetParam().arguments);
    EXPECT_TRUE(end.IsSuccess()) << end.exitCode;
    EXPECT_EQ(end.output, GetParam().output);
    EXPECT_EQ(end.errors, GetParam().errors);
}

// One substitute for a unit that Latin letters lack, two for a pair.
const std::string kMixed1252 = "h\xE9 ? ?? ? end";

INSTANTIATE_TEST_SUITE_P(
    DebugDefaults, DebugDefaultsStreams,
    testing::Values(
        TStreamRow{"InitialLocale", {"mixed"}, MixedLines(Mixed(CP_ACP)), MixedLines(Mixed(CP_ACP))},
        TStreamRow{"Latin", {"mixed-in-locale", ".1252"}, MixedLines(kMixed1252), MixedLines(kMixed1252)},
        TStreamRow{"Dos",
                   {"mixed-in-locale", ".437"},
                   MixedLines("h\x82 ? ?? ? end"),
                   MixedLines("h\x82 ? ?? ? end")},
        TStreamRow{"BehindBytes", {"behind-bytes"}, EndedByCrLf("before " + Mixed(CP_ACP) + "\nafter\n"), ""},
        TStreamRow{
            "BehindWideText", {"behind-wide"}, EndedByCrLf("before " + Mixed(CP_ACP) + "\nafter\n"), ""},
        TStreamRow{"BeforeWideText", {"before-wide"}, EndedByCrLf(Mixed(CP_ACP) + "\nafter\n"), ""},
        TStreamRow{"AfterAHandlerWasTakenBack", {"restored"}, "printed\r\n", "printed\r\n"}),
    [](const auto& row) { return row.param.name; });

TEST(DebugDefaults, LinesOfThreadsStayWhole) {
    const TChildEnd end = RunMode({"threads"});
    ASSERT_TRUE(end.IsSuccess());
    for (const std::string& text : {end.output, end.errors}) {
        std::map<std::string, int> counts;
        for (std::size_t at = 0; at < text.size();) {
            const std::size_t next = text.find("\r\n", at);
            ASSERT_NE(next, std::string::npos);
            ++counts[text.substr(at, next - at)];
            at = next + 2;
        }
        ASSERT_EQ(counts.size(), 4u);
        for (int number = 0; number < 4; ++number) {
            const std::string body(300, static_cast<char>('a' + number));
            EXPECT_EQ(counts[std::to_string(number) + ' ' + body], 200);
        }
    }
}

// The debugger.

TEST(DebugDefaults, DebuggerHearsTextAndLineEndApart) {
    const TChildEnd end = RunDebugged({"output"});
    ASSERT_TRUE(end.IsSuccess());
    std::vector<std::string> texts;
    for (const wstring& text : end.debuggerOutput) texts.push_back(Narrow(text));
    const std::vector<std::string> expected{
        "plain 100%s", "\n", "", "\n", "caf\u00E9", "\n", "Exception: type=CFileAccessException" + kFields,
        "\n"};
    EXPECT_EQ(texts, expected);
    EXPECT_EQ(end.output, "");
    EXPECT_EQ(end.errors, "");
}

TEST(DebugDefaults, BreakStopsInTheDebugger) {
    const TChildEnd end = RunDebugged({"break"});
    EXPECT_TRUE(end.hasHitBreakpoint);
    EXPECT_TRUE(end.IsSuccess());
    EXPECT_EQ(end.output, "went on\r\n");
}

TEST(DebugDefaults, BreakWithoutADebuggerEndsTheProcess) {
    const TChildEnd end = RunMode({"break-alone"});
    EXPECT_EQ(end.exitCode, static_cast<unsigned int>(EXCEPTION_BREAKPOINT));
    EXPECT_TRUE(end.IsAbnormal());
}

// The box.

std::string TextOf(HWND window) {
    wchar text[1024] = {};
    SendMessageW(window, WM_GETTEXT, 1024, reinterpret_cast<LPARAM>(text));
    return Narrow(text);
}

std::string ClassOf(HWND window) {
    wchar name[64] = {};
    GetClassNameW(window, name, 64);
    return Narrow(name);
}

/// The box of process `process`, shown and filled; null when none comes within two minutes.
HWND WaitForBox(DWORD process) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::minutes(2);
    while (std::chrono::steady_clock::now() < deadline) {
        HWND box = nullptr;
        while ((box = FindWindowExW(nullptr, box, nullptr, L"Vorlund message"))) {
            DWORD owner = 0;
            GetWindowThreadProcessId(box, &owner);
            if (owner == process && IsWindowVisible(box)) return box;
        }
        // Windows tell nobody outside that they are there, so they are asked again.
        Sleep(10);
    }
    return nullptr;
}

/// What a box is made of.
struct TBox {
    std::string caption;
    std::vector<std::string> texts;
    std::vector<std::string> buttons;
    int icons = 0;
    HWND button = nullptr;

    explicit TBox(HWND window) : caption(TextOf(window)) {
        HWND part = nullptr;
        while ((part = FindWindowExW(window, part, nullptr, nullptr))) {
            if (ClassOf(part) == "Button") {
                buttons.push_back(TextOf(part));
                button = part;
            } else if ((GetWindowLongW(part, GWL_STYLE) & SS_TYPEMASK) == SS_ICON) {
                icon = reinterpret_cast<HICON>(SendMessageW(part, STM_GETICON, 0, 0));
                ++icons;
            } else {
                texts.push_back(TextOf(part));
            }
        }
    }

    HICON icon = nullptr;
};

TEST(DebugDefaults, BugShowsABoxAndWaits) {
    const CDefaultDebugOutput defaults;
    std::atomic<bool> hasRaised = false;
    std::string line;
    std::thread raiser([&] {
        try {
            throw CBugException(L"test::Method", L"test/File", 60, L"caf\u00E9 \u65E5");
        } catch (const CBugException& exception) {
            hasRaised = true;
            line = Narrow(exception.ToString().GetBuffer());
        }
    });
    const HWND window = WaitForBox(GetCurrentProcessId());
    if (!window) {
        raiser.detach();
        FAIL() << "no box";
    }
    const TBox box(window);
    EXPECT_EQ(box.caption, "Vorlund message");
    EXPECT_EQ(ClassOf(window), "#32770");
    EXPECT_EQ(GetWindow(window, GW_OWNER), nullptr);
    ASSERT_EQ(box.texts.size(), 1u);
    EXPECT_EQ(box.texts[0],
              "Exception: type=CBugException | method=test::Method | file=test/File | line=60 | "
              "reason=caf\u00E9 \u65E5");
    EXPECT_EQ(box.buttons, std::vector<std::string>{"OK"});
    EXPECT_EQ(box.icons, 1);
    EXPECT_EQ(box.icon, LoadIconW(nullptr, reinterpret_cast<LPCWSTR>(IDI_INFORMATION)));
    EXPECT_FALSE(hasRaised) << "before the box is closed";

    PostMessageW(box.button, BM_CLICK, 0, 0);
    raiser.join();
    EXPECT_TRUE(hasRaised);
    EXPECT_EQ(line, box.texts[0]);
    EXPECT_FALSE(IsWindow(window));
}

TEST(DebugDefaults, BugOfAConsoleProgramShowsABoxToo) {
    CChildProcess child(kChild, {.arguments = {"bug"}});
    const HWND window = WaitForBox(child.GetProcessId());
    ASSERT_NE(window, nullptr);
    const TBox box(window);
    EXPECT_EQ(box.texts, std::vector<std::string>{"Exception: type=CBugException" + kFields});
    PostMessageW(box.button, BM_CLICK, 0, 0);
    const TChildEnd end = child.Wait();
    EXPECT_TRUE(end.IsSuccess());
    EXPECT_EQ(end.output, "raised\r\n");
}

} // namespace
} // namespace vorlund::test
