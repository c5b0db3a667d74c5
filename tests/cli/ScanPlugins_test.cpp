// The program with plug-ins that would end it.
#include "api/plugins/TestPlugins.h"

#include <gtest/gtest.h>

#include <string>

namespace vorlund::test {
namespace {

TChildEnd RunProgram(const CPluginFolder& folder) {
    return RunChild("vorlund", {.arguments = {"--no-plugins", "--scan-plugins", "--plugin-path",
                                              folder.GetFolder().string(), "random", "4", "-o",
                                              folder.At("out").string()}});
}

TEST(ScanPlugins, PluginThatEndsItsProcessIsLeftOutAndNamed) {
    const CPluginFolder folder;
    folder.Add("crashing_init");
    const TChildEnd end = RunProgram(folder);
    EXPECT_TRUE(end.IsSuccess()) << end.exitCode << ' ' << end.signal << ' ' << end.errors;
    EXPECT_NE(end.errors.find("crashing_init"), std::string::npos) << end.errors;
    EXPECT_NE(end.errors.find("is left out: it ended the scan's process"), std::string::npos) << end.errors;
    EXPECT_EQ(fs::file_size(folder.At("out")), 4U);
}

TEST(ScanPlugins, GoodPluginIsNotMentioned) {
    const CPluginFolder folder;
    folder.Add("accepting");
    const TChildEnd end = RunProgram(folder);
    EXPECT_TRUE(end.IsSuccess()) << end.errors;
    EXPECT_EQ(end.errors.find("left out"), std::string::npos) << end.errors;
}

} // namespace
} // namespace vorlund::test
