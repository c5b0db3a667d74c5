// The plug-in on a system without SDL: it loads, and says what is missing.
#include "data/file/TemporaryFolder.h"
#include "plugins/audio/Environment.h"
#include "support/ChildProcess.h"

namespace vorlund::test {
namespace {

TEST(MissingSdl, IsWhatOpeningNames) {
    const CTemporaryFolder folder;
    // The first one that the loader finds, which is no library.
    WriteFile(folder.GetPath() / "libSDL2-2.0.so.0", "none");
    const CEnvironment environment({{"LD_LIBRARY_PATH", folder.GetPath().string()}});
    const TChildEnd end = RunChild("audio_child");
    EXPECT_TRUE(end.IsSuccess()) << end.errors;
    const std::string reason =
        "CFailedException CSdlUse::Acquire plugins/audio/SdlThread:1 SDL 2.24 or later is "
        "missing: install libSDL2-2.0.so.0 (Debian: libsdl2-2.0-0)\n";
    EXPECT_EQ(end.output, "SDL\n" + reason + reason);
}

} // namespace
} // namespace vorlund::test
