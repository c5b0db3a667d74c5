// What ports call never allocates and never waits.
#include "devices/audio/AudioTest.h"
#include "devices/audio/CalledPort.h"
#include "devices/audio/RealtimeWatch_linux.h"

#include "support/LibraryScope.h"

#include <atomic>
#include <mutex>
#include <thread>
#include <vector>

namespace vorlund::test {
namespace {

class AudioPortRealtime : public testing::Test {
protected:
    ~AudioPortRealtime() noexcept override = default;

    void Process() {
        int memoryCalls, waits;
        {
            const CRealtimeWatch watch;
            port_->client->Process(block_, 128);
            memoryCalls = watch.GetMemoryCalls();
            waits = watch.GetWaits();
        }
        EXPECT_EQ(memoryCalls, 0);
        EXPECT_EQ(waits, 0);
    }

    CLibraryScope library_;
    const CRefPtr<CCalledPort> port_ = Make<CCalledPort>();
    alignas(16) std::uint8_t block_[128 * 32] = {};
};

TEST_F(AudioPortRealtime, TheWatchSees) {
    std::mutex mutex;
    const CRealtimeWatch watch;
    const std::vector<int> memory(10);
    mutex.lock();
    mutex.unlock();
    EXPECT_GE(watch.GetMemoryCalls(), 1);
    EXPECT_GE(watch.GetWaits(), 1);
}

TEST_F(AudioPortRealtime, OutputsAreCalledWithoutAWait) {
    const auto output = CRefPtr<IAudioOutput>::Adopt(CreateAudioOutput(port_.Get()));
    for (const TDataFormat_AudioPcm& format : kEachFormat) {
        for (const float volume : {1.0F, 0.3F}) {
            output->OpenOutput(format, kDefaultAudioLatency);
            output->SetVolume(volume);
            const TBytes sound = MakeSound(format, 512);
            const auto stream = MakeStream(format, MakeSound(format, 100000));
            output->Write(sound.data(), sound.size());
            for (int i = 0; i < 6; ++i) Process();
            EXPECT_EQ(output->GetPosition(), 512u);
            output->Play(stream.Get());
            // The feeder and this one meet in all ways.
            std::atomic<bool> isEnding = false;
            std::thread other([&] {
                for (bool isPaused = false; !isEnding; isPaused = !isPaused) {
                    output->SetPaused(isPaused);
                    output->GetPosition();
                    output->GetXruns();
                }
                output->SetPaused(false);
                output->Flush();
            });
            for (int i = 0; i < 500; ++i) Process();
            isEnding = true;
            while (output->GetPlayingStreams() > 0) Process();
            other.join();
            {
                const CRealtimeWatch watch;
                port_->client->NoteXruns(1);
                port_->client->NoteLost();
                EXPECT_EQ(watch.GetMemoryCalls(), 0);
                EXPECT_EQ(watch.GetWaits(), 0);
            }
            output->Close();
        }
    }
}

TEST_F(AudioPortRealtime, InputsAreCalledWithoutAWait) {
    const auto input = CRefPtr<IAudioInput>::Adopt(CreateAudioInput(port_.Get()));
    for (const TDataFormat_AudioPcm& format : kEachFormat) {
        input->OpenInput(format, kDefaultAudioLatency);
        for (int i = 0; i < 1000; ++i) Process();
        input->SetPaused(true);
        Process();
        input->Stop();
        EXPECT_GT(input->GetPosition(), 0u);
        const CRealtimeWatch watch;
        port_->client->NoteLost();
        EXPECT_EQ(watch.GetWaits(), 0);
    }
}

} // namespace
} // namespace vorlund::test
