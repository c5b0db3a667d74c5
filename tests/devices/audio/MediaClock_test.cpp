// The clock of a presentation.
#include "devices/audio/SteppedTest.h"

#include <vorlund/MediaClock.h>

#include <chrono>
#include <limits>

namespace vorlund::test {
namespace {

class MediaClock : public CSteppedTest {};

double Now() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

TEST_F(MediaClock, BySystemsClockItRunsWhenItIsStarted) {
    CMediaClock clock;
    EXPECT_EQ(clock.GetTime(), 0);
    EXPECT_EQ(clock.GetWait(1), std::numeric_limits<double>::infinity());
    clock.SetTime(5);
    EXPECT_EQ(clock.GetTime(), 5);
    const double before = Now();
    clock.Start();
    const double begun = Now();
    EXPECT_GE(clock.GetTime(), 5);
    const double wait = clock.GetWait(100);
    EXPECT_GT(wait, 0);
    EXPECT_LE(wait, 95);
    EXPECT_EQ(clock.GetWait(5), 0);
    while (Now() < begun + 0.02) continue;
    const double least = Now() - begun;
    const double time = clock.GetTime();
    const double most = Now() - before;
    EXPECT_GE(time, 5 + least - 1e-6);
    EXPECT_LE(time, 5 + most + 1e-6);
    clock.Stop();
    const double stopped = clock.GetTime();
    EXPECT_GE(stopped, time);
    EXPECT_EQ(clock.GetTime(), stopped);
    clock.Stop();
    EXPECT_EQ(clock.GetTime(), stopped);
    clock.Start();
    clock.Start();
    EXPECT_GE(clock.GetTime(), stopped);
    clock.SetTime(1);
    EXPECT_LT(clock.GetTime(), stopped);
}

TEST_F(MediaClock, ByAnOutputItIsExact) {
    const auto output = CreateOutput();
    CMediaClock clock(output.Get());
    EXPECT_EQ(clock.GetTime(), 0);
    EXPECT_EQ(clock.GetWait(1), std::numeric_limits<double>::infinity());
    output->OpenOutput(kSixteenBits, kDefaultAudioLatency);
    output->Play(MakeKept(kSixteenBits, MakeSound(kSixteenBits, 96000)));
    for (int i = 0; i < 100; ++i) {
        EXPECT_EQ(clock.GetTime(), i * 480 / 48000.0);
        EXPECT_NEAR(clock.GetWait(1), 1 - i * 0.01, 1e-9);
        audio_.Step(480);
    }
    EXPECT_EQ(clock.GetWait(1), 0);
    output->SetPaused(true);
    EXPECT_EQ(clock.GetWait(2), std::numeric_limits<double>::infinity());
    audio_.Step(1000);
    EXPECT_EQ(clock.GetTime(), 1);
    output->SetPaused(false);
    clock.SetTime(60);
    EXPECT_EQ(clock.GetTime(), 60);
    audio_.Step(48000);
    EXPECT_EQ(clock.GetTime(), 61);
    // Without frames the time stands still.
    audio_.Step(48000);
    EXPECT_EQ(clock.GetTime(), 61);
    output->Close();
    EXPECT_EQ(clock.GetTime(), 61);
    clock.Start();
    clock.Stop();
    EXPECT_EQ(clock.GetTime(), 61);
}

TEST_F(MediaClock, ByAnOutputItNeedsNoStart) {
    const auto output = CreateOutput();
    CMediaClock clock(output.Get());
    output->OpenOutput(kSixteenBits, kDefaultAudioLatency);
    const TBytes sound = MakeSound(kSixteenBits, 480);
    output->Write(sound.data(), sound.size());
    clock.Stop();
    audio_.Step(240);
    EXPECT_EQ(clock.GetTime(), 0.005);
    clock.Start();
    EXPECT_EQ(clock.GetTime(), 0.005);
}

TEST_F(MediaClock, ByTheNullOutputItIsRightWithinAPeriod) {
    const auto output = CRefPtr<IAudioOutput>::Adopt(CreateNullAudioOutput());
    CMediaClock clock(output.Get());
    output->OpenOutput(kSixteenBits, 0.04);
    output->Play(MakeKept(kSixteenBits, MakeSound(kSixteenBits, 48000)));
    while (clock.GetTime() == 0) continue;
    const double first = clock.GetTime();
    const double begin = Now();
    double last = first;
    int looks = 0, right = 0;
    while (last < first + 0.3) {
        const double before = Now() - begin;
        const double time = clock.GetTime();
        const double after = Now() - begin;
        EXPECT_GE(time, last);
        // A period, and what the system takes to wake a thread; now and then that is long.
        ++looks;
        if (time - first >= before - 0.012 && time - first <= after + 0.012) ++right;
        last = time;
    }
    EXPECT_GT(right, looks / 2);
}

} // namespace
} // namespace vorlund::test
