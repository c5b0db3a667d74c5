// Writing a WAV file of 256 MiB by `CWavWriter`, against plain fwrite of as many bytes with the same buffer:
// one file after the other, opening and closing included, in the system's cache.
#include "BenchSupport.h"
#include "Limits.h"
#include "WavFolder.h"

#include <vorlund/Path.h>
#include <vorlund/WavWriter.h>

#include <benchmark/benchmark.h>

#include <cstdio>
#include <string>
#include <vector>

using namespace vorlund;

namespace {

const std::size_t kSize = std::size_t{bench::IsShort() ? 1u : 256u} << 20;
/// That of the library's file streams.
constexpr std::size_t kBuffer = std::size_t{32} * 1024;

std::string MakePath() {
    static const bench::CWavFolder folder;
    return folder.Write("written.wav", 16, {});
}

/// Calls `write(block)` until the file is whole.
template <class TWrite> void WriteFile(const std::vector<char>& block, TWrite write) {
    for (std::size_t size = 0; size < kSize; size += block.size()) write(block);
}

void WriteVorlund(benchmark::State& state) {
    const bench::CLibrary library;
    const wstring path = PathFromUtf8(MakePath().c_str());
    const std::vector<char> block(static_cast<std::size_t>(state.range(0)), 'x');
    for (auto _ : state) {
        CWavWriter writer(path.c_str(), {WAV_SAMPLE_16BIT, 2, 48000});
        WriteFile(block, [&writer](const auto& bytes) { writer.Write(bytes.data(), bytes.size()); });
        writer.Close();
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(kSize));
}

void WriteStdio(benchmark::State& state) {
    const std::string path = MakePath();
    const std::vector<char> block(static_cast<std::size_t>(state.range(0)), 'x');
    std::vector<char> buffer(kBuffer);
    for (auto _ : state) {
        std::FILE* const file = std::fopen(path.c_str(), "wb");
        std::setvbuf(file, buffer.data(), _IOFBF, buffer.size());
        WriteFile(block, [file](const auto& bytes) { std::fwrite(bytes.data(), 1, bytes.size(), file); });
        std::fclose(file);
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(kSize));
}

/// Blocks of 64 KiB, whatever the caller's size.
void WriteSystem(benchmark::State& state) {
    bench::WriteFileBySystem(state, MakePath(), kSize);
}

BENCHMARK(WriteVorlund)
    ->Name("write 256 MiB/vorlund")
    ->Arg(512)
    ->Arg(4096)
    ->Arg(65536)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK(WriteStdio)
    ->Name("write 256 MiB/stdio")
    ->Arg(512)
    ->Arg(4096)
    ->Arg(65536)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK(WriteSystem)
    ->Name("write 256 MiB/limit system calls")
    ->Arg(512)
    ->Arg(4096)
    ->Arg(65536)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

} // namespace

BENCHMARK_MAIN();
