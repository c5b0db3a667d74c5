// How exact timers are, idle and under load, and what they lose; one run of 10 s a row, which has a thousand
// signals. Figures are no times but parts of them; the
// bare timer of the system, where there is one, and a thread that sleeps until each deadline are beside them.
#include "BenchSupport.h"
#include "EventPlaces.h"

#include <vorlund/PeriodicClock.h>
#include <vorlund/Timer.h>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <string>
#include <thread>
#include <vector>

namespace vorlund::bench {
namespace {

using TClock = std::chrono::steady_clock;
using TMilliseconds = std::chrono::duration<double, std::milli>;

constexpr double kPeriod = 10;

/// Threads that do nothing but take processors.
class CLoad {
public:
    explicit CLoad(unsigned int threads) {
        for (unsigned int i = 0; i < threads; ++i)
            threads_.emplace_back([this] {
                while (!isOver_.load(std::memory_order_relaxed)) benchmark::ClobberMemory();
            });
    }
    CLoad(const CLoad&) = delete;
    CLoad& operator=(const CLoad&) = delete;
    ~CLoad() {
        isOver_ = true;
        for (std::thread& thread : threads_) thread.join();
    }

private:
    std::atomic<bool> isOver_{false};
    std::vector<std::thread> threads_;
};

/// When each signal came, from the first on.
struct TSignals {
    std::vector<double> distances;
    double length = 0;
};

/// Calls `wait`, which returns how many signals came, for as long as a row lasts.
template <class TWait> TSignals Count(TWait wait) {
    const double length = IsShort() ? 100 : 10000;
    TSignals signals;
    wait();
    const auto start = TClock::now();
    for (auto last = start; signals.length < length;) {
        const std::uint64_t count = wait();
        const auto now = TClock::now();
        signals.distances.push_back(TMilliseconds(now - last).count());
        // Those that came together.
        signals.distances.insert(signals.distances.end(), static_cast<std::size_t>(count - 1), 0);
        signals.length = TMilliseconds(now - start).count();
        last = now;
    }
    return signals;
}

TSignals CountTimer() {
    // 0.01f lies a little below 10 ms, and periods are cut to whole milliseconds.
    CTimer timer(std::nextafter(0.01f, 1.0f));
    timer.Start();
    return Count([&] {
        timer.Wait();
        timer.SetState(false);
        return 1U;
    });
}

TSignals CountClock() {
    CPeriodicClock clock(kPeriod / 1000);
    return Count([&] { return clock.Wait(); });
}

TSignals CountSleeps() {
    auto next = TClock::now();
    return Count([&] {
        next += std::chrono::milliseconds(10);
        std::this_thread::sleep_until(next);
        return 1U;
    });
}

/// Which figure of a run a row tells.
enum class TFigure { Late, Longest, Lost };

void Show(benchmark::State& state, TFigure figure, const TSignals& signals) {
    const double count = static_cast<double>(signals.distances.size());
    switch (figure) {
    case TFigure::Late:
        SetFigure(state, "% late", (signals.length / (count * kPeriod) - 1) * 100);
        break;
    case TFigure::Longest:
        SetFigure(state, "ms at most between signals",
                  *std::max_element(signals.distances.begin(), signals.distances.end()));
        break;
    case TFigure::Lost:
        // Whole milliseconds that the timer did not see.
        SetFigure(state, "ms lost", std::max(0.0, signals.length - count * kPeriod));
        break;
    }
}

void RegisterFor(const std::string& where, unsigned int load) {
    const auto add = [&](const std::string& what, const std::string& who, TFigure figure, auto count) {
        benchmark::RegisterBenchmark((where + ", " + what + "/" + who + "/processors:all").c_str(),
                                     [=](benchmark::State& state) {
                                         const CLoad work(load);
                                         for (auto _ : state) Show(state, figure, count());
                                     })
            ->Iterations(1)
            ->Repetitions(1)
            ->UseRealTime();
    };
    for (const auto& [what, figure] :
         {std::pair{"late", TFigure::Late}, {"longest", TFigure::Longest}, {"lost", TFigure::Lost}}) {
        add(what, "vorlund", figure, CountTimer);
        add(what, "vorlund CPeriodicClock", figure, CountClock);
        add(what, "sleep_until", figure, CountSleeps);
    }
}

/// A thousand-times-a-second timer that sets an event, counted by its own thread.
void BareTimer(benchmark::State& state) {
    for (auto _ : state) {
        const CBareTicks bare;
        const auto start = TClock::now();
        std::this_thread::sleep_for(std::chrono::milliseconds(IsShort() ? 100 : 10000));
        const double length = TMilliseconds(TClock::now() - start).count();
        SetFigure(state, "% late", (length / static_cast<double>(std::max(1L, bare.Count())) - 1) * 100);
    }
}

} // namespace
} // namespace vorlund::bench

int main(int argc, char** argv) {
    using namespace vorlund::bench;
    // One processor is left to the timer.
    RegisterFor("10 ms for 10 s, one processor idle", std::max(1u, std::thread::hardware_concurrency()) - 1);
    RegisterFor("10 ms for 10 s, twice as many busy threads as processors",
                2 * std::max(1u, std::thread::hardware_concurrency()));
    if (CBareTicks::kIsThere)
        benchmark::RegisterBenchmark(
            "10 ms for 10 s, one processor idle, late/limit the system's timer/processors:all", BareTimer)
            ->Iterations(1)
            ->Repetitions(1)
            ->UseRealTime();
    return vorlund::bench::RunRows(argc, argv);
}
