// The lock of the store: held while a factory runs, left with the thread of a factory that raises.
#include "api/ClassStoreTest.h"

#include <vorlund/ClassIds.h>
#include <vorlund/Vorlund.h>

#include "support/Actor.h"
#include "support/DebugRecorder.h"
#include "support/Failures.h"
#include "support/Latch.h"
#include "support/Probes.h"

#include <gtest/gtest.h>

#include <set>
#include <stdexcept>
#include <thread>
#include <vector>

namespace vorlund::test {
namespace {

class ClassStoreThreads : public CClassStoreTest {};

// A factory that raises. That other threads then block is shown by a child process: Unload_test.

[[noreturn]] IObject* Refuse() {
    throw std::runtime_error("factory");
}

TEST_F(ClassStoreThreads, ThreadOfARaisingFactoryGoesOn) {
    Register(kFirstId, kFirstName, &Refuse);
    Register(kSecondId, kSecondName, &NewObject<CProbe>);
    EXPECT_THROW(store_.CreateObject(kFirstId), std::runtime_error);
    EXPECT_THROW(store_.CreateObject(kFirstName), std::runtime_error);
    EXPECT_EQ(store_.GetClassInfo(kFirstId)->name, kFirstName);
    EXPECT_TRUE(CRefPtr<IObject>::Adopt(store_.CreateObject(kSecondName)));
    EXPECT_TRUE(CRefPtr<IObjectEnumerator>::Adopt(store_.EnumerateClasses())->HasNext());
    store_.Clear();
    Register(kThirdId, nullptr);
}

TEST_F(ClassStoreThreads, CloseAfterARaisingFactorySucceeds) {
    Register(kFirstId, kFirstName, &Refuse);
    for (int i = 0; i < 3; ++i) {
        EXPECT_THROW(store_.CreateObject(kFirstId), std::runtime_error);
    }
    const CDebugRecorder recorder;
    store_.Close();
    EXPECT_TRUE(recorder.GetEntries().empty());
    store_.Init();
    // The new lock is free.
    std::thread([&] { store_.RegisterClassVrl(kFirst); }).join();
    EXPECT_EQ(store_.GetClassInfo(kFirstName)->factory, &MakeNothing);
}

TEST(ClassStoreThreadsOfTheLibrary, CloseAfterARaisingFactorySucceeds) {
    v.Init();
    v.GetClassStore().RegisterClassVrl({kFirstId, kFirstName, &Refuse});
    EXPECT_THROW(CreateAs<IObject>(kFirstId), std::runtime_error);
    EXPECT_THROW(CreateAs<IObject>(kFirstId), std::runtime_error);
    v.Close();
    v.Init();
    std::thread([] { EXPECT_TRUE(CreateAs<IObject>(classid::CObject)); }).join();
    v.Close();
}

/// Sends the library's messages to `target` for the length of a block.
class CDebugTargetScope {
public:
    explicit CDebugTargetScope(TDebugTarget target) : former_(debugTarget) { SetDebugTarget(target); }
    CDebugTargetScope(const CDebugTargetScope&) = delete;
    CDebugTargetScope& operator=(const CDebugTargetScope&) = delete;
    ~CDebugTargetScope() { SetDebugTarget(former_); }

private:
    TDebugTarget former_;
};

/// A thread that looks a class up whenever a message comes, and how often that did not have to wait.
struct TOtherUser {
    const CClassStore& store;
    CActor actor{};
    int lookups = 0;
};

TEST_F(ClassStoreThreads, FailedLookupsAreReportedWithoutTheLock) {
    Register(kFirstId, kFirstName);
    TOtherUser other{store_};
    const CDebugTargetScope scope({[](TDebugMessageType, const wchar*, void* user) {
                                       TOtherUser& that = *static_cast<TOtherUser*>(user);
                                       that.actor.Start([&] { that.store.GetClassInfo(kFirstId); });
                                       that.lookups += that.actor.Finishes() ? 1 : 0;
                                   },
                                   &other});
    ExpectRaises<CClassNotFoundException>(kGetByIdNotFound, [&] { store_.GetClassInfo(kSecondId); });
    EXPECT_EQ(other.lookups, 1);
    ExpectRaises<CClassNotFoundException>(kCreateByNameNotFound, [&] { store_.CreateObject(kSecondName); });
    EXPECT_EQ(other.lookups, 2);
}

CLatch* isInFactory = nullptr;
CLatch* mayLeaveFactory = nullptr;

TEST_F(ClassStoreThreads, CloseWaitsForTheFactoryOfAnotherThread) {
    CLatch inFactory(1), mayLeave(1), closing(1);
    isInFactory = &inFactory;
    mayLeaveFactory = &mayLeave;
    static bool isFactoryDone;
    isFactoryDone = false;
    Register(kFirstId, kFirstName, []() -> IObject* {
        isInFactory->CountDown();
        mayLeaveFactory->Wait();
        isFactoryDone = true;
        return nullptr;
    });
    std::thread creator([&] { EXPECT_EQ(store_.CreateObject(kFirstId), nullptr); });
    inFactory.Wait();
    std::thread closer([&] {
        closing.CountDown();
        store_.Close();
        // Written by the factory, under the lock that Close has waited for.
        EXPECT_TRUE(isFactoryDone);
    });
    closing.Wait();
    mayLeave.CountDown();
    closer.join();
    creator.join();
}

// Threads.

TEST(ClassStoreThreadsOfTheLibrary, ThreadsCreateRegisterAndLookUpTogether) {
    const CLibraryScope library;
    CClassStore& store = v.GetClassStore();
    constexpr int kThreads = 4;
    constexpr int kRounds = 500;
    CLatch start(kThreads);
    std::vector<std::vector<IObject*>> created(kThreads);
    std::vector<std::thread> threads;
    for (int thread = 0; thread < kThreads; ++thread) {
        threads.emplace_back([&, thread] {
            start.ArriveAndWait();
            for (int round = 0; round < kRounds; ++round) {
                const CId own(0x7EAD, static_cast<unsigned int>(thread), static_cast<unsigned int>(round), 0);
                store.RegisterClassVrl({own, VRL_L("test::CShared"), &NewObject<CProbe>});
                // Objects are numbered inside their factory, which runs under the store's lock.
                created[thread].push_back(store.CreateObject(own));
                created[thread].push_back(store.CreateObject(VRL_L("vorlund::CPtrObject")));
                EXPECT_EQ(store.GetClassInfo(own)->id, own);
                EXPECT_EQ(store.GetClassInfo(VRL_L("vorlund::CObject"))->id, classid::CObject);
                ExpectRaises<CClassNotFoundException>(kGetByIdNotFound, [&] {
                    store.GetClassInfo({0x7EAD, 99, 99, 99});
                });
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    std::set<int> numbers;
    for (const auto& objects : created) {
        for (IObject* const object : objects) {
            EXPECT_TRUE(numbers.insert(object->GetObjectNumber()).second);
            object->Release();
        }
    }
    EXPECT_EQ(numbers.size(), 2u * kThreads * kRounds);
    EXPECT_EQ(*numbers.rbegin(), 2 * kThreads * kRounds);
    EXPECT_EQ(CProbe::alive, 0);
}

TEST(ClassStoreThreadsOfTheLibrary, ThreadsEnumerateWhileOthersRegister) {
    const CLibraryScope library;
    CClassStore& store = v.GetClassStore();
    const std::size_t builtins = Classes(store).size();
    constexpr unsigned int kAdded = 300;
    CLatch start(2);
    std::thread adder([&] {
        start.ArriveAndWait();
        for (unsigned int i = 0; i < kAdded; ++i)
            store.RegisterClassVrl({{0x7EAD, 0, 1, i}, nullptr, &MakeNothing});
    });
    start.ArriveAndWait();
    for (std::size_t last = 0; last < builtins + kAdded;) {
        const std::size_t count = Classes(store).size();
        EXPECT_GE(count, last);
        last = count;
    }
    adder.join();
}

} // namespace
} // namespace vorlund::test
