// The output that drops everything.
#include "devices/audio/AudioTest.h"

#include "support/LibraryScope.h"

#include <chrono>

namespace vorlund::test {
namespace {

TEST(NullAudioOutput, TakesAsLongAsTheSound) {
    const CLibraryScope library;
    const auto output = CRefPtr<IAudioOutput>::Adopt(CreateNullAudioOutput());
    output->OpenOutput(kSixteenBits, 0.02);
    const TBytes sound = MakeSound(kSixteenBits, 4800);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(output->Write(sound.data(), sound.size()), sound.size());
    EXPECT_LT(output->GetPosition(), 4800u);
    EXPECT_TRUE(output->Drain());
    // The period that the device is in when it gets the first frame counts in full.
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(94));
    EXPECT_EQ(output->GetPosition(), 4800u);
    output->Close();
    EXPECT_EQ(output->GetState(), AUDIO_STATE_CLOSED);
}

} // namespace
} // namespace vorlund::test
