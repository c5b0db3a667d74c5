// The rules of paths as text, the same on every system.
#include "vorlund/data/file/PathText.h"

#include "support/DebugRecorder.h"
#include "support/Text.h"

#include <gtest/gtest.h>

namespace vorlund::test {
namespace {

struct TPathTextRow {
    const char* test;
    const wchar* given;
    const char* path;
    const char* name;
    const char* title;
    const char* extension;
    const char* folder;
};

class PathText : public testing::TestWithParam<TPathTextRow> {};

TEST_P(PathText, Parts) {
    const TPathTextRow& row = GetParam();
    const CDebugRecorder recorder;
    const CString path = pathtext::WithForwardSlashes(row.given);
    EXPECT_EQ(Narrow(path), row.path);
    const CString name = pathtext::GetName(path);
    EXPECT_EQ(Narrow(name), row.name);
    EXPECT_EQ(Narrow(pathtext::GetTitle(name)), row.title);
    EXPECT_EQ(Narrow(pathtext::GetExtension(name)), row.extension);
    EXPECT_EQ(Narrow(pathtext::GetFolder(path)), row.folder);
    EXPECT_TRUE(recorder.GetEntries().empty()) << "no exception on the way";
}

INSTANTIATE_TEST_SUITE_P(
    Rows, PathText,
    testing::Values(
        TPathTextRow{"Drive", VRL_L("C:\\data\\song.wav"), "C:/data/song.wav", "song.wav", "song", "wav",
                     "C:/data/"},
        TPathTextRow{"SeveralDots", VRL_L("archive.tar.gz"), "archive.tar.gz", "archive.tar.gz",
                     "archive.tar", "gz", "./"},
        TPathTextRow{"NoDot", VRL_L("/data/README"), "/data/README", "README", "README", "", "/data/"},
        TPathTextRow{"NoSlash", VRL_L("song.wav"), "song.wav", "song.wav", "song", "wav", "./"},
        TPathTextRow{"TrailingDot", VRL_L("data/song."), "data/song.", "song.", "song", "", "data/"},
        TPathTextRow{"LeadingDot", VRL_L("data/.wav"), "data/.wav", ".wav", "", "wav", "data/"},
        TPathTextRow{"OnlyADot", VRL_L("."), ".", ".", "", "", "./"},
        TPathTextRow{"OnlyDots", VRL_L("a/.."), "a/..", "..", ".", "", "a/"},
        TPathTextRow{"DotInTheFolder", VRL_L("data.d\\song"), "data.d/song", "song", "song", "", "data.d/"},
        TPathTextRow{"AtTheRoot", VRL_L("\\song.wav"), "/song.wav", "song.wav", "song", "wav", "/"},
        TPathTextRow{"Root", VRL_L("/"), "/", "", "", "", "/"},
        TPathTextRow{"TrailingSlash", VRL_L("data/"), "data/", "", "", "", "data/"},
        TPathTextRow{"Share", VRL_L("\\\\host\\music\\song.wav"), "//host/music/song.wav", "song.wav", "song",
                     "wav", "//host/music/"},
        TPathTextRow{"OnlyADrive", VRL_L("C:song.wav"), "C:song.wav", "C:song.wav", "C:song", "wav", "./"},
        TPathTextRow{"Empty", VRL_L(""), "", "", "", "", "./"},
        TPathTextRow{"Null", nullptr, "", "", "", "", "./"}),
    [](const auto& row) { return row.param.test; });

struct TFolderRow {
    const char* test;
    const wchar* given;
    const char* path;
    const char* name;
};

class PathTextOfFolders : public testing::TestWithParam<TFolderRow> {};

TEST_P(PathTextOfFolders, EndsInASlash) {
    const CString path = pathtext::AsFolder(GetParam().given);
    EXPECT_EQ(Narrow(path), GetParam().path);
    EXPECT_EQ(Narrow(pathtext::GetFolderName(path)), GetParam().name);
}

INSTANTIATE_TEST_SUITE_P(Rows, PathTextOfFolders,
                         testing::Values(TFolderRow{"Drive", VRL_L("C:\\data"), "C:/data/", "data"},
                                         TFolderRow{"WithSlash", VRL_L("C:/data/"), "C:/data/", "data"},
                                         TFolderRow{"WithBackslash", VRL_L("C:\\data\\"), "C:/data/", "data"},
                                         TFolderRow{"DriveItself", VRL_L("C:\\"), "C:/", "C:"},
                                         TFolderRow{"DriveWithoutSlash", VRL_L("C:"), "C:/", "C:"},
                                         TFolderRow{"Root", VRL_L("/"), "/", ""},
                                         TFolderRow{"Relative", VRL_L("data"), "data/", "data"},
                                         TFolderRow{"Empty", VRL_L(""), "/", ""}),
                         [](const auto& row) { return row.param.test; });

TEST(PathTextJoined, HasOneSeparator) {
    using pathtext::Join;
    EXPECT_EQ(Narrow(Join(VRL_L("data"), VRL_L("song"), VRL_L('/'))), "data/song");
    EXPECT_EQ(Narrow(Join(VRL_L("data/"), VRL_L("song"), VRL_L('/'))), "data/song");
    EXPECT_EQ(Narrow(Join(VRL_L("/"), VRL_L("song"), VRL_L('/'))), "/song");
    EXPECT_EQ(Narrow(Join(VRL_L("C:\\data"), VRL_L("song"), VRL_L('\\'))), "C:\\data\\song");
    EXPECT_EQ(Narrow(Join(VRL_L("data/"), VRL_L("song"), VRL_L('\\'))), "data/\\song");
    EXPECT_EQ(Narrow(Join(VRL_L(""), VRL_L("song"), VRL_L('/'))), "/song");
    EXPECT_EQ(Narrow(Join(VRL_L("data"), VRL_L(""), VRL_L('/'))), "data/");
}

TEST(PathTextWithoutSeparator, KeepsARoot) {
    using pathtext::WithoutSeparator;
    EXPECT_EQ(Narrow(WithoutSeparator(VRL_L("data/"), VRL_L('/'))), "data");
    EXPECT_EQ(Narrow(WithoutSeparator(VRL_L("data"), VRL_L('/'))), "data");
    EXPECT_EQ(Narrow(WithoutSeparator(VRL_L("data//"), VRL_L('/'))), "data/");
    EXPECT_EQ(Narrow(WithoutSeparator(VRL_L("data\\"), VRL_L('/'))), "data\\");
    EXPECT_EQ(Narrow(WithoutSeparator(VRL_L("/"), VRL_L('/'))), "/");
    EXPECT_EQ(Narrow(WithoutSeparator(VRL_L(""), VRL_L('/'))), "");
}

TEST(PathTextOfNothing, HasNoName) {
    EXPECT_EQ(Narrow(pathtext::GetFolderName(VRL_L(""))), "");
    EXPECT_EQ(Narrow(pathtext::GetFolderName(nullptr)), "");
}

} // namespace
} // namespace vorlund::test
