#include "data/filters/RecordingStream.h"
#include "support/LibraryScope.h"
#include "support/Outcome.h"
#include "support/Probes.h"
#include "support/Text.h"
#include "support/WavBuilder.h"

#include <vorlund/ClassIds.h>
#include <vorlund/MediaSample.h>
#include <vorlund/ObjectList.h>
#include <vorlund/RefPtr.h>
#include <vorlund/WavDecoder.h>

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

namespace vorlund::test {
namespace {

using TCalls = std::vector<std::string>;

constexpr const wchar* kFmt = VRL_L("fmt ");
constexpr const wchar* kData = VRL_L("data");
constexpr std::int64_t kNone = -1;

/// "fmt " at 12, "LIST" at 36, "data" of 10 bytes at 52, whose first byte is at 60.
TBytes SampleFile() {
    return CWavBuilder().Format({}).Chunk("LIST", Ramp(8)).Chunk("data", Ramp(10, 100)).Build();
}

class WavChunkDecoder : public testing::Test {
protected:
    ~WavChunkDecoder() noexcept override = default;

    void Connect(const TBytes& bytes) {
        stream_->bytes = bytes;
        decoder_->Connect(stream_.Get());
        stream_->TakeCalls();
    }
    void ConnectAndSelect(const wchar* id = kData) {
        Connect(SampleFile());
        decoder_->SelectChunk(id);
        stream_->TakeCalls();
    }
    bool IsConnected() {
        const auto input = CRefPtr<IInputStream>::Adopt(decoder_->GetInputStream());
        EXPECT_TRUE(!input || input.Get() == stream_.Get());
        return static_cast<bool>(input);
    }
    std::vector<std::string> Ids() {
        std::vector<std::string> ids;
        const auto list = CRefPtr<IObjectList>::Adopt(decoder_->EnumerateChunks());
        for (unsigned int i = 0; i < list->GetObjectCount(); ++i) {
            const auto member = CRefPtr<IObject>::Adopt(list->GetObject(i)).Query<IStringObject>();
            ids.push_back(Narrow(member->GetString().GetBuffer()));
        }
        return ids;
    }
    std::vector<std::uint8_t> ReadAll(std::uint64_t most = 1000) {
        std::vector<std::uint8_t> bytes(most);
        bytes.resize(decoder_->Read(bytes.data(), most));
        return bytes;
    }

    CLibraryScope library_;
    CRefPtr<CRecordingStream> stream_ = CRecordingStream::Create();
    CRefPtr<IWavChunkDecoder> decoder_ = CreateAs<IWavChunkDecoder>(classid::CWavChunkDecoder);
};

// Identity.

TEST_F(WavChunkDecoder, KnowsItsClass) {
    EXPECT_EQ(decoder_->GetClassId(), CId(0x9196075E, 0x9CA345E2, 0x824A41F7, 0x414D7EE9));
    EXPECT_EQ(Narrow(v.GetClassStore().GetClassInfo(classid::CWavChunkDecoder)->name),
              "vorlund::CWavChunkDecoder");
}

struct TQueryRow {
    const char* name;
    CId id;
    bool isAnswered;
};
class WavChunkDecoderQuery : public WavChunkDecoder, public testing::WithParamInterface<TQueryRow> {};

TEST_P(WavChunkDecoderQuery, AnswersWithAReference) {
    IObject* const answer = decoder_->QueryInterface(GetParam().id);
    EXPECT_EQ(answer, GetParam().isAnswered ? static_cast<IObject*>(decoder_.Get()) : nullptr);
    EXPECT_EQ(decoder_->AddRef(), GetParam().isAnswered ? 3 : 2);
    decoder_->Release();
    if (answer) answer->Release();
}

INSTANTIATE_TEST_SUITE_P(
    Chain, WavChunkDecoderQuery,
    testing::Values(TQueryRow{"IWavChunkDecoder", {0x3C718E0B, 0xF5A5403B, 0xBCE6CE73, 0x8A5092CC}, true},
                    TQueryRow{"IInputStreamFilter", {0x60A36D1A, 0x010B4DAA, 0x840BBFB2, 0xEAE35868}, true},
                    TQueryRow{"IInputStream", {0xE3105CB8, 0xCEBD4B10, 0x829C75B7, 0x76ACBBB3}, true},
                    TQueryRow{"IStream", {0x22C30DFF, 0xBD4042C7, 0xAAC861B7, 0xBEB00D39}, true},
                    TQueryRow{"IObject", {0x021E95ED, 0x173F45B5, 0xA6C3EC3F, 0xB12B6A49}, true},
                    TQueryRow{"IWavDecoder", {0xC4B0F257, 0xA5504AA6, 0x917BB449, 0x30680C16}, false},
                    TQueryRow{"Null", {}, false}),
    [](const auto& row) { return row.param.name; });

// Failures.

struct TFailureRow {
    const char* name;
    std::function<void(IWavChunkDecoder&, CRecordingStream&)> act;
    /// Type, method, line and reason; the file is the same in all rows.
    const char* outcome;
};
class WavChunkDecoderFailure : public WavChunkDecoder, public testing::WithParamInterface<TFailureRow> {};

TEST_P(WavChunkDecoderFailure, IsRaised) {
    EXPECT_EQ(Outcome([&] { GetParam().act(*decoder_, *stream_); }), GetParam().outcome);
}

#define FILE_TEXT "src/vorlund/data/filters/WavChunkDecoder"
char buffer[8];

void ConnectTo(IWavChunkDecoder& decoder, CRecordingStream& stream, const TBytes& bytes) {
    stream.bytes = bytes;
    decoder.Connect(&stream);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, WavChunkDecoderFailure,
    testing::Values(
        TFailureRow{"ConnectCannotSeek",
                    [](IWavChunkDecoder& decoder, CRecordingStream& stream) {
                        stream.capabilities = STREAM_CAPABILITY_TELL;
                        decoder.Connect(&stream);
                    },
                    "CDataFormatException vorlund::CWavChunkDecoder::Connect " FILE_TEXT
                    ":244 Seek unsupported"},
        TFailureRow{"ConnectCannotTell",
                    [](IWavChunkDecoder& decoder, CRecordingStream& stream) {
                        stream.capabilities = STREAM_CAPABILITY_SEEK;
                        decoder.Connect(&stream);
                    },
                    "CDataFormatException vorlund::CWavChunkDecoder::Connect " FILE_TEXT
                    ":247 Tell unsupported"},
        TFailureRow{"ConnectCanDoNothing",
                    [](IWavChunkDecoder& decoder, CRecordingStream& stream) {
                        stream.capabilities = 12;
                        decoder.Connect(&stream);
                    },
                    "CDataFormatException vorlund::CWavChunkDecoder::Connect " FILE_TEXT
                    ":244 Seek unsupported"},
        TFailureRow{"ConnectInvalidHeader",
                    [](IWavChunkDecoder& decoder, CRecordingStream& stream) {
                        ConnectTo(decoder, stream, CWavBuilder().Header("RIFF", "AVI ").Build());
                    },
                    "CDataFormatException vorlund::CWavChunkDecoder::Connect " FILE_TEXT
                    ":256 Invalid header"},
        TFailureRow{"SelectUnconnected",
                    [](IWavChunkDecoder& decoder, CRecordingStream&) { decoder.SelectChunk(kData); },
                    "CObjectNotFoundException vorlund::CWavChunkDecoder::SelectChunk " FILE_TEXT
                    ":321 Stream is not connected"},
        TFailureRow{"SelectUnknown",
                    [](IWavChunkDecoder& decoder, CRecordingStream& stream) {
                        ConnectTo(decoder, stream, SampleFile());
                        decoder.SelectChunk(VRL_L("fact"));
                    },
                    "CObjectNotFoundException vorlund::CWavChunkDecoder::SelectChunk " FILE_TEXT
                    ":331 Cannot find chunk"},
        TFailureRow{"ReadNullUnconnected",
                    [](IWavChunkDecoder& decoder, CRecordingStream&) {
                        decoder.Read(static_cast<void*>(nullptr), 0);
                    },
                    "CNullPtrException vorlund::CWavChunkDecoder::Read " FILE_TEXT ":207 buffer is NULL"},
        TFailureRow{"ReadNullConnected",
                    [](IWavChunkDecoder& decoder, CRecordingStream& stream) {
                        ConnectTo(decoder, stream, SampleFile());
                        decoder.SelectChunk(kData);
                        decoder.Read(static_cast<void*>(nullptr), 4);
                    },
                    "CNullPtrException vorlund::CWavChunkDecoder::Read " FILE_TEXT ":207 buffer is NULL"},
        TFailureRow{"ReadUnconnected",
                    [](IWavChunkDecoder& decoder, CRecordingStream&) { decoder.Read(buffer, 0); },
                    "CIOException vorlund::CWavChunkDecoder::Read " FILE_TEXT ":209 Stream is not connected"},
        TFailureRow{"ReadNoSample",
                    [](IWavChunkDecoder& decoder, CRecordingStream&) {
                        decoder.Read(static_cast<IMediaSample*>(nullptr));
                    },
                    "CNullPtrException vorlund::CWavChunkDecoder::Read " FILE_TEXT ":225 sample is NULL"},
        TFailureRow{"ReadSampleUnconnected",
                    [](IWavChunkDecoder& decoder, CRecordingStream&) {
                        decoder.Read(CreateAs<IMediaSample>(classid::CMediaSample).Get());
                    },
                    "CInvalidParameterException vorlund::CWavChunkDecoder::Read " FILE_TEXT
                    ":226 Media samples are not supported"},
        TFailureRow{"ReadSampleConnected",
                    [](IWavChunkDecoder& decoder, CRecordingStream& stream) {
                        ConnectTo(decoder, stream, SampleFile());
                        decoder.Read(CreateAs<IMediaSample>(classid::CMediaSample).Get());
                    },
                    "CInvalidParameterException vorlund::CWavChunkDecoder::Read " FILE_TEXT
                    ":226 Media samples are not supported"},
        TFailureRow{"SkipUnconnected", [](IWavChunkDecoder& decoder, CRecordingStream&) { decoder.Skip(0); },
                    "CIOException vorlund::CWavChunkDecoder::Skip " FILE_TEXT ":232 Stream is not connected"},
        TFailureRow{"SeekUnconnected", [](IWavChunkDecoder& decoder, CRecordingStream&) { decoder.Seek(0); },
                    "COperationNotSupportedException vorlund::CWavChunkDecoder::Seek " FILE_TEXT
                    ":161 Stream is not connected"},
        TFailureRow{"TellUnconnected", [](IWavChunkDecoder& decoder, CRecordingStream&) { decoder.Tell(); },
                    "COperationNotSupportedException vorlund::CWavChunkDecoder::Tell " FILE_TEXT
                    ":178 Stream is not connected"},
        TFailureRow{"FlushUnconnected", [](IWavChunkDecoder& decoder, CRecordingStream&) { decoder.Flush(); },
                    "COperationNotSupportedException vorlund::CWavChunkDecoder::Flush " FILE_TEXT
                    ":190 Stream is not connected"}),
    [](const auto& row) { return row.param.name; });

/// Registers a class store's only class: one that yields nothing.
void ReplaceClasses(const CId& id) {
    v.GetClassStore().Clear();
    v.GetClassStore().RegisterClassVrl({id, VRL_L("test::CNothing"), []() -> IObject* { return nullptr; }});
}

TEST_F(WavChunkDecoder, SaysThatItCannotMakeItsList) {
    Connect(SampleFile());
    ReplaceClasses(classid::CObjectList);
    EXPECT_EQ(Outcome([&] { decoder_->EnumerateChunks(); }),
              "CBugException vorlund::CWavChunkDecoder::EnumerateChunks " FILE_TEXT
              ":292 Cannot create object list");
}

TEST_F(WavChunkDecoder, SaysThatItCannotMakeTheTextsOfItsList) {
    Connect(SampleFile());
    const TClassInfo list = *v.GetClassStore().GetClassInfo(classid::CObjectList);
    ReplaceClasses(classid::CStringObject);
    v.GetClassStore().RegisterClassVrl(list);
    EXPECT_EQ(Outcome([&] { decoder_->EnumerateChunks(); }),
              "CBugException vorlund::CWavChunkDecoder::EnumerateChunks " FILE_TEXT
              ":297 Cannot create string object");
}

/// What an application's class of texts does: it disconnects the decoder that makes one.
IWavChunkDecoder* disconnectedByTexts = nullptr;
TObjectFactory usualTexts = nullptr;

IObject* DisconnectAndMakeText() {
    disconnectedByTexts->Disconnect();
    return usualTexts();
}

TEST_F(WavChunkDecoder, AnEnumerationEndsWhenTheConnectionDoes) {
    Connect(SampleFile());
    const TClassInfo list = *v.GetClassStore().GetClassInfo(classid::CObjectList);
    const TClassInfo text = *v.GetClassStore().GetClassInfo(classid::CStringObject);
    disconnectedByTexts = decoder_.Get();
    usualTexts = text.factory;
    v.GetClassStore().Clear();
    v.GetClassStore().RegisterClassVrl(list);
    v.GetClassStore().RegisterClassVrl({text.id, text.name, &DisconnectAndMakeText});
    EXPECT_EQ(Ids(), TCalls{"fmt "});
    EXPECT_FALSE(IsConnected());
    EXPECT_EQ(stream_->GetReferences(), 1);
}

// Operations by state.

TEST_F(WavChunkDecoder, UnconnectedIsEmpty) {
    decoder_->Close();
    decoder_->Disconnect();
    EXPECT_EQ(decoder_->GetCapabilities(), 0u);
    EXPECT_EQ(decoder_->GetLength(), 0);
    EXPECT_TRUE(decoder_->Eof());
    EXPECT_EQ(decoder_->GetFormat().id, CId::Null());
    EXPECT_EQ(decoder_->GetFormat().size, 20u);
    EXPECT_FALSE(decoder_->SupportsMediaSamples(0));
    EXPECT_EQ(decoder_->GetInputStream(), nullptr);
    EXPECT_EQ(Ids(), TCalls{});
    EXPECT_EQ(decoder_->GetChunkSize(), 0u);
    EXPECT_EQ(decoder_->GetChunkOffset(), kNone);
    decoder_->SelectChunk(nullptr);
    EXPECT_EQ(decoder_->GetLength(), 0);
    EXPECT_EQ(decoder_->GetChunkOffset(), kNone);
}

TEST_F(WavChunkDecoder, ConnectedWithoutSelectionIsEmptyToo) {
    Connect(SampleFile());
    EXPECT_TRUE(IsConnected());
    EXPECT_EQ(decoder_->GetLength(), 0);
    EXPECT_EQ(decoder_->Tell(), 0);
    EXPECT_TRUE(decoder_->Eof());
    EXPECT_EQ(decoder_->GetFormat().id, CId::Null());
    EXPECT_EQ(decoder_->GetFormat().size, 20u);
    EXPECT_EQ(&decoder_->GetFormat(), &GetEmptyFormat());
    EXPECT_FALSE(decoder_->SupportsMediaSamples(1));
    EXPECT_EQ(decoder_->GetChunkSize(), 0u);
    EXPECT_EQ(decoder_->GetChunkOffset(), kNone);
    EXPECT_EQ(ReadAll(), TBytes{});
    decoder_->Seek(5);
    EXPECT_EQ(decoder_->Tell(), 0);
    EXPECT_EQ(stream_->TakeCalls(), TCalls{}) << "the stream below was not needed";
    decoder_->Skip(5);
    EXPECT_EQ(stream_->TakeCalls(), TCalls{"Skip 0"});
    EXPECT_EQ(Ids(), (TCalls{"fmt ", "LIST", "data"}));
}

TEST_F(WavChunkDecoder, SelectedIsTheChunk) {
    ConnectAndSelect();
    EXPECT_EQ(decoder_->GetLength(), 10);
    EXPECT_EQ(decoder_->GetChunkSize(), 10u);
    EXPECT_EQ(decoder_->GetChunkOffset(), 60);
    EXPECT_EQ(decoder_->Tell(), 0);
    EXPECT_FALSE(decoder_->Eof());
    EXPECT_EQ(decoder_->GetFormat().id, CId::Null());
    EXPECT_FALSE(decoder_->SupportsMediaSamples(0));
    EXPECT_EQ(stream_->TakeCalls(), TCalls{});
    EXPECT_EQ(ReadAll(4), Ramp(4, 100));
    EXPECT_EQ(decoder_->Tell(), 4);
    EXPECT_EQ(ReadAll(), Ramp(6, 104));
    EXPECT_EQ(decoder_->Tell(), 10);
    EXPECT_TRUE(decoder_->Eof());
    EXPECT_EQ(stream_->TakeCalls(), (TCalls{"Read 4", "Read 6"}));
}

TEST_F(WavChunkDecoder, HandsCloseAndFlushOn) {
    Connect(SampleFile());
    decoder_->Close();
    decoder_->Flush();
    EXPECT_EQ(stream_->TakeCalls(), (TCalls{"Close", "Flush"}));
    EXPECT_TRUE(IsConnected());
}

TEST_F(WavChunkDecoder, AddsTheThreeLowestBitsToTheCapabilities) {
    Connect(SampleFile());
    for (const auto& [below, answer] : std::vector<std::pair<std::uint32_t, std::uint32_t>>{
             {0, 7}, {3, 7}, {8, 15}, {0x80000000, 0x80000007}}) {
        stream_->capabilities = below;
        EXPECT_EQ(decoder_->GetCapabilities(), answer);
    }
}

// Connect.

TEST_F(WavChunkDecoder, WalksTheFileOnce) {
    stream_->bytes = CWavBuilder().Chunk("ab\tc", Ramp(3)).Chunk("data", {}).Build();
    stream_->position = 17;
    decoder_->Connect(stream_.Get());
    EXPECT_EQ(stream_->TakeCalls(),
              (TCalls{"GetCapabilities", "Seek 0", "Read 12", "Seek 12", "Read 4", "Read 4", "Tell", "Skip 3",
                      "Read 4", "Read 4", "Tell", "Skip 0", "Read 4", "Seek 0"}));
    EXPECT_EQ(Ids(), (TCalls{"ab\tc", "data"}));
    EXPECT_EQ(stream_->GetReferences(), 2);
}

TEST_F(WavChunkDecoder, TakesBlocksInPieces) {
    stream_->mostPerRead = 1;
    Connect(SampleFile());
    EXPECT_EQ(Ids(), (TCalls{"fmt ", "LIST", "data"}));
    decoder_->SelectChunk(kData);
    EXPECT_EQ(ReadAll(), Ramp(1, 100)) << "a caller's read is one read below";
}

TEST_F(WavChunkDecoder, TwelveBytesAreAFileWithoutChunks) {
    Connect(CWavBuilder().Build());
    EXPECT_TRUE(IsConnected());
    EXPECT_EQ(Ids(), TCalls{});
    EXPECT_EQ(Outcome([&] { decoder_->SelectChunk(kFmt); }),
              "CObjectNotFoundException vorlund::CWavChunkDecoder::SelectChunk " FILE_TEXT
              ":331 Cannot find chunk");
}

struct THeaderRow {
    const char* name;
    TBytes bytes;
    bool isValid;
};
TBytes Cut(TBytes bytes, std::size_t size) {
    bytes.resize(size);
    return bytes;
}
class WavChunkDecoderHeader : public WavChunkDecoder, public testing::WithParamInterface<THeaderRow> {};

TEST_P(WavChunkDecoderHeader, IsJudged) {
    stream_->bytes = GetParam().bytes;
    const std::string outcome = Outcome([&] { decoder_->Connect(stream_.Get()); });
    EXPECT_EQ(outcome, GetParam().isValid
                           ? "nothing"
                           : "CDataFormatException vorlund::CWavChunkDecoder::Connect " FILE_TEXT
                             ":256 Invalid header");
    EXPECT_EQ(IsConnected(), GetParam().isValid);
    EXPECT_EQ(stream_->GetReferences(), GetParam().isValid ? 2 : 1);
    EXPECT_EQ(decoder_->GetCapabilities(), GetParam().isValid ? 7u : 0u);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, WavChunkDecoderHeader,
    testing::Values(THeaderRow{"Good", CWavBuilder().Build(), true}, THeaderRow{"Empty", {}, false},
                    THeaderRow{"ElevenBytes", Cut(CWavBuilder().Build(), 11), false},
                    THeaderRow{"FourBytes", Cut(CWavBuilder().Build(), 4), false},
                    THeaderRow{"SmallRiff", CWavBuilder().Header("riff", "WAVE").Build(), false},
                    THeaderRow{"SmallWave", CWavBuilder().Header("RIFF", "wave").Build(), false},
                    THeaderRow{"BigEndian", CWavBuilder().Header("RIFX", "WAVE").Build(), false},
                    THeaderRow{"SixtyFourBit", CWavBuilder().Header("RF64", "WAVE").Build(), false},
                    THeaderRow{"OtherForm", CWavBuilder().Header("RIFF", "AVI ").Build(), false},
                    THeaderRow{"RiffSizeZero", CWavBuilder().RiffSize(0).Build(), true},
                    THeaderRow{"RiffSizeHuge", CWavBuilder().RiffSize(0xFFFFFFFF).Build(), true}),
    [](const auto& row) { return row.param.name; });

TEST_F(WavChunkDecoder, ConnectReplacesTheConnection) {
    ConnectAndSelect();
    decoder_->Seek(4);
    const auto other = CRecordingStream::Create(CWavBuilder().Chunk("cue ", Ramp(4)).Build());
    decoder_->Connect(other.Get());
    EXPECT_EQ(stream_->GetReferences(), 1);
    EXPECT_EQ(other->GetReferences(), 2);
    EXPECT_EQ(decoder_->Tell(), 0);
    EXPECT_EQ(decoder_->GetChunkOffset(), kNone);
    EXPECT_EQ(Ids(), TCalls{"cue "});
    decoder_->Disconnect();
}

TEST_F(WavChunkDecoder, ConnectsToTheSameStreamAgain) {
    ConnectAndSelect();
    decoder_->Connect(stream_.Get());
    EXPECT_EQ(stream_->GetReferences(), 2);
    EXPECT_EQ(decoder_->GetChunkOffset(), kNone);
    EXPECT_EQ(Ids(), (TCalls{"fmt ", "LIST", "data"}));
}

TEST_F(WavChunkDecoder, ConnectsToTheStreamThatOnlyItHolds) {
    Connect(SampleFile());
    CRecordingStream* const only = stream_.Detach();
    only->Release();
    decoder_->Connect(only);
    EXPECT_EQ(Ids(), (TCalls{"fmt ", "LIST", "data"}));
}

TEST_F(WavChunkDecoder, ConnectingToNothingDisconnects) {
    ConnectAndSelect();
    decoder_->Connect(nullptr);
    EXPECT_FALSE(IsConnected());
    EXPECT_EQ(stream_->GetReferences(), 1);
    EXPECT_EQ(Ids(), TCalls{});
    EXPECT_EQ(decoder_->GetLength(), 0);
    EXPECT_TRUE(decoder_->Eof());
}

TEST_F(WavChunkDecoder, AStreamThatCannotSeekEndsTheFormerConnection) {
    ConnectAndSelect();
    const auto other = CRecordingStream::Create(SampleFile());
    other->capabilities = STREAM_CAPABILITY_READ;
    Outcome([&] { decoder_->Connect(other.Get()); });
    EXPECT_EQ(other->GetReferences(), 1);
    EXPECT_EQ(stream_->GetReferences(), 1);
    EXPECT_FALSE(IsConnected());
}

// Faults from below.

struct TFaultRow {
    const char* name;
    int call;
    void (*fault)();
    const char* outcome;
    bool isConnected;
    unsigned int chunks;
};
class WavChunkDecoderFault : public WavChunkDecoder, public testing::WithParamInterface<TFaultRow> {};

TEST_P(WavChunkDecoderFault, IsPassedOn) {
    stream_->bytes = SampleFile();
    stream_->faultyCall = GetParam().call;
    stream_->fault = GetParam().fault;
    EXPECT_EQ(Outcome([&] { decoder_->Connect(stream_.Get()); }), GetParam().outcome);
    EXPECT_EQ(IsConnected(), GetParam().isConnected);
    EXPECT_EQ(stream_->GetReferences(), GetParam().isConnected ? 2 : 1);
    EXPECT_EQ(Ids().size(), GetParam().chunks);
    // What was found works.
    if (GetParam().chunks > 0) {
        decoder_->SelectChunk(kFmt);
        EXPECT_EQ(ReadAll(), TWavFormat{}.Record());
    }
    decoder_->Disconnect();
    EXPECT_EQ(stream_->GetReferences(), 1);
}

TEST_F(WavChunkDecoder, PassesOnWhatTheEndOfItsStreamRaises) {
    auto stream = Make<CMemoryInputStream>();
    stream->bytes = CWavBuilder().Build();
    CTestListener listener([](IObject*) { RaiseFromStream<CInvalidStateException>(); });
    stream->AddListener(&listener);
    decoder_->Connect(stream.Get());
    stream.Reset();
    EXPECT_EQ(Outcome([&] { decoder_.Reset(); }),
              "CInvalidStateException test::CRecordingStream tests/filters/RecordingStream:7 on request");
}

TEST_F(WavChunkDecoder, HeaderOfAStreamThatClaimsTooMuchIsInvalid) {
    const auto stream = Make<CFaultyInputStream>();
    stream->bytes = CWavBuilder().Build();
    stream->exaggeration = 1;
    // What reads on ends here.
    stream->failAt = static_cast<std::int64_t>(stream->bytes.size());
    EXPECT_EQ(Outcome([&] { decoder_->Connect(stream.Get()); }),
              "CDataFormatException vorlund::CWavChunkDecoder::Connect " FILE_TEXT ":256 Invalid header");
    EXPECT_EQ(ReferencesOf(stream.Get()), 1);
}

#define STREAM_TEXT " test::CRecordingStream tests/filters/RecordingStream:7 on request"
constexpr const char* kInvalidHeader =
    "CDataFormatException vorlund::CWavChunkDecoder::Connect " FILE_TEXT ":256 Invalid header";
constexpr const char* kIo = "CIOException" STREAM_TEXT;
constexpr const char* kFormat = "CDataFormatException" STREAM_TEXT;
constexpr const char* kState = "CInvalidStateException" STREAM_TEXT;

// The calls: 0 capabilities, 1 seek, 2 read the file header, 3 seek; then per chunk read, read, tell, skip;
// at last a read at the end (16) and a seek (17).
INSTANTIATE_TEST_SUITE_P(
    Rows, WavChunkDecoderFault,
    testing::Values(TFaultRow{"Capabilities", 0, &RaiseFromStream<CIOException>, kIo, false, 0},
                    TFaultRow{"FirstSeek", 1, &RaiseFromStream<CIOException>, kIo, true, 0},
                    TFaultRow{"HeaderIo", 2, &RaiseFromStream<CIOException>, kInvalidHeader, false, 0},
                    TFaultRow{"HeaderFormat", 2, &RaiseFromStream<CDataFormatException>, kFormat, true, 0},
                    TFaultRow{"HeaderState", 2, &RaiseFromStream<CInvalidStateException>, kState, true, 0},
                    TFaultRow{"HeaderForeign", 2, [] { throw std::runtime_error("on request"); },
                              "a foreign exception", true, 0},
                    TFaultRow{"SecondSeek", 3, &RaiseFromStream<CIOException>, kIo, true, 0},
                    TFaultRow{"FirstId", 4, &RaiseFromStream<CIOException>, kIo, true, 0},
                    TFaultRow{"FirstSize", 5, &RaiseFromStream<CIOException>, kIo, true, 0},
                    TFaultRow{"FirstTell", 6, &RaiseFromStream<CIOException>, kIo, true, 0},
                    TFaultRow{"FirstSkip", 7, &RaiseFromStream<CIOException>, kIo, true, 1},
                    TFaultRow{"SecondId", 8, &RaiseFromStream<CDataFormatException>, kFormat, true, 1},
                    TFaultRow{"SecondSize", 9, &RaiseFromStream<CInvalidStateException>, kState, true, 1},
                    TFaultRow{"SecondSkip", 11, &RaiseFromStream<CIOException>, kIo, true, 2},
                    TFaultRow{"LastRead", 16, &RaiseFromStream<CIOException>, kIo, true, 3},
                    TFaultRow{"LastSeek", 17, &RaiseFromStream<CIOException>, kIo, true, 3}),
    [](const auto& row) { return row.param.name; });

TEST_F(WavChunkDecoder, AFailedSeekLeavesTheChunkSelected) {
    ConnectAndSelect();
    decoder_->Seek(4);
    stream_->fault = &RaiseFromStream<CIOException>;
    stream_->faultyCall = stream_->callCount;
    EXPECT_EQ(Outcome([&] { decoder_->SelectChunk(kFmt); }), kIo);
    EXPECT_EQ(decoder_->GetChunkOffset(), 20);
    EXPECT_EQ(decoder_->Tell(), 0);
    stream_->faultyCall = stream_->callCount;
    EXPECT_EQ(Outcome([&] { decoder_->Seek(3); }), kIo);
    EXPECT_EQ(decoder_->Tell(), 0);
    stream_->faultyCall = stream_->callCount;
    EXPECT_EQ(Outcome([&] { ReadAll(); }), kIo);
    EXPECT_EQ(decoder_->Tell(), 0);
}

// Chunks.

TEST_F(WavChunkDecoder, FindsAChunkInEitherCase) {
    Connect(SampleFile());
    for (const wchar* const id : {VRL_L("FMT "), VRL_L("Fmt "), VRL_L("fmt ")}) {
        decoder_->SelectChunk(id);
        EXPECT_EQ(decoder_->GetChunkOffset(), 20) << Narrow(id);
    }
    decoder_->SelectChunk(VRL_L("list"));
    EXPECT_EQ(decoder_->GetChunkOffset(), 44);
    EXPECT_EQ(Ids(), (TCalls{"fmt ", "LIST", "data"})) << "ids keep their case";
}

struct TIdRow {
    const char* name;
    std::string stored;
    wstring wanted;
    bool isFound;
};
class WavChunkDecoderId : public WavChunkDecoder, public testing::WithParamInterface<TIdRow> {};

TEST_P(WavChunkDecoderId, IsCompared) {
    Connect(CWavBuilder().Chunk(GetParam().stored, Ramp(4)).Build());
    EXPECT_EQ(Outcome([&] { decoder_->SelectChunk(GetParam().wanted.c_str()); }) == "nothing",
              GetParam().isFound);
    EXPECT_EQ(decoder_->GetChunkSize(), GetParam().isFound ? 4u : 0u);
}

INSTANTIATE_TEST_SUITE_P(Rows, WavChunkDecoderId,
                         testing::Values(TIdRow{"BlankMissing", "fmt ", VRL_L("fmt"), false},
                                         TIdRow{"TooLong", "data", VRL_L("data "), false},
                                         TIdRow{"MuchTooLong", "data", wstring(100000, VRL_L('d')), false},
                                         TIdRow{"Empty", "data", VRL_L(""), false},
                                         TIdRow{"ZeroEndsTheId", std::string("ab\0d", 4), VRL_L("AB"), true},
                                         TIdRow{"ZeroIsNoUnit", std::string("ab\0d", 4), VRL_L("abd"), false},
                                         TIdRow{"AllZero", std::string(4, '\0'), VRL_L(""), true},
                                         TIdRow{"HighByteIsSignExtended", "d\xE9t\xFF",
                                                VRL_L("D\xFFE9T\xFFFF"), true},
                                         TIdRow{"HighByteIsNoCodePage", "d\xE9ta", VRL_L("d\x00E9ta"), false},
                                         TIdRow{"Digits", "0123", VRL_L("0123"), true},
                                         TIdRow{"OtherSymbol", "[{`@", VRL_L("{[`@"), false}),
                         [](const auto& row) { return row.param.name; });

TEST_F(WavChunkDecoder, WidensIdsWithTheirSign) {
    Connect(CWavBuilder().Chunk("d\xE9t\xFF", {}).Chunk(std::string("x\0yz", 4), {}).Build());
    EXPECT_EQ(Ids(), (TCalls{Narrow(VRL_L("d\xFFE9t\xFFFF")), "x"}));
}

TEST_F(WavChunkDecoder, TakesTheFirstOfSeveral) {
    Connect(
        CWavBuilder().Chunk("data", Ramp(3, 1)).Chunk("DATA", Ramp(5, 50)).Chunk("data", Ramp(7)).Build());
    EXPECT_EQ(Ids(), (TCalls{"data", "DATA", "data"}));
    for (const wchar* const id : {VRL_L("data"), VRL_L("DATA")}) {
        decoder_->SelectChunk(id);
        EXPECT_EQ(ReadAll(), Ramp(3, 1));
    }
}

TEST_F(WavChunkDecoder, SelectingSeeksToTheData) {
    Connect(SampleFile());
    decoder_->SelectChunk(kData);
    EXPECT_EQ(stream_->TakeCalls(), TCalls{"Seek 60"});
    ReadAll(3);
    decoder_->SelectChunk(kData);
    EXPECT_EQ(decoder_->Tell(), 0);
    EXPECT_EQ(ReadAll(3), Ramp(3, 100));
}

TEST_F(WavChunkDecoder, SelectingNothingOrTheUnknownSelectsNone) {
    for (const wchar* const id : {static_cast<const wchar*>(nullptr), VRL_L("cue ")}) {
        ConnectAndSelect();
        decoder_->Seek(4);
        stream_->TakeCalls();
        Outcome([&] { decoder_->SelectChunk(id); });
        EXPECT_EQ(stream_->TakeCalls(), TCalls{});
        EXPECT_TRUE(IsConnected());
        EXPECT_EQ(decoder_->Tell(), 0);
        EXPECT_EQ(decoder_->GetChunkSize(), 0u);
        EXPECT_EQ(decoder_->GetChunkOffset(), kNone);
        EXPECT_TRUE(decoder_->Eof());
    }
}

TEST_F(WavChunkDecoder, SkipsNoPadByte) {
    // The head behind "odd " is read one byte early: the pad byte becomes part of its id.
    Connect(CWavBuilder().Chunk("odd ", Ramp(3)).Raw({0}).Chunk("data", Ramp(4)).Build());
    EXPECT_EQ(Ids(), (TCalls{"odd ", ""}));
    decoder_->SelectChunk(VRL_L(""));
    EXPECT_EQ(decoder_->GetChunkOffset(), 31);
    EXPECT_EQ(decoder_->GetChunkSize(), 0x461u) << "'a' and three bytes of the size";
    EXPECT_EQ(ReadAll(), (TBytes{0, 0, 1, 2, 3}));

    Connect(CWavBuilder().Chunk("odd ", Ramp(3)).Chunk("data", Ramp(4)).Build());
    EXPECT_EQ(Ids(), (TCalls{"odd ", "data"})) << "without the pad byte the file reads as it should";
}

TEST_F(WavChunkDecoder, EntersNoList) {
    TBytes inner;
    AppendText(inner, "INFO");
    AppendText(inner, "data");
    Append32(inner, 2);
    Append16(inner, 0xFFFF);
    Connect(CWavBuilder().Chunk("LIST", inner).Chunk("data", Ramp(4, 9)).Build());
    EXPECT_EQ(Ids(), (TCalls{"LIST", "data"}));
    decoder_->SelectChunk(kData);
    EXPECT_EQ(ReadAll(), Ramp(4, 9));
}

TEST_F(WavChunkDecoder, StopsAtHalfAHead) {
    for (std::size_t size = 0; size < 8; ++size) {
        Connect(CWavBuilder().Chunk("cue ", Ramp(4)).Raw(Ramp(size, 65)).Build());
        EXPECT_EQ(Ids(), TCalls{"cue "}) << size;
    }
}

TEST_F(WavChunkDecoder, RecordsASizeAsItIsDeclared) {
    Connect(CWavBuilder().Declare("data", 0xFFFFFFFF, Ramp(6)).Build());
    EXPECT_EQ(Ids(), TCalls{"data"});
    decoder_->SelectChunk(kData);
    EXPECT_EQ(decoder_->GetLength(), 0xFFFFFFFF);
    EXPECT_EQ(ReadAll(), Ramp(6));
    EXPECT_EQ(decoder_->Tell(), 6);
    EXPECT_FALSE(decoder_->Eof()) << "the declared end is not reached";
    EXPECT_EQ(ReadAll(), TBytes{});
    decoder_->Seek(0x100000000);
    EXPECT_EQ(decoder_->Tell(), 0xFFFFFFFF);
    EXPECT_TRUE(decoder_->Eof());
}

struct TOffsetRow {
    const char* name;
    std::int64_t told;
    std::int64_t offset;
};
class WavChunkDecoderOffset : public WavChunkDecoder, public testing::WithParamInterface<TOffsetRow> {};

TEST_P(WavChunkDecoderOffset, IsTheLow32BitsWithTheirSign) {
    stream_->tellShift = GetParam().told - 20;
    Connect(CWavBuilder().Chunk("data", Ramp(4)).Build());
    decoder_->SelectChunk(kData);
    EXPECT_EQ(decoder_->GetChunkOffset(), GetParam().offset);
    EXPECT_EQ(stream_->TakeCalls(), TCalls{"Seek " + std::to_string(GetParam().offset)});
    decoder_->Seek(3);
    EXPECT_EQ(stream_->TakeCalls(), TCalls{"Seek " + std::to_string(GetParam().offset + 3)});
}

INSTANTIATE_TEST_SUITE_P(
    Rows, WavChunkDecoderOffset,
    testing::Values(TOffsetRow{"Small", 20, 20}, TOffsetRow{"Below2GiB", 0x7FFFFFFF, 0x7FFFFFFF},
                    TOffsetRow{"At2GiB", 0x80000000, -0x80000000ll}, TOffsetRow{"Below4GiB", 0xFFFFFFFF, -1},
                    TOffsetRow{"At4GiB", 0x100000000, 0}, TOffsetRow{"Beyond4GiB", 0x300000014, 20}),
    [](const auto& row) { return row.param.name; });

TEST_F(WavChunkDecoder, StepsIn64Bits) {
    // 4 GiB - 1 and a bit: the sum of sizes passes every 32-bit border, and each step goes forward.
    CWavBuilder file;
    for (int i = 0; i < 3; ++i) file.Declare("big ", 0xFFFFFFF8);
    stream_->bytes = file.Build();
    decoder_->Connect(stream_.Get());
    EXPECT_EQ(Ids(), TCalls{"big "}) << "what is declared next lies beyond the end of the file";
    EXPECT_EQ(stream_->TakeCalls(), (TCalls{"GetCapabilities", "Seek 0", "Read 12", "Seek 12", "Read 4",
                                            "Read 4", "Tell", "Skip 4294967288", "Read 4", "Seek 0"}));
}

// Reading, seeking, skipping.

TEST_F(WavChunkDecoder, ReadsNoFurtherThanTheChunk) {
    ConnectAndSelect();
    EXPECT_EQ(ReadAll(100), Ramp(10, 100));
    EXPECT_EQ(stream_->TakeCalls(), TCalls{"Read 10"});
    EXPECT_EQ(ReadAll(100), TBytes{});
    EXPECT_EQ(stream_->TakeCalls(), TCalls{}) << "the end is known here";
    decoder_->Seek(50);
    EXPECT_EQ(decoder_->Tell(), 10);
}

TEST_F(WavChunkDecoder, ReadOfNothingAsksNobody) {
    ConnectAndSelect();
    char byte;
    EXPECT_EQ(decoder_->Read(&byte, 0), 0u);
    EXPECT_EQ(stream_->TakeCalls(), TCalls{});
}

TEST_F(WavChunkDecoder, ReadOfTheLargestCountIsCut) {
    ConnectAndSelect();
    TBytes bytes(10);
    EXPECT_EQ(decoder_->Read(bytes.data(), ~std::uint64_t{0}), 10u);
    EXPECT_EQ(bytes, Ramp(10, 100));
}

TEST_F(WavChunkDecoder, CountsWhatWasRead) {
    ConnectAndSelect();
    stream_->mostPerRead = 3;
    EXPECT_EQ(ReadAll(), Ramp(3, 100));
    EXPECT_EQ(decoder_->Tell(), 3);
    EXPECT_EQ(ReadAll(), Ramp(3, 103));
    EXPECT_EQ(stream_->TakeCalls(), (TCalls{"Read 10", "Read 7"}));
}

struct TSeekRow {
    const char* name;
    std::int64_t target;
    std::int64_t position;
};
class WavChunkDecoderSeek : public WavChunkDecoder, public testing::WithParamInterface<TSeekRow> {};

TEST_P(WavChunkDecoderSeek, StaysInTheChunk) {
    ConnectAndSelect();
    decoder_->Seek(GetParam().target);
    EXPECT_EQ(decoder_->Tell(), GetParam().position);
    EXPECT_EQ(stream_->TakeCalls(), TCalls{"Seek " + std::to_string(60 + GetParam().position)});
    EXPECT_EQ(decoder_->Eof(), GetParam().position == 10);
    EXPECT_EQ(ReadAll(), Ramp(static_cast<std::size_t>(10 - GetParam().position),
                              static_cast<unsigned int>(100 + GetParam().position)));
}

INSTANTIATE_TEST_SUITE_P(
    Rows, WavChunkDecoderSeek,
    testing::Values(TSeekRow{"Start", 0, 0}, TSeekRow{"Middle", 7, 7}, TSeekRow{"End", 10, 10},
                    TSeekRow{"Behind", 11, 10}, TSeekRow{"FarBehind", 0x7FFFFFFFFFFFFFFF, 10},
                    // Positions are compared without their sign.
                    TSeekRow{"Negative", -1, 10},
                    TSeekRow{"MostNegative", std::numeric_limits<std::int64_t>::min(), 10}),
    [](const auto& row) { return row.param.name; });

TEST_F(WavChunkDecoder, SkipMovesOnlyTheStreamBelow) {
    ConnectAndSelect();
    decoder_->Seek(2);
    stream_->TakeCalls();
    decoder_->Skip(4);
    EXPECT_EQ(stream_->TakeCalls(), TCalls{"Skip 4"});
    EXPECT_EQ(stream_->position, 66);
    EXPECT_EQ(decoder_->Tell(), 2);
    EXPECT_EQ(ReadAll(3), Ramp(3, 106)) << "from where the stream below is";
    EXPECT_EQ(decoder_->Tell(), 5);
}

TEST_F(WavChunkDecoder, SkipIsCutLikeARead) {
    ConnectAndSelect();
    decoder_->Seek(7);
    stream_->TakeCalls();
    decoder_->Skip(~std::uint64_t{0});
    EXPECT_EQ(stream_->TakeCalls(), TCalls{"Skip 3"});
    decoder_->Seek(10);
    stream_->TakeCalls();
    decoder_->Skip(5);
    EXPECT_EQ(stream_->TakeCalls(), TCalls{"Skip 0"});
}

TEST_F(WavChunkDecoder, AnEmptyChunkIsAtItsEnd) {
    Connect(CWavBuilder().Chunk("data", {}).Chunk("cue ", Ramp(4)).Build());
    decoder_->SelectChunk(kData);
    EXPECT_TRUE(decoder_->Eof());
    EXPECT_EQ(decoder_->GetChunkOffset(), 20);
    EXPECT_EQ(ReadAll(), TBytes{});
}

// End of life.

TEST_F(WavChunkDecoder, DisconnectForgetsEverything) {
    ConnectAndSelect();
    decoder_->Seek(4);
    decoder_->Disconnect();
    EXPECT_EQ(stream_->GetReferences(), 1);
    EXPECT_FALSE(IsConnected());
    EXPECT_EQ(Ids(), TCalls{});
    EXPECT_EQ(decoder_->GetChunkSize(), 0u);
    EXPECT_EQ(decoder_->GetChunkOffset(), kNone);
    EXPECT_TRUE(decoder_->Eof());
    Connect(SampleFile());
    EXPECT_EQ(decoder_->Tell(), 0);
}

TEST_F(WavChunkDecoder, TellsItsListenersWhileItIsWhole) {
    ConnectAndSelect();
    CTestListener listener([&](IObject* object) {
        const auto dying = CRefPtr<IWavChunkDecoder>::Adopt(
            static_cast<IWavChunkDecoder*>(object->QueryInterface(IWavChunkDecoder::InterfaceId)));
        EXPECT_EQ(dying->GetLength(), 10);
        EXPECT_EQ(CRefPtr<IInputStream>::Adopt(dying->GetInputStream()).Get(), stream_.Get());
    });
    decoder_->AddListener(&listener);
    decoder_.Reset();
    EXPECT_EQ(listener.GetCalls(), 1);
    EXPECT_EQ(stream_->GetReferences(), 1) << "then it lets go of the stream";
}

TEST_F(WavChunkDecoder, TakesOneNumber) {
    const int before = CreateAs<IObject>(classid::CObject)->GetObjectNumber();
    const auto another = CreateAs<IWavChunkDecoder>(classid::CWavChunkDecoder);
    EXPECT_EQ(another->GetObjectNumber(), before + 1);
    EXPECT_EQ(CreateAs<IObject>(classid::CObject)->GetObjectNumber(), before + 2);
}

TEST_F(WavChunkDecoder, ReleasesTheStreamEvenAfterTheLibraryWasClosed) {
    ConnectAndSelect();
    v.Close();
    EXPECT_EQ(Outcome([&] { decoder_.Reset(); }),
              "CBugException vorlund::CObjectCounter::OnDestroyObject src/vorlund/api/ObjectCounter:117 Not "
              "initialized");
    EXPECT_EQ(stream_->GetReferences(), 1);
    v.Init();
}

} // namespace
} // namespace vorlund::test
