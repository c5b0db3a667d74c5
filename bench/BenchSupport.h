// What every benchmark does first.
#pragma once

#include <vorlund/Debug.h>
#include <vorlund/Vorlund.h>

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <string>
#include <thread>

namespace vorlund::bench {

/// A pass that only proves that every row runs: work is small and waits are short.
inline bool IsShort() {
    return std::getenv("VORLUND_BENCH_SHORT") != nullptr;
}

/// A row whose figure is no time: the table shows this number with its unit.
inline void SetFigure(benchmark::State& state, const char* unit, double figure) {
    state.counters[std::string("figure ") + unit] = figure;
}

/// An initialised library whose debugger output goes nowhere: what the system log costs is measured once, on
/// its own.
class CLibrary {
public:
    CLibrary() {
        CDebug::SetHandler(DEBUG_MESSAGE_OUTPUT, [](TDebugMessageType, const wchar*, void*) {});
        v.Init();
    }
    CLibrary(const CLibrary&) = delete;
    CLibrary& operator=(const CLibrary&) = delete;
    ~CLibrary() { v.Close(); }
};

/// What `main` does where rows are registered by code.
inline int RunRows(int argc, char** argv) {
    // Some run-time libraries leave out atomic operations until a process has had a second thread.
    std::thread([] {}).join();
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}

} // namespace vorlund::bench
