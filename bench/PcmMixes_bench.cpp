// The channel mixes in blocks of 1024 frames, by `MixChannels` and by `Read` of a converter, beside
// libswresample and SDL2, which get the same job, and beside a plain loop by our rules. An item is a frame.
#include "BenchSupport.h"
#include "vorlund/data/filters/PcmMixes.h"

#include <vorlund/AudioConversion.h>
#include <vorlund/AudioPcmConverters.h>
#include <vorlund/ClassIds.h>
#include <vorlund/DataFormat.h>
#include <vorlund/MemoryStream.h>
#include <vorlund/RefPtr.h>
#include <vorlund/SetFormatIsf.h>

#include <benchmark/benchmark.h>

#ifdef VORLUND_BENCH_SDL2
#define SDL_MAIN_HANDLED
#include <SDL.h>
#endif
#ifdef VORLUND_BENCH_SWRESAMPLE
extern "C" {
#include <libavutil/channel_layout.h>
#include <libavutil/mem.h>
#include <libswresample/swresample.h>
}
#endif

#include <algorithm>
#include <cstring>
#include <iterator>
#include <random>
#include <string>
#include <vector>

using namespace vorlund;

namespace {

constexpr std::size_t kFrames = 1024;
constexpr std::size_t kSampleSizes[] = {1, 2, 4, 4};
constexpr const char* kFormats[] = {"u8", "s16", "s32", "f32"};

/// One mix: the channels and the sample format.
struct TCase {
    pcm::TMixPair pair;
    std::uint32_t format;

    std::size_t GetInputSize() const { return kFrames * pair.inputChannels * kSampleSizes[format]; }
    std::size_t GetOutputSize() const { return kFrames * pair.outputChannels * kSampleSizes[format]; }
};

/// A block of noise.
std::vector<std::uint8_t> MakeInput(const TCase& mix) {
    std::mt19937 random(1);
    std::vector<std::uint8_t> bytes(mix.GetInputSize());
    for (std::uint8_t& byte : bytes) byte = static_cast<std::uint8_t>(random());
    if (kFormats[mix.format] != kFormats[3]) return bytes;
    std::uniform_real_distribution<float> sample(-1, 1);
    for (std::size_t at = 0; at < bytes.size(); at += sizeof(float)) {
        const float value = sample(random);
        std::memcpy(&bytes[at], &value, sizeof value);
    }
    return bytes;
}

void CountFrames(benchmark::State& state) {
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(kFrames));
}

/// Runs `mix(output, input)` once per iteration.
template <class TMix> void Run(benchmark::State& state, const TCase& mix, TMix run) {
    const std::vector<std::uint8_t> input = MakeInput(mix);
    std::vector<std::uint8_t> output(mix.GetOutputSize());
    for (auto _ : state) {
        run(output.data(), input.data());
        benchmark::ClobberMemory();
    }
    CountFrames(state);
}

void Vorlund(benchmark::State& state, TCase mix) {
    Run(state, mix, [&](std::uint8_t* out, const std::uint8_t* in) {
        vorlund::MixChannels(out, mix.pair.outputChannels, in, mix.pair.inputChannels, mix.format, kFrames);
    });
}

/// The rules as they are written, which bench/CMakeLists.txt compiles with all that this processor has.
void PlainLoop(benchmark::State& state, TCase mix) {
    const auto* const pair =
        std::find_if(std::begin(pcm::kMixPairs), std::end(pcm::kMixPairs), [&](auto one) {
            return one.inputChannels == mix.pair.inputChannels &&
                   one.outputChannels == mix.pair.outputChannels;
        });
    const pcm::TRoutine routine = pcm::kScalarMixes.routines[pair - std::begin(pcm::kMixPairs)][mix.format];
    Run(state, mix, [&](std::uint8_t* out, const std::uint8_t* in) { routine(out, in, kFrames); });
}

/// As many bytes as the larger side has, copied.
void Copy(benchmark::State& state, TCase mix) {
    const std::size_t size = std::max(mix.GetInputSize(), mix.GetOutputSize());
    const std::vector<std::uint8_t> from(size, 'x');
    std::vector<std::uint8_t> to(size);
    for (auto _ : state) {
        std::memcpy(to.data(), from.data(), size);
        benchmark::ClobberMemory();
    }
    CountFrames(state);
}

/// The same block out of a memory stream, through the converter: in one step, or by `Read`.
void ReadConverter(benchmark::State& state, TCase mix, bool isOneStep) {
    using namespace vorlund;
    const bench::CLibrary library;
    const std::vector<std::uint8_t> input = MakeInput(mix);
    const auto memory = CRefPtr<IInputStream>::Adopt(CreateMemoryInput(input.data(), input.size()));
    const auto source = CreateAs<ISetFormatIsf>(classid::CSetFormatIsf);
    const TDataFormat_AudioPcm format{mix.format, mix.pair.inputChannels, 44100};
    source->SetFormat(&format);
    source->Connect(memory.Get());
    const auto converter =
        CreateAs<IAudioPcmChannelNumberConverter>(classid::CAudioPcmChannelNumberConverter);
    converter->SetNumChannels(mix.pair.outputChannels);
    converter->Connect(source.Get());
    const std::size_t size = mix.GetOutputSize();
    Run(state, mix, [&](std::uint8_t* out, const std::uint8_t*) {
        converter->Seek(0);
        if (isOneStep) {
            if (ReadFrames(*converter, out, size) != size) state.SkipWithError("not filled");
            return;
        }
        // Of six channels, a step of 1,024 bytes of input holds no whole number of frames, and drops the
        // rest.
        std::size_t filled = 0;
        while (const auto count = static_cast<std::size_t>(converter->Read(out + filled, size - filled)))
            filled += count;
        benchmark::DoNotOptimize(filled);
    });
}

#ifdef VORLUND_BENCH_SDL2

/// In place, as SDL2 works, and with the bytes as the last round left them: nothing is copied between rounds.
void Sdl2(benchmark::State& state, TCase mix) {
    constexpr SDL_AudioFormat kCodes[] = {AUDIO_U8, AUDIO_S16SYS, AUDIO_S32SYS, AUDIO_F32SYS};
    const SDL_AudioFormat code = kCodes[mix.format];
    SDL_AudioCVT converter;
    SDL_BuildAudioCVT(&converter, code, static_cast<Uint8>(mix.pair.inputChannels), 44100, code,
                      static_cast<Uint8>(mix.pair.outputChannels), 44100);
    std::vector<std::uint8_t> buffer = MakeInput(mix);
    converter.len = static_cast<int>(buffer.size());
    buffer.resize(buffer.size() * static_cast<std::size_t>(converter.len_mult));
    converter.buf = buffer.data();
    for (auto _ : state) {
        SDL_ConvertAudio(&converter);
        benchmark::ClobberMemory();
    }
    CountFrames(state);
}

#endif

#ifdef VORLUND_BENCH_SWRESAMPLE

/// The weights of our rules, output channels by input channels.
std::vector<double> MakeMatrix(pcm::TMixPair pair) {
    std::vector<double> matrix(pair.outputChannels * pair.inputChannels);
    const auto at = [&](std::uint32_t output, std::uint32_t input) -> double& {
        return matrix[output * pair.inputChannels + input];
    };
    if (pair.inputChannels == 1 || pair.outputChannels == 1) {
        for (double& weight : matrix) weight = 1.0 / pair.inputChannels;
    } else if (pair.inputChannels == 2) {
        at(0, 0) = at(1, 1) = 1;
    } else {
        at(0, 0) = at(0, 2) = at(0, 3) = at(0, 4) = 0.25;
        at(1, 1) = at(1, 2) = at(1, 3) = at(1, 5) = 0.25;
    }
    return matrix;
}

void Swresample(benchmark::State& state, TCase mix) {
    constexpr AVSampleFormat kCodes[] = {AV_SAMPLE_FMT_U8, AV_SAMPLE_FMT_S16, AV_SAMPLE_FMT_S32,
                                         AV_SAMPLE_FMT_FLT};
    const AVSampleFormat code = kCodes[mix.format];
    AVChannelLayout from, to;
    av_channel_layout_default(&from, static_cast<int>(mix.pair.inputChannels));
    av_channel_layout_default(&to, static_cast<int>(mix.pair.outputChannels));
    SwrContext* context = nullptr;
    swr_alloc_set_opts2(&context, &to, code, 44100, &from, code, 44100, 0, nullptr);
    const std::vector<double> matrix = MakeMatrix(mix.pair);
    swr_set_matrix(context, matrix.data(), static_cast<int>(mix.pair.inputChannels));
    if (swr_init(context) < 0) state.SkipWithError("not initialised");

    const std::vector<std::uint8_t> noise = MakeInput(mix);
    // Aligned, which it needs for its fastest loops.
    const auto input = static_cast<std::uint8_t*>(av_malloc(mix.GetInputSize()));
    const auto output = static_cast<std::uint8_t*>(av_malloc(mix.GetOutputSize()));
    std::memcpy(input, noise.data(), noise.size());
    for (auto _ : state) {
        const std::uint8_t* in = input;
        std::uint8_t* out = output;
        swr_convert(context, &out, static_cast<int>(kFrames), &in, static_cast<int>(kFrames));
        benchmark::ClobberMemory();
    }
    CountFrames(state);
    av_free(input);
    av_free(output);
    swr_free(&context);
}

#endif

void RegisterCase(TCase mix) {
    const std::string what = std::string(kFormats[mix.format]) + " " +
                             std::to_string(mix.pair.inputChannels) + " to " +
                             std::to_string(mix.pair.outputChannels) + "/";
    const auto add = [&](const std::string& name, auto function) {
        benchmark::RegisterBenchmark(name.c_str(), function, mix);
    };
    const auto addPeers = [&](const std::string& name) {
#ifdef VORLUND_BENCH_SDL2
        add(name + "SDL2", Sdl2);
#endif
#ifdef VORLUND_BENCH_SWRESAMPLE
        add(name + "libswresample", Swresample);
#endif
        static_cast<void>(name);
    };
    const std::string block = "block " + what;
    add(block + "vorlund", Vorlund);
    add(block + "plain loop", PlainLoop);
    add(block + "limit copy", Copy);
    addPeers(block);
    const std::string read = "read " + what;
    benchmark::RegisterBenchmark((read + "vorlund").c_str(), ReadConverter, mix, false);
    benchmark::RegisterBenchmark((read + "vorlund ReadFrames").c_str(), ReadConverter, mix, true);
    add(read + "vorlund MixChannels", Vorlund);
    addPeers(read);
}

} // namespace

int main(int argc, char** argv) {
    for (std::uint32_t format = 0; format < pcm::kMixFormatCount; ++format)
        for (const pcm::TMixPair pair : pcm::kMixPairs) RegisterCase({pair, format});
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
