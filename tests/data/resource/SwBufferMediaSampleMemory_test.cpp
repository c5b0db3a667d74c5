// What samples allocate.
#include "vorlund/data/resource/SwBufferMediaSample.h"

#include <vorlund/StreamSelector.h>

#include "support/Allocations.h"
#include "support/LibraryScope.h"
#include "support/Streams.h"

#include <gtest/gtest.h>

namespace vorlund::test {
namespace {

TEST(SwBufferMediaSampleMemory, ReadingAndWritingAllocateNothing) {
    const CLibraryScope library;
    const auto sample = Make<CSwBufferMediaSample>();
    const auto source = Make<CMemoryInputStream>();
    source->bytes = TBytes(10000, 1);
    const auto target = Make<CMemoryOutputStream>();
    target->bytes.reserve(10000);
    const CInputStreamSelector from(source.Get());
    const COutputStreamSelector to(target.Get());
    const CAllocationCount count;
    while (sample->ReadFrom(from)) sample->WriteTo(to);
    EXPECT_EQ(count.Get(), 0U);
    EXPECT_EQ(target->bytes, source->bytes);
}

} // namespace
} // namespace vorlund::test
