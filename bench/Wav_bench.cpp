// Reading and opening WAV files, against libsndfile and plain stdio. The files are in a temporary folder and
// in the system's cache.
#include "BenchSupport.h"
#include "WavFolder.h"

#include <vorlund/CodecClassStore.h>
#include <vorlund/DataFormat.h>
#include <vorlund/DecodeReport.h>
#include <vorlund/Exception.h>
#include <vorlund/Path.h>
#include <vorlund/RefPtr.h>
#include <vorlund/Stream.h>

#include <benchmark/benchmark.h>

#ifdef VORLUND_BENCH_SNDFILE
#include <sndfile.h>
#endif

#include <cstdio>
#include <string>
#include <vector>

using namespace vorlund;

namespace {

constexpr std::size_t kBigSize = 64u << 20;

std::string MakeData(std::size_t size) {
    std::string data(size, '\0');
    for (std::size_t i = 0; i < size; ++i) data[i] = static_cast<char>(i * 2654435761u >> 13);
    return data;
}

/// The files of the benchmarks, made once and removed at the end.
class CFiles {
    const bench::CWavFolder folder_;

public:
    const std::string big = folder_.Write("big.wav", 16, MakeData(kBigSize));
    const std::string small = folder_.Write("small.wav", 16, MakeData(4096));
    const std::string chunks = folder_.Write("chunks.wav", 16, MakeData(4096), 12);
    const std::string rejected = folder_.Write("rejected.wav", 24, MakeData(4096));
};

const CFiles& Files() {
    static const CFiles files;
    return files;
}

CRefPtr<IInputStream> Open(const std::string& path) {
    return CRefPtr<IInputStream>::Adopt(v.GetCodecClassStore().DecodeFile(PathFromUtf8(path.c_str()).c_str(),
                                                                          TDataFormat_AudioPcm::FormatId));
}

/// Calls `read(buffer, size)` once per iteration and `rewind()` at the end of the data.
template <class TRead, class TRewind> void ReadCalls(benchmark::State& state, TRead read, TRewind rewind) {
    std::vector<char> buffer(static_cast<std::size_t>(state.range(0)));
    for (auto _ : state) {
        if (read(buffer.data(), buffer.size()) != buffer.size()) rewind();
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * state.range(0));
}

void ReadVorlund(benchmark::State& state) {
    const bench::CLibrary library;
    const auto stream = Open(Files().big);
    ReadCalls(
        state, [&](char* buffer, std::size_t size) { return stream->Read(buffer, size); },
        [&] { stream->Seek(0); });
}

void ReadStdio(benchmark::State& state) {
    std::FILE* const file = std::fopen(Files().big.c_str(), "rb");
    std::vector<char> block(64 * 1024);
    std::setvbuf(file, block.data(), _IOFBF, block.size());
    std::fseek(file, 44, SEEK_SET);
    ReadCalls(
        state, [&](char* buffer, std::size_t size) { return std::fread(buffer, 1, size, file); },
        [&] { std::fseek(file, 44, SEEK_SET); });
    std::fclose(file);
}

void OpenVorlund(benchmark::State& state, const std::string CFiles::*file) {
    const bench::CLibrary library;
    const wstring path = PathFromUtf8((Files().*file).c_str());
    for (auto _ : state) {
        v.GetCodecClassStore().DecodeFile(path.c_str(), TDataFormat_AudioPcm::FormatId)->Release();
    }
}

/// The same with a choice of decoders, and a report or none: none costs nothing.
void OpenReported(benchmark::State& state, bool hasReport) {
    const bench::CLibrary library;
    const wstring path = PathFromUtf8(Files().small.c_str());
    CDecodeReport report;
    const TDecoderChoice choice{.report = hasReport ? &report : nullptr};
    for (auto _ : state) {
        v.GetCodecClassStore().DecodeFile(path.c_str(), TDataFormat_AudioPcm::FormatId, choice)->Release();
    }
}

void RejectVorlund(benchmark::State& state) {
    const bench::CLibrary library;
    const wstring path = PathFromUtf8(Files().rejected.c_str());
    for (auto _ : state) {
        try {
            v.GetCodecClassStore().DecodeFile(path.c_str(), TDataFormat_AudioPcm::FormatId);
            state.SkipWithError("not rejected");
        } catch (const CDataFormatException&) {
        }
    }
}

/// What an exception costs from the raise to the handler that catches it, with an empty debugger output and
/// with the default one.
void RaiseException(benchmark::State& state, bool hasDefaultOutput) {
    const bench::CLibrary library;
    if (hasDefaultOutput) CDebug::SetHandler(DEBUG_MESSAGE_OUTPUT, nullptr);
    constexpr TFailure kFailure{VRL_L("bench::Raise"), VRL_L("bench/Wav_bench"), 1, VRL_L("On purpose")};
    for (auto _ : state) {
        try {
            Raise<CDataFormatException>(kFailure);
        } catch (const CDataFormatException&) {
        }
    }
}

BENCHMARK(ReadVorlund)->RangeMultiplier(4)->Arg(1024)->Arg(4096)->Arg(65536);
BENCHMARK(ReadStdio)->Arg(1024)->Arg(4096)->Arg(65536);
BENCHMARK_CAPTURE(OpenVorlund, Plain, &CFiles::small);
BENCHMARK_CAPTURE(OpenVorlund, DozenChunks, &CFiles::chunks);
BENCHMARK_CAPTURE(OpenReported, NoReport, false);
BENCHMARK_CAPTURE(OpenReported, Report, true);
BENCHMARK(RejectVorlund);
BENCHMARK_CAPTURE(RaiseException, EmptyOutput, false);
BENCHMARK_CAPTURE(RaiseException, DefaultOutput, true);

#ifdef VORLUND_BENCH_SNDFILE

void ReadSndfile(benchmark::State& state) {
    SF_INFO info{};
    SNDFILE* const file = sf_open(Files().big.c_str(), SFM_READ, &info);
    ReadCalls(
        state,
        [&](char* buffer, std::size_t size) {
            return static_cast<std::size_t>(sf_read_raw(file, buffer, static_cast<sf_count_t>(size)));
        },
        [&] { sf_seek(file, 0, SEEK_SET); });
    sf_close(file);
}

void OpenSndfile(benchmark::State& state, const std::string CFiles::*file) {
    for (auto _ : state) {
        SF_INFO info{};
        sf_close(sf_open((Files().*file).c_str(), SFM_READ, &info));
    }
}

BENCHMARK(ReadSndfile)->Arg(1024)->Arg(4096)->Arg(65536);
BENCHMARK_CAPTURE(OpenSndfile, Plain, &CFiles::small);
BENCHMARK_CAPTURE(OpenSndfile, DozenChunks, &CFiles::chunks);

#endif

} // namespace

BENCHMARK_MAIN();
