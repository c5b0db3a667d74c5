// What both PCM converters have in common: what they raise, how they connect, what they hand on.
#include "data/filters/PcmConverterSource.h"
#include "support/Failures.h"
#include "support/KnownFailures.h"
#include "support/LibraryScope.h"
#include "support/Probes.h"
#include "support/TestDecoders.h"
#include "support/WavBuilder.h"

#include <vorlund/AudioPcmConverters.h>
#include <vorlund/ClassIds.h>
#include <vorlund/MediaSample.h>
#include <vorlund/RefPtr.h>

#include <gtest/gtest.h>

#include <limits>
#include <ostream>
#include <stdexcept>

namespace vorlund::test {
namespace {

constexpr const wchar* kNotConnected = VRL_L("Stream is not connected");

/// A converter class: its failures by line.
struct TConverterRow {
    const char* name;
    CId classId;
    const wchar* file;
    const wchar* seek;
    const wchar* tell;
    const wchar* flush;
    const wchar* getLength;
    const wchar* read;
    const wchar* skip;
    /// What no 32-byte record raises.
    TFailure connect;
    int seekLine, tellLine, flushLine, getLengthLine;
    int noBufferLine, readLine, noSampleLine, sampleLine, skipLine;
};
void PrintTo(const TConverterRow& row, std::ostream* out) {
    *out << row.name;
}

#define FILE_OF(name) VRL_L("src/vorlund/data/filters/AudioPcm" name "Converter")
#define METHOD_OF(name, method) VRL_L("vorlund::CAudioPcm" name "Converter::" method)

const TConverterRow kRows[] = {
    {"SampleFormat",
     classid::CAudioPcmSampleFormatConverter,
     FILE_OF("SampleFormat"),
     METHOD_OF("SampleFormat", "Seek"),
     METHOD_OF("SampleFormat", "Tell"),
     METHOD_OF("SampleFormat", "Flush"),
     METHOD_OF("SampleFormat", "GetLength"),
     METHOD_OF("SampleFormat", "Read"),
     METHOD_OF("SampleFormat", "Skip"),
     {METHOD_OF("SampleFormat", "Connect"), FILE_OF("SampleFormat"), 353,
      VRL_L("Unsupported format in decoded stream")},
     252,
     260,
     274,
     284,
     292,
     294,
     329,
     330,
     336},
    {"ChannelNumber",
     classid::CAudioPcmChannelNumberConverter,
     FILE_OF("ChannelNumber"),
     METHOD_OF("ChannelNumber", "Seek"),
     METHOD_OF("ChannelNumber", "Tell"),
     METHOD_OF("ChannelNumber", "Flush"),
     METHOD_OF("ChannelNumber", "GetLength"),
     METHOD_OF("ChannelNumber", "Read"),
     METHOD_OF("ChannelNumber", "Skip"),
     {METHOD_OF("ChannelNumber", "Connect"), FILE_OF("ChannelNumber"), 566,
      VRL_L("Unsupported data format after decoding")},
     465,
     473,
     487,
     497,
     505,
     507,
     542,
     543,
     549},
};

class PcmConverters : public testing::TestWithParam<TConverterRow> {
protected:
    ~PcmConverters() noexcept override {}
    CRefPtr<CFaultyInputStream> Source() {
        return PcmSource({SAMPLE_FORMAT_8BIT, 1, 8000}, {1, 2, 3, 4, 5}, &log_);
    }
    TFailure NotConnected(const wchar* method, int line) {
        return {method, GetParam().file, line, kNotConnected};
    }
    void ExpectUnconnected() {
        using TNot = COperationNotSupportedException;
        const TConverterRow& row = GetParam();
        ExpectRaises<TNot>(NotConnected(row.seek, row.seekLine), [&] { converter_->Seek(0); });
        ExpectRaises<TNot>(NotConnected(row.tell, row.tellLine), [&] { converter_->Tell(); });
        ExpectRaises<TNot>(NotConnected(row.flush, row.flushLine), [&] { converter_->Flush(); });
        ExpectRaises<TNot>(NotConnected(row.getLength, row.getLengthLine), [&] { converter_->GetLength(); });
        ExpectRaises<CIOException>(NotConnected(row.read, row.readLine),
                                   [&] { converter_->Read(buffer_, 0); });
        ExpectRaises<CIOException>(NotConnected(row.skip, row.skipLine), [&] { converter_->Skip(0); });
        EXPECT_EQ(converter_->GetInputStream(), nullptr);
        EXPECT_EQ(converter_->GetCapabilities(), 0u);
        EXPECT_TRUE(converter_->Eof());
        converter_->Close();
    }

    CLibraryScope library_;
    TCallLog log_;
    CRefPtr<IInputStreamFilter> converter_ = CreateAs<IInputStreamFilter>(GetParam().classId);
    char buffer_[16] = {};
};

TEST_P(PcmConverters, WithoutAStream) {
    EXPECT_EQ(PcmText(*converter_), "code 1, channels 2, rate 44100");
    ExpectUnconnected();
    converter_->Disconnect();
    converter_->Connect(nullptr);
    ExpectUnconnected();
}

TEST_P(PcmConverters, FailuresOfArgumentsComeFirst) {
    const auto source = Source();
    const auto sample = CreateAs<IMediaSample>(classid::CSwBufferMediaSample);
    const TConverterRow& row = GetParam();
    for (const bool isConnected : {false, true}) {
        converter_->Connect(isConnected ? source.Get() : nullptr);
        ExpectRaises<CNullPtrException>({row.read, row.file, row.noBufferLine, VRL_L("buffer is NULL")},
                                        [&] { converter_->Read(nullptr, 0); });
        ExpectRaises<CNullPtrException>({row.read, row.file, row.noSampleLine, VRL_L("sample is NULL")},
                                        [&] { converter_->Read(nullptr); });
        ExpectRaises<CInvalidParameterException>(
            {row.read, row.file, row.sampleLine, VRL_L("Media samples are not supported")},
            [&] { converter_->Read(sample.Get()); });
        EXPECT_FALSE(converter_->SupportsMediaSamples(0));
        EXPECT_FALSE(converter_->SupportsMediaSamples(1));
    }
    EXPECT_TRUE(log_.empty());
}

TEST_P(PcmConverters, FollowTheirSourceAndHandItsBytesThrough) {
    const auto source = Source();
    converter_->Connect(source.Get());
    EXPECT_EQ(PcmText(*converter_), "code 0, channels 1, rate 8000");
    EXPECT_EQ(converter_->GetLength(), 5);
    EXPECT_EQ(ReadOnce(*converter_, 3), (TBytes{1, 2, 3}));
    EXPECT_EQ(converter_->Tell(), 3);
    EXPECT_FALSE(converter_->Eof());
    converter_->Seek(1);
    converter_->Skip(2);
    EXPECT_EQ(ReadOnce(*converter_, 16), (TBytes{4, 5}));
    EXPECT_TRUE(converter_->Eof());
    EXPECT_EQ(ReadOnce(*converter_, 16), TBytes{});
    converter_->Flush();
    converter_->Close();
    EXPECT_EQ(log_, (TCallLog{"Read 3", "Seek 1", "Skip 2", "Read 16", "Read 16", "Flush", "Close"}));
    for (const std::uint32_t capabilities : {0u, 7u, 0xFFFFFFFFu}) {
        source->capabilities = capabilities;
        EXPECT_EQ(converter_->GetCapabilities(), capabilities);
    }
    // Closing is not disconnecting.
    EXPECT_EQ(ReferencesOf(source.Get()), 2);
}

TEST_P(PcmConverters, HandThroughFormatsThatTheyDoNotKnow) {
    for (const std::uint32_t code : {4u, 7u, 0xFFFFFFFFu}) {
        for (const std::uint32_t channels : {0u, 1u, 3u, 0x40000001u, 0xFFFFFFFFu}) {
            const auto source = PcmSource({code, channels, 0xFFFFFFFF}, {1, 2, 3, 4, 5});
            converter_->Connect(source.Get());
            EXPECT_EQ(ReadOnce(*converter_, 4), (TBytes{1, 2, 3, 4}));
            EXPECT_EQ(PcmText(*converter_), "code " + std::to_string(code) + ", channels " +
                                                std::to_string(channels) + ", rate 4294967295");
        }
    }
}

TEST_P(PcmConverters, CutWhatAStreamClaimsBeyondTheRequest) {
    const auto source = Source();
    source->exaggeration = 1000000;
    converter_->Connect(source.Get());
    TBytes buffer(8);
    EXPECT_EQ(converter_->Read(buffer.data(), 4), 4u);
}

TEST_P(PcmConverters, HoldOneReferenceToTheDecodedStream) {
    const int before = CLiveObject::GetCount();
    {
        const auto first = Source();
        const auto second = Source();
        converter_->Connect(first.Get());
        EXPECT_EQ(ReferencesOf(first.Get()), 2);
        IInputStream* const answer = converter_->GetInputStream();
        EXPECT_EQ(answer, first.Get());
        EXPECT_EQ(ReferencesOf(first.Get()), 3);
        answer->Release();
        converter_->Connect(second.Get());
        EXPECT_EQ(ReferencesOf(first.Get()), 1);
        // Again the same one, of which only the converter holds a reference.
        second->Release();
        converter_->Connect(second.Get());
        second->AddRef();
        EXPECT_EQ(ReferencesOf(second.Get()), 2);
        converter_->Disconnect();
        EXPECT_EQ(ReferencesOf(second.Get()), 1);
        converter_->Connect(second.Get());
        converter_->Connect(nullptr);
        EXPECT_EQ(ReferencesOf(second.Get()), 1);
        EXPECT_EQ(PcmText(*converter_), "code 0, channels 1, rate 8000");
        ExpectUnconnected();
        converter_->Connect(second.Get());
        converter_.Reset();
        EXPECT_EQ(ReferencesOf(second.Get()), 1);
    }
    EXPECT_EQ(CLiveObject::GetCount(), before);
}

TEST_P(PcmConverters, DecodeWhatIsNoPcm) {
    const auto source = Make<CFaultyInputStream>();
    source->bytes =
        CWavBuilder().Format({.channels = 2, .samplesPerSec = 48000}).Chunk("data", {10, 11, 12, 13}).Build();
    source->log = &log_;
    converter_->Connect(source.Get());
    EXPECT_EQ(PcmText(*converter_), "code 1, channels 2, rate 48000");
    EXPECT_EQ(converter_->GetLength(), 4);
    EXPECT_EQ(ReadOnce(*converter_, 16), (TBytes{10, 11, 12, 13}));
    const auto decoder = CRefPtr<IInputStream>::Adopt(converter_->GetInputStream());
    EXPECT_EQ(decoder->GetClassId(), classid::CWavDecoder);
}

TEST_P(PcmConverters, PassTheFailuresOfTheSearchOn) {
    const auto good = Source();
    converter_->Connect(good.Get());
    const auto source = Make<CFaultyInputStream>();
    source->bytes = {'n', 'o', 'n', 'e'};
    ExpectRaises<CDataFormatException>(codecstorefailures::kCannotDecodeStream,
                                       [&] { converter_->Connect(source.Get()); });
    // The former stream is gone, the format stays.
    EXPECT_EQ(ReferencesOf(good.Get()), 1);
    EXPECT_EQ(ReferencesOf(source.Get()), 1);
    EXPECT_EQ(PcmText(*converter_), "code 0, channels 1, rate 8000");
    ExpectUnconnected();
}

TEST_P(PcmConverters, RefuseRecordsOfAnotherSize) {
    const auto good = Source();
    for (const std::uint32_t size : {0u, 20u, 31u, 33u}) {
        converter_->Connect(good.Get());
        const auto source = Source();
        TBytes record(40);
        TDataFormat head = HeadOnly(TDataFormat_AudioPcm::FormatId);
        head.size = size;
        std::memcpy(record.data(), &head, sizeof head);
        source->format.Set(*reinterpret_cast<const TDataFormat*>(record.data()));
        ExpectRaises<CDataFormatException>(GetParam().connect, [&] { converter_->Connect(source.Get()); });
        EXPECT_EQ(ReferencesOf(source.Get()), 1);
        EXPECT_EQ(PcmText(*converter_), "code 0, channels 1, rate 8000");
        ExpectUnconnected();
    }
}

TEST_P(PcmConverters, FailuresBelowPassOn) {
    const auto source = Source();
    source->failAt = 2;
    converter_->Connect(source.Get());
    EXPECT_EQ(ReadOnce(*converter_, 4), (TBytes{1, 2}));
    ExpectRaises<CIOException>(streamfailures::kCannotRead, [&] { converter_->Read(buffer_, 4); });
    source->fail = [] { throw std::runtime_error("other"); };
    EXPECT_THROW(converter_->Read(buffer_, 4), std::runtime_error);
    source->capabilities = 0;
    ExpectRaises<COperationNotSupportedException>(streamfailures::kCannotSeek, [&] { converter_->Seek(0); });
    ExpectRaises<COperationNotSupportedException>(streamfailures::kCannotTell, [&] { converter_->Tell(); });
}

INSTANTIATE_TEST_SUITE_P(Rows, PcmConverters, testing::ValuesIn(kRows),
                         [](const auto& row) { return row.param.name; });

} // namespace
} // namespace vorlund::test
