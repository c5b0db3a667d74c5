// The empty media sample.
#include <vorlund/ClassIds.h>
#include <vorlund/RefPtr.h>
#include <vorlund/StreamSelector.h>

#include "data/base/InterfaceChain.h"
#include "support/LibraryScope.h"
#include "support/Streams.h"

#include <gtest/gtest.h>

namespace vorlund::test {
namespace {

class MediaSample : public testing::Test {
protected:
    ~MediaSample() noexcept override {}
    CLibraryScope library_;
    CRefPtr<IMediaSample> sample_ = CreateAs<IMediaSample>(classid::CMediaSample);
};

TEST_F(MediaSample, Identity) {
    EXPECT_EQ(sample_->GetClassId(), CId(0xDFAB86E9, 0x794A4EAE, 0x9FE1B079, 0x0B782B82));
    ExpectChain(sample_.Get(), {IMediaSample::InterfaceId, IObject::InterfaceId});
}

TEST_F(MediaSample, HasNoFlags) {
    EXPECT_EQ(sample_->GetSampleFlags(), 0U);
}

TEST_F(MediaSample, CloneIsANewObjectOfTheClass) {
    const auto clone = CRefPtr<IMediaSample>::Adopt(sample_->Clone());
    ASSERT_TRUE(clone);
    EXPECT_NE(clone.Get(), sample_.Get());
    EXPECT_EQ(clone->GetClassId(), classid::CMediaSample);
    EXPECT_EQ(clone->GetObjectNumber(), sample_->GetObjectNumber() + 1);
    EXPECT_EQ(clone->AddRef(), 2);
    EXPECT_EQ(clone->Release(), 1);
}

TEST_F(MediaSample, ReadsAndWritesNothing) {
    TCallLog log;
    const auto input = Make<CMemoryInputStream>();
    input->bytes = {1, 2, 3};
    input->log = &log;
    EXPECT_FALSE(sample_->ReadFrom(CInputStreamSelector(input.Get())));
    const auto output = Make<CMemoryOutputStream>();
    output->log = &log;
    sample_->WriteTo(COutputStreamSelector(output.Get()));
    sample_->WriteTo(COutputStreamSelector(static_cast<IOutputStream*>(nullptr)));
    EXPECT_TRUE(log.empty());
}

} // namespace
} // namespace vorlund::test
