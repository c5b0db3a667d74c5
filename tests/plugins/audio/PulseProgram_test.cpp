// "vorlund play" on a sound server.
#include "data/file/TemporaryFolder.h"
#include "plugins/audio/PulseServer.h"
#include "support/ChildProcess.h"
#include "support/WavBuilder.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>

namespace vorlund::test {
namespace {

/// The name of a file with seconds of silence.
std::string MakeSilence(const CTemporaryFolder& folder, std::size_t seconds) {
    const TBytes wav = PlainWav({.channels = 2, .samplesPerSec = 48000}, TBytes(seconds * 48000 * 4));
    const auto path = folder.GetPath() / "silence.wav";
    WriteFile(path, std::string(wav.begin(), wav.end()));
    return path.string();
}

TEST(PulseProgram, PlaysToTheEnd) {
    const CPulseServer server;
    const CTemporaryFolder folder;
    const std::string file = MakeSilence(folder, 1);
    const TChildEnd end = RunChild("vorlund", {.arguments = {"play", file}});
    EXPECT_TRUE(end.IsSuccess()) << end.errors;
    EXPECT_EQ(end.output, "File      " + file + "\nPlayed    1.000 s\n");
}

TEST(PulseProgram, EndsWhenItsDeviceIsGoneAndNoOtherComes) {
    CPulseServer server;
    const CTemporaryFolder folder;
    CChildProcess program("vorlund", {.arguments = {"play", MakeSilence(folder, 600)}});
    while (server.Control("list short sink-inputs").empty()) std::this_thread::yield();
    server.Kill();
    const TChildEnd end = program.Wait();
    EXPECT_EQ(end.exitCode, 1u);
    EXPECT_EQ(end.errors, "vorlund: The sound device is lost, and no other has taken its place\n");
}

} // namespace
} // namespace vorlund::test
