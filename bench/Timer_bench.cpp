// How exact timers are and what they cost. It needs nothing but the library, so that it runs on every system.
//   bench_timer [SECONDS]
// counts the signals of a 10 ms timer and prints their mean distance and its spread, beside a bare timer of
// the system where there is one; then the share of a processor that the timers' thread takes with 1 and with
// 1,000 running timers.
#include "EventPlaces.h"

#include <vorlund/Timer.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <thread>
#include <vector>

namespace vorlund::bench {
namespace {

using TClock = std::chrono::steady_clock;

double SecondsSince(TClock::time_point start) {
    return std::chrono::duration<double>(TClock::now() - start).count();
}

/// Prints how exact a 10 ms timer is, beside a bare clock of the system where there is one.
void PrintTimer(double seconds) {
    // 0.01f lies a little below 10 ms, and periods are cut to whole milliseconds.
    CTimer timer(std::nextafter(0.01f, 1.0f));
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
    const double length = SecondsSince(start);
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
}

/// Prints the share of a processor that the process takes while nothing but timers runs.
void PrintPool() {
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
        std::printf("%4d timers: %.2f %% of a processor\n", count, used / SecondsSince(start) * 100);
    }
}

} // namespace
} // namespace vorlund::bench

int main(int argc, char** argv) {
    vorlund::bench::PrintTimer(argc > 1 ? std::atof(argv[1]) : 10);
    vorlund::bench::PrintPool();
}
