// The default input stream.
#include <vorlund/ClassIds.h>
#include <vorlund/DataFormat.h>
#include <vorlund/Exception.h>
#include <vorlund/RefPtr.h>

#include "data/base/InterfaceChain.h"
#include "support/Failures.h"
#include "support/LibraryScope.h"

#include <gtest/gtest.h>

namespace vorlund::test {
namespace {

constexpr const wchar* kFile = VRL_L("src/vorlund/data/InputStream");
constexpr const wchar* kRead = VRL_L("vorlund::CInputStream::Read");
constexpr TFailure kSampleIsNull{kRead, kFile, 71, VRL_L("sample is NULL")};
constexpr TFailure kNoMediaSamples{kRead, kFile, 72, VRL_L("Media samples are not supported")};
constexpr TFailure kBufferIsNull{kRead, kFile, 77, VRL_L("buffer is NULL")};

class InputStream : public testing::Test {
protected:
    ~InputStream() noexcept override {}
    CLibraryScope library_;
    CRefPtr<IInputStream> stream_ = CreateAs<IInputStream>(classid::CInputStream);
};

TEST_F(InputStream, Identity) {
    EXPECT_EQ(stream_->GetClassId(), CId(0x0B43B630, 0xECE04EAE, 0x86EACA3C, 0xC4FEB484));
    ExpectChain(stream_.Get(), {IInputStream::InterfaceId, IStream::InterfaceId, IObject::InterfaceId});
}

TEST_F(InputStream, AnswersOfAnEmptyStream) {
    EXPECT_EQ(stream_->GetCapabilities(), 15U);
    EXPECT_EQ(stream_->GetLength(), 0);
    EXPECT_EQ(stream_->Tell(), 0);
    EXPECT_TRUE(stream_->Eof());
    for (const std::uint32_t argument : {0U, 1U, 0xFFFFFFFFU}) {
        EXPECT_FALSE(stream_->SupportsMediaSamples(argument));
    }
}

TEST_F(InputStream, MovingDoesNothing) {
    stream_->Seek(10);
    EXPECT_EQ(stream_->Tell(), 0);
    stream_->Seek(-1);
    EXPECT_EQ(stream_->Tell(), 0);
    stream_->Skip(10);
    EXPECT_EQ(stream_->Tell(), 0);
    stream_->Flush();
    EXPECT_TRUE(stream_->Eof());
}

TEST_F(InputStream, ClosesAnyNumberOfTimes) {
    stream_->Close();
    stream_->Close();
    EXPECT_EQ(stream_->GetCapabilities(), 15U);
}

TEST_F(InputStream, HasTheOneEmptyFormat) {
    EXPECT_EQ(stream_->GetFormat().id, CId::Null());
    EXPECT_EQ(stream_->GetFormat().size, 20U);
    const auto other = CreateAs<IInputStream>(classid::CInputStream);
    EXPECT_EQ(&stream_->GetFormat(), &other->GetFormat());
    EXPECT_EQ(&stream_->GetFormat(), &GetEmptyFormat());
}

TEST_F(InputStream, ReadsNothingAndLeavesTheBuffer) {
    char buffer[] = "abc";
    EXPECT_EQ(stream_->Read(buffer, 3), 0U);
    EXPECT_EQ(stream_->Read(buffer, 0), 0U);
    EXPECT_EQ(stream_->Read(buffer, ~std::uint64_t{0}), 0U);
    EXPECT_STREQ(buffer, "abc");
}

TEST_F(InputStream, NullBufferComesBeforeTheSize) {
    ExpectRaises<CNullPtrException>(kBufferIsNull, [&] { stream_->Read(nullptr, 0); });
    ExpectRaises<CNullPtrException>(kBufferIsNull, [&] { stream_->Read(nullptr, 1); });
}

TEST_F(InputStream, RefusesMediaSamples) {
    ExpectRaises<CNullPtrException>(kSampleIsNull,
                                    [&] { stream_->Read(static_cast<IMediaSample*>(nullptr)); });
    const auto sample = CreateAs<IMediaSample>(classid::CMediaSample);
    ExpectRaises<CInvalidStateException>(kNoMediaSamples, [&] { stream_->Read(sample.Get()); });
    const auto buffered = CreateAs<IMediaSample>(classid::CSwBufferMediaSample);
    ExpectRaises<CInvalidStateException>(kNoMediaSamples, [&] { stream_->Read(buffered.Get()); });
}

} // namespace
} // namespace vorlund::test
