// What plain objects allocate.
#include "support/Allocations.h"
#include "support/LibraryScope.h"
#include "support/Probes.h"

#include <gtest/gtest.h>

namespace vorlund::test {
namespace {

TEST(ObjectMemory, CountingAndAskingAllocateNothing) {
    const CLibraryScope library;
    const auto object = NewProbe();
    CTestListener listener;
    const CAllocationCount count;
    for (int i = 0; i < 100; ++i) {
        object->AddRef();
        object->QueryInterface(IObject::InterfaceId);
        object->Release();
        object->Release();
        object->RemoveListener(&listener);
    }
    EXPECT_EQ(count.Get(), 0u);
}

} // namespace
} // namespace vorlund::test
