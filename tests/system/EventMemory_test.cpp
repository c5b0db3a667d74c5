#include <vorlund/Event.h>

#include "support/Allocations.h"

#include <gtest/gtest.h>

namespace vorlund::test {
namespace {

TEST(EventMemory, AssignmentGivesBackWhatWasThere) {
    const CMemoryWatch watch;
    {
        const CEvent source;
        CEvent target;
        target = source;
    }
    EXPECT_EQ(watch.GetLiveBlocks(), 0);
}

} // namespace
} // namespace vorlund::test
