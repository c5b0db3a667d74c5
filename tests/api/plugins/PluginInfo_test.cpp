// The record by which a plug-in tells what it is before it runs: the rule of versions, and records that are
// damaged or lie.
#include "api/plugins/TestPlugins.h"
#include "support/DebugRecorder.h"
#include "support/LibraryScope.h"

#include <vorlund/PluginInfo.h>
#include <vorlund/PluginStore.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <string>
#include <vector>

namespace vorlund::test {
namespace {

TEST(PluginInfo, PluginRunsWithTheVersionsThatDoNotBreakIt) {
    const struct {
        std::int32_t plugin;
        std::int32_t library;
        bool fits;
    } rows[] = {
        {VORLUND_VERSION, VORLUND_VERSION, true},
        // While the major number is 0, each minor number may break it.
        {VORLUND_MAKE_VERSION(0, 1, 0), VORLUND_MAKE_VERSION(0, 1, 7), true},
        {VORLUND_MAKE_VERSION(0, 1, 0), VORLUND_MAKE_VERSION(0, 2, 0), false},
        {VORLUND_MAKE_VERSION(0, 0, 9), VORLUND_MAKE_VERSION(0, 1, 0), false},
        // What is newer may use what is not there.
        {VORLUND_MAKE_VERSION(0, 1, 1), VORLUND_MAKE_VERSION(0, 1, 0), false},
        {VORLUND_MAKE_VERSION(0, 2, 0), VORLUND_MAKE_VERSION(0, 1, 9), false},
        {VORLUND_MAKE_VERSION(1, 0, 0), VORLUND_MAKE_VERSION(0, 1, 0), false},
        {VORLUND_MAKE_VERSION(0, 999, 0), VORLUND_MAKE_VERSION(1, 0, 0), false},
        {VORLUND_MAKE_VERSION(1, 2, 3), VORLUND_MAKE_VERSION(1, 9, 0), true},
        {VORLUND_MAKE_VERSION(1, 9, 0), VORLUND_MAKE_VERSION(1, 2, 0), false},
        {VORLUND_MAKE_VERSION(1, 2, 3), VORLUND_MAKE_VERSION(2, 0, 0), false},
        // One that uses nothing of the library but its table.
        {0, VORLUND_MAKE_VERSION(0, 1, 0), true},
        {0, VORLUND_MAKE_VERSION(2, 0, 0), true},
        {-1, VORLUND_MAKE_VERSION(0, 1, 0), false},
        {INT32_MIN, VORLUND_MAKE_VERSION(0, 1, 0), false},
        {INT32_MAX, VORLUND_MAKE_VERSION(0, 1, 0), false},
    };
    for (const auto& row : rows)
        EXPECT_EQ(IsPluginCompatible(row.plugin, row.library), row.fits) << row.plugin << ' ' << row.library;
}

TEST(PluginInfo, RecordHoldsTheTextsAndEndsThem) {
    constexpr TPluginInfoRecord record = MakePluginInfo("name", "1.0", "MIT");
    EXPECT_EQ(std::memcmp(record.mark, "VRLINFO", 8), 0);
    EXPECT_EQ(record.size, 176U);
    EXPECT_EQ(record.libraryVersion, VORLUND_VERSION);
    EXPECT_STREQ(record.name, "name");
    EXPECT_STREQ(record.version, "1.0");
    EXPECT_STREQ(record.licence, "MIT");
}

/// The plug-in "recorded" with another record.
class PluginInfoRecords : public testing::Test {
protected:
    PluginInfoRecords() {
        const TPluginInfoRecord wanted = MakePluginInfo("recorded", "2.5", "MIT");
        at_ = image_.find(std::string(reinterpret_cast<const char*>(&wanted), sizeof wanted));
    }

    void SetUp() override {
        ASSERT_NE(at_, std::string::npos);
        std::memcpy(&record_, image_.data() + at_, sizeof record_);
    }

    /// What comes of the plug-in with `record_` in it, and what it says meanwhile.
    TPluginReport Load() {
        std::string bytes = image_;
        std::memcpy(bytes.data() + at_, &record_, sizeof record_);
        return Load(bytes);
    }
    TPluginReport Load(const std::string& bytes) {
        const CPluginFolder folder;
        WriteFile(folder.PathOf("changed"), bytes);
        // One library for each, as the names of the plug-in's classes go with it.
        const CLibraryScope library;
        const CDebugRecorder recorder;
        CPluginStore store;
        store.LoadPluginFile(ToVorlund(folder.PathOf("changed")).c_str());
        const TPluginReport report = store.GetReport(0);
        store.Close();
        said_ = recorder.GetTexts(DEBUG_MESSAGE_OUTPUT);
        return report;
    }

    std::string image_ = ReadFile(PluginFile("recorded"));
    std::size_t at_ = 0;
    TPluginInfoRecord record_ = {};
    std::vector<std::string> said_;
};

TEST_F(PluginInfoRecords, PluginForALaterVersionIsRefusedBeforeItRuns) {
    record_.libraryVersion = VORLUND_MAKE_VERSION(0, 2, 0);
    const TPluginReport report = Load();
    EXPECT_EQ(report.outcome, PLUGIN_INCOMPATIBLE);
    EXPECT_EQ(
        Narrow(report.Explain()),
        "it was built for another version of the library: 0.2.0, and this one is " VORLUND_VERSION_STRING);
    EXPECT_TRUE(report.hasInfo);
    EXPECT_EQ(Narrow(report.name), "recorded");
    EXPECT_EQ(report.libraryVersion, VORLUND_MAKE_VERSION(0, 2, 0));
    EXPECT_TRUE(said_.empty());
    EXPECT_TRUE(report.items.empty());
}

TEST_F(PluginInfoRecords, LaterRecordsMayBeLongerAndOthersAreNone) {
    // Longer than the section.
    record_.size = 1 << 20;
    EXPECT_FALSE(Load().hasInfo);
    for (const std::uint32_t size : {0U, 1U, 175U, 0xFFFFFFFFU}) {
        record_.size = size;
        const TPluginReport report = Load();
        EXPECT_EQ(report.outcome, PLUGIN_LOADED) << size;
        EXPECT_FALSE(report.hasInfo) << size;
    }
    record_.size = sizeof record_;
    EXPECT_TRUE(Load().hasInfo);
    record_.mark[6] = 'X';
    EXPECT_FALSE(Load().hasInfo);
}

TEST_F(PluginInfoRecords, TextsThatDoNotEndAreNoRecord) {
    const auto fill = [](auto& text) { std::memset(text, 'x', sizeof text); };
    const TPluginInfoRecord whole = record_;
    fill(record_.name);
    EXPECT_FALSE(Load().hasInfo);
    record_ = whole;
    fill(record_.version);
    EXPECT_FALSE(Load().hasInfo);
    record_ = whole;
    fill(record_.licence);
    EXPECT_FALSE(Load().hasInfo);
    // As long as may be.
    record_ = whole;
    std::memset(record_.licence, 'x', sizeof record_.licence - 1);
    record_.licence[sizeof record_.licence - 1] = '\0';
    EXPECT_EQ(Narrow(Load().licence), std::string(63, 'x'));
}

TEST_F(PluginInfoRecords, TextsDoNotControlATerminal) {
    std::strcpy(record_.name, "a\033[2Jb\nc\x7f");
    std::strcpy(record_.version, "\xC2\x9B"
                                 "1\xE2\x80\xAE"
                                 "2");
    std::strcpy(record_.licence, "\xC3\xA4 \xF0\x9F\x8E\xB5");
    const TPluginReport report = Load();
    EXPECT_EQ(Narrow(report.name), "a?[2Jb?c?");
    EXPECT_EQ(Narrow(report.version), "?1?2");
    const wchar wanted[] = {0xE4, ' ', 0xD83C, 0xDFB5, 0};
    EXPECT_TRUE(report.licence == wanted);
    // What is no UTF-8 is read as something, and never as a control.
    std::strcpy(record_.name, "\xFF\xC0\x80\x9B\xED\xA0\x80z");
    const TPluginReport other = Load();
    ASSERT_TRUE(other.hasInfo);
    for (const wchar* unit = other.name.GetBuffer(); *unit; ++unit)
        EXPECT_TRUE(*unit >= 0x20 && !(*unit >= 0x7F && *unit <= 0x9F)) << static_cast<int>(*unit);
}

TEST_F(PluginInfoRecords, EveryDamagedByteOfTheRecordIsHarmless) {
    const TPluginInfoRecord whole = record_;
    for (std::size_t i = 0; i < sizeof record_; ++i) {
        record_ = whole;
        auto* const bytes = reinterpret_cast<unsigned char*>(&record_);
        bytes[i] = static_cast<unsigned char>(~bytes[i]);
        const TPluginReport report = Load();
        const bool isVersion =
            i >= offsetof(TPluginInfoRecord, libraryVersion) && i < offsetof(TPluginInfoRecord, name);
        EXPECT_EQ(report.outcome, isVersion ? PLUGIN_INCOMPATIBLE : PLUGIN_LOADED) << i;
    }
}

TEST_F(PluginInfoRecords, DamagedNameOfTheSectionIsNoRecord) {
    std::string bytes = image_;
    for (std::size_t at = bytes.find(".vrlinfo"); at != std::string::npos;
         at = bytes.find(".vrlinfo", at + 1))
        bytes[at + 1] = 'x';
    const TPluginReport report = Load(bytes);
    EXPECT_EQ(report.outcome, PLUGIN_LOADED);
    EXPECT_FALSE(report.hasInfo);
}

} // namespace
} // namespace vorlund::test
