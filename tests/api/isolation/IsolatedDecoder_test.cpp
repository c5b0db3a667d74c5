// Decoding in a process of its own.
#include <vorlund/CodecClassStore.h>
#include <vorlund/DataFormat.h>
#include <vorlund/DecodeReport.h>
#include <vorlund/IsolatedDecoder.h>
#include <vorlund/RefPtr.h>
#include <vorlund/StreamFilter.h>
#include <vorlund/Vorlund.h>

#include "api/isolation/Wine.h"
#include "api/plugins/InheritedObject.h"
#include "api/plugins/LoadedModules.h"
#include "api/plugins/TestPlugins.h"
#include "support/Failures.h"
#include "support/LibraryScope.h"
#include "support/Streams.h"
#include "support/Text.h"
#include "support/WavBuilder.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <vector>

namespace vorlund::test {
namespace {

constexpr const wchar* kFile = VRL_L("src/vorlund/api/isolation/IsolatedDecoder");
constexpr const wchar* kStreamFile = VRL_L("src/vorlund/api/isolation/IsolatedStream");
constexpr const wchar* kMethod = VRL_L("vorlund::DecodeIsolated");
constexpr const wchar* kRead = VRL_L("vorlund::isolation::CIsolatedStream::Read");
constexpr TFailure kNoStream{kMethod, kFile, 1, VRL_L("stream is NULL")};
constexpr TFailure kNoFormat{kMethod, kFile, 2, VRL_L("No format is wanted")};
constexpr TFailure kNotStarted{kMethod, kFile, 3, VRL_L("Cannot start the process of the decoders")};
constexpr TFailure kUnsafe{kMethod, kFile, 4, VRL_L("This system does not isolate processes")};
constexpr TFailure kNotDecoded{kMethod, kFile, 5, VRL_L("Cannot decode stream")};
constexpr TFailure kDied{kRead, kStreamFile, 4, VRL_L("The process of the decoder died")};
constexpr TFailure kSilent{kRead, kStreamFile, 5, VRL_L("The process of the decoder does not answer")};
constexpr TFailure kGarbled{kRead, kStreamFile, 6, VRL_L("The process of the decoder gave no proper answer")};
constexpr TFailure kFailed{kRead, kStreamFile, 7, VRL_L("The decoder failed")};
constexpr TFailure kNotConnected{kRead, kStreamFile, 8, VRL_L("Stream is not connected")};
constexpr TFailure kOtherSource{VRL_L("vorlund::isolation::CIsolatedStream::Connect"), kStreamFile, 9,
                                VRL_L("An isolated decoder stays with its source")};
constexpr TFailure kBeforeBegin{VRL_L("vorlund::isolation::CIsolatedStream::Seek"), kStreamFile, 3,
                                VRL_L("Position before the stream")};

#ifdef _WIN32
constexpr bool kIsWindows = true;
#else
constexpr bool kIsWindows = false;
#endif

using TTexts = std::vector<std::string>;

std::string Text(const CString& text) {
    return Narrow(text.GetBuffer());
}

TBytes ReadAll(IInputStream& stream, std::size_t block) {
    TBytes all;
    TBytes part(block);
    while (const std::uint64_t count = stream.Read(part.data(), part.size()))
        all.insert(all.end(), part.begin(), part.begin() + static_cast<std::ptrdiff_t>(count));
    return all;
}

class IsolatedDecoder : public testing::Test {
protected:
    IsolatedDecoder() { plugins_.Add("misbehaving"); }

    CRefPtr<IInputStream> Decode(IInputStream& source, TIsolation isolation = {}) {
        const wchar* const folders[] = {folder_.c_str()};
        isolation.folders = folders;
        isolation.withInstalled = false;
        isolation.report = &report_;
        return CRefPtr<IInputStream>::Adopt(
            DecodeIsolated(&source, TDataFormat_AudioPcm::FormatId, isolation));
    }
    /// The plug-in's decoder, told how to behave.
    CRefPtr<IInputStream> Behave(const std::string& how, TIsolation isolation = {}) {
        return Decode(*Command(how), isolation);
    }
    static CRefPtr<CMemoryInputStream> Command(const std::string& how) {
        auto source = Make<CMemoryInputStream>();
        const std::string text = "misbehave " + how + "\n" + std::string(100, ' ');
        source->bytes.assign(text.begin(), text.end());
        return source;
    }
    /// "class outcome reason values" of each entry.
    TTexts Entries() const {
        TTexts texts;
        for (const TDecodeEntry& entry : report_.GetEntries())
            texts.push_back(Text(entry.className) + ' ' + std::to_string(entry.outcome) + ' ' +
                            Text(entry.reason) + ' ' + Text(entry.values));
        return texts;
    }

    CLibraryScope library_;
    CPluginFolder plugins_;
    const wstring folder_ = plugins_.GetPath();
    CDecodeReport report_;
};

CRefPtr<CMemoryInputStream> MakeWav(std::size_t frames) {
    auto source = Make<CMemoryInputStream>();
    source->bytes = PlainWav({}, Ramp(frames * 4));
    return source;
}

CRefPtr<IInputStream> DecodeHere(IInputStream& source, CDecodeReport& report) {
    return CRefPtr<IInputStream>::Adopt(
        v.GetCodecClassStore().DecodeStream(&source, TDataFormat_AudioPcm::FormatId, {.report = &report}));
}

TEST_F(IsolatedDecoder, ASourceWithoutPositionsIsReadOnly) {
    // It raises when it is asked for a position.
    const auto source = Make<CFaultyInputStream>();
    source->bytes = Command("nothing")->bytes;
    source->capabilities = STREAM_CAPABILITY_READ;
    EXPECT_EQ(ReadAll(*Decode(*source), 100).size(), 7u);
    EXPECT_EQ(source->position, static_cast<std::int64_t>(source->bytes.size()));
}

TEST_F(IsolatedDecoder, GivesWhatTheStoreGives) {
    const auto source = MakeWav(100000);
    CDecodeReport hereReport;
    const auto here = DecodeHere(*source, hereReport);
    const TBytes expected = ReadAll(*here, 4096);
    const auto apart = Decode(*source);
    EXPECT_EQ(std::memcmp(&apart->GetFormat(), &here->GetFormat(), here->GetFormat().size), 0);
    EXPECT_EQ(apart->GetLength(), here->GetLength());
    EXPECT_EQ(apart->GetCapabilities(), here->GetCapabilities() & 7U);
    EXPECT_TRUE(ReadAll(*apart, 1000) == expected);
    EXPECT_TRUE(apart->Eof());
    ASSERT_EQ(report_.GetEntries().size(), hereReport.GetEntries().size());
    EXPECT_EQ(Text(report_.GetEntries()[0].className), Text(hereReport.GetEntries()[0].className));
    EXPECT_EQ(Text(report_.Explain()), "");
    const std::vector<TChainLink> chain = ListChain(*apart);
    ASSERT_EQ(chain.size(), 2U);
    EXPECT_EQ(Text(chain[0].className), Text(ListChain(*here)[0].className) + " (isolated)");
    EXPECT_TRUE(chain[0].formatId == TDataFormat_AudioPcm::FormatId);
}

TEST_F(IsolatedDecoder, EveryPositionGivesTheSameBytes) {
    const auto source = MakeWav(60000);
    CDecodeReport hereReport;
    const TBytes expected = ReadAll(*DecodeHere(*source, hereReport), 4096);
    const auto apart = Decode(*source);
    std::uint32_t state = 1;
    TBytes part(3000);
    for (int i = 0; i < 200; ++i) {
        state = state * 1664525 + 1013904223;
        const std::size_t at = (state >> 8) % expected.size();
        apart->Seek(static_cast<std::int64_t>(at));
        ASSERT_EQ(apart->Tell(), static_cast<std::int64_t>(at));
        const std::size_t count = std::min(part.size(), expected.size() - at);
        ASSERT_EQ(apart->Read(part.data(), part.size()), count);
        ASSERT_EQ(std::memcmp(part.data(), expected.data() + at, count), 0) << at;
    }
    apart->Seek(0);
    apart->Skip(7);
    EXPECT_EQ(apart->Tell(), 7);
    apart->Skip(UINT64_MAX);
    EXPECT_EQ(apart->Tell(), apart->GetLength());
    ExpectRaises<CIOException>(kBeforeBegin, [&] { apart->Seek(-1); });
}

TEST_F(IsolatedDecoder, PluginsDecodeThereAndNotHere) {
    const auto stream = Behave("well");
    EXPECT_EQ(ReadAll(*stream, 100), (TBytes{'s', 'a', 'm', 'p', 'l', 'e', 's'}));
    EXPECT_EQ(Text(report_.GetEntries().back().container), "Test");
    EXPECT_EQ(report_.GetEntries().back().outcome, DECODE_CONNECTED);
    CDecodeReport here;
    const auto source = Command("well");
    EXPECT_THROW(DecodeHere(*source, here), CDataFormatException);
}

TEST_F(IsolatedDecoder, RefusalsAreReported) {
    ExpectRaises<CDataFormatException>(kNotDecoded, [&] { Behave("refuse"); });
    EXPECT_EQ(report_.GetEntries().back().outcome, DECODE_REFUSED);
    EXPECT_EQ(report_.GetEntries().back().exceptionType, EXCEPTION_TYPE_DATA_FORMAT);
    EXPECT_EQ(Text(report_.GetEntries().back().method), "test::CMisbehavingDecoder::Connect");
    // What would reach a terminal is none of its commands.
    EXPECT_EQ(Text(report_.Explain()), "Test: Not for me (escape [31m 7)");
}

TEST_F(IsolatedDecoder, DeathsBecomeEntries) {
    struct TRow {
        const char* how;
        const char* reason;
    };
    for (const TRow& row :
         {TRow{"connect crash", "its process died"}, TRow{"connect exit", "its process died"},
          TRow{"connect hang", "its process does not answer"}}) {
        const testing::ScopedTrace trace(__FILE__, __LINE__, row.how);
        ExpectRaises<CDataFormatException>(kNotDecoded, [&] { Behave(row.how, {.seconds = 1}); });
        ASSERT_FALSE(report_.GetEntries().empty());
        const TDecodeEntry& last = report_.GetEntries().back();
        EXPECT_EQ(last.outcome, DECODE_DIED);
        EXPECT_EQ(Text(last.className), "test::CMisbehavingDecoder");
        EXPECT_EQ(Text(last.reason), row.reason);
        EXPECT_TRUE(Text(report_.Explain()).starts_with("test::CMisbehavingDecoder: its process "))
            << Text(report_.Explain());
        // Who was tried before is there as well.
        EXPECT_GT(report_.GetEntries().size(), 1U);
    }
    EXPECT_THROW(Behave("connect exit"), CDataFormatException);
    // On Windows the library that is left open ends the process otherwise.
    EXPECT_EQ(Text(report_.GetEntries().back().values), kIsWindows ? "code 3" : "code 5");
}

TEST_F(IsolatedDecoder, WhatIsRaisedInConnectEndsTheSearch) {
    ExpectRaises<CDataFormatException>(kNotDecoded, [&] { Behave("connect raise"); });
    EXPECT_EQ(report_.GetEntries().back().outcome, DECODE_RAISED);
}

TEST_F(IsolatedDecoder, MemoryHasALimit) {
    // Words of 32 bits have a limit of their own.
    if (sizeof(void*) > 4) {
        const auto stream = Behave("connect allocate", {.memory = 0});
        EXPECT_EQ(stream->GetLength(), 7);
    }
    // It takes the limit and does not keep it.
    if (IsWine()) return;
    ExpectRaises<CDataFormatException>(kNotDecoded, [&] { Behave("connect allocate", {.memory = 256}); });
    const TDecodeEntry& last = report_.GetEntries().back();
    EXPECT_EQ(Text(last.className), "test::CMisbehavingDecoder");
    // It may also die of it.
    EXPECT_TRUE(last.outcome == DECODE_RAISED || last.outcome == DECODE_DIED) << last.outcome;
    const auto stream = Behave("read allocate", {.memory = 256});
    char byte;
    EXPECT_THROW(stream->Read(&byte, 1), CIOException);
    // Beside it there is room.
    EXPECT_EQ(ReadAll(*Behave("well", {.memory = 256}), 100).size(), 7U);
}

TEST_F(IsolatedDecoder, DeathsWhileReading) {
    struct TRow {
        const char* how;
        const TFailure& failure;
    };
    for (const TRow& row : {TRow{"read crash", kDied}, TRow{"read exit", kDied}, TRow{"read hang", kSilent},
                            TRow{"read raise", kFailed}, TRow{"read fail", kFailed}}) {
        const testing::ScopedTrace trace(__FILE__, __LINE__, row.how);
        const auto stream = Behave(row.how, {.seconds = 1});
        char bytes[100];
        ExpectRaises<CIOException>(row.failure, [&] { stream->Read(bytes, sizeof(bytes)); });
        // From then on, at once.
        const auto begin = std::chrono::steady_clock::now();
        ExpectRaises<CIOException>(row.failure, [&] { stream->Read(bytes, sizeof(bytes)); });
        EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(1));
    }
}

TEST_F(IsolatedDecoder, ImpossibleFormatsAreRefused) {
    ExpectRaises<CDataFormatException>(kNotDecoded, [&] { Behave("channels"); });
    EXPECT_EQ(Text(report_.GetEntries().back().reason), "its process gave no proper answer");
}

TEST_F(IsolatedDecoder, OtherAnswersAreNotBelieved) {
    const wstring helper = ToVorlund(BesideProgram("isolation_helper" + std::string(kProgramEnding)));
    const auto talk = [&](const char* how, unsigned int seconds = 20) {
        const wstring folder(how, how + std::strlen(how));
        const wchar* const folders[] = {folder.c_str()};
        const auto source = Command("well");
        return CRefPtr<IInputStream>::Adopt(DecodeIsolated(source.Get(), TDataFormat_AudioPcm::FormatId,
                                                           {.folders = folders,
                                                            .withInstalled = false,
                                                            .report = &report_,
                                                            .seconds = seconds,
                                                            .helper = helper.c_str()}));
    };
    for (const char* const how : {"garbage",  "mark",           "huge",          "kind",       "question",
                                  "content",  "short-entry",    "long-text",     "entries",    "negative",
                                  "much",     "short-question", "other-format",  "cut-format", "no-format",
                                  "channels", "many-channels",  "sample-format", "rate",       "length"}) {
        const testing::ScopedTrace trace(__FILE__, __LINE__, how);
        ExpectRaises<CDataFormatException>(kNotDecoded, [&] { talk(how); });
        EXPECT_EQ(Text(report_.GetEntries().back().reason), "its process gave no proper answer");
    }
    for (const char* const how : {"silent", "asking"}) {
        const testing::ScopedTrace trace(__FILE__, __LINE__, how);
        ExpectRaises<CDataFormatException>(kNotDecoded, [&] { talk(how, 1); });
        EXPECT_EQ(Text(report_.GetEntries().back().reason), "its process does not answer");
    }
    for (const char* const how : {"cut", "end"}) {
        const testing::ScopedTrace trace(__FILE__, __LINE__, how);
        ExpectRaises<CDataFormatException>(kNotDecoded, [&] { talk(how); });
        EXPECT_EQ(Text(report_.GetEntries().back().reason), "its process died");
        EXPECT_EQ(Text(report_.GetEntries().back().values), "code 0");
    }
    ExpectRaises<CFailedException>(kUnsafe, [&] { talk("unsafe"); });
    char bytes[100];
    for (const char* const how : {"read-much", "read-length", "read-kind", "read-nothing"}) {
        const testing::ScopedTrace trace(__FILE__, __LINE__, how);
        const auto stream = talk(how);
        ExpectRaises<CIOException>(kGarbled, [&] { stream->Read(bytes, sizeof(bytes)); });
    }
    const auto silent = talk("read-silent", 1);
    ExpectRaises<CIOException>(kSilent, [&] { silent->Read(bytes, sizeof(bytes)); });
    const auto dead = talk("read-end");
    ExpectRaises<CIOException>(kDied, [&] { dead->Read(bytes, sizeof(bytes)); });
}

TEST_F(IsolatedDecoder, SourceThatFails) {
    constexpr TFailure kCannot{VRL_L("test::Source"), VRL_L("tests"), 1, VRL_L("Cannot")};
    const auto source = Make<CFaultyInputStream>();
    source->bytes = PlainWav({}, Ramp(400000));
    const auto stream = Decode(*source);
    source->failAt = 70000;
    source->fail = [&] { Raise<CTimeoutException>(kCannot); };
    TBytes bytes(400000);
    ExpectRaises<CTimeoutException>(kCannot, [&] { ReadAll(*stream, 65536); });
    ExpectRaises<CIOException>(kDied, [&] { stream->Read(bytes.data(), bytes.size()); });
    source->failAt = 0;
    ExpectRaises<CTimeoutException>(kCannot, [&] { Decode(*source); });
}

TEST_F(IsolatedDecoder, SourceThatUsesTheStream) {
    const auto source = Make<CFaultyInputStream>();
    source->bytes = PlainWav({}, Ramp(400000));
    auto stream = Decode(*source);
    std::uint64_t inner = 1;
    source->failAt = 70000;
    source->fail = [&] {
        char byte;
        if (stream) inner = stream->Read(&byte, 1);
        stream.Reset();
    };
    TBytes bytes(400000);
    IInputStream* const raw = stream.Get();
    EXPECT_GT(raw->Read(bytes.data(), bytes.size()), 60000U);
    EXPECT_EQ(inner, 0U);
    EXPECT_FALSE(stream);
}

TEST_F(IsolatedDecoder, StaysWithItsSource) {
    const auto source = MakeWav(100);
    const auto stream = Decode(*source);
    const auto filter = stream.Query<IInputStreamFilter>();
    ASSERT_TRUE(filter);
    EXPECT_EQ(CRefPtr<IInputStream>::Adopt(filter->GetInputStream()).Get(), source.Get());
    ExpectRaises<COperationNotSupportedException>(kOtherSource, [&] { filter->Connect(source.Get()); });
    filter->Disconnect();
    EXPECT_EQ(filter->GetInputStream(), nullptr);
    char byte;
    ExpectRaises<CIOException>(kNotConnected, [&] { stream->Read(&byte, 1); });
    EXPECT_THROW(stream->Read(nullptr, 1), CNullPtrException);
}

TEST_F(IsolatedDecoder, Arguments) {
    ExpectRaises<CNullPtrException>(kNoStream,
                                    [] { DecodeIsolated(nullptr, TDataFormat_AudioPcm::FormatId); });
    const auto source = MakeWav(1);
    ExpectRaises<CInvalidParameterException>(kNoFormat, [&] { DecodeIsolated(source.Get(), CId::Null()); });
    ExpectRaises<CFailedException>(kNotStarted,
                                   [&] { Decode(*source, {.helper = VRL_L("/no/such/program")}); });
}

TEST_F(IsolatedDecoder, LeavesNothingBehind) {
    const auto open = [&] {
        const auto source = MakeWav(1000);
        ReadAll(*Decode(*source), 100);
        EXPECT_THROW(Behave("connect exit"), CDataFormatException);
    };
    open();
    const int before = CountOpenObjects();
    for (int i = 0; i < 10; ++i) open();
    EXPECT_EQ(CountOpenObjects(), before);
}

} // namespace
} // namespace vorlund::test
