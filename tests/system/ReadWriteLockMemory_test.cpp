// A thread that waits for memory holds up nobody else.
#include <vorlund/ReadWriteLock.h>

#include "support/Actor.h"
#include "support/Allocations.h"
#include "support/Latch.h"

#include <gtest/gtest.h>

#include <atomic>
#include <list>

namespace vorlund::test {
namespace {

TEST(ReadWriteLockMemory, ThreadThatWaitsForMemoryDoesNotHoldTheLock) {
    CReadWriteLock lock;
    CLatch mayGo(1);
    std::atomic<bool> isWaiting{false};
    std::list<CActor> readers;
    // The lock has room of its own for a few threads; one of the first further ones needs more.
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

} // namespace
} // namespace vorlund::test
