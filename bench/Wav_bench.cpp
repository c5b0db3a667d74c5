// Reading and opening WAV files, against libsndfile and plain stdio. The files are in a temporary folder and
// in the system's cache.
#include "BenchSupport.h"
#include "Limits.h"
#include "WavFolder.h"

#include <vorlund/ClassIds.h>
#include <vorlund/CodecClassStore.h>
#include <vorlund/DataFormat.h>
#include <vorlund/DecodeReport.h>
#include <vorlund/DecoderRefusal.h>
#include <vorlund/Exception.h>
#include <vorlund/MemoryStream.h>
#include <vorlund/Path.h>
#include <vorlund/RefPtr.h>
#include <vorlund/Resource.h>
#include <vorlund/Stream.h>
#include <vorlund/StreamFilterImpl.h>
#include <vorlund/StreamSelector.h>

#include <benchmark/benchmark.h>

#ifdef VORLUND_BENCH_SNDFILE
#include <sndfile.h>
#endif

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

using namespace vorlund;

namespace {

const std::size_t kBigSize = bench::IsShort() ? 1u << 20 : 64u << 20;

constexpr std::size_t kWholeSize = 1u << 20;

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
    const std::string whole = folder_.Write("whole.wav", 16, MakeData(kWholeSize));
    const std::string unknown = folder_.WriteBytes("unknown", MakeData(4096));
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

using TStdioRead = std::size_t (*)(void*, std::size_t, std::size_t, std::FILE*);

void ReadStdio(benchmark::State& state, TStdioRead readStdio) {
    std::FILE* const file = std::fopen(Files().big.c_str(), "rb");
    std::vector<char> block(64 * 1024);
    std::setvbuf(file, block.data(), _IOFBF, block.size());
    std::fseek(file, 44, SEEK_SET);
    ReadCalls(
        state, [&](char* buffer, std::size_t size) { return readStdio(buffer, 1, size, file); },
        [&] { std::fseek(file, 44, SEEK_SET); });
    std::fclose(file);
}

/// What the machine gives: the system's read into the caller's buffer, and a copy from memory.
void ReadSystem(benchmark::State& state) {
    const int file = open(Files().big.c_str(), O_RDONLY);
    ReadCalls(
        state,
        [&](char* buffer, std::size_t size) {
            return static_cast<std::size_t>(
                std::max<std::ptrdiff_t>(read(file, buffer, static_cast<unsigned int>(size)), 0));
        },
        [&] { lseek(file, 44, SEEK_SET); });
    close(file);
}

void ReadCopy(benchmark::State& state) {
    const std::string block = MakeData(static_cast<std::size_t>(state.range(0)));
    ReadCalls(
        state,
        [&](char* buffer, std::size_t size) {
            std::memcpy(buffer, block.data(), size);
            return size;
        },
        [] {});
}

/// A file of 1 MiB from its opening to its end, by 64 KiB.
void WholeVorlund(benchmark::State& state) {
    const bench::CLibrary library;
    std::vector<char> buffer(64 * 1024);
    for (auto _ : state) {
        const auto stream = Open(Files().whole);
        while (stream->Read(buffer.data(), buffer.size()) > 0) benchmark::ClobberMemory();
    }
}

void WholeStdio(benchmark::State& state) {
    std::vector<char> buffer(64 * 1024);
    for (auto _ : state) {
        std::FILE* const file = std::fopen(Files().whole.c_str(), "rb");
        while (std::fread(buffer.data(), 1, buffer.size(), file) > 0) benchmark::ClobberMemory();
        std::fclose(file);
    }
}

/// A file into a resource, decoded.
void LoadDecoded(benchmark::State& state) {
    const bench::CLibrary library;
    const wstring path = PathFromUtf8(Files().whole.c_str());
    const TDataFormat_AudioPcm format{SAMPLE_FORMAT_16BIT, 2, 44100};
    for (auto _ : state) {
        const auto resource = CreateAs<IResource>(classid::CResource);
        resource->SetFormat(&format);
        resource->LoadDecoded(path.c_str());
        if (resource->GetSize() != kWholeSize) state.SkipWithError("not all was loaded");
    }
}

/// The header looked over by hand, and the data in one read.
void LoadStdio(benchmark::State& state) {
    for (auto _ : state) {
        std::FILE* const file = std::fopen(Files().whole.c_str(), "rb");
        char head[44];
        if (std::fread(head, 1, sizeof head, file) != sizeof head || std::memcmp(head, "RIFF", 4) != 0)
            state.SkipWithError("no header");
        const auto data = std::make_unique_for_overwrite<char[]>(kWholeSize);
        if (std::fread(data.get(), 1, kWholeSize, file) != kWholeSize) state.SkipWithError("cannot read");
        benchmark::DoNotOptimize(data.get());
        std::fclose(file);
    }
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

void RejectVorlund(benchmark::State& state, const std::string CFiles::*file) {
    const bench::CLibrary library;
    const wstring path = PathFromUtf8((Files().*file).c_str());
    for (auto _ : state) {
        try {
            v.GetCodecClassStore().DecodeFile(path.c_str(), TDataFormat_AudioPcm::FormatId);
            state.SkipWithError("not rejected");
        } catch (const CDataFormatException&) {
        }
    }
}

/// A decoder that takes no stream, and says so by an exception or without one.
template <bool raises> class CRefusing : public CInputFilterImpl<IInputStreamFilter> {
public:
    static constexpr CId ClassId{0x5B0C4E1D, 0x92A74F38, 0xA1D6C53E, raises ? 1u : 2u};

    void Connect(IInputStream*) override {
        constexpr TFailure kFailure{VRL_L("bench::CRefusing::Connect"), VRL_L("bench/Wav_bench"), 2,
                                    VRL_L("Not mine")};
        if constexpr (raises) Raise<CDataFormatException>(kFailure);
        const CRefusal refusal(*this);
        refusal.Raise<CDataFormatException>(kFailure);
    }
};

/// A search among so many decoders that refuse, for the longest chain.
template <bool raises> void RefusingDecoders(benchmark::State& state) {
    const bench::CLibrary library;
    using TDecoder = CRefusing<raises>;
    v.GetClassStore().RegisterClassVrl({TDecoder::ClassId, VRL_L("bench::CRefusing"), &NewObject<TDecoder>});
    CCodecClassStore store;
    store.Init();
    for (std::int64_t i = 0; i < state.range(0); ++i)
        store.RegisterDecoder({TDecoder::ClassId, CId::Null(), TDataFormat_AudioPcm::FormatId});
    const auto stream = CRefPtr<IInputStream>::Adopt(CreateMemoryInput("", 0));
    for (auto _ : state) store.DecodeStream(stream.Get(), CId::Null())->Release();
    store.Close();
}

/// The system's calls for a file that is opened, or read to its end, and closed.
void SystemCalls(benchmark::State& state, const std::string CFiles::*file, bool isWhole) {
    bench::ReadFileBySystem(state, Files().*file, isWhole);
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

/// The bytes of one call.
void CallSizes(benchmark::internal::Benchmark* rows) {
    for (const int size : {64, 1024, 4096, 65536}) rows->Arg(size);
}

BENCHMARK(ReadVorlund)->Name("read 16 bits/vorlund")->Apply(CallSizes);
BENCHMARK_CAPTURE(ReadStdio, Locked, std::fread)->Name("read 16 bits/stdio")->Apply(CallSizes);
#ifdef VORLUND_BENCH_UNLOCKED
BENCHMARK_CAPTURE(ReadStdio, Unlocked, fread_unlocked)->Name("read 16 bits/stdio unlocked")->Apply(CallSizes);
#endif
BENCHMARK(ReadSystem)->Name("read 16 bits/limit system call")->Apply(CallSizes);
BENCHMARK(ReadCopy)->Name("read 16 bits/limit copy")->Apply(CallSizes);
BENCHMARK(WholeVorlund)->Name("whole file of 1 MiB/vorlund");
BENCHMARK(WholeStdio)->Name("whole file of 1 MiB/stdio");
BENCHMARK(LoadDecoded)->Name("load 1 MiB decoded/vorlund");
BENCHMARK(LoadStdio)->Name("load 1 MiB decoded/stdio");
BENCHMARK_CAPTURE(OpenVorlund, Plain, &CFiles::small)->Name("open and close/vorlund");
BENCHMARK_CAPTURE(OpenVorlund, DozenChunks, &CFiles::chunks)->Name("open and close, a dozen chunks/vorlund");
BENCHMARK_CAPTURE(OpenReported, NoReport, false)->Name("open and close/vorlund with a choice");
BENCHMARK_CAPTURE(OpenReported, Report, true)->Name("open and close/vorlund with a report");
BENCHMARK_CAPTURE(RejectVorlund, Unknown, &CFiles::unknown)->Name("reject an unknown file/vorlund");
BENCHMARK_CAPTURE(RejectVorlund, Bits24, &CFiles::rejected)->Name("reject a WAV file of 24 bits/vorlund");
BENCHMARK_CAPTURE(SystemCalls, Whole, &CFiles::whole, true)->Name("whole file of 1 MiB/limit system calls");
BENCHMARK_CAPTURE(SystemCalls, Load, &CFiles::whole, true)->Name("load 1 MiB decoded/limit system calls");
BENCHMARK_CAPTURE(SystemCalls, Open, &CFiles::small, false)->Name("open and close/limit system calls");
BENCHMARK_CAPTURE(SystemCalls, OpenChunks, &CFiles::chunks, false)
    ->Name("open and close, a dozen chunks/limit system calls");
BENCHMARK_CAPTURE(SystemCalls, Unknown, &CFiles::unknown, false)
    ->Name("reject an unknown file/limit system calls");
BENCHMARK_CAPTURE(SystemCalls, Bits24, &CFiles::rejected, false)
    ->Name("reject a WAV file of 24 bits/limit system calls");
BENCHMARK_TEMPLATE(RefusingDecoders, true)->Name("refusing decoders/vorlund raising")->Arg(10);
BENCHMARK_TEMPLATE(RefusingDecoders, false)->Name("refusing decoders/vorlund")->Arg(10);
BENCHMARK_CAPTURE(RaiseException, EmptyOutput, false)->Name("raise and catch/vorlund");
BENCHMARK_CAPTURE(RaiseException, DefaultOutput, true)->Name("raise and catch/vorlund to the system log");

void ThrowStandard(benchmark::State& state) {
    for (auto _ : state) {
        try {
            throw std::runtime_error("kept short");
        } catch (const std::runtime_error&) {
        }
    }
}
BENCHMARK(ThrowStandard)->Name("raise and catch/std::runtime_error");

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

void WholeSndfile(benchmark::State& state) {
    std::vector<char> buffer(64 * 1024);
    for (auto _ : state) {
        SF_INFO info{};
        SNDFILE* const file = sf_open(Files().whole.c_str(), SFM_READ, &info);
        while (sf_read_raw(file, buffer.data(), static_cast<sf_count_t>(buffer.size())) > 0)
            benchmark::ClobberMemory();
        sf_close(file);
    }
}

void LoadSndfile(benchmark::State& state) {
    for (auto _ : state) {
        SF_INFO info{};
        SNDFILE* const file = sf_open(Files().whole.c_str(), SFM_READ, &info);
        const auto data = std::make_unique_for_overwrite<char[]>(kWholeSize);
        benchmark::DoNotOptimize(sf_read_raw(file, data.get(), kWholeSize));
        sf_close(file);
    }
}

BENCHMARK(ReadSndfile)->Name("read 16 bits/libsndfile")->Apply(CallSizes);
BENCHMARK(WholeSndfile)->Name("whole file of 1 MiB/libsndfile");
BENCHMARK(LoadSndfile)->Name("load 1 MiB decoded/libsndfile");
BENCHMARK_CAPTURE(OpenSndfile, Plain, &CFiles::small)->Name("open and close/libsndfile");
BENCHMARK_CAPTURE(OpenSndfile, DozenChunks, &CFiles::chunks)
    ->Name("open and close, a dozen chunks/libsndfile");

/// Of bytes that nobody knows; it reads 24 bits.
void RejectSndfile(benchmark::State& state) {
    for (auto _ : state) {
        SF_INFO info{};
        if (sf_open(Files().unknown.c_str(), SFM_READ, &info)) state.SkipWithError("not rejected");
    }
}

BENCHMARK(RejectSndfile)->Name("reject an unknown file/libsndfile");

#endif

} // namespace

BENCHMARK_MAIN();
