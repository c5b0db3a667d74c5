// The scan of plug-ins by a process of their own, and the reports about every file.
#include <vorlund/PluginStore.h>

#include "api/plugins/InheritedObject.h"
#include "api/plugins/TestPlugins.h"
#include "support/DebugRecorder.h"
#include "support/Failures.h"
#include "support/LibraryScope.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <vector>

namespace vorlund::test {
namespace {

using TTexts = std::vector<std::string>;

/// The loader of 64-bit Windows, as Wine has it, catches the fault of a library that it unloads, and goes on.
#if defined(_WIN64)
constexpr bool kDiesOfUnloading = false;
#else
constexpr bool kDiesOfUnloading = true;
#endif

/// A program of the tests by its name, as the library takes it.
wstring ProgramFile(const std::string& name) {
    return ToVorlund(BesideProgram(name + kProgramEnding));
}

class PluginScan : public testing::Test {
protected:
    ~PluginScan() noexcept override { store_.Close(); }

    /// What comes of plug-in `name` in the folder under a scan; the only report is about it.
    TPluginOutcome Load(const std::string& name) {
        const TPluginOutcome outcome = store_.LoadPluginFile(ToVorlund(folder_.PathOf(name)).c_str());
        EXPECT_EQ(GetReport(name).outcome, outcome);
        return outcome;
    }
    /// The report about a plug-in's file.
    TPluginReport GetReport(const std::string& name) const {
        const wstring path = ToVorlund(folder_.PathOf(name));
        for (unsigned int i = 0; i < store_.GetReportCount(); ++i)
            if (const TPluginReport report = store_.GetReport(i); report.path == path.c_str()) return report;
        return store_.GetReport(store_.GetReportCount());
    }
    /// What the plug-ins said in this process.
    TTexts Reports() {
        TTexts texts = recorder_.GetTexts(DEBUG_MESSAGE_OUTPUT);
        recorder_.Clear();
        return texts;
    }

    CPluginFolder folder_;
    CLibraryScope library_;
    CDebugRecorder recorder_;
    CPluginStore store_;
};

// Reports, with and without a scan.

TEST_F(PluginScan, EveryFileHasAReport) {
    folder_.Add("accepting");
    folder_.Add("refusing");
    folder_.Add("half");
    WriteFile(folder_.PathOf("text"), "no library");
    EXPECT_EQ(store_.GetReportCount(), 0U);
    EXPECT_EQ(Load("accepting"), PLUGIN_LOADED);
    EXPECT_EQ(Load("refusing"), PLUGIN_DECLINED);
    EXPECT_EQ(Load("half"), PLUGIN_NO_ENTRY);
    EXPECT_EQ(Load("text"), PLUGIN_NO_PLUGIN);
    EXPECT_EQ(store_.GetReportCount(), 4U);
    // The last attempt counts.
    EXPECT_EQ(Load("accepting"), PLUGIN_LOADED);
    EXPECT_EQ(store_.GetReportCount(), 4U);
    EXPECT_EQ(Narrow(store_.GetReport(1).reason), "its init entry returned false");
    EXPECT_EQ(store_.GetReport(1).code, 0);
    EXPECT_TRUE(store_.IsPluginLoaded(VRL_L("accepting")));
}

TEST_F(PluginScan, MissingFileHasNone) {
    EXPECT_EQ(store_.LoadPluginFile(ToVorlund(folder_.At("missing")).c_str()), PLUGIN_NO_PLUGIN);
    EXPECT_EQ(store_.LoadPluginFile(nullptr), PLUGIN_NO_PLUGIN);
    EXPECT_EQ(store_.GetReportCount(), 0U);
    const TPluginReport none = store_.GetReport(0);
    EXPECT_EQ(none.outcome, PLUGIN_BEGUN);
    EXPECT_EQ(none.path.Length(), 0);
}

TEST_F(PluginScan, PluginThatRaisesHasAReport) {
    folder_.Add("raising");
    const wstring path = ToVorlund(folder_.PathOf("raising"));
    ExpectRaises<CInvalidStateException>(kCannotStart, [&] { store_.LoadPluginFile(path.c_str()); });
    EXPECT_EQ(GetReport("raising").outcome, PLUGIN_RAISED);
}

TEST_F(PluginScan, FoldersCanBeForgotten) {
    folder_.Add("accepting");
    store_.AddPluginPath(folder_.GetPath().c_str());
    store_.ClearPluginPaths();
    store_.LoadAvailablePlugins();
    store_.LoadPlugin(VRL_L("accepting"));
    EXPECT_FALSE(store_.IsPluginLoaded(VRL_L("accepting")));
    EXPECT_EQ(Reports(), TTexts());
}

// The scan by the library's own program.

class PluginScanChild : public PluginScan {
protected:
    PluginScanChild() { store_.SetScanMode(PLUGIN_SCAN_CHILD); }
};

TEST_F(PluginScanChild, GoodPluginIsLoadedOnceHere) {
    const fs::path file = folder_.Add("accepting");
    store_.AddPluginPath(folder_.GetPath().c_str());
    store_.LoadPlugin(VRL_L("accepting"));
    EXPECT_EQ(GetReport("accepting").outcome, PLUGIN_LOADED);
    EXPECT_EQ(Reports(), TTexts{"init accepting"});
    EXPECT_TRUE(IsInProcess(file));
    EXPECT_TRUE(store_.IsPluginLoaded(VRL_L("accepting")));
}

TEST_F(PluginScanChild, NamesOutsideAscii) {
    const fs::path name(u8"\u00D6l \u97F3 \U0001F3B5");
    folder_.Add("accepting", folder_.PathOf(name).filename());
    EXPECT_EQ(store_.LoadPluginFile(ToVorlund(folder_.PathOf(name)).c_str()), PLUGIN_LOADED);
    EXPECT_EQ(Reports(), TTexts{"init accepting"});
}

TEST_F(PluginScanChild, RelativeFolder) {
    folder_.Add("accepting");
    const CWorkingFolder working(folder_.GetFolder().parent_path());
    store_.AddPluginPath(ToVorlund(folder_.GetFolder().filename()).c_str());
    store_.LoadPlugin(VRL_L("accepting"));
    EXPECT_TRUE(store_.IsPluginLoaded(VRL_L("accepting")));
}

TEST_F(PluginScanChild, PluginThatCreatesObjectsAndRegistersClasses) {
    folder_.Add("creating");
    folder_.Add("with_device");
    EXPECT_EQ(Load("creating"), PLUGIN_LOADED);
    EXPECT_EQ(Load("with_device"), PLUGIN_LOADED);
}

TEST_F(PluginScanChild, PluginThatDoesNotWantOrCannotIsNotAskedHere) {
    for (const char* const name : {"refusing", "raising", "raising_close", "half"}) folder_.Add(name);
    EXPECT_EQ(Load("refusing"), PLUGIN_DECLINED);
    EXPECT_EQ(Load("raising"), PLUGIN_RAISED);
    EXPECT_EQ(Narrow(GetReport("raising").Explain()),
              "an entry raised an exception: CInvalidStateException: Plug-in cannot start");
    EXPECT_EQ(Narrow(GetReport("raising").exceptionMethod), "VrlInitPlugin");
    EXPECT_EQ(Load("raising_close"), PLUGIN_RAISED);
    EXPECT_GT(GetReport("raising_close").detail.Length(), 0U);
    EXPECT_EQ(Load("half"), PLUGIN_NO_ENTRY);
    EXPECT_EQ(Reports(), TTexts());
    for (const char* const name : {"refusing", "raising", "raising_close"})
        EXPECT_FALSE(IsInProcess(folder_.PathOf(name))) << name;
}

TEST_F(PluginScanChild, PluginThatMissesALibraryIsNotLoadable) {
    folder_.Add("depending");
    EXPECT_EQ(Load("depending"), PLUGIN_MISSING_LIBRARY);
    const std::string missing = Narrow(GetReport("depending").detail.GetBuffer());
    EXPECT_EQ(missing.find("plugin_dependency"), 0U) << missing;
}

TEST_F(PluginScanChild, PluginThatEndsItsProcessIsSkipped) {
    std::vector<std::string> deadly = {"crashing_init", "crashing_close"};
    if (kDiesOfUnloading) deadly.push_back("crashing_unload");
    for (const std::string& name : deadly) {
        folder_.Add(name);
        EXPECT_EQ(Load(name), PLUGIN_SCAN_DIED) << name;
        EXPECT_NE(GetReport(name).code, 0) << name;
        EXPECT_FALSE(IsInProcess(folder_.PathOf(name))) << name;
        const TTexts reports = Reports();
        ASSERT_EQ(reports.size(), 1U);
        EXPECT_NE(reports[0].find("is left out: it ended the scan's process"), std::string::npos)
            << reports[0];
    }
    folder_.Add("exiting_init");
    // Without an answer; or, where the library sees its end, by the exception that it is still open.
    const TPluginOutcome outcome = Load("exiting_init");
    EXPECT_TRUE(outcome == PLUGIN_SCAN_GARBLED || outcome == PLUGIN_SCAN_DIED) << outcome;
    if (!kDiesOfUnloading) {
        folder_.Add("crashing_unload");
        EXPECT_EQ(Load("crashing_unload"), PLUGIN_LOADED);
    }
    // The others are none the worse for it.
    folder_.Add("accepting");
    EXPECT_EQ(Load("accepting"), PLUGIN_LOADED);
}

TEST_F(PluginScanChild, MissingProgramLoadsNothing) {
    folder_.Add("accepting");
    store_.SetScanMode(PLUGIN_SCAN_CHILD, ToVorlund(folder_.At("missing")).c_str());
    EXPECT_EQ(Load("accepting"), PLUGIN_SCAN_NO_HELPER);
    EXPECT_NE(GetReport("accepting").code, 0);
    WriteFile(folder_.At("text"), "no program");
    store_.SetScanMode(PLUGIN_SCAN_CHILD, ToVorlund(folder_.At("text")).c_str());
    EXPECT_EQ(Load("accepting"), PLUGIN_SCAN_NO_HELPER);
    // No file has such a name.
    constexpr wchar kLoneSurrogate[] = {0xD800, 0};
    store_.SetScanMode(PLUGIN_SCAN_CHILD, kLoneSurrogate);
    EXPECT_EQ(Load("accepting"), PLUGIN_SCAN_NO_HELPER);
    EXPECT_NE(GetReport("accepting").code, 0);
    EXPECT_FALSE(IsInProcess(folder_.PathOf("accepting")));
    store_.SetScanMode(PLUGIN_SCAN_NONE);
    EXPECT_EQ(Load("accepting"), PLUGIN_LOADED);
}

TEST_F(PluginScanChild, NothingIsLeftOver) {
    folder_.Add("refusing");
    folder_.Add("crashing_init");
    // What the first one leaves, such as a pipe of the system's for messages, is not the scan's.
    Load("refusing");
    const int before = CountOpenObjects();
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(Load("refusing"), PLUGIN_DECLINED);
        EXPECT_EQ(Load("crashing_init"), PLUGIN_SCAN_DIED);
    }
    EXPECT_EQ(CountOpenObjects(), before);
}

// A program in its place that is not to be trusted.

class PluginScanHelper : public PluginScan {
protected:
    PluginScanHelper() { store_.SetScanMode(PLUGIN_SCAN_CHILD, ProgramFile("scan_helper").c_str()); }

    TPluginOutcome LoadBy(const std::string& how) {
        folder_.Add("accepting", folder_.PathOf(how).filename());
        return Load(how);
    }
};

TEST_F(PluginScanHelper, AnswersThatAreWholeCount) {
    EXPECT_EQ(LoadBy("good"), PLUGIN_LOADED);
    EXPECT_EQ(LoadBy("declining"), PLUGIN_DECLINED);
    EXPECT_EQ(LoadBy("not-loadable"), PLUGIN_NOT_LOADABLE);
    EXPECT_EQ(GetReport("not-loadable").code, 126);
    EXPECT_EQ(Reports(), TTexts{"init accepting"});
}

TEST_F(PluginScanHelper, OthersDoNot) {
    for (const char* const how : {"nothing", "garbage", "short", "cut", "long", "flood", "other-mark",
                                  "other-size", "other-order", "unknown-outcome", "no-outcome"}) {
        EXPECT_EQ(LoadBy(how), PLUGIN_SCAN_GARBLED) << how;
        EXPECT_FALSE(IsInProcess(folder_.PathOf(how))) << how;
    }
}

TEST_F(PluginScanHelper, GoodAnswerBeforeABadEndDoesNotCount) {
    EXPECT_EQ(LoadBy("failing"), PLUGIN_SCAN_DIED);
    EXPECT_EQ(GetReport("failing").code, 3);
    EXPECT_EQ(LoadBy("dying"), PLUGIN_SCAN_DIED);
    EXPECT_NE(GetReport("dying").code, 0);
}

TEST_F(PluginScanHelper, EndlessScanIsGivenUpAfterTenSeconds) {
    using TClock = std::chrono::steady_clock;
    const TClock::time_point start = TClock::now();
    EXPECT_EQ(LoadBy("hanging"), PLUGIN_SCAN_TOO_LATE);
    EXPECT_GE(TClock::now() - start, std::chrono::seconds(10));
    EXPECT_LT(TClock::now() - start, std::chrono::seconds(20));
}

TEST_F(PluginScanHelper, NothingOfTheApplicationIsInherited) {
    const CInheritedObject object;
    EXPECT_EQ(LoadBy("inheriting"), PLUGIN_DECLINED);
    EXPECT_FALSE(object.IsUsed());
}

} // namespace
} // namespace vorlund::test
