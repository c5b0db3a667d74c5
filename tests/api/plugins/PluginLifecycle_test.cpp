// Plug-ins in the life of the library: in child processes, because `v` keeps its folders for ever.
#include "api/plugins/TestPlugins.h"
#include "support/ChildProcess.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace vorlund::test {
namespace {

/// What the host reports with a folder of plug-ins; the plug-in in its own two folders is left out.
std::string RunHost(const std::string& mode, const std::vector<std::string>& plugins = {}) {
    const CPluginFolder folder;
    for (const std::string& plugin : plugins) folder.Add(plugin);
    const TChildEnd end =
        RunChild("testhost/plugin_child", {.arguments = {mode, PathToUtf8(folder.GetPath().c_str())}});
    EXPECT_TRUE(end.IsSuccess()) << "exit code " << end.exitCode << ", signal " << end.signal << "\n"
                                 << end.errors;
    std::string text = WithoutWarnings(end.output);
    for (const std::string line : {"output init accepting\n", "output close accepting\n"}) {
        for (std::size_t at; (at = text.find(line)) != std::string::npos;) text.erase(at, line.size());
    }
    return text;
}

std::string Repeat(const std::string& text, int count) {
    std::string result;
    for (int i = 0; i < count; ++i) result += text;
    return result;
}

TEST(PluginLifecycle, ExecutablesFoldersAreSearchedAndAPluginInBothIsLoadedFourTimes) {
    for (const char* const mode : {"names", "scan"}) {
        const TChildEnd end = RunChild("testhost/plugin_child", {.arguments = {mode}});
        EXPECT_TRUE(end.IsSuccess());
        const std::string text = WithoutWarnings(end.output);
        const std::size_t loaded = text.find("output Plugin accepting is loaded\n");
        EXPECT_EQ(text.substr(0, loaded), Repeat("output init accepting\n", 4));
        EXPECT_EQ(text.find(Repeat("output Plugin accepting is loaded\n", 4)), loaded);
        EXPECT_TRUE(text.ends_with(Repeat("output close accepting\n", 4))) << text;
    }
}

TEST(PluginLifecycle, LibraryIsOpenedAgainWithItsPlugins) {
    const std::string life = Repeat("output init creating\n", 1) + "init done\n" +
                             Repeat("output close creating\n", 1) + "close done\n";
    EXPECT_EQ(RunHost("twice", {"creating"}),
              Repeat(life, 2) + "output init creating\noutput close creating\n");
}

TEST(PluginLifecycle, CounterIsOpenBeforeThePluginsAndClosedBeforeThem) {
    const std::string report = "Exception: type=CBugException | "
                               "method=vorlund::CObjectCounter::OnDestroyObject | "
                               "file=src/vorlund/api/ObjectCounter | line=117 | reason=Not initialized\n";
    EXPECT_EQ(RunHost("late", {"late"}), "output init late\ninit done\noutput close late\noutput " + report +
                                             "box " + report + "close raised\nclose done\nrecovery done\n");
}

TEST(PluginLifecycle, HostRecoversFromAPluginThatCannotStart) {
    const std::string start = "Exception: type=CInvalidStateException | method=VrlInitPlugin | "
                              "file=tests/plugins/raising | line=7 | reason=Plug-in cannot start\n";
    const std::string closed = "Exception: type=CBugException | method=vorlund::CClassStore::GetClassInfo | "
                               "file=src/vorlund/api/ClassStore | line=112 | reason=Not initialized\n";
    EXPECT_EQ(RunHost("raising", {"raising"}),
              "output " + start +
                  "init raised\nclose done\nfind done\nfirst number another\n"
                  "recovery done\noutput " +
                  closed + "box " + closed + "find raised\n");
}

TEST(PluginLifecycle, ASessionThatCannotBeginLeavesTheLibraryClosed) {
    const std::string start = "Exception: type=CInvalidStateException | method=VrlInitPlugin | "
                              "file=tests/plugins/raising | line=7 | reason=Plug-in cannot start\n";
    EXPECT_EQ(RunHost("session", {"raising"}),
              "output " + start + "session raised\nfirst number 1\nsession done\n");
}

TEST(PluginLifecycle, EntriesMayUseTheStore) {
    const std::string text = RunHost("names", {"nesting"});
    EXPECT_NE(text.find("output init nesting\noutput end of init nesting\n"), std::string::npos) << text;
    EXPECT_NE(text.find("output close nesting\noutput end of close nesting\n"), std::string::npos) << text;
    EXPECT_NE(text.find("output Plugin nesting is loaded\n"), std::string::npos) << text;
}

} // namespace
} // namespace vorlund::test
