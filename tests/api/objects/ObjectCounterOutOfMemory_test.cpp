// The object counter when memory runs out.
#include <vorlund/ObjectCounter.h>

#include "support/Failures.h"
#include "support/KnownFailures.h"
#include "support/RefuseEachAllocation.h"

#include <gtest/gtest.h>

namespace vorlund::test {
namespace {

TEST(ObjectCounterOutOfMemory, InitLeavesTheCounterAsItWas) {
    CObjectCounter counter;
    RefuseEachAllocation([&] { counter.Init(); },
                         [&] {
                             ExpectRaises<CBugException>(counterfailures::kCreateClosed,
                                                         [&] { counter.OnCreateObject({}); });
                         });
    EXPECT_EQ(counter.OnCreateObject({}), 1);
    EXPECT_EQ(
        RefuseEachAllocation([&] { counter.Init(); }, [&] { EXPECT_EQ(counter.OnCreateObject({}), 2); }), 1u);
    EXPECT_EQ(counter.OnCreateObject({}), 1) << "it starts over";
    counter.Close();
}

} // namespace
} // namespace vorlund::test
