// What only POSIX systems have: files that nobody may read, pipes, links, and names that are bytes.
#include <vorlund/ObjectList.h>
#include <vorlund/PluginStore.h>
#include <vorlund/RefPtr.h>

#include "api/plugins/TestPlugins.h"
#include "support/DebugRecorder.h"
#include "support/ForkedChild_posix.h"
#include "support/LibraryScope.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

#include <sched.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace vorlund::test {
namespace {

class PluginFilesPosix : public testing::Test {
protected:
    PluginFilesPosix() { store_.AddPluginPath(folder_.GetPath().c_str()); }
    ~PluginFilesPosix() noexcept override {
        store_.Close();
        for (const auto& entry : recorder_.GetEntries()) {
            const std::string text = Narrow(entry.text);
            EXPECT_TRUE(text == "init accepting" || text == "close accepting") << text;
        }
    }

    CPluginFolder folder_;
    CLibraryScope library_;
    CDebugRecorder recorder_;
    CPluginStore store_;
};

TEST_F(PluginFilesPosix, FileThatCannotBeReadIsPassedOver) {
    const fs::path file = folder_.Add("accepting");
    ASSERT_EQ(chmod(file.c_str(), 0), 0);
    store_.LoadAvailablePlugins();
    // The superuser may read everything.
    const bool mayRead = std::ifstream(file).is_open();
    EXPECT_EQ(store_.IsPluginLoaded(VRL_L("accepting")), mayRead);
}

TEST_F(PluginFilesPosix, PipeIsNoPluginAndNobodyWaitsForIt) {
    ASSERT_EQ(mkfifo(folder_.PathOf("pipe").c_str(), 0600), 0);
    store_.LoadAvailablePlugins();
    store_.LoadPlugin(VRL_L("pipe"));
    EXPECT_FALSE(store_.IsPluginLoaded(VRL_L("pipe")));
}

TEST_F(PluginFilesPosix, LinksCountAsWhatTheyLeadTo) {
    fs::create_symlink(PluginFile("accepting"), folder_.PathOf("link"));
    fs::create_symlink(folder_.At("nowhere"), folder_.PathOf("broken"));
    store_.LoadAvailablePlugins();
    EXPECT_TRUE(store_.IsPluginLoaded(VRL_L("link")));
    EXPECT_FALSE(store_.IsPluginLoaded(VRL_L("broken")));
}

TEST_F(PluginFilesPosix, NamesThatAreNoText) {
    const fs::path name("not-text-\xFF");
    folder_.Add("accepting", folder_.PathOf(name).filename());
    store_.LoadAvailablePlugins();
    EXPECT_TRUE(store_.IsPluginLoaded(PathFromUtf8(name.c_str()).c_str()));
}

/// The plug-in that goes well with a text in its file replaced by one of the same length.
std::string ChangedPlugin(const std::string& text, const std::string& other) {
    std::string bytes = ReadFile(PluginFile("accepting"));
    std::size_t count = 0;
    for (std::size_t at; (at = bytes.find(text)) != std::string::npos; ++count)
        bytes.replace(at, other.size(), other);
    EXPECT_GT(count, 0U) << text;
    return bytes;
}

TEST_F(PluginFilesPosix, LibraryWithOneOfBothEntriesIsUnloaded) {
    // The names are as they should be, and one of them has another version.
    for (const auto& [version, other] : {std::pair{"YA_NXZ", "YA_NXY"}, std::pair{"YAXXZ", "YAXXY"}}) {
        WriteFile(folder_.PathOf(other), ChangedPlugin(version, other));
        const wstring name = PathFromUtf8(other);
        store_.LoadPlugin(name.c_str());
        EXPECT_FALSE(store_.IsPluginLoaded(name.c_str())) << version;
        EXPECT_FALSE(IsInProcess(folder_.PathOf(other))) << version;
    }
}

TEST_F(PluginFilesPosix, LibraryThatTheSystemRefusesIsPassedOver) {
    WriteFile(folder_.PathOf("refused"), ChangedPlugin("libvorlund.so", "libmissing.so"));
    store_.LoadAvailablePlugins();
    store_.LoadPlugin(VRL_L("refused"));
    EXPECT_FALSE(store_.IsPluginLoaded(VRL_L("refused")));
    EXPECT_FALSE(IsInProcess(folder_.PathOf("refused")));
}

TEST_F(PluginFilesPosix, ProgramWithoutAPathHasNoFoldersOfItsOwn) {
    fs::create_directory(folder_.At("plugins"));
    WriteFile(folder_.At("plugins") / "other.so", "");
    constexpr int kNotPermitted = 77;
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        // Below the new root there is no /proc, which tells the program's path.
        const char* const root = folder_.GetFolder().c_str();
        const bool isThere = chroot(root) == 0 || (unshare(CLONE_NEWUSER) == 0 && chroot(root) == 0);
        if (!isThere || chdir("/") != 0) EndForkedChild(kNotPermitted);
        const CPluginStore store;
        const auto names = CRefPtr<IObjectEnumerator>::Adopt(store.EnumerateAvailablePlugins());
        EndForkedChild(names->HasNext() ? 1 : 0);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFEXITED(status));
    if (WEXITSTATUS(status) == kNotPermitted) GTEST_SKIP() << "this user may not change the root";
    EXPECT_EQ(WEXITSTATUS(status), 0);
}

} // namespace
} // namespace vorlund::test
