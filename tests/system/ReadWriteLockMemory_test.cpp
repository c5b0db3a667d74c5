// The memory that a lock takes, and that a thread which waits for memory holds up nobody else.
#include "vorlund/system/ReadWriteLockData.h"

#include "support/Actor.h"
#include "support/Allocations.h"
#include "support/Latch.h"
#include "system/LockViews.h"

#include <gtest/gtest.h>

#include <atomic>
#include <list>
#include <vector>

namespace vorlund::test {
namespace {

TEST(ReadWriteLockMemory, ThreadsThatNeverMeetTakeOnlyTheLockItself) {
    EXPECT_LE(sizeof(CReadWriteLock) + sizeof(TReadWriteLockData), 64u);
    CReadWriteLock lock;
    std::list<CActor> actors(20);
    for (CActor& actor : actors) {
        actor.Do([&] {
            const CAllocationCount allocations;
            for (const TLockMode mode : {LOCK_MODE_READ, LOCK_MODE_WRITE}) {
                lock.Lock(mode, 0);
                lock.Lock(mode, 0);
                lock.Lock(LOCK_MODE_WRITE, 7);
                EXPECT_EQ(lock.GetParam(), 7u);
                for (int level = 0; level < 3; ++level) lock.Unlock();
            }
            EXPECT_EQ(allocations.Get(), 0u);
        });
    }
}

TEST(ReadWriteLockMemory, AThreadThatFindsTheLockFreeAgainNeedsNoneAfterAMeeting) {
    CReadWriteLock lock;
    CActor other;
    lock.Lock(LOCK_MODE_READ, 0);
    other.Do([&] { lock.Lock(LOCK_MODE_READ, 0); });
    // The one that came first goes first, and the other stays: each has a place of its own.
    lock.Unlock();
    EXPECT_EQ(Look(lock), "-");
    other.Do([&] { EXPECT_EQ(Look(lock), "R0"); });
    lock.Lock(LOCK_MODE_READ, 0);
    other.Do([&] {
        lock.Lock(LOCK_MODE_READ, 3);
        EXPECT_EQ(Look(lock), "R3");
        lock.Unlock();
        lock.Unlock();
    });
    EXPECT_EQ(Look(lock), "R0");
    lock.Unlock();
    const CAllocationCount allocations;
    lock.Lock(LOCK_MODE_WRITE, 0);
    lock.Unlock();
    EXPECT_EQ(allocations.Get(), 0u);
    ExpectFree(lock);
}

TEST(ReadWriteLockMemory, ThreadThatWaitsForMemoryDoesNotHoldTheLock) {
    CReadWriteLock lock;
    CLatch mayGo(1);
    std::atomic<bool> isWaiting{false};
    std::list<CActor> readers;
    // The lock has room of its own for one thread; one of the first further ones needs more.
    constexpr int kMaxReaders = 64;
    while (!isWaiting) {
        ASSERT_LT(readers.size(), kMaxReaders);
        CLatch isOver(1);
        readers.emplace_back().Start([&] {
            {
                const CAllocationStep slow([&] {
                    isWaiting = true;
                    isOver.CountDown();
                    mayGo.Wait();
                });
                lock.Lock(LOCK_MODE_READ, 0);
            }
            if (!isWaiting) isOver.CountDown();
        });
        isOver.Wait();
    }
    CActor& late = readers.back();
    for (CActor& reader : readers)
        if (&reader != &late) reader.Do([&] { lock.Unlock(); });

    CActor writer;
    writer.Start([&] {
        lock.Lock(LOCK_MODE_WRITE, 0);
        lock.Unlock();
    });
    EXPECT_TRUE(writer.Finishes());

    EXPECT_TRUE(late.StaysBusy());
    mayGo.CountDown();
    EXPECT_TRUE(late.Finishes());
    late.Do([&] {
        EXPECT_EQ(lock.GetLockMode(), LOCK_MODE_READ);
        lock.Unlock();
    });
}

TEST(ReadWriteLockMemory, RefusedMemoryIsAskedForAgain) {
    CReadWriteLock lock;
    std::list<CActor> readers;
    int refusals = 0;
    // More threads than the lock has room of its own for.
    for (int i = 0; i < 64; ++i) {
        readers.emplace_back().Do([&] {
            const CAllocationFailure failure(0);
            lock.Lock(LOCK_MODE_READ, 0);
            refusals += failure.HasFailed();
        });
    }
    EXPECT_GT(refusals, 0);
    for (CActor& reader : readers) {
        reader.Do([&] {
            EXPECT_EQ(lock.GetLockMode(), LOCK_MODE_READ);
            lock.Unlock();
        });
    }
    // A thread that takes turns with the modes needs more and more of it.
    refusals = 0;
    std::vector<TLockMode> modes;
    for (int i = 0; i < 64; ++i) {
        modes.push_back(i % 2 ? LOCK_MODE_WRITE : LOCK_MODE_READ);
        const CAllocationFailure failure(0);
        lock.Lock(modes.back(), 0);
        refusals += failure.HasFailed();
    }
    EXPECT_GT(refusals, 0);
    for (; !modes.empty(); modes.pop_back()) {
        EXPECT_EQ(lock.GetLockMode(), modes.back());
        lock.Unlock();
    }
}

} // namespace
} // namespace vorlund::test
