// The memory of the filters over `CGuardedFilterImpl`, when the stream below them fails as it ends.
#include <vorlund/ClassIds.h>
#include <vorlund/RefPtr.h>
#include <vorlund/StreamFilter.h>

#include "support/Allocations.h"
#include "support/Failures.h"
#include "support/LibraryScope.h"
#include "support/Probes.h"
#include "support/Streams.h"

#include <gtest/gtest.h>

namespace vorlund::test {
namespace {

TEST(GuardedFilterImplMemory, NothingIsLeftWhenTheEndOfTheStreamRaises) {
    const CLibraryScope library;
    CTestListener listener([](IObject*) { Raise<CInvalidStateException>(streamfailures::kCannotRead); });
    const auto endOfAFilter = [&] {
        auto filter = CreateAs<IInputStreamFilter>(classid::CSetFormatIsf);
        auto stream = Make<CMemoryInputStream>();
        stream->AddListener(&listener);
        filter->Connect(stream.Get());
        stream.Reset();
        ExpectRaises<CInvalidStateException>(streamfailures::kCannotRead, [&] { filter.Reset(); });
    };
    endOfAFilter();
    const CMemoryWatch watch;
    endOfAFilter();
    EXPECT_EQ(watch.GetLiveBlocks(), 0);
}

} // namespace
} // namespace vorlund::test
