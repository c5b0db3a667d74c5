// The conversions of sample formats beside libswresample, SDL2 and the helpers of libsamplerate where they
// have the pair, and beside a plain loop by our rules: `ConvertSamples` in blocks that stay in the cache and
// over memory; `Read` of a converter; and WAV files through a converter, beside libsndfile. An item is a
// sample. The peers clip and round as they like: only their speed is compared.
#include "BenchSupport.h"
#include "WavFolder.h"
#include "vorlund/data/filters/PcmConversions.h"

#include <vorlund/AudioConversion.h>
#include <vorlund/AudioPcmConverters.h>
#include <vorlund/ClassIds.h>
#include <vorlund/DataFormat.h>
#include <vorlund/MemoryStream.h>
#include <vorlund/Path.h>
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
#ifdef VORLUND_BENCH_SAMPLERATE
#include <samplerate.h>
#endif
#ifdef VORLUND_BENCH_SNDFILE
#include <sndfile.h>
#endif

#include <algorithm>
#include <cstring>
#include <random>
#include <string>
#include <vector>

using namespace vorlund;

namespace {

constexpr std::size_t kBlock = 2048;
constexpr std::uint32_t kFormatCount = 4;
constexpr std::size_t kSampleSizes[] = {1, 2, 4, 4};
constexpr const char* kFormats[] = {"u8", "s16", "s32", "f32"};

using TBytes = std::vector<std::uint8_t>;

/// One conversion of so many samples.
struct TCase {
    std::uint32_t from;
    std::uint32_t to;
    std::size_t count;

    std::size_t GetInputSize() const { return count * kSampleSizes[from]; }
    std::size_t GetOutputSize() const { return count * kSampleSizes[to]; }
};

/// Noise of full scale.
TBytes MakeNoise(std::uint32_t format, std::size_t count) {
    std::mt19937 random(1);
    TBytes bytes(count * kSampleSizes[format]);
    for (std::size_t at = 0; at + 4 <= bytes.size(); at += 4) {
        std::uint32_t word = static_cast<std::uint32_t>(random());
        if (format == SAMPLE_FORMAT_FLOAT) {
            const float value = static_cast<float>(static_cast<std::int32_t>(word)) * 0x1p-31f;
            std::memcpy(&word, &value, sizeof word);
        }
        std::memcpy(&bytes[at], &word, sizeof word);
    }
    return bytes;
}

/// Buffers as media libraries allocate them.
class CBuffers {
public:
    explicit CBuffers(const TCase& conversion)
        : input_(conversion.GetInputSize() + kAlignment), output_(conversion.GetOutputSize() + kAlignment) {
        const TBytes noise = MakeNoise(conversion.from, conversion.count);
        std::memcpy(Input(), noise.data(), noise.size());
    }
    std::uint8_t* Input() { return Align(input_); }
    std::uint8_t* Output() { return Align(output_); }

private:
    static constexpr std::uintptr_t kAlignment = 64;
    static std::uint8_t* Align(TBytes& bytes) {
        const auto address = reinterpret_cast<std::uintptr_t>(bytes.data());
        return bytes.data() + (kAlignment - address % kAlignment) % kAlignment;
    }
    TBytes input_;
    TBytes output_;
};

/// Runs `convert(output, input)` once per iteration.
template <class TConvert> void Run(benchmark::State& state, const TCase& conversion, TConvert convert) {
    CBuffers buffers(conversion);
    for (auto _ : state) {
        convert(buffers.Output(), buffers.Input());
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(conversion.count));
}

void Vorlund(benchmark::State& state, TCase conversion) {
    Run(state, conversion, [&](std::uint8_t* out, const std::uint8_t* in) {
        ConvertSamples(out, conversion.to, in, conversion.from, conversion.count);
    });
}

/// The rules as they are written, which bench/CMakeLists.txt compiles with all that this processor has.
void PlainLoop(benchmark::State& state, TCase conversion) {
    const pcm::TRoutine convert = pcm::kScalarConversions.routines[conversion.from][conversion.to];
    Run(state, conversion,
        [&](std::uint8_t* out, const std::uint8_t* in) { convert(out, in, conversion.count); });
}

/// As many bytes as the larger side has, copied.
void Copy(benchmark::State& state, TCase conversion) {
    const std::size_t size = std::max(conversion.GetInputSize(), conversion.GetOutputSize());
    const TCase larger{SAMPLE_FORMAT_8BIT, SAMPLE_FORMAT_8BIT, size};
    Run(state, larger, [&](std::uint8_t* out, const std::uint8_t* in) { std::memcpy(out, in, size); });
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(conversion.count));
}

#ifdef VORLUND_BENCH_SDL2

/// In place, as SDL2 works, and with the bytes as the last round left them: nothing is copied between rounds.
void Sdl2(benchmark::State& state, TCase conversion) {
    constexpr SDL_AudioFormat kCodes[] = {AUDIO_U8, AUDIO_S16SYS, AUDIO_S32SYS, AUDIO_F32SYS};
    SDL_AudioCVT converter;
    SDL_BuildAudioCVT(&converter, kCodes[conversion.from], 1, 44100, kCodes[conversion.to], 1, 44100);
    converter.len = static_cast<int>(conversion.GetInputSize());
    TBytes buffer = MakeNoise(conversion.from, conversion.count);
    buffer.resize(buffer.size() * static_cast<std::size_t>(converter.len_mult));
    converter.buf = buffer.data();
    for (auto _ : state) {
        SDL_ConvertAudio(&converter);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(conversion.count));
}

#endif
#ifdef VORLUND_BENCH_SWRESAMPLE

void Swresample(benchmark::State& state, TCase conversion) {
    constexpr AVSampleFormat kCodes[] = {AV_SAMPLE_FMT_U8, AV_SAMPLE_FMT_S16, AV_SAMPLE_FMT_S32,
                                         AV_SAMPLE_FMT_FLT};
    AVChannelLayout mono;
    av_channel_layout_default(&mono, 1);
    SwrContext* context = nullptr;
    swr_alloc_set_opts2(&context, &mono, kCodes[conversion.to], 44100, &mono, kCodes[conversion.from], 44100,
                        0, nullptr);
    if (swr_init(context) < 0) state.SkipWithError("not initialised");
    const int count = static_cast<int>(conversion.count);
    Run(state, conversion,
        [&](std::uint8_t* out, const std::uint8_t* in) { swr_convert(context, &out, count, &in, count); });
    swr_free(&context);
}

#endif
#ifdef VORLUND_BENCH_SAMPLERATE

using TSamplerate = void (*)(std::uint8_t* out, const std::uint8_t* in, int count);

/// Its helpers, or null for pairs without one.
TSamplerate FindSamplerate(std::uint32_t from, std::uint32_t to) {
    if (from == SAMPLE_FORMAT_16BIT && to == SAMPLE_FORMAT_FLOAT)
        return [](std::uint8_t* out, const std::uint8_t* in, int count) {
            src_short_to_float_array(reinterpret_cast<const short*>(in), reinterpret_cast<float*>(out),
                                     count);
        };
    if (from == SAMPLE_FORMAT_32BIT && to == SAMPLE_FORMAT_FLOAT)
        return [](std::uint8_t* out, const std::uint8_t* in, int count) {
            src_int_to_float_array(reinterpret_cast<const int*>(in), reinterpret_cast<float*>(out), count);
        };
    if (from == SAMPLE_FORMAT_FLOAT && to == SAMPLE_FORMAT_16BIT)
        return [](std::uint8_t* out, const std::uint8_t* in, int count) {
            src_float_to_short_array(reinterpret_cast<const float*>(in), reinterpret_cast<short*>(out),
                                     count);
        };
    if (from == SAMPLE_FORMAT_FLOAT && to == SAMPLE_FORMAT_32BIT)
        return [](std::uint8_t* out, const std::uint8_t* in, int count) {
            src_float_to_int_array(reinterpret_cast<const float*>(in), reinterpret_cast<int*>(out), count);
        };
    return nullptr;
}

void Samplerate(benchmark::State& state, TCase conversion) {
    const TSamplerate convert = FindSamplerate(conversion.from, conversion.to);
    Run(state, conversion, [&](std::uint8_t* out, const std::uint8_t* in) {
        convert(out, in, static_cast<int>(conversion.count));
    });
}

#endif

/// The peers' rows, by `add(contender, function)`.
template <class TAdd> void AddPeers([[maybe_unused]] TCase conversion, [[maybe_unused]] const TAdd& add) {
#ifdef VORLUND_BENCH_SDL2
    add("SDL2", Sdl2);
#endif
#ifdef VORLUND_BENCH_SWRESAMPLE
    add("libswresample", Swresample);
#endif
#ifdef VORLUND_BENCH_SAMPLERATE
    if (FindSamplerate(conversion.from, conversion.to)) add("libsamplerate", Samplerate);
#endif
}

void RegisterCase(const std::string& where, TCase conversion) {
    const std::string name = where + " " + kFormats[conversion.from] + " to " + kFormats[conversion.to] + "/";
    const auto add = [&](const char* who, auto function) {
        benchmark::RegisterBenchmark((name + who).c_str(), function, conversion);
    };
    add("vorlund", Vorlund);
    add("plain loop", PlainLoop);
    add("limit copy", Copy);
    AddPeers(conversion, add);
}

// ---- buffers through a converter, out of memory

/// The buffer that is read into.
constexpr std::size_t kReadSize = 64 * 1024;

/// In one step, or by `Read`.
void ReadConverter(benchmark::State& state, TCase conversion, bool isOneStep) {
    const bench::CLibrary library;
    const TBytes noise = MakeNoise(conversion.from, conversion.count);
    const auto memory = CRefPtr<IInputStream>::Adopt(CreateMemoryInput(noise.data(), noise.size()));
    const auto source = CreateAs<ISetFormatIsf>(classid::CSetFormatIsf);
    const TDataFormat_AudioPcm format{conversion.from, 2, 44100};
    source->SetFormat(&format);
    source->Connect(memory.Get());
    const auto converter = CreateAs<IAudioPcmSampleFormatConverter>(classid::CAudioPcmSampleFormatConverter);
    converter->SetSampleFormat(conversion.to);
    converter->Connect(source.Get());
    const std::size_t size = conversion.GetOutputSize();
    Run(state, conversion, [&](std::uint8_t* out, const std::uint8_t*) {
        converter->Seek(0);
        if (isOneStep) {
            benchmark::DoNotOptimize(ReadFrames(*converter, out, size));
            return;
        }
        for (std::size_t filled = 0; filled < size;)
            filled += static_cast<std::size_t>(converter->Read(out + filled, size - filled));
    });
}

/// The whole block in one call, without a stream: what a `Read` costs beside it.
void RegisterRead(TCase conversion) {
    const std::string name =
        std::string("read ") + kFormats[conversion.from] + " to " + kFormats[conversion.to] + "/";
    benchmark::RegisterBenchmark((name + "vorlund").c_str(), ReadConverter, conversion, false);
    benchmark::RegisterBenchmark((name + "vorlund ReadFrames").c_str(), ReadConverter, conversion, true);
    const auto add = [&](const char* who, auto function) {
        benchmark::RegisterBenchmark((name + who).c_str(), function, conversion);
    };
    add("vorlund ConvertSamples", Vorlund);
    AddPeers(conversion, add);
}

// ---- files

const std::size_t kFileSize = bench::IsShort() ? 1u << 20 : 64u << 20;

/// WAV files of noise, made once and removed at the end.
class CFiles {
public:
    CFiles() {
        for (const std::uint32_t format : {SAMPLE_FORMAT_8BIT, SAMPLE_FORMAT_16BIT}) {
            const std::size_t size = kSampleSizes[format];
            const TBytes data = MakeNoise(format, kFileSize / size);
            paths_[format] = folder_.Write(kFormats[format], static_cast<std::uint32_t>(size) * 8,
                                           {reinterpret_cast<const char*>(data.data()), data.size()});
        }
    }

    const std::string& GetPath(std::uint32_t format) const { return paths_[format]; }

private:
    bench::CWavFolder folder_;
    std::string paths_[kFormatCount];
};

const CFiles& Files() {
    static const CFiles files;
    return files;
}

/// Fills a buffer of so many bytes of output per iteration, in as many reads as that takes.
void FileVorlund(benchmark::State& state, TCase conversion) {
    const bench::CLibrary library;
    const auto stream = CRefPtr<IInputStream>::Adopt(v.GetCodecClassStore().DecodeFile(
        PathFromUtf8(Files().GetPath(conversion.from).c_str()).c_str(), TDataFormat_AudioPcm::FormatId));
    const auto converter = CreateAs<IAudioPcmSampleFormatConverter>(classid::CAudioPcmSampleFormatConverter);
    converter->SetSampleFormat(conversion.to);
    converter->Connect(stream.Get());
    const std::size_t size = conversion.GetOutputSize();
    Run(state, conversion, [&](std::uint8_t* out, const std::uint8_t*) {
        for (std::size_t filled = 0; filled < size;) {
            const std::uint64_t count = converter->Read(out + filled, size - filled);
            if (count == 0) converter->Seek(0);
            filled += static_cast<std::size_t>(count);
        }
    });
}

#ifdef VORLUND_BENCH_SNDFILE

void FileSndfile(benchmark::State& state, TCase conversion) {
    SF_INFO info{};
    SNDFILE* const file = sf_open(Files().GetPath(conversion.from).c_str(), SFM_READ, &info);
    const auto count = static_cast<sf_count_t>(conversion.count);
    Run(state, conversion, [&](std::uint8_t* out, const std::uint8_t*) {
        const sf_count_t got = conversion.to == SAMPLE_FORMAT_FLOAT
                                   ? sf_read_float(file, reinterpret_cast<float*>(out), count)
                                   : sf_read_short(file, reinterpret_cast<short*>(out), count);
        if (got < count) sf_seek(file, 0, SEEK_SET);
    });
    sf_close(file);
}

#endif

/// `size` is that of the output.
void RegisterFile(std::uint32_t from, std::uint32_t to, std::size_t size) {
    const TCase conversion{from, to, size / kSampleSizes[to]};
    const std::string name = std::string("file ") + kFormats[from] + " to " + kFormats[to] + " by " +
                             std::to_string(size / 1024) + " KiB/";
    benchmark::RegisterBenchmark((name + "vorlund").c_str(), FileVorlund, conversion);
#ifdef VORLUND_BENCH_SNDFILE
    benchmark::RegisterBenchmark((name + "libsndfile").c_str(), FileSndfile, conversion);
#endif
}

} // namespace

int main(int argc, char** argv) {
    const std::size_t stream = bench::IsShort() ? kBlock : 16u << 20;
    for (std::uint32_t from = 0; from < kFormatCount; ++from) {
        for (std::uint32_t to = 0; to < kFormatCount; ++to) {
            if (from == to) continue;
            RegisterCase("block", {from, to, kBlock});
            RegisterCase("stream", {from, to, stream});
            RegisterRead({from, to, kReadSize / kSampleSizes[to]});
        }
    }
    for (const std::size_t size : {1024, 4096, 65536}) {
        RegisterFile(SAMPLE_FORMAT_16BIT, SAMPLE_FORMAT_FLOAT, size);
        RegisterFile(SAMPLE_FORMAT_8BIT, SAMPLE_FORMAT_16BIT, size);
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
