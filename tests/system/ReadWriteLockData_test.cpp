// The queue of the read/write lock, which users cannot see: who waits in it and who leaves it when.
#include "vorlund/system/ReadWriteLockData.h"

#include "support/Actor.h"

#include <gtest/gtest.h>

#include <thread>

namespace vorlund::test {
namespace {

class ReadWriteLockData : public testing::Test {
protected:
    void Start(CActor& actor, TLockMode mode) {
        actor.Start([this, mode] { data_.Lock(mode, 0); });
    }
    void Lock(CActor& actor, TLockMode mode) {
        Start(actor, mode);
        ASSERT_TRUE(actor.Finishes());
    }
    void Unlock(CActor& actor) {
        actor.Do([this] { data_.Unlock(); });
    }
    /// Starts a request that cannot be granted and returns when it is in the queue.
    void Queue(CActor& actor, TLockMode mode) {
        const int before = data_.CountWaiting();
        Start(actor, mode);
        while (data_.CountWaiting() == before) std::this_thread::yield();
        ASSERT_EQ(data_.CountWaiting(), before + 1);
    }
    TLockMode ModeOf(CActor& actor) {
        TLockMode mode = LOCK_MODE_READ;
        actor.Do([&] { mode = data_.GetLockMode(); });
        return mode;
    }

    TReadWriteLockData data_;
    CActor a_;
    CActor b_;
    CActor c_;
    CActor d_;
};

TEST_F(ReadWriteLockData, NobodyWaitsWhereAllGetIn) {
    Lock(a_, LOCK_MODE_READ);
    Lock(b_, LOCK_MODE_READ);
    EXPECT_EQ(data_.CountWaiting(), 0);
    Unlock(a_);
    Lock(b_, LOCK_MODE_WRITE);
    Lock(b_, LOCK_MODE_WRITE);
    EXPECT_EQ(data_.CountWaiting(), 0);
    Unlock(b_);
    Unlock(b_);
    Unlock(b_);
    Lock(a_, LOCK_MODE_WRITE);
    Lock(a_, LOCK_MODE_READ);
    EXPECT_EQ(data_.CountWaiting(), 0);
    Unlock(a_);
    Unlock(a_);
}

TEST_F(ReadWriteLockData, AWriterQueuesBehindReadersAndReadersBehindIt) {
    Lock(a_, LOCK_MODE_READ);
    Queue(b_, LOCK_MODE_WRITE);
    Queue(c_, LOCK_MODE_READ);
    Lock(a_, LOCK_MODE_READ); // nested
    EXPECT_EQ(data_.CountWaiting(), 2);
    Unlock(a_);
    EXPECT_EQ(data_.CountWaiting(), 2);
    Unlock(a_);
    EXPECT_TRUE(b_.Finishes());
    EXPECT_EQ(data_.CountWaiting(), 1);
    Unlock(b_);
    EXPECT_TRUE(c_.Finishes());
    EXPECT_EQ(data_.CountWaiting(), 0);
    Unlock(c_);
}

TEST_F(ReadWriteLockData, WritersLeaveTheQueueOneAtATime) {
    Lock(a_, LOCK_MODE_READ);
    Queue(b_, LOCK_MODE_WRITE);
    Queue(c_, LOCK_MODE_WRITE);
    Queue(d_, LOCK_MODE_WRITE);
    Unlock(a_);
    for (CActor* const writer : {&b_, &c_, &d_}) {
        EXPECT_TRUE(writer->Finishes());
        Unlock(*writer);
    }
    EXPECT_EQ(data_.CountWaiting(), 0);
}

TEST_F(ReadWriteLockData, TheSecondUpgradeLetsTheFirstIn) {
    Lock(a_, LOCK_MODE_READ);
    Lock(b_, LOCK_MODE_READ);
    Queue(a_, LOCK_MODE_WRITE);
    Lock(b_, LOCK_MODE_WRITE);
    EXPECT_EQ(data_.CountWaiting(), 0);
    EXPECT_TRUE(a_.Finishes());
    EXPECT_EQ(ModeOf(a_), LOCK_MODE_WRITE);
    EXPECT_EQ(ModeOf(b_), LOCK_MODE_WRITE);
    Unlock(a_);
    Queue(c_, LOCK_MODE_READ);
    Unlock(b_);
    EXPECT_TRUE(c_.Finishes());
    Queue(d_, LOCK_MODE_WRITE);
    Unlock(a_);
    Unlock(b_);
    EXPECT_EQ(data_.CountWaiting(), 1);
    Unlock(c_);
    EXPECT_TRUE(d_.Finishes());
    Unlock(d_);
}

TEST_F(ReadWriteLockData, AnUpgradeWaitsForEveryOtherReader) {
    Lock(a_, LOCK_MODE_READ);
    Lock(b_, LOCK_MODE_READ);
    Lock(c_, LOCK_MODE_READ);
    Queue(a_, LOCK_MODE_WRITE);
    Unlock(b_);
    EXPECT_EQ(data_.CountWaiting(), 1);
    Queue(b_, LOCK_MODE_READ); // new now, and shut out
    Unlock(c_);
    EXPECT_TRUE(a_.Finishes());
    EXPECT_EQ(data_.CountWaiting(), 1);
    Unlock(a_);
    EXPECT_TRUE(b_.Finishes());
    Unlock(b_);
    Unlock(a_);
}

TEST_F(ReadWriteLockData, AnUpgradeLetsAWriterInThatWaitsAndOneThatComes) {
    Lock(a_, LOCK_MODE_READ);
    Queue(b_, LOCK_MODE_WRITE);
    Lock(a_, LOCK_MODE_WRITE);
    EXPECT_TRUE(b_.Finishes());
    EXPECT_EQ(data_.CountWaiting(), 0);
    Unlock(b_);
    Lock(c_, LOCK_MODE_WRITE);
    Queue(d_, LOCK_MODE_WRITE); // the writers' mutex holds for writers
    Unlock(a_);
    Unlock(c_);
    EXPECT_EQ(data_.CountWaiting(), 1);
    Unlock(a_);
    EXPECT_TRUE(d_.Finishes());
    Unlock(d_);
}

TEST_F(ReadWriteLockData, UpgradersAndWritersThatWaitForTheSameReaderAllGetIn) {
    Lock(a_, LOCK_MODE_READ);
    Lock(b_, LOCK_MODE_READ);
    Lock(c_, LOCK_MODE_READ);
    Queue(a_, LOCK_MODE_WRITE);
    Queue(d_, LOCK_MODE_WRITE);
    Queue(b_, LOCK_MODE_WRITE);
    Unlock(c_);
    EXPECT_TRUE(a_.Finishes());
    EXPECT_TRUE(b_.Finishes());
    EXPECT_TRUE(d_.Finishes());
    EXPECT_EQ(data_.CountWaiting(), 0);
    Unlock(d_);
    Unlock(b_);
    Unlock(b_);
    Unlock(a_);
    Unlock(a_);
    Lock(c_, LOCK_MODE_WRITE);
    Unlock(c_);
}

} // namespace
} // namespace vorlund::test
