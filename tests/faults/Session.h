/// \file
/// One scenario with every call of one kind failing, in this process.
#pragma once

#include "faults/FaultPoints.h"
#include "faults/Scenario.h"

namespace vorlund::faults {

/// Where in a session to begin: what was tried before is left out.
struct TPoint {
    std::size_t kind = 0;
    unsigned int n = 1;
    std::size_t span = 0;
};

/// Tries every point from `first` on and writes to `report`, a line each:
///     calls KIND COUNT             before the points of a kind
///     point KIND N SPAN            before each
///     fault KIND N SPAN TEXT       what was wrong at it
///     done KIND RAISED SAME OTHER  after the last: runs that raised, that gave the usual result, and another
/// `only` is a kind, or `kKindCount` for all. With `isQuick` far calls are tried here and there only.
void RunSession(const TScenario& scenario, const TPoint& first, std::size_t only, bool isQuick);

/// Writes a line of the report.
[[gnu::format(printf, 1, 2)]] void Report(const char* format, ...);

} // namespace vorlund::faults
