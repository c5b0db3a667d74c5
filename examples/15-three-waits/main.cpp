// One thread waits for three things: a tick of a clock, a worker that has finished a part, and the end. At
// each tick the worker measures a second of sound.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <thread>
#include <vorlund/All.h>
using namespace vorlund;

/// What the two threads share. The one sets `wanted` and leaves `peak` alone until the other has set `made`.
struct TWork {
    CEvent wanted, made, ended;
    float peak = 0;
};

void Measure(std::span<const float> samples, std::size_t second, TWork& work) {
    for (work.wanted.Wait(); !samples.empty(); work.wanted.Wait()) {
        work.wanted.SetState(false);
        const auto part = samples.first(std::min(second, samples.size()));
        work.peak = std::abs(std::ranges::max(part, {}, [](float sample) { return std::abs(sample); }));
        samples = samples.subspan(part.size());
        work.made.SetState(true);
    }
    work.ended.SetState(true);
}

void PrintPeaks(const std::string& path) {
    const CInputStreamSelector file(PathFromUtf8(path.c_str()).c_str());
    CFrameReader sound(CRefPtr<IInputStream>::Adopt(file.DecodeStream(TDataFormat_AudioPcm::FormatId)));
    const std::vector<float> samples = sound.ReadRest();
    TWork work;
    CTimer clock(0.01f);
    // It ends before what it uses does.
    const std::jthread worker(Measure, std::span(samples),
                              sound.GetFormat().samplesPerSec * sound.GetChannels(), std::ref(work));
    clock.Start();
    for (bool isBusy = false;;) {
        // The position in the list, of the first one that is set.
        switch (*WaitAny({&work.ended, &work.made, &clock})) {
        case 0:
            std::printf("the end\n");
            return;
        case 1:
            work.made.SetState(false);
            isBusy = false;
            std::printf("%.1f dB\n", ToDecibels(work.peak));
            break;
        default:
            // Timers and events stay set until somebody resets them.
            clock.SetState(false);
            if (isBusy) break;
            isBusy = true;
            std::printf("a tick: ");
            work.wanted.SetState(true);
        }
    }
}

int main(int argc, char** argv) {
    try {
        const CSession session;
        const std::vector<std::string> files = GetUtf8Arguments(argc, argv);
        PrintPeaks(files.empty() ? "strings.wav" : files[0]);
        return 0;
    } catch (const CException& error) {
        error.PrintMessage(DEBUG_MESSAGE_STDERR);
        return 1;
    }
}
