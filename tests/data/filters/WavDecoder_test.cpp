#include "data/filters/RecordingStream.h"
#include "support/LibraryScope.h"
#include "support/Outcome.h"
#include "support/Probes.h"
#include "support/Text.h"
#include "support/WavBuilder.h"

#include <vorlund/ClassIds.h>
#include <vorlund/DataFormat.h>
#include <vorlund/MediaSample.h>
#include <vorlund/RefPtr.h>
#include <vorlund/StreamFilterImpl.h>
#include <vorlund/WavDecoder.h>

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

namespace vorlund::test {
namespace {

#define FILE_TEXT "src/vorlund/data/filters/WavDecoder"
#define CHUNK_FILE_TEXT "src/vorlund/data/filters/WavChunkDecoder"

const TDataFormat_AudioPcm& PcmFormat(IInputStream& stream) {
    return static_cast<const TDataFormat_AudioPcm&>(stream.GetFormat());
}

/// The three fields that a file sets.
std::string FormatText(IInputStream& stream) {
    const TDataFormat_AudioPcm& format = PcmFormat(stream);
    return "code " + std::to_string(format.sampleFormat) + ", channels " + std::to_string(format.channels) +
           ", rate " + std::to_string(format.samplesPerSec);
}
constexpr const char* kDefaultFormat = "code 1, channels 1, rate 44100";

class WavDecoder : public testing::Test {
protected:
    ~WavDecoder() noexcept override = default;

    std::string ConnectOutcome(const TBytes& bytes) {
        stream_->bytes = bytes;
        return Outcome([&] { decoder_->Connect(stream_.Get()); });
    }
    bool IsConnected() {
        const auto input = CRefPtr<IInputStream>::Adopt(decoder_->GetInputStream());
        EXPECT_TRUE(!input || input.Get() == stream_.Get());
        return static_cast<bool>(input);
    }
    TBytes ReadAll(std::uint64_t most = 1000) {
        TBytes bytes(most);
        bytes.resize(decoder_->Read(bytes.data(), most));
        return bytes;
    }

    CLibraryScope library_;
    CRefPtr<CRecordingStream> stream_ = CRecordingStream::Create();
    CRefPtr<IWavDecoder> decoder_ = CreateAs<IWavDecoder>(classid::CWavDecoder);
};

// Identity.

TEST_F(WavDecoder, KnowsItsClass) {
    EXPECT_EQ(decoder_->GetClassId(), CId(0x521C3225, 0x5C8F4D10, 0xBE3A0AB0, 0x62E4711B));
    EXPECT_EQ(Narrow(v.GetClassStore().GetClassInfo(classid::CWavDecoder)->name), "vorlund::CWavDecoder");
}

TEST_F(WavDecoder, IsTheDecoderOfAnyInputToPcm) {
    const TDecoderClassInfo* const info =
        v.GetCodecClassStore().GetDecoderClassInfo(CId::Null(), TDataFormat_AudioPcm::FormatId);
    EXPECT_EQ(info->classId, classid::CWavDecoder);
}

struct TQueryRow {
    const char* name;
    CId id;
    bool isAnswered;
};
class WavDecoderQuery : public WavDecoder, public testing::WithParamInterface<TQueryRow> {};

TEST_P(WavDecoderQuery, AnswersWithAReference) {
    IObject* const answer = decoder_->QueryInterface(GetParam().id);
    EXPECT_EQ(answer, GetParam().isAnswered ? static_cast<IObject*>(decoder_.Get()) : nullptr);
    EXPECT_EQ(ReferencesOf(decoder_.Get()), GetParam().isAnswered ? 2 : 1);
    if (answer) answer->Release();
}

INSTANTIATE_TEST_SUITE_P(
    Chain, WavDecoderQuery,
    testing::Values(TQueryRow{"IWavDecoder", {0xC4B0F257, 0xA5504AA6, 0x917BB449, 0x30680C16}, true},
                    TQueryRow{"IInputStreamFilter", {0x60A36D1A, 0x010B4DAA, 0x840BBFB2, 0xEAE35868}, true},
                    TQueryRow{"IInputStream", {0xE3105CB8, 0xCEBD4B10, 0x829C75B7, 0x76ACBBB3}, true},
                    TQueryRow{"IStream", {0x22C30DFF, 0xBD4042C7, 0xAAC861B7, 0xBEB00D39}, true},
                    TQueryRow{"IObject", {0x021E95ED, 0x173F45B5, 0xA6C3EC3F, 0xB12B6A49}, true},
                    TQueryRow{"IWavChunkDecoder", {0x3C718E0B, 0xF5A5403B, 0xBCE6CE73, 0x8A5092CC}, false},
                    TQueryRow{"Null", {}, false}),
    [](const auto& row) { return row.param.name; });

TEST_F(WavDecoder, HasAFormatBeforeAnyConnection) {
    const TDataFormat_AudioPcm& format = PcmFormat(*decoder_);
    EXPECT_EQ(format.id, TDataFormat_AudioPcm::FormatId);
    EXPECT_EQ(format.size, 32u);
    EXPECT_EQ(FormatText(*decoder_), kDefaultFormat);
    EXPECT_EQ(&decoder_->GetFormat(), &format);
}

// The chunk decoder inside.

struct TOperationRow {
    const char* name;
    std::function<void(IWavDecoder&)> act;
    /// What an unconnected decoder answers: the chunk decoder's failures.
    const char* outcome;
};
class WavDecoderOperation : public WavDecoder, public testing::WithParamInterface<TOperationRow> {};

TEST_P(WavDecoderOperation, CreatesTheChunkDecoderOnce) {
    const auto first = CreateAs<IObject>(classid::CObject);
    EXPECT_EQ(Outcome([&] { GetParam().act(*decoder_); }), GetParam().outcome);
    EXPECT_EQ(CreateAs<IObject>(classid::CObject)->GetObjectNumber(), first->GetObjectNumber() + 2);
    Outcome([&] { GetParam().act(*decoder_); });
    decoder_->Eof();
    EXPECT_EQ(CreateAs<IObject>(classid::CObject)->GetObjectNumber(), first->GetObjectNumber() + 3);
}

char buffer[8];

INSTANTIATE_TEST_SUITE_P(
    Rows, WavDecoderOperation,
    testing::Values(
        TOperationRow{"Close", [](IWavDecoder& decoder) { decoder.Close(); }, "nothing"},
        TOperationRow{"GetCapabilities",
                      [](IWavDecoder& decoder) { EXPECT_EQ(decoder.GetCapabilities(), 0u); }, "nothing"},
        TOperationRow{"GetLength", [](IWavDecoder& decoder) { EXPECT_EQ(decoder.GetLength(), 0); },
                      "nothing"},
        TOperationRow{"Flush", [](IWavDecoder& decoder) { decoder.Flush(); },
                      "COperationNotSupportedException vorlund::CWavChunkDecoder::Flush " CHUNK_FILE_TEXT
                      ":190 Stream is not connected"},
        TOperationRow{"Seek", [](IWavDecoder& decoder) { decoder.Seek(0); },
                      "COperationNotSupportedException vorlund::CWavChunkDecoder::Seek " CHUNK_FILE_TEXT
                      ":161 Stream is not connected"},
        TOperationRow{"Tell", [](IWavDecoder& decoder) { decoder.Tell(); },
                      "COperationNotSupportedException vorlund::CWavChunkDecoder::Tell " CHUNK_FILE_TEXT
                      ":178 Stream is not connected"},
        TOperationRow{"Eof", [](IWavDecoder& decoder) { EXPECT_TRUE(decoder.Eof()); }, "nothing"},
        TOperationRow{
            "ReadNoSample", [](IWavDecoder& decoder) { decoder.Read(static_cast<IMediaSample*>(nullptr)); },
            "CNullPtrException vorlund::CWavChunkDecoder::Read " CHUNK_FILE_TEXT ":225 sample is NULL"},
        TOperationRow{"ReadNull", [](IWavDecoder& decoder) { decoder.Read(static_cast<void*>(nullptr), 1); },
                      "CNullPtrException vorlund::CWavChunkDecoder::Read " CHUNK_FILE_TEXT
                      ":207 buffer is NULL"},
        TOperationRow{"Read", [](IWavDecoder& decoder) { decoder.Read(buffer, 0); },
                      "CIOException vorlund::CWavChunkDecoder::Read " CHUNK_FILE_TEXT
                      ":209 Stream is not connected"},
        TOperationRow{"SupportsMediaSamples",
                      [](IWavDecoder& decoder) { EXPECT_FALSE(decoder.SupportsMediaSamples(1)); }, "nothing"},
        TOperationRow{"Skip", [](IWavDecoder& decoder) { decoder.Skip(1); },
                      "CIOException vorlund::CWavChunkDecoder::Skip " CHUNK_FILE_TEXT
                      ":232 Stream is not connected"},
        TOperationRow{"Connect", [](IWavDecoder& decoder) { decoder.Connect(nullptr); },
                      "CDataFormatException vorlund::CWavDecoder::Connect " FILE_TEXT
                      ":129 Cannot find fmt chunk"},
        TOperationRow{"Disconnect", [](IWavDecoder& decoder) { decoder.Disconnect(); }, "nothing"},
        TOperationRow{"GetInputStream",
                      [](IWavDecoder& decoder) { EXPECT_EQ(decoder.GetInputStream(), nullptr); }, "nothing"}),
    [](const auto& row) { return row.param.name; });

TEST_F(WavDecoder, ReadSampleIsRefusedByTheChunkDecoder) {
    const auto sample = CreateAs<IMediaSample>(classid::CMediaSample);
    EXPECT_EQ(Outcome([&] { decoder_->Read(sample.Get()); }),
              "CInvalidParameterException vorlund::CWavChunkDecoder::Read " CHUNK_FILE_TEXT
              ":226 Media samples are not supported");
}

TEST_F(WavDecoder, NeedsNoChunkDecoderForItsFormatAndItsEnd) {
    const auto first = CreateAs<IObject>(classid::CObject);
    decoder_->GetFormat();
    decoder_.Reset();
    EXPECT_EQ(CreateAs<IObject>(classid::CObject)->GetObjectNumber(), first->GetObjectNumber() + 1);
}

/// A chunk decoder that notes its calls and answers with numbers that no other has.
class CFakeChunkDecoder : public CInputFilterImpl<IWavChunkDecoder> {
public:
    static constexpr CId ClassId = classid::CWavChunkDecoder;

    static inline TCallLog calls;
    /// Called by `Disconnect`.
    static inline std::function<void()> onDisconnect;

    void Close() override { Note("Close"); }
    std::uint32_t GetCapabilities() override {
        Note("GetCapabilities");
        return 77;
    }
    std::int64_t GetLength() override {
        Note("GetLength");
        return -78;
    }
    void Flush() override { Note("Flush"); }
    void Seek(std::int64_t position) override { Note("Seek", position); }
    std::int64_t Tell() override {
        Note("Tell");
        return -79;
    }
    bool Eof() override {
        Note("Eof");
        return false;
    }
    void Read(IMediaSample* sample) override { Note("ReadSample", reinterpret_cast<std::intptr_t>(sample)); }
    std::uint64_t Read(void* target, std::uint64_t size) override {
        Note("Read", static_cast<std::int64_t>(size));
        EXPECT_EQ(target, buffer);
        return 0xFFFFFFFFFFFFFFF0;
    }
    bool SupportsMediaSamples(std::uint32_t argument) override {
        Note("SupportsMediaSamples", argument);
        return true;
    }
    void Skip(std::uint64_t count) override { Note("Skip", static_cast<std::int64_t>(count)); }
    void Disconnect() override {
        Note("Disconnect");
        if (onDisconnect) onDisconnect();
        CInputFilterImpl::Disconnect();
    }
    IInputStream* GetInputStream() override {
        Note("GetInputStream");
        return CInputFilterImpl::GetInputStream();
    }
    IObjectList* EnumerateChunks() override { return nullptr; }
    std::uint64_t GetChunkSize() override { return 0; }
    std::int64_t GetChunkOffset() override { return 0; }
    void SelectChunk(const wchar* id) override { Note("Select " + Narrow(id)); }

private:
    static void Note(const std::string& call) { calls.push_back(call); }
    static void Note(const std::string& call, std::int64_t argument) {
        Note(call + ' ' + std::to_string(argument));
    }
};

/// Replaces the class of the chunk decoder.
void ReplaceChunkDecoder(TObjectFactory factory) {
    const TClassInfo wav = *v.GetClassStore().GetClassInfo(classid::CWavDecoder);
    const TClassInfo object = *v.GetClassStore().GetClassInfo(classid::CObject);
    v.GetClassStore().Clear();
    v.GetClassStore().RegisterClassVrl(wav);
    v.GetClassStore().RegisterClassVrl(object);
    if (factory)
        v.GetClassStore().RegisterClassVrl({classid::CWavChunkDecoder, VRL_L("test::CFake"), factory});
}

class WavDecoderOverFake : public WavDecoder {
protected:
    WavDecoderOverFake() {
        ReplaceChunkDecoder(&NewObject<CFakeChunkDecoder>);
        CFakeChunkDecoder::calls.clear();
        CFakeChunkDecoder::onDisconnect = {};
    }
    TCallLog TakeCalls() { return std::exchange(CFakeChunkDecoder::calls, {}); }
};

TEST_F(WavDecoderOverFake, ForwardsEveryCallUnchanged) {
    decoder_->Close();
    EXPECT_EQ(decoder_->GetCapabilities(), 77u);
    EXPECT_EQ(decoder_->GetLength(), -78);
    decoder_->Flush();
    decoder_->Seek(-5);
    EXPECT_EQ(decoder_->Tell(), -79);
    EXPECT_FALSE(decoder_->Eof());
    decoder_->Read(static_cast<IMediaSample*>(nullptr));
    EXPECT_EQ(decoder_->Read(buffer, 0x123456789A), 0xFFFFFFFFFFFFFFF0);
    EXPECT_TRUE(decoder_->SupportsMediaSamples(9));
    decoder_->Skip(0x123456789A);
    decoder_->Disconnect();
    EXPECT_EQ(decoder_->GetInputStream(), nullptr);
    EXPECT_EQ(TakeCalls(), (TCallLog{"Close", "GetCapabilities", "GetLength", "Flush", "Seek -5", "Tell",
                                     "Eof", "ReadSample 0", "Read 78187493530", "SupportsMediaSamples 9",
                                     "Skip 78187493530", "Disconnect", "GetInputStream"}));
    EXPECT_EQ(FormatText(*decoder_), kDefaultFormat);
    EXPECT_EQ(TakeCalls(), TCallLog{});
}

TEST_F(WavDecoderOverFake, DisconnectsItAtTheEnd) {
    decoder_->Eof();
    TakeCalls();
    decoder_.Reset();
    EXPECT_EQ(TakeCalls(), TCallLog{"Disconnect"});
}

TEST_F(WavDecoderOverFake, PassesOnWhatItsEndRaises) {
    decoder_->Eof();
    CFakeChunkDecoder::onDisconnect = &RaiseFromStream<CInvalidStateException>;
    EXPECT_EQ(Outcome([&] { decoder_.Reset(); }),
              "CInvalidStateException test::CRecordingStream tests/filters/RecordingStream:7 on request");
}

TEST_F(WavDecoderOverFake, KeepsTheFirstOfTwoFailuresAtItsEnd) {
    decoder_->Eof();
    TakeCalls();
    CFakeChunkDecoder::onDisconnect = &RaiseFromStream<CInvalidStateException>;
    CTestListener listener([](IObject*) { RaiseFromStream<CTimeoutException>(); });
    decoder_->AddListener(&listener);
    EXPECT_EQ(Outcome([&] { decoder_.Reset(); }),
              "CTimeoutException test::CRecordingStream tests/filters/RecordingStream:7 on request");
    EXPECT_EQ(TakeCalls(), TCallLog{"Disconnect"});
}

struct TFactoryRow {
    const char* name;
    TObjectFactory factory;
    const char* outcome;
};
class WavDecoderFactory : public WavDecoder, public testing::WithParamInterface<TFactoryRow> {};

TEST_P(WavDecoderFactory, FailuresAreReported) {
    ReplaceChunkDecoder(GetParam().factory);
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(Outcome([&] { decoder_->Eof(); }), GetParam().outcome);
        EXPECT_EQ(ConnectOutcome({}), GetParam().outcome);
    }
    EXPECT_EQ(FormatText(*decoder_), kDefaultFormat);
    decoder_.Reset();
}

INSTANTIATE_TEST_SUITE_P(
    Rows, WavDecoderFactory,
    testing::Values(TFactoryRow{"ClassIsMissing", nullptr,
                                "CClassNotFoundException vorlund::CClassStore::CreateObject "
                                "src/vorlund/api/ClassStore:68 Cannot find class"},
                    TFactoryRow{"FactoryYieldsNothing", []() -> IObject* { return nullptr; },
                                "CBugException vorlund::CWavDecoder::CreateChunks " FILE_TEXT
                                ":61 Cannot create chunk decoder"},
                    TFactoryRow{"ClassHasNoSuchInterface",
                                [] { return CreateAs<IObject>(classid::CObject).Detach(); },
                                "CBugException vorlund::CWavDecoder::CreateChunks " FILE_TEXT
                                ":61 Cannot create chunk decoder"},
                    TFactoryRow{"FactoryRaises",
                                []() -> IObject* {
                                    RaiseFromStream<CFailedException>();
                                    return nullptr;
                                },
                                "CFailedException test::CRecordingStream tests/filters/RecordingStream:7 on "
                                "request"}),
    [](const auto& row) { return row.param.name; });

// Connect.

struct TFileRow {
    const char* name;
    TBytes bytes;
    /// Method, line and reason; null when the file is accepted.
    const char* failure;
    /// The format afterwards.
    const char* format;
    TBytes data = {};
};
class WavDecoderFile : public WavDecoder, public testing::WithParamInterface<TFileRow> {};

TEST_P(WavDecoderFile, IsDecodedOrRefused) {
    const std::string outcome = ConnectOutcome(GetParam().bytes);
    const bool isAccepted = !GetParam().failure;
    EXPECT_EQ(outcome, isAccepted ? "nothing" : std::string("CDataFormatException ") + GetParam().failure);
    EXPECT_EQ(FormatText(*decoder_), GetParam().format);
    EXPECT_EQ(PcmFormat(*decoder_).id, TDataFormat_AudioPcm::FormatId);
    EXPECT_EQ(PcmFormat(*decoder_).size, 32u);
    EXPECT_EQ(IsConnected(), isAccepted);
    EXPECT_EQ(stream_->GetReferences(), isAccepted ? 2 : 1);
    if (isAccepted) {
        EXPECT_EQ(decoder_->Tell(), 0);
        EXPECT_EQ(ReadAll(), GetParam().data);
        EXPECT_EQ(ReadAll(), TBytes{});
    }
}

#define CONNECT "vorlund::CWavDecoder::Connect " FILE_TEXT
#define CHUNK_CONNECT "vorlund::CWavChunkDecoder::Connect " CHUNK_FILE_TEXT
constexpr const char* kNoFmt = CONNECT ":129 Cannot find fmt chunk";
constexpr const char* kShortFmt = CONNECT ":134 Invalid fmt chunk size";
constexpr const char* kTag = CONNECT ":138 Unsupported wave format";
constexpr const char* kBits = CONNECT ":142 Usupported bits per sample";
constexpr const char* kNoData = CONNECT ":151 Cannot find data chunk ";
constexpr const char* kHeader = CHUNK_CONNECT ":256 Invalid header";

TBytes WavOf(const TWavFormat& format, std::size_t formatSize = 16) {
    return CWavBuilder().Format(format, formatSize).Chunk("data", Ramp(8, 50)).Build();
}
TFileRow Accepted(const char* name, TBytes bytes, const char* format, TBytes data = Ramp(8, 50)) {
    return {name, std::move(bytes), nullptr, format, std::move(data)};
}
TFileRow Refused(const char* name, TBytes bytes, const char* failure, const char* format = kDefaultFormat) {
    return {name, std::move(bytes), failure, format};
}
TBytes CutTo(TBytes bytes, std::size_t size) {
    bytes.resize(size);
    return bytes;
}

INSTANTIATE_TEST_SUITE_P(
    Accepted, WavDecoderFile,
    testing::Values(
        Accepted("EightBitMono", WavOf({.channels = 1, .samplesPerSec = 8000, .bits = 8}),
                 "code 0, channels 1, rate 8000"),
        Accepted("SixteenBitStereo", WavOf({.channels = 2, .samplesPerSec = 48000}),
                 "code 1, channels 2, rate 48000"),
        Accepted("Long24ByteFormat", WavOf({.channels = 2, .samplesPerSec = 22050}, 24),
                 "code 1, channels 2, rate 22050"),
        Accepted("Long18ByteFormat", WavOf({.channels = 6, .samplesPerSec = 96000}, 18),
                 "code 1, channels 6, rate 96000"),
        Accepted("Long40ByteFormat", WavOf({.samplesPerSec = 1}, 40), "code 1, channels 1, rate 1"),
        Accepted("NoChannels", WavOf({.channels = 0}), "code 1, channels 0, rate 44100"),
        Accepted("AllChannels", WavOf({.channels = 0xFFFF}), "code 1, channels 65535, rate 44100"),
        Accepted("RateZero", WavOf({.samplesPerSec = 0}), "code 1, channels 1, rate 0"),
        Accepted("RateHuge", WavOf({.samplesPerSec = 0xFFFFFFFF}), "code 1, channels 1, rate 4294967295"),
        Accepted("WrongByteRateAndAlignment", WavOf({.bytesPerSec = 1, .blockAlign = 0xFFFF}),
                 kDefaultFormat),
        Accepted("FormatInCapitals",
                 CWavBuilder().Chunk("FMT ", TWavFormat{}.Record()).Chunk("DATA", Ramp(8, 50)).Build(),
                 kDefaultFormat),
        Accepted("DataBeforeFormat", CWavBuilder().Chunk("data", Ramp(8, 50)).Format({.channels = 2}).Build(),
                 "code 1, channels 2, rate 44100"),
        Accepted("ChunksAround",
                 CWavBuilder()
                     .Chunk("LIST", Ramp(6))
                     .Format({})
                     .Chunk("fact", Ramp(4))
                     .Chunk("data", Ramp(8, 50))
                     .Chunk("cue ", Ramp(4))
                     .Build(),
                 kDefaultFormat),
        Accepted("FirstOfTwoFormatsAndData",
                 CWavBuilder()
                     .Format({.channels = 2})
                     .Format({.tag = 3})
                     .Chunk("data", Ramp(8, 50))
                     .Chunk("data", Ramp(4))
                     .Build(),
                 "code 1, channels 2, rate 44100"),
        Accepted("EmptyData", CWavBuilder().Format({}).Chunk("data", {}).Build(), kDefaultFormat, {}),
        Accepted("DataDeclaresMore",
                 CWavBuilder().Format({}).Declare("data", 0xFFFFFFFF, Ramp(8, 50)).Build(), kDefaultFormat),
        Accepted("DataHeadIsTheEnd", CWavBuilder().Format({}).Declare("data", 100).Build(), kDefaultFormat,
                 {}),
        Accepted("HalfAFrame", CWavBuilder().Format({.channels = 2}).Chunk("data", Ramp(7, 50)).Build(),
                 "code 1, channels 2, rate 44100", Ramp(7, 50)),
        Accepted("RiffSizeZero", CWavBuilder().RiffSize(0).Format({}).Chunk("data", Ramp(8, 50)).Build(),
                 kDefaultFormat),
        Accepted("RiffSizeHuge",
                 CWavBuilder().RiffSize(0xFFFFFFFF).Format({}).Chunk("data", Ramp(8, 50)).Build(),
                 kDefaultFormat),
        Accepted("OddChunkWithoutPadByte",
                 CWavBuilder().Format({}).Chunk("note", Ramp(3)).Chunk("data", Ramp(8, 50)).Build(),
                 kDefaultFormat)),
    [](const auto& row) { return row.param.name; });

INSTANTIATE_TEST_SUITE_P(
    Refused, WavDecoderFile,
    testing::Values(
        Refused("Empty", {}, kHeader), Refused("NotRiff", Ramp(100), kHeader),
        Refused("OnlyTheHeader", CWavBuilder().Build(), kNoFmt),
        Refused("NoFormat", CWavBuilder().Chunk("data", Ramp(8)).Build(), kNoFmt),
        Refused("FormatWithoutBlank", CWavBuilder().Chunk(std::string("fmt\0", 4), Ramp(16)).Build(), kNoFmt),
        Refused("FormatOf15Bytes", CWavBuilder().Format({}, 15).Chunk("data", Ramp(8)).Build(), kShortFmt),
        Refused("FormatOf0Bytes", CWavBuilder().Format({}, 0).Chunk("data", Ramp(8)).Build(), kShortFmt),
        Refused("FormatCutShort", CutTo(WavOf({}), 12 + 8 + 15), kShortFmt),
        Refused("FloatingPoint", WavOf({.tag = 3, .bits = 32}), kTag),
        Refused("Extensible", WavOf({.tag = 0xFFFE}, 40), kTag),
        Refused("MuLaw", WavOf({.tag = 7, .bits = 8}), kTag), Refused("TagZero", WavOf({.tag = 0}), kTag),
        Refused("TagHighByte", WavOf({.tag = 0x0101}), kTag),
        Refused("TagBeforeBits", WavOf({.tag = 2, .bits = 4}), kTag),
        Refused("Bits24", WavOf({.channels = 2, .bits = 24}), kBits),
        Refused("Bits32", WavOf({.bits = 32}), kBits), Refused("Bits0", WavOf({.bits = 0}), kBits),
        Refused("Bits12", WavOf({.bits = 12}), kBits), Refused("Bits0x0810", WavOf({.bits = 0x0810}), kBits),
        Refused("BitsBeforeData", CWavBuilder().Format({.bits = 24}).Build(), kBits),
        Refused("NoData", CWavBuilder().Format({.channels = 2, .samplesPerSec = 22050, .bits = 8}).Build(),
                kNoData, "code 0, channels 2, rate 22050"),
        Refused("DataHeadCut",
                CutTo(CWavBuilder().Format({.channels = 3}).Declare("data", 8).Build(), 12 + 24 + 7), kNoData,
                "code 1, channels 3, rate 44100"),
        Refused("OddChunkWithPadByte",
                CWavBuilder().Format({}).Chunk("note", Ramp(3)).Raw({0}).Chunk("data", Ramp(8)).Build(),
                kNoData)),
    [](const auto& row) { return row.param.name; });

TEST_F(WavDecoder, NeedsAStreamThatSeeksAndTells) {
    stream_->capabilities = STREAM_CAPABILITY_TELL;
    EXPECT_EQ(ConnectOutcome(WavOf({})), "CDataFormatException " CHUNK_CONNECT ":244 Seek unsupported");
    stream_->capabilities = STREAM_CAPABILITY_SEEK;
    EXPECT_EQ(ConnectOutcome(WavOf({})), "CDataFormatException " CHUNK_CONNECT ":247 Tell unsupported");
    EXPECT_EQ(stream_->GetReferences(), 1);
    EXPECT_FALSE(IsConnected());
}

TEST_F(WavDecoder, ReadsInWhateverPiecesTheStreamDelivers) {
    stream_->mostPerRead = 1;
    EXPECT_EQ(ConnectOutcome(WavOf({.channels = 2, .samplesPerSec = 22050})), "nothing");
    EXPECT_EQ(FormatText(*decoder_), "code 1, channels 2, rate 22050");
}

TEST_F(WavDecoder, BeginsWithTheDataWhereverTheStreamStood) {
    stream_->position = 31;
    EXPECT_EQ(ConnectOutcome(WavOf({})), "nothing");
    EXPECT_EQ(ReadAll(), Ramp(8, 50));
}

TEST_F(WavDecoder, ReadsNothingBehindTheData) {
    ConnectOutcome(CWavBuilder().Format({}).Chunk("data", Ramp(6)).Chunk("cue ", Ramp(40)).Build());
    EXPECT_EQ(decoder_->GetLength(), 6);
    EXPECT_EQ(ReadAll(4), Ramp(4));
    EXPECT_EQ(ReadAll(4), Ramp(2, 4));
    EXPECT_EQ(ReadAll(4), TBytes{});
    EXPECT_TRUE(decoder_->Eof());
    decoder_->Seek(1000);
    EXPECT_EQ(decoder_->Tell(), 6);
    EXPECT_EQ(ReadAll(4), TBytes{});
    decoder_->Seek(3);
    EXPECT_EQ(ReadAll(), Ramp(3, 3));
}

TEST_F(WavDecoder, KeepsTheFormatOfTheLastFile) {
    EXPECT_EQ(ConnectOutcome(WavOf({.channels = 2, .samplesPerSec = 22050, .bits = 8})), "nothing");
    decoder_->Disconnect();
    EXPECT_EQ(FormatText(*decoder_), "code 0, channels 2, rate 22050");
    EXPECT_EQ(ConnectOutcome(WavOf({.tag = 3})), std::string("CDataFormatException ") + kTag);
    EXPECT_EQ(FormatText(*decoder_), "code 0, channels 2, rate 22050");
    EXPECT_EQ(ConnectOutcome(WavOf({.channels = 5})), "nothing");
    EXPECT_EQ(FormatText(*decoder_), "code 1, channels 5, rate 44100");
}

TEST_F(WavDecoder, ConnectReplacesTheConnection) {
    ConnectOutcome(WavOf({}));
    const auto other = CRecordingStream::Create(WavOf({.bits = 8}));
    decoder_->Connect(other.Get());
    EXPECT_EQ(stream_->GetReferences(), 1);
    EXPECT_EQ(other->GetReferences(), 2);
    EXPECT_EQ(FormatText(*decoder_), "code 0, channels 1, rate 44100");
    decoder_->Disconnect();
    EXPECT_EQ(other->GetReferences(), 1);
}

// Faults from below.

// The calls of a file with two chunks: 0 capabilities, 1 seek, 2 read, 3 seek, 4 to 11 the chunks, 12 read at
// the end, 13 seek, 14 seek to "fmt ", 15 read, 16 seek to "data".
constexpr int kCalls = 17;

/// Makes call `call` fail and expects what the decoder raises then.
struct TFaultRow {
    const char* name;
    void (*fault)();
    const char* outcome;
};
class WavDecoderFault : public WavDecoder, public testing::WithParamInterface<TFaultRow> {};

TEST_P(WavDecoderFault, LeavesNothingConnected) {
    stream_->bytes = CWavBuilder().Format({.channels = 2}).Chunk("data", Ramp(8)).Build();
    stream_->fault = GetParam().fault;
    for (int call = 0; call < kCalls; ++call) {
        const auto candidate = CreateAs<IWavDecoder>(classid::CWavDecoder);
        stream_->callCount = 0;
        stream_->faultyCall = call;
        std::string expected = GetParam().outcome;
        const bool isIo = expected.starts_with("CIOException");
        const bool isNotFound = expected.starts_with("CObjectNotFoundException");
        if (call == 2 && isIo) expected = std::string("CDataFormatException ") + kHeader;
        if (call == 14 && isNotFound) expected = std::string("CDataFormatException ") + kNoFmt;
        if (call == 16 && isNotFound) expected = std::string("CDataFormatException ") + kNoData;
        EXPECT_EQ(Outcome([&] { candidate->Connect(stream_.Get()); }), expected) << "call " << call;
        EXPECT_EQ(candidate->GetInputStream(), nullptr) << "call " << call;
        EXPECT_EQ(stream_->GetReferences(), 1) << "call " << call;
        EXPECT_EQ(FormatText(*candidate), call < 16 ? kDefaultFormat : "code 1, channels 2, rate 44100");
        // The same decoder can be used again.
        stream_->faultyCall = -1;
        EXPECT_EQ(Outcome([&] { candidate->Connect(stream_.Get()); }), "nothing");
    }
    stream_->callCount = 0;
    decoder_->Connect(stream_.Get());
    EXPECT_EQ(stream_->callCount, kCalls) << "every call was made to fail";
}

#define STREAM_TEXT " test::CRecordingStream tests/filters/RecordingStream:7 on request"
INSTANTIATE_TEST_SUITE_P(
    Rows, WavDecoderFault,
    testing::Values(
        TFaultRow{"Io", &RaiseFromStream<CIOException>, "CIOException" STREAM_TEXT},
        TFaultRow{"DataFormat", &RaiseFromStream<CDataFormatException>, "CDataFormatException" STREAM_TEXT},
        TFaultRow{"ObjectNotFound", &RaiseFromStream<CObjectNotFoundException>,
                  "CObjectNotFoundException" STREAM_TEXT},
        TFaultRow{"NotSupported", &RaiseFromStream<COperationNotSupportedException>,
                  "COperationNotSupportedException" STREAM_TEXT},
        TFaultRow{"Foreign", [] { throw std::runtime_error("on request"); }, "a foreign exception"}),
    [](const auto& row) { return row.param.name; });

TEST_F(WavDecoder, AFailureWhileReadingLeavesItConnected) {
    ConnectOutcome(WavOf({}));
    stream_->faultyCall = stream_->callCount;
    EXPECT_EQ(Outcome([&] { ReadAll(); }), "CIOException" STREAM_TEXT);
    EXPECT_TRUE(IsConnected());
    EXPECT_EQ(ReadAll(), Ramp(8, 50));
}

// End of life.

TEST_F(WavDecoder, TellsItsListenersWhileItIsWhole) {
    ConnectOutcome(WavOf({.channels = 2}));
    CTestListener listener([&](IObject* object) {
        const auto dying = CRefPtr<IWavDecoder>::Adopt(
            static_cast<IWavDecoder*>(object->QueryInterface(IWavDecoder::InterfaceId)));
        EXPECT_EQ(FormatText(*dying), "code 1, channels 2, rate 44100");
        EXPECT_EQ(dying->GetLength(), 8);
        EXPECT_EQ(CRefPtr<IInputStream>::Adopt(dying->GetInputStream()).Get(), stream_.Get());
    });
    decoder_->AddListener(&listener);
    decoder_.Reset();
    EXPECT_EQ(listener.GetCalls(), 1);
    EXPECT_EQ(stream_->GetReferences(), 1);
}

TEST_F(WavDecoder, LetsGoOfTheStreamEvenAfterTheLibraryWasClosed) {
    ConnectOutcome(WavOf({}));
    v.Close();
    EXPECT_EQ(Outcome([&] { decoder_.Reset(); }),
              "CBugException vorlund::CObjectCounter::OnDestroyObject src/vorlund/api/ObjectCounter:117 Not "
              "initialized");
    EXPECT_EQ(stream_->GetReferences(), 1);
    v.Init();
}

} // namespace
} // namespace vorlund::test
