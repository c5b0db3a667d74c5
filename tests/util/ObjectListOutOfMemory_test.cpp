// Object lists and their enumerators when memory runs out.
#include <vorlund/ClassIds.h>
#include <vorlund/ObjectList.h>

#include "support/LibraryScope.h"
#include "support/Probes.h"
#include "support/RefuseEachAllocation.h"

#include <gtest/gtest.h>

namespace vorlund::test {
namespace {

TEST(ObjectListOutOfMemory, MembersThatAreNotAddedAreNotReferenced) {
    const CLibraryScope library;
    const auto member = NewProbe();
    auto list = CreateAs<IObjectList>(classid::CObjectList);
    std::size_t refusals = 0;
    for (int i = 0; i < 20; ++i) {
        const int references = ReferencesOf(member.Get());
        refusals += RefuseEachAllocation([&] { list->AddObject(member.Get()); },
                                         [&] { EXPECT_EQ(ReferencesOf(member.Get()), references); });
        EXPECT_EQ(ReferencesOf(member.Get()), references + 1);
    }
    EXPECT_GE(refusals, 1u);
    EXPECT_EQ(list->GetObjectCount(), 20u);
    list.Reset();
    EXPECT_EQ(ReferencesOf(member.Get()), 1);
}

TEST(ObjectListOutOfMemory, EnumerationReleasesWhatItHas) {
    const CLibraryScope library;
    const auto member = NewProbe();
    const auto list = CreateAs<IObjectList>(classid::CObjectList);
    for (int i = 0; i < 5; ++i) list->AddObject(member.Get());
    CRefPtr<IObjectEnumerator> enumerator;
    EXPECT_GE(RefuseEachAllocation(
                  [&] { enumerator = CRefPtr<IObjectEnumerator>::Adopt(list->EnumerateObjects()); },
                  [&] { EXPECT_EQ(ReferencesOf(member.Get()), 6); }),
              1u);
    EXPECT_EQ(ReferencesOf(member.Get()), 11);
}

} // namespace
} // namespace vorlund::test
