// Samples when memory runs out.
#include "vorlund/data/resource/SwBufferMediaSample.h"

#include "support/LibraryScope.h"
#include "support/RefuseEachAllocation.h"
#include "support/Streams.h"

#include <gtest/gtest.h>

#include <cstring>

namespace vorlund::test {
namespace {

class SwBufferMediaSampleOutOfMemory : public testing::Test {
protected:
    SwBufferMediaSampleOutOfMemory() {
        sample_->SetDataSize(3);
        std::memcpy(sample_->GetBuffer(), "abc", 3);
    }
    ~SwBufferMediaSampleOutOfMemory() noexcept override {}

    void ExpectSampleUnchanged() {
        EXPECT_EQ(sample_->GetBufferSize(), 4096U);
        EXPECT_EQ(sample_->GetDataSize(), 3U);
        EXPECT_EQ(std::memcmp(sample_->GetBuffer(), "abc", 3), 0);
        EXPECT_EQ(sample_->GetFormat()->size, 20U);
    }

    CLibraryScope library_;
    CRefPtr<CSwBufferMediaSample> sample_ = Make<CSwBufferMediaSample>();
};

TEST_F(SwBufferMediaSampleOutOfMemory, BufferSize) {
    EXPECT_EQ(RefuseEachAllocation([&] { sample_->SetBufferSize(10000); }, [&] { ExpectSampleUnchanged(); }),
              1U);
    EXPECT_EQ(sample_->GetBufferSize(), 10000U);
}

TEST_F(SwBufferMediaSampleOutOfMemory, Format) {
    const TDataFormat_AudioPcm format(1, 2, 44100);
    EXPECT_EQ(RefuseEachAllocation([&] { sample_->SetFormat(&format); }, [&] { ExpectSampleUnchanged(); }),
              1U);
    EXPECT_EQ(sample_->GetFormat()->size, 32U);
    // In place.
    EXPECT_EQ(RefuseEachAllocation([&] { sample_->SetFormat(&format); }, [] {}), 0U);
}

TEST_F(SwBufferMediaSampleOutOfMemory, DataSize) {
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

TEST_F(SwBufferMediaSampleOutOfMemory, SampleAndClone) {
    const auto clone = [&] { CRefPtr<IMediaSample>::Adopt(sample_->Clone()).Reset(); };
    // The object, its format and its buffer.
    EXPECT_EQ(RefuseEachAllocation(clone, [&] { ExpectSampleUnchanged(); }), 3U);
}

} // namespace
} // namespace vorlund::test
