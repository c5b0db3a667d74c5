// Objects, stores and the library object when memory runs out: every allocation of an operation fails once,
// and what was there before is still there.
#include <vorlund/ClassIds.h>
#include <vorlund/Exception.h>
#include <vorlund/ObjectList.h>
#include <vorlund/Vorlund.h>

#include "support/Allocations.h"
#include "support/DebugRecorder.h"
#include "support/LibraryScope.h"
#include "support/Probes.h"

#include <gtest/gtest.h>

#include <new>
#include <vector>

namespace vorlund::test {
namespace {

/// Runs `act` with its first allocation refused, then with its second, and so on until none is; after each
/// refusal that passed out of it, runs `afterFailure`. Returns the number of refusals.
template <class TAct, class TAfter> int FailEachAllocation(TAct act, TAfter afterFailure) {
    for (int successes = 0;; ++successes) {
        bool hasRaised = false;
        bool hasFailed = false;
        {
            const CAllocationFailure failure(static_cast<std::size_t>(successes));
            try {
                act();
            } catch (const std::bad_alloc&) {
                hasRaised = true;
            }
            hasFailed = failure.HasFailed();
        }
        EXPECT_EQ(hasRaised, hasFailed) << "allocation " << successes;
        if (!hasFailed) return successes;
        afterFailure();
        if (testing::Test::HasFailure()) return successes;
    }
}

std::vector<const TClassInfo*> Classes(const CClassStore& store) {
    std::vector<const TClassInfo*> classes;
    const auto enumerator = CRefPtr<IObjectEnumerator>::Adopt(store.EnumerateClasses());
    while (const auto item = CRefPtr<IObject>::Adopt(enumerator->GetNext()))
        classes.push_back(static_cast<const TClassInfo*>(item.Query<IPtrObject>()->GetPtr()));
    return classes;
}

TEST(OutOfMemory, InitLeavesWhatItHasDoneAndMayBeRepeated) {
    v.Init();
    const std::size_t builtins = Classes(v.GetClassStore()).size();
    v.Close();
    const CDebugRecorder recorder;
    const int refusals =
        FailEachAllocation([] { v.Init(); },
                           [&] {
                               // Not initialised: closing does nothing, so a second start
                               // finds the stores open and registers every class again.
                               v.Close();
                               v.Init();
                               const auto classes = Classes(v.GetClassStore());
                               EXPECT_GE(classes.size(), builtins);
                               EXPECT_LE(classes.size(), 2 * builtins);
                               for (const TClassInfo* const info : classes) {
                                   const auto* found = v.GetClassStore().GetClassInfo(info->id);
                                   EXPECT_EQ(found->name, info->name);
                               }
                               v.Close();
                               EXPECT_THROW(v.GetClassStore().GetClassInfo({}), CBugException);
                               EXPECT_THROW(v.GetObjectCounter().OnCreateObject({}), CBugException);
                           });
    EXPECT_GT(refusals, static_cast<int>(builtins));
    EXPECT_EQ(CreateAs<IObject>(classid::CObject)->GetObjectNumber(), 1);
    v.Close();
}

TEST(OutOfMemory, RepeatedInitFindsTheCounterAndThePartOfTheClasses) {
    // The counter is the last thing that Init allocates before it looks for plug-ins.
    int last = 0;
    {
        const CAllocationCount count;
        v.Init();
        const std::size_t whole = count.Get();
        v.GetPluginStore().LoadAvailablePlugins();
        const std::size_t search = count.Get() - whole;
        last = static_cast<int>(whole - search) - 1;
        v.Close();
    }
    {
        const CAllocationFailure failure(static_cast<std::size_t>(last));
        EXPECT_THROW(v.Init(), std::bad_alloc);
    }
    EXPECT_THROW(v.GetObjectCounter().OnCreateObject({}), CBugException);
    EXPECT_EQ(Narrow(v.GetClassStore().GetClassInfo(classid::CObject)->name), "vorlund::CObject");
    v.Init();
    // The whole table twice, in order.
    const auto classes = Classes(v.GetClassStore());
    const std::size_t half = classes.size() / 2;
    ASSERT_EQ(classes.size(), 2 * half);
    for (std::size_t i = 0; i < half; ++i) {
        EXPECT_EQ(classes[i]->id, classes[half + i]->id);
        EXPECT_EQ(v.GetClassStore().GetClassInfo(classes[i]->id), classes[i]);
    }
    v.Close();
}

TEST(OutOfMemory, RegistrationIsWholeOrNotAtAll) {
    const CLibraryScope library;
    CClassStore store;
    store.Init();
    // Enough classes that every table of the store has to grow at some of the registrations.
    std::vector<wstring> names;
    for (unsigned int i = 0; i < 200; ++i) names.push_back(CId(1, 2, 3, i).ToString());
    int refusals = 0;
    for (unsigned int i = 0; i < names.size(); ++i) {
        const CId id(9, 9, 9, i);
        refusals += FailEachAllocation(
            [&] {
                store.RegisterClassVrl({id, names[i].c_str(), nullptr});
            },
            [&] {
                EXPECT_THROW(store.GetClassInfo(id), CClassNotFoundException);
                EXPECT_THROW(store.GetClassInfo(names[i].c_str()), CClassNotFoundException);
                EXPECT_EQ(Classes(store).size(), i);
            });
        EXPECT_EQ(store.GetClassInfo(id), store.GetClassInfo(names[i].c_str()));
    }
    EXPECT_GE(refusals, 2 * 200);
    store.Close();
}

TEST(OutOfMemory, InitOfAStoreLeavesItClosed) {
    CClassStore store;
    const int refusals =
        FailEachAllocation([&] { store.Init(); },
                           [&] {
                               EXPECT_THROW(store.RegisterClassVrl({{}, nullptr, nullptr}), CBugException);
                           });
    EXPECT_GE(refusals, 1);
    store.Close();
}

TEST(OutOfMemory, InitOfTheCounterLeavesItAsItWas) {
    CObjectCounter counter;
    FailEachAllocation([&] { counter.Init(); },
                       [&] { EXPECT_THROW(counter.OnCreateObject({}), CBugException); });
    EXPECT_EQ(counter.OnCreateObject({}), 1);
    FailEachAllocation([&] { counter.Init(); }, [&] { EXPECT_EQ(counter.OnCreateObject({}), 2); });
    counter.Close();
}

TEST(OutOfMemory, ObjectThatIsNotMadeTakesNoNumber) {
    const CLibraryScope library;
    IObject* object = nullptr;
    const int refusals =
        FailEachAllocation([&] { object = v.GetClassStore().CreateObject(classid::CObject); },
                           [] { EXPECT_EQ(CProbe::alive, 0); });
    EXPECT_EQ(refusals, 1);
    EXPECT_EQ(object->GetObjectNumber(), 1);
    object->Release();
}

TEST(OutOfMemory, ListenerThatIsNotAddedIsNotTold) {
    const CLibraryScope library;
    auto object = NewProbe();
    CTestListener listener;
    int added = 0;
    for (int i = 0; i < 20; ++i) {
        FailEachAllocation([&] { object->AddListener(&listener); }, [] {});
        ++added;
    }
    object.Reset();
    EXPECT_EQ(listener.GetCalls(), added);
}

TEST(OutOfMemory, MembersThatAreNotAddedAreNotReferenced) {
    const CLibraryScope library;
    const auto member = NewProbe();
    auto list = CreateAs<IObjectList>(classid::CObjectList);
    auto enumerator = CreateAs<IPushObjectEnumerator>(classid::CPushObjectEnumerator);
    for (int i = 0; i < 20; ++i) {
        const int references = ReferencesOf(member.Get());
        FailEachAllocation([&] { list->AddObject(member.Get()); },
                           [&] { EXPECT_EQ(ReferencesOf(member.Get()), references); });
        FailEachAllocation([&] { enumerator->Push(member.Get()); },
                           [&] { EXPECT_EQ(ReferencesOf(member.Get()), references + 1); });
        EXPECT_EQ(ReferencesOf(member.Get()), references + 2);
    }
    EXPECT_EQ(list->GetObjectCount(), 20u);
    list.Reset();
    enumerator.Reset();
    EXPECT_EQ(ReferencesOf(member.Get()), 1);
}

TEST(OutOfMemory, EnumerationsReleaseWhatTheyHave) {
    const CLibraryScope library;
    const auto member = NewProbe();
    const auto list = CreateAs<IObjectList>(classid::CObjectList);
    for (int i = 0; i < 5; ++i) list->AddObject(member.Get());
    CRefPtr<IObjectEnumerator> enumerator;
    FailEachAllocation([&] { enumerator = CRefPtr<IObjectEnumerator>::Adopt(list->EnumerateObjects()); },
                       [&] { EXPECT_EQ(ReferencesOf(member.Get()), 6); });
    EXPECT_EQ(ReferencesOf(member.Get()), 11);
    const int refusals = FailEachAllocation(
        [&] { enumerator = CRefPtr<IObjectEnumerator>::Adopt(v.GetClassStore().EnumerateClasses()); }, [] {});
    EXPECT_GT(refusals, 19);
    EXPECT_EQ(ReferencesOf(member.Get()), 6);
    // The factories that failed have left the store's lock with this thread; CLibraryScope closes all the
    // same.
}

TEST(OutOfMemory, CountingAndAskingAllocateNothing) {
    const CLibraryScope library;
    const auto list = CreateAs<IObjectList>(classid::CObjectList);
    CTestListener listener;
    const CAllocationCount count;
    for (int i = 0; i < 100; ++i) {
        list->AddRef();
        list->QueryInterface(IObject::InterfaceId);
        list->Release();
        list->Release();
        list->RemoveListener(&listener);
        v.GetClassStore().GetClassInfo(classid::CObject);
        v.GetClassStore().GetClassInfo(VRL_L("vorlund::CObject"));
    }
    EXPECT_EQ(count.Get(), 0u);
}

TEST(OutOfMemory, CreationAllocatesTheObjectOnly) {
    const CLibraryScope library;
    const CAllocationCount count;
    for (const CId& id : {classid::CObject, classid::CPtrObject, classid::CObjectList})
        v.GetClassStore().CreateObject(id)->Release();
    v.GetClassStore().CreateObject(VRL_L("vorlund::CObject"))->Release();
    EXPECT_EQ(count.Get(), 4u);
}

} // namespace
} // namespace vorlund::test
