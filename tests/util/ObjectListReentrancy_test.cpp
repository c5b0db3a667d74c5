// Members of a list that come back to it out of its calls on them: what they see, and that nothing breaks.
#include <vorlund/ClassIds.h>
#include <vorlund/Exception.h>
#include <vorlund/ObjectImpl.h>
#include <vorlund/ObjectList.h>
#include <vorlund/RefPtr.h>

#include "support/LibraryScope.h"

#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace vorlund::test {
namespace {

constexpr TFailure kOnRequest{VRL_L("test::CCallingMember::Release"), VRL_L("tests/util"), 1,
                              VRL_L("on request")};

/// A member with an action for each of the calls on it; an action is run once. It is destroyed with its last
/// reference, which `alive` shows.
class CCallingMember final : public IObject {
public:
    using TAction = std::function<void()>;

    static inline int alive = 0;

    CCallingMember() { ++alive; }

    int AddRef() override {
        ++calls.addRef;
        const int count = ++references_;
        Run(onAddRef);
        return count;
    }
    int Release() override {
        ++calls.release;
        Run(onRelease);
        const int count = --references_;
        if (count == 0) delete this;
        return count;
    }
    IObject* QueryInterface(const CId& interfaceId) override {
        ++calls.query;
        // It may give up its last reference in there.
        ++references_;
        Run(onQuery);
        if (interfaceId == IObject::InterfaceId) return this;
        if (--references_ == 0) delete this;
        return nullptr;
    }
    void AddListener(IObjectListener*) override {}
    void RemoveListener(IObjectListener*) override {}
    int GetObjectNumber() override { return 0; }
    CId GetClassId() override { return CId::Null(); }

    int References() const { return references_; }

    TAction onAddRef, onRelease, onQuery;
    struct {
        int addRef = 0, release = 0, query = 0;
    } calls;

private:
    ~CCallingMember() { --alive; }

    static void Run(TAction& action) {
        if (const TAction now = std::exchange(action, {})) now();
    }

    int references_ = 1;
};

class ObjectListReentrancy : public testing::Test {
protected:
    ~ObjectListReentrancy() noexcept override {}

    void TearDown() override {
        list_.Reset();
        for (CCallingMember* const member : members_) {
            EXPECT_EQ(member->References(), 1);
            member->Release();
        }
        EXPECT_EQ(CCallingMember::alive, 0);
    }

    /// A member, to which the test holds a reference.
    CCallingMember* Member() {
        members_.push_back(new CCallingMember);
        return members_.back();
    }
    /// A member of the list, which holds the only reference to it.
    CCallingMember* Owned() {
        auto* const member = new CCallingMember;
        list_->AddObject(member);
        member->Release();
        member->calls = {};
        return member;
    }
    int Count() { return static_cast<int>(list_->GetObjectCount()); }

    bool Has(IObject* object) {
        try {
            list_->FindObject(object);
            return true;
        } catch (const CObjectNotFoundException&) {
            return false;
        }
    }

    std::vector<IObject*> Yield(IObjectEnumerator* enumerator) {
        const auto owner = CRefPtr<IObjectEnumerator>::Adopt(enumerator);
        std::vector<IObject*> yielded;
        while (const auto object = CRefPtr<IObject>::Adopt(owner->GetNext())) yielded.push_back(object.Get());
        return yielded;
    }

    CLibraryScope library_;
    std::vector<CCallingMember*> members_;
    CRefPtr<IObjectList> list_ = CreateAs<IObjectList>(classid::CObjectList);
};

using TObjects = std::vector<IObject*>;

// What a member sees.

TEST_F(ObjectListReentrancy, AMemberIsReferencedBeforeItIsAppended) {
    CCallingMember* const member = Member();
    int count = -1;
    member->onAddRef = [&] {
        count = Count();
        EXPECT_FALSE(Has(member));
    };
    list_->AddObject(member);
    EXPECT_EQ(count, 0);
    EXPECT_EQ(Count(), 1);
}

TEST_F(ObjectListReentrancy, AMemberIsReleasedBeforeItIsRemoved) {
    for (const bool isByIndex : {false, true}) {
        CCallingMember* const member = Member();
        list_->AddObject(member);
        int count = -1;
        member->onRelease = [&] {
            count = Count();
            EXPECT_TRUE(Has(member));
        };
        isByIndex ? list_->RemoveObject(0u) : list_->RemoveObject(member);
        EXPECT_EQ(count, 1);
        EXPECT_EQ(Count(), 0);
    }
}

TEST_F(ObjectListReentrancy, AllMembersAreReleasedBeforeTheListIsEmptied) {
    std::vector<int> counts;
    for (int i = 0; i < 3; ++i) {
        CCallingMember* const member = Member();
        list_->AddObject(member);
        member->onRelease = [&, member] {
            counts.push_back(Count());
            EXPECT_TRUE(Has(member));
        };
    }
    list_->RemoveAllObjects();
    EXPECT_EQ(counts, (std::vector<int>{3, 3, 3}));
    EXPECT_EQ(Count(), 0);
}

TEST_F(ObjectListReentrancy, EveryMemberIsAskedForTheRootToo) {
    CCallingMember* const member = Member();
    list_->AddObject(member);
    EXPECT_EQ(Yield(list_->EnumerateObjects(IObject::InterfaceId)), TObjects{member});
    EXPECT_EQ(member->calls.query, 1);
    EXPECT_EQ(Yield(list_->EnumerateObjects()), TObjects{member});
    EXPECT_EQ(member->calls.query, 1);
}

// Every call on a member, with every change of the list inside it.

class ObjectListReentrancyTable : public ObjectListReentrancy {
public:
    /// What a member does to the list that is calling it.
    enum class TAct { Add, AddSelf, RemoveSelf, RemoveFirst, RemoveLast, RemoveAll, Enumerate, Query, Drop };

    void Do(TAct act, IObject* self) {
        if (!list_) return;
        IObjectList& list = *list_;
        switch (act) {
        case TAct::Add:
            Owned();
            break;
        case TAct::AddSelf:
            list.AddObject(self);
            break;
        case TAct::RemoveSelf:
            if (Has(self)) list.RemoveObject(self);
            break;
        case TAct::RemoveFirst:
            if (Count()) list.RemoveObject(0u);
            break;
        case TAct::RemoveLast:
            if (Count()) list.RemoveObject(static_cast<unsigned int>(Count() - 1));
            break;
        case TAct::RemoveAll:
            list.RemoveAllObjects();
            break;
        case TAct::Enumerate:
            Yield(list.EnumerateObjects());
            break;
        case TAct::Query:
            Yield(list.EnumerateObjects(IObject::InterfaceId));
            break;
        case TAct::Drop:
            list_.Reset();
            break;
        }
    }
};

TEST_F(ObjectListReentrancyTable, EveryChangeInsideEveryCall) {
    constexpr TAct acts[] = {TAct::Add,         TAct::AddSelf,    TAct::RemoveSelf,
                             TAct::RemoveFirst, TAct::RemoveLast, TAct::RemoveAll,
                             TAct::Enumerate,   TAct::Query,      TAct::Drop};
    // Operations of the list, each with the member at each of three places as the one that comes back.
    const std::function<void(CCallingMember*)> operations[] = {
        [this](CCallingMember* member) { list_->AddObject(member); },
        [this](CCallingMember* member) { list_->RemoveObject(member); },
        [this](CCallingMember* member) {
            list_->RemoveObject(static_cast<unsigned int>(list_->FindObject(member)));
        },
        [this](CCallingMember*) { list_->RemoveAllObjects(); },
        [this](CCallingMember*) { Yield(list_->EnumerateObjects()); },
        [this](CCallingMember*) { Yield(list_->EnumerateObjects(IObject::InterfaceId)); },
        [this](CCallingMember*) { Yield(list_->EnumerateObjects(CId::Null())); },
        [this](CCallingMember* member) {
            list_->GetObject(static_cast<unsigned int>(list_->FindObject(member)))->Release();
        },
        [this](CCallingMember*) { list_.Reset(); },
    };
    int cases = 0;
    for (const auto& operation : operations) {
        for (const TAct act : acts) {
            for (std::size_t place = 0; place < 3; ++place) {
                for (const bool isOwnedByList : {false, true}) {
                    list_ = CreateAs<IObjectList>(classid::CObjectList);
                    CCallingMember* member = nullptr;
                    for (std::size_t i = 0; i < 3; ++i) {
                        CCallingMember* const added = new CCallingMember;
                        list_->AddObject(added);
                        if (!isOwnedByList)
                            members_.push_back(added);
                        else
                            added->Release();
                        if (i == place) member = added;
                    }
                    member->onAddRef = member->onRelease = member->onQuery = [&, member] { Do(act, member); };
                    operation(member);
                    if (!isOwnedByList) member->onAddRef = member->onRelease = member->onQuery = {};
                    list_.Reset();
                    for (CCallingMember* const held : members_) {
                        EXPECT_EQ(held->References(), 1);
                        held->Release();
                    }
                    members_.clear();
                    EXPECT_EQ(CCallingMember::alive, 0) << "case " << cases;
                    ASSERT_FALSE(HasFailure()) << "case " << cases;
                    ++cases;
                }
            }
        }
    }
    EXPECT_EQ(cases, 9 * 9 * 3 * 2);
}

TEST_F(ObjectListReentrancy, AMemberThatAddsOneWhenReleasedEndsAllTheSame) {
    // Each one that is added does the same.
    int added = 0;
    IObjectList* const list = list_.Detach();
    std::function<void()> addAnother = [&] {
        auto* const member = new CCallingMember;
        ++added;
        list->AddObject(member);
        // The list has the only reference now, unless it takes no more members.
        if (member->Release() > 0) member->onRelease = addAnother;
    };
    addAnother();
    list->RemoveAllObjects();
    EXPECT_EQ(list->GetObjectCount(), 1u);
    list->Release();
    EXPECT_EQ(added, 4);
    EXPECT_EQ(CCallingMember::alive, 0);
}

TEST_F(ObjectListReentrancy, MembersThatStayAreEnumeratedThoughOthersLeave) {
    CCallingMember* const leaving = Member();
    CCallingMember* const staying = Member();
    CCallingMember* const last = Member();
    for (CCallingMember* const member : {leaving, staying, last}) list_->AddObject(member);
    leaving->onQuery = [&] { list_->RemoveObject(leaving); };
    EXPECT_EQ(Yield(list_->EnumerateObjects(IObject::InterfaceId)), (TObjects{staying, last}));
}

TEST_F(ObjectListReentrancy, MemberThatHasBeenReleasedIsNotHandedOut) {
    CCallingMember* const first = Owned();
    CCallingMember* const second = Member();
    list_->AddObject(second);
    second->onRelease = [&] {
        EXPECT_EQ(Count(), 2);
        EXPECT_FALSE(Has(first));
        EXPECT_THROW(list_->GetObject(0), CBadIndexException);
        EXPECT_EQ(Yield(list_->EnumerateObjects()), TObjects{second});
    };
    list_->RemoveAllObjects();
    EXPECT_EQ(Count(), 0);
}

TEST_F(ObjectListReentrancy, OfTwoPositionsOfAMemberTheReleasedOneGoes) {
    CCallingMember* const twice = Member();
    CCallingMember* const other = Member();
    for (CCallingMember* const member : {twice, other, twice}) list_->AddObject(member);
    twice->onRelease = [&] { list_->RemoveObject(1u); };
    list_->RemoveObject(2u);
    EXPECT_EQ(Yield(list_->EnumerateObjects()), TObjects{twice});
    EXPECT_EQ(twice->References(), 2);
    EXPECT_EQ(other->References(), 1);
}

TEST_F(ObjectListReentrancy, ListThatAnExceptionDestroysLetsThatOnePass) {
    CCallingMember* const raising = Member();
    CCallingMember* const last = Member();
    for (CCallingMember* const member : {raising, last}) list_->AddObject(member);
    raising->onRelease = [] { Raise<CIOException>(kOnRequest); };
    const auto act = [&] {
        const auto list = std::exchange(list_, {});
        throw std::runtime_error("first");
    };
    EXPECT_THROW(act(), std::runtime_error);
    EXPECT_EQ(last->References(), 1);
    // It raised before it gave the list's reference back.
    raising->Release();
}

TEST_F(ObjectListReentrancy, EnumerationWhoseListEndsWithAnExceptionLeavesNothing) {
    CCallingMember* const raising = Member();
    CCallingMember* const dropping = Member();
    for (CCallingMember* const member : {raising, dropping}) list_->AddObject(member);
    dropping->onQuery = [&] {
        list_.Reset();
        raising->onRelease = [] { Raise<CIOException>(kOnRequest); };
    };
    EXPECT_THROW(list_->EnumerateObjects(IObject::InterfaceId), CIOException);
    EXPECT_EQ(dropping->References(), 1);
    // It was interrupted before it gave the list's reference back.
    raising->Release();
}

TEST_F(ObjectListReentrancy, ManyMembersThatRemoveThemselvesAreReleasedOnce) {
    for (int i = 0; i < 100; ++i) {
        CCallingMember* const member = Owned();
        member->onRelease = [this, member] { list_->RemoveObject(member); };
    }
    list_->RemoveAllObjects();
    EXPECT_EQ(Count(), 0);
    EXPECT_EQ(CCallingMember::alive, 0);
}

} // namespace
} // namespace vorlund::test
