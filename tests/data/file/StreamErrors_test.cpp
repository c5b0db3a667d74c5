// What has become of the bytes of a file stream.
#include "data/file/PathFailures.h"
#include "data/file/RefusingPlace.h"
#include "data/file/TemporaryFolder.h"
#include "data/file/UnreadablePlace.h"
#include "support/Probes.h"
#include "support/Streams.h"

#include <vorlund/AudioPcmConverters.h>
#include <vorlund/ClassIds.h>
#include <vorlund/DecodeReport.h>
#include <vorlund/File.h>
#include <vorlund/MediaSample.h>
#include <vorlund/RefPtr.h>
#include <vorlund/Resource.h>
#include <vorlund/SetFormatIsf.h>
#include <vorlund/StreamErrors.h>
#include <vorlund/StreamFilterImpl.h>
#include <vorlund/StreamSelector.h>

#include <cstring>
#include <limits>
#include <vector>

namespace vorlund::test {
namespace {

constexpr TFailure kWriteFailed{VRL_L("vorlund::CFileOutputStream::Write"), filefailures::kOutputFile, 131,
                                VRL_L("fwrite failed")};
constexpr TFailure kFlushFailed{VRL_L("vorlund::CFileOutputStream::Flush"), filefailures::kOutputFile, 100,
                                VRL_L("fwrite failed")};

/// A filter as plug-ins have them.
class CForeignFilter : public CInputFilterImpl<IInputStreamFilter> {
public:
    static constexpr CId ClassId{0x7E57571A, 0x0C5F4E1B, 0x9D2A6C47, 0x51B3A8E1};
};

/// An encoder as plug-ins have them: what it collects is written as it is closed.
class CForeignEncoder : public COutputFilterImpl<IOutputStreamFilter> {
public:
    static constexpr CId ClassId{0x7E57571A, 0x0C5F4E1B, 0x9D2A6C47, 0x51B3A8E2};

    void Write(const void*, std::uint64_t) override {}
    void Close() override {
        stream_->Write("trailer", 7);
        COutputFilterImpl::Close();
        Disconnect();
    }
};

class StreamErrors : public CFileTest {
protected:
    ~StreamErrors() noexcept override = default;

    CRefPtr<IFileInputStream> input_ = CreateAs<IFileInputStream>(classid::CFileInputStream);
    CRefPtr<IFileOutputStream> output_ = CreateAs<IFileOutputStream>(classid::CFileOutputStream);
};

/// A stream at the start of what can be read, and a byte more is wanted than can be.
class StreamErrorsRead : public StreamErrors {
protected:
    ~StreamErrorsRead() noexcept override = default;

    void Open() {
        input_->Open(place_.GetPath().c_str());
        input_->Seek(place_.GetStart());
    }
    /// Reads `stream` to its end.
    static std::uint64_t ReadAll(IInputStream& stream) {
        std::uint64_t total = 0;
        char bytes[1000];
        while (const std::uint64_t count = stream.Read(bytes, sizeof bytes)) total += count;
        return total;
    }

    CUnreadablePlace place_;
};

TEST_F(StreamErrorsRead, FileTellsWhyItEnded) {
    Open();
    EXPECT_EQ(GetReadError(*input_), 0u);
    char bytes[CUnreadablePlace::kReadable];
    EXPECT_EQ(input_->Read(bytes, 100), 100u);
    EXPECT_EQ(std::string(bytes, 100), std::string(100, 'x'));
    input_->Seek(place_.GetStart());
    EXPECT_EQ(input_->Read(bytes, sizeof bytes), sizeof bytes);
    EXPECT_EQ(GetReadError(*input_), 0u);
    EXPECT_EQ(input_->Read(bytes, 1), 0u);
    const std::uint32_t error = GetReadError(*input_);
    EXPECT_NE(error, 0u);
    EXPECT_EQ(input_->Tell(), place_.GetStart() + static_cast<std::int64_t>(sizeof bytes));

    // Nothing but another opening takes the error away.
    input_->Seek(place_.GetStart());
    EXPECT_EQ(input_->Read(bytes, 10), 10u);
    EXPECT_EQ(GetReadError(*input_), error);
    input_->Close();
    EXPECT_EQ(GetReadError(*input_), error);
    Open();
    EXPECT_EQ(GetReadError(*input_), 0u);
    EXPECT_EQ(input_->Read(bytes, 10), 10u);
}

TEST_F(StreamErrorsRead, LargeReadsTellToo) {
    Open();
    std::vector<char> bytes(1 << 20);
    EXPECT_EQ(input_->Read(bytes.data(), bytes.size()), CUnreadablePlace::kReadable);
    EXPECT_NE(GetReadError(*input_), 0u);
}

TEST_F(StreamErrors, EndOfAFileIsNoError) {
    constexpr std::int64_t kLast = std::numeric_limits<std::int64_t>::max();
    input_->Open(ToVorlund(Put("a", "abc")).c_str());
    char bytes[10];
    EXPECT_EQ(input_->Read(bytes, 10), 3u);
    EXPECT_EQ(input_->Read(bytes, 10), 0u);
    std::vector<char> many(1 << 20);
    for (const std::int64_t position : {std::int64_t{1000}, std::int64_t{1} << 40, kLast - 5, kLast}) {
        input_->Seek(position);
        EXPECT_EQ(input_->Read(bytes, 10), 0u);
        EXPECT_EQ(input_->Read(many.data(), many.size()), 0u);
        EXPECT_EQ(GetReadError(*input_), 0u) << position;
    }
    EXPECT_EQ(GetReadError(*input_), 0u);
    EXPECT_EQ(GetReadError(*CreateAs<IFileInputStream>(classid::CFileInputStream)), 0u);
}

TEST_F(StreamErrorsRead, FiltersOfEveryKindPassOnThatOfTheirInput) {
    Open();
    const auto foreign = Make<CForeignFilter>();
    foreign->Connect(input_.Get());
    const auto setFormat = CreateAs<ISetFormatIsf>(classid::CSetFormatIsf);
    setFormat->SetFormat(&TDataFormat_AudioPcm::FORMAT_44100HZ_16BIT_MONO);
    setFormat->Connect(foreign.Get());
    const auto plain = CreateAs<IInputStreamFilter>(classid::CInputStreamFilter);
    plain->Connect(setFormat.Get());
    const std::vector<IInputStream*> chain{input_.Get(), foreign.Get(), setFormat.Get(), plain.Get()};
    for (IInputStream* const stream : chain) EXPECT_EQ(GetReadError(*stream), 0u);
    const std::vector<int> references{ReferencesOf(input_.Get()), ReferencesOf(foreign.Get())};
    EXPECT_EQ(ReadAll(*plain), CUnreadablePlace::kReadable);
    for (IInputStream* const stream : chain) EXPECT_NE(GetReadError(*stream), 0u);
    EXPECT_EQ((std::vector<int>{ReferencesOf(input_.Get()), ReferencesOf(foreign.Get())}), references);

    plain->Disconnect();
    EXPECT_EQ(GetReadError(*plain), 0u);
    EXPECT_NE(GetReadError(*setFormat), 0u);
}

TEST_F(StreamErrorsRead, ConvertersPassThemOn) {
    Open();
    const auto source = CreateAs<ISetFormatIsf>(classid::CSetFormatIsf);
    source->SetFormat(&TDataFormat_AudioPcm::FORMAT_44100HZ_16BIT_MONO);
    source->Connect(input_.Get());
    const auto samples = CreateAs<IAudioPcmSampleFormatConverter>(classid::CAudioPcmSampleFormatConverter);
    samples->SetSampleFormat(SAMPLE_FORMAT_FLOAT);
    samples->Connect(source.Get());
    const auto channels = CreateAs<IAudioPcmChannelNumberConverter>(classid::CAudioPcmChannelNumberConverter);
    channels->SetNumChannels(2);
    channels->Connect(samples.Get());
    EXPECT_EQ(ReadAll(*channels), CUnreadablePlace::kReadable * 4);
    EXPECT_NE(GetReadError(*channels), 0u);
}

TEST_F(StreamErrorsRead, StreamsThatAreNoFilesKnowNone) {
    const auto memory = Make<CMemoryInputStream>();
    EXPECT_EQ(ReadAll(*memory), 0u);
    EXPECT_EQ(GetReadError(*memory), 0u);
    const auto resource = CreateAs<IResource>(classid::CResource);
    EXPECT_EQ(GetReadError(*CInputStreamSelector(resource.Get()).GetInputStreamTmp()), 0u);
    const auto filter = CreateAs<IInputStreamFilter>(classid::CInputStreamFilter);
    EXPECT_EQ(GetReadError(*filter), 0u);
}

TEST_F(StreamErrorsRead, RingOfFiltersIsNoEndlessWay) {
    const auto first = Make<CForeignFilter>();
    const auto second = Make<CForeignFilter>();
    second->Connect(first.Get());
    first->Connect(second.Get());
    EXPECT_EQ(GetReadError(*first), 0u);
    first->Disconnect();
}

TEST_F(StreamErrorsRead, LoadThatEndsEarlySaysWhy) {
    // The bytes that are there are not enough for the length, so the resource stays empty as ever.
    const auto source = Make<CForeignFilter>();
    source->Connect(input_.Get());
    Open();
    const auto resource = CreateAs<IResource>(classid::CResource);
    const auto sample = CreateAs<ISwBufferMediaSample>(classid::CSwBufferMediaSample);
    sample->SetBufferSize(2 * CUnreadablePlace::kReadable);
    EXPECT_TRUE(sample->ReadFrom(CInputStreamSelector(source.Get())));
    EXPECT_EQ(sample->GetDataSize(), CUnreadablePlace::kReadable);
    EXPECT_NE(GetReadError(*source), 0u);
}

/// A stream on something that takes no byte.
class StreamErrorsWrite : public StreamErrors {
protected:
    ~StreamErrorsWrite() noexcept override = default;

    void Open() {
        output_->Open(place_.GetPath().c_str(), false);
        place_.Refuse();
    }
    void Write(std::size_t size) { output_->Write(std::string(size, 'x').data(), size); }

    CRefusingPlace place_;
};

TEST_F(StreamErrorsWrite, CloseRaisesNothingAndTheStreamTells) {
    Open();
    Write(100);
    EXPECT_EQ(GetWriteError(*output_), 0u);
    output_->Close();
    const std::uint32_t error = GetWriteError(*output_);
    EXPECT_NE(error, 0u);
    output_->Close();
    EXPECT_EQ(GetWriteError(*output_), error);
    output_->Open(ToVorlund(At("good")).c_str(), false);
    EXPECT_EQ(GetWriteError(*output_), 0u);
    Write(100);
    CloseOutput(*output_);
    EXPECT_EQ(GetWriteError(*output_), 0u);
    EXPECT_EQ(ReadFile(At("good")), std::string(100, 'x'));
}

TEST_F(StreamErrorsWrite, OnlyTheFirstErrorIsTold) {
    Open();
    Write(100);
    ExpectRaises<CIOException>(kFlushFailed, [&] { output_->Flush(); });
    const std::uint32_t error = GetWriteError(*output_);
    EXPECT_NE(error, 0u);
    ExpectRaises<CIOException>(kWriteFailed, [&] { Write(1 << 20); });
    output_->Close();
    EXPECT_EQ(GetWriteError(*output_), error);
}

TEST_F(StreamErrorsWrite, CloseOutputClosesAndRaises) {
    Open();
    Write(100);
    ExpectRaises<CIOException>(kWriteFailed, [&] { CloseOutput(*output_); });
    EXPECT_EQ(output_->GetCapabilities(), 0u);
    // Also for what was told before.
    ExpectRaises<CIOException>(kWriteFailed, [&] { CloseOutput(*output_); });
}

TEST_F(StreamErrorsWrite, WriteAndFlushAreRemembered) {
    Open();
    ExpectRaises<CIOException>(kWriteFailed, [&] { Write(1 << 20); });
    EXPECT_NE(GetWriteError(*output_), 0u);
    ExpectRaises<CIOException>(kWriteFailed, [&] { CloseOutput(*output_); });
}

TEST_F(StreamErrorsWrite, FlushOutputRaisesForFilesOnly) {
    Open();
    FlushOutput(*output_);
    Write(100);
    ExpectRaises<CIOException>(kFlushFailed, [&] { FlushOutput(*output_); });
    EXPECT_NE(GetWriteError(*output_), 0u);
    output_->Close();
    FlushOutput(*output_);
    // It does not flush, and would raise.
    const auto resource = CreateAs<IResource>(classid::CResource);
    FlushOutput(*COutputStreamSelector(resource.Get()).GetOutputStreamTmp());
}

TEST_F(StreamErrorsWrite, FailedSeekIsNoLoss) {
    output_->Open(ToVorlund(At("good")).c_str(), false);
    Write(10);
    ExpectRaises<CIOException>(filefailures::kOutputSeekFailed, [&] { output_->Seek(-1); });
    EXPECT_EQ(GetWriteError(*output_), 0u);
    CloseOutput(*output_);
    EXPECT_EQ(ReadFile(At("good")), std::string(10, 'x'));
}

TEST_F(StreamErrorsWrite, FiltersAreLookedThrough) {
    Open();
    const auto filter = CreateAs<IOutputStreamFilter>(classid::COutputStreamFilter);
    EXPECT_EQ(GetWriteError(*filter), 0u);
    filter->Connect(output_.Get());
    filter->Write("abc", 3);
    ExpectRaises<CIOException>(kFlushFailed, [&] { FlushOutput(*filter); });
    EXPECT_NE(GetWriteError(*filter), 0u);
}

TEST_F(StreamErrorsWrite, WhatAnEncoderWritesAsItIsClosedCounts) {
    Open();
    const auto encoder = Make<CForeignEncoder>();
    encoder->Connect(output_.Get());
    encoder->Write("abc", 3);
    ExpectRaises<CIOException>(kWriteFailed, [&] { CloseOutput(*encoder); });
}

TEST_F(StreamErrorsWrite, SaveRaises) {
    const auto resource = CreateAs<IResource>(classid::CResource);
    resource->SetSize(100);
    std::memset(resource->Lock(LOCK_MODE_WRITE), 'x', 100);
    resource->Unlock();
    Open();
    ExpectRaises<CIOException>(kWriteFailed, [&] { resource->Save(output_.Get(), true); });
    EXPECT_EQ(output_->GetCapabilities(), 0u) << "closed all the same";
    resource->Save(ToVorlund(At("good")).c_str(), true);
    EXPECT_EQ(ReadFile(At("good")), std::string(100, 'x'));
}

TEST_F(StreamErrorsWrite, SampleThatIsWrittenRaises) {
    const auto sample = CreateAs<ISwBufferMediaSample>(classid::CSwBufferMediaSample);
    std::memset(sample->GetBuffer(), 'x', 100);
    sample->SetDataSize(100);
    Open();
    ExpectRaises<CIOException>(kFlushFailed, [&] { sample->WriteTo(output_.Get()); });
    output_->Open(ToVorlund(At("good")).c_str(), false);
    sample->WriteTo(output_.Get());
    EXPECT_EQ(ReadFile(At("good")), std::string(100, 'x'));
}

/// Nobody but a test connects streams to a ring. Whoever looks for its end gives up.
TEST_F(StreamErrors, ARingOfStreamsHasNoFile) {
    const auto input = Make<CForeignFilter>();
    input->Connect(input.Get());
    EXPECT_EQ(GetReadError(*input), 0u);
    EXPECT_EQ(ListChain(*input).size(), 1000u);
    input->Disconnect();
    const auto output = Make<CForeignEncoder>();
    output->Connect(output.Get());
    FlushOutput(*output);
    EXPECT_EQ(GetWriteError(*output), 0u);
    output->Disconnect();
    EXPECT_EQ(ReferencesOf(input.Get()), 1);
    EXPECT_EQ(ReferencesOf(output.Get()), 1);
}

} // namespace
} // namespace vorlund::test
