/// \file
/// Expects that an operation gives back the memory that it takes. Only in vorlund_internal_tests, as
/// Allocations.h is.
#pragma once

#include "support/Allocations.h"

#include <gtest/gtest.h>

namespace vorlund::test {

/// Expects that of all that `act` allocates nothing is left.
template <class TAct> void ExpectNothingLeft(const TAct& act) {
    const CMemoryWatch watch;
    act();
    EXPECT_EQ(watch.GetLiveBlocks(), 0);
}

/// The same of the second call: what happens for the first time may keep memory, as GoogleTest's first trace
/// does.
template <class TAct> void ExpectNothingLeftAgain(const TAct& act) {
    act();
    ExpectNothingLeft(act);
}

} // namespace vorlund::test
