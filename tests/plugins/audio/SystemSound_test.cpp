// Whatever sound the machine has, or has not.
#include "plugins/audio/AudioPluginTest.h"

namespace vorlund::test {
namespace {

class SystemSound : public CAudioPluginTest {};

TEST_F(SystemSound, IsOpenedOrSaysWhyNot) {
    const auto output = MakeOutput();
    testing::internal::CaptureStderr();
    const std::string outcome = Outcome([&] { output->Open(); });
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    if (outcome == "nothing") {
        EXPECT_EQ(output->GetState(), AUDIO_STATE_RUNNING);
        EXPECT_GE(List(AUDIO_DIRECTION_OUTPUT).size(), 1u);
        output->Close();
    } else {
        EXPECT_TRUE(outcome.starts_with("CFailedException CSdlThread::")) << outcome;
        EXPECT_GT(outcome.substr(outcome.find("plugins/audio/")).size(), 30u) << outcome;
        EXPECT_EQ(output->GetState(), AUDIO_STATE_CLOSED);
    }
    RecordProperty("outcome", outcome);
}

} // namespace
} // namespace vorlund::test
