// How time grows with work: classes, decoders, events, timers and resources (texts: String_bench.cpp). Each
// row is a size of the work, and its figure is the time of all of it, so a time that grows with the power 1
// is one that grows as its work does.
#include "BenchSupport.h"
#include "EventPeers.h"
#include "EventPlaces.h"
#include "Limits.h"

#include <vorlund/ClassIds.h>
#include <vorlund/ClassStore.h>
#include <vorlund/CodecClassStore.h>
#include <vorlund/DataFormat.h>
#include <vorlund/Exception.h>
#include <vorlund/MemoryStream.h>
#include <vorlund/RefPtr.h>
#include <vorlund/Resource.h>
#include <vorlund/StreamFilterImpl.h>
#include <vorlund/Timer.h>

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdint>
#include <deque>
#include <string>
#include <thread>
#include <vector>

using namespace vorlund;

namespace {

/// The sizes of a row, without the largest ones in a short pass.
void Sizes(benchmark::internal::Benchmark* row, const std::vector<std::int64_t>& sizes) {
    std::size_t left = bench::IsShort() ? 2 : sizes.size();
    for (const std::int64_t size : sizes)
        if (left > 0) {
            row->Arg(size);
            --left;
        }
}

class CPlain : public CObjectImpl<IObject> {
public:
    static constexpr CId ClassId{0xBE7C0000, 1, 2, 4};
};

CId IdOf(std::int64_t index) {
    return {0xBE7C2000u, static_cast<unsigned int>(index) * 2654435761u, 7, 7};
}

/// Registers so many classes and creates an object of each.
void Classes(benchmark::State& state) {
    const bench::CLibrary library;
    std::deque<wstring> names;
    for (std::int64_t i = 0; i < state.range(0); ++i) {
        const std::string name = "bench::Class" + std::to_string(i);
        names.emplace_back(name.begin(), name.end());
    }
    for (auto _ : state) {
        CClassStore store;
        store.Init();
        for (std::int64_t i = 0; i < state.range(0); ++i)
            store.RegisterClassVrl({IdOf(i), names[static_cast<std::size_t>(i)].c_str(), &NewObject<CPlain>});
        for (std::int64_t i = 0; i < state.range(0); ++i) {
            store.CreateObject(IdOf(i))->Release();
            store.CreateObject(names[static_cast<std::size_t>(i)].c_str())->Release();
        }
        store.Close();
    }
}

/// A decoder that takes nothing.
class CRefusing : public CInputFilterImpl<IInputStreamFilter> {
public:
    static constexpr CId ClassId{0xBE7C0000, 1, 2, 5};
    void Connect(IInputStream*) override {
        constexpr TFailure kRefused{VRL_L("bench::CRefusing::Connect"), VRL_L("bench/Growth_bench"), 1,
                                    VRL_L("Not mine")};
        Raise<CDataFormatException>(kRefused);
    }
};

/// A stream that so many decoders refuse.
void Decoders(benchmark::State& state) {
    const bench::CLibrary library;
    v.GetClassStore().RegisterClassVrl(
        {CRefusing::ClassId, VRL_L("bench::CRefusing"), &NewObject<CRefusing>});
    CCodecClassStore store;
    store.Init();
    for (std::int64_t i = 0; i < state.range(0); ++i)
        store.RegisterDecoder({CRefusing::ClassId, {}, IdOf(i)});
    const char bytes[16] = {};
    const auto stream = CRefPtr<IMemoryInputStream>::Adopt(CreateMemoryInput(bytes, sizeof bytes));
    for (auto _ : state) {
        try {
            store.DecodeStream(stream.Get(), TDataFormat_AudioPcm::FormatId);
            state.SkipWithError("not refused");
        } catch (const CDataFormatException&) {
        }
    }
    store.Close();
}

/// A layer that changes nothing, as authors of filters write them.
class CLayer : public CInputFilterImpl<IInputStreamFilter> {
public:
    static constexpr CId ClassId{0xBE7C0000, 1, 2, 6};
};

constexpr std::size_t kLayerRead = 4096;

/// 4 KiB out of memory through so many layers.
void Layers(benchmark::State& state) {
    const bench::CLibrary library;
    const std::vector<char> bytes(16 * kLayerRead, 'x');
    auto stream = CRefPtr<IInputStream>::Adopt(CreateMemoryInput(bytes.data(), bytes.size()));
    for (std::int64_t i = 0; i < state.range(0); ++i) {
        const auto layer = CRefPtr<IInputStreamFilter>::Adopt(new CLayer);
        layer->Connect(stream.Get());
        stream = layer;
    }
    std::vector<char> block(kLayerRead);
    for (auto _ : state) {
        if (stream->Read(block.data(), block.size()) != block.size()) stream->Seek(0);
        benchmark::ClobberMemory();
    }
}

void NoLayer(benchmark::State& state) {
    bench::CopyBytes(state, kLayerRead);
}

/// Starts so many timers and stops them, the first one first.
void StartAndStopTimers(benchmark::State& state) {
    std::deque<CTimer> timers;
    for (std::int64_t i = 0; i < state.range(0); ++i) timers.emplace_back(10.0f);
    for (auto _ : state) {
        for (CTimer& timer : timers) timer.Start();
        for (CTimer& timer : timers) timer.Stop();
    }
}

/// The share of a processor that so many running timers of 10 ms take.
void RunTimers(benchmark::State& state) {
    std::deque<CTimer> timers;
    for (std::int64_t i = 0; i < state.range(0); ++i) timers.emplace_back(0.01f);
    for (CTimer& timer : timers) timer.Start();
    const std::chrono::milliseconds length(bench::IsShort() ? 20 : 1000);
    for (auto _ : state) {
        const auto start = std::chrono::steady_clock::now();
        const double processorStart = bench::ProcessorSeconds();
        std::this_thread::sleep_for(length);
        const double seconds =
            std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        bench::SetFigure(state, "% of a processor",
                         (bench::ProcessorSeconds() - processorStart) / seconds * 100);
    }
    for (CTimer& timer : timers) timer.Stop();
}

/// So many MiB appended by 64 KiB.
void AppendMebibytes(benchmark::State& state) {
    const bench::CLibrary library;
    const std::vector<char> piece(64 * 1024, 'x');
    for (auto _ : state) {
        const auto resource = CreateAs<IResource>(classid::CResource);
        const auto stream = CreateAs<IAppendingRos>(classid::CAppendingRos);
        stream->SetResource(resource.Get());
        for (std::int64_t i = 0; i < state.range(0) * 16; ++i) stream->Write(piece.data(), piece.size());
    }
}

void AppendToVector(benchmark::State& state) {
    const std::vector<char> piece(64 * 1024, 'x');
    for (auto _ : state) {
        std::vector<char> bytes;
        for (std::int64_t i = 0; i < state.range(0) * 16; ++i) {
            bytes.insert(bytes.end(), piece.begin(), piece.end());
            benchmark::ClobberMemory();
        }
    }
}

/// A wait for any of a list whose last event is set.
template <class TEvents, int kCount> void AnyOf(benchmark::State& state) {
    TEvents events;
    events.Set(kCount - 1);
    for (auto _ : state) benchmark::DoNotOptimize(events.WaitOne());
}

template <template <int> class TEvents> void RegisterEvents(const std::string& who) {
    const auto add = [&](const char* count, auto function) {
        benchmark::RegisterBenchmark(
            ("growth/any of so many events, the last is set/" + who + "/" + count).c_str(), function);
    };
    add("1", AnyOf<TEvents<1>, 1>);
    add("4", AnyOf<TEvents<4>, 4>);
    add("16", AnyOf<TEvents<16>, 16>);
    add("64", AnyOf<TEvents<64>, 64>);
}

void RegisterAll() {
    const auto add = [](const char* name, auto function) {
        return benchmark::RegisterBenchmark(name, function)->Unit(benchmark::kMicrosecond);
    };
    Sizes(add("growth/register classes and create one of each/vorlund", Classes), {40, 400, 4000, 40000});
    Sizes(add("growth/decoders that refuse a stream/vorlund", Decoders), {10, 100, 1000});
    Sizes(add("growth/read 4 KiB through layers/vorlund", Layers), {1, 4, 16, 64});
    Sizes(add("growth/read 4 KiB through layers/limit copy", NoLayer), {1, 4, 16, 64});
    Sizes(add("growth/start and stop timers/vorlund", StartAndStopTimers), {1, 10, 100, 1000, 10000});
    Sizes(add("growth/running timers of 10 ms/vorlund", RunTimers)->Iterations(1), {1, 10, 100, 1000, 10000});
    // What an address space of 32 bits has room for, while it grows.
    const std::vector<std::int64_t> mebibytes = sizeof(void*) > 4
                                                    ? std::vector<std::int64_t>{1, 16, 128, 1024}
                                                    : std::vector<std::int64_t>{1, 16, 128};
    Sizes(add("growth/MiB appended to a resource/vorlund", AppendMebibytes), mebibytes);
    Sizes(add("growth/MiB appended to a resource/std::vector", AppendToVector), mebibytes);
    RegisterEvents<bench::TVorlundEvents>("vorlund");
    RegisterEvents<bench::TConditionEvents>("condition");
}

} // namespace

int main(int argc, char** argv) {
    RegisterAll();
    return vorlund::bench::RunRows(argc, argv);
}
