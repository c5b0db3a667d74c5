// Events and asynchronous waits beside what an application would use instead. One benchmark per use and peer.
// A hand-off is half of a round trip between two threads that set each other's events; on two processors it
// is bimodal on a virtual machine, so the counters tell its distribution.
#include "BenchSupport.h"
#include "EventPeers.h"
#include "EventPlaces.h"

#include <vorlund/WaitSet.h>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdarg>
#include <string>
#include <thread>
#include <vector>

namespace vorlund::bench {
namespace {

using TClock = std::chrono::steady_clock;

double NanosecondsSince(TClock::time_point start) {
    return std::chrono::duration<double, std::nano>(TClock::now() - start).count();
}

template <class TEvents> void SetWaitReset(benchmark::State& state) {
    TEvents events;
    for (auto _ : state) {
        events.Set(0);
        events.Wait();
        events.Reset(0);
    }
}

/// What a call with a list costs that does nothing but read it: no wait for the list can take less.
[[gnu::noinline]] std::uintptr_t ReadArguments(int count, ...) {
    std::va_list arguments;
    va_start(arguments, count);
    std::uintptr_t sum = 0;
    for (int index = 0; index < count; ++index)
        sum += reinterpret_cast<std::uintptr_t>(va_arg(arguments, CEvent*));
    va_end(arguments);
    return sum;
}

template <int kCount> void ListAlone(benchmark::State& state) {
    std::array<CEvent, kCount> events;
    const auto call = [&]<std::size_t... kIndex>(std::index_sequence<kIndex...>) {
        return ReadArguments(kCount, &events[kIndex]...);
    };
    for (auto _ : state) benchmark::DoNotOptimize(call(std::make_index_sequence<kCount>()));
}

/// The last of the list is set.
template <class TEvents, int kCount> void OneIsSet(benchmark::State& state) {
    TEvents events;
    events.Set(kCount - 1);
    for (auto _ : state) benchmark::DoNotOptimize(events.WaitOne());
}

template <class TEvents, int kCount> void AllAreSet(benchmark::State& state) {
    TEvents events;
    for (int index = 0; index < kCount; ++index) events.Set(index);
    for (auto _ : state) events.WaitAll();
}

/// How a thread of a hand-off waits.
enum class THow { Single, One, All };

template <THow kHow, class TEvents> void WaitAs(TEvents& events) {
    if constexpr (kHow == THow::Single)
        events.Wait();
    else if constexpr (kHow == THow::One)
        events.WaitOne();
    else
        events.WaitAll();
}

/// Two threads, each of which waits for its own events, and then sets the last of the other's. For a wait for
/// all, the others are set beforehand.
template <class TEvents, int kCount, THow kHow, bool kOnOneProcessor> void HandOff(benchmark::State& state) {
    TEvents left;
    TEvents right;
    constexpr int kLast = kCount - 1;
    if (kHow == THow::All) {
        for (int index = 0; index < kLast; ++index) {
            left.Set(index);
            right.Set(index);
        }
    }
    std::atomic<bool> isEnding{false};
    std::thread other([&] {
        const CPlace place(kOnOneProcessor ? 0 : 1);
        for (;;) {
            WaitAs<kHow>(left);
            left.Reset(kLast);
            if (isEnding) return;
            right.Set(kLast);
        }
    });
    std::vector<double> times;
    times.reserve(1 << 20);
    {
        const CPlace place(0);
        for (auto _ : state) {
            const auto start = TClock::now();
            left.Set(kLast);
            WaitAs<kHow>(right);
            right.Reset(kLast);
            const double time = NanosecondsSince(start) / 2;
            state.SetIterationTime(time * 1e-9);
            if (times.size() < times.capacity()) times.push_back(time);
        }
        isEnding = true;
        left.Set(kLast);
        other.join();
    }
    std::sort(times.begin(), times.end());
    const auto at = [&](double part) {
        return times[static_cast<std::size_t>(part * double(times.size() - 1))];
    };
    state.counters["p10"] = at(0.1);
    state.counters["p50"] = at(0.5);
    state.counters["p90"] = at(0.9);
    state.counters["p99"] = at(0.99);
}

/// The same between this thread, which waits for one event, and a set of `kCount` of them, of which the last
/// is set; its callback sets this thread's.
template <int kCount> void SetHandOff(benchmark::State& state) {
    std::array<CEvent, kCount> events;
    CEvent reply;
    CWaitSet set;
    const auto answer = [](CWaitSet::TCbData& data) {
        data.event->SetState(false);
        static_cast<CEvent*>(data.userData)->SetState(true);
    };
    const CPlace place(0); // the set's thread starts there too
    for (CEvent& event : events) set.Add(event, answer, &reply);
    for (auto _ : state) {
        const auto start = TClock::now();
        events[kCount - 1].SetState(true);
        reply.Wait();
        reply.SetState(false);
        state.SetIterationTime(NanosecondsSince(start) / 2 * 1e-9);
    }
}

/// Adding an event and taking it out again.
void SetAddAndRemove(benchmark::State& state) {
    CEvent event;
    CWaitSet set;
    for (auto _ : state)
        set.Remove(set.Add(
            event, [](CWaitSet::TCbData&) {}, nullptr));
}

void AsyncStartAndStop(benchmark::State& state) {
    CEvent event;
    for (auto _ : state) CEvent::StopAsync(event.WaitAsync([](CEvent::TAsyncCbData&) {}, nullptr));
}

/// The same with one call in between, for which this thread waits.
void AsyncStartCallAndStop(benchmark::State& state) {
    CEvent event;
    CEvent reply;
    event.SetState(true);
    for (auto _ : state) {
        event.WaitAsync(
            [](CEvent::TAsyncCbData& data) {
                CEvent::StopAsync(data.handle);
                static_cast<CEvent*>(data.userData)->SetState(true);
            },
            &reply);
        reply.Wait();
        reply.SetState(false);
    }
}

void ThreadStartAndJoin(benchmark::State& state) {
    for (auto _ : state) std::thread([] {}).join();
}

template <class TEvents, int kCount> void RegisterLists(const std::string& suffix) {
    const std::string name = "/" + suffix + "/" + std::to_string(kCount);
    benchmark::RegisterBenchmark(("one_is_set" + name).c_str(), OneIsSet<TEvents, kCount>);
    benchmark::RegisterBenchmark(("all_are_set" + name).c_str(), AllAreSet<TEvents, kCount>);
    benchmark::RegisterBenchmark(("one_hand_off" + name).c_str(), HandOff<TEvents, kCount, THow::One, true>)
        ->UseManualTime();
    benchmark::RegisterBenchmark(("all_hand_off" + name).c_str(), HandOff<TEvents, kCount, THow::All, true>)
        ->UseManualTime();
}

template <template <int> class TEvents> void Register() {
    const std::string suffix = TEvents<1>::kName;
    benchmark::RegisterBenchmark(("set_wait_reset/" + suffix).c_str(), SetWaitReset<TEvents<1>>);
    benchmark::RegisterBenchmark(("hand_off_one_processor/" + suffix).c_str(),
                                 HandOff<TEvents<1>, 1, THow::Single, true>)
        ->UseManualTime();
    benchmark::RegisterBenchmark(("hand_off_two_processors/" + suffix).c_str(),
                                 HandOff<TEvents<1>, 1, THow::Single, false>)
        ->UseManualTime();
    RegisterLists<TEvents<2>, 2>(suffix);
    RegisterLists<TEvents<8>, 8>(suffix);
    RegisterLists<TEvents<64>, 64>(suffix);
}

} // namespace
} // namespace vorlund::bench

int main(int argc, char** argv) {
    using namespace vorlund::bench;
    Register<TVorlundEvents>();
    Register<TConditionEvents>();
#if defined(VORLUND_BENCH_FUTEX)
    // Without a futex, the waits of libstdc++'s atomics lose a wake-up now and then, and hang.
    Register<TAtomicEvents>();
    Register<TFutexEvents>();
#endif
#if defined(VORLUND_BENCH_GLIB)
    Register<TGLibEvents>();
#else
    benchmark::AddCustomContext("glib", "not there when this was built, left out");
#endif
    benchmark::RegisterBenchmark("one_is_set/limit reading the arguments/64", ListAlone<64>);
    benchmark::RegisterBenchmark("hand off by a set/vorlund/1", SetHandOff<1>)->UseManualTime();
    benchmark::RegisterBenchmark("hand off by a set/vorlund/64", SetHandOff<64>)->UseManualTime();
    benchmark::RegisterBenchmark("hand off by a set/vorlund/5000", SetHandOff<5000>)->UseManualTime();
    benchmark::RegisterBenchmark("add to a set and remove/vorlund", SetAddAndRemove);
    benchmark::RegisterBenchmark("start and stop/vorlund", AsyncStartAndStop)->UseRealTime();
    benchmark::RegisterBenchmark("start and stop/vorlund with a call", AsyncStartCallAndStop)->UseRealTime();
    benchmark::RegisterBenchmark("start and stop/std::thread", ThreadStartAndJoin)->UseRealTime();
    return RunRows(argc, argv);
}
