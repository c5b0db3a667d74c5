#include <vorlund/BinaryLock.h>
#include <vorlund/Exception.h>

#include "support/Actor.h"
#include "support/DebugRecorder.h"
#include "support/Failures.h"
#include "support/KnownFailures.h"
#include "support/Latch.h"
#include "support/Leaks.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstring>
#include <new>
#include <string>
#include <thread>
#include <type_traits>
#include <vector>

namespace vorlund::test {
namespace {

static_assert(std::has_virtual_destructor_v<CBinaryLock>);
static_assert(std::is_base_of_v<CClassObject, CBinaryLock>);
static_assert(!std::is_copy_constructible_v<CBinaryLock>);

/// Whether another thread can take the lock, and gives it back.
bool IsFree(CBinaryLock& lock, CActor& other) {
    other.Start([&] {
        lock.Lock();
        lock.Unlock();
    });
    return other.Finishes();
}

TEST(BinaryLock, TakenTwiceGivenBackTwiceAndNotThreeTimes) {
    CBinaryLock lock;
    lock.Lock();
    lock.Lock();
    lock.Unlock();
    lock.Unlock();
    ExpectRaises<CBugException>(lockfailures::kNotLocked, [&] { lock.Unlock(); });
}

TEST(BinaryLock, UnlockOfANewLockIsRefused) {
    CBinaryLock lock;
    ExpectRaises<CBugException>(lockfailures::kNotLocked, [&] { lock.Unlock(); });
    EXPECT_EQ(lock.GetHoldCount(), 0);
    lock.Lock();
    EXPECT_EQ(lock.GetHoldCount(), 1);
    lock.Unlock();
}

TEST(BinaryLock, UnlockByAThreadThatNeverLockedIsRefused) {
    CBinaryLock lock;
    CActor other;
    other.Do([&] { ExpectRaises<CBugException>(lockfailures::kNotLocked, [&] { lock.Unlock(); }); });
}

TEST(BinaryLock, UnlockByAnotherThreadIsRefusedAndChangesNothing) {
    CBinaryLock lock;
    CActor other;
    lock.Lock();
    lock.Lock();
    other.Do([&] {
        ExpectRaises<CBugException>(lockfailures::kLockedElsewhere, [&] { lock.Unlock(); });
        EXPECT_EQ(lock.GetHoldCount(), 0);
    });
    EXPECT_EQ(lock.GetHoldCount(), 2);
    lock.Unlock();
    EXPECT_EQ(lock.GetHoldCount(), 1);
    lock.Unlock();
    EXPECT_TRUE(IsFree(lock, other));
}

TEST(BinaryLock, UnlockByAFormerOwnerIsRefused) {
    CBinaryLock lock;
    CActor other;
    lock.Lock();
    lock.Unlock();
    other.Do([&] { lock.Lock(); });
    ExpectRaises<CBugException>(lockfailures::kLockedElsewhere, [&] { lock.Unlock(); });
    other.Do([&] { lock.Unlock(); });
    ExpectRaises<CBugException>(lockfailures::kNotLocked, [&] { lock.Unlock(); });
}

/// A lock in raw storage, whose destructor can run more than once. One that raises leaves an object that is
/// only its base class any more; its bytes are put back, so that the data to which they lead can be looked
/// at.
class CRawLock {
public:
    CRawLock() : lock_(::new (static_cast<void*>(storage_)) CBinaryLock) {}
    CRawLock(const CRawLock&) = delete;
    CRawLock& operator=(const CRawLock&) = delete;

    CBinaryLock* operator->() { return lock_; }

    void Destroy() {
        unsigned char bytes[sizeof storage_];
        std::memcpy(bytes, storage_, sizeof bytes);
        try {
            lock_->CBinaryLock::~CBinaryLock();
        } catch (...) {
            std::memcpy(storage_, bytes, sizeof bytes);
            throw;
        }
    }

private:
    alignas(CBinaryLock) unsigned char storage_[sizeof(CBinaryLock)];
    CBinaryLock* lock_;
};

TEST(BinaryLock, DestroyedWhileHeldIsRefusedAndTheLockStaysHeld) {
    for (const int holds : {1, 2, 5}) {
        CRawLock lock;
        for (int hold = 0; hold < holds; ++hold) lock->Lock();
        ExpectRaises<CBugException>(lockfailures::kStillLocked, [&] { lock.Destroy(); });
        EXPECT_EQ(lock->GetHoldCount(), holds);
        for (int hold = 0; hold < holds; ++hold) lock->Unlock();
        EXPECT_EQ(lock->GetHoldCount(), 0);
        lock.Destroy();
    }
}

TEST(BinaryLock, DestroyedWhileAnotherThreadHoldsItIsRefused) {
    CRawLock lock;
    CActor other;
    other.Do([&] { lock->Lock(); });
    ExpectRaises<CBugException>(lockfailures::kStillLocked, [&] { lock.Destroy(); });
    other.Do([&] { lock->Unlock(); });
    lock.Destroy();
}

TEST(BinaryLock, DeletedWhileHeldRaisesAndLosesOnlyTheBlock) {
    // The object's own memory goes all the same; the block that its holder works with is given up.
    CBinaryLock* lock = nullptr;
    {
        const CExpectedLeak leak;
        lock = new CBinaryLock;
    }
    lock->Lock();
    ExpectRaises<CBugException>(lockfailures::kStillLocked, [&] { delete lock; });
}

struct TReportRow {
    const char* name;
    void (*act)(CBinaryLock& lock, CActor& other);
    TFailure failure;
};

constexpr TReportRow kReportRows[] = {
    {"NotLocked", [](CBinaryLock& lock, CActor&) { lock.Unlock(); }, lockfailures::kNotLocked},
    {"LockedElsewhere",
     [](CBinaryLock& lock, CActor& other) {
         other.Do([&] { lock.Lock(); });
         try {
             lock.Unlock();
         } catch (...) {
             other.Do([&] { lock.Unlock(); });
             throw;
         }
     },
     lockfailures::kLockedElsewhere},
};

TEST(BinaryLock, RefusalsAreReportedOnceEach) {
    for (const TReportRow& row : kReportRows) {
        SCOPED_TRACE(row.name);
        CBinaryLock lock;
        CActor other;
        const CDebugRecorder recorder;
        const std::vector<std::string> report{
            "Exception: type=CBugException | method=vorlund::CBinaryLock::~CBinaryLock | "
            "file=src/vorlund/system/BinaryLock_win32 | line=" +
            std::to_string(row.failure.line) + " | reason=" + Narrow(row.failure.reason)};
        ExpectRaises<CBugException>(row.failure, [&] { row.act(lock, other); });
        EXPECT_EQ(recorder.GetTexts(DEBUG_MESSAGE_OUTPUT), report);
        EXPECT_EQ(recorder.GetTexts(DEBUG_MESSAGE_BOX), report);
    }
}

TEST(BinaryLock, TheLockCanBeUsedWhileTheBoxOfARefusalIsShown) {
    struct TBox {
        CBinaryLock lock;
        CActor other;
        int shown = 0;
        bool usable = false;
    } box;
    CDebug::SetHandler(
        DEBUG_MESSAGE_BOX,
        [](TDebugMessageType, const wchar*, void* user) {
            TBox& shownBox = *static_cast<TBox*>(user);
            ++shownBox.shown;
            shownBox.usable = IsFree(shownBox.lock, shownBox.other);
        },
        &box);
    ExpectRaises<CBugException>(lockfailures::kNotLocked, [&] { box.lock.Unlock(); });
    SetDebugTarget(debugTarget);
    EXPECT_EQ(box.shown, 1);
    EXPECT_TRUE(box.usable);
}

TEST(BinaryLock, HoldCountIsTheCallersOwn) {
    CBinaryLock lock;
    CActor other;
    for (int hold = 1; hold <= 1000; ++hold) {
        lock.Lock();
        ASSERT_EQ(lock.GetHoldCount(), hold);
    }
    other.Do([&] { EXPECT_EQ(lock.GetHoldCount(), 0); });
    for (int hold = 999; hold >= 0; --hold) {
        lock.Unlock();
        ASSERT_EQ(lock.GetHoldCount(), hold);
    }
}

TEST(BinaryLock, BlocksOtherThreadsUntilTheLastUnlock) {
    CBinaryLock lock;
    CActor first;
    CActor second;
    lock.Lock();
    lock.Lock();
    const auto take = [&] {
        lock.Lock();
        EXPECT_EQ(lock.GetHoldCount(), 1);
        lock.Unlock();
    };
    first.Start(take);
    second.Start(take);
    EXPECT_TRUE(first.StaysBusy());
    EXPECT_TRUE(second.StaysBusy());
    lock.Unlock();
    EXPECT_TRUE(first.StaysBusy());
    EXPECT_TRUE(second.StaysBusy());
    lock.Unlock();
    EXPECT_TRUE(first.Finishes());
    EXPECT_TRUE(second.Finishes());
}

TEST(BinaryLock, LocksAreIndependent) {
    CBinaryLock left;
    CBinaryLock right;
    CActor other;
    left.Lock();
    EXPECT_TRUE(IsFree(right, other));
    ExpectRaises<CBugException>(lockfailures::kNotLocked, [&] { right.Unlock(); });
    left.Unlock();
}

TEST(BinaryLock, OneThreadAtATimeIsInside) {
    constexpr int kThreads = 4;
    constexpr int kRounds = 20000;
    CBinaryLock lock;
    long value = 0; // plain: the lock is what keeps it whole
    CLatch start(kThreads);
    std::vector<std::thread> threads;
    for (int thread = 0; thread < kThreads; ++thread) {
        threads.emplace_back([&] {
            start.ArriveAndWait();
            for (int round = 0; round < kRounds; ++round) {
                lock.Lock();
                const long before = value;
                lock.Lock();
                ++value;
                lock.Unlock();
                if (value != before + 1) ADD_FAILURE() << "two threads were inside";
                lock.Unlock();
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(value, long{kThreads} * kRounds);
}

TEST(BinaryLock, TheLastUserMayDestroyItAtOnce) {
    // Two threads use a lock once each, and whoever is second destroys it, perhaps while the first is still
    // on its way out of Unlock.
    struct TShared {
        CBinaryLock lock;
        int users = 2;
    };
    constexpr int kRounds = 3000;
    std::atomic<int> destroyed{0};
    std::vector<TShared*> all;
    for (int round = 0; round < kRounds; ++round) all.push_back(new TShared);
    CLatch start(2);
    const auto use = [&] {
        start.ArriveAndWait();
        for (TShared* const shared : all) {
            shared->lock.Lock();
            const bool isLast = --shared->users == 0;
            shared->lock.Unlock();
            if (!isLast) continue;
            delete shared;
            ++destroyed;
        }
    };
    CActor one;
    CActor other;
    one.Start(use);
    other.Start(use);
    EXPECT_TRUE(one.Finishes());
    EXPECT_TRUE(other.Finishes());
    EXPECT_EQ(destroyed, kRounds);
}

TEST(BinaryLockGuard, HoldsUntilItsEnd) {
    CBinaryLock lock;
    {
        const CBinaryLockGuard guard(lock);
        EXPECT_EQ(lock.GetHoldCount(), 1);
        const CBinaryLockGuard nested(lock);
        EXPECT_EQ(lock.GetHoldCount(), 2);
    }
    EXPECT_EQ(lock.GetHoldCount(), 0);
}

TEST(BinaryLockGuard, UnlocksEarlyOnce) {
    CBinaryLock lock;
    {
        CBinaryLockGuard guard(lock);
        guard.Unlock();
        EXPECT_EQ(lock.GetHoldCount(), 0);
        guard.Unlock();
    }
    EXPECT_EQ(lock.GetHoldCount(), 0);
}

TEST(BinaryLockGuard, LeavesTheLockHeld) {
    CBinaryLock lock;
    {
        CBinaryLockGuard guard(lock);
        guard.Leave();
    }
    EXPECT_EQ(lock.GetHoldCount(), 1);
    lock.Unlock();
}

} // namespace
} // namespace vorlund::test
