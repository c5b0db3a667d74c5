#include <vorlund/ReadWriteLock.h>

#include "support/Actor.h"
#include "support/DebugRecorder.h"
#include "system/LockViews.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

namespace vorlund::test {
namespace {

/// A lock, and threads that use it.
class ReadWriteLockThreads : public testing::Test {
protected:
    void StartRead(CActor& actor) {
        actor.Start([this] { lock_.Lock(LOCK_MODE_READ, 0); });
    }
    void StartWrite(CActor& actor) {
        actor.Start([this] { lock_.Lock(LOCK_MODE_WRITE, 0); });
    }
    void Read(CActor& actor) {
        StartRead(actor);
        ASSERT_TRUE(actor.Finishes());
    }
    void Write(CActor& actor) {
        StartWrite(actor);
        ASSERT_TRUE(actor.Finishes());
    }
    void Unlock(CActor& actor) {
        actor.Do([this] { lock_.Unlock(); });
    }
    std::string LookAs(CActor& actor) {
        std::string seen;
        actor.Do([&] { seen = Look(lock_); });
        return seen;
    }

    /// Lets `newcomer` come and go as a reader until it does not get in: then somebody waits for the write
    /// lock. It is left waiting, and goes away as soon as it gets in.
    void WaitUntilReadersAreShutOut(CActor& newcomer) {
        for (int turn = 0; turn < 2000; ++turn) {
            newcomer.Start([this] {
                lock_.Lock(LOCK_MODE_READ, 0);
                lock_.Unlock();
            });
            if (newcomer.StaysBusy()) {
                // Or is this machine only busy? Then the witness does not get on either.
                for (int step = 0; step < 50; ++step) witness_.Do([] {});
                if (newcomer.StaysBusy()) return;
            }
        }
        FAIL() << "readers still get in";
    }

    CReadWriteLock lock_;
    CActor a_;
    CActor b_;
    CActor c_;
    CActor newcomer_;
    CActor witness_;
};

TEST_F(ReadWriteLockThreads, ReadTogether) {
    Read(a_);
    Read(b_);
    Read(c_);
    EXPECT_EQ(LookAs(a_), "R0");
    Unlock(b_);
    EXPECT_EQ(LookAs(b_), "-");
    EXPECT_EQ(LookAs(c_), "R0");
    Unlock(a_);
    Unlock(c_);
    ExpectFree(lock_);
}

TEST_F(ReadWriteLockThreads, HaveModesAndParametersOfTheirOwn) {
    Read(a_);
    Read(b_);
    a_.Do([this] { lock_.Lock(LOCK_MODE_READ, 11); });
    b_.Do([this] { lock_.Lock(LOCK_MODE_READ, 22); });
    EXPECT_EQ(LookAs(a_), "R11");
    EXPECT_EQ(LookAs(b_), "R22");
    EXPECT_EQ(LookAs(c_), "-");
    Unlock(a_);
    Unlock(a_);
    EXPECT_EQ(LookAs(a_), "-");
    EXPECT_EQ(LookAs(b_), "R22");
    Unlock(b_);
    Unlock(b_);
}

TEST_F(ReadWriteLockThreads, UnlockOfAThreadWithoutALockChangesNothing) {
    Write(a_);
    b_.Do([this] {
        const CDebugRecorder recorder;
        lock_.Unlock();
        EXPECT_EQ(recorder.GetTexts(DEBUG_MESSAGE_BOX),
                  TTexts{"[vorlund::TReadWriteLockData::Unlock] Not locked!"});
    });
    StartRead(b_);
    EXPECT_TRUE(b_.StaysBusy());
    EXPECT_EQ(LookAs(a_), "W0");
    Unlock(a_);
    EXPECT_TRUE(b_.Finishes());
    Unlock(b_);
}

TEST_F(ReadWriteLockThreads, AWriterWaitsForAllReaders) {
    Read(a_);
    Read(b_);
    StartWrite(c_);
    EXPECT_TRUE(c_.StaysBusy());
    Unlock(a_);
    EXPECT_TRUE(c_.StaysBusy());
    Unlock(b_);
    EXPECT_TRUE(c_.Finishes());
    EXPECT_EQ(LookAs(c_), "W0");
    Unlock(c_);
}

TEST_F(ReadWriteLockThreads, AWaitingWriterGoesBeforeNewReadersButNotBeforeNestedReadLocks) {
    Read(a_);
    StartWrite(b_);
    WaitUntilReadersAreShutOut(newcomer_);
    EXPECT_TRUE(b_.StaysBusy());
    Read(a_);
    Read(a_);
    Unlock(a_);
    Unlock(a_);
    EXPECT_TRUE(b_.StaysBusy());
    EXPECT_TRUE(newcomer_.StaysBusy());
    Unlock(a_);
    EXPECT_TRUE(b_.Finishes());
    EXPECT_TRUE(newcomer_.StaysBusy());
    Unlock(b_);
    EXPECT_TRUE(newcomer_.Finishes());
}

TEST_F(ReadWriteLockThreads, AllReadersThatWaitedGetInTogether) {
    Write(a_);
    StartRead(b_);
    StartRead(c_);
    StartRead(newcomer_);
    EXPECT_TRUE(b_.StaysBusy());
    EXPECT_TRUE(c_.StaysBusy());
    EXPECT_TRUE(newcomer_.StaysBusy());
    Unlock(a_);
    EXPECT_TRUE(b_.Finishes());
    EXPECT_TRUE(c_.Finishes());
    EXPECT_TRUE(newcomer_.Finishes());
    Unlock(b_);
    Unlock(c_);
    Unlock(newcomer_);
    ExpectFree(lock_);
}

TEST_F(ReadWriteLockThreads, WriteOneAfterTheOther) {
    Write(a_);
    StartWrite(b_);
    StartWrite(c_);
    EXPECT_TRUE(b_.StaysBusy());
    EXPECT_TRUE(c_.StaysBusy());
    Unlock(a_);
    CActor* first = &b_;
    CActor* second = &c_;
    if (b_.StaysBusy()) std::swap(first, second);
    EXPECT_TRUE(first->Finishes());
    EXPECT_TRUE(second->StaysBusy());
    Unlock(*first);
    EXPECT_TRUE(second->Finishes());
    Unlock(*second);
    ExpectFree(lock_);
}

TEST_F(ReadWriteLockThreads, AWriterLeavesTheTableWithItsLastUnlock) {
    Write(a_);
    Read(a_);
    Write(a_);
    StartRead(b_);
    StartWrite(c_);
    for (int level = 0; level < 2; ++level) {
        Unlock(a_);
        EXPECT_TRUE(b_.StaysBusy());
        EXPECT_TRUE(c_.StaysBusy());
    }
    Unlock(a_);
    EXPECT_EQ(LookAs(a_), "-");
    EXPECT_TRUE(c_.Finishes());
    Unlock(c_);
    EXPECT_TRUE(b_.Finishes());
    Unlock(b_);
}

TEST_F(ReadWriteLockThreads, AnUpgradeOfTheOnlyReaderShutsReadersOutAndLetsThemInAgain) {
    Read(a_);
    Write(a_);
    EXPECT_EQ(LookAs(a_), "W0");
    StartRead(b_);
    EXPECT_TRUE(b_.StaysBusy());
    Unlock(a_);
    EXPECT_TRUE(b_.Finishes());
    // It counts as a reader again.
    StartWrite(c_);
    EXPECT_TRUE(c_.StaysBusy());
    Unlock(b_);
    EXPECT_TRUE(c_.StaysBusy());
    Unlock(a_);
    EXPECT_TRUE(c_.Finishes());
    Unlock(c_);
}

TEST_F(ReadWriteLockThreads, AnUpgradeWaitsForTheOtherReaders) {
    Read(a_);
    Read(b_);
    Read(c_);
    StartWrite(a_);
    WaitUntilReadersAreShutOut(newcomer_);
    EXPECT_TRUE(a_.StaysBusy());
    Read(b_);
    Unlock(b_);
    Unlock(b_);
    EXPECT_TRUE(a_.StaysBusy());
    Unlock(c_);
    EXPECT_TRUE(a_.Finishes());
    EXPECT_EQ(LookAs(a_), "W0");
    EXPECT_TRUE(newcomer_.StaysBusy());
    Unlock(a_);
    EXPECT_TRUE(newcomer_.Finishes());
    Unlock(a_);
    ExpectFree(lock_);
}

TEST_F(ReadWriteLockThreads, TwoReadersThatUpgradeBothGetIn) {
    Read(a_);
    Read(b_);
    StartWrite(a_);
    WaitUntilReadersAreShutOut(newcomer_);
    EXPECT_TRUE(a_.StaysBusy());
    StartWrite(b_);
    EXPECT_TRUE(b_.Finishes());
    EXPECT_TRUE(a_.Finishes());
    EXPECT_EQ(LookAs(a_), "W0");
    EXPECT_EQ(LookAs(b_), "W0");
    // One goes back to reading while the other still writes; new readers stay out until both do.
    Unlock(a_);
    EXPECT_EQ(LookAs(a_), "R0");
    EXPECT_EQ(LookAs(b_), "W0");
    EXPECT_TRUE(newcomer_.StaysBusy());
    Unlock(b_);
    EXPECT_TRUE(newcomer_.Finishes());
    EXPECT_EQ(LookAs(b_), "R0");
    StartWrite(c_);
    EXPECT_TRUE(c_.StaysBusy());
    Unlock(a_);
    EXPECT_TRUE(c_.StaysBusy());
    Unlock(b_);
    EXPECT_TRUE(c_.Finishes());
    Unlock(c_);
}

TEST_F(ReadWriteLockThreads, AnUpgradeIsCertainOnceAnotherOneFollows) {
    // The second one's request is enough, even when it goes back to reading at once.
    for (int turn = 0; turn < 5; ++turn) {
        Read(a_);
        Read(b_);
        StartWrite(a_);
        WaitUntilReadersAreShutOut(newcomer_);
        b_.Do([this] {
            lock_.Lock(LOCK_MODE_WRITE, 0);
            lock_.Unlock();
        });
        EXPECT_TRUE(a_.Finishes());
        EXPECT_EQ(LookAs(a_), "W0");
        EXPECT_EQ(LookAs(b_), "R0");
        Unlock(a_);
        EXPECT_TRUE(newcomer_.Finishes());
        Unlock(a_);
        Unlock(b_);
    }
    ExpectFree(lock_);
}

TEST_F(ReadWriteLockThreads, AnUpgradeLetsAWaitingWriterIn) {
    Read(a_);
    StartWrite(b_);
    WaitUntilReadersAreShutOut(newcomer_);
    EXPECT_TRUE(b_.StaysBusy());
    StartWrite(a_);
    EXPECT_TRUE(a_.Finishes());
    EXPECT_TRUE(b_.Finishes());
    EXPECT_EQ(LookAs(a_), "W0");
    EXPECT_EQ(LookAs(b_), "W0");

    // The end of the upgrade does not end the other's write lock: a second writer still waits.
    StartWrite(c_);
    EXPECT_TRUE(c_.StaysBusy());
    Unlock(a_);
    EXPECT_EQ(LookAs(a_), "R0");
    EXPECT_TRUE(c_.StaysBusy());
    Unlock(b_);
    // Now c_ waits for the reader that the upgrader has become.
    EXPECT_TRUE(c_.StaysBusy());
    Unlock(a_);
    EXPECT_TRUE(c_.Finishes());
    EXPECT_TRUE(newcomer_.StaysBusy());
    Unlock(c_);
    EXPECT_TRUE(newcomer_.Finishes());
}

TEST_F(ReadWriteLockThreads, AnUpgradeDoesNotKeepWritersOut) {
    Read(a_);
    Write(a_);
    Write(b_);
    EXPECT_EQ(LookAs(a_), "W0");
    EXPECT_EQ(LookAs(b_), "W0");
    StartRead(newcomer_);
    EXPECT_TRUE(newcomer_.StaysBusy());
    // The writer goes first, the upgrader stays.
    Unlock(b_);
    EXPECT_TRUE(newcomer_.StaysBusy());
    Write(b_);
    Unlock(b_);
    Unlock(a_);
    EXPECT_TRUE(newcomer_.Finishes());
    Unlock(newcomer_);
    Unlock(a_);
    ExpectFree(lock_);
}

TEST_F(ReadWriteLockThreads, AReaderBesideAWriterMayUpgradeAgain) {
    Read(a_);
    Write(a_);
    Write(b_);
    Unlock(a_); // reads, while b_ writes
    Write(a_);
    EXPECT_EQ(LookAs(a_), "W0");
    EXPECT_EQ(LookAs(b_), "W0");
    Unlock(a_);
    Unlock(a_);
    StartRead(newcomer_);
    EXPECT_TRUE(newcomer_.StaysBusy());
    Unlock(b_);
    EXPECT_TRUE(newcomer_.Finishes());
    Unlock(newcomer_);
    ExpectFree(lock_);
}

} // namespace
} // namespace vorlund::test
