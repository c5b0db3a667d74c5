// The class store when memory runs out.
#include "api/ClassStoreTest.h"
#include "support/Failures.h"
#include "support/RefuseEachAllocation.h"

#include <vorlund/ClassIds.h>
#include <vorlund/Vorlund.h>

#include <gtest/gtest.h>

#include <vector>

namespace vorlund::test {
namespace {

class ClassStoreOutOfMemory : public CClassStoreTest {};

TEST_F(ClassStoreOutOfMemory, RegistrationIsWholeOrNotAtAll) {
    // Enough classes that every table of the store has to grow at some of the registrations.
    std::vector<wstring> names;
    for (unsigned int i = 0; i < 200; ++i) names.push_back(CId(1, 2, 3, i).ToString());
    std::size_t refusals = 0;
    for (unsigned int i = 0; i < names.size(); ++i) {
        const CId id(9, 9, 9, i);
        const wchar* const name = names[i].c_str();
        refusals += RefuseEachAllocation(
            [&] {
                store_.RegisterClassVrl({id, name, nullptr});
            },
            [&] {
                ExpectRaises<CClassNotFoundException>(kGetByIdNotFound, [&] { store_.GetClassInfo(id); });
                ExpectRaises<CClassNotFoundException>(kGetByNameNotFound, [&] { store_.GetClassInfo(name); });
                EXPECT_EQ(Classes(store_).size(), i);
            },
            TKept::Room);
        EXPECT_EQ(store_.GetClassInfo(id), store_.GetClassInfo(name));
    }
    EXPECT_GE(refusals, 2 * 200u);
}

TEST_F(ClassStoreOutOfMemory, SecondClassOfAnIdentifierLeavesTheFirst) {
    store_.RegisterClassVrl(kFirst);
    const std::size_t refusals = RefuseEachAllocation(
        [&] {
            store_.RegisterClassVrl({kFirstId, kSecondName, nullptr});
        },
        [&] {
            EXPECT_EQ(store_.GetClassInfo(kFirstId)->name, kFirstName);
            ExpectRaises<CClassNotFoundException>(kGetByNameNotFound,
                                                  [&] { store_.GetClassInfo(kSecondName); });
            EXPECT_EQ(Classes(store_).size(), 1u);
        },
        TKept::Room);
    EXPECT_GE(refusals, 1u);
    EXPECT_EQ(store_.GetClassInfo(kFirstId)->name, kFirstName);
    EXPECT_EQ(store_.GetClassInfo(kSecondName)->id, kFirstId);
}

TEST_F(ClassStoreOutOfMemory, InitLeavesTheStoreClosed) {
    CClassStore store;
    const std::size_t refusals = RefuseEachAllocation([&] { store.Init(); },
                                                      [&] {
                                                          ExpectRaises<CBugException>(kRegisterClosed, [&] {
                                                              store.RegisterClassVrl({{}, nullptr, nullptr});
                                                          });
                                                      });
    EXPECT_GE(refusals, 1u);
    store.Close();
}

TEST_F(ClassStoreOutOfMemory, EnumerationLeavesNothing) {
    CRefPtr<IObjectEnumerator> enumerator;
    const std::size_t refusals = RefuseEachAllocation(
        [&] { enumerator = CRefPtr<IObjectEnumerator>::Adopt(v.GetClassStore().EnumerateClasses()); },
        [&] { EXPECT_FALSE(enumerator); });
    EXPECT_GT(refusals, 19u);
    EXPECT_TRUE(enumerator->HasNext());
    // The factories that failed have left the store's lock with this thread; CLibraryScope closes all the
    // same.
}

TEST_F(ClassStoreOutOfMemory, ObjectThatIsNotMadeTakesNoNumber) {
    IObject* object = nullptr;
    EXPECT_EQ(RefuseEachAllocation([&] { object = v.GetClassStore().CreateObject(classid::CObject); },
                                   [&] { EXPECT_EQ(object, nullptr); }),
              1u);
    EXPECT_EQ(object->GetObjectNumber(), 1);
    object->Release();
}

} // namespace
} // namespace vorlund::test
