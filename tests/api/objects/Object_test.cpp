// The object model: counts, queries, listeners, serial numbers, and the order inside construction and
// destruction.
#include <vorlund/ClassIds.h>
#include <vorlund/ObjectList.h>
#include <vorlund/Vorlund.h>

#include "support/Failures.h"
#include "support/LibraryScope.h"
#include "support/Probes.h"

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace vorlund::test {
namespace {

constexpr CId kUnknownId{0x12345678, 0x9ABCDEF0, 0x0FEDCBA9, 0x87654321};
constexpr TFailure kCreateNotInitialized{VRL_L("vorlund::CObjectCounter::OnCreateObject"),
                                         VRL_L("src/vorlund/api/ObjectCounter"), 111,
                                         VRL_L("Not initialized")};
constexpr TFailure kDestroyNotInitialized{VRL_L("vorlund::CObjectCounter::OnDestroyObject"),
                                          VRL_L("src/vorlund/api/ObjectCounter"), 117,
                                          VRL_L("Not initialized")};

CRefPtr<IObject> Create(const CId& classId) {
    return CRefPtr<IObject>::Adopt(v.GetClassStore().CreateObject(classId));
}

class Object : public testing::Test {
protected:
    CLibraryScope library_;
};

// Serial numbers.

TEST_F(Object, NumbersGoOnAcrossClassesFromOne) {
    const auto first = Create(classid::CObject);
    const auto second = Create(classid::CPtrObject);
    const auto third = NewProbe();
    const auto fourth = Create(classid::CObject);
    EXPECT_EQ(first->GetObjectNumber(), 1);
    EXPECT_EQ(second->GetObjectNumber(), 2);
    EXPECT_EQ(third->GetObjectNumber(), 3);
    EXPECT_EQ(fourth->GetObjectNumber(), 4);
    EXPECT_EQ(first->GetObjectNumber(), 1);
}

TEST_F(Object, NumbersAreNotUsedAgain) {
    EXPECT_EQ(Create(classid::CObject)->GetObjectNumber(), 1);
    EXPECT_EQ(Create(classid::CObject)->GetObjectNumber(), 2);
}

TEST_F(Object, NumbersRestartWithTheLibrary) {
    for (int i = 0; i < 3; ++i) Create(classid::CObject).Reset();
    v.Close();
    v.Init();
    EXPECT_EQ(Create(classid::CObject)->GetObjectNumber(), 1);
}

// References.

TEST_F(Object, CountStartsAtOneAndIsReturned) {
    IObject* const object = NewObject<CProbe>();
    EXPECT_EQ(object->AddRef(), 2);
    EXPECT_EQ(object->AddRef(), 3);
    EXPECT_EQ(object->Release(), 2);
    EXPECT_EQ(object->Release(), 1);
    EXPECT_EQ(CProbe::alive, 1);
    EXPECT_EQ(object->Release(), 0);
    EXPECT_EQ(CProbe::alive, 0);
}

TEST_F(Object, QueryForIObjectAddsAReference) {
    const auto object = Create(classid::CObject);
    const auto same = CRefPtr<IObject>::Adopt(object->QueryInterface(IObject::InterfaceId));
    EXPECT_EQ(same.Get(), object.Get());
    EXPECT_EQ(ReferencesOf(object.Get()), 2);
}

TEST_F(Object, QueryForSomethingElseLeavesTheCount) {
    const auto object = Create(classid::CObject);
    for (const CId& id : {kUnknownId, CId::Null(), IObjectList::InterfaceId, classid::CObject}) {
        EXPECT_EQ(object->QueryInterface(id), nullptr);
        EXPECT_EQ(ReferencesOf(object.Get()), 1);
    }
}

TEST_F(Object, ClassIdentifierIsThatOfTheClass) {
    EXPECT_EQ(Create(classid::CObject)->GetClassId(), classid::CObject);
    EXPECT_EQ(NewProbe()->GetClassId(), CProbe::ClassId);
}

// Listeners.

TEST_F(Object, ListenersHearInOrderAndOncePerAddition) {
    std::vector<int> heard;
    CTestListener first([&](IObject*) { heard.push_back(1); });
    CTestListener second([&](IObject*) { heard.push_back(2); });
    CTestListener third([&](IObject*) { heard.push_back(3); });
    auto object = NewProbe();
    for (CTestListener* listener : {&second, &first, &third, &first}) object->AddListener(listener);
    EXPECT_TRUE(heard.empty());
    object.Reset();
    EXPECT_EQ(heard, (std::vector<int>{2, 1, 3, 1}));
    EXPECT_EQ(CProbe::alive, 0);
}

TEST_F(Object, ListenerHearsOnlyTheEnd) {
    CTestListener listener;
    auto object = NewProbe();
    object->AddListener(&listener);
    object->AddRef();
    object->Release();
    EXPECT_EQ(listener.GetCalls(), 0);
    object.Reset();
    EXPECT_EQ(listener.GetCalls(), 1);
}

TEST_F(Object, RemovingTakesEveryOccurrence) {
    CTestListener removed, kept;
    auto object = NewProbe();
    for (CTestListener* listener : {&removed, &kept, &removed}) object->AddListener(listener);
    object->RemoveListener(&removed);
    object.Reset();
    EXPECT_EQ(removed.GetCalls(), 0);
    EXPECT_EQ(kept.GetCalls(), 1);
}

TEST_F(Object, RemovingWhatIsNotThereIsNoError) {
    CTestListener unknown, known;
    auto object = NewProbe();
    object->RemoveListener(&unknown);
    object->AddListener(&known);
    object->RemoveListener(&unknown);
    object->RemoveListener(nullptr);
    object.Reset();
    EXPECT_EQ(known.GetCalls(), 1);
}

TEST_F(Object, ListenerAddedAgainAfterItsRemovalHears) {
    CTestListener listener;
    auto object = NewProbe();
    object->AddListener(&listener);
    object->RemoveListener(&listener);
    object->AddListener(&listener);
    object.Reset();
    EXPECT_EQ(listener.GetCalls(), 1);
}

TEST_F(Object, NullListenersAreAcceptedAndPassedOver) {
    CTestListener listener;
    auto object = NewProbe();
    object->AddListener(nullptr);
    object->AddListener(&listener);
    object->AddListener(nullptr);
    object.Reset();
    EXPECT_EQ(listener.GetCalls(), 1);
}

TEST_F(Object, ListenersAreNotReferenced) {
    const auto listener = CreateAs<IObjectListener>(classid::CObjectListener);
    auto object = NewProbe();
    object->AddListener(listener.Get());
    EXPECT_EQ(ReferencesOf(listener.Get()), 1);
    object->RemoveListener(listener.Get());
    EXPECT_EQ(ReferencesOf(listener.Get()), 1);
}

// The order inside objects: listeners hear first, while the object is whole.

TEST_F(Object, DyingObjectIsWhole) {
    int content = 0;
    bool heard = false;
    auto object = CreateAs<IPtrObject>(classid::CPtrObject);
    const int number = object->GetObjectNumber();
    CTestListener listener([&](IObject* dying) {
        heard = true;
        EXPECT_EQ(dying, object.Get());
        EXPECT_EQ(dying->GetObjectNumber(), number);
        EXPECT_EQ(dying->GetClassId(), classid::CPtrObject);
        // The most derived interface still answers, and its operations work.
        const auto whole = CRefPtr<IPtrObject>::Adopt(
            static_cast<IPtrObject*>(dying->QueryInterface(IPtrObject::InterfaceId)));
        ASSERT_TRUE(whole);
        EXPECT_EQ(whole->GetPtr(), &content);
    });
    object->SetPtr(&content);
    object->AddListener(&listener);
    IObject* const last = object.Get();
    last->Release();
    EXPECT_TRUE(heard);
    (void)object.Detach();
}

TEST_F(Object, DyingListStillHasItsMembers) {
    auto list = CreateAs<IObjectList>(classid::CObjectList);
    for (int i = 0; i < 3; ++i) list->AddObject(NewProbe().Get());
    IObjectList* const whole = list.Get();
    int alive = -1;
    CTestListener listener([&](IObject*) {
        alive = CProbe::alive;
        EXPECT_EQ(whole->GetObjectCount(), 3u);
        EXPECT_EQ(CRefPtr<IObject>::Adopt(whole->GetObject(2))->GetClassId(), CProbe::ClassId);
        const auto members = CRefPtr<IObjectEnumerator>::Adopt(whole->EnumerateObjects());
        EXPECT_TRUE(members->HasNext());
    });
    list->AddListener(&listener);
    list.Reset();
    EXPECT_EQ(alive, 3);
    EXPECT_EQ(CProbe::alive, 0);
}

TEST_F(Object, QueryAndReleaseOfTheDyingObjectStartNoSecondEnd) {
    auto object = NewProbe();
    std::vector<int> counts;
    CTestListener listener([&](IObject* dying) {
        EXPECT_EQ(dying->QueryInterface(IObject::InterfaceId), dying);
        counts.push_back(dying->AddRef());
        counts.push_back(dying->Release());
        counts.push_back(dying->Release());
        EXPECT_EQ(CProbe::alive, 1);
    });
    object->AddListener(&listener);
    object->AddListener(&listener);
    EXPECT_EQ(object.Detach()->Release(), 0);
    EXPECT_EQ(counts, (std::vector<int>{2, 1, 0, 2, 1, 0}));
    EXPECT_EQ(listener.GetCalls(), 2);
    EXPECT_EQ(CProbe::alive, 0);
}

TEST_F(Object, ListenerMayRemoveItself) {
    auto object = NewProbe();
    CTestListener* self = nullptr;
    CTestListener first([&](IObject* dying) { dying->RemoveListener(self); });
    CTestListener second;
    self = &first;
    for (CTestListener* listener : {&first, &second, &first}) object->AddListener(listener);
    object.Reset();
    EXPECT_EQ(first.GetCalls(), 1);
    EXPECT_EQ(second.GetCalls(), 1);
}

TEST_F(Object, ListenerMayRemoveOthers) {
    auto object = NewProbe();
    CTestListener earlier, later, last;
    CTestListener remover([&](IObject* dying) {
        dying->RemoveListener(&earlier);
        dying->RemoveListener(&later);
        dying->RemoveListener(&later);
    });
    for (CTestListener* listener : {&earlier, &remover, &later, &last, &later}) object->AddListener(listener);
    object.Reset();
    EXPECT_EQ(earlier.GetCalls(), 1);
    EXPECT_EQ(remover.GetCalls(), 1);
    EXPECT_EQ(later.GetCalls(), 0);
    EXPECT_EQ(last.GetCalls(), 1);
}

TEST_F(Object, ListenersAddedWhileTheObjectDiesAreNotTold) {
    auto object = NewProbe();
    // So many that the sequence moves.
    std::vector<std::unique_ptr<CTestListener>> late;
    for (int i = 0; i < 100; ++i) late.push_back(std::make_unique<CTestListener>());
    CTestListener adder([&](IObject* dying) {
        for (const auto& listener : late) dying->AddListener(listener.get());
    });
    CTestListener last;
    object->AddListener(&adder);
    object->AddListener(&last);
    object.Reset();
    EXPECT_EQ(adder.GetCalls(), 1);
    EXPECT_EQ(last.GetCalls(), 1);
    for (const auto& listener : late) EXPECT_EQ(listener->GetCalls(), 0);
}

TEST_F(Object, ListenerThatRemovesAndAddsItselfIsToldOnce) {
    auto object = NewProbe();
    CTestListener* self = nullptr;
    CTestListener listener([&](IObject* dying) {
        dying->RemoveListener(self);
        dying->AddListener(self);
    });
    self = &listener;
    object->AddListener(&listener);
    object->AddListener(&listener);
    object.Reset();
    EXPECT_EQ(listener.GetCalls(), 1);
}

TEST_F(Object, ListenerMayEndTheListenersAfterIt) {
    auto object = NewProbe();
    auto later = std::make_unique<CTestListener>();
    CTestListener first([&](IObject* dying) {
        dying->RemoveListener(later.get());
        later.reset();
    });
    object->AddListener(&first);
    object->AddListener(later.get());
    object.Reset();
    EXPECT_EQ(first.GetCalls(), 1);
}

TEST_F(Object, ListenerMayEndOtherObjects) {
    auto object = NewProbe();
    auto other = NewProbe();
    CTestListener ofOther, ofObject([&](IObject*) { other.Reset(); });
    object->AddListener(&ofObject);
    other->AddListener(&ofOther);
    object.Reset();
    EXPECT_EQ(ofOther.GetCalls(), 1);
    EXPECT_EQ(CProbe::alive, 0);
}

TEST_F(Object, WhatAListenerRaisesPassesOnAndTheObjectIsGone) {
    auto object = NewProbe();
    CTestListener raising([](IObject*) { throw std::runtime_error("listener"); });
    CTestListener later;
    object->AddListener(&raising);
    object->AddListener(&later);
    EXPECT_THROW(object.Reset(), std::runtime_error);
    EXPECT_EQ(later.GetCalls(), 0);
    EXPECT_EQ(CProbe::alive, 0);
    EXPECT_FALSE(object);
}

// The number comes last, when the object is whole.

class CParent : public CObjectImpl<IObject> {
public:
    static constexpr CId ClassId{0x1BADB002, 0x00000002, 0x50415245, 0x0000004E};

    CRefPtr<IObject> child = NewProbe();
    int numberInConstructor;

protected:
    CParent() : numberInConstructor(GetObjectNumber()) {}
    ~CParent() noexcept(false) = default;
};

TEST_F(Object, NumberIsTakenAfterTheMembersAreBuilt) {
    const auto object = CRefPtr<IObject>::Adopt(NewObject<CParent>());
    const auto* const parent = static_cast<CParent*>(object.Get());
    EXPECT_EQ(parent->child->GetObjectNumber(), 1);
    EXPECT_EQ(object->GetObjectNumber(), 2);
    EXPECT_EQ(parent->numberInConstructor, 0);
}

class CRefusing : public CObjectImpl<IObject> {
public:
    static constexpr CId ClassId{0x1BADB002, 0x00000003, 0x52454655, 0x00000053};

    CRefPtr<IObject> child = NewProbe();

protected:
    CRefusing() { throw std::runtime_error("constructor"); }
    ~CRefusing() noexcept(false) = default;
};

TEST_F(Object, FailedConstructionTakesNoNumber) {
    EXPECT_THROW(NewObject<CRefusing>(), std::runtime_error);
    EXPECT_EQ(CProbe::alive, 0);
    // Number 1 went to the child.
    EXPECT_EQ(NewProbe()->GetObjectNumber(), 2);
}

class CSharedInConstructor : public CObjectImpl<IObject> {
public:
    static constexpr CId ClassId{0x1BADB002, 0x00000004, 0x53484152, 0x00000045};

protected:
    CSharedInConstructor() {
        const auto self = CRefPtr<IObject>::Share(this);
        EXPECT_EQ(ReferencesOf(this), 2);
        EXPECT_EQ(self->QueryInterface(IObject::InterfaceId), nullptr);
        EXPECT_EQ(self->GetClassId(), CId::Null());
    }
};

TEST_F(Object, ConstructorMayHandOutTheObject) {
    const auto object = CRefPtr<IObject>::Adopt(NewObject<CSharedInConstructor>());
    EXPECT_EQ(ReferencesOf(object.Get()), 1);
    EXPECT_EQ(object->GetClassId(), CSharedInConstructor::ClassId);
}

TEST_F(Object, MembersThatDieMayStillAskTheObject) {
    auto list = CreateAs<IObjectList>(classid::CObjectList);
    IObjectList* const owner = list.Get();
    CTestListener ofMember([&](IObject*) {
        // The list is past its own end: it answers, but offers nothing and dies no second time.
        owner->AddRef();
        owner->Release();
        EXPECT_EQ(owner->QueryInterface(IObjectList::InterfaceId), nullptr);
        EXPECT_EQ(owner->GetObjectCount(), 0u);
    });
    for (int i = 0; i < 2; ++i) {
        const auto member = NewProbe();
        member->AddListener(&ofMember);
        list->AddObject(member.Get());
    }
    list.Reset();
    EXPECT_EQ(ofMember.GetCalls(), 2);
    EXPECT_EQ(CProbe::alive, 0);
}

// Only while the library is initialised.

TEST(ObjectOutsideTheLibrary, ConstructionFails) {
    ExpectRaises<CBugException>(kCreateNotInitialized, [] { NewObject<CProbe>(); });
    EXPECT_EQ(CProbe::alive, 0);
    v.Init();
    v.Close();
    ExpectRaises<CBugException>(kCreateNotInitialized, [] { NewObject<CProbe>(); });
    EXPECT_EQ(CProbe::alive, 0);
}

TEST(ObjectOutsideTheLibrary, FactoryOfAClassFails) {
    v.Init();
    const TObjectFactory factory = v.GetClassStore().GetClassInfo(classid::CObject)->factory;
    v.Close();
    ExpectRaises<CBugException>(kCreateNotInitialized, [&] { factory(); });
}

TEST(ObjectOutsideTheLibrary, DestructionFailsAndTheObjectIsGone) {
    v.Init();
    IObject* const object = NewObject<CProbe>();
    v.Close();
    EXPECT_EQ(object->AddRef(), 2);
    EXPECT_EQ(object->Release(), 1);
    EXPECT_EQ(object->GetObjectNumber(), 1);
    ExpectRaises<CBugException>(kDestroyNotInitialized, [&] { object->Release(); });
    EXPECT_EQ(CProbe::alive, 0);
}

TEST(ObjectOutsideTheLibrary, ListenersHearBeforeTheFailure) {
    v.Init();
    IObject* const object = NewObject<CProbe>();
    CTestListener listener([](IObject* dying) { EXPECT_EQ(dying->GetClassId(), CProbe::ClassId); });
    object->AddListener(&listener);
    v.Close();
    ExpectRaises<CBugException>(kDestroyNotInitialized, [&] { object->Release(); });
    EXPECT_EQ(listener.GetCalls(), 1);
}

TEST(ObjectOutsideTheLibrary, ObjectOfAClosedLibraryMayDieInTheNextOne) {
    v.Init();
    IObject* const object = NewObject<CProbe>();
    v.Close();
    v.Init();
    EXPECT_EQ(object->Release(), 0);
    EXPECT_EQ(NewProbe()->GetObjectNumber(), 1);
    v.Close();
}

} // namespace
} // namespace vorlund::test
