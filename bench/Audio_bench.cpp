// What an output costs, as part of the sound's own time, and how it keeps up with a real clock: periods of
// 128 frames, four of them in the queue, half of each filled with work, beside a thread that does the same
// work after sleeping until each period. VORLUND_BENCH_SECONDS makes the latter rows longer than 30 s.
#include "BenchSupport.h"

#include <vorlund/AudioDevices.h>
#include <vorlund/DataFormat.h>
#include <vorlund/RefPtr.h>
#include <vorlund/StreamImpl.h>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

namespace vorlund::bench {
namespace {

using TClock = std::chrono::steady_clock;
using TSeconds = std::chrono::duration<double>;

constexpr std::uint32_t kRate = 48000;
constexpr std::uint32_t kPeriodFrames = 128;
constexpr double kPeriod = static_cast<double>(kPeriodFrames) / kRate;
constexpr double kLatency = 4 * kPeriod;
constexpr TDataFormat_AudioPcm kFormat{SAMPLE_FORMAT_16BIT, 2, kRate};
constexpr std::size_t kSecond = std::size_t{kRate} * 4;

/// A second of sound, again and again.
class CEndlessStream : public CInputStreamImpl<IInputStream> {
public:
    static constexpr CId ClassId{0xBE4C4A01, 0x2D7F4E68, 0x90C3A1B5, 0x6E8D7F02};

    const TDataFormat& GetFormat() override { return kFormat; }
    std::uint32_t GetCapabilities() override { return STREAM_CAPABILITY_READ; }
    bool Eof() override { return false; }
    using CInputStreamImpl::Read;
    std::uint64_t Read(void* buffer, std::uint64_t size) override {
        const auto count = static_cast<std::size_t>(std::min<std::uint64_t>(size, kSecond - at_));
        std::memcpy(buffer, sound_.data() + at_, count);
        at_ = (at_ + count) % kSecond;
        if (work) work->Do();
        return count;
    }

    /// What each `Read` does beside, and when it was done.
    struct TWork {
        void Do() {
            const auto begin = TClock::now();
            if (last != TClock::time_point()) distances.push_back(TSeconds(begin - last).count());
            last = begin;
            while (TSeconds(TClock::now() - begin).count() < kPeriod / 2) benchmark::ClobberMemory();
        }
        TClock::time_point last;
        std::vector<double> distances;
    };
    TWork* work = nullptr;

private:
    std::vector<char> sound_ = std::vector<char>(kSecond, 3);
    std::size_t at_ = 0;
};

CRefPtr<CEndlessStream> MakeStream() {
    return CRefPtr<CEndlessStream>::Adopt(static_cast<CEndlessStream*>(NewObject<CEndlessStream>()));
}

void PlaySecond(benchmark::State& state) {
    const CLibrary library;
    CSteppedAudio audio;
    const auto system = CRefPtr<IAudioSystem>::Adopt(audio.GetSystem());
    const auto stream = MakeStream();
    const auto output = CRefPtr<IAudioOutput>::Adopt(system->CreateOutput(nullptr));
    output->OpenOutput(kFormat, 0.1);
    audio.ForgetPlayed(VRL_L("a"), false);
    output->Play(stream.Get());
    for (auto _ : state) audio.Step(kRate);
    output->Close();
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(PlaySecond)->Name("audio/play a second/vorlund")->UseRealTime();

void WriteSecond(benchmark::State& state) {
    const CLibrary library;
    CSteppedAudio audio;
    const auto system = CRefPtr<IAudioSystem>::Adopt(audio.GetSystem());
    const auto output = CRefPtr<IAudioOutput>::Adopt(system->CreateOutput(nullptr));
    output->OpenOutput(kFormat, 1);
    audio.ForgetPlayed(VRL_L("a"), false);
    const std::vector<char> sound(kSecond, 3);
    for (auto _ : state) {
        for (std::size_t i = 0; i < 10; ++i) {
            output->Write(sound.data() + i * (kSecond / 10), kSecond / 10);
            audio.Step(kRate / 10);
        }
    }
    output->Close();
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(WriteSecond)->Name("audio/write a second/vorlund")->UseRealTime();

void CopySecond(benchmark::State& state) {
    const std::vector<char> sound(kSecond, 3);
    std::vector<char> copy(kSecond);
    for (auto _ : state) {
        for (std::size_t at = 0; at < kSecond; at += kPeriodFrames * 4)
            std::memcpy(copy.data() + at, sound.data() + at, kPeriodFrames * 4);
        benchmark::DoNotOptimize(copy.data());
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(CopySecond)->Name("audio/play a second/limit plain copy")->UseRealTime();
BENCHMARK(CopySecond)->Name("audio/write a second/limit plain copy")->UseRealTime();

double GetLength() {
    if (IsShort()) return 0.2;
    const char* const seconds = std::getenv("VORLUND_BENCH_SECONDS");
    return seconds ? std::atof(seconds) : 30;
}

/// How many periods were late by how many tenths of a period.
std::string Describe(const std::vector<double>& late) {
    constexpr std::array<double, 8> kEdges{0.1, 0.25, 0.5, 1, 2, 3, 4, 8};
    std::array<std::size_t, kEdges.size() + 1> counts{};
    for (const double seconds : late)
        ++counts[static_cast<std::size_t>(std::upper_bound(kEdges.begin(), kEdges.end(), seconds / kPeriod) -
                                          kEdges.begin())];
    std::string text = "late by periods:";
    for (std::size_t i = 0; i < counts.size(); ++i) {
        char part[40];
        if (i < kEdges.size())
            std::snprintf(part, sizeof part, " <%g: %zu", kEdges[i], counts[i]);
        else
            std::snprintf(part, sizeof part, " more: %zu", counts[i]);
        text += part;
    }
    return text;
}

void KeepUp(benchmark::State& state) {
    const CLibrary library;
    const auto stream = MakeStream();
    CEndlessStream::TWork work;
    stream->work = &work;
    const auto output = CRefPtr<IAudioOutput>::Adopt(CreateNullAudioOutput());
    for (auto _ : state) {
        output->OpenOutput(kFormat, kLatency);
        output->Play(stream.Get());
        std::this_thread::sleep_for(TSeconds(GetLength()));
        output->Close();
    }
    for (double& distance : work.distances) distance = std::max(distance - kPeriod, 0.0);
    state.SetLabel(Describe(work.distances));
    SetFigure(state, "underruns", static_cast<double>(output->GetXruns()));
}
BENCHMARK(KeepUp)->Name("audio/periods of 128 frames/vorlund")->UseRealTime()->Iterations(1);

void SleepUntil(benchmark::State& state) {
    std::vector<double> late;
    for (auto _ : state) {
        const auto begin = TClock::now();
        const auto count = static_cast<std::uint64_t>(GetLength() / kPeriod);
        for (std::uint64_t i = 1; i <= count; ++i) {
            const auto due = begin + std::chrono::duration_cast<TClock::duration>(
                                         TSeconds(static_cast<double>(i) * kPeriod));
            std::this_thread::sleep_until(due);
            const auto now = TClock::now();
            late.push_back(TSeconds(now - due).count());
            while (TSeconds(TClock::now() - now).count() < kPeriod / 2) benchmark::ClobberMemory();
        }
    }
    state.SetLabel(Describe(late));
    // Three of four periods were still in a queue of its own.
    SetFigure(state, "underruns",
              static_cast<double>(std::count_if(late.begin(), late.end(),
                                                [](double seconds) { return seconds > 3 * kPeriod; })));
}
BENCHMARK(SleepUntil)->Name("audio/periods of 128 frames/bare sleep")->UseRealTime()->Iterations(1);

} // namespace
} // namespace vorlund::bench

BENCHMARK_MAIN();
