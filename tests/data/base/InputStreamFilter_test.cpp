// The default input filter.
#include <vorlund/ClassIds.h>
#include <vorlund/DataFormat.h>
#include <vorlund/Exception.h>
#include <vorlund/RefPtr.h>
#include <vorlund/StreamFilter.h>

#include "data/base/InterfaceChain.h"
#include "support/Failures.h"
#include "support/LibraryScope.h"
#include "support/Probes.h"
#include "support/Streams.h"

#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>

namespace vorlund::test {
namespace {

constexpr const wchar* kFile = VRL_L("src/vorlund/data/InputStreamFilter");
constexpr const wchar* kRead = VRL_L("vorlund::CInputStreamFilter::Read");
constexpr const wchar* kNotConnected = VRL_L("Stream is not connected");
constexpr TFailure kSampleIsNull{kRead, kFile, 102, VRL_L("sample is NULL")};
constexpr TFailure kNoMediaSamples{kRead, kFile, 103, VRL_L("Media samples are not supported")};
constexpr TFailure kBufferIsNull{kRead, kFile, 108, VRL_L("buffer is NULL")};
constexpr TFailure kReadNotConnected{kRead, kFile, 109, kNotConnected};

CRefPtr<IInputStreamFilter> NewFilter() {
    return CreateAs<IInputStreamFilter>(classid::CInputStreamFilter);
}

class InputStreamFilter : public testing::Test {
protected:
    ~InputStreamFilter() noexcept override {}
    CRefPtr<CFaultyInputStream> Source(TBytes bytes = {1, 2, 3, 4, 5}) {
        auto stream = Make<CFaultyInputStream>();
        stream->bytes = std::move(bytes);
        stream->log = &log_;
        return stream;
    }
    void CheckSamplesAndSkipping() {
        ExpectRaises<CNullPtrException>(kSampleIsNull,
                                        [&] { filter_->Read(static_cast<IMediaSample*>(nullptr)); });
        const auto sample = CreateAs<IMediaSample>(classid::CSwBufferMediaSample);
        ExpectRaises<CInvalidParameterException>(kNoMediaSamples, [&] { filter_->Read(sample.Get()); });
        EXPECT_FALSE(filter_->SupportsMediaSamples(0));
        EXPECT_FALSE(filter_->SupportsMediaSamples(1));
        filter_->Skip(3);
        EXPECT_EQ(&filter_->GetFormat(), &GetEmptyFormat());
    }

    CLibraryScope library_;
    TCallLog log_;
    CRefPtr<IInputStreamFilter> filter_ = NewFilter();
};

TEST_F(InputStreamFilter, Identity) {
    EXPECT_EQ(filter_->GetClassId(), CId(0x8F2C8042, 0x1CB24F9B, 0x9E975CA4, 0xC36D6AFA));
    ExpectChain(filter_.Get(), {IInputStreamFilter::InterfaceId, IInputStream::InterfaceId,
                                IStream::InterfaceId, IObject::InterfaceId});
}

// Not connected.

TEST_F(InputStreamFilter, AnswersWithoutAStream) {
    EXPECT_EQ(filter_->GetInputStream(), nullptr);
    EXPECT_EQ(filter_->GetCapabilities(), 0U);
    EXPECT_TRUE(filter_->Eof());
    filter_->Close();
    filter_->Close();
    filter_->Disconnect();
    CheckSamplesAndSkipping();
}

struct TNotConnectedRow {
    const char* name;
    TFailure failure;
    std::function<void(IInputStreamFilter&)> call;
};
class InputStreamFilterNotConnected : public testing::TestWithParam<TNotConnectedRow> {};

TEST_P(InputStreamFilterNotConnected, Raises) {
    const CLibraryScope library;
    const auto filter = NewFilter();
    ExpectRaises<COperationNotSupportedException>(GetParam().failure, [&] { GetParam().call(*filter); });
    const auto stream = Make<CMemoryInputStream>();
    filter->Connect(stream.Get());
    GetParam().call(*filter);
    filter->Disconnect();
    ExpectRaises<COperationNotSupportedException>(GetParam().failure, [&] { GetParam().call(*filter); });
}

INSTANTIATE_TEST_SUITE_P(
    Rows, InputStreamFilterNotConnected,
    testing::Values(TNotConnectedRow{"GetLength",
                                     {VRL_L("vorlund::CInputStreamFilter::GetLength"), kFile, 66,
                                      kNotConnected},
                                     [](IInputStreamFilter& filter) { filter.GetLength(); }},
                    TNotConnectedRow{"Flush",
                                     {VRL_L("vorlund::CInputStreamFilter::Flush"), kFile, 72, kNotConnected},
                                     [](IInputStreamFilter& filter) { filter.Flush(); }},
                    TNotConnectedRow{"Seek",
                                     {VRL_L("vorlund::CInputStreamFilter::Seek"), kFile, 78, kNotConnected},
                                     [](IInputStreamFilter& filter) { filter.Seek(0); }},
                    TNotConnectedRow{"Tell",
                                     {VRL_L("vorlund::CInputStreamFilter::Tell"), kFile, 84, kNotConnected},
                                     [](IInputStreamFilter& filter) { filter.Tell(); }}),
    [](const auto& row) { return row.param.name; });

TEST_F(InputStreamFilter, ReadChecksTheBufferBeforeTheConnection) {
    char buffer[4];
    ExpectRaises<CNullPtrException>(kBufferIsNull, [&] { filter_->Read(nullptr, 0); });
    ExpectRaises<CIOException>(kReadNotConnected, [&] { filter_->Read(buffer, 4); });
    ExpectRaises<CIOException>(kReadNotConnected, [&] { filter_->Read(buffer, 0); });
    const auto source = Source();
    filter_->Connect(source.Get());
    ExpectRaises<CNullPtrException>(kBufferIsNull, [&] { filter_->Read(nullptr, 1); });
    EXPECT_TRUE(log_.empty());
}

// Connected.

TEST_F(InputStreamFilter, HandsOnEverythingButTheFormatAndSkipping) {
    const auto source = Source();
    source->format = TDataFormat_AudioPcm::FORMAT_44100HZ_16BIT_MONO;
    filter_->Connect(source.Get());
    for (const std::uint32_t capabilities : {0U, 7U, 11U, 0xFFFFFFFFU}) {
        source->capabilities = capabilities;
        EXPECT_EQ(filter_->GetCapabilities(), capabilities);
    }
    EXPECT_EQ(filter_->GetLength(), 5);
    source->claimedLength = std::numeric_limits<std::int64_t>::min();
    EXPECT_EQ(filter_->GetLength(), std::numeric_limits<std::int64_t>::min());
    EXPECT_FALSE(filter_->Eof());
    filter_->Seek(1);
    EXPECT_EQ(filter_->Tell(), 1);
    std::uint8_t buffer[8] = {};
    EXPECT_EQ(filter_->Read(buffer, 2), 2U);
    EXPECT_EQ(buffer[0], 2);
    EXPECT_EQ(buffer[1], 3);
    EXPECT_EQ(filter_->Read(buffer, std::uint64_t{1} << 40), 2U);
    EXPECT_TRUE(filter_->Eof());
    EXPECT_EQ(filter_->Read(buffer, 1), 0U);
    filter_->Seek(std::int64_t{1} << 40);
    EXPECT_EQ(filter_->Tell(), std::int64_t{1} << 40);
    filter_->Flush();
    filter_->Close();
    filter_->Close();
    EXPECT_EQ(source->closed, 2);
    EXPECT_EQ(log_, (TCallLog{"Seek 1", "Read 2", "Read 1099511627776", "Read 1", "Seek 1099511627776",
                              "Flush", "Close", "Close"}));
    log_.clear();
    CheckSamplesAndSkipping();
    EXPECT_TRUE(log_.empty());
    // Closing is not disconnecting.
    const auto connected = CRefPtr<IInputStream>::Adopt(filter_->GetInputStream());
    EXPECT_EQ(connected.Get(), source.Get());
}

TEST_F(InputStreamFilter, FailuresBelowPassOn) {
    const auto source = Source();
    source->failAt = 2;
    filter_->Connect(source.Get());
    char buffer[4];
    EXPECT_EQ(filter_->Read(buffer, 4), 2U);
    ExpectRaises<CIOException>(streamfailures::kCannotRead, [&] { filter_->Read(buffer, 4); });
    source->fail = [] { throw std::runtime_error("other"); };
    EXPECT_THROW(filter_->Read(buffer, 4), std::runtime_error);
    source->capabilities = 0;
    ExpectRaises<COperationNotSupportedException>(streamfailures::kCannotSeek, [&] { filter_->Seek(0); });
    ExpectRaises<COperationNotSupportedException>(streamfailures::kCannotTell, [&] { filter_->Tell(); });
}

// References.

TEST_F(InputStreamFilter, HoldsOneReferenceToItsStream) {
    const auto source = Source();
    filter_->Connect(source.Get());
    EXPECT_EQ(ReferencesOf(source.Get()), 2);
    IInputStream* const first = filter_->GetInputStream();
    IInputStream* const second = filter_->GetInputStream();
    EXPECT_EQ(first, source.Get());
    EXPECT_EQ(second, source.Get());
    EXPECT_EQ(ReferencesOf(source.Get()), 4);
    first->Release();
    second->Release();
    filter_->Disconnect();
    EXPECT_EQ(ReferencesOf(source.Get()), 1);
    EXPECT_EQ(filter_->GetInputStream(), nullptr);
    filter_->Disconnect();
    EXPECT_EQ(ReferencesOf(source.Get()), 1);
}

TEST_F(InputStreamFilter, ConnectingASecondStreamReleasesTheFirst) {
    const auto first = Source();
    const auto second = Source();
    filter_->Connect(first.Get());
    filter_->Connect(second.Get());
    EXPECT_EQ(ReferencesOf(first.Get()), 1);
    EXPECT_EQ(ReferencesOf(second.Get()), 2);
    // Releasing a stream does not close it.
    EXPECT_TRUE(log_.empty());
}

TEST_F(InputStreamFilter, ConnectingNullDisconnects) {
    const auto source = Source();
    filter_->Connect(source.Get());
    filter_->Connect(nullptr);
    EXPECT_EQ(ReferencesOf(source.Get()), 1);
    EXPECT_EQ(filter_->GetInputStream(), nullptr);
    EXPECT_EQ(filter_->GetCapabilities(), 0U);
    filter_->Connect(nullptr);
    EXPECT_EQ(filter_->GetInputStream(), nullptr);
}

TEST_F(InputStreamFilter, ConnectingTheSameStreamAgainKeepsIt) {
    auto source = Source();
    CFaultyInputStream* const stream = source.Get();
    filter_->Connect(stream);
    source.Reset();
    filter_->Connect(stream);
    EXPECT_EQ(ReferencesOf(stream), 1);
    EXPECT_EQ(filter_->GetLength(), 5);
}

TEST_F(InputStreamFilter, TakesAStreamThatOnlyItsFormerStreamHolds) {
    const int before = CLiveObject::GetCount();
    auto inner = NewFilter();
    inner->Connect(Source().Get());
    filter_->Connect(inner.Get());
    IInputStream* const bottom = inner->GetInputStream();
    bottom->Release();
    inner.Reset();
    filter_->Connect(bottom);
    EXPECT_EQ(filter_->GetLength(), 5);
    EXPECT_EQ(ReferencesOf(bottom), 1);
    filter_->Disconnect();
    EXPECT_EQ(CLiveObject::GetCount(), before);
}

TEST_F(InputStreamFilter, ReleasingTheTopReleasesTheChain) {
    const int before = CLiveObject::GetCount();
    CRefPtr<IInputStream> top = CRefPtr<IInputStream>::Share(Source().Get());
    for (int i = 0; i < 100; ++i) {
        const auto filter = NewFilter();
        filter->Connect(top.Get());
        top = CRefPtr<IInputStream>::Share(filter.Get());
    }
    std::uint8_t buffer[8];
    EXPECT_EQ(top->Read(buffer, 8), 5U);
    EXPECT_EQ(top->Tell(), 5);
    EXPECT_EQ(CLiveObject::GetCount(), before + 1);
    top.Reset();
    EXPECT_EQ(CLiveObject::GetCount(), before);
}

} // namespace
} // namespace vorlund::test
