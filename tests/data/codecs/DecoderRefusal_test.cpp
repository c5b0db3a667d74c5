// Decoders that refuse without an exception: nobody sees a difference but the clock.
#include <vorlund/ClassIds.h>
#include <vorlund/DataFormat.h>
#include <vorlund/DecodeReport.h>
#include <vorlund/DecoderRefusal.h>
#include <vorlund/Exception.h>
#include <vorlund/RefPtr.h>
#include <vorlund/StreamFilterImpl.h>
#include <vorlund/Vorlund.h>
#include <vorlund/WavDecoder.h>

#include "data/file/TemporaryFolder.h"
#include "support/DebugRecorder.h"
#include "support/Failures.h"
#include "support/KnownFailures.h"
#include "support/LibraryScope.h"
#include "support/Streams.h"
#include "support/WavBuilder.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace vorlund::test {
namespace {

constexpr TFailure kRefused{VRL_L("test::CRefusing::Connect"), VRL_L("tests/data/DecoderRefusal_test"), 1,
                            VRL_L("Not mine")};

/// A decoder that refuses every stream, in the way that the test sets.
class CRefusing : public CInputFilterImpl<IInputStreamFilter> {
    using TLayer = CInputFilterImpl<IInputStreamFilter>;

public:
    static constexpr CId ClassId{0x7E57DEC0, 0x11D4A3B6, 0x90C2E7F1, 1};

    /// Null: does not refuse.
    static inline std::function<void(const CRefusal&)> refuse;
    static inline std::function<void(CRefusing&)> before;
    static inline std::vector<bool> wereAwaited;

    void Connect(IInputStream* stream) override {
        const CRefusal refusal(*this);
        wereAwaited.push_back(refusal.IsAwaited());
        if (before) std::exchange(before, nullptr)(*this);
        if (refuse) return refuse(refusal);
        TLayer::Connect(stream);
    }
};

class DecoderRefusal : public testing::Test {
protected:
    DecoderRefusal() {
        store_.Init();
        CRefusing::refuse = nullptr;
        CRefusing::before = nullptr;
        CRefusing::wereAwaited.clear();
        v.GetClassStore().RegisterClassVrl(
            {CRefusing::ClassId, VRL_L("test::CRefusing"), &NewObject<CRefusing>});
        store_.RegisterDecoder({CRefusing::ClassId, CId::Null(), TDataFormat_AudioPcm::FormatId});
    }
    ~DecoderRefusal() noexcept override { store_.Close(); }

    /// What a search that finds nothing says: its messages, its report, and what it raises.
    std::vector<std::string> Search() {
        const CDebugRecorder recorder;
        CDecodeReport report;
        ExpectRaises<CDataFormatException>(codecstorefailures::kCannotDecodeStream, [&] {
            store_.DecodeStream(source_.Get(), TDataFormat_AudioPcm::FormatId, {.report = &report});
        });
        std::vector<std::string> lines = recorder.GetTexts(DEBUG_MESSAGE_OUTPUT);
        for (const TDecodeEntry& entry : report.GetEntries())
            lines.push_back(std::to_string(entry.outcome) + " " + std::to_string(entry.exceptionType) + " " +
                            Narrow(entry.method.GetBuffer()) + " " + Narrow(entry.reason.GetBuffer()));
        return lines;
    }

    CLibraryScope library_;
    CCodecClassStore store_;
    CRefPtr<CMemoryInputStream> source_ = Make<CMemoryInputStream>();
};

TEST_F(DecoderRefusal, IsToTheSearchWhatTheExceptionIs) {
    CRefusing::refuse = [](const CRefusal&) { Raise<CDataFormatException>(kRefused); };
    const auto raised = Search();
    CRefusing::refuse = [](const CRefusal& refusal) { refusal.Raise<CDataFormatException>(kRefused); };
    EXPECT_EQ(Search(), raised);
    CRefusing::refuse = [](const CRefusal&) { Raise<CIOException>(kRefused); };
    const auto unreadable = Search();
    CRefusing::refuse = [](const CRefusal& refusal) { refusal.Raise<CIOException>(kRefused); };
    EXPECT_EQ(Search(), unreadable);
    EXPECT_EQ(raised.size(), 3u);
    EXPECT_NE(raised, unreadable);
    EXPECT_EQ(CRefusing::wereAwaited, std::vector<bool>(4, true));
}

TEST_F(DecoderRefusal, IsRaisedToOthers) {
    CRefusing::refuse = [](const CRefusal& refusal) { refusal.Raise<CIOException>(kRefused); };
    const auto decoder = Make<CRefusing>();
    ExpectRaises<CIOException>(kRefused, [&] { decoder->Connect(source_.Get()); });
    CRefusing::refuse = [](const CRefusal& refusal) { refusal.Raise<CDataFormatException>(kRefused); };
    ExpectRaises<CDataFormatException>(kRefused, [&] { decoder->Connect(source_.Get()); });
    EXPECT_EQ(CRefusing::wereAwaited, std::vector<bool>(2, false));
}

TEST_F(DecoderRefusal, IsRaisedToWhoConnectsItFromInsideItsConnect) {
    CRefusing::refuse = [](const CRefusal& refusal) { refusal.Raise<CDataFormatException>(kRefused); };
    CRefusing::before = [this](CRefusing& self) {
        ExpectRaises<CDataFormatException>(kRefused, [&] { self.Connect(source_.Get()); });
    };
    Search();
    EXPECT_EQ(CRefusing::wereAwaited, (std::vector<bool>{true, false}));
}

TEST_F(DecoderRefusal, IsRaisedToADecoderThatUsesAnother) {
    // The search waits for the outer one; the inner one is an object of the same class and of the library's.
    source_->bytes = CWavBuilder().Format({.bits = 24}).Chunk("data", TBytes(6)).Build();
    CRefusing::refuse = [](const CRefusal& refusal) { refusal.Raise<CDataFormatException>(kRefused); };
    CRefusing::before = [this](CRefusing&) {
        const auto inner = Make<CRefusing>();
        ExpectRaises<CDataFormatException>(kRefused, [&] { inner->Connect(source_.Get()); });
        const auto wav = CreateAs<IWavDecoder>(classid::CWavDecoder);
        EXPECT_THROW(wav->Connect(source_.Get()), CDataFormatException);
    };
    Search();
    EXPECT_EQ(CRefusing::wereAwaited, (std::vector<bool>{true, false}));
}

/// A decoder that knows nothing of refusals without an exception, and asks another one.
class CAskingDecoder : public CInputFilterImpl<IInputStreamFilter> {
public:
    static constexpr CId ClassId{0x7E57DEC0, 0x11D4A3B6, 0x90C2E7F1, 2};
    static inline bool wasRaised;

    void Connect(IInputStream* stream) override {
        const auto inner = Make<CRefusing>();
        try {
            inner->Connect(stream);
        } catch (const CDataFormatException&) {
            wasRaised = true;
            throw;
        }
    }
};

TEST_F(DecoderRefusal, IsRaisedToADecoderThatKnowsNothingOfIt) {
    v.GetClassStore().RegisterClassVrl(
        {CAskingDecoder::ClassId, VRL_L("test::CAskingDecoder"), &NewObject<CAskingDecoder>});
    store_.RegisterDecoder({CAskingDecoder::ClassId, CId::Null(), TDataFormat_AudioPcm::FormatId});
    CRefusing::refuse = [](const CRefusal& refusal) { refusal.Raise<CDataFormatException>(kRefused); };
    CAskingDecoder::wasRaised = false;
    Search();
    EXPECT_TRUE(CAskingDecoder::wasRaised);
}

/// A chunk decoder of an application, which refuses every stream by an exception.
class CRaisingChunks : public CInputFilterImpl<IWavChunkDecoder> {
public:
    static constexpr CId ClassId = classid::CWavChunkDecoder;

    void Connect(IInputStream*) override { Raise<CDataFormatException>(kRefused); }
    IObjectList* EnumerateChunks() override { return nullptr; }
    std::uint64_t GetChunkSize() override { return 0; }
    std::int64_t GetChunkOffset() override { return -1; }
    void SelectChunk(const wchar*) override {}
};

/// The same, which takes every stream and finds no chunk.
class CEmptyChunks : public CRaisingChunks {
public:
    void Connect(IInputStream*) override {}
    void SelectChunk(const wchar*) override { Raise<CObjectNotFoundException>(kRefused); }
};

TEST_F(DecoderRefusal, IsNotOwedByTheClassesOfOthers) {
    // The decoder, and what a search makes use of.
    std::vector<TClassInfo> kept;
    for (const CId& id : {classid::CWavDecoder, classid::CPushObjectEnumerator, classid::CPtrObject})
        kept.push_back(*v.GetClassStore().GetClassInfo(id));
    for (IObject* (*const factory)() : {&NewObject<CRaisingChunks>, &NewObject<CEmptyChunks>}) {
        v.GetClassStore().Clear();
        for (const TClassInfo& info : kept) v.GetClassStore().RegisterClassVrl(info);
        v.GetClassStore().RegisterClassVrl({classid::CWavChunkDecoder, VRL_L("test::CChunks"), factory});
        CCodecClassStore store;
        store.Init();
        store.RegisterDecoder({classid::CWavDecoder, CId::Null(), TDataFormat_AudioPcm::FormatId});
        EXPECT_THROW(store.DecodeStream(source_.Get(), TDataFormat_AudioPcm::FormatId), CDataFormatException);
        // Nobody's refusal is waited for afterwards.
        const auto decoder = CreateAs<IWavDecoder>(classid::CWavDecoder);
        EXPECT_THROW(decoder->Connect(source_.Get()), CDataFormatException);
        store.Close();
    }
}

TEST_F(DecoderRefusal, IsRaisedAfterASearch) {
    CRefusing::refuse = [](const CRefusal& refusal) { refusal.Raise<CDataFormatException>(kRefused); };
    CRefPtr<CRefusing> kept;
    CRefusing::before = [&](CRefusing& self) { kept = CRefPtr<CRefusing>::Share(&self); };
    Search();
    ExpectRaises<CDataFormatException>(kRefused, [&] { kept->Connect(source_.Get()); });
}

TEST_F(DecoderRefusal, OfOneIsNotAnothersInASearchInside) {
    CRefusing::before = [this](CRefusing&) {
        CRefusing::refuse = [](const CRefusal& refusal) { refusal.Raise<CDataFormatException>(kRefused); };
        Search();
        CRefusing::refuse = nullptr;
    };
    // The outer one, after the search in its Connect, takes the stream.
    const auto end = CRefPtr<IInputStream>::Adopt(store_.DecodeStream(source_.Get(), CId::Null()));
    EXPECT_EQ(end->GetClassId(), CRefusing::ClassId);
}

TEST_F(DecoderRefusal, OtherExceptionsGoTheirWay) {
    CRefusing::refuse = [](const CRefusal&) { Raise<CInvalidStateException>(kRefused); };
    ExpectRaises<CInvalidStateException>(
        kRefused, [&] { store_.DecodeStream(source_.Get(), TDataFormat_AudioPcm::FormatId); });
}

// The library's own decoder.

std::string Line(const char* method, const char* file, int line, const char* reason,
                 const char* type = "CDataFormatException") {
    return std::string("Exception: type=") + type + " | method=vorlund::" + method +
           " | file=src/vorlund/data/" + file + " | line=" + std::to_string(line) + " | reason=" + reason;
}

struct TRefusedWav {
    const char* what;
    TBytes bytes;
    std::vector<std::string> messages;
};

std::vector<TRefusedWav> RefusedWavs() {
    const std::string missing = Line("CWavChunkDecoder::SelectChunk", "filters/WavChunkDecoder", 331,
                                     "Cannot find chunk", "CObjectNotFoundException");
    const auto connect = [](int line, const char* reason) {
        return Line("CWavDecoder::Connect", "filters/WavDecoder", line, reason);
    };
    return {
        {"no WAV",
         TBytes(100),
         {Line("CWavChunkDecoder::Connect", "filters/WavChunkDecoder", 256, "Invalid header")}},
        {"no fmt chunk",
         CWavBuilder().Chunk("data", TBytes(6)).Build(),
         {missing, connect(129, "Cannot find fmt chunk")}},
        {"short fmt chunk",
         CWavBuilder().Format({}, 10).Chunk("data", TBytes(6)).Build(),
         {connect(134, "Invalid fmt chunk size")}},
        {"float",
         CWavBuilder().Format({.tag = 3, .bits = 32}).Chunk("data", TBytes(8)).Build(),
         {connect(138, "Unsupported wave format")}},
        {"24 bits",
         CWavBuilder().Format({.bits = 24}).Chunk("data", TBytes(6)).Build(),
         {connect(142, "Usupported bits per sample")}},
        {"no data chunk",
         CWavBuilder().Format({}).Build(),
         {missing, connect(151, "Cannot find data chunk ")}},
    };
}

TEST(DecoderRefusalFiles, EverythingIsReportedInItsOrder) {
    const CLibraryScope library;
    const CTemporaryFolder folder;
    const fs::path path = folder.GetPath() / "a";
    for (const TRefusedWav& file : RefusedWavs()) {
        SCOPED_TRACE(file.what);
        WriteFile(path, {reinterpret_cast<const char*>(file.bytes.data()), file.bytes.size()});
        auto expected = file.messages;
        expected.push_back(
            Line("CCodecClassStore::DecodeStream", "CodecClassStore", 352, "Cannot decode stream"));
        const CDebugRecorder recorder;
        std::string raised;
        try {
            v.GetCodecClassStore().DecodeFile(ToVorlund(path).c_str(), TDataFormat_AudioPcm::FormatId);
        } catch (const CDataFormatException& exception) {
            raised = Narrow(exception.ToString().GetBuffer());
        }
        auto messages = recorder.GetTexts(DEBUG_MESSAGE_OUTPUT);
        ASSERT_FALSE(messages.empty());
        EXPECT_EQ(messages.back(), raised);
        EXPECT_NE(raised.find("line=370 | reason=Cannot decode file '"), std::string::npos) << raised;
        messages.pop_back();
        EXPECT_EQ(messages, expected);
    }
}

TEST(DecoderRefusalFiles, DecoderThatRefusedTakesTheNextStream) {
    const CLibraryScope library;
    const auto decoder = CreateAs<IWavDecoder>(classid::CWavDecoder);
    const auto source = Make<CMemoryInputStream>();
    for (const TRefusedWav& file : RefusedWavs()) {
        SCOPED_TRACE(file.what);
        source->bytes = file.bytes;
        EXPECT_THROW(decoder->Connect(source.Get()), CDataFormatException);
        EXPECT_FALSE(CRefPtr<IInputStream>::Adopt(decoder->GetInputStream()));
    }
    source->bytes = CWavBuilder().Format({}).Chunk("data", Ramp(6)).Build();
    decoder->Connect(source.Get());
    EXPECT_EQ(decoder->GetLength(), 6);
}

} // namespace
} // namespace vorlund::test
