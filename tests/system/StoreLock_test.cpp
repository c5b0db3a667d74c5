// The lock in a store's data, where the operations of the stores cannot bring a thread to.
#include "vorlund/system/StoreLock.h"

#include "support/Actor.h"

#include <gtest/gtest.h>

#include <thread>

namespace vorlund::test {
namespace {

class StoreLock : public testing::Test {
protected:
    void Enter(TStoreUse use) {
        storeGate.Lock();
        EXPECT_TRUE(lock_.Enter(use));
    }
    void Close() {
        storeGate.Lock();
        lock_.Close();
    }
    /// What the closing thread does last; true when nobody else is inside.
    bool LeaveClosed() { return lock_.Leave(TStoreUse::Pinned, false); }

    CStoreLock lock_;
};

TEST_F(StoreLock, ThreadThatDiedInsideIsNotWaitedForAndNotInsideAnyMore) {
    std::thread([this] {
        Enter(TStoreUse::Exclusive);
        Enter(TStoreUse::Exclusive);
    }).join();
    Close();
    EXPECT_TRUE(lock_.WaitForHolder());
    EXPECT_TRUE(LeaveClosed());
}

TEST_F(StoreLock, ThreadsThatShareAreWaitedFor) {
    CActor first, second, closer;
    for (CActor* const reader : {&first, &second}) reader->Do([this] { Enter(TStoreUse::Shared); });
    Close();
    closer.Start([this] { EXPECT_FALSE(lock_.WaitForHolder()); });
    EXPECT_TRUE(closer.StaysBusy());
    for (CActor* const reader : {&first, &second})
        reader->Do([this] { EXPECT_FALSE(lock_.Leave(TStoreUse::Shared, false)); });
    EXPECT_TRUE(closer.Finishes());
    EXPECT_TRUE(LeaveClosed());
}

} // namespace
} // namespace vorlund::test
