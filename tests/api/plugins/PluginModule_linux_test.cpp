// Names that the plug-in store gives nobody, because it asks file objects before.
#include "vorlund/api/plugins/PluginFolder.h"
#include "vorlund/api/plugins/PluginModule.h"
#include "vorlund/data/file/FileSystem.h"

#include "api/plugins/TestPlugins.h"

#include <gtest/gtest.h>

namespace vorlund::test {
namespace {

/// Half of a pair: no file has that name.
constexpr wchar kNoName[] = {0xD800, '/', 0};

TEST(PluginModule, ANameAloneIsThatOfAFileInTheWorkingFolder) {
    const CPluginFolder folder;
    folder.Add("silent");
    const CWorkingFolder working(folder.GetFolder());
    pluginmodule::TRefusal refusal;
    void* const module = pluginmodule::Load(VRL_L("silent.so"), refusal);
    ASSERT_TRUE(module);
    EXPECT_TRUE(pluginmodule::FindInitEntry(module));
    EXPECT_TRUE(refusal.text.empty());
    pluginmodule::Unload(module);
}

TEST(PluginModule, WhatCanBeNoNameIsNotLookedFor) {
    pluginmodule::TRefusal refusal;
    EXPECT_FALSE(pluginmodule::Load(kNoName, refusal));
    EXPECT_TRUE(refusal.missing.empty());
    EXPECT_FALSE(pluginfolder::IsOpenToOthers(kNoName));
    filesystem::CFolderSearch search(kNoName);
    EXPECT_FALSE(search.Next());
    EXPECT_FALSE(search.HasFailed());
}

} // namespace
} // namespace vorlund::test
