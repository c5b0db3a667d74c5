// Resources and memory: every allocation of an operation is refused in turn, and nothing is held but the
// data.
#include "vorlund/data/resource/ByteBlock.h"

#include "data/resource/ForeignResource.h"
#include "data/resource/ResourceTest.h"

#include "support/Allocations.h"

#include <vorlund/Exception.h>
#include <vorlund/StreamFilter.h>

#include <new>

namespace vorlund::test {
namespace {

/// How one run with a refused allocation ended.
enum class TEnd { Done, OutOfMemory, Foreign };

/// Calls `act` with its first allocation refused, then with its second, and so on until none is; calls
/// `check` with the end of each run. Gives the number of refusals.
template <class TAct, class TCheck> std::size_t RefuseEachAllocation(const TAct& act, const TCheck& check) {
    for (std::size_t i = 0;; ++i) {
        TEnd end = TEnd::Done;
        bool hasFailed = false;
        {
            const CAllocationFailure failure(i);
            try {
                act();
            } catch (const std::bad_alloc&) {
                end = TEnd::OutOfMemory;
            } catch (const COutOfMemoryException&) {
                end = TEnd::OutOfMemory;
            } catch (...) {
                end = TEnd::Foreign;
            }
            hasFailed = failure.HasFailed();
        }
        if (!hasFailed) return i;
        EXPECT_NE(end, TEnd::Foreign);
        check(end);
        if (testing::Test::HasFailure() || i > 100) {
            ADD_FAILURE() << "after refusing allocation " << i;
            return i;
        }
    }
}

class ResourceMemory : public CResourceTest {
protected:
    ResourceMemory() { SetBytes(*resource_, Ramp(100)); }

    void ExpectUnchanged() {
        EXPECT_EQ(BytesOf(*resource_), Ramp(100));
        EXPECT_EQ(resource_->GetFormat()->size, 20U);
        EXPECT_TRUE(IsUnlocked(*resource_));
        EXPECT_EQ(ReferencesOf(resource_.Get()), 1);
    }
};

TEST_F(ResourceMemory, Creation) {
    const CMemoryWatch watch;
    const auto create = [] { CreateAs<IResource>(classid::CResource).Reset(); };
    EXPECT_GE(RefuseEachAllocation(create, [](TEnd end) { EXPECT_EQ(end, TEnd::OutOfMemory); }), 2U);
    EXPECT_EQ(watch.GetLiveBlocks(), 0);
}

TEST_F(ResourceMemory, SizeWithoutMemoryHasNoData) {
    EXPECT_EQ(RefuseEachAllocation([&] { resource_->SetSize(500); },
                                   [&](TEnd end) {
                                       EXPECT_EQ(end, TEnd::Done);
                                       EXPECT_EQ(resource_->GetSize(), 500U);
                                       EXPECT_EQ(BytesOf(*resource_), TBytes());
                                   }),
              1U);
    EXPECT_NE(resource_->Lock(LOCK_MODE_READ), nullptr);
    resource_->Unlock();
}

TEST_F(ResourceMemory, LoadWithoutMemoryLeavesNothing) {
    const auto source = Make<CMemoryInputStream>();
    source->bytes = Ramp(500);
    const CInputStreamSelector selector(source.Get());
    EXPECT_EQ(RefuseEachAllocation([&] { resource_->Load(selector); },
                                   [&](TEnd end) {
                                       EXPECT_EQ(end, TEnd::Done);
                                       EXPECT_EQ(resource_->GetSize(), 0U);
                                       EXPECT_TRUE(IsUnlocked(*resource_));
                                       EXPECT_EQ(source->position, 0);
                                   }),
              1U);
    EXPECT_EQ(BytesOf(*resource_), Ramp(500));
}

TEST_F(ResourceMemory, FailedLoadFreesItsBlock) {
    const auto source = Make<CFaultyInputStream>();
    source->bytes = Ramp(500);
    const CInputStreamSelector selector(source.Get());
    resource_->SetSize(0);
    const CMemoryWatch watch;
    source->claimedLength = 501;
    resource_->Load(selector);
    EXPECT_EQ(watch.GetLiveBlocks(), 0);
    source->position = 0;
    source->failAt = 10;
    EXPECT_THROW(resource_->Load(selector), CIOException);
    EXPECT_EQ(watch.GetLiveBlocks(), 0);
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

TEST_F(ResourceMemory, Filter) {
    const auto filter = CreateAs<IInputStreamFilter>(classid::CInputStreamFilter);
    const CMemoryWatch watch;
    EXPECT_GE(RefuseEachAllocation([&] { resource_->ApplyFilter(filter.Get()); },
                                   [&](TEnd end) {
                                       // A block that cannot be cut to size stays as it is.
                                       if (end != TEnd::Done) ExpectUnchanged();
                                   }),
              3U);
    EXPECT_EQ(BytesOf(*resource_), Ramp(100));
    EXPECT_EQ(watch.GetLiveBlocks(), 0);
}

TEST_F(ResourceMemory, Format) {
    const TDataFormat_AudioPcm format(1, 2, 44100);
    EXPECT_EQ(RefuseEachAllocation([&] { resource_->SetFormat(&format); },
                                   [&](TEnd end) {
                                       EXPECT_EQ(end, TEnd::OutOfMemory);
                                       ExpectUnchanged();
                                   }),
              1U);
    EXPECT_EQ(resource_->GetFormat()->size, 32U);
}

TEST_F(ResourceMemory, GrowingTriesForLessBeforeItFails) {
    const auto stream = CreateAs<IResourceOs>(classid::CResourceOs);
    stream->SetResource(resource_.Get());
    stream->Seek(100);
    const std::uint8_t byte = 1;
    // The generous block alone may be refused.
    EXPECT_EQ(
        RefuseEachAllocation([&] { stream->Write(&byte, 1); }, [&](TEnd end) { EXPECT_EQ(end, TEnd::Done); }),
        1U);
    EXPECT_EQ(resource_->GetSize(), 102U);
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

TEST_F(ResourceMemory, ForeignResourceWithoutRoomForACopy) {
    const auto foreign = Make<CForeignResource>();
    foreign->bytes = Ramp(4);
    foreign->locks.reserve(100);
    foreign->locksTaken.reserve(100);
    const auto stream = CreateAs<IAppendingRos>(classid::CAppendingRos);
    stream->SetResource(foreign.Get());
    const std::uint8_t byte = 9;
    {
        const CAllocationFailure failure(0);
        EXPECT_THROW(stream->Write(&byte, 1), COutOfMemoryException);
        EXPECT_TRUE(failure.HasFailed());
    }
    EXPECT_EQ(foreign->bytes, Ramp(4));
    EXPECT_TRUE(foreign->locks.empty());
}

TEST_F(ResourceMemory, Streams) {
    const CMemoryWatch watch;
    for (const CId& id : {classid::CResourceIs, classid::CResourceOs, classid::CAppendingRos})
        EXPECT_EQ(RefuseEachAllocation([&] { CreateAs<IObject>(id).Reset(); },
                                       [](TEnd end) { EXPECT_EQ(end, TEnd::OutOfMemory); }),
                  1U);
    EXPECT_EQ(watch.GetLiveBlocks(), 0);
}

// Blocks.

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
