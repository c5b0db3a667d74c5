#include "vorlund/data/resource/ByteBlock.h"

#include "support/Allocations.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>

namespace vorlund::test {
namespace {

TEST(ByteBlock, GrowsByTwoAtLeast) {
    CByteBlock block, former;
    ASSERT_TRUE(block.Allocate(1000));
    ASSERT_TRUE(block.Grow(0, 1000, former));
    EXPECT_EQ(former.Get(), nullptr) << "it is big enough";
    block.Get()[999] = std::byte{7};
    const std::byte* const first = block.Get();
    ASSERT_TRUE(block.Grow(1000, 1001, former));
    EXPECT_EQ(block.GetCapacity(), 2000U);
    EXPECT_EQ(block.Get()[999], std::byte{7});
    EXPECT_EQ(former.Get(), first);
    EXPECT_EQ(former.Get()[999], std::byte{7}) << "still there";
    ASSERT_TRUE(block.Grow(1000, 9000, former));
    EXPECT_EQ(block.GetCapacity(), 9000U);
}

TEST(ByteBlock, TakesNoMoreThanThereMayBe) {
    CByteBlock block, former;
    ASSERT_TRUE(block.Allocate(10));
    const std::byte* const bytes = block.Get();
    for (const std::uint64_t size : {CByteBlock::kMaxSize + 1, ~std::uint64_t{0}}) {
        EXPECT_FALSE(block.Allocate(size));
        EXPECT_FALSE(block.Grow(10, size, former));
        EXPECT_EQ(block.Get(), bytes);
        EXPECT_EQ(block.GetCapacity(), 10U);
    }
    EXPECT_TRUE(block.Allocate(0));
    EXPECT_EQ(block.Get(), nullptr);
    EXPECT_EQ(block.GetCapacity(), 0U);
}

TEST(ByteBlock, TrimsWhatIsWorthIt) {
    CByteBlock block;
    ASSERT_TRUE(block.Allocate(10000));
    block.Get()[0] = std::byte{7};
    block.Trim(6000);
    EXPECT_EQ(block.GetCapacity(), 10000U);
    {
        const CAllocationFailure failure(0);
        block.Trim(5000);
        EXPECT_TRUE(failure.HasFailed());
    }
    EXPECT_EQ(block.GetCapacity(), 10000U);
    block.Trim(5000);
    EXPECT_EQ(block.GetCapacity(), 5000U);
    EXPECT_EQ(block.Get()[0], std::byte{7});
    block.Trim(0);
    EXPECT_EQ(block.Get(), nullptr);
}

} // namespace
} // namespace vorlund::test
