// What happens when the library ends while it is open, and what a failed creation leaves behind: seen
// from outside, because it ends the process.
#include "support/ChildProcess.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

namespace vorlund::test {
namespace {

constexpr const char* kVorlund =
    "Exception: type=CBugException | method=vorlund::CVorlund::~CVorlund | file=src/vorlund/api/Vorlund | "
    "line=14 | reason=Vorlund not closed before exiting!";
constexpr const char* kCounter =
    "Exception: type=CBugException | method=vorlund::CObjectCounter::~CObjectCounter | "
    "file=src/vorlund/api/ObjectCounter | line=96 | reason=Not closed";
constexpr const char* kCodecStore =
    "Exception: type=CBugException | method=vorlund::CCodecClassStore::~CCodecClassStore | "
    "file=src/vorlund/data/CodecClassStore | line=58 | reason=Not closed";
constexpr const char* kDeviceStore =
    "Exception: type=CBugException | method=vorlund::CDeviceClassStore::~CDeviceClassStore | "
    "file=src/vorlund/devices/DeviceClassStore | line=29 | reason=Not closed";
constexpr const char* kClassStore =
    "Exception: type=CBugException | method=vorlund::CClassStore::~CClassStore | "
    "file=src/vorlund/api/ClassStore | line=28 | reason=Not closed";

constexpr const char* kTimerPool =
    "Exception: type=CBugException | method=vorlund::CTimerPool::~CTimerPool | "
    "file=src/vorlund/system/TimerWin32 | line=51 | reason=Timers still alive!";

/// The child's lines; the standard output of Windows ends them its own way.
std::string Lines(const TChildEnd& end) {
    std::string text = end.output;
    std::erase(text, '\r');
    return text;
}

/// The two reports of a bug.
std::string Bug(const std::string& text) {
    return "output " + text + "\nbox " + text + "\n";
}

struct TEndRow {
    const char* program;
    const char* mode;
    /// The report that the process ends with, or null when it ends well.
    const char* report;
};

class Unload : public testing::TestWithParam<TEndRow> {};

std::string NameOf(const testing::TestParamInfo<TEndRow>& row) {
    std::string name = std::string(row.param.program) + "_" + row.param.mode;
    std::replace(name.begin(), name.end(), '-', '_');
    return name;
}

TEST_P(Unload, Reports) {
    const TChildEnd end = RunChild(GetParam().program, {.arguments = {GetParam().mode}});
    EXPECT_FALSE(end.hasTimedOut);
    const std::string expected = GetParam().report ? Bug(GetParam().report) : "";
#if defined(_WIN64) || defined(__aarch64__)
    // What leaves a library that is unloaded passes the loader here, up to whoever ends the process for it:
    // what else is open may report as well. The loader of 64-bit Windows, as Wine has it, catches it even,
    // and the process may end as if nothing had been.
    if (!expected.empty()) {
        EXPECT_EQ(Lines(end).substr(0, expected.size()), expected);
#if !defined(_WIN64)
        EXPECT_TRUE(end.IsAbnormal());
#endif
        return;
    }
#endif
    EXPECT_EQ(Lines(end), expected);
    EXPECT_EQ(end.IsAbnormal(), !expected.empty());
    EXPECT_EQ(end.IsSuccess(), expected.empty())
        << "exit code " << end.exitCode << ", signal " << end.signal << "\n"
        << end.errors;
}

INSTANTIATE_TEST_SUITE_P(
    Rows, Unload,
    testing::Values(
        TEndRow{"lifecycle_child", "never-opened", nullptr}, TEndRow{"lifecycle_child", "closed", nullptr},
        TEndRow{"lifecycle_child", "closed-again", nullptr},
        TEndRow{"lifecycle_child", "open-at-return", kVorlund},
        TEndRow{"lifecycle_child", "open-at-exit", kVorlund},
        TEndRow{"lifecycle_child", "open-again", kVorlund},
        TEndRow{"lifecycle_child", "open-with-objects", kVorlund},
        // An initialisation that did not come to its end: the members report, the last one first.
        TEndRow{"lifecycle_child", "counter-open", kCounter},
        TEndRow{"lifecycle_child", "codec-store-open", kCodecStore},
        TEndRow{"lifecycle_child", "device-store-open", kDeviceStore},
        TEndRow{"lifecycle_child", "class-store-open", kClassStore},
        TEndRow{"unload_child", "never-opened", nullptr}, TEndRow{"unload_child", "closed", nullptr},
        TEndRow{"unload_child", "open", kVorlund}, TEndRow{"unload_child", "open-in-a-second-life", kVorlund},
        TEndRow{"unload_child", "events-used", nullptr}, TEndRow{"unload_child", "with-waits", nullptr},
        TEndRow{"unload_child", "timer-alive", kTimerPool}, TEndRow{"unload_child", "static-timers", nullptr},
        TEndRow{"unload_child", "static-objects-beside-others", nullptr},
        TEndRow{"unload_child", "static-timer-at-exit", nullptr},
        TEndRow{"unload_child", "inside-callback", nullptr},
        TEndRow{"unload_child", "inside-callback-at-exit", nullptr},
        TEndRow{"event_child", "timer-alive", kTimerPool},
        TEndRow{"event_child", "timer-just-started", kTimerPool},
        TEndRow{"event_child", "timer-stopped", nullptr},
        // `v` ends before the timers.
        TEndRow{"event_child", "timer-alive-and-open", kVorlund},
        TEndRow{"event_child", "first-numbers", nullptr}, TEndRow{"event_child", "waits-at-return", nullptr},
        TEndRow{"event_child", "waits-at-exit", nullptr}, TEndRow{"event_child", "waits-that-fail", nullptr},
        TEndRow{"event_child", "callback-at-return", nullptr},
        TEndRow{"event_child", "callbacks-at-return", nullptr},
        TEndRow{"event_child", "threads-at-return", nullptr},
        TEndRow{"event_child", "static-objects", nullptr}),
    NameOf);

#if !defined(_WIN32)
// On Windows a callback keeps only the library, and not the module that it lies in; and nothing of a program
// runs after the end of its libraries.
INSTANTIATE_TEST_SUITE_P(Posix, Unload,
                         testing::Values(TEndRow{"unload_child", "inside-own-callback", nullptr},
                                         TEndRow{"event_child", "waits-after-the-end", nullptr}),
                         NameOf);
#endif

TEST(UnloadHandlers, AreNotCalledWhenTheObjectsOfTheApplicationHaveEnded) {
    const TChildEnd end = RunChild("lifecycle_child", {.arguments = {"handler-of-a-static-object"}});
    EXPECT_EQ(Lines(end), "listener called\nlistener ended\n");
    EXPECT_TRUE(end.IsAbnormal());
    // Instead of the box that the application did not want.
    EXPECT_NE(end.errors.find(kVorlund), std::string::npos) << end.errors;
}

struct TLinesRow {
    const char* mode;
    const char* lines;
};

class UnloadUnfinishedFactory : public testing::TestWithParam<TLinesRow> {};

TEST_P(UnloadUnfinishedFactory, LeavesTheLockWithItsThread) {
    const TChildEnd end = RunChild("lifecycle_child", {.arguments = {GetParam().mode}});
    EXPECT_EQ(Lines(end), GetParam().lines);
    EXPECT_TRUE(end.IsSuccess()) << end.errors;
}

INSTANTIATE_TEST_SUITE_P(Rows, UnloadUnfinishedFactory,
                         testing::Values(TLinesRow{"lock-left-to-others",
                                                   "before went on\nthis went on\nother is blocked\n"},
                                         TLinesRow{"lock-of-an-ended-thread",
                                                   "output Exception: type=CBugException | "
                                                   "method=vorlund::CBinaryLock::~CBinaryLock | "
                                                   "file=src/vorlund/system/BinaryLock_win32 | line=25 | "
                                                   "reason=Still locked\n"
                                                   "box Exception: type=CBugException | "
                                                   "method=vorlund::CBinaryLock::~CBinaryLock | "
                                                   "file=src/vorlund/system/BinaryLock_win32 | line=25 | "
                                                   "reason=Still locked\nclose raised\nclose went on\n"},
                                         TLinesRow{"device-lock-left-to-others",
                                                   "before went on\noutput Exception: "
                                                   "type=CClassNotFoundException | "
                                                   "method=vorlund::CDeviceClassStore::CreateDevice | "
                                                   "file=src/vorlund/devices/DeviceClassStore | line=75 | "
                                                   "reason=\ncreation failed\nthis went on\n"
                                                   "other is blocked\n"}),
                         [](const auto& row) {
                             std::string name = row.param.mode;
                             std::replace(name.begin(), name.end(), '-', '_');
                             return name;
                         });

} // namespace
} // namespace vorlund::test
