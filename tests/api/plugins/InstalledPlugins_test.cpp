// The folder of plug-ins that belongs to the library's own file.
#include "api/plugins/TestPlugins.h"
#include "support/ChildProcess.h"

#include <vorlund/PluginStore.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace vorlund::test {
namespace {

std::string RunInstalled(const std::string& program, const std::vector<std::string>& more = {}) {
    std::vector<std::string> arguments{"installed"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    const TChildEnd end = RunChild(program, {.arguments = arguments});
    EXPECT_TRUE(end.IsSuccess()) << "exit code " << end.exitCode << ", signal " << end.signal << "\n"
                                 << end.errors;
    return WithoutWarnings(end.output);
}

const std::string kLoadedOnce = "installed found\ninstalled found\n"
                                "output init accepting\n"
                                "loaded accepting\n"
                                "output close accepting\n";

TEST(InstalledPlugins, EachIsLoadedOnceHoweverOftenTheFolderIsAdded) {
    EXPECT_EQ(RunInstalled("testinstalled/installed_child"), kLoadedOnce);
}

TEST(InstalledPlugins, FolderThatIsSearchedAlreadyIsNotAdded) {
    const fs::path folder = BesideProgram("testinstalled/vorlund-plugins").make_preferred();
    EXPECT_EQ(RunInstalled("testinstalled/installed_child", {folder.string()}), kLoadedOnce);
}

TEST(InstalledPlugins, NothingIsAddedWithoutTheFolder) {
    const CTemporaryFolder elsewhere;
    fs::copy(BesideProgram("testinstalled"), elsewhere.GetPath(), fs::copy_options::recursive);
    fs::remove_all(elsewhere.GetPath() / "vorlund-plugins");
    EXPECT_EQ(RunInstalled((elsewhere.GetPath() / "installed_child").string()),
              "installed none\ninstalled none\n");
}

TEST(InstalledPlugins, FolderMovesWithTheLibrary) {
    const CTemporaryFolder elsewhere;
    fs::copy(BesideProgram("testinstalled"), elsewhere.GetPath(), fs::copy_options::recursive);
    EXPECT_EQ(RunInstalled((elsewhere.GetPath() / "installed_child").string()), kLoadedOnce);
}

TEST(InstalledPlugins, FoldersAreKnownWithOrWithoutASeparatorAtTheirEnd) {
    CPluginStore store;
    const CTemporaryFolder folder;
    const wstring path = ToVorlund(folder.GetPath());
    EXPECT_FALSE(store.HasPluginPath(path.c_str()));
    store.AddPluginPath(path.c_str());
    EXPECT_TRUE(store.HasPluginPath(path.c_str()));
    EXPECT_FALSE(store.HasPluginPath((path + VRL_L("x")).c_str()));
    EXPECT_FALSE(store.HasPluginPath(nullptr));
    store.ClearPluginPaths();
    EXPECT_FALSE(store.HasPluginPath(path.c_str()));
}

} // namespace
} // namespace vorlund::test
