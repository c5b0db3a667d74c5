/// \file
/// What the class store's tests share: its failures, some classes, and an open store.
#pragma once

#include <vorlund/ClassStore.h>
#include <vorlund/Exception.h>
#include <vorlund/ObjectList.h>
#include <vorlund/RefPtr.h>

#include "support/KnownFailures.h"
#include "support/LibraryScope.h"

#include <gtest/gtest.h>

#include <vector>

namespace vorlund::test {

using namespace classstorefailures;

inline constexpr CId kFirstId{0xC1A55, 0, 0, 1};
inline constexpr CId kSecondId{0xC1A55, 0, 0, 2};
inline constexpr CId kThirdId{0xC1A55, 0, 0, 3};
// Arrays, because tests compare their addresses: a literal has one in every file.
inline constexpr wchar kFirstName[] = VRL_L("test::CFirst");
inline constexpr wchar kSecondName[] = VRL_L("test::CSecond");

inline IObject* MakeNothing() {
    return nullptr;
}
inline const TClassInfo kFirst(kFirstId, kFirstName, &MakeNothing);

/// What an enumeration of the store points at, in order.
inline std::vector<const TClassInfo*> Classes(const CClassStore& store) {
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

/// An open store of its own, and the library, which its enumerations and objects need.
class CClassStoreTest : public testing::Test {
protected:
    CClassStoreTest() { store_.Init(); }
    ~CClassStoreTest() noexcept override { store_.Close(); }

    void Register(const CId& id, const wchar* name, TObjectFactory factory = &MakeNothing) {
        store_.RegisterClassVrl({id, name, factory});
    }

    CLibraryScope library_;
    CClassStore store_;
};

} // namespace vorlund::test
