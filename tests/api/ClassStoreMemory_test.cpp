// What the class store allocates.
#include "api/ClassStoreTest.h"
#include "support/Allocations.h"

#include <vorlund/ClassIds.h>
#include <vorlund/Vorlund.h>

#include <gtest/gtest.h>

namespace vorlund::test {
namespace {

TEST(ClassStoreMemory, LookingUpAllocatesNothing) {
    const CLibraryScope library;
    const CAllocationCount count;
    for (int i = 0; i < 100; ++i) {
        v.GetClassStore().GetClassInfo(classid::CObject);
        v.GetClassStore().GetClassInfo(VRL_L("vorlund::CObject"));
    }
    EXPECT_EQ(count.Get(), 0u);
}

TEST(ClassStoreMemory, CreationAllocatesTheObjectOnly) {
    const CLibraryScope library;
    const CAllocationCount count;
    for (const CId& id : {classid::CObject, classid::CPtrObject, classid::CObjectList})
        v.GetClassStore().CreateObject(id)->Release();
    v.GetClassStore().CreateObject(VRL_L("vorlund::CObject"))->Release();
    EXPECT_EQ(count.Get(), 4u);
}

} // namespace
} // namespace vorlund::test
