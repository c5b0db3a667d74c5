// What the plug-in store tells of each file that has the name of a plug-in, and of plug-ins that fail.
#include "api/plugins/TestPlugins.h"
#include "support/DebugRecorder.h"
#include "support/Failures.h"
#include "support/LibraryScope.h"

#include <vorlund/ClassIds.h>
#include <vorlund/DecoderSupport.h>
#include <vorlund/ObjectList.h>
#include <vorlund/PluginInfo.h>
#include <vorlund/PluginStore.h>
#include <vorlund/RefPtr.h>
#include <vorlund/Version.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

namespace vorlund::test {
namespace {

using TTexts = std::vector<std::string>;

/// Where the file tells the machine that it is for.
std::size_t FindMachine(const std::string& image) {
    const auto* const bytes = reinterpret_cast<const std::uint8_t*>(image.data());
    return image[0] == 'M' ? LoadLittleEndian32(bytes + 0x3C) + 4 : 18;
}

std::string Replace(std::string bytes, const std::string& what, const std::string& with) {
    const std::size_t at = bytes.find(what);
    EXPECT_NE(at, std::string::npos) << what;
    for (std::size_t i = at; i != std::string::npos; i = bytes.find(what, i + 1))
        bytes.replace(i, with.size(), with);
    return bytes;
}

class PluginReports : public testing::Test {
protected:
    ~PluginReports() noexcept override { store_.Close(); }

    TPluginReport GetReport(const std::string& name) const {
        const wstring path = ToVorlund(folder_.PathOf(name));
        for (unsigned int i = 0; i < store_.GetReportCount(); ++i)
            if (const TPluginReport report = store_.GetReport(i); report.path == path.c_str()) return report;
        ADD_FAILURE() << "no report of " << name;
        return {};
    }
    std::string Explain(const std::string& name) const { return Narrow(GetReport(name).Explain()); }

    void LoadAll() {
        store_.AddPluginPath(folder_.GetPath().c_str());
        store_.LoadAvailablePlugins();
    }
    void Write(const std::string& name, const std::string& bytes) const {
        WriteFile(folder_.PathOf(name), bytes);
    }

    const std::string image_ = ReadFile(PluginFile("accepting"));
    CPluginFolder folder_;
    CLibraryScope library_;
    CDebugRecorder recorder_;
    CPluginStore store_;
};

TEST_F(PluginReports, LoadedPluginTellsWhatItIsAndBrings) {
    folder_.Add("recorded");
    store_.AddPluginPath(folder_.GetPath().c_str());
    store_.LoadPlugin(VRL_L("recorded"));
    const TPluginReport report = GetReport("recorded");
    EXPECT_EQ(report.outcome, PLUGIN_LOADED);
    EXPECT_EQ(report.loads, 1U);
    EXPECT_TRUE(report.hasInfo);
    EXPECT_EQ(Narrow(report.name), "recorded");
    EXPECT_EQ(Narrow(report.version), "2.5");
    EXPECT_EQ(Narrow(report.licence), "MIT");
    EXPECT_EQ(report.libraryVersion, VORLUND_VERSION);
    EXPECT_EQ(Narrow(report.libraries), "libone 1.0, libtwo 2.0");
    EXPECT_EQ(Narrow(report.Explain()), "loaded");
    const CId id{0x7E57C1A5, 10, 11, 12};
    const TPluginItemKind kinds[] = {PLUGIN_ITEM_CLASS, PLUGIN_ITEM_DECODER, PLUGIN_ITEM_ENCODER,
                                     PLUGIN_ITEM_DEVICE};
    ASSERT_EQ(report.items.size(), std::size(kinds));
    for (std::size_t i = 0; i < std::size(kinds); ++i) {
        EXPECT_EQ(report.items[i].kind, kinds[i]);
        EXPECT_TRUE(report.items[i].classId == id);
        EXPECT_EQ(Narrow(report.items[i].name), "test::CRecorded");
    }
}

TEST_F(PluginReports, PluginWithoutARecordLoadsAsEver) {
    folder_.Add("accepting");
    LoadAll();
    const TPluginReport report = GetReport("accepting");
    EXPECT_EQ(report.outcome, PLUGIN_LOADED);
    EXPECT_FALSE(report.hasInfo);
    EXPECT_EQ(report.name.Length(), 0U);
    EXPECT_TRUE(report.items.empty());
    // The rule for a plug-in in one folder.
    EXPECT_EQ(report.loads, 1U);
}

TEST_F(PluginReports, WhatOthersRegisterIsNotThePluginsOwn) {
    NotePluginLibrary(VRL_L("nobody listens"));
    folder_.Add("accepting");
    folder_.Add("recorded");
    LoadAll();
    EXPECT_TRUE(GetReport("accepting").items.empty());
    EXPECT_EQ(GetReport("accepting").libraries.Length(), 0U);
    EXPECT_EQ(GetReport("recorded").items.size(), 4U);
}

TEST_F(PluginReports, EachRefusalHasItsReason) {
    folder_.Add("refusing");
    folder_.Add("half");
    folder_.Add("depending");
    Write("text", "no library");
    Write("empty", "");
    Write("cut", image_.substr(0, image_.size() / 4));
    std::string other = image_;
    other[FindMachine(image_)] = '\x28';
    other[FindMachine(image_) + 1] = '\0';
    Write("other", other);
    Write("library", Replace(image_, "Vrl", "Xrl"));
    LoadAll();
    const struct {
        const char* name;
        TPluginOutcome outcome;
        std::string sentence;
    } rows[] = {
        {"refusing", PLUGIN_DECLINED, "its init entry returned false"},
        {"half", PLUGIN_NO_ENTRY, "an entry is missing: ?VrlClosePlugin@@YAXXZ"},
        {"depending", PLUGIN_MISSING_LIBRARY,
         std::string("a library that it needs is missing: plugin_dependency") + kPluginEnding},
        {"text", PLUGIN_NO_PLUGIN,
         "the file is no plug-in for this process: it is no shared library, or a damaged one"},
        {"empty", PLUGIN_NO_PLUGIN,
         "the file is no plug-in for this process: it is no shared library, or a damaged one"},
        {"library", PLUGIN_NO_PLUGIN,
         "the file is no plug-in for this process: it is a shared library of another kind"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(GetReport(row.name).outcome, row.outcome) << row.name;
        EXPECT_EQ(Explain(row.name), row.sentence);
    }
    EXPECT_EQ(GetReport("other").outcome, PLUGIN_OTHER_MACHINE);
    // The number is that of ARM on ELF and nobody's on PE.
    EXPECT_EQ(Explain("other"), image_[0] == 'M' ? "it is for another kind of machine: machine 40"
                                                 : "it is for another kind of machine: ARM, 32 bits");
    EXPECT_EQ(GetReport("cut").outcome, PLUGIN_CUT);
    const std::string head = "it was cut short: " + std::to_string(image_.size() / 4) + " of ";
    EXPECT_EQ(Explain("cut").find(head), 0U) << Explain("cut");
}

TEST_F(PluginReports, OtherMachinesHaveTheirNames) {
    // Names of ELF; on PE these numbers are nobody's.
    const bool isElf = image_[0] != 'M';
    const struct {
        int machine;
        const char* name;
    } rows[] = {{3, "x86, 32 bits"}, {40, "ARM, 32 bits"}, {62, "x86-64"}, {183, "AArch64"}, {243, "RISC-V"}};
    const auto machineOf = [this] { return static_cast<std::uint8_t>(image_[FindMachine(image_)]); };
    for (const auto& row : rows) {
        if (row.machine == machineOf()) continue;
        std::string other = image_;
        other[FindMachine(image_)] = static_cast<char>(row.machine);
        other[FindMachine(image_) + 1] = '\0';
        Write(std::to_string(row.machine), other);
    }
    LoadAll();
    for (const auto& row : rows) {
        if (row.machine == machineOf()) continue;
        EXPECT_EQ(Explain(std::to_string(row.machine)),
                  "it is for another kind of machine: " +
                      (isElf ? row.name : "machine " + std::to_string(row.machine)));
    }
}

TEST_F(PluginReports, WhatTheSystemDoesNotLoadHasItsReason) {
    // One whose own entry refuses, or which needs a function that the library does not export.
    const char* const name = image_[0] == 'M' ? "unwilling" : "symbol";
    if (image_[0] == 'M')
        folder_.Add(name);
    else
        Write(name, Replace(image_, "PrintMessage", "ShoutMessage"));
    LoadAll();
    EXPECT_EQ(GetReport(name).outcome, PLUGIN_NOT_LOADABLE) << Explain(name);
    const std::string because = "the system does not load it: ";
    EXPECT_EQ(Explain(name).find(because), 0U) << Explain(name);
    EXPECT_GT(Explain(name).size(), because.size());
    // The number is that of Windows, ERROR_DLL_INIT_FAILED; elsewhere there are texts alone.
    EXPECT_EQ(GetReport(name).code, image_[0] == 'M' ? 1114 : 0);
}

TEST_F(PluginReports, FolderWithoutPluginsIsReportedWithoutObjects) {
    Write("text", "no library");
    Write("cut", image_.substr(0, image_.size() / 4));
    WriteFile(folder_.At("note.txt"), "nobody's");
    // What lies beside the test program.
    store_.ClearPluginPaths();
    const int before = CreateAs<IObjectList>(classid::CObjectList)->GetObjectNumber();
    LoadAll();
    EXPECT_EQ(CreateAs<IObjectList>(classid::CObjectList)->GetObjectNumber(), before + 1);
    EXPECT_EQ(store_.GetReportCount(), 2U);
    EXPECT_EQ(GetReport("text").outcome, PLUGIN_NO_PLUGIN);
    EXPECT_EQ(GetReport("cut").outcome, PLUGIN_CUT);
    EXPECT_TRUE(recorder_.GetEntries().empty());
}

TEST_F(PluginReports, FoldersAreListed) {
    const unsigned int count = store_.GetPluginPathCount();
    EXPECT_GE(count, 2U);
    store_.AddPluginPath(VRL_L("/somewhere/"));
    EXPECT_EQ(store_.GetPluginPathCount(), count + 1);
    EXPECT_EQ(Narrow(store_.GetPluginPath(count)), "/somewhere/");
    EXPECT_EQ(store_.GetPluginPath(count + 1).Length(), 0U);
    store_.ClearPluginPaths();
    EXPECT_EQ(store_.GetPluginPathCount(), 0U);
}

// Exceptions.

TEST_F(PluginReports, ExceptionPassesOnUnlessItIsAskedFor) {
    folder_.Add("raising");
    store_.AddPluginPath(folder_.GetPath().c_str());
    ExpectRaises<CInvalidStateException>(kCannotStart, [&] { store_.LoadAvailablePlugins(); });
    const TPluginReport report = GetReport("raising");
    EXPECT_EQ(report.outcome, PLUGIN_RAISED);
    EXPECT_EQ(report.exceptionType, EXCEPTION_TYPE_INVALID_STATE);
    EXPECT_EQ(Narrow(report.exceptionMethod), "VrlInitPlugin");
    EXPECT_EQ(Narrow(report.detail), "Plug-in cannot start");
}

TEST_F(PluginReports, GuardedPluginsDoNotKeepOthersOut) {
    for (const char* const name : {"raising", "raising_other", "hasty", "accepting", "recorded"})
        folder_.Add(name);
    store_.SetFailureMode(PLUGIN_FAILURE_REPORTED);
    LoadAll();
    EXPECT_TRUE(store_.IsPluginLoaded(VRL_L("accepting")));
    EXPECT_TRUE(store_.IsPluginLoaded(VRL_L("recorded")));
    EXPECT_FALSE(store_.IsPluginLoaded(VRL_L("raising")));
    EXPECT_EQ(Explain("raising"),
              "an entry raised an exception: CInvalidStateException: Plug-in cannot start");
    EXPECT_EQ(Explain("raising_other"), "an entry raised an exception: no sound card");
    EXPECT_EQ(GetReport("raising_other").exceptionMethod.Length(), 0U);
    EXPECT_EQ(GetReport("hasty").outcome, PLUGIN_DECLINED);
    EXPECT_EQ(GetReport("hasty").items.size(), 1U);
}

TEST_F(PluginReports, ExceptionsOfWhichLittleIsKnown) {
    folder_.Add("raising_silent");
    folder_.Add("raising_named");
    store_.SetFailureMode(PLUGIN_FAILURE_REPORTED);
    LoadAll();
    EXPECT_EQ(Explain("raising_silent"), "an entry raised an exception");
    EXPECT_EQ(Explain("raising_named"), "an entry raised an exception: CException");
    // What is not a class of the plug-in's own has its identifier for a name.
    const TPluginReport report = GetReport("raising_named");
    ASSERT_EQ(report.items.size(), 2U);
    EXPECT_EQ(Narrow(report.items[0].name), "test::COdd");
    EXPECT_EQ(Narrow(report.items[1].name), Narrow(report.items[1].classId.ToString().c_str()));
}

TEST_F(PluginReports, GuardedPluginThatRegistersAndDeclinesStays) {
    const fs::path file = folder_.Add("hasty");
    store_.SetFailureMode(PLUGIN_FAILURE_REPORTED);
    LoadAll();
    EXPECT_TRUE(IsInProcess(file));
    // Its class works, and it is not closed.
    EXPECT_TRUE(CRefPtr<IObject>::Adopt(v.GetClassStore().CreateObject(VRL_L("test::CHasty"))));
    store_.Close();
    const TTexts texts = recorder_.GetTexts(DEBUG_MESSAGE_OUTPUT);
    EXPECT_EQ(std::count(texts.begin(), texts.end(), "close hasty"), 0);
}

TEST_F(PluginReports, GuardedPluginThatOnlyDeclinesGoes) {
    const fs::path file = folder_.Add("refusing");
    store_.SetFailureMode(PLUGIN_FAILURE_REPORTED);
    LoadAll();
    EXPECT_EQ(GetReport("refusing").outcome, PLUGIN_DECLINED);
    EXPECT_TRUE(GetReport("refusing").items.empty());
    EXPECT_FALSE(IsInProcess(file));
}

TEST_F(PluginReports, GuardedPluginThatRegistersBesideABadTableStays) {
    const fs::path file = folder_.Add("bad_table");
    store_.SetFailureMode(PLUGIN_FAILURE_REPORTED);
    LoadAll();
    EXPECT_EQ(GetReport("bad_table").outcome, PLUGIN_BAD_TABLE);
    EXPECT_EQ(GetReport("bad_table").items.size(), 1U);
    EXPECT_FALSE(store_.IsPluginLoaded(VRL_L("bad_table")));
    EXPECT_TRUE(IsInProcess(file));
    EXPECT_TRUE(CRefPtr<IObject>::Adopt(v.GetClassStore().CreateObject(VRL_L("test::CTabled"))));
}

TEST(PluginReportsOfALibrary, InitGoesOnWhenFailuresAreReported) {
    const CLibraryScope library;
    const CDebugRecorder recorder;
    const CPluginFolder folder;
    folder.Add("raising");
    folder.Add("accepting");
    CVorlund own;
    own.GetPluginStore().ClearPluginPaths();
    own.GetPluginStore().AddPluginPath(folder.GetPath().c_str());
    ExpectRaises<CInvalidStateException>(kCannotStart, [&] { own.Init(); });
    own.Abandon();
    own.GetPluginStore().SetFailureMode(PLUGIN_FAILURE_REPORTED);
    own.Init();
    EXPECT_TRUE(own.GetPluginStore().IsPluginLoaded(VRL_L("accepting")));
    own.Close();
}

} // namespace
} // namespace vorlund::test
