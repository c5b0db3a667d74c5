#include <vorlund/ClassIds.h>
#include <vorlund/ObjectList.h>
#include <vorlund/Vorlund.h>

#include "support/LibraryScope.h"
#include "support/Probes.h"

#include <gtest/gtest.h>

#include <memory>
#include <thread>
#include <vector>

namespace vorlund::test {
namespace {

class PushObjectEnumerator : public testing::Test {
protected:
    ~PushObjectEnumerator() noexcept override {}

    void TearDown() override {
        enumerator_.Reset();
        EXPECT_EQ(CProbe::alive, 0);
    }

    CLibraryScope library_;
    CRefPtr<IPushObjectEnumerator> enumerator_ =
        CreateAs<IPushObjectEnumerator>(classid::CPushObjectEnumerator);
};

TEST_F(PushObjectEnumerator, ThreeObjects) {
    const CRefPtr<IObject> objects[] = {NewProbe(), NewProbe(), NewProbe()};
    for (const auto& object : objects) {
        enumerator_->Push(object.Get());
        EXPECT_EQ(ReferencesOf(object.Get()), 2);
    }
    for (const auto& object : objects) {
        EXPECT_TRUE(enumerator_->HasNext());
        EXPECT_TRUE(enumerator_->HasNext());
        IObject* const next = enumerator_->GetNext();
        EXPECT_EQ(next, object.Get());
        EXPECT_EQ(ReferencesOf(next), 3);
        next->Release();
    }
    for (int i = 0; i < 2; ++i) {
        EXPECT_FALSE(enumerator_->HasNext());
        EXPECT_EQ(enumerator_->GetNext(), nullptr);
    }
    // Read objects stay until the enumerator goes.
    for (const auto& object : objects) EXPECT_EQ(ReferencesOf(object.Get()), 2);
    enumerator_.Reset();
    for (const auto& object : objects) EXPECT_EQ(ReferencesOf(object.Get()), 1);
}

TEST_F(PushObjectEnumerator, IsReadWithoutHasNext) {
    enumerator_->Push(NewProbe().Get());
    EXPECT_TRUE(CRefPtr<IObject>::Adopt(enumerator_->GetNext()));
    EXPECT_EQ(enumerator_->GetNext(), nullptr);
    EXPECT_FALSE(enumerator_->HasNext());
}

TEST_F(PushObjectEnumerator, EmptyOneIsAtItsEnd) {
    EXPECT_FALSE(enumerator_->HasNext());
    EXPECT_EQ(enumerator_->GetNext(), nullptr);
}

TEST_F(PushObjectEnumerator, ObjectPushedTwiceComesTwice) {
    const auto object = NewProbe();
    enumerator_->Push(object.Get());
    enumerator_->Push(object.Get());
    EXPECT_EQ(ReferencesOf(object.Get()), 3);
    for (int i = 0; i < 2; ++i)
        EXPECT_EQ(CRefPtr<IObject>::Adopt(enumerator_->GetNext()).Get(), object.Get());
    EXPECT_FALSE(enumerator_->HasNext());
}

TEST_F(PushObjectEnumerator, PushAfterHasNextIsIgnored) {
    const auto first = NewProbe(), late = NewProbe();
    enumerator_->Push(first.Get());
    EXPECT_TRUE(enumerator_->HasNext());
    enumerator_->Push(late.Get());
    EXPECT_EQ(ReferencesOf(late.Get()), 1);
    EXPECT_EQ(CRefPtr<IObject>::Adopt(enumerator_->GetNext()).Get(), first.Get());
    EXPECT_FALSE(enumerator_->HasNext());
}

TEST_F(PushObjectEnumerator, PushAfterGetNextIsIgnored) {
    const auto late = NewProbe();
    EXPECT_EQ(enumerator_->GetNext(), nullptr);
    enumerator_->Push(late.Get());
    EXPECT_EQ(ReferencesOf(late.Get()), 1);
    EXPECT_FALSE(enumerator_->HasNext());
}

TEST_F(PushObjectEnumerator, ReserveChangesNothingThatShows) {
    enumerator_->Reserve(0);
    enumerator_->Reserve(1000);
    enumerator_->Push(NewProbe().Get());
    enumerator_->Reserve(5);
    enumerator_->Push(NewProbe().Get());
    int count = 0;
    for (; enumerator_->HasNext(); ++count) CRefPtr<IObject>::Adopt(enumerator_->GetNext()).Reset();
    enumerator_->Reserve(5);
    EXPECT_EQ(count, 2);
    EXPECT_FALSE(enumerator_->HasNext());
}

TEST_F(PushObjectEnumerator, ReserveOfAWildCountIsSafe) {
    enumerator_->Reserve(0xFFFFFFFF);
    enumerator_->Push(NewProbe().Get());
    EXPECT_TRUE(enumerator_->HasNext());
}

TEST_F(PushObjectEnumerator, ManyObjects) {
    constexpr int kCount = 100000;
    const auto object = NewProbe();
    enumerator_->Reserve(3);
    for (int i = 0; i < kCount; ++i) enumerator_->Push(object.Get());
    int count = 0;
    for (; IObject* const next = enumerator_->GetNext(); ++count) next->Release();
    EXPECT_EQ(count, kCount);
}

TEST_F(PushObjectEnumerator, EndReleasesInOrderAfterTheListeners) {
    std::vector<int> log;
    CTestListener own([&](IObject*) { log.push_back(0); });
    std::vector<std::unique_ptr<CTestListener>> listeners;
    enumerator_->AddListener(&own);
    for (int i = 1; i <= 3; ++i) {
        const auto object = NewProbe();
        listeners.push_back(std::make_unique<CTestListener>([&log, i](IObject*) { log.push_back(i); }));
        object->AddListener(listeners.back().get());
        enumerator_->Push(object.Get());
    }
    enumerator_->GetNext()->Release();
    EXPECT_TRUE(log.empty());
    enumerator_.Reset();
    EXPECT_EQ(log, (std::vector<int>{0, 1, 2, 3}));
}

TEST_F(PushObjectEnumerator, FilledOneMayGoToAnotherThread) {
    for (int i = 0; i < 10; ++i) enumerator_->Push(NewProbe().Get());
    std::thread([&] {
        int count = 0;
        for (; enumerator_->HasNext(); ++count) CRefPtr<IObject>::Adopt(enumerator_->GetNext()).Reset();
        EXPECT_EQ(count, 10);
        enumerator_.Reset();
    }).join();
}

} // namespace
} // namespace vorlund::test
