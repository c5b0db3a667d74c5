// Resources against what one writes without them: stdio and memcpy for loading and reading back, std::vector
// for appending. The file is in a temporary folder and in the system's cache.
#include "BenchSupport.h"
#include "Limits.h"

#include <vorlund/ClassIds.h>
#include <vorlund/Path.h>
#include <vorlund/RefPtr.h>
#include <vorlund/Resource.h>
#include <vorlund/StreamSelector.h>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include <unistd.h>

using namespace vorlund;
namespace fs = std::filesystem;

namespace {

const std::size_t kFileSize = std::size_t{bench::IsShort() ? 1u : 256u} << 20;
const std::size_t kAppended = std::size_t{bench::IsShort() ? 1u : 16u} << 20;
constexpr std::size_t kPiece = 64 * 1024;

/// The file of the benchmarks, made once and removed at the end.
class CBigFile {
public:
    CBigFile() : path_(fs::temp_directory_path() / ("vorlund-bench-" + std::to_string(getpid()))) {
        std::ofstream file(path_, std::ios::binary);
        std::string block(1 << 20, '\0');
        for (std::size_t i = 0; i < block.size(); ++i) block[i] = static_cast<char>(i * 2654435761u >> 13);
        for (std::size_t at = 0; at < kFileSize; at += block.size())
            file.write(block.data(), static_cast<std::streamsize>(block.size()));
    }
    CBigFile(const CBigFile&) = delete;
    CBigFile& operator=(const CBigFile&) = delete;
    ~CBigFile() { fs::remove(path_); }

    std::string GetPath() const { return path_.string(); }

private:
    fs::path path_;
};

std::string BigFile() {
    static const CBigFile file;
    return file.GetPath();
}

/// Loads the file and reads it back in pieces.
void LoadAndReadResource(benchmark::State& state) {
    const bench::CLibrary library;
    const wstring path = PathFromUtf8(BigFile().c_str());
    std::vector<char> piece(kPiece);
    for (auto _ : state) {
        const auto resource = CreateAs<IResource>(classid::CResource);
        resource->Load(path.c_str());
        const CInputStreamSelector source(resource.Get());
        while (source.GetInputStreamTmp()->Read(piece.data(), piece.size()) > 0) benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(kFileSize));
}

void LoadAndReadStdio(benchmark::State& state) {
    const std::string path = BigFile();
    std::vector<char> piece(kPiece);
    for (auto _ : state) {
        std::FILE* const file = std::fopen(path.c_str(), "rb");
        const auto block = std::make_unique_for_overwrite<char[]>(kFileSize);
        if (std::fread(block.get(), 1, kFileSize, file) != kFileSize) state.SkipWithError("cannot read");
        std::fclose(file);
        for (std::size_t at = 0; at < kFileSize; at += kPiece) {
            std::memcpy(piece.data(), block.get() + at, kPiece);
            benchmark::ClobberMemory();
        }
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(kFileSize));
}

/// Fills 16 MiB by pieces of so many bytes.
template <class TAppend> void AppendPieces(benchmark::State& state, TAppend append) {
    const std::vector<char> piece(static_cast<std::size_t>(state.range(0)), 'x');
    for (std::size_t at = 0; at < kAppended; at += piece.size()) append(piece);
}

void AppendToResource(benchmark::State& state) {
    const bench::CLibrary library;
    for (auto _ : state) {
        const auto resource = CreateAs<IResource>(classid::CResource);
        const auto stream = CreateAs<IAppendingRos>(classid::CAppendingRos);
        stream->SetResource(resource.Get());
        AppendPieces(state, [&](const auto& piece) { stream->Write(piece.data(), piece.size()); });
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(kAppended));
}

void AppendToVector(benchmark::State& state) {
    for (auto _ : state) {
        std::vector<char> bytes;
        AppendPieces(state, [&](const auto& piece) {
            bytes.insert(bytes.end(), piece.begin(), piece.end());
            benchmark::ClobberMemory();
        });
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(kAppended));
}

void FillNew(benchmark::State& state) {
    for (auto _ : state) {
        const auto block = std::make_unique_for_overwrite<char[]>(kAppended);
        std::memset(block.get(), 'x', kAppended);
        benchmark::DoNotOptimize(block.get());
        benchmark::ClobberMemory();
    }
}

void LoadSystem(benchmark::State& state) {
    bench::ReadFileBySystem(state, BigFile(), true);
}

BENCHMARK(LoadAndReadResource)
    ->Name("load 256 MiB and read them back/vorlund")
    ->Unit(benchmark::kMillisecond);
BENCHMARK(LoadAndReadStdio)
    ->Name("load 256 MiB and read them back/stdio and memcpy")
    ->Unit(benchmark::kMillisecond);
BENCHMARK(LoadSystem)
    ->Name("load 256 MiB and read them back/limit system calls")
    ->Unit(benchmark::kMillisecond);
BENCHMARK(AppendToResource)
    ->Name("append 16 MiB/vorlund")
    ->Unit(benchmark::kMillisecond)
    ->Arg(64)
    ->Arg(1024)
    ->Arg(65536);
BENCHMARK(AppendToVector)
    ->Name("append 16 MiB/std::vector")
    ->Unit(benchmark::kMillisecond)
    ->Arg(64)
    ->Arg(1024)
    ->Arg(65536);
BENCHMARK(FillNew)
    ->Name("append 16 MiB/limit fill of a new block")
    ->Unit(benchmark::kMillisecond)
    ->Arg(64)
    ->Arg(1024)
    ->Arg(65536);

} // namespace

BENCHMARK_MAIN();
