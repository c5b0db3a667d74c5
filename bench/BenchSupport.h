// What every benchmark does first.
#pragma once

#include <vorlund/Debug.h>
#include <vorlund/Vorlund.h>

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <string>

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

} // namespace vorlund::bench
