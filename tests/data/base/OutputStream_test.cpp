// The default output stream.
#include <vorlund/ClassIds.h>
#include <vorlund/DataFormat.h>
#include <vorlund/RefPtr.h>

#include "data/base/InterfaceChain.h"
#include "support/LibraryScope.h"

#include <gtest/gtest.h>

namespace vorlund::test {
namespace {

class OutputStream : public testing::Test {
protected:
    ~OutputStream() noexcept override {}
    CLibraryScope library_;
    CRefPtr<IOutputStream> stream_ = CreateAs<IOutputStream>(classid::COutputStream);
};

TEST_F(OutputStream, Identity) {
    EXPECT_EQ(stream_->GetClassId(), CId(0x0FE0B4F4, 0x071C48C9, 0xA85231DC, 0x6B8A101A));
    ExpectChain(stream_.Get(), {IOutputStream::InterfaceId, IStream::InterfaceId, IObject::InterfaceId});
}

TEST_F(OutputStream, Answers) {
    EXPECT_EQ(stream_->GetCapabilities(), 11U);
    EXPECT_EQ(stream_->GetLength(), 0);
    EXPECT_EQ(stream_->Tell(), 0);
}

TEST_F(OutputStream, EverythingElseDoesNothing) {
    stream_->Write("abc", 3);
    stream_->Write(nullptr, 0);
    stream_->SetFormat(&TDataFormat_AudioPcm::FORMAT_44100HZ_16BIT_MONO);
    stream_->SetFormat(nullptr);
    stream_->Seek(7);
    stream_->Flush();
    stream_->Close();
    stream_->Close();
    EXPECT_EQ(stream_->GetCapabilities(), 11U);
    EXPECT_EQ(stream_->GetLength(), 0);
    EXPECT_EQ(stream_->Tell(), 0);
}

} // namespace
} // namespace vorlund::test
