// Registration, lookup and creation.
#include "api/ClassStoreTest.h"

#include <vorlund/ClassIds.h>
#include <vorlund/Vorlund.h>

#include "support/DebugRecorder.h"
#include "support/Failures.h"
#include "support/Leaks.h"
#include "support/Probes.h"

#include <gtest/gtest.h>

#include <functional>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace vorlund::test {
namespace {

class ClassStore : public CClassStoreTest {};

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
    ExpectRaises<CClassNotFoundException>(kGetByNameNotFound,
                                          [&] { store_.GetClassInfo(VRL_L("Kla\u0308sse \U0001F3B5")); });
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
    ExpectRaises<CClassNotFoundException>(kGetByIdNotFound, [&] { store_.GetClassInfo(kFirstId); });
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
        ExpectRaises<CClassNotFoundException>(kCreateByIdNotFound, [&] { store.CreateObject(kThirdId); });
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
    ExpectRaises<CClassNotFoundException>(kGetByIdNotFound, [&] { store_.GetClassInfo(kFirstId); });
}

TEST_F(ClassStore, ClassWithoutAFactoryIsFoundAndCannotBeCreated) {
    Register(kFirstId, kFirstName, nullptr);
    // The first registration wins, whatever it is.
    Register(kFirstId, kFirstName, &MakeNothing);
    EXPECT_EQ(store_.GetClassInfo(kFirstId)->factory, nullptr);
    ExpectRaises<CClassNotFoundException>(kCreateByIdNotFound, [&] { store_.CreateObject(kFirstId); });
    ExpectRaises<CClassNotFoundException>(kCreateByNameNotFound, [&] { store_.CreateObject(kFirstName); });
    // The lock has been given back.
    std::thread([&] { EXPECT_EQ(store_.GetClassInfo(kFirstName)->id, kFirstId); }).join();
}

} // namespace
} // namespace vorlund::test
