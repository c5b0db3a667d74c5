// What the machine gives at best, for rows of several benchmarks: copies, and the bare calls of the system.
#pragma once

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vorlund::bench {

#ifdef O_BINARY
constexpr int kBinary = O_BINARY;
#else
constexpr int kBinary = 0;
#endif
constexpr std::size_t kSystemBlock = std::size_t{64} * 1024;

/// Copies so many bytes into memory that is there.
inline void CopyBytes(benchmark::State& state, std::size_t size) {
    const std::vector<char> from(size, 'x');
    std::vector<char> to(size);
    for (auto _ : state) {
        std::memcpy(to.data(), from.data(), size);
        benchmark::ClobberMemory();
    }
}

/// Copies so many bytes into a new block.
inline void CopyIntoNew(benchmark::State& state, std::size_t size) {
    const std::vector<char> from(size, 'x');
    for (auto _ : state) {
        const auto to = std::make_unique_for_overwrite<char[]>(size);
        std::memcpy(to.get(), from.data(), size);
        benchmark::DoNotOptimize(to.get());
        benchmark::ClobberMemory();
    }
}

/// Looks at so many bytes for one that is not there.
inline void ScanBytes(benchmark::State& state, std::size_t size) {
    const std::vector<char> bytes(size, 'x');
    for (auto _ : state) {
        benchmark::DoNotOptimize(std::memchr(bytes.data(), 'y', size));
        benchmark::ClobberMemory();
    }
}

/// Opens a file, asks for its size, reads its first block, or all of it, and closes it.
inline void ReadFileBySystem(benchmark::State& state, const std::string& path, bool isWhole) {
    std::vector<char> block(kSystemBlock);
    for (auto _ : state) {
        const int file = open(path.c_str(), O_RDONLY | kBinary);
        struct stat status;
        if (fstat(file, &status) != 0) state.SkipWithError("no status");
        std::ptrdiff_t got;
        do got = read(file, block.data(), static_cast<unsigned int>(block.size()));
        while (isWhole && got > 0);
        if (got < 0) state.SkipWithError("cannot read");
        close(file);
    }
}

/// Makes a file of so many bytes, by blocks that are there.
inline void WriteFileBySystem(benchmark::State& state, const std::string& path, std::size_t size) {
    const std::vector<char> block(kSystemBlock, 'x');
    for (auto _ : state) {
        const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | kBinary, 0600);
        for (std::size_t left = size; left > 0;) {
            const auto put =
                write(file, block.data(), static_cast<unsigned int>(std::min(left, block.size())));
            if (put <= 0) {
                state.SkipWithError("cannot write");
                break;
            }
            left -= static_cast<std::size_t>(put);
        }
        close(file);
    }
}

} // namespace vorlund::bench
