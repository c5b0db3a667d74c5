// The libraries that a plug-in needs itself: taken from beside it, and never from the folder in which
// somebody happens to work or from the folders of programs, where another of the same name may lie.
#include <vorlund/PluginStore.h>

#include "api/plugins/TestPlugins.h"
#include "support/DebugRecorder.h"
#include "support/LibraryScope.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

namespace vorlund::test {
namespace {

/// The folders of programs, changed for the length of a block.
class CProgramFolders {
public:
    explicit CProgramFolders(const fs::path& folder) : former_(Get()) { Set(folder.string()); }
    CProgramFolders(const CProgramFolders&) = delete;
    CProgramFolders& operator=(const CProgramFolders&) = delete;
    ~CProgramFolders() { Set(former_); }

private:
    static std::string Get() {
        const char* const value = std::getenv("PATH");
        return value ? value : "";
    }
    static void Set(const std::string& value) { SetEnvironment("PATH", value.c_str()); }

    const std::string former_;
};

class PluginDependency : public testing::Test {
protected:
    /// What the plug-in reports when it is loaded in a hostile folder that is among those of programs, too.
    std::vector<std::string> LoadInHostileFolder() {
        const CTemporaryFolder hostile;
        fs::copy_file(DependencyFile("hostile"), hostile.GetPath() / DependencyFile("hostile").filename());
        const CWorkingFolder working(hostile.GetPath());
        const CProgramFolders programs(hostile.GetPath());
        CPluginStore store;
        store.AddPluginPath(folder_.GetPath().c_str());
        const CDebugRecorder recorder;
        store.LoadPlugin(VRL_L("depending"));
        store.Close();
        return recorder.GetTexts(DEBUG_MESSAGE_OUTPUT);
    }

    static fs::path DependencyFile(const char* author) {
        return BesideProgram("testplugins") / author / (std::string("plugin_dependency") + kPluginEnding);
    }

    CPluginFolder folder_;
    CLibraryScope library_;
};

TEST_F(PluginDependency, BesideThePluginIsTaken) {
    folder_.Add("depending");
    const fs::path file = DependencyFile("honest");
    fs::copy_file(file, folder_.At(file.filename()));
    EXPECT_EQ(LoadInHostileFolder(), std::vector<std::string>{"init with the library of honest"});
}

TEST_F(PluginDependency, TheTableOfALibraryIsNotThePlugins) {
    const fs::path plugin = folder_.Add("depending");
    const fs::path file = DependencyFile("honest");
    fs::copy_file(file, folder_.At(file.filename()));
    CPluginStore store;
    // With that table it would be refused.
    EXPECT_EQ(store.LoadPluginFile(ToVorlund(plugin).c_str()), PLUGIN_LOADED);
    EXPECT_TRUE(store.GetReport(store.GetReportCount() - 1).items.empty());
    store.Close();
}

TEST_F(PluginDependency, OfTheWorkingFolderIsNotTaken) {
    folder_.Add("depending");
    EXPECT_EQ(LoadInHostileFolder(), std::vector<std::string>());
}

} // namespace
} // namespace vorlund::test
