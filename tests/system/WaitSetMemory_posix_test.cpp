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
    // The first set of a process may keep some memory.
    bool wasWithoutThread = false;
    for (int round = 0; round < 2; ++round) {
        std::atomic<int> calls = 0;
        const CMemoryWatch watch;
        {
            CEvent event;
            CWaitSet set(1);
            unsigned int number = kNoWaitNumber;
            {
                // The first memory of C++ that the first entry takes is that of the set's thread.
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
