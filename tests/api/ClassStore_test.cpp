#include <vorlund/ClassIds.h>
#include <vorlund/ClassStore.h>
#include <vorlund/ObjectList.h>
#include <vorlund/RefPtr.h>
#include <vorlund/Vorlund.h>

#include "support/DebugRecorder.h"
#include "support/Failures.h"
#include "support/Leaks.h"
#include "support/LibraryScope.h"
#include "support/Probes.h"

#include <gtest/gtest.h>

#include <functional>
#include <latch>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace vorlund::test {
namespace {

constexpr const wchar* kFile = VRL_L("src/vorlund/api/ClassStore");
constexpr const wchar* kCreateObject = VRL_L("vorlund::CClassStore::CreateObject");
constexpr const wchar* kGetClassInfo = VRL_L("vorlund::CClassStore::GetClassInfo");
constexpr const wchar* kGetClass = VRL_L("vorlund::CClassStore::GetClass");
constexpr TFailure kCreateByIdClosed{kCreateObject, kFile, 60, VRL_L("Not initialized")};
constexpr TFailure kCreateByIdNotFound{kCreateObject, kFile, 68, VRL_L("Cannot find class")};
constexpr TFailure kCreateByNameClosed{kCreateObject, kFile, 77, VRL_L("Not initialized")};
constexpr TFailure kCreateByNameNotFound{kCreateObject, kFile, 85, VRL_L("")};
constexpr TFailure kGetByIdClosed{kGetClassInfo, kFile, 112, VRL_L("Not initialized")};
constexpr TFailure kGetByIdNotFound{kGetClass, kFile, 125, VRL_L("")};
constexpr TFailure kGetByNameClosed{kGetClassInfo, kFile, 130, VRL_L("Not initialized")};
constexpr TFailure kGetByNameNotFound{kGetClass, kFile, 143, VRL_L("")};
constexpr TFailure kRegisterClosed{VRL_L("vorlund::CClassStore::RegisterClassVrl"), kFile, 148,
                                   VRL_L("Not initialized")};
constexpr TFailure kNotClosed{VRL_L("vorlund::CClassStore::~CClassStore"), kFile, 28, VRL_L("Not closed")};

constexpr CId kFirstId{0xC1A55, 0, 0, 1};
constexpr CId kSecondId{0xC1A55, 0, 0, 2};
constexpr CId kThirdId{0xC1A55, 0, 0, 3};
constexpr const wchar* kFirstName = VRL_L("test::CFirst");
constexpr const wchar* kSecondName = VRL_L("test::CSecond");

IObject* MakeNothing() {
    return nullptr;
}
const TClassInfo kFirst(kFirstId, kFirstName, &MakeNothing);

/// An open store of its own, and the library, which its enumerations and objects need.
class ClassStore : public testing::Test {
protected:
    ClassStore() { store_.Init(); }
    ~ClassStore() noexcept override { store_.Close(); }

    void Register(const CId& id, const wchar* name, TObjectFactory factory = &MakeNothing) {
        store_.RegisterClassVrl({id, name, factory});
    }

    CLibraryScope library_;
    CClassStore store_;
};

// Failures.

struct TFailureRow {
    const char* name;
    TExceptionType type;
    TFailure failure;
    std::function<void(CClassStore&)> call;
    bool isOpen;
};

class ClassStoreFailures : public testing::TestWithParam<TFailureRow> {};

void ExpectRow(const TFailureRow& row, CClassStore& store) {
    const auto call = [&] { row.call(store); };
    if (row.type == EXCEPTION_TYPE_BUG)
        ExpectRaises<CBugException>(row.failure, call);
    else
        ExpectRaises<CClassNotFoundException>(row.failure, call);
}

TEST_P(ClassStoreFailures, OfAStore) {
    CClassStore store;
    if (GetParam().isOpen) {
        store.Init();
        store.RegisterClassVrl(kFirst);
    }
    ExpectRow(GetParam(), store);
    // Not even a failure leaves the lock: another thread gets the same answer.
    std::thread([&] { ExpectRow(GetParam(), store); }).join();
    store.Close();
}

TEST_P(ClassStoreFailures, OfAStoreThatWasClosedOrCleared) {
    CClassStore store;
    store.Init();
    store.RegisterClassVrl({kSecondId, kSecondName, &MakeNothing});
    GetParam().isOpen ? store.Clear() : store.Close();
    ExpectRow(GetParam(), store);
    store.Close();
}

TEST_P(ClassStoreFailures, OfTheLibrarysStore) {
    std::optional<CLibraryScope> library;
    if (GetParam().isOpen) library.emplace();
    ExpectRow(GetParam(), v.GetClassStore());
}

constexpr auto kBug = EXCEPTION_TYPE_BUG;
constexpr auto kNotFound = EXCEPTION_TYPE_CLASS_NOT_FOUND;
INSTANTIATE_TEST_SUITE_P(
    Rows, ClassStoreFailures,
    testing::Values(
        TFailureRow{"CreateByIdClosed", kBug, kCreateByIdClosed,
                    [](CClassStore& store) { store.CreateObject(kSecondId); }, false},
        TFailureRow{"CreateByIdNotFound", kNotFound, kCreateByIdNotFound,
                    [](CClassStore& store) { store.CreateObject(kSecondId); }, true},
        TFailureRow{"CreateByNameClosed", kBug, kCreateByNameClosed,
                    [](CClassStore& store) { store.CreateObject(kSecondName); }, false},
        TFailureRow{"CreateByNameNotFound", kNotFound, kCreateByNameNotFound,
                    [](CClassStore& store) { store.CreateObject(kSecondName); }, true},
        TFailureRow{"GetByIdClosed", kBug, kGetByIdClosed,
                    [](CClassStore& store) { store.GetClassInfo(kSecondId); }, false},
        TFailureRow{"GetByIdNotFound", kNotFound, kGetByIdNotFound,
                    [](CClassStore& store) { store.GetClassInfo(kSecondId); }, true},
        TFailureRow{"GetByNameClosed", kBug, kGetByNameClosed,
                    [](CClassStore& store) { store.GetClassInfo(kSecondName); }, false},
        TFailureRow{"GetByNameNotFound", kNotFound, kGetByNameNotFound,
                    [](CClassStore& store) { store.GetClassInfo(kSecondName); }, true},
        TFailureRow{"RegisterClosed", kBug, kRegisterClosed,
                    [](CClassStore& store) { store.RegisterClassVrl(kFirst); }, false},
        // Odd keys are only keys that nobody registered.
        TFailureRow{"CreateByNullId", kNotFound, kCreateByIdNotFound,
                    [](CClassStore& store) { store.CreateObject(CId::Null()); }, true},
        TFailureRow{"CreateByNullName", kNotFound, kCreateByNameNotFound,
                    [](CClassStore& store) { store.CreateObject(static_cast<const wchar*>(nullptr)); }, true},
        TFailureRow{"GetByEmptyName", kNotFound, kGetByNameNotFound,
                    [](CClassStore& store) { store.GetClassInfo(VRL_L("")); }, true}),
    [](const auto& row) { return row.param.name; });

TEST(ClassStoreEnd, OpenStoreRaises) {
    ExpectRaises<CBugException>(kNotClosed, [] {
        // What the store holds is not freed: it may still be in use, and its lock may be held.
        const CExpectedLeak leak;
        CClassStore store;
        store.Init();
        store.RegisterClassVrl(kFirst);
    });
}

TEST(ClassStoreEnd, ClosedStoresEndQuietly) {
    const CDebugRecorder recorder;
    {
        CClassStore unused;
        unused.Close();
        unused.Clear();
        CClassStore used;
        used.Init();
        used.RegisterClassVrl(kFirst);
        used.Close();
        used.Close();
    }
    EXPECT_TRUE(recorder.GetEntries().empty());
}

// Registration and lookup.

TEST_F(ClassStore, LookupGivesTheStoresOwnCopy) {
    store_.RegisterClassVrl(kFirst);
    const TClassInfo* const info = store_.GetClassInfo(kFirstId);
    ASSERT_NE(info, nullptr);
    EXPECT_NE(info, &kFirst);
    EXPECT_EQ(info->id, kFirstId);
    // The text is not copied.
    EXPECT_EQ(info->name, kFirstName);
    EXPECT_EQ(info->factory, &MakeNothing);
    EXPECT_EQ(store_.GetClassInfo(kFirstName), info);
}

TEST_F(ClassStore, NamesAreComparedByTheirText) {
    Register(kFirstId, VRL_L("test::CFirst"));
    const wstring name(VRL_L("test::CFirst"));
    EXPECT_EQ(store_.GetClassInfo(name.c_str())->id, kFirstId);
}

struct TNameRow {
    const char* name;
    const wchar* wanted;
};
class ClassStoreNames : public testing::TestWithParam<TNameRow> {};

TEST_P(ClassStoreNames, OtherNamesAreNotFound) {
    const CLibraryScope library;
    ASSERT_NE(v.GetClassStore().GetClassInfo(VRL_L("vorlund::CObject")), nullptr);
    ExpectRaises<CClassNotFoundException>(kGetByNameNotFound,
                                          [] { v.GetClassStore().GetClassInfo(GetParam().wanted); });
    ExpectRaises<CClassNotFoundException>(kCreateByNameNotFound,
                                          [] { v.GetClassStore().CreateObject(GetParam().wanted); });
}

INSTANTIATE_TEST_SUITE_P(Rows, ClassStoreNames,
                         testing::Values(TNameRow{"LowerCase", VRL_L("vorlund::cobject")},
                                         TNameRow{"UpperCase", VRL_L("VORLUND::COBJECT")},
                                         TNameRow{"WithoutNamespace", VRL_L("CObject")},
                                         TNameRow{"Shorter", VRL_L("vorlund::CObjec")},
                                         TNameRow{"Longer", VRL_L("vorlund::CObject ")},
                                         TNameRow{"LeadingBlank", VRL_L(" vorlund::CObject")}),
                         [](const auto& row) { return row.param.name; });

TEST_F(ClassStore, NamesBeyondAsciiAreComparedUnitByUnit) {
    Register(kFirstId, VRL_L("Kl\u00E4sse \U0001F3B5"));
    Register(kSecondId, VRL_L("Kl\u00C4sse \U0001F3B5"));
    EXPECT_EQ(store_.GetClassInfo(VRL_L("Kl\u00E4sse \U0001F3B5"))->id, kFirstId);
    EXPECT_EQ(store_.GetClassInfo(VRL_L("Kl\u00C4sse \U0001F3B5"))->id, kSecondId);
    EXPECT_THROW(store_.GetClassInfo(VRL_L("Kla\u0308sse \U0001F3B5")), CClassNotFoundException);
}

TEST_F(ClassStore, ClassesWithoutANameAreFoundById) {
    Register(kFirstId, nullptr);
    Register(kSecondId, VRL_L(""));
    EXPECT_EQ(store_.GetClassInfo(kFirstId)->name, nullptr);
    EXPECT_EQ(store_.GetClassInfo(VRL_L(""))->id, kSecondId);
}

TEST_F(ClassStore, FirstRegistrationWinsById) {
    Register(kFirstId, kFirstName, &NewObject<CProbe>);
    Register(kFirstId, kSecondName);
    EXPECT_EQ(store_.GetClassInfo(kFirstId)->name, kFirstName);
    const auto object = CRefPtr<IObject>::Adopt(store_.CreateObject(kFirstId));
    EXPECT_TRUE(object);
    // The later one still has its name.
    EXPECT_EQ(store_.GetClassInfo(kSecondName)->factory, &MakeNothing);
    EXPECT_EQ(store_.CreateObject(kSecondName), nullptr);
}

TEST_F(ClassStore, FirstRegistrationWinsByName) {
    Register(kFirstId, kFirstName, &NewObject<CProbe>);
    Register(kSecondId, kFirstName);
    EXPECT_EQ(store_.GetClassInfo(kFirstName)->id, kFirstId);
    const auto object = CRefPtr<IObject>::Adopt(store_.CreateObject(kFirstName));
    EXPECT_TRUE(object);
    // The later one still has its identifier.
    EXPECT_EQ(store_.GetClassInfo(kSecondId)->factory, &MakeNothing);
    EXPECT_EQ(store_.CreateObject(kSecondId), nullptr);
}

TEST_F(ClassStore, LookupsOfBothKeysAreIndependent) {
    // The first entry of an identifier need not be the first one of a name.
    Register(kFirstId, kFirstName);
    Register(kSecondId, kSecondName);
    Register(kSecondId, kFirstName);
    Register(kThirdId, kSecondName);
    EXPECT_EQ(store_.GetClassInfo(kFirstName)->id, kFirstId);
    EXPECT_EQ(store_.GetClassInfo(kSecondName)->id, kSecondId);
    EXPECT_EQ(store_.GetClassInfo(kSecondId)->name, kSecondName);
    EXPECT_EQ(store_.GetClassInfo(kThirdId)->name, kSecondName);
}

TEST_F(ClassStore, PointersStayWhileClassesAreAdded) {
    store_.RegisterClassVrl(kFirst);
    const TClassInfo* const info = store_.GetClassInfo(kFirstId);
    for (unsigned int i = 0; i < 5000; ++i) Register({7, 7, 7, i}, kSecondName);
    EXPECT_EQ(store_.GetClassInfo(kFirstId), info);
    EXPECT_EQ(info->id, kFirstId);
}

TEST_F(ClassStore, ClearForgetsEveryClass) {
    store_.RegisterClassVrl(kFirst);
    store_.Clear();
    ExpectRaises<CClassNotFoundException>(kCreateByIdNotFound, [&] { store_.CreateObject(kFirstId); });
    ExpectRaises<CClassNotFoundException>(kCreateByNameNotFound, [&] { store_.CreateObject(kFirstName); });
    ExpectRaises<CClassNotFoundException>(kGetByIdNotFound, [&] { store_.GetClassInfo(kFirstId); });
    ExpectRaises<CClassNotFoundException>(kGetByNameNotFound, [&] { store_.GetClassInfo(kFirstName); });
    EXPECT_FALSE(CRefPtr<IObjectEnumerator>::Adopt(store_.EnumerateClasses())->HasNext());
    store_.Clear();
    Register(kFirstId, kSecondName);
    EXPECT_EQ(store_.GetClassInfo(kFirstId)->name, kSecondName);
}

TEST_F(ClassStore, InitOfAnOpenStoreKeepsTheClasses) {
    store_.RegisterClassVrl(kFirst);
    store_.Init();
    EXPECT_EQ(store_.GetClassInfo(kFirstId)->name, kFirstName);
}

TEST_F(ClassStore, ReopenedStoreIsEmpty) {
    store_.RegisterClassVrl(kFirst);
    store_.Close();
    store_.Init();
    EXPECT_THROW(store_.GetClassInfo(kFirstId), CClassNotFoundException);
}

TEST_F(ClassStore, TenThousandClasses) {
    constexpr unsigned int kCount = 10000;
    // Every second one repeats the identifier or the name of the one before it.
    std::vector<wstring> names;
    for (unsigned int i = 0; i < kCount; ++i)
        names.push_back(CId(i % 4 == 3 ? i - 1 : i, 0, 0, 0).ToString());
    const auto idOf = [](unsigned int i) { return CId(0, 1, 2, i % 4 == 1 ? i - 1 : i); };
    for (unsigned int i = 0; i < kCount; ++i) Register(idOf(i), names[i].c_str());
    const auto classes = CRefPtr<IObjectEnumerator>::Adopt(store_.EnumerateClasses());
    std::vector<const TClassInfo*> order;
    while (classes->HasNext()) {
        const auto item = CRefPtr<IObject>::Adopt(classes->GetNext());
        order.push_back(static_cast<const TClassInfo*>(item.Query<IPtrObject>()->GetPtr()));
    }
    ASSERT_EQ(order.size(), kCount);
    for (unsigned int i = 0; i < kCount; ++i) {
        ASSERT_EQ(order[i]->id, idOf(i));
        ASSERT_EQ(order[i]->name, names[i].c_str());
        ASSERT_EQ(store_.GetClassInfo(idOf(i)), order[i % 4 == 1 ? i - 1 : i]);
        ASSERT_EQ(store_.GetClassInfo(names[i].c_str()), order[i % 4 == 3 ? i - 1 : i]);
    }
    // Closed before the names go.
    store_.Close();
}

// Creation.

TEST_F(ClassStore, CreatesByIdAndByName) {
    Register(kFirstId, kFirstName, &NewObject<CProbe>);
    for (IObject* const object : {store_.CreateObject(kFirstId), store_.CreateObject(kFirstName)}) {
        ASSERT_NE(object, nullptr);
        EXPECT_EQ(ReferencesOf(object), 1);
        EXPECT_EQ(object->GetClassId(), CProbe::ClassId);
        EXPECT_EQ(object->Release(), 0);
    }
}

TEST_F(ClassStore, FactoryThatYieldsNothingGivesNull) {
    store_.RegisterClassVrl(kFirst);
    EXPECT_EQ(store_.CreateObject(kFirstId), nullptr);
    EXPECT_EQ(store_.CreateObject(kFirstName), nullptr);
    // And gives the lock back.
    std::thread([&] { EXPECT_EQ(store_.CreateObject(kFirstId), nullptr); }).join();
}

CClassStore* storeOfFactories = nullptr;

TEST_F(ClassStore, FactoriesMayUseTheStore) {
    storeOfFactories = &store_;
    Register(kFirstId, kFirstName, &NewObject<CProbe>);
    Register(kSecondId, kSecondName, []() -> IObject* {
        CClassStore& store = *storeOfFactories;
        EXPECT_EQ(store.GetClassInfo(kSecondId)->name, kSecondName);
        for (unsigned int i = 0; i < 1000; ++i) store.RegisterClassVrl({{9, 9, 9, i}, nullptr, nullptr});
        const auto byName = CRefPtr<IObject>::Adopt(store.CreateObject(kFirstName));
        EXPECT_TRUE(byName);
        EXPECT_THROW(store.CreateObject(kThirdId), CClassNotFoundException);
        return store.CreateObject(kFirstId);
    });
    const auto object = CRefPtr<IObject>::Adopt(store_.CreateObject(kSecondId));
    EXPECT_EQ(object->GetClassId(), CProbe::ClassId);
    std::thread([&] { EXPECT_NE(store_.GetClassInfo({9, 9, 9, 999}), nullptr); }).join();
}

TEST_F(ClassStore, FactoryMayForgetTheClasses) {
    storeOfFactories = &store_;
    Register(kFirstId, kFirstName, []() -> IObject* {
        storeOfFactories->Clear();
        return NewObject<CProbe>();
    });
    const auto object = CRefPtr<IObject>::Adopt(store_.CreateObject(kFirstId));
    EXPECT_TRUE(object);
    EXPECT_THROW(store_.GetClassInfo(kFirstId), CClassNotFoundException);
}

// A factory that raises. That other threads then block is shown by a child process (UnfinishedFactory_test).

[[noreturn]] IObject* Refuse() {
    throw std::runtime_error("factory");
}

TEST_F(ClassStore, ThreadOfARaisingFactoryGoesOn) {
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

TEST_F(ClassStore, CloseAfterARaisingFactorySucceeds) {
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

TEST(ClassStoreOfTheLibrary, CloseAfterARaisingFactorySucceeds) {
    v.Init();
    v.GetClassStore().RegisterClassVrl({kFirstId, kFirstName, &Refuse});
    EXPECT_THROW(CreateAs<IObject>(kFirstId), std::runtime_error);
    EXPECT_THROW(CreateAs<IObject>(kFirstId), std::runtime_error);
    v.Close();
    v.Init();
    std::thread([] { EXPECT_TRUE(CreateAs<IObject>(classid::CObject)); }).join();
    v.Close();
}

std::latch* isInFactory = nullptr;
std::latch* mayLeaveFactory = nullptr;

TEST_F(ClassStore, CloseWaitsForTheFactoryOfAnotherThread) {
    std::latch inFactory(1), mayLeave(1), closing(1);
    isInFactory = &inFactory;
    mayLeaveFactory = &mayLeave;
    static bool isFactoryDone;
    isFactoryDone = false;
    Register(kFirstId, kFirstName, []() -> IObject* {
        isInFactory->count_down();
        mayLeaveFactory->wait();
        isFactoryDone = true;
        return nullptr;
    });
    std::thread creator([&] { EXPECT_EQ(store_.CreateObject(kFirstId), nullptr); });
    inFactory.wait();
    std::thread closer([&] {
        closing.count_down();
        store_.Close();
        // Written by the factory, under the lock that Close has waited for.
        EXPECT_TRUE(isFactoryDone);
    });
    closing.wait();
    mayLeave.count_down();
    closer.join();
    creator.join();
}

// Enumeration.

std::vector<const TClassInfo*> Classes(const CClassStore& store) {
    std::vector<const TClassInfo*> classes;
    const auto enumerator = CRefPtr<IObjectEnumerator>::Adopt(store.EnumerateClasses());
    while (enumerator->HasNext()) {
        const auto item = CRefPtr<IObject>::Adopt(enumerator->GetNext()).Query<IPtrObject>();
        if (!item) {
            ADD_FAILURE() << "an item is no IPtrObject";
            break;
        }
        classes.push_back(static_cast<const TClassInfo*>(item->GetPtr()));
    }
    return classes;
}

TEST_F(ClassStore, EnumeratesInOrderWithDuplicates) {
    const std::vector<CId> ids = {kThirdId, kFirstId, kFirstId, kSecondId, kThirdId};
    for (const CId& id : ids) Register(id, kFirstName);
    const auto classes = Classes(store_);
    ASSERT_EQ(classes.size(), ids.size());
    for (std::size_t i = 0; i < ids.size(); ++i) EXPECT_EQ(classes[i]->id, ids[i]) << i;
    EXPECT_EQ(classes[0], store_.GetClassInfo(kThirdId));
    EXPECT_EQ(classes[1], store_.GetClassInfo(kFirstId));
    EXPECT_EQ(std::set<const TClassInfo*>(classes.begin(), classes.end()).size(), ids.size());
}

TEST_F(ClassStore, EnumeratorHoldsTheOnlyReferences) {
    store_.RegisterClassVrl(kFirst);
    const auto enumerator = CRefPtr<IObjectEnumerator>::Adopt(store_.EnumerateClasses());
    EXPECT_EQ(ReferencesOf(enumerator.Get()), 1);
    EXPECT_EQ(enumerator->GetClassId(), classid::CPushObjectEnumerator);
    const auto item = CRefPtr<IObject>::Adopt(enumerator->GetNext());
    EXPECT_EQ(ReferencesOf(item.Get()), 2);
    EXPECT_EQ(item->GetClassId(), classid::CPtrObject);
}

TEST_F(ClassStore, EnumerationIsASnapshot) {
    store_.RegisterClassVrl(kFirst);
    const auto enumerator = CRefPtr<IObjectEnumerator>::Adopt(store_.EnumerateClasses());
    Register(kSecondId, kSecondName);
    CRefPtr<IObject>::Adopt(enumerator->GetNext()).Reset();
    EXPECT_FALSE(enumerator->HasNext());
}

TEST_F(ClassStore, EnumerationTakesSerialNumbers) {
    for (int i = 0; i < 3; ++i) store_.RegisterClassVrl(kFirst);
    const auto enumerator = CRefPtr<IObjectEnumerator>::Adopt(store_.EnumerateClasses());
    EXPECT_EQ(enumerator->GetObjectNumber(), 1);
    for (int number = 2; number <= 4; ++number)
        EXPECT_EQ(CRefPtr<IObject>::Adopt(enumerator->GetNext())->GetObjectNumber(), number);
    EXPECT_EQ(NewProbe()->GetObjectNumber(), 5);
}

TEST_F(ClassStore, ClosedStoreEnumeratesNothing) {
    store_.Close();
    const auto enumerator = CRefPtr<IObjectEnumerator>::Adopt(store_.EnumerateClasses());
    ASSERT_TRUE(enumerator);
    EXPECT_FALSE(enumerator->HasNext());
}

TEST_F(ClassStore, EnumerationNeedsTheLibrary) {
    store_.RegisterClassVrl(kFirst);
    v.Close();
    // Whether the store is open does not matter.
    ExpectRaises<CBugException>(kCreateByIdClosed, [&] { store_.EnumerateClasses(); });
    store_.Close();
    ExpectRaises<CBugException>(kCreateByIdClosed, [&] { store_.EnumerateClasses(); });
}

TEST(ClassStoreOfTheLibrary, ClosedOneRaisesFromCreateObject) {
    ExpectRaises<CBugException>(kCreateByIdClosed, [] { v.GetClassStore().EnumerateClasses(); });
}

TEST(ClassStoreOfTheLibrary, ServiceObjectsComeFromTheStore) {
    const CLibraryScope library;
    CClassStore& store = v.GetClassStore();
    static TObjectFactory makeEnumerator, makeItem;
    static int enumerators, items;
    enumerators = items = 0;
    makeEnumerator = store.GetClassInfo(classid::CPushObjectEnumerator)->factory;
    makeItem = store.GetClassInfo(classid::CPtrObject)->factory;
    store.Clear();
    ExpectRaises<CClassNotFoundException>(kCreateByIdNotFound, [&] { store.EnumerateClasses(); });

    store.RegisterClassVrl({classid::CPushObjectEnumerator, VRL_L("test::CEnumerator"), [] {
                                ++enumerators;
                                return makeEnumerator();
                            }});
    // The enumerator is there, its items are not; neither it nor the lock stays behind.
    ExpectRaises<CClassNotFoundException>(kCreateByIdNotFound, [&] { store.EnumerateClasses(); });
    EXPECT_EQ(enumerators, 1);

    std::thread([&] {
        store.RegisterClassVrl({classid::CPtrObject, VRL_L("test::CItem"), [] {
                                    // A registration during the enumeration belongs to it.
                                    if (++items == 1) v.GetClassStore().RegisterClassVrl(kFirst);
                                    return makeItem();
                                }});
    }).join();
    const auto classes = Classes(store);
    ASSERT_EQ(classes.size(), 3u);
    EXPECT_EQ(classes[2]->id, kFirstId);
    EXPECT_EQ(enumerators, 2);
    EXPECT_EQ(items, 3);
}

TEST(ClassStoreOfTheLibrary, ServiceClassesThatYieldNothingRaise) {
    const CLibraryScope library;
    CClassStore& store = v.GetClassStore();
    const TObjectFactory makeEnumerator = store.GetClassInfo(classid::CPushObjectEnumerator)->factory;
    for (const TObjectFactory broken : {TObjectFactory(&MakeNothing), TObjectFactory(&NewObject<CProbe>)}) {
        store.Clear();
        store.RegisterClassVrl({classid::CPushObjectEnumerator, nullptr, broken});
        EXPECT_THROW(store.EnumerateClasses(), CBugException);
        store.Clear();
        store.RegisterClassVrl({classid::CPushObjectEnumerator, nullptr, makeEnumerator});
        store.RegisterClassVrl({classid::CPtrObject, nullptr, broken});
        EXPECT_THROW(store.EnumerateClasses(), CBugException);
        EXPECT_EQ(CProbe::alive, 0);
    }
}

// The list on the standard output.

std::vector<std::string> Dump(const CClassStore& store) {
    const CDebugRecorder recorder;
    store.Dump();
    std::vector<std::string> lines;
    for (const auto& entry : recorder.GetEntries()) {
        EXPECT_EQ(entry.type, DEBUG_MESSAGE_STDOUT);
        lines.push_back(Narrow(entry.text));
    }
    return lines;
}

TEST_F(ClassStore, DumpListsInOrder) {
    Register(classid::CObject, VRL_L("vorlund::CObject"));
    Register(kFirstId, kFirstName);
    Register(classid::CObject, VRL_L("again"));
    const std::vector<std::string> expected = {
        "Class dump",
        " * {90832171,F23F4997,BC71E87A,6E3A3063} - vorlund::CObject",
        " * {000C1A55,00000000,00000000,00000001} - test::CFirst",
        " * {90832171,F23F4997,BC71E87A,6E3A3063} - again",
        "---",
    };
    EXPECT_EQ(Dump(store_), expected);
}

TEST_F(ClassStore, DumpOfAnEmptyStore) {
    EXPECT_EQ(Dump(store_), (std::vector<std::string>{"Class dump", "---"}));
}

TEST_F(ClassStore, DumpOfAClosedStore) {
    store_.Close();
    EXPECT_EQ(Dump(store_), (std::vector<std::string>{"Class dump - not initialized!"}));
}

TEST_F(ClassStore, DumpKeepsLongAndMissingNamesWhole) {
    const wstring name(5000, VRL_L('x'));
    Register(kFirstId, name.c_str());
    Register(kSecondId, nullptr);
    Register(kThirdId, VRL_L("%s%n%d"));
    const auto lines = Dump(store_);
    ASSERT_EQ(lines.size(), 5u);
    EXPECT_EQ(lines[1], " * {000C1A55,00000000,00000000,00000001} - " + std::string(5000, 'x'));
    EXPECT_EQ(lines[2], " * {000C1A55,00000000,00000000,00000002} - ");
    EXPECT_EQ(lines[3], " * {000C1A55,00000000,00000000,00000003} - %s%n%d");
    store_.Close();
}

// Threads.

TEST(ClassStoreOfTheLibrary, ThreadsCreateRegisterAndLookUpTogether) {
    const CLibraryScope library;
    CClassStore& store = v.GetClassStore();
    constexpr int kThreads = 4;
    constexpr int kRounds = 500;
    std::latch start(kThreads);
    std::vector<std::vector<IObject*>> created(kThreads);
    std::vector<std::thread> threads;
    for (int thread = 0; thread < kThreads; ++thread) {
        threads.emplace_back([&, thread] {
            start.arrive_and_wait();
            for (int round = 0; round < kRounds; ++round) {
                const CId own(0x7EAD, static_cast<unsigned int>(thread), static_cast<unsigned int>(round), 0);
                store.RegisterClassVrl({own, VRL_L("test::CShared"), &NewObject<CProbe>});
                // Objects are numbered inside their factory, which runs under the store's lock.
                created[thread].push_back(store.CreateObject(own));
                created[thread].push_back(store.CreateObject(VRL_L("vorlund::CPtrObject")));
                EXPECT_EQ(store.GetClassInfo(own)->id, own);
                EXPECT_EQ(store.GetClassInfo(VRL_L("vorlund::CObject"))->id, classid::CObject);
                EXPECT_THROW(store.GetClassInfo({0x7EAD, 99, 99, 99}), CClassNotFoundException);
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

TEST(ClassStoreOfTheLibrary, ThreadsEnumerateWhileOthersRegister) {
    const CLibraryScope library;
    CClassStore& store = v.GetClassStore();
    const std::size_t builtins = Classes(store).size();
    constexpr unsigned int kAdded = 300;
    std::latch start(2);
    std::thread adder([&] {
        start.arrive_and_wait();
        for (unsigned int i = 0; i < kAdded; ++i)
            store.RegisterClassVrl({{0x7EAD, 0, 1, i}, nullptr, &MakeNothing});
    });
    start.arrive_and_wait();
    for (std::size_t last = 0; last < builtins + kAdded;) {
        const std::size_t count = Classes(store).size();
        ASSERT_GE(count, last);
        last = count;
    }
    adder.join();
}

} // namespace
} // namespace vorlund::test
