#include <vorlund/ClassIds.h>
#include <vorlund/ObjectList.h>
#include <vorlund/RefPtr.h>
#include <vorlund/Vorlund.h>

#include "support/DebugRecorder.h"
#include "support/Failures.h"
#include "support/KnownFailures.h"
#include "support/LibraryScope.h"
#include "support/Probes.h"

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace vorlund::test {
namespace {

using TPtr = CRefPtr<IObject>;

class RefPtr : public testing::Test {
protected:
    CLibraryScope library_;
};

TEST_F(RefPtr, EmptyHoldsNothing) {
    TPtr empty;
    EXPECT_FALSE(empty);
    EXPECT_EQ(empty.Get(), nullptr);
    EXPECT_EQ(empty.Detach(), nullptr);
    empty.Reset();
    EXPECT_FALSE(empty.Query<IObject>());
    EXPECT_FALSE(TPtr::Adopt(nullptr));
    EXPECT_FALSE(TPtr::Share(nullptr));
    EXPECT_FALSE(TPtr(empty));
}

TEST_F(RefPtr, AdoptTakesTheCallersReference) {
    IObject* const object = NewObject<CProbe>();
    {
        const auto owner = TPtr::Adopt(object);
        EXPECT_TRUE(owner);
        EXPECT_EQ(owner.Get(), object);
        EXPECT_EQ(&*owner, object);
        EXPECT_EQ(ReferencesOf(object), 1);
    }
    EXPECT_EQ(CProbe::alive, 0);
}

TEST_F(RefPtr, ShareAddsOne) {
    const auto first = NewProbe();
    {
        const auto second = TPtr::Share(first.Get());
        EXPECT_EQ(ReferencesOf(first.Get()), 2);
    }
    EXPECT_EQ(ReferencesOf(first.Get()), 1);
}

TEST_F(RefPtr, CopyAddsOneAndMoveNone) {
    auto first = NewProbe();
    TPtr copy(first);
    EXPECT_EQ(ReferencesOf(first.Get()), 2);
    TPtr moved(std::move(copy));
    EXPECT_EQ(ReferencesOf(first.Get()), 2);
    EXPECT_FALSE(copy);
    EXPECT_EQ(moved.Get(), first.Get());
}

TEST_F(RefPtr, AssignmentReleasesTheFormer) {
    auto target = NewProbe();
    const auto source = NewProbe();
    ASSERT_EQ(CProbe::alive, 2);
    target = source;
    EXPECT_EQ(CProbe::alive, 1);
    EXPECT_EQ(ReferencesOf(source.Get()), 2);
    target = NewProbe();
    EXPECT_EQ(CProbe::alive, 2);
    EXPECT_EQ(ReferencesOf(source.Get()), 1);
    target = {};
    EXPECT_EQ(CProbe::alive, 1);
}

TEST_F(RefPtr, SelfAssignmentChangesNothing) {
    auto object = NewProbe();
    const auto& alias = object;
    object = alias;
    EXPECT_EQ(ReferencesOf(object.Get()), 1);
    auto& movable = object;
    object = std::move(movable);
    EXPECT_TRUE(object);
    EXPECT_EQ(ReferencesOf(object.Get()), 1);
}

TEST_F(RefPtr, DetachGivesTheReferenceAway) {
    auto owner = NewProbe();
    IObject* const object = owner.Detach();
    EXPECT_FALSE(owner);
    EXPECT_EQ(object->Release(), 0);
}

TEST_F(RefPtr, ResetEmptiesBeforeItReleases) {
    auto owner = NewProbe();
    CTestListener listener([&](IObject*) { EXPECT_FALSE(owner); });
    owner->AddListener(&listener);
    owner.Reset();
    EXPECT_EQ(listener.GetCalls(), 1);
    owner.Reset();
}

TEST_F(RefPtr, QueryAddsOneOrGivesNothing) {
    const auto list = CreateAs<IObjectList>(classid::CObjectList);
    {
        const CRefPtr<IObject> object = list.Query<IObject>();
        EXPECT_EQ(object.Get(), list.Get());
        EXPECT_EQ(ReferencesOf(list.Get()), 2);
        EXPECT_EQ(object.Query<IObjectList>().Get(), list.Get());
    }
    EXPECT_FALSE(list.Query<IPtrObject>());
    EXPECT_EQ(ReferencesOf(list.Get()), 1);
}

// What a release raises.

/// Creates objects that raise when they die, because the library has been closed since.
class RefPtrAfterClose : public testing::Test {
protected:
    static std::vector<IObject*> Outliving(int count) {
        std::vector<IObject*> objects;
        v.Init();
        for (int i = 0; i < count; ++i) objects.push_back(NewObject<CProbe>());
        v.Close();
        return objects;
    }
    void TearDown() override { EXPECT_EQ(CProbe::alive, 0); }
};

TEST_F(RefPtrAfterClose, DestructorRaises) {
    const auto objects = Outliving(1);
    ExpectRaises<CBugException>(counterfailures::kDestroyClosed,
                                [&] { const auto owner = TPtr::Adopt(objects[0]); });
}

TEST_F(RefPtrAfterClose, ResetRaisesAndEmpties) {
    auto owner = TPtr::Adopt(Outliving(1)[0]);
    ExpectRaises<CBugException>(counterfailures::kDestroyClosed, [&] { owner.Reset(); });
    EXPECT_FALSE(owner);
}

TEST_F(RefPtrAfterClose, AssignmentRaisesAndAssigns) {
    const auto objects = Outliving(2);
    auto owner = TPtr::Adopt(objects[0]);
    ExpectRaises<CBugException>(counterfailures::kDestroyClosed, [&] { owner = TPtr::Adopt(objects[1]); });
    EXPECT_EQ(owner.Detach(), objects[1]);
    ExpectRaises<CBugException>(counterfailures::kDestroyClosed, [&] { objects[1]->Release(); });
}

TEST_F(RefPtrAfterClose, UnwindingGoesOn) {
    const auto objects = Outliving(3);
    const CDebugRecorder recorder;
    try {
        const auto first = TPtr::Adopt(objects[0]);
        CReferenceList<IObject> list;
        list.Adopt(objects[1]);
        list.Adopt(objects[2]);
        throw std::runtime_error("original");
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), "original");
    }
    // Dropped, but reported: each release wrote to the debugger output and to the box.
    EXPECT_EQ(recorder.GetEntries().size(), 6u);
}

TEST_F(RefPtrAfterClose, ListReleasesEveryMemberAndRaisesOnce) {
    const auto objects = Outliving(3);
    const CDebugRecorder recorder;
    ExpectRaises<CBugException>(counterfailures::kDestroyClosed, [&] {
        CReferenceList<IObject> list;
        for (IObject* const object : objects) list.Adopt(object);
    });
    EXPECT_EQ(CProbe::alive, 0);
    EXPECT_EQ(recorder.GetEntries().size(), 6u);
}

TEST_F(RefPtrAfterClose, ClearedListIsEmptyAfterAFailure) {
    const auto objects = Outliving(2);
    CReferenceList<IObject> list;
    for (IObject* const object : objects) list.Adopt(object);
    ExpectRaises<CBugException>(counterfailures::kDestroyClosed, [&] { list.Clear(); });
    EXPECT_EQ(list.GetCount(), 0u);
}

TEST_F(RefPtrAfterClose, RemovedMemberIsGoneAfterAFailure) {
    const auto objects = Outliving(2);
    CReferenceList<IObject> list;
    for (IObject* const object : objects) list.Adopt(object);
    ExpectRaises<CBugException>(counterfailures::kDestroyClosed, [&] { list.Remove(0); });
    ASSERT_EQ(list.GetCount(), 1u);
    EXPECT_EQ(list[0], objects[1]);
    ExpectRaises<CBugException>(counterfailures::kDestroyClosed, [&] { list.Clear(); });
}

// Lists of references.

class RefPtrReferenceList : public testing::Test {
protected:
    ~RefPtrReferenceList() noexcept override {}

    CLibraryScope library_;
    std::vector<int> ended_;
    std::vector<std::unique_ptr<CTestListener>> listeners_;
    CReferenceList<IObject> list_;

    /// Fills the list with `count` objects that log their numbers when they die.
    void Fill(int count) {
        for (int i = 0; i < count; ++i) {
            listeners_.push_back(std::make_unique<CTestListener>(
                [this](IObject* dying) { ended_.push_back(dying->GetObjectNumber()); }));
            IObject* const object = NewObject<CProbe>();
            object->AddListener(listeners_.back().get());
            list_.Adopt(object);
        }
    }
};

TEST_F(RefPtrReferenceList, ReleasesInOrder) {
    Fill(4);
    list_.Clear();
    EXPECT_EQ(ended_, (std::vector<int>{1, 2, 3, 4}));
    EXPECT_EQ(list_.GetCount(), 0u);
}

TEST_F(RefPtrReferenceList, DestructorReleasesInOrder) {
    std::vector<int> ended;
    CTestListener listener([&](IObject* dying) { ended.push_back(dying->GetObjectNumber()); });
    {
        CReferenceList<IObject> list;
        list.Reserve(3);
        for (int i = 0; i < 3; ++i) {
            IObject* const object = NewObject<CProbe>();
            object->AddListener(&listener);
            list.Adopt(object);
        }
    }
    EXPECT_EQ(ended, (std::vector<int>{1, 2, 3}));
}

TEST_F(RefPtrReferenceList, ShareAddsAReference) {
    const auto object = NewProbe();
    list_.Share(object.Get());
    list_.Share(object.Get());
    EXPECT_EQ(ReferencesOf(object.Get()), 3);
    EXPECT_EQ(list_.GetCount(), 2u);
    list_.Clear();
    EXPECT_EQ(ReferencesOf(object.Get()), 1);
}

TEST_F(RefPtrReferenceList, RemoveClosesTheGap) {
    Fill(3);
    list_.Remove(1);
    EXPECT_EQ(ended_, (std::vector<int>{2}));
    ASSERT_EQ(list_.GetCount(), 2u);
    std::vector<int> left;
    for (IObject* const object : list_) left.push_back(object->GetObjectNumber());
    EXPECT_EQ(left, (std::vector<int>{1, 3}));
}

TEST_F(RefPtrReferenceList, MemberThatDiesSeesTheListWithoutIt) {
    Fill(3);
    std::vector<std::size_t> counts;
    CTestListener listener([&](IObject*) { counts.push_back(list_.GetCount()); });
    for (IObject* const object : list_) object->AddListener(&listener);
    list_.Remove(0);
    list_.Clear();
    EXPECT_EQ(counts, (std::vector<std::size_t>{2, 0, 0}));
}

TEST_F(RefPtrReferenceList, FirstOfSeveralFailuresPassesOn) {
    Fill(3);
    std::vector<std::unique_ptr<CTestListener>> raising;
    for (const char* const text : {"first", "second"}) {
        raising.push_back(std::make_unique<CTestListener>([=](IObject*) { throw std::runtime_error(text); }));
    }
    list_[1]->AddListener(raising[0].get());
    list_[2]->AddListener(raising[1].get());
    try {
        list_.Clear();
        ADD_FAILURE() << "nothing was raised";
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), "first");
    }
    EXPECT_EQ(ended_, (std::vector<int>{1, 2, 3}));
    EXPECT_EQ(CProbe::alive, 0);
}

// CreateAs.

TEST_F(RefPtr, CreateAsGivesTheOnlyReference) {
    const auto list = CreateAs<IObjectList>(classid::CObjectList);
    ASSERT_TRUE(list);
    EXPECT_EQ(list->GetClassId(), classid::CObjectList);
    EXPECT_EQ(ReferencesOf(list.Get()), 1);
}

TEST_F(RefPtr, CreateAsIsEmptyForAnotherInterface) {
    v.GetClassStore().RegisterClassVrl({CProbe::ClassId, VRL_L("test::CProbe"), &NewObject<CProbe>});
    EXPECT_FALSE(CreateAs<IObjectList>(CProbe::ClassId));
    EXPECT_EQ(CProbe::alive, 0);
}

TEST_F(RefPtr, CreateAsIsEmptyWhenTheFactoryYieldsNothing) {
    v.GetClassStore().RegisterClassVrl(
        {CProbe::ClassId, VRL_L("test::CProbe"), []() -> IObject* { return nullptr; }});
    EXPECT_FALSE(CreateAs<IObject>(CProbe::ClassId));
}

TEST_F(RefPtr, CreateAsRaisesWhatTheClassStoreRaises) {
    constexpr TFailure kNotFound{VRL_L("vorlund::CClassStore::CreateObject"),
                                 VRL_L("src/vorlund/api/ClassStore"), 68, VRL_L("Cannot find class")};
    ExpectRaises<CClassNotFoundException>(kNotFound, [] { CreateAs<IObject>(CProbe::ClassId); });
    v.Close();
    constexpr TFailure kNotInitialized{VRL_L("vorlund::CClassStore::CreateObject"),
                                       VRL_L("src/vorlund/api/ClassStore"), 60, VRL_L("Not initialized")};
    ExpectRaises<CBugException>(kNotInitialized, [] { CreateAs<IObject>(classid::CObject); });
}

} // namespace
} // namespace vorlund::test
