// The end of a class store while other threads are inside, wait for its lock or have left it locked, and how
// a thread gives the lock back.
#include "api/ClassStoreTest.h"

#include "support/Actor.h"
#include "support/DebugRecorder.h"
#include "support/Failures.h"
#include "support/Latch.h"
#include "support/Probes.h"

#include <vorlund/Vorlund.h>

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <list>
#include <stdexcept>
#include <thread>
#include <vector>

namespace vorlund::test {
namespace {

using TClock = std::chrono::steady_clock;

[[noreturn]] IObject* Refuse() {
    throw std::runtime_error("factory");
}

/// A factory that stays inside until it may go.
struct TSlowFactory {
    CLatch isInside{1};
    CLatch mayGo{1};
    static inline TSlowFactory* current = nullptr;

    TSlowFactory() { current = this; }
    static IObject* Make() {
        TSlowFactory& factory = *current;
        factory.isInside.CountDown();
        factory.mayGo.Wait();
        return NewObject<CProbe>();
    }
};

class ClassStoreClosing : public CClassStoreTest {
protected:
    ClassStoreClosing() { Register(kFirstId, kFirstName, &Refuse); }

    /// Leaves the lock with the calling thread.
    void LeaveLocked() { EXPECT_THROW(store_.CreateObject(kFirstId), std::runtime_error); }
    void ExpectStillLocked() {
        ExpectRaises<CBugException>(lockfailures::kStillLocked, [&] { store_.Close(); });
    }
    void ExpectStillLockedAtOnce() {
        const auto start = TClock::now();
        ExpectStillLocked();
        EXPECT_LT(TClock::now() - start, std::chrono::milliseconds(1900));
    }
    /// The store works as a new one does, for every thread.
    void ExpectNewLife() {
        ExpectRaises<CBugException>(kGetByIdClosed, [&] { store_.GetClassInfo(kFirstId); });
        store_.Init();
        CActor().Do([&] { store_.RegisterClassVrl(kFirst); });
        EXPECT_EQ(Classes(store_).size(), 1u);
    }

    /// One of each operation, which finds the store closed in the end.
    std::vector<std::function<void()>> MakeWaitingSteps() {
        return {
            [&] { ExpectRaises<CBugException>(kCreateByIdClosed, [&] { store_.CreateObject(kFirstId); }); },
            [&] {
                ExpectRaises<CBugException>(kCreateByNameClosed, [&] { store_.CreateObject(kFirstName); });
            },
            [&] { ExpectRaises<CBugException>(kGetByIdClosed, [&] { store_.GetClassInfo(kFirstId); }); },
            [&] { ExpectRaises<CBugException>(kGetByNameClosed, [&] { store_.GetClassInfo(kFirstName); }); },
            [&] { ExpectRaises<CBugException>(kRegisterClosed, [&] { store_.RegisterClassVrl(kFirst); }); },
            [&] { store_.Clear(); },
            [&] { EXPECT_FALSE(CRefPtr<IObjectEnumerator>::Adopt(store_.EnumerateClasses())->HasNext()); },
            [&] { store_.Dump(); },
        };
    }
};

TEST_F(ClassStoreClosing, TurnsAwayThreadsThatWaitForItsOwnThread) {
    CActor owner;
    owner.Do([&] { LeaveLocked(); });
    std::list<CActor> others;
    for (const auto& step : MakeWaitingSteps()) {
        others.emplace_back().Start(step);
        EXPECT_TRUE(others.back().StaysBusy());
    }
    owner.Do([&] { store_.Close(); });
    for (CActor& other : others) EXPECT_TRUE(other.Finishes());
    ExpectNewLife();
}

TEST_F(ClassStoreClosing, WaitsTwoSecondsForAFactoryAndTurnsOthersAwayBefore) {
    TSlowFactory factory;
    Register(kSecondId, kSecondName, &TSlowFactory::Make);
    CActor creator, closer;
    creator.Start([&] { EXPECT_TRUE(CRefPtr<IObject>::Adopt(store_.CreateObject(kSecondId))); });
    factory.isInside.Wait();
    std::list<CActor> others;
    for (const auto& step : MakeWaitingSteps()) {
        others.emplace_back().Start(step);
        EXPECT_TRUE(others.back().StaysBusy());
    }
    const auto start = TClock::now();
    closer.Start([&] { ExpectStillLocked(); });
    for (CActor& other : others) EXPECT_TRUE(other.Finishes());
    EXPECT_TRUE(closer.StaysBusy());
    EXPECT_TRUE(closer.Finishes());
    EXPECT_GE(TClock::now() - start, std::chrono::seconds(2));
    EXPECT_LT(TClock::now() - start, std::chrono::seconds(20));
    ExpectNewLife();
    // Its memory was left to the factory's thread.
    factory.mayGo.CountDown();
    EXPECT_TRUE(creator.Finishes());
}

TEST_F(ClassStoreClosing, LockThatWasLeftWithALivingThreadIsNotWaitedFor) {
    CActor owner, other;
    owner.Do([&] { LeaveLocked(); });
    other.Start([&] { ExpectRaises<CBugException>(kGetByIdClosed, [&] { store_.GetClassInfo(kFirstId); }); });
    EXPECT_TRUE(other.StaysBusy());
    ExpectStillLockedAtOnce();
    EXPECT_TRUE(other.Finishes());
    ExpectNewLife();
    // Of the store that is gone nothing is left with the thread.
    owner.Do([&] {
        EXPECT_EQ(store_.GiveBackLock(), 0);
        EXPECT_EQ(store_.GetClassInfo(kFirstId)->name, kFirstName);
    });
}

TEST_F(ClassStoreClosing, DoesNotWaitForAThreadThatHasEnded) {
    CActor other;
    {
        CActor owner;
        owner.Do([&] { LeaveLocked(); });
        other.Start(
            [&] { ExpectRaises<CBugException>(kGetByIdClosed, [&] { store_.GetClassInfo(kFirstId); }); });
        EXPECT_TRUE(other.StaysBusy());
    }
    ExpectStillLockedAtOnce();
    EXPECT_TRUE(other.Finishes());
    ExpectNewLife();
}

TEST_F(ClassStoreClosing, FactoryThatRaisesMeanwhileLeavesNothingLocked) {
    TSlowFactory factory;
    Register(kSecondId, kSecondName, []() -> IObject* {
        TSlowFactory::Make()->Release();
        throw std::runtime_error("late");
    });
    CActor creator, closer;
    creator.Start([&] { EXPECT_THROW(store_.CreateObject(kSecondId), std::runtime_error); });
    factory.isInside.Wait();
    closer.Start([&] { store_.Close(); });
    EXPECT_TRUE(closer.StaysBusy());
    factory.mayGo.CountDown();
    EXPECT_TRUE(creator.Finishes());
    EXPECT_TRUE(closer.Finishes());
    ExpectNewLife();
}

TEST_F(ClassStoreClosing, MayBeClosedFromAFactory) {
    static CClassStore* closed;
    closed = &store_;
    Register(kSecondId, kSecondName, []() -> IObject* {
        closed->Close();
        ExpectRaises<CBugException>(kGetByIdClosed, [] { closed->GetClassInfo(kFirstId); });
        return NewObject<CProbe>();
    });
    LeaveLocked();
    EXPECT_TRUE(CRefPtr<IObject>::Adopt(store_.CreateObject(kSecondId)));
    ExpectNewLife();
}

// Threads that know nothing of each other. The objects of the library itself are not made here, because their
// counter takes no lock.

TEST_F(ClassStoreClosing, OpensAndClosesUnderThreadsThatUseIt) {
    store_.Close();
    constexpr int kThreads = 4;
    constexpr int kLives = 300;
    std::atomic<bool> isOver{false};
    std::atomic<int> successes{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i) {
        threads.emplace_back([&, i] {
            while (!isOver) {
                try {
                    if (i % 2) store_.RegisterClassVrl({kThirdId, nullptr, &MakeNothing});
                    if (store_.CreateObject(kFirstId) == nullptr) ++successes;
                } catch (const CException& failure) {
                    if (failure.GetType() == EXCEPTION_TYPE_CLASS_NOT_FOUND) continue;
                    EXPECT_EQ(failure.GetType(), EXCEPTION_TYPE_BUG);
                }
            }
        });
    }
    for (int life = 0; life < kLives || successes < kThreads; ++life) {
        store_.Init();
        store_.RegisterClassVrl(kFirst);
        std::this_thread::yield();
        store_.Close();
    }
    isOver = true;
    for (std::thread& thread : threads) thread.join();
}

// Giving the lock back.

TEST_F(ClassStoreClosing, ThreadGivesBackWhatFactoriesHaveLeft) {
    CActor owner, other;
    owner.Do([&] {
        for (int i = 0; i < 3; ++i) LeaveLocked();
    });
    other.Start([&] { EXPECT_EQ(store_.GetClassInfo(kFirstId)->name, kFirstName); });
    EXPECT_TRUE(other.StaysBusy());
    EXPECT_EQ(store_.GiveBackLock(), 0);
    EXPECT_TRUE(other.StaysBusy());
    owner.Do([&] { EXPECT_EQ(store_.GiveBackLock(), 3); });
    EXPECT_TRUE(other.Finishes());
    owner.Do([&] { EXPECT_EQ(store_.GiveBackLock(), 0); });
    store_.Close();
}

TEST_F(ClassStoreClosing, GivingBackInAFactoryLeavesTheOperationItsLock) {
    static CClassStore* store;
    static CActor* actor;
    CActor other;
    store = &store_;
    actor = &other;
    Register(kSecondId, kSecondName, []() -> IObject* {
        EXPECT_THROW(store->CreateObject(kFirstId), std::runtime_error);
        EXPECT_EQ(store->GiveBackLock(), 1);
        EXPECT_EQ(store->GiveBackLock(), 0);
        actor->Start([] { store->GetClassInfo(kFirstId); });
        EXPECT_TRUE(actor->StaysBusy());
        return nullptr;
    });
    EXPECT_EQ(store_.CreateObject(kSecondId), nullptr);
    EXPECT_TRUE(other.Finishes());
}

TEST_F(ClassStoreClosing, ClosedStoreHasNothingToGiveBack) {
    store_.Close();
    EXPECT_EQ(store_.GiveBackLock(), 0);
}

} // namespace
} // namespace vorlund::test
