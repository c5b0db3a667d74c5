#include <vorlund/ClassIds.h>
#include <vorlund/ObjectList.h>
#include <vorlund/Vorlund.h>

#include "support/LibraryScope.h"
#include "support/Probes.h"

#include <gtest/gtest.h>

#include <cstdint>

namespace vorlund::test {
namespace {

class PtrObject : public testing::Test {
protected:
    CLibraryScope library_;
};

TEST_F(PtrObject, PointerIsNullAtFirst) {
    EXPECT_EQ(CreateAs<IPtrObject>(classid::CPtrObject)->GetPtr(), nullptr);
}

TEST_F(PtrObject, PointerIsKeptAndNeverLookedAt) {
    const auto object = CreateAs<IPtrObject>(classid::CPtrObject);
    int value = 0;
    for (void* const pointer : {static_cast<void*>(&value), reinterpret_cast<void*>(1),
                                reinterpret_cast<void*>(~std::uintptr_t{0}), static_cast<void*>(nullptr)}) {
        object->SetPtr(pointer);
        EXPECT_EQ(object->GetPtr(), pointer);
        EXPECT_EQ(object->GetPtr(), pointer);
    }
}

TEST_F(PtrObject, PointedObjectIsNotOwned) {
    const auto pointed = NewProbe();
    auto object = CreateAs<IPtrObject>(classid::CPtrObject);
    object->SetPtr(pointed.Get());
    EXPECT_EQ(ReferencesOf(pointed.Get()), 1);
    object.Reset();
    EXPECT_EQ(ReferencesOf(pointed.Get()), 1);
}

} // namespace
} // namespace vorlund::test
