#include <vorlund/ClassIds.h>
#include <vorlund/ObjectList.h>
#include <vorlund/RefPtr.h>
#include <vorlund/Vorlund.h>

#include "support/LibraryScope.h"

#include <gtest/gtest.h>

namespace vorlund::test {
namespace {

TEST(ObjectEnumerator, IsAlwaysEmpty) {
    const CLibraryScope library;
    const auto enumerator = CreateAs<IObjectEnumerator>(classid::CObjectEnumerator);
    for (int i = 0; i < 3; ++i) {
        EXPECT_FALSE(enumerator->HasNext());
        EXPECT_EQ(enumerator->GetNext(), nullptr);
    }
    EXPECT_FALSE(enumerator.Query<IPushObjectEnumerator>());
}

} // namespace
} // namespace vorlund::test
