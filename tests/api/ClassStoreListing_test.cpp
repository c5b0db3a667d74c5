// Enumeration, and the list on the standard output.
#include "api/ClassStoreTest.h"

#include <vorlund/ClassIds.h>
#include <vorlund/Vorlund.h>

#include "support/DebugRecorder.h"
#include "support/Failures.h"
#include "support/Probes.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <thread>
#include <vector>

namespace vorlund::test {
namespace {

class ClassStoreListing : public CClassStoreTest {};

// Enumeration.

TEST_F(ClassStoreListing, EnumeratesInOrderWithDuplicates) {
    const std::vector<CId> ids = {kThirdId, kFirstId, kFirstId, kSecondId, kThirdId};
    for (const CId& id : ids) Register(id, kFirstName);
    const auto classes = Classes(store_);
    ASSERT_EQ(classes.size(), ids.size());
    for (std::size_t i = 0; i < ids.size(); ++i) EXPECT_EQ(classes[i]->id, ids[i]) << i;
    EXPECT_EQ(classes[0], store_.GetClassInfo(kThirdId));
    EXPECT_EQ(classes[1], store_.GetClassInfo(kFirstId));
    EXPECT_EQ(std::set<const TClassInfo*>(classes.begin(), classes.end()).size(), ids.size());
}

TEST_F(ClassStoreListing, EnumeratorHoldsTheOnlyReferences) {
    store_.RegisterClassVrl(kFirst);
    const auto enumerator = CRefPtr<IObjectEnumerator>::Adopt(store_.EnumerateClasses());
    EXPECT_EQ(ReferencesOf(enumerator.Get()), 1);
    EXPECT_EQ(enumerator->GetClassId(), classid::CPushObjectEnumerator);
    const auto item = CRefPtr<IObject>::Adopt(enumerator->GetNext());
    EXPECT_EQ(ReferencesOf(item.Get()), 2);
    EXPECT_EQ(item->GetClassId(), classid::CPtrObject);
}

TEST_F(ClassStoreListing, EnumerationIsASnapshot) {
    store_.RegisterClassVrl(kFirst);
    const auto enumerator = CRefPtr<IObjectEnumerator>::Adopt(store_.EnumerateClasses());
    Register(kSecondId, kSecondName);
    CRefPtr<IObject>::Adopt(enumerator->GetNext()).Reset();
    EXPECT_FALSE(enumerator->HasNext());
}

TEST_F(ClassStoreListing, EnumerationTakesSerialNumbers) {
    for (int i = 0; i < 3; ++i) store_.RegisterClassVrl(kFirst);
    const auto enumerator = CRefPtr<IObjectEnumerator>::Adopt(store_.EnumerateClasses());
    EXPECT_EQ(enumerator->GetObjectNumber(), 1);
    for (int number = 2; number <= 4; ++number)
        EXPECT_EQ(CRefPtr<IObject>::Adopt(enumerator->GetNext())->GetObjectNumber(), number);
    EXPECT_EQ(NewProbe()->GetObjectNumber(), 5);
}

TEST_F(ClassStoreListing, ClosedStoreEnumeratesNothing) {
    store_.Close();
    const auto enumerator = CRefPtr<IObjectEnumerator>::Adopt(store_.EnumerateClasses());
    ASSERT_TRUE(enumerator);
    EXPECT_FALSE(enumerator->HasNext());
}

TEST_F(ClassStoreListing, EnumerationNeedsTheLibrary) {
    store_.RegisterClassVrl(kFirst);
    v.Close();
    // Whether the store is open does not matter.
    ExpectRaises<CBugException>(kCreateByIdClosed, [&] { store_.EnumerateClasses(); });
    store_.Close();
    ExpectRaises<CBugException>(kCreateByIdClosed, [&] { store_.EnumerateClasses(); });
}

TEST(ClassStoreListingOfTheLibrary, ClosedOneRaisesFromCreateObject) {
    ExpectRaises<CBugException>(kCreateByIdClosed, [] { v.GetClassStore().EnumerateClasses(); });
}

TEST(ClassStoreListingOfTheLibrary, ServiceObjectsComeFromTheStore) {
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

TEST(ClassStoreListingOfTheLibrary, ServiceClassesThatYieldNothingRaise) {
    const CLibraryScope library;
    CClassStore& store = v.GetClassStore();
    const TObjectFactory makeEnumerator = store.GetClassInfo(classid::CPushObjectEnumerator)->factory;
    for (const TObjectFactory broken : {TObjectFactory(&MakeNothing), TObjectFactory(&NewObject<CProbe>)}) {
        store.Clear();
        store.RegisterClassVrl({classid::CPushObjectEnumerator, nullptr, broken});
        ExpectRaises<CBugException>(kNoEnumerator, [&] { store.EnumerateClasses(); });
        store.Clear();
        store.RegisterClassVrl({classid::CPushObjectEnumerator, nullptr, makeEnumerator});
        store.RegisterClassVrl({classid::CPtrObject, nullptr, broken});
        ExpectRaises<CBugException>(kNoItem, [&] { store.EnumerateClasses(); });
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

TEST_F(ClassStoreListing, DumpListsInOrder) {
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

TEST_F(ClassStoreListing, DumpOfAnEmptyStore) {
    EXPECT_EQ(Dump(store_), (std::vector<std::string>{"Class dump", "---"}));
}

TEST_F(ClassStoreListing, DumpOfAClosedStore) {
    store_.Close();
    EXPECT_EQ(Dump(store_), (std::vector<std::string>{"Class dump - not initialized!"}));
}

TEST_F(ClassStoreListing, DumpKeepsLongAndMissingNamesWhole) {
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

} // namespace
} // namespace vorlund::test
