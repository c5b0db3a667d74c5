// The command "devices", without a sound system.
#include "cli/PlayCommand.h"

namespace vorlund::test {
namespace {

class Devices : public PlayCommand {};

TEST_F(Devices, ListsWhatNeedsNoSystem) {
    const TChildEnd end = Run({"devices"});
    EXPECT_TRUE(end.IsSuccess()) << end.errors;
    EXPECT_EQ(end.errors, "");
    EXPECT_EQ(WithoutReturns(end.output),
              "No devices of the system: the plug-in 'audio' is not there\n"
              "\n"
              "Device  Direction  Default  Channels  Rate  Name\n"
              "null    output                              Plays in time, to nobody\n"
              "file:   output                              Plays into a WAV file: file:OUT.wav\n"
              "null    input                               Records silence\n");
}

TEST_F(Devices, ListsThemForScripts) {
    const TChildEnd end = Run({"devices", "--json"});
    EXPECT_TRUE(end.IsSuccess()) << end.errors;
    EXPECT_EQ(WithoutReturns(end.output)
                  .rfind("{\n  \"system\": null,\n  \"problem\": \"the plug-in 'audio' is not there\",\n  "
                         "\"devices\": [",
                         0),
              0u)
        << end.output;
    for (const char* const part : {"\"id\": \"null\"", "\"id\": \"file:\"", "\"direction\": \"output\"",
                                   "\"direction\": \"input\"", "\"builtIn\": true"})
        EXPECT_NE(end.output.find(part), std::string::npos) << part;
}

TEST_F(Devices, WhatIsListedCanBeOpened) {
    const std::string file = MakeWav("file.wav", Ramp(400));
    EXPECT_TRUE(RunPlay({file, "--device", "null"}).IsSuccess());
    EXPECT_TRUE(RunPlay({file, "--device", "file:" + At("out.wav")}).IsSuccess());
    EXPECT_TRUE(Run({"record", "--device", "null", "-o", At("in.wav"), "--duration", "0.01"}).IsSuccess());
}

} // namespace
} // namespace vorlund::test
