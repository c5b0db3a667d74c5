// Generated sources, against the loops that their definitions are and against the least that can be done:
// filling the same memory with a constant. Frames are read whole, into one buffer.
#include "BenchSupport.h"

#include <vorlund/ClassIds.h>
#include <vorlund/DataFormat.h>
#include <vorlund/PlasmaVideoGenerator.h>
#include <vorlund/RandomGenerator.h>
#include <vorlund/RefPtr.h>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <vector>

using namespace vorlund;

namespace {

struct TSize {
    std::uint32_t width;
    std::uint32_t height;
};

TSize SizeOf(const benchmark::State& state) {
    return {static_cast<std::uint32_t>(state.range(0)), static_cast<std::uint32_t>(state.range(1))};
}

void PlasmaVorlund(benchmark::State& state) {
    const bench::CLibrary library;
    const TSize size = SizeOf(state);
    const auto generator = CreateAs<IPlasmaVideoGenerator>(classid::CPlasmaVideoGenerator);
    TDataFormat_VideoRgb format;
    format.SetDefaults();
    format.image.width = size.width;
    format.image.height = size.height;
    generator->SetFormat(&format);
    std::vector<std::uint32_t> frame(std::size_t{size.width} * size.height);
    for (auto _ : state) {
        generator->Read(frame.data(), frame.size() * 4);
        benchmark::ClobberMemory();
    }
}

/// The definition, pixel by pixel, into the reader's buffer.
void PlasmaLiteral(benchmark::State& state) {
    const TSize size = SizeOf(state);
    int T[256];
    for (int i = 0; i < 256; ++i) {
        const auto angle = static_cast<float>(i * 3.1415927410125732 / 128.0);
        T[i] = static_cast<int>((std::sin(static_cast<double>(angle)) + 1.0) * 127.0);
    }
    std::vector<std::uint32_t> frame(std::size_t{size.width} * size.height);
    std::uint32_t t = 0;
    for (auto _ : state) {
        std::uint32_t* pixel = frame.data();
        for (std::uint32_t y = 0; y < size.height; ++y) {
            for (std::uint32_t x = 0; x < size.width; ++x) {
                const int a = T[((y >> 1) + x - t) & 255] - static_cast<int>(x >> 1);
                const int b = T[((x >> 1) + (t & 255) * 2 - y) & 255];
                const int c = T[(t + 2 * y) & 255];
                const int v = T[(a + b + c) & 255];
                const int red = std::min(v * 3 / 2, 255);
                const int green = std::min(v * 5 / 2, 255);
                *pixel++ = 0xFF000000U + static_cast<std::uint32_t>(red * 65536 + green * 256 + v);
            }
        }
        ++t;
        benchmark::ClobberMemory();
    }
}

void PlasmaFill(benchmark::State& state) {
    const TSize size = SizeOf(state);
    std::vector<std::uint32_t> frame(std::size_t{size.width} * size.height);
    for (auto _ : state) {
        std::memset(frame.data(), 0x88, frame.size() * 4);
        benchmark::ClobberMemory();
    }
}

constexpr std::size_t kRandomSize = 64 * 1024;

void RandomVorlund(benchmark::State& state) {
    const bench::CLibrary library;
    const auto generator = CreateAs<IRandomGenerator>(classid::CRandomGenerator);
    generator->SetRepeatCount(static_cast<std::uint32_t>(state.range(0)));
    std::vector<std::uint8_t> bytes(kRandomSize);
    for (auto _ : state) {
        generator->Read(bytes.data(), bytes.size());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(kRandomSize));
}

/// The definition, byte by byte.
void RandomLiteral(benchmark::State& state) {
    const auto repeatCount = static_cast<std::uint32_t>(state.range(0));
    std::vector<std::uint8_t> bytes(kRandomSize);
    std::uint32_t random = 0;
    for (auto _ : state) {
        std::uint32_t counter = repeatCount;
        std::uint8_t value = 0;
        for (std::uint8_t& byte : bytes) {
            if (counter >= repeatCount) {
                random = random * 214013 + 2531011;
                value = static_cast<std::uint8_t>(random >> 16);
                counter = 0;
            }
            byte = value;
            ++counter;
        }
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(kRandomSize));
}

void RandomFill(benchmark::State& state) {
    std::vector<std::uint8_t> bytes(kRandomSize);
    for (auto _ : state) {
        std::memset(bytes.data(), 0x88, bytes.size());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(kRandomSize));
}

BENCHMARK(PlasmaVorlund)->Name("plasma frame/vorlund")->Args({640, 480})->Args({1920, 1080});
BENCHMARK(PlasmaLiteral)->Name("plasma frame/plain loop")->Args({640, 480})->Args({1920, 1080});
BENCHMARK(PlasmaFill)->Name("plasma frame/limit fill")->Args({640, 480})->Args({1920, 1080});
BENCHMARK(RandomVorlund)->Name("64 KiB of random bytes, runs of/vorlund")->Arg(1)->Arg(1000);
BENCHMARK(RandomLiteral)->Name("64 KiB of random bytes, runs of/plain loop")->Arg(1)->Arg(1000);
BENCHMARK(RandomFill)->Name("64 KiB of random bytes, runs of/limit fill")->Arg(1)->Arg(1000);

} // namespace

BENCHMARK_MAIN();
