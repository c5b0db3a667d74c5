// What a search for decoders reports, and what it can be told.
#include <vorlund/ClassIds.h>
#include <vorlund/DataFormat.h>
#include <vorlund/DecodeNotes.h>
#include <vorlund/DecodeReport.h>
#include <vorlund/Exception.h>
#include <vorlund/RefPtr.h>
#include <vorlund/Resource.h>
#include <vorlund/StreamSelector.h>
#include <vorlund/Vorlund.h>

#include "support/Failures.h"
#include "support/KnownFailures.h"
#include "support/LibraryScope.h"
#include "support/TestDecoders.h"
#include "support/Text.h"
#include "support/WavBuilder.h"

#include <gtest/gtest.h>

#include <regex>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace vorlund::test {
namespace {

std::string Text(const CString& text) {
    return Narrow(text.GetBuffer());
}

const char* OutcomeName(TDecodeOutcome outcome) {
    switch (outcome) {
    case DECODE_CONNECTED:
        return "connected";
    case DECODE_REFUSED:
        return "refused";
    case DECODE_UNREADABLE:
        return "unreadable";
    case DECODE_RAISED:
        return "raised";
    case DECODE_NOT_CREATED:
        return "not created";
    case DECODE_FORBIDDEN:
        return "forbidden";
    case DECODE_DIED:
        return "died";
    }
    return "?";
}

class DecodeReport : public testing::Test {
protected:
    DecodeReport() {
        store_.Init();
        source_->format = HeadOnly(TestFormat(1));
    }
    ~DecodeReport() noexcept override { store_.Close(); }

    void Register(std::size_t index, TDecoderPlan plan) {
        decoders_.Register(store_, index, std::move(plan));
    }
    CRefPtr<IInputStream> Decode(const CId& wanted, TDecoderChoice choice = {}) {
        choice.report = &report_;
        return CRefPtr<IInputStream>::Adopt(store_.DecodeStream(source_.Get(), wanted, choice));
    }
    void ExpectNoChain(const CId& wanted, const TDecoderChoice& choice = {}) {
        ExpectRaises<CDataFormatException>(codecstorefailures::kCannotDecodeStream,
                                           [&] { Decode(wanted, choice); });
    }
    /// "number of the decoder, depth, outcome" of each entry.
    std::vector<std::string> Steps() const {
        std::vector<std::string> steps;
        for (const TDecodeEntry& entry : report_.GetEntries())
            steps.push_back(std::to_string(entry.classId.GetWord(3)) + " at " + std::to_string(entry.depth) +
                            " " + OutcomeName(entry.outcome));
        return steps;
    }

    using TSteps = std::vector<std::string>;

    CLibraryScope library_;
    CTestDecoders decoders_;
    CCodecClassStore store_;
    CRefPtr<CMemoryInputStream> source_ = Make<CMemoryInputStream>();
    CDecodeReport report_;
};

// The steps.

TEST_F(DecodeReport, ChainStepByStep) {
    Register(0, {.accepts = TestFormat(2), .produces = TestFormat(3)});
    Register(1, {.accepts = TestFormat(1), .produces = TestFormat(2)});
    const auto end = Decode(TestFormat(3));
    EXPECT_EQ(Steps(), (TSteps{"0 at 0 refused", "1 at 0 connected", "0 at 1 connected"}));
    EXPECT_EQ(Text(report_.Explain()), "");
    const TDecodeEntry& refusal = report_.GetEntries()[0];
    EXPECT_EQ(Text(refusal.className), "test::CTestDecoder");
    EXPECT_EQ(refusal.exceptionType, EXCEPTION_TYPE_DATA_FORMAT);
    EXPECT_EQ(Text(refusal.method), "test::CTestDecoder::Connect");
    EXPECT_EQ(Text(refusal.reason), "Not my format");
    EXPECT_GE(refusal.seconds, 0);
    EXPECT_EQ(Text(report_.GetEntries()[1].reason), "");
}

TEST_F(DecodeReport, LongestChainStepByStep) {
    Register(0, {.accepts = TestFormat(2), .produces = TestFormat(3)});
    Register(1, {.accepts = TestFormat(1), .produces = TestFormat(2)});
    const auto end = Decode(CId::Null());
    EXPECT_EQ(Steps(), (TSteps{"0 at 0 refused", "1 at 0 connected", "0 at 1 connected"}));
}

TEST_F(DecodeReport, EachSearchBeginsAnew) {
    Register(0, {.accepts = TestFormat(1), .produces = TestFormat(2)});
    ExpectNoChain(TestFormat(9));
    Decode(TestFormat(2));
    EXPECT_EQ(Steps(), TSteps{"0 at 0 connected"});
    // No search.
    Decode(TestFormat(1));
    EXPECT_EQ(Steps(), TSteps{"0 at 0 connected"});
    report_.Clear();
    EXPECT_EQ(Steps(), TSteps{});
}

TEST_F(DecodeReport, UnreadableInput) {
    constexpr TFailure kUnreadable{VRL_L("test::Read"), VRL_L("tests"), 1, VRL_L("Not readable")};
    Register(0, {.accepts = TestFormat(1), .produces = TestFormat(2), .onConnect = [&](IInputStream*) {
                     Raise<CIOException>(kUnreadable);
                 }});
    ExpectNoChain(TestFormat(2));
    EXPECT_EQ(Steps(), TSteps{"0 at 0 unreadable"});
    EXPECT_EQ(report_.GetEntries()[0].exceptionType, EXCEPTION_TYPE_IO);
}

TEST_F(DecodeReport, OtherExceptionsEndTheSearchAndAreReported) {
    constexpr TFailure kBug{VRL_L("test::Connect"), VRL_L("tests"), 1, VRL_L("A bug")};
    Register(0, {.accepts = TestFormat(1), .produces = TestFormat(2), .onConnect = [&](IInputStream*) {
                     Raise<CBugException>(kBug);
                 }});
    ExpectRaises<CBugException>(kBug, [&] { Decode(TestFormat(2)); });
    EXPECT_EQ(Steps(), TSteps{"0 at 0 raised"});
    EXPECT_EQ(Text(report_.GetEntries()[0].reason), "A bug");
    EXPECT_EQ(report_.GetEntries()[0].exceptionType, EXCEPTION_TYPE_BUG);

    CTestDecoders::plans[0].onConnect = [](IInputStream*) { throw std::runtime_error("a standard one"); };
    EXPECT_THROW(Decode(TestFormat(2)), std::runtime_error);
    EXPECT_EQ(Text(report_.GetEntries()[0].reason), "a standard one");
    CTestDecoders::plans[0].onConnect = [](IInputStream*) { throw 5; };
    EXPECT_THROW(Decode(TestFormat(2)), int);
    EXPECT_EQ(Steps(), TSteps{"0 at 0 raised"});
}

TEST_F(DecodeReport, ClassWithoutObjects) {
    v.GetClassStore().RegisterClassVrl({TestDecoderId(7), VRL_L("test::CNothing"), nullptr});
    store_.RegisterDecoder({TestDecoderId(7), TestFormat(1), TestFormat(2)});
    ExpectNoChain(TestFormat(2));
    EXPECT_EQ(Steps(), TSteps{"7 at 0 not created"});
    EXPECT_EQ(Text(report_.GetEntries()[0].className), "test::CNothing");
}

TEST_F(DecodeReport, AReasonOfBlanksIsNone) {
    constexpr TFailure kBlank{VRL_L("test::Connect"), VRL_L("tests"), 1, VRL_L("  ")};
    Register(0, {.accepts = TestFormat(1), .produces = TestFormat(2), .onConnect = [&](IInputStream*) {
                     NoteContainer(VRL_L("Box"));
                     Raise<CDataFormatException>(kBlank);
                 }});
    ExpectNoChain(TestFormat(2));
    EXPECT_EQ(Text(report_.Explain()), "Box: ");
}

TEST_F(DecodeReport, AsTextForPeople) {
    constexpr TFailure kUnreadable{VRL_L("test::Read"), VRL_L("tests"), 1, VRL_L("Not readable  ")};
    constexpr TFailure kSilent{VRL_L("test::Connect"), VRL_L("tests"), 1, VRL_L("")};
    // The figures differ from run to run.
    const auto toString = [](const CDecodeReport& report) {
        return std::regex_replace(Text(report.ToString()), std::regex("[0-9.]+ ms"), "... ms");
    };
    EXPECT_EQ(toString(report_), "");
    Register(0, {.accepts = TestFormat(1), .produces = TestFormat(2)});
    Register(1, {.accepts = TestFormat(1), .produces = TestFormat(2), .onConnect = [&](IInputStream*) {
                     Raise<CIOException>(kUnreadable);
                 }});
    Register(2, {.accepts = TestFormat(1), .produces = TestFormat(2), .onConnect = [&](IInputStream*) {
                     NoteContainer(VRL_L("Box"));
                     NoteValue(VRL_L("version"), 7);
                     NoteRemark(VRL_L("repaired"));
                     Raise<CDataFormatException>(kSilent);
                 }});
    v.GetClassStore().RegisterClassVrl({TestDecoderId(7), VRL_L("test::CNothing"), nullptr});
    store_.RegisterDecoder({TestDecoderId(7), TestFormat(1), TestFormat(2)});
    Register(3, {.accepts = TestFormat(1), .produces = TestFormat(2)});
    const CId forbidden[] = {TestDecoderId(0)};
    const auto end = Decode(TestFormat(2), {.forbidden = forbidden});
    const std::string text = toString(report_);
    EXPECT_EQ(text,
              "test::CTestDecoder: forbidden\n"
              "test::CNothing: cannot be created\n"
              "test::CTestDecoder: unreadable, Not readable, CIOException of test::Read, 0 bytes, ... ms\n"
              "test::CTestDecoder: refused, Box, refused (version 7), CDataFormatException of "
              "test::Connect, repaired, 0 bytes, ... ms\n"
              "test::CTestDecoder: connected, 0 bytes, ... ms");
    CDecodeReport copy(report_);
    report_.Clear();
    EXPECT_EQ(toString(copy), text);
    CTestDecoders::plans[3].onConnect = [&](IInputStream*) { throw 5; };
    EXPECT_THROW(Decode(TestFormat(2), {.forbidden = forbidden}), int);
    EXPECT_TRUE(toString(report_).ends_with("\ntest::CTestDecoder: raised, 0 bytes, ... ms"))
        << toString(report_);
}

TEST_F(DecodeReport, SourceThatCannotBeReadInTheEnd) {
    const auto source = Make<CFaultyInputStream>();
    source->format = HeadOnly(TestFormat(1));
    source->failAt = 0;
    ExpectRaises<CDataFormatException>(codecstorefailures::kCannotDecodeStream, [&] {
        store_.DecodeStream(source.Get(), TestFormat(2), {.report = &report_});
    });
    EXPECT_EQ(Text(report_.Explain()), "no decoder is registered");
}

TEST_F(DecodeReport, APluginThatWasTriedIsNotRecommended) {
    const std::string png = "\x89PNG\r\n\x1A\n";
    source_->bytes.assign(png.begin(), png.end());
    ExpectNoChain(TestFormat(2));
    EXPECT_EQ(Text(report_.Explain()), "PNG: no loaded decoder reads it; try the plug-in 'image'");
    // The class store keeps pointers to the names.
    static const std::vector<TKnownContainer> containers = ListKnownContainers();
    for (const TKnownContainer& container : containers)
        if (Text(container.name) == "PNG")
            v.GetClassStore().RegisterClassVrl({TestDecoderId(7), container.decoder.GetBuffer(), nullptr});
    store_.RegisterDecoder({TestDecoderId(7), TestFormat(1), TestFormat(2)});
    ExpectNoChain(TestFormat(2));
    EXPECT_EQ(Text(report_.Explain()), "PNG: no loaded decoder reads it");
}

// What a decoder notes.

TEST_F(DecodeReport, NotesGoToTheCandidate) {
    Register(0, {.accepts = TestFormat(8), .produces = TestFormat(2), .onConnect = [](IInputStream*) {
                     NoteContainer(VRL_L("Box"));
                     NoteValue(VRL_L("version"), 7);
                     NoteValue(VRL_L("table"), VRL_L("abc"));
                     NoteRemark(VRL_L("repaired"));
                     NoteRemark(VRL_L("cut"));
                 }});
    Register(1, {.accepts = TestFormat(8), .produces = TestFormat(2)});
    ExpectNoChain(TestFormat(2));
    const TDecodeEntry& noted = report_.GetEntries()[0];
    EXPECT_EQ(Text(noted.container), "Box");
    EXPECT_EQ(Text(noted.values), "version 7, table \"abc\"");
    EXPECT_EQ(Text(noted.remarks), "repaired, cut");
    EXPECT_EQ(Text(report_.GetEntries()[1].container), "");
    EXPECT_EQ(Text(report_.Explain()), "Box: Not my format (version 7, table \"abc\")");
}

TEST_F(DecodeReport, NotesOfASearchInsideAreNotTheCandidates) {
    Register(1, {.accepts = TestFormat(8), .produces = TestFormat(9), .onConnect = [](IInputStream*) {
                     NoteValue(VRL_L("inner"), 1);
                 }});
    bool isInside = false;
    Register(0, {.accepts = TestFormat(8), .produces = TestFormat(2), .onConnect = [&](IInputStream* stream) {
                     if (std::exchange(isInside, true)) return;
                     NoteValue(VRL_L("outer"), 1);
                     try {
                         store_.DecodeStream(stream, TestFormat(9));
                     } catch (const CDataFormatException&) {
                         NoteValue(VRL_L("outer"), 2);
                     }
                 }});
    ExpectNoChain(TestFormat(2));
    // In the order of registration.
    ASSERT_EQ(report_.GetEntries().size(), 2u);
    EXPECT_EQ(Text(report_.GetEntries()[0].values), "inner 1");
    EXPECT_EQ(Text(report_.GetEntries()[1].values), "outer 1, outer 2");
}

TEST_F(DecodeReport, WithoutAReportNotesGoNowhere) {
    NoteContainer(VRL_L("Box"));
    NoteValue(VRL_L("version"), 7);
    NoteRemark(nullptr);
    EXPECT_EQ(Steps(), TSteps{});
}

// Which entry tells best.

TEST_F(DecodeReport, WhoRecognisesNothingReplacesNobody) {
    Register(0, {.accepts = TestFormat(8), .produces = TestFormat(2), .onConnect = [](IInputStream*) {
                     NoteContainer(VRL_L("Box"));
                 }});
    Register(1, {.accepts = TestFormat(8), .produces = TestFormat(2)});
    EXPECT_EQ(report_.GetFurthest(), nullptr);
    ExpectNoChain(TestFormat(2));
    EXPECT_EQ(report_.GetFurthest(), &report_.GetEntries()[0]);
}

TEST_F(DecodeReport, TheHighestInItsChainTellsBest) {
    Register(0, {.accepts = TestFormat(1), .produces = TestFormat(2)});
    Register(1, {.accepts = TestFormat(8), .produces = TestFormat(3), .onConnect = [](IInputStream*) {
                     NoteContainer(VRL_L("Inner"));
                 }});
    ExpectNoChain(TestFormat(3));
    EXPECT_EQ(Steps(), (TSteps{"0 at 0 connected", "1 at 1 refused", "1 at 0 refused"}));
    EXPECT_EQ(report_.GetFurthest(), &report_.GetEntries()[1]);
    EXPECT_EQ(Text(report_.Explain()), "Inner: Not my format");
}

TEST_F(DecodeReport, ChainThatGoesNowhere) {
    Register(0, {.accepts = TestFormat(1), .produces = TestFormat(2)});
    ExpectNoChain(TestFormat(3));
    EXPECT_EQ(Text(report_.Explain()), "test::CTestDecoder reads it, and nothing goes on from there");
}

// What a search can be told.

TEST_F(DecodeReport, ForbiddenClassesAreLeftOut) {
    Register(0, {.accepts = TestFormat(1), .produces = TestFormat(2)});
    Register(1, {.accepts = TestFormat(1), .produces = TestFormat(2)});
    const CId forbidden[] = {TestDecoderId(0)};
    const auto end = Decode(TestFormat(2), {.forbidden = forbidden});
    EXPECT_EQ(end->GetClassId(), TestDecoderId(1));
    EXPECT_EQ(Steps(), (TSteps{"0 at 0 forbidden", "1 at 0 connected"}));
    EXPECT_EQ(CTestDecoders::CountEvents("create 0"), 0u);
}

TEST_F(DecodeReport, PreferredClassesComeFirstInTheirOrder) {
    for (const std::size_t i : {0, 1, 2, 3})
        Register(i, {.accepts = TestFormat(8), .produces = TestFormat(2)});
    const CId preferred[] = {TestDecoderId(3), TestDecoderId(9), TestDecoderId(1)};
    ExpectNoChain(TestFormat(2), {.preferred = preferred});
    EXPECT_EQ(Steps(), (TSteps{"3 at 0 refused", "1 at 0 refused", "0 at 0 refused", "2 at 0 refused"}));
}

// The chain of a stream.

TEST_F(DecodeReport, ChainFromItsEnd) {
    Register(0, {.accepts = TestFormat(1), .produces = TestFormat(2)});
    const auto end = Decode(TestFormat(2));
    const std::vector<TChainLink> links = ListChain(*end);
    ASSERT_EQ(links.size(), 2u);
    EXPECT_EQ(links[0].classId, TestDecoderId(0));
    EXPECT_EQ(Text(links[0].className), "test::CTestDecoder");
    EXPECT_EQ(links[0].formatId, TestFormat(2));
    EXPECT_EQ(links[1].classId, CMemoryInputStream::ClassId);
    EXPECT_EQ(Text(links[1].className), Narrow(CMemoryInputStream::ClassId.ToString()));
    EXPECT_EQ(links[1].formatId, TestFormat(1));
}

// The library's own decoder, and what is told of files that it refuses.

struct TRefusedFile {
    const char* what;
    TBytes bytes;
    const char* explanation;
};

TBytes Bytes(std::string_view text) {
    return {text.begin(), text.end()};
}

/// "OggS", the rest of the page's head, and what the first packet begins with.
TBytes Ogg(std::string_view packet) {
    TBytes bytes = Bytes("OggS");
    bytes.resize(28);
    AppendText(bytes, packet);
    return bytes;
}

std::vector<TRefusedFile> RefusedFiles() {
    using namespace std::string_view_literals;
    return {
        {"float WAV", CWavBuilder().Format({.tag = 3, .bits = 32}).Chunk("data", TBytes(8)).Build(),
         "WAV: Unsupported wave format (format tag 3); try the plug-in 'sndfile'"},
        {"24 bits", CWavBuilder().Format({.bits = 24}).Chunk("data", TBytes(6)).Build(),
         "WAV: Usupported bits per sample (bits 24); try the plug-in 'sndfile'"},
        {"no fmt chunk", CWavBuilder().Chunk("data", TBytes(6)).Build(),
         "WAV: Cannot find fmt chunk (chunk \"fmt \"); try the plug-in 'sndfile'"},
        {"short fmt chunk", CWavBuilder().Format({}, 10).Chunk("data", TBytes(6)).Build(),
         "WAV: Invalid fmt chunk size (bytes 10); try the plug-in 'sndfile'"},
        {"no data chunk", CWavBuilder().Format({}).Build(),
         "WAV: Cannot find data chunk (chunk \"data\"); try the plug-in 'sndfile'"},
        {"nothing", {}, "it is empty"},
        {"words", Bytes("some words"), "no loaded decoder knows this kind of file"},
        {"RIFX", Bytes("RIFX\0\0\0\0WAVE"sv),
         "WAV (RIFX): no loaded decoder reads it; try the plug-in 'sndfile'"},
        {"RF64", Bytes("RF64\xFF\xFF\xFF\xFFWAVE"sv),
         "RF64: no loaded decoder reads it; try the plug-in 'sndfile'"},
        {"BW64", Bytes("BW64\xFF\xFF\xFF\xFFWAVE"sv),
         "BW64: no loaded decoder reads it; try the plug-in 'sndfile'"},
        {"W64", Bytes("riff\x2E\x91\xCF\x11\xA5\xD6"sv),
         "Wave64: no loaded decoder reads it; try the plug-in 'sndfile'"},
        {"AIFF", Bytes("FORM\0\0\0\0AIFFCOMM"sv),
         "AIFF: no loaded decoder reads it; try the plug-in 'sndfile'"},
        {"AIFC", Bytes("FORM\0\0\0\0AIFCCOMM"sv),
         "AIFF-C: no loaded decoder reads it; try the plug-in 'sndfile'"},
        {"AU", Bytes(".snd\0\0\0\x18"sv), "AU: no loaded decoder reads it; try the plug-in 'sndfile'"},
        {"CAF", Bytes("caff\0\1"sv), "CAF: no loaded decoder reads it; try the plug-in 'sndfile'"},
        {"FLAC", Bytes("fLaC\0\0\0\x22"sv), "FLAC: no loaded decoder reads it; try the plug-in 'sndfile'"},
        {"Vorbis", Ogg("\x01vorbis"), "Ogg Vorbis: no loaded decoder reads it; try the plug-in 'sndfile'"},
        {"Opus", Ogg("OpusHead"), "Ogg Opus: no loaded decoder reads it; try the plug-in 'sndfile'"},
        {"Ogg FLAC",
         Ogg("\x7F"
             "FLAC"),
         "Ogg FLAC: no loaded decoder reads it; try the plug-in 'sndfile'"},
        {"Theora", Ogg("\x80theora"), "Ogg: no loaded decoder reads it"},
        {"MP3 with a tag", Bytes("ID3\4\0"sv), "MP3: no loaded decoder reads it; try the plug-in 'sndfile'"},
        {"MP3", Bytes("\xFF\xFB\x90\x64"), "MP3: no loaded decoder reads it; try the plug-in 'sndfile'"},
        {"AAC", Bytes("\xFF\xF1\x50\x80"),
         "AAC: no loaded decoder reads it; try the plug-in 'system-codecs'"},
        {"M4A",
         Bytes("\0\0\0\x20"
               "ftypM4A "sv),
         "M4A: no loaded decoder reads it; try the plug-in 'system-codecs'"},
        {"MP4",
         Bytes("\0\0\0\x20"
               "ftypisom"sv),
         "MP4: no loaded decoder reads it; try the plug-in 'system-codecs'"},
        {"PNG", Bytes("\x89PNG\r\n\x1A\n"), "PNG: no loaded decoder reads it; try the plug-in 'image'"},
        {"JPEG", Bytes("\xFF\xD8\xFF\xE0"), "JPEG: no loaded decoder reads it; try the plug-in 'image'"},
        {"Y4M", Bytes("YUV4MPEG2 W4 H4\n"), "YUV4MPEG2: no loaded decoder reads it; try the plug-in 'y4m'"},
        {"AVI", Bytes("RIFF\0\0\0\0AVI LIST"sv), "AVI: no loaded decoder reads it"},
        {"ASF", Bytes("\x30\x26\xB2\x75\x8E\x66\xCF\x11"), "Windows Media: no loaded decoder reads it"},
        {"Matroska", Bytes("\x1A\x45\xDF\xA3"), "Matroska: no loaded decoder reads it"},
        {"MIDI", Bytes("MThd\0\0\0\6"sv), "MIDI: no loaded decoder reads it"},
        {"a mark that is cut", Bytes("fLa"), "no loaded decoder knows this kind of file"},
    };
}

TEST(DecodeReportFiles, EachRefusedFileIsExplained) {
    const CLibraryScope library;
    for (const TRefusedFile& file : RefusedFiles()) {
        SCOPED_TRACE(file.what);
        const auto source = Make<CMemoryInputStream>();
        source->bytes = file.bytes;
        CDecodeReport report;
        const CInputStreamSelector selector(source.Get());
        ExpectRaises<CDataFormatException>(codecstorefailures::kCannotDecodeStream, [&] {
            selector.DecodeStream(TDataFormat_AudioPcm::FormatId, {.report = &report});
        });
        EXPECT_EQ(Text(report.Explain()), file.explanation);
    }
}

TEST(DecodeReportFiles, SourceThatCannotBeReadAgainIsNotLookedAt) {
    const CLibraryScope library;
    for (const std::uint32_t capabilities : {0u, 3u, 5u, 6u}) {
        const auto source = Make<CMemoryInputStream>();
        source->bytes = Bytes("fLaC");
        source->capabilities = capabilities;
        CDecodeReport report;
        EXPECT_THROW(v.GetCodecClassStore().DecodeStream(source.Get(), TDataFormat_AudioPcm::FormatId,
                                                         {.report = &report}),
                     CDataFormatException);
        EXPECT_EQ(Text(report.GetContainer()), "") << capabilities;
    }
}

TEST(DecodeReportFiles, BytesReadAndTheBlock) {
    const CLibraryScope library;
    const auto resource = CreateAs<IResource>(classid::CResource);
    const TBytes bytes = CWavBuilder().Format({.bits = 24}).Chunk("data", TBytes(600)).Build();
    const auto source = Make<CMemoryInputStream>();
    source->bytes = bytes;
    resource->Load(CInputStreamSelector(source.Get()));
    CDecodeReport report;
    const CInputStreamSelector selector(resource.Get());
    EXPECT_THROW(selector.DecodeStream(TDataFormat_AudioPcm::FormatId, {.report = &report}),
                 CDataFormatException);
    ASSERT_EQ(report.GetEntries().size(), 1u);
    const TDecodeEntry& entry = report.GetEntries()[0];
    // The head of the file, those of the chunks, and the format; nothing of the data.
    EXPECT_GE(entry.bytesRead, 12u + 8 + 8 + 16);
    EXPECT_LT(entry.bytesRead, 600u);
    const std::string block = Text(report.ToString());
    EXPECT_EQ(block.find("vorlund::CWavDecoder: refused, WAV, Usupported bits per sample (bits 24), "
                         "CDataFormatException of vorlund::CWavDecoder::Connect, "),
              0u)
        << block;
    EXPECT_NE(block.find(std::to_string(entry.bytesRead) + " bytes, "), std::string::npos) << block;
}

} // namespace
} // namespace vorlund::test
