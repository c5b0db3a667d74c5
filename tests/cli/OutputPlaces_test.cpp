// Where the program writes: beside what is there, through links, and to devices.
#include "cli/DecodeCommand.h"

#include <filesystem>

namespace vorlund::test {
namespace {

namespace fs = std::filesystem;

class OutputPlaces : public DecodeCommand {};

TEST_F(OutputPlaces, FilesOfOthersAreSpared) {
    Make("out.part", "mine");
    Make("out.part2", "mine too");
    EXPECT_TRUE(Run({"random", "100", "-o", At("out")}).IsSuccess());
    EXPECT_EQ(Load("out").size(), 100u);
    EXPECT_EQ(Load("out.part"), (TBytes{'m', 'i', 'n', 'e'}));
    EXPECT_EQ(List(), (std::vector<std::string>{"out", "out.part", "out.part2"}));
    // When it fails, too.
    EXPECT_EQ(Run({"decode", Make("bad", "no sound"), "-o", At("out.x")}).exitCode, 1u);
    EXPECT_EQ(Load("out.part2").size(), 8u);
}

TEST_F(OutputPlaces, LinksAreWrittenThrough) {
    fs::create_directory(folder_ / "real");
    std::error_code error;
    fs::create_symlink(fs::path("real") / "file", folder_ / "link", error);
    if (error) return; // Windows lets few users make links.
    // At first it leads nowhere.
    for (const char* const count : {"100", "50"}) {
        EXPECT_TRUE(Run({"random", count, "-o", At("link")}).IsSuccess());
        EXPECT_TRUE(fs::is_symlink(folder_ / "link"));
        EXPECT_EQ(Load("real/file").size(), static_cast<std::size_t>(std::stoi(count)));
    }
    EXPECT_EQ(List(), (std::vector<std::string>{"link", "real"}));
    fs::create_symlink("self", folder_ / "self");
    EXPECT_EQ(Run({"random", "100", "-o", At("self")}).exitCode, 1u);
    EXPECT_TRUE(fs::is_symlink(folder_ / "self"));
}

TEST_F(OutputPlaces, NowhereTakesEverything) {
#ifdef _WIN32
    const std::string nowhere = "NUL";
#else
    const std::string nowhere = "/dev/null";
#endif
    const TChildEnd end = Run({"random", "100000", "-o", nowhere});
    EXPECT_TRUE(end.IsSuccess()) << end.errors;
    const std::string sound = Make("a.wav", PlainWav({}, TBytes(5000)));
    EXPECT_TRUE(Run({"decode", sound, "-o", nowhere}).IsSuccess());
    EXPECT_EQ(List(), std::vector<std::string>{"a.wav"});
    EXPECT_FALSE(fs::exists("NUL.part"));
}

} // namespace
} // namespace vorlund::test
