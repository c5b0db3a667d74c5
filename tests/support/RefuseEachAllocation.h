/// \file
/// What an operation leaves behind when memory runs out, at every place where it can. Only in
/// vorlund_internal_tests, as Allocations.h is.
#pragma once

#include "support/Allocations.h"

#include <vorlund/Exception.h>

#include <gtest/gtest.h>

#include <new>
#include <type_traits>

namespace vorlund::test {

/// What an operation does about a refused allocation.
enum class TRefusal {
    Raised,   ///< it raises `std::bad_alloc` or `COutOfMemoryException`
    Survived, ///< it returns all the same
    Foreign   ///< it raises something else
};

/// What a refused operation may keep.
enum class TKept {
    Nothing, ///< as many blocks as before
    Room,    ///< more: tables that have grown for what did not come, and what was made before it
    Other    ///< something else, of which `check` looks at the memory itself
};

/// Calls `act` with its first allocation refused, then with its second, and so on until none is refused;
/// calls `check` after each refusal and expects that no memory has leaked. Gives the number of refusals.
///
/// Every refusal must be raised. Where `act` may also survive one, `check` takes a `TRefusal` and looks at it
/// itself. What `act` changes, `check` must put back if the next run is to begin like the first.
template <class TAct, class TCheck>
std::size_t RefuseEachAllocation(const TAct& act, const TCheck& check, TKept kept = TKept::Nothing) {
    constexpr std::size_t kTooMany = 10000;
    for (std::size_t successes = 0;; ++successes) {
        TRefusal refusal = TRefusal::Survived;
        bool isRefused = false;
        std::ptrdiff_t leaked = 0;
        {
            const CMemoryWatch watch;
            const CAllocationFailure failure(successes);
            try {
                act();
            } catch (const std::bad_alloc&) {
                refusal = TRefusal::Raised;
            } catch (const COutOfMemoryException&) {
                refusal = TRefusal::Raised;
            } catch (...) {
                refusal = TRefusal::Foreign;
            }
            isRefused = failure.HasFailed();
            leaked = watch.GetLiveBlocks();
        }
        if (isRefused) {
            if constexpr (std::is_invocable_v<TCheck, TRefusal>) {
                check(refusal);
            } else {
                EXPECT_EQ(refusal, TRefusal::Raised);
                check();
            }
            if (refusal == TRefusal::Raised && kept != TKept::Other) {
                EXPECT_GE(leaked, 0) << "blocks of before were freed";
                if (kept == TKept::Nothing) {
                    EXPECT_LE(leaked, 0) << "blocks leaked";
                }
            }
        } else {
            EXPECT_EQ(refusal, TRefusal::Survived) << "raised although nothing was refused";
        }
        // The note comes afterwards: making it takes memory.
        if (testing::Test::HasFailure() || successes > kTooMany) {
            ADD_FAILURE() << "with allocation " << successes << " refused";
            return successes;
        }
        if (!isRefused) return successes;
    }
}

} // namespace vorlund::test
