// Where a library is that was found in an unusual way, and a program with a long path.
#include "api/plugins/TestPlugins.h"
#include "support/EnvironmentScope_posix.h"

#include <gtest/gtest.h>

#include <string>

namespace vorlund::test {
namespace {

/// A program with its own library and a plug-in beside that, in a folder of the test.
class InstalledPluginsPosix : public testing::Test {
protected:
    std::string Run(const fs::path& folder, const std::string& mode) {
        fs::create_directories(folder);
        fs::copy(BesideProgram("testinstalled"), folder, fs::copy_options::recursive);
        const CWorkingFolder inside(folder);
        const TChildEnd end = RunChild((folder / "installed_child").string(),
                                       {.arguments = {mode, (folder / "vorlund-plugins").string()}});
        EXPECT_TRUE(end.IsSuccess()) << "exit code " << end.exitCode << ", signal " << end.signal << "\n"
                                     << end.errors;
        return WithoutWarnings(end.output);
    }

    const CTemporaryFolder folder_;
};

const std::string kLoaded = "output init accepting\nloaded accepting\noutput close accepting\n";

TEST_F(InstalledPluginsPosix, PathsMayBeLong) {
    const fs::path folder = folder_.GetPath() / std::string(200, 'a') / std::string(200, 'b');
    EXPECT_EQ(Run(folder, "installed"), "installed found\ninstalled found\n" + kLoaded);
}

TEST_F(InstalledPluginsPosix, LibraryOfTheWorkingFolderHasNoFolderOfItsOwn) {
    const CEnvironmentScope libraries("LD_LIBRARY_PATH", ".");
    EXPECT_EQ(Run(folder_.GetPath() / "folder", "installed"), "installed none\ninstalled none\n" + kLoaded);
}

TEST_F(InstalledPluginsPosix, ScanNeedsItsProgram) {
    for (const char* const libraries : {"", "."}) {
        const CEnvironmentScope scope("LD_LIBRARY_PATH", libraries);
        const fs::path folder = folder_.GetPath() / (*libraries ? "relative" : "full");
        const std::string output = Run(folder, "scan");
        const std::string plugin = (folder / "vorlund-plugins/accepting.so").string();
        EXPECT_EQ(output.find("output Plugin '" + plugin + "' is left out: "), 0u) << output;
        EXPECT_EQ(output.find("init accepting"), std::string::npos) << output;
    }
}

} // namespace
} // namespace vorlund::test
