// What only POSIX systems have: processes to take away, groups of them, and folders with modes.
#include <vorlund/PluginStore.h>

#include "api/plugins/TestPlugins.h"
#include "support/DebugRecorder.h"
#include "support/ForkedChild_posix.h"
#include "support/LibraryScope.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>
#include <string>
#include <vector>

#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace vorlund::test {
namespace {

using TTexts = std::vector<std::string>;

class PluginScanPosix : public testing::Test {
protected:
    ~PluginScanPosix() noexcept override { store_.Close(); }

    TPluginOutcome Load(const fs::path& file) { return store_.LoadPluginFile(ToVorlund(file).c_str()); }

    CPluginFolder folder_;
    CLibraryScope library_;
    CDebugRecorder recorder_;
    CPluginStore store_;
};

TEST_F(PluginScanPosix, ProcessesAreTakenAway) {
    store_.SetScanMode(PLUGIN_SCAN_CHILD);
    EXPECT_EQ(Load(folder_.Add("accepting")), PLUGIN_LOADED);
    EXPECT_EQ(Load(folder_.Add("crashing_init")), PLUGIN_SCAN_DIED);
    store_.SetScanMode(PLUGIN_SCAN_CHILD, ToVorlund(BesideProgram("scan_helper")).c_str());
    EXPECT_EQ(Load(folder_.Add("accepting", "flood.so")), PLUGIN_SCAN_GARBLED);
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1);
    EXPECT_EQ(errno, ECHILD);
}

TEST_F(PluginScanPosix, ApplicationMayTakeAwayItsChildrenItself) {
    const auto former = signal(SIGCHLD, SIG_IGN);
    store_.SetScanMode(PLUGIN_SCAN_CHILD);
    EXPECT_EQ(Load(folder_.Add("accepting")), PLUGIN_LOADED);
    // How it ended is gone, but not that it gave no answer.
    EXPECT_EQ(Load(folder_.Add("crashing_init")), PLUGIN_SCAN_GARBLED);
    // One that still runs is ended, although there is no end to take away.
    store_.SetScanMode(PLUGIN_SCAN_CHILD, ToVorlund(BesideProgram("scan_helper")).c_str());
    EXPECT_EQ(Load(folder_.Add("accepting", "flood.so")), PLUGIN_SCAN_GARBLED);
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1);
    signal(SIGCHLD, former);
}

TEST_F(PluginScanPosix, StandardStreamsMayBeClosed) {
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        for (int stream = 0; stream < 3; ++stream) close(stream);
        store_.SetScanMode(PLUGIN_SCAN_CHILD);
        EndForkedChild(Load(folder_.Add("accepting")) == PLUGIN_LOADED ? 0 : 1);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
}

TEST_F(PluginScanPosix, NothingIsScannedWithoutADescriptorForTheAnswer) {
    const fs::path file = folder_.Add("accepting");
    store_.SetScanMode(PLUGIN_SCAN_CHILD);
    rlimit former;
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &former), 0);
    // One is left, for the look at the file.
    const int next = dup(0);
    close(next);
    const rlimit one{static_cast<rlim_t>(next) + 1, former.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &one), 0);
    const TPluginOutcome outcome = Load(file);
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &former), 0);
    EXPECT_EQ(outcome, PLUGIN_SCAN_NO_HELPER);
    EXPECT_EQ(store_.GetReport(0).code, EMFILE);
    EXPECT_EQ(Load(file), PLUGIN_LOADED);
}

// Folders that others may write to.

TEST_F(PluginScanPosix, FolderThatOthersMayWriteToIsReportedOnce) {
    const fs::path file = folder_.Add("accepting");
    ASSERT_EQ(chmod(folder_.GetFolder().c_str(), 0777), 0);
    EXPECT_EQ(Load(file), PLUGIN_LOADED);
    EXPECT_EQ(Load(file), PLUGIN_LOADED);
    const std::string folder = folder_.GetFolder().string() + "/";
    EXPECT_EQ(recorder_.GetTexts(DEBUG_MESSAGE_OUTPUT),
              (TTexts{"Plugin folder '" + folder + "': others may put files into this folder",
                      "init accepting", "init accepting"}));
    ASSERT_EQ(store_.GetReportCount(), 2U);
    EXPECT_EQ(store_.GetReport(1).outcome, PLUGIN_FOLDER_OPEN);
    EXPECT_EQ(Narrow(store_.GetReport(1).path.GetBuffer()), folder);
}

TEST_F(PluginScanPosix, EveryFolderOnTheWayCounts) {
    const struct {
        mode_t outer;
        mode_t inner;
        bool isOpen;
    } rows[] = {
        {0755, 0755, false}, {0755, 0775, true},   {0755, 0757, true},  {0775, 0755, true},
        {0757, 0755, true},  {01777, 0755, false}, {0755, 01777, true},
    };
    for (const auto& row : rows) {
        CPluginStore store;
        const CPluginFolder outer;
        const fs::path inner = outer.At("inner");
        fs::create_directory(inner);
        fs::copy_file(PluginFile("accepting"), inner / "accepting.so");
        ASSERT_EQ(chmod(inner.c_str(), row.inner), 0);
        ASSERT_EQ(chmod(outer.GetFolder().c_str(), row.outer), 0);
        EXPECT_EQ(store.LoadPluginFile(ToVorlund(inner / "accepting.so").c_str()), PLUGIN_LOADED);
        EXPECT_EQ(store.GetReportCount(), row.isOpen ? 2U : 1U) << std::oct << row.outer << ' ' << row.inner;
        store.Close();
    }
}

TEST_F(PluginScanPosix, LinksAreFollowed) {
    const CPluginFolder open;
    open.Add("accepting");
    ASSERT_EQ(chmod(open.GetFolder().c_str(), 0777), 0);
    fs::create_directory_symlink(open.GetFolder(), folder_.At("link"));
    EXPECT_EQ(Load(folder_.At("link") / "accepting.so"), PLUGIN_LOADED);
    ASSERT_EQ(store_.GetReportCount(), 2U);
    EXPECT_EQ(store_.GetReport(1).outcome, PLUGIN_FOLDER_OPEN);
}

constexpr uid_t kNobody = 65534;

TEST_F(PluginScanPosix, FolderOfTheUserDoesNotCount) {
    const fs::path file = folder_.Add("accepting");
    const uid_t user = geteuid();
    if (user == 0) {
        // The superuser is trusted by everybody, so somebody else it must be.
        ASSERT_EQ(chown(folder_.GetFolder().c_str(), kNobody, static_cast<gid_t>(-1)), 0);
        ASSERT_EQ(seteuid(kNobody), 0);
    }
    EXPECT_EQ(Load(file), PLUGIN_LOADED);
    ASSERT_EQ(seteuid(user), 0);
    EXPECT_EQ(store_.GetReportCount(), 1U);
}

TEST_F(PluginScanPosix, FolderOfSomebodyElseCounts) {
    const fs::path file = folder_.Add("accepting");
    if (chown(folder_.GetFolder().c_str(), kNobody, static_cast<gid_t>(-1)) != 0)
        GTEST_SKIP() << "this user may not give folders away";
    EXPECT_EQ(Load(file), PLUGIN_LOADED);
    EXPECT_EQ(store_.GetReportCount(), 2U);
}

} // namespace
} // namespace vorlund::test
