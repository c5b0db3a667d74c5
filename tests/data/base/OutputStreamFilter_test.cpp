// The default output filter.
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

#include <cstring>
#include <functional>

namespace vorlund::test {
namespace {

constexpr const wchar* kFile = VRL_L("src/vorlund/data/OutputStreamFilter");
constexpr const wchar* kNotConnected = VRL_L("Stream is not connected");
constexpr TFailure kWriteNotConnected{VRL_L("vorlund::COutputStreamFilter::Write"), kFile, 96, kNotConnected};

CRefPtr<IOutputStreamFilter> NewFilter() {
    return CreateAs<IOutputStreamFilter>(classid::COutputStreamFilter);
}

class OutputStreamFilter : public testing::Test {
protected:
    ~OutputStreamFilter() noexcept override {}
    CRefPtr<CMemoryOutputStream> Target() {
        auto stream = Make<CMemoryOutputStream>();
        stream->log = &log_;
        return stream;
    }

    CLibraryScope library_;
    TCallLog log_;
    CRefPtr<IOutputStreamFilter> filter_ = NewFilter();
};

TEST_F(OutputStreamFilter, Identity) {
    EXPECT_EQ(filter_->GetClassId(), CId(0x9AAE6F8D, 0xB1E64389, 0xB02314BC, 0x015038DC));
    ExpectChain(filter_.Get(), {IOutputStreamFilter::InterfaceId, IOutputStream::InterfaceId,
                                IStream::InterfaceId, IObject::InterfaceId});
}

// Not connected.

TEST_F(OutputStreamFilter, AnswersWithoutAStream) {
    EXPECT_EQ(filter_->GetOutputStream(), nullptr);
    EXPECT_EQ(filter_->GetCapabilities(), 0U);
    filter_->SetFormat(&GetEmptyFormat());
    filter_->SetFormat(nullptr);
    filter_->Close();
    filter_->Close();
    filter_->Disconnect();
}

struct TNotConnectedRow {
    const char* name;
    TFailure failure;
    std::function<void(IOutputStreamFilter&)> call;
};
class OutputStreamFilterNotConnected : public testing::TestWithParam<TNotConnectedRow> {};

TEST_P(OutputStreamFilterNotConnected, Raises) {
    const CLibraryScope library;
    const auto filter = NewFilter();
    ExpectRaises<COperationNotSupportedException>(GetParam().failure, [&] { GetParam().call(*filter); });
    const auto stream = Make<CMemoryOutputStream>();
    EXPECT_TRUE(filter->Connect(stream.Get()));
    GetParam().call(*filter);
    filter->Disconnect();
    ExpectRaises<COperationNotSupportedException>(GetParam().failure, [&] { GetParam().call(*filter); });
}

INSTANTIATE_TEST_SUITE_P(
    Rows, OutputStreamFilterNotConnected,
    testing::Values(TNotConnectedRow{"GetLength",
                                     {VRL_L("vorlund::COutputStreamFilter::GetLength"), kFile, 67,
                                      kNotConnected},
                                     [](IOutputStreamFilter& filter) { filter.GetLength(); }},
                    TNotConnectedRow{"Flush",
                                     {VRL_L("vorlund::COutputStreamFilter::Flush"), kFile, 73, kNotConnected},
                                     [](IOutputStreamFilter& filter) { filter.Flush(); }},
                    TNotConnectedRow{"Seek",
                                     {VRL_L("vorlund::COutputStreamFilter::Seek"), kFile, 79, kNotConnected},
                                     [](IOutputStreamFilter& filter) { filter.Seek(0); }},
                    TNotConnectedRow{"Tell",
                                     {VRL_L("vorlund::COutputStreamFilter::Tell"), kFile, 85, kNotConnected},
                                     [](IOutputStreamFilter& filter) { filter.Tell(); }}),
    [](const auto& row) { return row.param.name; });

TEST_F(OutputStreamFilter, WriteNeedsAStream) {
    ExpectRaises<CIOException>(kWriteNotConnected, [&] { filter_->Write("abc", 3); });
    ExpectRaises<CIOException>(kWriteNotConnected, [&] { filter_->Write(nullptr, 0); });
}

// Connected.

TEST_F(OutputStreamFilter, HandsOnEverything) {
    const auto target = Target();
    EXPECT_TRUE(filter_->Connect(target.Get()));
    for (const std::uint32_t capabilities : {0U, 11U, 0xFFFFFFFFU}) {
        target->capabilities = capabilities;
        EXPECT_EQ(filter_->GetCapabilities(), capabilities);
    }
    const TDataFormat_AudioPcm& format = TDataFormat_AudioPcm::FORMAT_44100HZ_16BIT_STEREO;
    filter_->SetFormat(&format);
    EXPECT_EQ(std::memcmp(&target->format.Get(), &format, sizeof format), 0);
    filter_->SetFormat(nullptr);
    filter_->Write("abcd", 4);
    filter_->Seek(1);
    EXPECT_EQ(filter_->Tell(), 1);
    filter_->Write("X", 1);
    EXPECT_EQ(target->bytes, (TBytes{'a', 'X', 'c', 'd'}));
    EXPECT_EQ(filter_->GetLength(), 4);
    filter_->Flush();
    filter_->Close();
    EXPECT_EQ(target->closed, 1);
    EXPECT_EQ(log_, (TCallLog{"SetFormat", "SetFormat", "Write 4", "Seek 1", "Write 1", "Flush", "Close"}));
}

TEST_F(OutputStreamFilter, FailuresBelowPassOn) {
    const auto target = Target();
    target->maximumSize = 2;
    filter_->Connect(target.Get());
    ExpectRaises<CIOException>(streamfailures::kCannotWrite, [&] { filter_->Write("abc", 3); });
}

// References.

TEST_F(OutputStreamFilter, HoldsOneReferenceToItsStream) {
    const auto target = Target();
    filter_->Connect(target.Get());
    EXPECT_EQ(ReferencesOf(target.Get()), 2);
    IOutputStream* const first = filter_->GetOutputStream();
    IOutputStream* const second = filter_->GetOutputStream();
    EXPECT_EQ(first, target.Get());
    EXPECT_EQ(second, target.Get());
    EXPECT_EQ(ReferencesOf(target.Get()), 4);
    first->Release();
    second->Release();
    filter_->Disconnect();
    EXPECT_EQ(ReferencesOf(target.Get()), 1);
    EXPECT_EQ(filter_->GetOutputStream(), nullptr);
}

TEST_F(OutputStreamFilter, ConnectingASecondStreamReleasesTheFirst) {
    const auto first = Target();
    const auto second = Target();
    EXPECT_TRUE(filter_->Connect(first.Get()));
    EXPECT_TRUE(filter_->Connect(second.Get()));
    EXPECT_EQ(ReferencesOf(first.Get()), 1);
    EXPECT_EQ(ReferencesOf(second.Get()), 2);
    EXPECT_TRUE(log_.empty());
}

TEST_F(OutputStreamFilter, ConnectingNullDisconnectsAndIsTrue) {
    const auto target = Target();
    EXPECT_TRUE(filter_->Connect(target.Get()));
    EXPECT_TRUE(filter_->Connect(nullptr));
    EXPECT_EQ(ReferencesOf(target.Get()), 1);
    EXPECT_EQ(filter_->GetOutputStream(), nullptr);
    EXPECT_EQ(filter_->GetCapabilities(), 0U);
    EXPECT_TRUE(filter_->Connect(nullptr));
}

TEST_F(OutputStreamFilter, ConnectingTheSameStreamAgainKeepsIt) {
    auto target = Target();
    CMemoryOutputStream* const stream = target.Get();
    filter_->Connect(stream);
    target.Reset();
    filter_->Connect(stream);
    EXPECT_EQ(ReferencesOf(stream), 1);
}

TEST_F(OutputStreamFilter, ReleasingTheTopReleasesTheChain) {
    const int before = CLiveObject::GetCount();
    CRefPtr<IOutputStream> top = CRefPtr<IOutputStream>::Share(Target().Get());
    for (int i = 0; i < 100; ++i) {
        const auto filter = NewFilter();
        filter->Connect(top.Get());
        top = CRefPtr<IOutputStream>::Share(filter.Get());
    }
    top->Write("abc", 3);
    EXPECT_EQ(log_, TCallLog{"Write 3"});
    EXPECT_EQ(top->GetLength(), 3);
    EXPECT_EQ(CLiveObject::GetCount(), before + 1);
    top.Reset();
    EXPECT_EQ(CLiveObject::GetCount(), before);
}

} // namespace
} // namespace vorlund::test
