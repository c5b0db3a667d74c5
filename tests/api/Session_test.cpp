#include <vorlund/Exception.h>
#include <vorlund/RefPtr.h>
#include <vorlund/Session.h>

#include "support/Probes.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace vorlund::test {
namespace {

bool IsLibraryOpen() {
    try {
        NewProbe();
        return true;
    } catch (const CBugException&) {
        return false;
    }
}

TEST(Session, OpensAndCloses) {
    {
        const CSession session(false);
        EXPECT_TRUE(IsLibraryOpen());
    }
    EXPECT_FALSE(IsLibraryOpen());
    const CSession again(false);
    EXPECT_TRUE(IsLibraryOpen());
}

TEST(Session, ClosesWhenSomethingIsRaised) {
    try {
        const CSession session(false);
        const auto object = NewProbe();
        throw std::runtime_error("test");
    } catch (const std::runtime_error&) {
        EXPECT_FALSE(IsLibraryOpen());
    }
    EXPECT_EQ(CProbe::alive, 0);
}

TEST(Session, ClosesBelowAnObjectThatIsStillHeld) {
    CSafeRefPtr<IObject> late;
    {
        const CSession session(false);
        late = NewProbe();
    }
    EXPECT_FALSE(IsLibraryOpen());
    late = {};
    EXPECT_EQ(CProbe::alive, 0);
}

} // namespace
} // namespace vorlund::test
