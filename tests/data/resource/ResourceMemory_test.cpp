// What resources hold: the data and nothing else.
#include "data/resource/ResourceTest.h"
#include "support/Allocations.h"
#include "support/Failures.h"
#include "support/NothingLeft.h"

#include <vorlund/Exception.h>

#include <gtest/gtest.h>

namespace vorlund::test {
namespace {

class ResourceMemory : public CResourceTest {};

TEST_F(ResourceMemory, FailedLoadFreesItsBlock) {
    const auto source = Make<CFaultyInputStream>();
    source->bytes = Ramp(500);
    const CInputStreamSelector selector(source.Get());
    resource_->SetSize(0);
    source->claimedLength = 501;
    const CMemoryWatch whole;
    resource_->Load(selector);
    EXPECT_EQ(whole.GetLiveBlocks(), 0);
    const auto expectRaises = [&] {
        source->position = 0;
        source->failAt = 10;
        ExpectRaises<CIOException>(streamfailures::kCannotRead, [&] { resource_->Load(selector); });
    };
    ExpectNothingLeftAgain(expectRaises);
}

TEST_F(ResourceMemory, LoadHoldsTheDataAndNothingElse) {
    constexpr std::size_t kSize = 1 << 20;
    const auto source = Make<CMemoryInputStream>();
    source->bytes = TBytes(kSize, 1);
    resource_->SetSize(kSize);
    const CInputStreamSelector selector(source.Get());
    const CInputStreamSelector reader(resource_.Get());
    TBytes back(4096);
    const CMemoryWatch watch;
    const CAllocationCount count;
    resource_->Load(selector);
    // The former data were freed first.
    EXPECT_LE(watch.GetPeakBytes(), 4096U);
    EXPECT_EQ(count.Get(), 1U);
    while (reader.GetInputStreamTmp()->Read(back.data(), back.size()) > 0) continue;
    EXPECT_EQ(count.Get(), 1U);
}

TEST_F(ResourceMemory, GrowingAllocatesSeldom) {
    const auto stream = CreateAs<IAppendingRos>(classid::CAppendingRos);
    stream->SetResource(resource_.Get());
    resource_->SetSize(0);
    const std::uint8_t byte = 1;
    const CAllocationCount count;
    for (int i = 0; i < 100000; ++i) stream->Write(&byte, 1);
    EXPECT_LE(count.Get(), 12U);
    EXPECT_EQ(BytesOf(*resource_), TBytes(100000, 1));
}

} // namespace
} // namespace vorlund::test
