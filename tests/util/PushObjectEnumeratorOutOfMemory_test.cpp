// Filled enumerators when memory runs out.
#include <vorlund/ClassIds.h>
#include <vorlund/ObjectList.h>

#include "support/LibraryScope.h"
#include "support/Probes.h"
#include "support/RefuseEachAllocation.h"

#include <gtest/gtest.h>

namespace vorlund::test {
namespace {

TEST(PushObjectEnumeratorOutOfMemory, MembersThatAreNotAddedAreNotReferenced) {
    const CLibraryScope library;
    const auto member = NewProbe();
    auto enumerator = CreateAs<IPushObjectEnumerator>(classid::CPushObjectEnumerator);
    std::size_t refusals = 0;
    for (int i = 0; i < 20; ++i) {
        refusals += RefuseEachAllocation([&] { enumerator->Push(member.Get()); },
                                         [&] { EXPECT_EQ(ReferencesOf(member.Get()), 1 + i); });
        EXPECT_EQ(ReferencesOf(member.Get()), 2 + i);
    }
    EXPECT_GE(refusals, 1u);
    enumerator.Reset();
    EXPECT_EQ(ReferencesOf(member.Get()), 1);
}

} // namespace
} // namespace vorlund::test
