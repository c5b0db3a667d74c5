// The program from its start to its end: conversions of many files by one and two threads, a look into a
// large file, and what playing costs. Peer: sox, one file after the other, where it is there.
#include <vorlund/Path.h>
#include <vorlund/WavWriter.h>

#include "BenchSupport.h"

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <sys/resource.h>
#include <vector>

using namespace vorlund;
namespace fs = std::filesystem;

namespace {

constexpr std::uint32_t kRate = 44100;

/// Files of noise in 16 bits, two channels, half of them in each of two folders.
class CFiles {
public:
    CFiles(int count, double seconds, std::uint32_t rate = kRate)
        : path_(fs::temp_directory_path() / "vorlund-bench-program") {
        fs::remove_all(path_);
        for (const char* const half : {"in/0", "in/1"}) fs::create_directories(path_ / half);
        const bench::CLibrary library;
        // At half of full scale.
        std::vector<std::int16_t> samples(static_cast<std::size_t>(seconds * rate) * 2);
        std::uint32_t state = 1;
        for (std::int16_t& sample : samples) {
            state = state * 1664525 + 1013904223;
            sample = static_cast<std::int16_t>(static_cast<std::int32_t>(state) >> 17);
        }
        for (int i = 0; i < count; ++i) {
            const std::string name =
                (path_ / "in" / std::to_string(i % 2) / (std::to_string(i) + ".wav")).string();
            CWavWriter writer(PathFromUtf8(name.c_str()).c_str(), {WAV_SAMPLE_16BIT, 2, rate});
            writer.Write(samples.data(), samples.size() * sizeof samples[0]);
            writer.Close();
        }
    }
    CFiles(const CFiles&) = delete;
    CFiles& operator=(const CFiles&) = delete;
    ~CFiles() { fs::remove_all(path_); }

    std::string At(const char* name) const { return (path_ / name).string(); }

private:
    fs::path path_;
};

void Run(benchmark::State& state, const std::string& command) {
    for (auto _ : state) {
        if (std::system(command.c_str()) != 0) state.SkipWithError("the command fails");
    }
}

/// From WAV of 16 bits at 44,100 Hz to FLAC at 48,000 Hz.
std::string GetConversion(const CFiles& files, const char* folder, std::int64_t jobs) {
    return VORLUND_BENCH_PROGRAM " convert " + files.At(folder) + " -o " + files.At("out/") +
           " --type flac --rate 48000 --bits 16 --jobs " + std::to_string(jobs) + " >/dev/null";
}

void Convert(benchmark::State& state, int count, double seconds) {
    const CFiles files(count, seconds);
    Run(state, GetConversion(files, "in", state.range(0)));
}

/// What two processors give: two programs that know nothing of each other, each with half of the files.
void ConvertApart(benchmark::State& state, int count, double seconds) {
    const CFiles files(count, seconds);
    Run(state, GetConversion(files, "in/0", 1) + " & " + GetConversion(files, "in/1", 1) + " && wait $!");
}

void ConvertSox(benchmark::State& state, int count, double seconds) {
    const CFiles files(count, seconds);
    fs::create_directories(files.At("out"));
    Run(state, "cd " + files.At("in") +
                   " && for f in */*.wav; do n=${f#*/}; sox -V1 -D $f -b 16 ../out/${n%.wav}.flac rate -h "
                   "48000 || exit 1; "
                   "done");
}

/// A sparse RF64 of 10 GiB.
void InfoLarge(benchmark::State& state) {
    const CFiles files(1, 1);
    const std::string name = files.At("large.wav");
    fs::copy_file(files.At("in/0/0.wav"), name);
    constexpr std::uint64_t kSize = std::uint64_t{10} << 30;
    fs::resize_file(name, kSize);
    Run(state, VORLUND_BENCH_PROGRAM " repair " + name + " >/dev/null && " VORLUND_BENCH_PROGRAM " info " +
                   name + " >/dev/null");
}

/// Seconds that the processors have spent on programs that this one has started, and that have ended.
double GetTimeOfPrograms() {
    rusage usage{};
    getrusage(RUSAGE_CHILDREN, &usage);
    const auto seconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
    };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

/// Playing in time: what it takes of a processor, its start included.
void Play(benchmark::State& state, double seconds) {
    const CFiles files(1, seconds, 48000);
    const double before = GetTimeOfPrograms();
    Run(state, VORLUND_BENCH_PROGRAM " play --device null " + files.At("in/0/0.wav") + " >/dev/null");
    bench::SetFigure(state, "% of a processor", (GetTimeOfPrograms() - before) / seconds * 100);
}

/// `count` files of so many seconds each, by one and by two threads.
void RegisterFiles(const std::string& what, int count, double seconds) {
    const auto add = [&](const std::string& name, auto function) {
        return benchmark::RegisterBenchmark(name.c_str(), function, count, seconds)
            ->Unit(benchmark::kMillisecond)
            ->UseRealTime()
            ->Iterations(1);
    };
    add(what + "/vorlund", Convert)->ArgName("jobs")->Arg(1)->Arg(2);
    // Beside the row of as many jobs.
    add(what + "/two programs apart", ConvertApart)->ArgName("jobs")->Arg(2);
    add(what + "/sox", ConvertSox)->ArgName("jobs")->Arg(1);
}

} // namespace

int main(int argc, char** argv) {
    if (bench::IsShort()) {
        RegisterFiles("files of a minute", 2, 0.1);
        RegisterFiles("files of a second", 2, 0.1);
    } else {
        RegisterFiles("files of a minute", 6, 60);
        RegisterFiles("files of a second", 200, 1);
    }
    benchmark::RegisterBenchmark("repair and info, 10 GiB/vorlund", InfoLarge)
        ->Unit(benchmark::kMillisecond)
        ->UseRealTime();
    benchmark::RegisterBenchmark("play 48,000 Hz stereo/vorlund", Play, bench::IsShort() ? 0.5 : 60.0)
        ->UseRealTime()
        ->Iterations(1);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
}
