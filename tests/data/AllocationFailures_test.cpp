// Samples, selectors and the codec class store when memory runs out: each operation is repeated with every
// one of its allocations refused in turn, and must leave things as they were, with nothing leaked.
#include "vorlund/data/resource/SwBufferMediaSample.h"

#include <vorlund/CodecClassStore.h>
#include <vorlund/ObjectList.h>
#include <vorlund/StreamSelector.h>
#include <vorlund/Vorlund.h>

#include "support/Allocations.h"
#include "support/LibraryScope.h"
#include "support/Probes.h"
#include "support/TestDecoders.h"

#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <new>

namespace vorlund::test {
namespace {

/// Calls `act` with its first allocation refused, then with its second, and so on until it succeeds; calls
/// `check` after each failure. Gives the number of failures.
template <class TAct, class TCheck> std::size_t RefuseEachAllocation(const TAct& act, const TCheck& check) {
    for (std::size_t i = 0;; ++i) {
        bool hasRaised = false;
        {
            const CAllocationFailure failure(i);
            try {
                act();
            } catch (const std::bad_alloc&) {
                hasRaised = true;
            }
            EXPECT_EQ(failure.HasFailed(), hasRaised);
        }
        if (!hasRaised) return i;
        // The note comes afterwards: making it would count as memory that the operation has left behind.
        check();
        if (testing::Test::HasFailure() || i > 1000) {
            ADD_FAILURE() << "after refusing allocation " << i;
            return i;
        }
    }
}

class AllocationFailures : public testing::Test {
protected:
    AllocationFailures() {
        sample_->SetDataSize(3);
        std::memcpy(sample_->GetBuffer(), "abc", 3);
    }
    ~AllocationFailures() noexcept override {}

    void ExpectSampleUnchanged() {
        EXPECT_EQ(sample_->GetBufferSize(), 4096U);
        EXPECT_EQ(sample_->GetDataSize(), 3U);
        EXPECT_EQ(std::memcmp(sample_->GetBuffer(), "abc", 3), 0);
        EXPECT_EQ(sample_->GetFormat()->size, 20U);
    }

    CLibraryScope library_;
    CRefPtr<CSwBufferMediaSample> sample_ = Make<CSwBufferMediaSample>();
};

TEST_F(AllocationFailures, BufferSize) {
    EXPECT_EQ(RefuseEachAllocation([&] { sample_->SetBufferSize(10000); }, [&] { ExpectSampleUnchanged(); }),
              1U);
    EXPECT_EQ(sample_->GetBufferSize(), 10000U);
}

TEST_F(AllocationFailures, Format) {
    const TDataFormat_AudioPcm format(1, 2, 44100);
    EXPECT_EQ(RefuseEachAllocation([&] { sample_->SetFormat(&format); }, [&] { ExpectSampleUnchanged(); }),
              1U);
    EXPECT_EQ(sample_->GetFormat()->size, 32U);
    // In place.
    EXPECT_EQ(RefuseEachAllocation([&] { sample_->SetFormat(&format); }, [] {}), 0U);
}

TEST_F(AllocationFailures, DataSize) {
    EXPECT_EQ(RefuseEachAllocation([&] { sample_->SetDataSize(10000); }, [] {}), 0U);
    EXPECT_EQ(RefuseEachAllocation([&] { sample_->SetDataSize(5); },
                                   [&] {
                                       EXPECT_EQ(sample_->GetBufferSize(), 4096U);
                                       EXPECT_EQ(sample_->GetDataSize(), 10000U);
                                       EXPECT_EQ(std::memcmp(sample_->GetBuffer(), "abc", 3), 0);
                                   }),
              1U);
    EXPECT_EQ(sample_->GetBufferSize(), 10000U);
    EXPECT_EQ(sample_->GetDataSize(), 5U);
}

TEST_F(AllocationFailures, SampleAndClone) {
    const CMemoryWatch watch;
    const auto clone = [&] { CRefPtr<IMediaSample>::Adopt(sample_->Clone()).Reset(); };
    // The object, its format and its buffer.
    EXPECT_EQ(RefuseEachAllocation(clone, [&] { EXPECT_EQ(watch.GetLiveBlocks(), 0); }), 3U);
    EXPECT_EQ(watch.GetLiveBlocks(), 0);
}

TEST_F(AllocationFailures, ReadingAndWritingASampleAllocateNothing) {
    const auto source = Make<CMemoryInputStream>();
    source->bytes = TBytes(10000, 1);
    const auto target = Make<CMemoryOutputStream>();
    target->bytes.reserve(10000);
    const CInputStreamSelector from(source.Get());
    const COutputStreamSelector to(target.Get());
    const CAllocationCount count;
    while (sample_->ReadFrom(from)) sample_->WriteTo(to);
    EXPECT_EQ(count.Get(), 0U);
    EXPECT_EQ(target->bytes, source->bytes);
}

class CodecStoreAllocationFailures : public testing::Test {
protected:
    CodecStoreAllocationFailures() { store_.Init(); }
    ~CodecStoreAllocationFailures() noexcept override { store_.Close(); }

    std::size_t CountDecoders() {
        const auto enumerator = CRefPtr<IObjectEnumerator>::Adopt(store_.EnumerateDecoders());
        std::size_t count = 0;
        for (; enumerator->HasNext(); ++count) CRefPtr<IObject>::Adopt(enumerator->GetNext()).Reset();
        return count;
    }

    CLibraryScope library_;
    CTestDecoders decoders_;
    CCodecClassStore store_;
};

TEST_F(CodecStoreAllocationFailures, InitLeavesTheStoreClosed) {
    store_.Close();
    const CMemoryWatch watch;
    RefuseEachAllocation([&] { store_.Init(); }, [&] { EXPECT_EQ(watch.GetLiveBlocks(), 0); });
    store_.Close();
    EXPECT_EQ(watch.GetLiveBlocks(), 0);
    store_.Init();
}

TEST_F(CodecStoreAllocationFailures, RegistrationIsAllOrNothing) {
    for (std::size_t before = 0; before < 100; ++before) {
        RefuseEachAllocation(
            [&] {
                store_.RegisterDecoder({classid::CObject, TestFormat(1), TestFormat(2)});
            },
            [&] { ASSERT_EQ(CountDecoders(), before); });
        ASSERT_EQ(CountDecoders(), before + 1);
    }
}

TEST_F(CodecStoreAllocationFailures, EnumerationLeaksNothing) {
    for (unsigned int i = 0; i < 20; ++i) {
        store_.RegisterDecoder({classid::CObject, TestFormat(1), TestFormat(2)});
    }
    const CMemoryWatch watch;
    const std::size_t failures =
        RefuseEachAllocation([&] { CountDecoders(); }, [&] { EXPECT_EQ(watch.GetLiveBlocks(), 0); });
    EXPECT_GT(failures, 20U);
    EXPECT_EQ(watch.GetLiveBlocks(), 0);
}

TEST_F(CodecStoreAllocationFailures, SearchLeaksNothing) {
    for (unsigned int i = 0; i < 5; ++i) {
        decoders_.Register(store_, i, {.accepts = TestFormat(i + 1), .produces = TestFormat(i + 2)});
    }
    const auto source = Make<CMemoryInputStream>();
    source->format = HeadOnly(TestFormat(1));
    // No event of the coming search needs memory of its own.
    decoders_.events.reserve(10000);
    const int live = CLiveObject::GetCount();
    for (const CId& wanted : {TestFormat(6), CId::Null()}) {
        const CMemoryWatch watch;
        const auto decode = [&] {
            CRefPtr<IInputStream>::Adopt(store_.DecodeStream(source.Get(), wanted)).Reset();
            decoders_.events.clear();
        };
        const std::size_t failures = RefuseEachAllocation(decode, [&] {
            decoders_.events.clear();
            EXPECT_EQ(CLiveObject::GetCount(), live);
            EXPECT_EQ(ReferencesOf(source.Get()), 1);
            EXPECT_EQ(watch.GetLiveBlocks(), 0);
        });
        // The enumerator, five records and five decoders at least.
        EXPECT_GT(failures, 11U);
        EXPECT_EQ(watch.GetLiveBlocks(), 0);
    }
}

} // namespace
} // namespace vorlund::test
