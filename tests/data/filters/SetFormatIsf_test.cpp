// The format-setting filter.
#include <vorlund/ClassIds.h>
#include <vorlund/DataFormat.h>
#include <vorlund/Exception.h>
#include <vorlund/MediaSample.h>
#include <vorlund/RefPtr.h>
#include <vorlund/SetFormatIsf.h>

#include "data/base/InterfaceChain.h"
#include "support/Failures.h"
#include "support/LibraryScope.h"
#include "support/Probes.h"
#include "support/Streams.h"

#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <stdexcept>

namespace vorlund::test {
namespace {

constexpr const wchar* kFile = VRL_L("src/vorlund/data/filters/SetFormatIsf");
constexpr const wchar* kRead = VRL_L("vorlund::CSetFormatIsf::Read");
constexpr const wchar* kNotConnected = VRL_L("Stream is not connected");

class SetFormatIsf : public testing::Test {
protected:
    ~SetFormatIsf() noexcept override {}
    CRefPtr<CFaultyInputStream> Source() {
        auto stream = Make<CFaultyInputStream>();
        stream->bytes = {1, 2, 3, 4, 5};
        stream->format = TDataFormat_AudioPcm::FORMAT_44100HZ_16BIT_MONO;
        stream->log = &log_;
        return stream;
    }
    /// The format has exactly the bytes of `expected`.
    template <class TFormat> void ExpectFormat(const TFormat& expected) {
        const TDataFormat& format = filter_->GetFormat();
        ASSERT_EQ(format.size, expected.size);
        EXPECT_EQ(std::memcmp(&format, &expected, expected.size), 0);
    }

    CLibraryScope library_;
    TCallLog log_;
    CRefPtr<ISetFormatIsf> filter_ = CreateAs<ISetFormatIsf>(classid::CSetFormatIsf);
    char buffer_[8] = {};
};

TEST_F(SetFormatIsf, Identity) {
    EXPECT_EQ(filter_->GetClassId(), CId(0x14A97652, 0xF7A748C9, 0x966907FC, 0xE273A999));
    ExpectChain(filter_.Get(), {IInputStreamFilter::InterfaceId, IInputStream::InterfaceId,
                                IStream::InterfaceId, IObject::InterfaceId});
    EXPECT_TRUE(filter_.Query<ISetFormatIsf>());
}

// Not connected.

TEST_F(SetFormatIsf, FailuresWithoutAStream) {
    const auto row = [](const wchar* method, int line) {
        return TFailure{method, kFile, line, kNotConnected};
    };
    using TNot = COperationNotSupportedException;
    ExpectRaises<TNot>(row(VRL_L("vorlund::CSetFormatIsf::Seek"), 85), [&] { filter_->Seek(0); });
    ExpectRaises<TNot>(row(VRL_L("vorlund::CSetFormatIsf::Tell"), 91), [&] { filter_->Tell(); });
    ExpectRaises<TNot>(row(VRL_L("vorlund::CSetFormatIsf::GetLength"), 103), [&] { filter_->GetLength(); });
    ExpectRaises<CIOException>(row(kRead, 111), [&] { filter_->Read(buffer_, 0); });
    ExpectRaises<CIOException>(row(VRL_L("vorlund::CSetFormatIsf::Skip"), 128), [&] { filter_->Skip(0); });
    ExpectRaises<CIOException>(row(VRL_L("vorlund::CSetFormatIsf::Flush"), 148), [&] { filter_->Flush(); });
}

TEST_F(SetFormatIsf, FailuresOfArgumentsComeFirst) {
    const auto source = Source();
    const auto sample = CreateAs<IMediaSample>(classid::CSwBufferMediaSample);
    for (const bool isConnected : {false, true}) {
        filter_->Connect(isConnected ? source.Get() : nullptr);
        ExpectRaises<CNullPtrException>({kRead, kFile, 109, VRL_L("buffer is NULL")},
                                        [&] { filter_->Read(nullptr, 0); });
        ExpectRaises<CNullPtrException>({kRead, kFile, 121, VRL_L("sample is NULL")},
                                        [&] { filter_->Read(nullptr); });
        ExpectRaises<CInvalidParameterException>(
            {kRead, kFile, 122, VRL_L("Media samples are not supported")},
            [&] { filter_->Read(sample.Get()); });
        EXPECT_FALSE(filter_->SupportsMediaSamples(0));
        EXPECT_FALSE(filter_->SupportsMediaSamples(1));
    }
    EXPECT_TRUE(log_.empty());
}

TEST_F(SetFormatIsf, AnswersWithoutAStream) {
    EXPECT_EQ(filter_->GetCapabilities(), 0u);
    EXPECT_TRUE(filter_->Eof());
    EXPECT_EQ(filter_->GetInputStream(), nullptr);
    filter_->Close();
    filter_->Disconnect();
    filter_->Connect(nullptr);
    ExpectFormat(TDataFormat());
}

// Connected.

TEST_F(SetFormatIsf, HandsEverythingOn) {
    const auto source = Source();
    filter_->Connect(source.Get());
    for (const std::uint32_t capabilities : {0u, 7u, 0xFFFFFFFFu}) {
        source->capabilities = capabilities;
        EXPECT_EQ(filter_->GetCapabilities(), capabilities);
    }
    EXPECT_EQ(filter_->GetLength(), 5);
    source->claimedLength = std::numeric_limits<std::int64_t>::min();
    EXPECT_EQ(filter_->GetLength(), std::numeric_limits<std::int64_t>::min());
    filter_->Seek(1);
    EXPECT_EQ(filter_->Tell(), 1);
    EXPECT_EQ(filter_->Read(buffer_, 2), 2u);
    EXPECT_EQ(buffer_[0], 2);
    EXPECT_EQ(buffer_[1], 3);
    filter_->Skip(1);
    EXPECT_FALSE(filter_->Eof());
    EXPECT_EQ(filter_->Read(buffer_, std::uint64_t{1} << 40), 1u);
    EXPECT_EQ(buffer_[0], 5);
    EXPECT_TRUE(filter_->Eof());
    filter_->Flush();
    filter_->Seek(-1);
    EXPECT_EQ(log_, (TCallLog{"Seek 1", "Read 2", "Skip 1", "Read 1099511627776", "Flush", "Seek -1"}));
}

TEST_F(SetFormatIsf, ConnectsToAStreamThatCannotSeek) {
    const auto source = Source();
    source->capabilities = STREAM_CAPABILITY_READ;
    source->failAt = 0;
    filter_->Connect(source.Get());
    // The failures are the stream's own.
    ExpectRaises<COperationNotSupportedException>(streamfailures::kCannotSeek, [&] { filter_->Seek(0); });
    ExpectRaises<COperationNotSupportedException>(streamfailures::kCannotTell, [&] { filter_->Tell(); });
    ExpectRaises<CIOException>(streamfailures::kCannotRead, [&] { filter_->Read(buffer_, 1); });
}

TEST_F(SetFormatIsf, ClosingClosesTheStreamAndDisconnects) {
    const auto source = Source();
    filter_->Connect(source.Get());
    filter_->Close();
    EXPECT_EQ(log_, TCallLog{"Close"});
    EXPECT_EQ(ReferencesOf(source.Get()), 1);
    EXPECT_EQ(filter_->GetInputStream(), nullptr);
    ExpectRaises<CIOException>({kRead, kFile, 111, kNotConnected}, [&] { filter_->Read(buffer_, 1); });
    filter_->Close();
    EXPECT_EQ(source->closed, 1);
}

TEST_F(SetFormatIsf, HoldsOneReference) {
    const auto first = Source();
    const auto second = Source();
    filter_->Connect(first.Get());
    EXPECT_EQ(ReferencesOf(first.Get()), 2);
    IInputStream* const answer = filter_->GetInputStream();
    EXPECT_EQ(answer, first.Get());
    EXPECT_EQ(ReferencesOf(first.Get()), 3);
    answer->Release();
    filter_->Connect(second.Get());
    EXPECT_EQ(ReferencesOf(first.Get()), 1);
    filter_->Connect(nullptr);
    EXPECT_EQ(ReferencesOf(second.Get()), 1);
    filter_->Connect(second.Get());
    filter_.Reset();
    EXPECT_EQ(ReferencesOf(second.Get()), 1);
    // Only `Close` closes.
    EXPECT_TRUE(log_.empty());
}

// The format.

TEST_F(SetFormatIsf, IsEmptyUntilItIsSet) {
    const auto source = Source();
    filter_->Connect(source.Get());
    ExpectFormat(TDataFormat());
    filter_->SetFormat(&TDataFormat_AudioPcm::FORMAT_44100HZ_16BIT_51);
    ExpectFormat(TDataFormat_AudioPcm::FORMAT_44100HZ_16BIT_51);
    filter_->Close();
    ExpectFormat(TDataFormat_AudioPcm::FORMAT_44100HZ_16BIT_51);
}

TEST_F(SetFormatIsf, KeepsACopy) {
    TDataFormat_AudioPcm format(SAMPLE_FORMAT_FLOAT, 6, 48000);
    filter_->SetFormat(&format);
    const TDataFormat_AudioPcm before = format;
    EXPECT_NE(&filter_->GetFormat(), &format);
    format.channels = 1;
    ExpectFormat(before);
    filter_->Connect(Source().Get());
    ExpectFormat(before);
}

TEST_F(SetFormatIsf, TakesRecordsOfAnyKindAndSize) {
    TDataFormat_VideoRgb video;
    video.SetDefaults();
    filter_->SetFormat(&video);
    ExpectFormat(video);
    filter_->SetFormat(&TDataFormat_AudioPcm::FORMAT_44100HZ_16BIT_MONO);
    ExpectFormat(TDataFormat_AudioPcm::FORMAT_44100HZ_16BIT_MONO);
    // Its own record.
    filter_->SetFormat(&filter_->GetFormat());
    ExpectFormat(TDataFormat_AudioPcm::FORMAT_44100HZ_16BIT_MONO);
    const TDataFormat head = HeadOnly(CId(1, 2, 3, 4));
    filter_->SetFormat(&head);
    ExpectFormat(head);
    // A record that says to be shorter than its head is still copied with it.
    const TDataFormat shorter{CId(5, 6, 7, 8), 3};
    filter_->SetFormat(&shorter);
    EXPECT_EQ(filter_->GetFormat().id, CId(5, 6, 7, 8));
    EXPECT_EQ(filter_->GetFormat().size, 3u);
    filter_->SetFormat(nullptr);
    ExpectFormat(TDataFormat());
}

TEST_F(SetFormatIsf, MakesPcmOfAStreamThatIsNone) {
    const auto source = Source();
    source->format.Set(GetEmptyFormat());
    filter_->SetFormat(&TDataFormat_AudioPcm::FORMAT_44100HZ_16BIT_MONO);
    filter_->Connect(source.Get());
    const auto decoded = CRefPtr<IInputStream>::Adopt(
        v.GetCodecClassStore().DecodeStream(filter_.Get(), TDataFormat_AudioPcm::FormatId));
    EXPECT_EQ(decoded.Get(), filter_.Get());
}

} // namespace
} // namespace vorlund::test
