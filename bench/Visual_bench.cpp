// Pictures of sound that is played: each takes 800 frames of new sound, as at 60 pictures a second of 48,000
// frames, and is drawn whole. 16.7 ms each would be a whole processor. The limit copies as many pixels and no
// more.
#include "BenchSupport.h"

#include <vorlund/AudioPictures.h>
#include <vorlund/Path.h>
#include <vorlund/PluginStore.h>
#include <vorlund/RefPtr.h>

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstring>
#include <vector>

using namespace vorlund;

namespace {

constexpr std::uint32_t kWidth = 1280;
constexpr std::uint32_t kHeight = 720;
constexpr std::size_t kPixels = std::size_t{kWidth} * kHeight;
constexpr std::size_t kStep = 800;
constexpr std::uint32_t kChannels = 2;

/// Two seconds of tones and noise.
const std::vector<float>& Sound() {
    static const std::vector<float> sound = [] {
        std::vector<float> samples(120 * kStep * kChannels);
        for (std::size_t i = 0; i < samples.size(); ++i) {
            const double time = static_cast<double>(i / kChannels) / 48000;
            const double tone = std::sin(time * 2765 * static_cast<double>(1 + i % kChannels));
            const float noise = static_cast<float>(static_cast<std::int32_t>(i * 2654435761u)) * 0x1p-32f;
            samples[i] = static_cast<float>(0.5 * tone) + 0.3F * noise;
        }
        return samples;
    }();
    return sound;
}

/// The argument is the kind.
void DrawPicture(benchmark::State& state) {
    const bench::CLibrary library;
    CPluginStore store;
    store.AddPluginPath(PathFromUtf8(VORLUND_BENCH_PLUGIN_PATH).c_str());
    store.LoadPlugin(VRL_L("visual"));
    auto pictures = CreateAs<IAudioPictures>(classid::CAudioPictures);
    TAudioPictureSettings settings;
    settings.kind = static_cast<std::uint32_t>(state.range(0));
    settings.width = kWidth;
    settings.height = kHeight;
    pictures->SetSettings(settings);
    pictures->Start(kChannels, 48000);
    std::vector<std::uint32_t> picture(kPixels);
    std::size_t at = 0;
    for (auto _ : state) {
        pictures->Write(Sound().data() + at, kStep);
        at = (at + kStep * kChannels) % Sound().size();
        pictures->Draw(picture.data());
        benchmark::DoNotOptimize(picture.data());
    }
    pictures.Reset();
    store.Close();
}
BENCHMARK(DrawPicture)->Name("a picture of sound, 1280 by 720, of the kind/vorlund")->DenseRange(0, 2);

void CopyPicture(benchmark::State& state) {
    const std::vector<std::uint32_t> source(kPixels, 1);
    std::vector<std::uint32_t> picture(kPixels);
    for (auto _ : state) {
        std::memcpy(picture.data(), source.data(), kPixels * sizeof(std::uint32_t));
        benchmark::DoNotOptimize(picture.data());
    }
}
BENCHMARK(CopyPicture)->Name("a picture of sound, 1280 by 720, of the kind/limit memcpy")->DenseRange(0, 2);

} // namespace

BENCHMARK_MAIN();
