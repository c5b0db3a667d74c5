#include <vorlund/ClassIds.h>
#include <vorlund/ObjectList.h>
#include <vorlund/Vorlund.h>

#include "support/Failures.h"
#include "support/LibraryScope.h"
#include "support/Probes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <vector>

namespace vorlund::test {
namespace {

constexpr const wchar* kFile = VRL_L("src/vorlund/util/ObjectList");
constexpr const wchar* kRemove = VRL_L("vorlund::CObjectList::RemoveObject");
constexpr TFailure kRemoveNotFound{kRemove, kFile, 67, VRL_L("Cannot find object")};
constexpr TFailure kRemoveBadIndex{kRemove, kFile, 75, VRL_L("Index out of bounds")};
constexpr TFailure kGetBadIndex{VRL_L("vorlund::CObjectList::GetObject"), kFile, 126,
                                VRL_L("Index out of bounds")};
constexpr TFailure kFindNotFound{VRL_L("vorlund::CObjectList::FindObject"), kFile, 140,
                                 VRL_L("Cannot find object")};

class ObjectList : public testing::Test {
protected:
    ~ObjectList() noexcept override {}

    void TearDown() override {
        list_.Reset();
        objects_.Clear();
        EXPECT_EQ(CProbe::alive, 0);
    }

    /// The n-th object of the test, which holds a reference of its own to it.
    IObject* At(std::size_t index) {
        while (objects_.GetCount() <= index) objects_.Adopt(NewObject<CProbe>());
        return objects_[index];
    }

    /// Adds objects by their indices.
    void Add(const std::vector<std::size_t>& indices) {
        for (const std::size_t index : indices) list_->AddObject(At(index));
    }

    using TIndices = std::vector<std::size_t>;

    /// The members, as indices.
    TIndices Members() {
        TIndices members;
        for (unsigned int i = 0; i < list_->GetObjectCount(); ++i)
            members.push_back(IndexOf(CRefPtr<IObject>::Adopt(list_->GetObject(i)).Get()));
        return members;
    }

    std::size_t IndexOf(IObject* object) {
        const auto found = std::find(objects_.begin(), objects_.end(), object);
        return static_cast<std::size_t>(found - objects_.begin());
    }

    /// What an enumeration yields, as indices; takes the reference to it.
    TIndices Yield(IObjectEnumerator* enumerator) {
        const auto owner = CRefPtr<IObjectEnumerator>::Adopt(enumerator);
        TIndices members;
        while (const auto object = CRefPtr<IObject>::Adopt(owner->GetNext()))
            members.push_back(IndexOf(object.Get()));
        return members;
    }

    CLibraryScope library_;
    CReferenceList<IObject> objects_;
    CRefPtr<IObjectList> list_ = CreateAs<IObjectList>(classid::CObjectList);
};

TEST_F(ObjectList, IsEmptyAtFirst) {
    EXPECT_EQ(list_->GetObjectCount(), 0u);
    EXPECT_TRUE(Yield(list_->EnumerateObjects()).empty());
}

TEST_F(ObjectList, AddsInOrderWithAReferenceEach) {
    Add({0, 1, 2, 1});
    EXPECT_EQ(list_->GetObjectCount(), 4u);
    EXPECT_EQ(Members(), (TIndices{0, 1, 2, 1}));
    EXPECT_EQ(ReferencesOf(At(0)), 2);
    EXPECT_EQ(ReferencesOf(At(1)), 3);
}

TEST_F(ObjectList, GetAddsAReference) {
    Add({0, 1});
    const auto object = CRefPtr<IObject>::Adopt(list_->GetObject(1));
    EXPECT_EQ(object.Get(), At(1));
    EXPECT_EQ(ReferencesOf(At(1)), 3);
}

TEST_F(ObjectList, RemovingByIndexClosesTheGap) {
    Add({0, 1, 2});
    list_->RemoveObject(1u);
    EXPECT_EQ(Members(), (TIndices{0, 2}));
    EXPECT_EQ(ReferencesOf(At(1)), 1);
    list_->RemoveObject(1u);
    list_->RemoveObject(0u);
    EXPECT_EQ(list_->GetObjectCount(), 0u);
}

TEST_F(ObjectList, RemovingByObjectTakesTheFirstPlaceOnly) {
    Add({0, 1, 2, 1});
    list_->RemoveObject(At(1));
    EXPECT_EQ(Members(), (TIndices{0, 2, 1}));
    EXPECT_EQ(ReferencesOf(At(1)), 2);
    list_->RemoveObject(At(1));
    EXPECT_EQ(Members(), (TIndices{0, 2}));
    ExpectRaises<CObjectNotFoundException>(kRemoveNotFound, [&] { list_->RemoveObject(At(1)); });
}

TEST_F(ObjectList, FindsTheFirstPlace) {
    Add({0, 1, 2, 1});
    EXPECT_EQ(list_->FindObject(At(0)), 0);
    EXPECT_EQ(list_->FindObject(At(1)), 1);
    EXPECT_EQ(list_->FindObject(At(2)), 2);
    EXPECT_EQ(ReferencesOf(At(2)), 2);
}

TEST_F(ObjectList, RemovingAllReleasesEveryMember) {
    Add({0, 1, 0});
    list_->RemoveAllObjects();
    EXPECT_EQ(list_->GetObjectCount(), 0u);
    EXPECT_EQ(ReferencesOf(At(0)), 1);
    EXPECT_EQ(ReferencesOf(At(1)), 1);
    list_->RemoveAllObjects();
    Add({1});
    EXPECT_EQ(Members(), (TIndices{1}));
}

TEST_F(ObjectList, MembersNeedNotBeWrappedObjects) {
    // Identity is that of the pointer, so a list may hold lists, and itself.
    list_->AddObject(list_.Get());
    EXPECT_EQ(list_->FindObject(list_.Get()), 0);
    EXPECT_EQ(ReferencesOf(list_.Get()), 2);
    list_->RemoveObject(list_.Get());
    EXPECT_EQ(ReferencesOf(list_.Get()), 1);
}

TEST_F(ObjectList, ListThatHoldsOnlyItselfMayEmptyItself) {
    list_->AddObject(list_.Get());
    IObjectList* const list = list_.Detach();
    EXPECT_EQ(list->Release(), 1);
    CTestListener listener;
    list->AddListener(&listener);
    list->RemoveAllObjects();
    EXPECT_EQ(listener.GetCalls(), 1);
}

// Failures.

struct TFailureRow {
    const char* name;
    TExceptionType type;
    TFailure failure;
    std::function<void(IObjectList&)> call;
};

class ObjectListFailures : public ObjectList, public testing::WithParamInterface<TFailureRow> {};

void ExpectRow(const TFailureRow& row, IObjectList& list) {
    const auto call = [&] { row.call(list); };
    if (row.type == EXCEPTION_TYPE_BAD_INDEX)
        ExpectRaises<CBadIndexException>(row.failure, call);
    else
        ExpectRaises<CObjectNotFoundException>(row.failure, call);
}

TEST_P(ObjectListFailures, OfAnEmptyList) {
    ExpectRow(GetParam(), *list_);
    EXPECT_EQ(list_->GetObjectCount(), 0u);
}

TEST_P(ObjectListFailures, LeavesTheListAsItWas) {
    Add({0, 1, 0});
    ExpectRow(GetParam(), *list_);
    EXPECT_EQ(Members(), (TIndices{0, 1, 0}));
    EXPECT_EQ(ReferencesOf(At(0)), 3);
    EXPECT_EQ(ReferencesOf(At(1)), 2);
}

constexpr auto kBadIndex = EXCEPTION_TYPE_BAD_INDEX;
constexpr auto kNotFound = EXCEPTION_TYPE_OBJECT_NOT_FOUND;
constexpr unsigned int kMinusOne = static_cast<unsigned int>(-1);
INSTANTIATE_TEST_SUITE_P(
    Rows, ObjectListFailures,
    testing::Values(TFailureRow{"GetAtCount", kBadIndex, kGetBadIndex,
                                [](IObjectList& list) { list.GetObject(list.GetObjectCount()); }},
                    TFailureRow{"GetBeyondCount", kBadIndex, kGetBadIndex,
                                [](IObjectList& list) { list.GetObject(100); }},
                    TFailureRow{"GetAtMinusOne", kBadIndex, kGetBadIndex,
                                [](IObjectList& list) { list.GetObject(kMinusOne); }},
                    TFailureRow{"RemoveAtCount", kBadIndex, kRemoveBadIndex,
                                [](IObjectList& list) { list.RemoveObject(list.GetObjectCount()); }},
                    TFailureRow{"RemoveAtMinusOne", kBadIndex, kRemoveBadIndex,
                                [](IObjectList& list) { list.RemoveObject(kMinusOne); }},
                    TFailureRow{"RemoveUnknown", kNotFound, kRemoveNotFound,
                                [](IObjectList& list) { list.RemoveObject(NewProbe().Get()); }},
                    TFailureRow{"RemoveNull", kNotFound, kRemoveNotFound,
                                [](IObjectList& list) { list.RemoveObject(static_cast<IObject*>(nullptr)); }},
                    TFailureRow{"FindUnknown", kNotFound, kFindNotFound,
                                [](IObjectList& list) { list.FindObject(NewProbe().Get()); }},
                    TFailureRow{"FindNull", kNotFound, kFindNotFound,
                                [](IObjectList& list) { list.FindObject(nullptr); }}),
    [](const auto& row) { return row.param.name; });

// Enumerations.

TEST_F(ObjectList, EnumeratesInOrder) {
    Add({2, 0, 1, 0});
    EXPECT_EQ(Yield(list_->EnumerateObjects()), (TIndices{2, 0, 1, 0}));
    EXPECT_EQ(ReferencesOf(At(0)), 3);
}

TEST_F(ObjectList, EnumeratorIsACallersOwnSnapshot) {
    Add({0, 1, 2});
    const auto enumerator = CRefPtr<IObjectEnumerator>::Adopt(list_->EnumerateObjects());
    EXPECT_EQ(ReferencesOf(enumerator.Get()), 1);
    EXPECT_EQ(enumerator->GetClassId(), classid::CPushObjectEnumerator);
    EXPECT_EQ(ReferencesOf(At(0)), 3);
    list_->RemoveObject(1u);
    Add({3});
    EXPECT_EQ(Yield(CRefPtr<IObjectEnumerator>(enumerator).Detach()), (TIndices{0, 1, 2}));
}

TEST_F(ObjectList, SnapshotOutlivesTheList) {
    Add({0, 1});
    auto* const enumerator = list_->EnumerateObjects();
    list_.Reset();
    EXPECT_EQ(Yield(enumerator), (TIndices{0, 1}));
}

TEST_F(ObjectList, EnumeratorTakesANumber) {
    // The list itself is number 1.
    EXPECT_EQ(CRefPtr<IObjectEnumerator>::Adopt(list_->EnumerateObjects())->GetObjectNumber(), 2);
    EXPECT_EQ(CRefPtr<IObjectEnumerator>::Adopt(list_->EnumerateObjects(IPtrObject::InterfaceId))
                  ->GetObjectNumber(),
              3);
}

TEST_F(ObjectList, EnumeratesTheMembersOfAnInterface) {
    for (const CId& id : {classid::CPtrObject, classid::CObject, classid::CObjectList, classid::CPtrObject,
                          classid::CPushObjectEnumerator})
        objects_.Adopt(CreateAs<IObject>(id).Detach());
    Add({0, 1, 2, 3, 4});
    EXPECT_EQ(Yield(list_->EnumerateObjects(IObject::InterfaceId)), (TIndices{0, 1, 2, 3, 4}));
    EXPECT_EQ(Yield(list_->EnumerateObjects(IPtrObject::InterfaceId)), (TIndices{0, 3}));
    EXPECT_EQ(Yield(list_->EnumerateObjects(IObjectList::InterfaceId)), (TIndices{2}));
    // A base interface of the member's own.
    EXPECT_EQ(Yield(list_->EnumerateObjects(IObjectEnumerator::InterfaceId)), (TIndices{4}));
    EXPECT_TRUE(Yield(list_->EnumerateObjects(IStringObject::InterfaceId)).empty());
    EXPECT_TRUE(Yield(list_->EnumerateObjects({1, 2, 3, 4})).empty());
    EXPECT_TRUE(Yield(list_->EnumerateObjects(CId::Null())).empty());
    for (std::size_t i = 0; i < 5; ++i) EXPECT_EQ(ReferencesOf(At(i)), 2) << i;
}

TEST_F(ObjectList, ManyMembers) {
    constexpr std::size_t kCount = 10000;
    TIndices indices;
    for (std::size_t i = 0; i < kCount; ++i) indices.push_back(i % 7);
    Add(indices);
    EXPECT_EQ(list_->GetObjectCount(), kCount);
    EXPECT_EQ(Yield(list_->EnumerateObjects()), indices);
}

TEST_F(ObjectList, EnumerationNeedsTheClassStore) {
    Add({0});
    constexpr const wchar* kStore = VRL_L("src/vorlund/api/ClassStore");
    constexpr const wchar* kCreate = VRL_L("vorlund::CClassStore::CreateObject");
    const TObjectFactory makeEnumerator =
        v.GetClassStore().GetClassInfo(classid::CPushObjectEnumerator)->factory;
    v.GetClassStore().Clear();
    ExpectRaises<CClassNotFoundException>({kCreate, kStore, 68, VRL_L("Cannot find class")},
                                          [&] { list_->EnumerateObjects(); });
    ExpectRaises<CClassNotFoundException>({kCreate, kStore, 68, VRL_L("Cannot find class")},
                                          [&] { list_->EnumerateObjects(IObject::InterfaceId); });
    // A class of another origin is used as it is under the identifier.
    v.GetClassStore().RegisterClassVrl(
        {classid::CPushObjectEnumerator, VRL_L("test::COther"), makeEnumerator});
    EXPECT_EQ(Yield(list_->EnumerateObjects()), (TIndices{0}));
}

TEST_F(ObjectList, EnumeratorClassThatYieldsSomethingElseRaises) {
    Add({0});
    v.GetClassStore().Clear();
    v.GetClassStore().RegisterClassVrl({classid::CPushObjectEnumerator, nullptr, &NewObject<CProbe>});
    ExpectRaises<CBugException>(
        {VRL_L("vorlund::CObjectList::EnumerateObjects"), kFile, 96, VRL_L("Cannot create enumerator")},
        [&] { list_->EnumerateObjects(); });
    EXPECT_EQ(CProbe::alive, 1);
}

// The end.

TEST_F(ObjectList, EndReleasesTheMembersInOrderAfterTheListeners) {
    std::vector<int> log;
    CTestListener ofList([&](IObject*) { log.push_back(0); });
    std::vector<std::unique_ptr<CTestListener>> ofMembers;
    list_->AddListener(&ofList);
    for (int i = 1; i <= 3; ++i) {
        const auto member = NewProbe();
        ofMembers.push_back(std::make_unique<CTestListener>([&log, i](IObject*) { log.push_back(i); }));
        member->AddListener(ofMembers.back().get());
        list_->AddObject(member.Get());
    }
    list_.Reset();
    EXPECT_EQ(log, (std::vector<int>{0, 1, 2, 3}));
}

TEST_F(ObjectList, MemberAddedTwiceIsReleasedTwice) {
    Add({0, 0});
    list_.Reset();
    EXPECT_EQ(ReferencesOf(At(0)), 1);
}

TEST_F(ObjectList, MemberThatDiesMayChangeTheList) {
    // While its last reference goes, a member is in the list still.
    auto member = NewProbe();
    IObject* const dying = member.Get();
    CTestListener listener([&](IObject*) {
        EXPECT_EQ(list_->FindObject(dying), 0);
        list_->AddObject(At(0));
    });
    member->AddListener(&listener);
    list_->AddObject(member.Get());
    member.Reset();
    list_->RemoveObject(dying);
    EXPECT_EQ(listener.GetCalls(), 1);
    EXPECT_EQ(Members(), (TIndices{0}));
}

} // namespace
} // namespace vorlund::test
