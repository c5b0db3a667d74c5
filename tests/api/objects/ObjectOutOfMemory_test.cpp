// Plain objects when memory runs out.
#include "support/LibraryScope.h"
#include "support/Probes.h"
#include "support/RefuseEachAllocation.h"

#include <gtest/gtest.h>

namespace vorlund::test {
namespace {

TEST(ObjectOutOfMemory, ListenerThatIsNotAddedIsNotTold) {
    const CLibraryScope library;
    auto object = NewProbe();
    CTestListener listener;
    constexpr int kListeners = 20;
    std::size_t refusals = 0;
    for (int added = 0; added < kListeners; ++added)
        refusals += RefuseEachAllocation([&] { object->AddListener(&listener); }, [] {});
    EXPECT_GE(refusals, 1u);
    object.Reset();
    EXPECT_EQ(listener.GetCalls(), kListeners);
}

} // namespace
} // namespace vorlund::test
