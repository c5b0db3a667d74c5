// Playing to a sound server, heard through its own loopback.
#include "bounds/ProcessUse.h"
#include "plugins/audio/PulseTest.h"

#include <thread>

namespace vorlund::test {
namespace {

constexpr std::size_t kFrame = 8;
/// Seconds that the server can bridge on a busy machine.
constexpr double kSafe = 0.4;

/// Records a loopback while something is played, and says whether a sound was in it.
class CListener {
public:
    CListener(CRefPtr<IAudioInput> input) : input_(std::move(input)) {
        input_->OpenInput(kServerFormat, kSafe);
        stream_ = CRefPtr<IInputStream>::Adopt(input_->GetStream());
        thread_ = std::thread([this] {
            TBytes block(4800 * kFrame);
            while (const std::uint64_t count = stream_->Read(block.data(), block.size()))
                recording_.insert(recording_.end(), block.begin(),
                                  block.begin() + static_cast<std::ptrdiff_t>(count));
        });
    }
    CListener(const CListener&) = delete;
    CListener& operator=(const CListener&) = delete;
    ~CListener() {
        if (thread_.joinable()) Stop();
    }

    /// What was heard.
    const TBytes& Stop() {
        input_->Stop();
        thread_.join();
        input_->Close();
        return recording_;
    }

private:
    CRefPtr<IAudioInput> input_;
    CRefPtr<IInputStream> stream_;
    TBytes recording_;
    std::thread thread_;
};

class PulseOutput : public CPulseTest {
protected:
    static void Play(IAudioOutput& output, const TBytes& sound) {
        EXPECT_EQ(output.Write(sound.data(), sound.size()), sound.size());
    }
    /// Several times: on a busy machine the server may miss a part of it.
    static void PlayOften(IAudioOutput& output, const TBytes& sound) {
        for (int i = 0; i < 4; ++i) {
            Play(output, TBytes(6000 * kFrame));
            Play(output, sound);
        }
    }
    /// What a loopback hears late.
    static void PlayEnd(IAudioOutput& output) {
        Play(output, TBytes(24000 * kFrame));
        EXPECT_TRUE(output.Drain());
    }
};

TEST_F(PulseOutput, IsHeardBitByBit) {
    CListener listener(MakeInput("Monitor of One"));
    const TBytes sound = MakeNoise(kServerFormat, 48000);
    const auto output = MakeOutput();
    output->OpenOutput(kServerFormat, kSafe);
    PlayOften(*output, sound);
    PlayEnd(*output);
    EXPECT_EQ(output->GetPosition(), 240000u);
    output->Close();
    EXPECT_TRUE(FindSound(listener.Stop(), sound, kFrame));
}

TEST_F(PulseOutput, GoesToTwoDevicesAtOnce) {
    CListener one(MakeInput("Monitor of One"));
    CListener two(MakeInput("Monitor of Two"));
    const TBytes sounds[] = {MakeNoise(kServerFormat, 24000, 1), MakeNoise(kServerFormat, 24000, 2)};
    const CRefPtr<IAudioOutput> outputs[] = {MakeOutput("One"), MakeOutput("Two")};
    for (const auto& output : outputs) output->OpenOutput(kServerFormat, kSafe);
    std::thread other([&] {
        PlayOften(*outputs[1], sounds[1]);
        PlayEnd(*outputs[1]);
    });
    PlayOften(*outputs[0], sounds[0]);
    PlayEnd(*outputs[0]);
    other.join();
    for (const auto& output : outputs) output->Close();
    EXPECT_TRUE(FindSound(one.Stop(), sounds[0], kFrame));
    EXPECT_TRUE(FindSound(two.Stop(), sounds[1], kFrame));
}

TEST_F(PulseOutput, FollowsTheDefaultDevice) {
    CListener two(MakeInput("Monitor of Two"));
    const auto output = MakeOutput();
    output->OpenOutput(kServerFormat, kSafe);
    Play(*output, MakeNoise(kServerFormat, 24000));
    server_.Control("set-default-sink Two");
    WaitForChange();
    Play(*output, TBytes(48000 * kFrame));
    const TBytes sound = MakeNoise(kServerFormat, 24000, 7);
    PlayOften(*output, sound);
    PlayEnd(*output);
    EXPECT_EQ(output->GetState(), AUDIO_STATE_RUNNING);
    output->Close();
    EXPECT_TRUE(FindSound(two.Stop(), sound, kFrame));
}

TEST_F(PulseOutput, GoesOnElsewhereWhenTheDefaultDeviceIsGone) {
    const std::string module = server_.AddOutput("Three");
    server_.Control("set-default-sink Three");
    const auto output = MakeOutput();
    output->OpenOutput(kServerFormat, kSafe);
    Play(*output, MakeNoise(kServerFormat, 24000));
    server_.RemoveModule(module);
    CListener one(MakeInput("Monitor of One"));
    Play(*output, TBytes(48000 * kFrame));
    const TBytes sound = MakeNoise(kServerFormat, 24000, 7);
    PlayOften(*output, sound);
    PlayEnd(*output);
    output->Close();
    EXPECT_TRUE(FindSound(one.Stop(), sound, kFrame));
}

TEST_F(PulseOutput, IsLostWithItsDevice) {
    const std::string module = server_.AddOutput("Three");
    const auto output = MakeOutput("Three");
    output->OpenOutput(kServerFormat, kSafe);
    Play(*output, MakeNoise(kServerFormat, 24000));
    server_.RemoveModule(module);
    WaitForState(*output, AUDIO_STATE_LOST);
    const TBytes sound = MakeNoise(kServerFormat, 48000);
    EXPECT_THROW(output->Write(sound.data(), sound.size()), CFailedException);
    output->Close();
    EXPECT_EQ(output->GetState(), AUDIO_STATE_CLOSED);
    EXPECT_THROW(output->OpenOutput(kServerFormat, kSafe), CFailedException);
    server_.AddOutput("Three");
    output->OpenOutput(kServerFormat, kSafe);
    Play(*output, sound);
    EXPECT_TRUE(output->Drain());
    output->Close();
}

TEST_F(PulseOutput, GoesOnWhenTheServerIsThereAgain) {
    const auto output = MakeOutput();
    output->OpenOutput(kServerFormat, kSafe);
    Play(*output, MakeNoise(kServerFormat, 24000));
    server_.Kill();
    WaitForChange();
    server_.Start();
    // Waits until the output has opened the default device again.
    Play(*output, MakeNoise(kServerFormat, 48000));
    EXPECT_TRUE(output->Drain());
    EXPECT_EQ(output->GetState(), AUDIO_STATE_RUNNING);
    EXPECT_NE(server_.Control("list short sink-inputs"), "");
    output->Close();
}

#ifndef VORLUND_TEST_IS_SANITIZED
TEST_F(PulseOutput, TakesLittleProcessorTime) {
    const auto output = MakeOutput();
    output->OpenOutput(kServerFormat, kDefaultAudioLatency);
    const TBytes second = MakeNoise(kServerFormat, 48000);
    Play(*output, second);
    const std::uint64_t before = GetProcessUse().milliseconds;
    for (int i = 0; i < 5; ++i) Play(*output, second);
    const std::uint64_t used = GetProcessUse().milliseconds - before;
    output->Close();
    RecordProperty("milliseconds", static_cast<int>(used));
    // Below 50 on a machine that does nothing else: one in a hundred.
    EXPECT_LT(used, 150u);
}
#endif

TEST_F(PulseOutput, IsClosedWhileAnotherThreadWrites) {
    const auto output = MakeOutput();
    for (int i = 0; i < 20; ++i) {
        output->OpenOutput(kServerFormat, 0.02);
        const TBytes sound = MakeNoise(kServerFormat, 480000);
        std::thread closer([&] { CloseWhileWriting(*output); });
        EXPECT_LT(output->Write(sound.data(), sound.size()), sound.size());
        closer.join();
    }
}

TEST_F(PulseOutput, OpensAndClosesOften) {
    const auto output = MakeOutput();
    const TBytes sound = MakeNoise(kServerFormat, 100);
    for (int i = 0; i < 200; ++i) {
        output->OpenOutput(kServerFormat, 0.001);
        Play(*output, sound);
        output->Close();
    }
    EXPECT_EQ(server_.Control("list short sink-inputs"), "");
}

} // namespace
} // namespace vorlund::test
