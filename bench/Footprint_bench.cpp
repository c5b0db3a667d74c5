// What things take besides time: memory of objects, locks, events and resources, threads and address space of
// asynchronous waits, the size of the library; and what a program pays for it before it does anything.
#include "BenchSupport.h"

#include <vorlund/BinaryLock.h>
#include <vorlund/ClassIds.h>
#include <vorlund/Event.h>
#include <vorlund/ReadWriteLock.h>
#include <vorlund/RefPtr.h>
#include <vorlund/Resource.h>
#include <vorlund/Timer.h>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <mutex>
#include <shared_mutex>
#include <string>
#include <thread>
#include <vector>

#ifdef VORLUND_BENCH_MALLINFO
#include <malloc.h>
#endif
#ifdef VORLUND_BENCH_GLIB
#include <glib-object.h>
#endif
#ifdef VORLUND_BENCH_QT
#include <QReadWriteLock>
#include <QRecursiveMutex>
#endif

using namespace vorlund;

namespace {

#ifdef VORLUND_BENCH_MALLINFO

constexpr std::size_t kMany = 10000;

std::size_t UsedBytes() {
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

/// Bytes of one of many that `make()` makes, those of its block's head and rounding included. A pool keeps
/// what the first round has brought it.
template <class TMake> void BytesOf(benchmark::State& state, TMake make) {
    static double most = 0;
    for (auto _ : state) {
        std::vector<decltype(make())> many(kMany);
        const std::size_t before = UsedBytes();
        for (auto& one : many) one = make();
        most = std::max(most, static_cast<double>(UsedBytes() - before) / kMany);
        bench::SetFigure(state, "bytes", most);
    }
}

template <class TObject> void BytesOfNew(benchmark::State& state) {
    const bench::CLibrary library;
    BytesOf(state, [] { return std::make_unique<TObject>(); });
}

/// A lock that has been taken, which some make room for only then.
template <class TObject, class TUse> void BytesOfUsed(benchmark::State& state, TUse use) {
    BytesOf(state, [&] {
        auto object = std::make_unique<TObject>();
        use(*object);
        return object;
    });
}

template <class TInterface> void BytesOfObject(benchmark::State& state, CId id) {
    const bench::CLibrary library;
    // Objects are released before the library is closed.
    std::vector<CRefPtr<TInterface>> many(kMany);
    for (auto _ : state) {
        const std::size_t before = UsedBytes();
        for (auto& one : many) one = CreateAs<TInterface>(id);
        bench::SetFigure(state, "bytes", static_cast<double>(UsedBytes() - before) / kMany);
        many.assign(kMany, {});
    }
}

#endif
#ifdef __linux__

double StatusOf(const std::string& what) {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);)
        if (line.rfind(what + ":", 0) == 0) return std::atof(line.c_str() + what.size() + 1);
    return 0;
}

/// The threads of waits that were stopped stay for a moment, and would serve the next ones.
void AwaitSingleThread() {
    for (int i = 0; i < 1000 && StatusOf("Threads") > 1; ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
}

/// What 100 asynchronous waits take of the system, by a line of /proc/self/status.
void AsyncWaits(benchmark::State& state, const char* what, const char* unit) {
    constexpr int kWaits = 100;
    CEvent event;
    for (auto _ : state) {
        AwaitSingleThread();
        const double before = StatusOf(what);
        std::vector<unsigned int> waits;
        for (int i = 0; i < kWaits; ++i)
            waits.push_back(event.WaitAsync([](CEvent::TAsyncCbData&) {}, nullptr));
        bench::SetFigure(state, unit, StatusOf(what) - before);
        for (const unsigned int wait : waits) CEvent::StopAsync(wait);
    }
}

#endif

void SizeOfLibrary(benchmark::State& state) {
    for (auto _ : state)
        bench::SetFigure(state, "KiB",
                         static_cast<double>(std::filesystem::file_size(VORLUND_BENCH_LIBRARY)) / 1024);
}

/// A program that does nothing, from its start to its end.
void RunProgram(benchmark::State& state, const char* program) {
    const std::string command = '"' + std::filesystem::path(program).make_preferred().string() + '"';
    for (auto _ : state)
        if (std::system(command.c_str()) != 0) state.SkipWithError("the program fails");
}

void InitAndClose(benchmark::State& state) {
    CDebug::SetHandler(DEBUG_MESSAGE_OUTPUT, [](TDebugMessageType, const wchar*, void*) {});
    for (auto _ : state) {
        v.Init();
        v.Close();
    }
}

void RegisterAll() {
    const auto add = [](const std::string& name, auto function) {
        return benchmark::RegisterBenchmark(name.c_str(), function);
    };
    const auto addFigure = [&](const std::string& name, auto function) {
        add(name, function)->Iterations(1);
    };
#ifdef VORLUND_BENCH_MALLINFO
    addFigure("memory of an object/vorlund",
              [](auto& state) { BytesOfObject<IObject>(state, classid::CObject); });
    addFigure("memory of a resource/vorlund",
              [](auto& state) { BytesOfObject<IResource>(state, classid::CResource); });
    addFigure("memory of a resource/std::vector", BytesOfNew<std::vector<char>>);
    addFigure("memory of an event/vorlund", BytesOfNew<CEvent>);
    struct TCondition {
        std::mutex mutex;
        std::condition_variable condition;
        bool isSet = false;
    };
    addFigure("memory of an event/condition", BytesOfNew<TCondition>);
    addFigure("memory of a timer/vorlund",
              [](auto& state) { BytesOf(state, [] { return std::make_unique<CTimer>(1.0f); }); });
    addFigure("memory of a lock/vorlund", [](auto& state) {
        BytesOfUsed<CBinaryLock>(state, [](auto& lock) { lock.Lock(), lock.Unlock(); });
    });
    addFigure("memory of a lock/std::recursive_mutex", BytesOfNew<std::recursive_mutex>);
    addFigure("memory of a read-write lock/vorlund", [](auto& state) {
        BytesOfUsed<CReadWriteLock>(state, [](auto& lock) { lock.Lock(LOCK_MODE_READ, 0), lock.Unlock(); });
    });
    addFigure("memory of a read-write lock/std::shared_mutex", BytesOfNew<std::shared_mutex>);
#ifdef VORLUND_BENCH_GLIB
    addFigure("memory of an object/GObject", [](auto& state) {
        struct TUnref {
            void operator()(GObject* object) const { g_object_unref(object); }
        };
        BytesOf(state, [] {
            return std::unique_ptr<GObject, TUnref>(G_OBJECT(g_object_new(G_TYPE_OBJECT, nullptr)));
        });
    });
#endif
#ifdef VORLUND_BENCH_QT
    addFigure("memory of a lock/Qt", [](auto& state) {
        BytesOfUsed<QRecursiveMutex>(state, [](auto& lock) { lock.lock(), lock.unlock(); });
    });
    addFigure("memory of a read-write lock/Qt", [](auto& state) {
        BytesOf(state, [] {
            auto lock = std::make_unique<QReadWriteLock>(QReadWriteLock::Recursive);
            lock->lockForRead(), lock->unlock();
            return lock;
        });
    });
#endif
#endif
#ifdef __linux__
    addFigure("threads of 100 asynchronous waits/vorlund",
              [](auto& state) { AsyncWaits(state, "Threads", "threads"); });
    addFigure("address space of 100 asynchronous waits/vorlund",
              [](auto& state) { AsyncWaits(state, "VmSize", "KiB"); });
    addFigure("memory in use by 100 asynchronous waits/vorlund",
              [](auto& state) { AsyncWaits(state, "VmRSS", "KiB"); });
#endif
    addFigure("size of the library/vorlund", SizeOfLibrary);
    add("start and end a program/vorlund", [](auto& state) {
        RunProgram(state, VORLUND_BENCH_LOADED);
    })->UseRealTime();
    add("start and end a program/limit without the library", [](auto& state) {
        RunProgram(state, VORLUND_BENCH_UNLOADED);
    })->UseRealTime();
    add("Init and Close/vorlund", InitAndClose);
}

} // namespace

int main(int argc, char** argv) {
    RegisterAll();
    return vorlund::bench::RunRows(argc, argv);
}
