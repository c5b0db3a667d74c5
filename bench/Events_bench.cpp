// Events, asynchronous waits and timers beside what an application would take instead. One benchmark per use
// and peer; run them interleaved and compare medians:
//   bench_events --benchmark_repetitions=5 --benchmark_enable_random_interleaving=true
//                --benchmark_report_aggregates_only=true
// A hand-off is half of a round trip between two threads that set each other's events; on two processors it
// is bimodal on a virtual machine, so the counters tell its distribution.
//   bench_events --timer [SECONDS]
// counts the signals of a 10 ms timer, and prints their mean distance and its spread.
//   bench_events --pool
// prints what share of a processor the timers' thread takes with 1 and with 1,000 running timers.
#include "EventPeers.h"
#include "EventPlaces.h"

#include <vorlund/Timer.h>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>
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

void AsyncStartAndStop(benchmark::State& state) {
    CEvent event;
    for (auto _ : state) CEvent::StopAsync(event.WaitAsync([](CEvent::TAsyncCbData&) {}, nullptr));
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

/// Prints how a 10 ms timer goes, beside a bare clock of the system where there is one.
int PrintTimer(double seconds) {
    CTimer timer(0.01f);
    const CBareTicks bare;
    std::vector<double> distances;
    timer.Start();
    timer.Wait();
    timer.SetState(false);
    const auto start = TClock::now();
    const long ticksBefore = bare.Count();
    for (auto last = start; std::chrono::duration<double>(last - start).count() < seconds;) {
        timer.Wait();
        timer.SetState(false);
        const auto now = TClock::now();
        distances.push_back(std::chrono::duration<double, std::milli>(now - last).count());
        last = now;
    }
    const double length = NanosecondsSince(start) * 1e-9;
    const long ticks = bare.Count() - ticksBefore;
    timer.Stop();
    double sum = 0;
    double squares = 0;
    for (const double distance : distances) {
        sum += distance;
        squares += distance * distance;
    }
    const double count = static_cast<double>(distances.size());
    const double mean = sum / count;
    const double expected = ticks > 0 ? static_cast<double>(ticks) / 10 : length * 100;
    std::printf(
        "10 ms timer over %.3f s: %.0f signals, %.1f expected (%+.2f %%), mean %.4f ms, spread %.4f ms, "
        "shortest %.3f ms, longest %.3f ms\n",
        length, count, expected, (count / expected - 1) * 100, mean,
        std::sqrt(std::max(0.0, squares / count - mean * mean)),
        *std::min_element(distances.begin(), distances.end()),
        *std::max_element(distances.begin(), distances.end()));
    return 0;
}

/// Prints the share of a processor that the process takes while nothing but timers runs.
int PrintPool() {
    for (const int count : {1, 1000}) {
        std::vector<std::unique_ptr<CTimer>> timers;
        for (int timer = 0; timer < count; ++timer) {
            timers.push_back(std::make_unique<CTimer>(0.01f));
            timers.back()->Start();
        }
        const auto start = TClock::now();
        const double processorStart = ProcessorSeconds();
        std::this_thread::sleep_for(std::chrono::seconds(3));
        const double used = ProcessorSeconds() - processorStart;
        std::printf("%4d timers: %.2f %% of a processor\n", count, used / NanosecondsSince(start) * 1e11);
    }
    return 0;
}

} // namespace
} // namespace vorlund::bench

int main(int argc, char** argv) {
    using namespace vorlund::bench;
    if (argc >= 2 && std::string_view(argv[1]) == "--timer")
        return PrintTimer(argc > 2 ? std::atof(argv[2]) : 10);
    if (argc == 2 && std::string_view(argv[1]) == "--pool") return PrintPool();
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    // Some run-time libraries leave out atomic operations until a process has had a second thread.
    std::thread([] {}).join();
    Register<TVorlundEvents>();
    Register<TConditionEvents>();
    Register<TAtomicEvents>();
#if defined(VORLUND_BENCH_FUTEX)
    Register<TFutexEvents>();
#endif
#if defined(VORLUND_BENCH_GLIB)
    Register<TGLibEvents>();
#else
    benchmark::AddCustomContext("glib", "not there when this was built, left out");
#endif
    benchmark::RegisterBenchmark("start_and_stop/async_wait", AsyncStartAndStop)->UseRealTime();
    benchmark::RegisterBenchmark("start_and_stop/std_thread", ThreadStartAndJoin)->UseRealTime();
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
