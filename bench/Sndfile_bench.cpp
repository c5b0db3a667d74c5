// What the plug-in sndfile adds to libsndfile's own reading, and what a process of its own adds to that. The
// files are in a temporary folder and in the system's cache.
#include "BenchSupport.h"
#include "WavFolder.h"

#include <vorlund/CodecClassStore.h>
#include <vorlund/DataFormat.h>
#include <vorlund/IsolatedDecoder.h>
#include <vorlund/Path.h>
#include <vorlund/PluginStore.h>
#include <vorlund/RefPtr.h>
#include <vorlund/Stream.h>
#include <vorlund/StreamSelector.h>
#include <vorlund/Vorlund.h>

#include <benchmark/benchmark.h>

#include <sndfile.h>

#include <string>
#include <vector>

using namespace vorlund;

namespace {

const std::size_t kSize = bench::IsShort() ? 3u << 18 : 48u << 20;
constexpr int kFrameSize = 2 * sizeof(int);

const std::string& File() {
    static const bench::CWavFolder folder;
    static const std::string path = [] {
        std::string data(kSize, '\0');
        for (std::size_t i = 0; i < kSize; ++i) data[i] = static_cast<char>(i * 2654435761u >> 13);
        return folder.Write("big.wav", 24, data);
    }();
    return path;
}

/// Calls `read(buffer, size)` once per iteration and `rewind()` at the end of the data.
template <class TRead, class TRewind> void ReadCalls(benchmark::State& state, TRead read, TRewind rewind) {
    std::vector<int> buffer(static_cast<std::size_t>(state.range(0)) / sizeof(int));
    const auto size = static_cast<std::uint64_t>(state.range(0));
    for (auto _ : state) {
        if (read(buffer.data(), size) != size) rewind();
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * state.range(0));
}

void ReadPlugin(benchmark::State& state) {
    const bench::CLibrary library;
    CPluginStore store;
    store.AddPluginPath(PathFromUtf8(VORLUND_BENCH_PLUGIN_PATH).c_str());
    store.LoadPlugin(VRL_L("sndfile"));
    {
        const auto stream = CRefPtr<IInputStream>::Adopt(v.GetCodecClassStore().DecodeFile(
            PathFromUtf8(File().c_str()).c_str(), TDataFormat_AudioPcm::FormatId));
        ReadCalls(
            state, [&](void* buffer, std::uint64_t size) { return stream->Read(buffer, size); },
            [&] { stream->Seek(0); });
    }
    store.Close();
}

CRefPtr<IInputStream> OpenIsolated() {
    static const wstring folder = PathFromUtf8(VORLUND_BENCH_PLUGIN_PATH);
    const wchar* const folders[] = {folder.c_str()};
    const CInputStreamSelector source(PathFromUtf8(File().c_str()).c_str());
    return CRefPtr<IInputStream>::Adopt(
        DecodeIsolated(source.GetInputStreamTmp(), TDataFormat_AudioPcm::FormatId, {.folders = folders}));
}

void ReadIsolated(benchmark::State& state) {
    const bench::CLibrary library;
    const auto stream = OpenIsolated();
    ReadCalls(
        state, [&](void* buffer, std::uint64_t size) { return stream->Read(buffer, size); },
        [&] { stream->Seek(0); });
}

/// With the first bytes, and the end of the process.
void StartIsolated(benchmark::State& state) {
    const bench::CLibrary library;
    for (auto _ : state) {
        char bytes[1024];
        benchmark::DoNotOptimize(OpenIsolated()->Read(bytes, sizeof(bytes)));
    }
}

void ReadLibsndfile(benchmark::State& state) {
    SF_INFO info{};
    SNDFILE* const file = sf_open(File().c_str(), SFM_READ, &info);
    ReadCalls(
        state,
        [&](int* buffer, std::uint64_t size) {
            return static_cast<std::uint64_t>(
                sf_readf_int(file, buffer, static_cast<sf_count_t>(size / kFrameSize)) * kFrameSize);
        },
        [&] { sf_seek(file, 0, SEEK_SET); });
    sf_close(file);
}

BENCHMARK(ReadPlugin)->Name("read 24 bits through the plug-in/vorlund")->Arg(4096)->Arg(65536);
BENCHMARK(ReadIsolated)->Name("read 24 bits in isolation/vorlund")->Arg(4096)->Arg(65536)->UseRealTime();
BENCHMARK(StartIsolated)->Name("start and end isolation/vorlund")->UseRealTime();
BENCHMARK(ReadLibsndfile)->Name("read 24 bits through the plug-in/libsndfile")->Arg(4096)->Arg(65536);

} // namespace

BENCHMARK_MAIN();
