// What the plug-in resample adds to libsoxr: a buffer in memory, and a stream of floats read through the
// filter.
#include "BenchSupport.h"

#include <vorlund/DataFormat.h>
#include <vorlund/Path.h>
#include <vorlund/PluginStore.h>
#include <vorlund/RefPtr.h>
#include <vorlund/Resampler.h>
#include <vorlund/StreamImpl.h>

#include <benchmark/benchmark.h>

#include <soxr.h>

#include <algorithm>
#include <cstring>
#include <vector>

using namespace vorlund;

namespace {

const std::size_t kFrames = bench::IsShort() ? 1 << 13 : 1 << 20;
constexpr unsigned int kChannels = 2;
constexpr std::uint32_t kInputRate = 44100;
/// Frames that one call delivers.
constexpr std::size_t kStep = 4096;

const std::vector<float>& Sound() {
    static const std::vector<float> sound = [] {
        std::vector<float> samples(kFrames * kChannels);
        for (std::size_t i = 0; i < samples.size(); ++i)
            samples[i] = static_cast<float>(static_cast<std::int32_t>(i * 2654435761u)) * 0x1p-32f;
        return samples;
    }();
    return sound;
}

/// The arguments are the rate and the quality.
void BothRates(benchmark::internal::Benchmark* bench) {
    for (const std::int64_t rate : {48000, 96000, 22050})
        for (const std::int64_t quality : {RESAMPLER_HIGH, RESAMPLER_BEST}) bench->Args({rate, quality});
}

void NoteFrames(benchmark::State& state) {
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(kFrames));
}

TResampling GetResampling(const benchmark::State& state) {
    return {kInputRate, static_cast<std::uint32_t>(state.range(0)), kChannels,
            static_cast<std::uint32_t>(state.range(1))};
}

class CSoundStream : public CInputStreamImpl<IInputStream> {
public:
    static constexpr CId ClassId{0x7E57571A, 0x1F8C42D3, 0xB65E907A, 0x51B3A8D2};

    std::int64_t GetLength() override { return static_cast<std::int64_t>(Sound().size() * sizeof(float)); }
    void Seek(std::int64_t position) override { position_ = static_cast<std::uint64_t>(position); }
    std::int64_t Tell() override { return static_cast<std::int64_t>(position_); }
    const TDataFormat& GetFormat() override { return format_; }
    using CInputStreamImpl::Read;
    std::uint64_t Read(void* buffer, std::uint64_t size) override {
        const std::uint64_t count = std::min(size, Sound().size() * sizeof(float) - position_);
        std::memcpy(buffer, reinterpret_cast<const char*>(Sound().data()) + position_,
                    static_cast<std::size_t>(count));
        position_ += count;
        return count;
    }

private:
    std::uint64_t position_ = 0;
    TDataFormat_AudioPcm format_{SAMPLE_FORMAT_FLOAT, kChannels, kInputRate};
};

/// The library with the plug-in.
class CPlugin {
public:
    CPlugin() {
        store_.AddPluginPath(PathFromUtf8(VORLUND_BENCH_PLUGIN_PATH).c_str());
        store_.LoadPlugin(VRL_L("resample"));
        resampler = CreateAs<IResampler>(kResamplerClassId);
    }
    CPlugin(const CPlugin&) = delete;
    CPlugin& operator=(const CPlugin&) = delete;
    ~CPlugin() {
        resampler.Reset();
        store_.Close();
    }

    CRefPtr<IResampler> resampler;

private:
    bench::CLibrary library_;
    CPluginStore store_;
};

void ResampleBuffer(benchmark::State& state) {
    const CPlugin plugin;
    const TResampling resampling = GetResampling(state);
    const std::uint64_t made = GetResampledFrames(kFrames, resampling.inputRate, resampling.outputRate);
    std::vector<float> result(static_cast<std::size_t>(made) * kChannels);
    for (auto _ : state) {
        plugin.resampler->Resample(result.data(), Sound().data(), kFrames, resampling);
        benchmark::ClobberMemory();
    }
    NoteFrames(state);
}
BENCHMARK(ResampleBuffer)
    ->Name("a buffer to the rate, with the quality/vorlund")
    ->Apply(BothRates)
    ->Unit(benchmark::kMillisecond);

void ResampleStream(benchmark::State& state) {
    const CPlugin plugin;
    const TResampling resampling = GetResampling(state);
    const auto source = CRefPtr<IInputStream>::Adopt(static_cast<CSoundStream*>(NewObject<CSoundStream>()));
    std::vector<float> buffer(kStep * kChannels);
    for (auto _ : state) {
        plugin.resampler->SetTarget(resampling.outputRate, resampling.quality);
        plugin.resampler->Connect(source.Get());
        while (plugin.resampler->Read(buffer.data(), buffer.size() * sizeof(float)) > 0)
            benchmark::ClobberMemory();
    }
    plugin.resampler->Disconnect();
    NoteFrames(state);
}
BENCHMARK(ResampleStream)
    ->Name("a stream to the rate, with the quality/vorlund")
    ->Apply(BothRates)
    ->Unit(benchmark::kMillisecond);

/// Libsoxr itself, with the same quality, by steps of `kStep` frames: `take(begin, count)` returns frames of
/// the sound. The result has room for one step, or for all.
template <class TTake> void CallSoxr(benchmark::State& state, std::size_t room, TTake take) {
    const TResampling resampling = GetResampling(state);
    const soxr_quality_spec_t quality =
        soxr_quality_spec(resampling.quality == RESAMPLER_HIGH ? SOXR_HQ : SOXR_VHQ, 0);
    std::vector<float> result(room * kChannels);
    for (auto _ : state) {
        const soxr_t soxr =
            soxr_create(kInputRate, resampling.outputRate, kChannels, nullptr, nullptr, &quality, nullptr);
        std::size_t begin = 0;
        std::size_t written = 0;
        std::size_t made = 0;
        do {
            const std::size_t count = std::min(kFrames - begin, kStep);
            std::size_t taken = 0;
            if (room == kStep) written = 0;
            soxr_process(soxr, count > 0 ? take(begin, count) : nullptr, count, &taken,
                         result.data() + written * kChannels, std::min(kStep, room - written), &made);
            begin += taken;
            written += made;
            benchmark::ClobberMemory();
        } while (begin < kFrames || made > 0);
        soxr_delete(soxr);
    }
    NoteFrames(state);
}

void ResampleBufferSoxr(benchmark::State& state) {
    const TResampling resampling = GetResampling(state);
    CallSoxr(
        state,
        static_cast<std::size_t>(GetResampledFrames(kFrames, resampling.inputRate, resampling.outputRate)),
        [](std::size_t begin, std::size_t) { return Sound().data() + begin * kChannels; });
}
BENCHMARK(ResampleBufferSoxr)
    ->Name("a buffer to the rate, with the quality/libsoxr")
    ->Apply(BothRates)
    ->Unit(benchmark::kMillisecond);

/// From the same stream.
void ResampleStreamSoxr(benchmark::State& state) {
    const bench::CLibrary library;
    const auto source = CRefPtr<IInputStream>::Adopt(static_cast<CSoundStream*>(NewObject<CSoundStream>()));
    std::vector<float> buffer(kStep * kChannels);
    constexpr std::size_t kFrameSize = kChannels * sizeof(float);
    CallSoxr(state, kStep, [&](std::size_t begin, std::size_t count) {
        source->Seek(static_cast<std::int64_t>(begin * kFrameSize));
        source->Read(buffer.data(), count * kFrameSize);
        return buffer.data();
    });
}
BENCHMARK(ResampleStreamSoxr)
    ->Name("a stream to the rate, with the quality/libsoxr")
    ->Apply(BothRates)
    ->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
