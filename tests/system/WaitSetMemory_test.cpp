// Sets for which the system has no thread.
#include <vorlund/WaitSet.h>

#include "support/Allocations.h"

#include <gtest/gtest.h>

#include <atomic>

namespace vorlund::test {
namespace {

void CountCall(CWaitSet::TCbData& data) {
    data.event->SetState(false);
    ++*static_cast<std::atomic<int>*>(data.userData);
}

TEST(WaitSetMemory, WithoutAThreadNobodyIsCalledAndNothingIsLeft) {
    // A watch takes memory that is kept for the next one, and so does the first set of a process.
    bool wasWithoutThread = false;
    for (int round = 0; round < 2; ++round) {
        std::atomic<int> calls = 0;
        const CMemoryWatch watch;
        {
            CEvent event;
            CWaitSet set(1);
            unsigned int number = kNoWaitNumber;
            {
                // The first memory that an entry takes of this kind is its thread's.
                const CAllocationFailure failure(0);
                number = set.Add(event, &CountCall, &calls);
                wasWithoutThread = failure.HasFailed();
            }
            EXPECT_EQ(number, 0u);
            event.SetState(true);
            set.Stop();
            EXPECT_TRUE(event.GetState());
        }
        EXPECT_EQ(calls, 0);
        if (round > 0) {
            EXPECT_EQ(watch.GetLiveBlocks(), 0);
        }
    }
    EXPECT_TRUE(wasWithoutThread);
}

} // namespace
} // namespace vorlund::test
