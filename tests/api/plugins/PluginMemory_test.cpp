// What the plug-in store does with memory, and without it.
#include <vorlund/PluginStore.h>

#include "api/plugins/TestPlugins.h"
#include "support/Allocations.h"
#include "support/LibraryScope.h"
#include "support/NothingLeft.h"
#include "support/Text.h"

#include <gtest/gtest.h>

#include <new>
#include <string>

namespace vorlund::test {
namespace {

TEST(PluginMemory, StoreGivesBackWhatItTook) {
    const CLibraryScope library;
    ExpectNothingLeft([] {
        CPluginStore store;
        store.AddPluginPath(VRL_L("/a folder with a name too long to be kept in place"));
        store.AddPluginExtension(VRL_L("plg"));
    });
}

TEST(PluginMemory, PluginThatCannotBeRecordedIsClosedAndUnloaded) {
    const CLibraryScope library;
    bool isInProcess = true;
    std::string output;
    for (std::size_t successes = 0;; ++successes) {
        const CPluginFolder folder;
        const fs::path file = folder.Add("silent");
        const wstring path = folder.GetPath();
        CPluginStore store;
        store.AddPluginPath(path.c_str());
        bool isRefused = false;
        testing::internal::CaptureStdout();
        {
            const CAllocationFailure failure(successes);
            try {
                store.LoadPlugin(VRL_L("silent"));
            } catch (const std::bad_alloc&) {
            }
            isRefused = failure.HasFailed();
        }
        const std::string said = testing::internal::GetCapturedStdout();
        EXPECT_EQ(store.IsPluginLoaded(VRL_L("silent")), !isRefused) << successes;
        if (!isRefused) {
            store.Close();
            break;
        }
        isInProcess = IsInProcess(file);
        output = said;
    }
    // The last allocation is the record's. A plug-in that was refused memory in its own entry stays.
    EXPECT_FALSE(isInProcess);
    EXPECT_EQ(output, "close silent\n");
}

TEST(PluginMemory, WhatAPluginRaisesIsReportedWithoutMemoryToo) {
    const CLibraryScope library;
    CPluginFolder folder;
    const wstring path = ToVorlund(folder.Add("raising_alone"));
    CPluginStore store;
    store.SetFailureMode(PLUGIN_FAILURE_REPORTED);
    bool wasWithoutReason = false;
    for (std::size_t successes = 0;; ++successes) {
        TPluginOutcome outcome = PLUGIN_BEGUN;
        bool isRefused = false;
        {
            const CAllocationFailure failure(successes);
            try {
                outcome = store.LoadPluginFile(path.c_str());
            } catch (const std::bad_alloc&) {
                isRefused = true;
            }
            isRefused = isRefused || failure.HasFailed();
        }
        if (outcome == PLUGIN_BEGUN) continue;
        ASSERT_EQ(outcome, PLUGIN_RAISED) << successes;
        const TPluginReport report = store.GetReport(0);
        EXPECT_EQ(report.outcome, PLUGIN_RAISED) << successes;
        if (!isRefused) {
            EXPECT_EQ(Narrow(report.detail), "no sound card, and a text too long to be kept in place");
            break;
        }
        wasWithoutReason = wasWithoutReason || report.detail.Length() == 0;
    }
    EXPECT_TRUE(wasWithoutReason);
}

} // namespace
} // namespace vorlund::test
