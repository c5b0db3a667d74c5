// Rare answers of the process that decodes, and rare sources.
#include <vorlund/DataFormat.h>
#include <vorlund/DecodeReport.h>
#include <vorlund/IsolatedDecoder.h>
#include <vorlund/RefPtr.h>
#include <vorlund/StreamFilter.h>

#include "api/plugins/TestPlugins.h"
#include "support/Failures.h"
#include "support/LibraryScope.h"
#include "support/Streams.h"
#include "support/Text.h"
#include "support/WavBuilder.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace vorlund::test {
namespace {

constexpr const wchar* kStreamFile = VRL_L("src/vorlund/api/isolation/IsolatedStream");
constexpr TFailure kNotDecoded{VRL_L("vorlund::DecodeIsolated"),
                               VRL_L("src/vorlund/api/isolation/IsolatedDecoder"), 5,
                               VRL_L("Cannot decode stream")};
constexpr TFailure kNoLength{VRL_L("vorlund::isolation::CIsolatedStream::GetLength"), kStreamFile, 1,
                             VRL_L("The decoder has no length")};
constexpr TFailure kNoPositions{VRL_L("vorlund::isolation::CIsolatedStream::Seek"), kStreamFile, 2,
                                VRL_L("The decoder has no positions")};
constexpr TFailure kEndless{VRL_L("test::CEndlessStream::GetLength"), VRL_L("tests"), 1, VRL_L("No end")};

/// Does not know its length.
class CEndlessStream : public CMemoryInputStream {
public:
    static constexpr CId ClassId{0x7E57571A, 0x0C5F4E1B, 0x9D2A6C47, 0x51B3A8F6};

    std::int64_t GetLength() override { Raise<COperationNotSupportedException>(kEndless); }
};

class IsolatedDecoderOdd : public testing::Test {
protected:
    /// What the helper says to that word.
    CRefPtr<IInputStream> Talk(const std::string& how, const CId& format = TDataFormat_AudioPcm::FormatId,
                               unsigned int seconds = 20) {
        const wstring folder(how.begin(), how.end());
        const wchar* const folders[] = {folder.c_str()};
        const auto source = Make<CMemoryInputStream>();
        source->bytes = TBytes(200000);
        return CRefPtr<IInputStream>::Adopt(DecodeIsolated(source.Get(), format,
                                                           {.folders = folders,
                                                            .withInstalled = false,
                                                            .report = &report_,
                                                            .seconds = seconds,
                                                            .helper = helper_.c_str()}));
    }
    std::string LastReason() const { return Narrow(report_.GetEntries().back().reason.GetBuffer()); }

    CLibraryScope library_;
    const wstring helper_ = ToVorlund(BesideProgram("isolation_helper" + std::string(kProgramEnding)));
    CDecodeReport report_;
};

TEST_F(IsolatedDecoderOdd, ImagesAndVideosAreLookedAt) {
    EXPECT_EQ(Talk("image-good", TDataFormat_ImageRgb::FormatId)->GetFormat().id,
              TDataFormat_ImageRgb::FormatId);
    EXPECT_EQ(Talk("video-good", TDataFormat_VideoRgb::FormatId)->GetFormat().id,
              TDataFormat_VideoRgb::FormatId);
    for (const char* const how :
         {"image-flat", "image-narrow", "image-huge", "image-no-bits", "image-many-bits", "image-size",
          "video-flat", "video-id", "video-size", "video-cut"}) {
        const testing::ScopedTrace trace(__FILE__, __LINE__, how);
        const bool isVideo = std::string(how).starts_with("video");
        const CId format = isVideo ? TDataFormat_VideoRgb::FormatId : TDataFormat_ImageRgb::FormatId;
        ExpectRaises<CDataFormatException>(kNotDecoded, [&] { Talk(how, format); });
        EXPECT_EQ(LastReason(), "its process gave no proper answer");
    }
}

TEST_F(IsolatedDecoderOdd, EntriesAreMadeSafe) {
    ExpectRaises<CDataFormatException>(kNotDecoded, [&] { Talk("odd-entry"); });
    const TDecodeEntry& entry = report_.GetEntries().back();
    EXPECT_EQ(Narrow(entry.className.GetBuffer()), "a b c\xC3\xA9");
    EXPECT_EQ(entry.depth, 1000);
    EXPECT_EQ(entry.outcome, DECODE_RAISED);
    EXPECT_EQ(entry.exceptionType, EXCEPTION_TYPE_GENERIC);
    EXPECT_EQ(entry.bytesRead, 1u);
}

TEST_F(IsolatedDecoderOdd, NumbersThatNameNothingAreReplaced) {
    ExpectRaises<CDataFormatException>(kNotDecoded, [&] { Talk("odd-numbers"); });
    const struct {
        TDecodeOutcome outcome;
        TExceptionType type;
    } rows[] = {{DECODE_RAISED, EXCEPTION_TYPE_GENERIC},
                {static_cast<TDecodeOutcome>(0), static_cast<TExceptionType>(0)},
                {static_cast<TDecodeOutcome>(1), static_cast<TExceptionType>(1)},
                {DECODE_RAISED, EXCEPTION_TYPE_GENERIC}};
    ASSERT_EQ(report_.GetEntries().size(), std::size(rows));
    for (std::size_t i = 0; i < std::size(rows); ++i) {
        EXPECT_EQ(report_.GetEntries()[i].outcome, rows[i].outcome) << i;
        EXPECT_EQ(report_.GetEntries()[i].exceptionType, rows[i].type) << i;
    }
}

TEST_F(IsolatedDecoderOdd, FormatsOfOtherSizesAndKindsAreRefused) {
    for (const char* const how : {"other-good-format", "long-format", "other-size"}) {
        ExpectRaises<CDataFormatException>(kNotDecoded, [&] { Talk(how); });
        EXPECT_EQ(LastReason(), "its process gave no proper answer") << how;
    }
}

TEST_F(IsolatedDecoderOdd, ChainWithoutLengthAndPositions) {
    const auto stream = Talk("odd-chain");
    EXPECT_EQ(stream->GetCapabilities(), STREAM_CAPABILITY_READ);
    ExpectRaises<COperationNotSupportedException>(kNoLength, [&] { stream->GetLength(); });
    ExpectRaises<COperationNotSupportedException>(kNoPositions, [&] { stream->Seek(0); });
    EXPECT_FALSE(stream->Eof());
    char bytes[4] = {};
    EXPECT_EQ(stream->Read(bytes, sizeof(bytes)), 1u);
    EXPECT_EQ(bytes[0], 'x');
    EXPECT_EQ(stream->Read(bytes, sizeof(bytes)), 0u);
    EXPECT_TRUE(stream->Eof());

    const auto endless = Talk("odd-length");
    endless->Seek(1000000);
    EXPECT_EQ(endless->Tell(), 1000000);
    EXPECT_FALSE(endless->Eof());
}

TEST_F(IsolatedDecoderOdd, WhoDoesNotListenDoesNotAnswer) {
    ExpectRaises<CDataFormatException>(kNotDecoded, [&] { Talk("deaf", TDataFormat_AudioPcm::FormatId, 1); });
    EXPECT_EQ(LastReason(), "its process does not answer");
    ExpectRaises<CDataFormatException>(kNotDecoded, [&] { Talk("deaf-and-gone"); });
    EXPECT_EQ(LastReason(), "its process died");
    EXPECT_NE(Narrow(report_.ToString().GetBuffer()).find(": died, its process died (code "),
              std::string::npos);
}

TEST_F(IsolatedDecoderOdd, SourcesOfEveryKind) {
    // One that knows no length, with the plug-ins that are installed.
    const auto endless = Make<CEndlessStream>();
    endless->bytes = PlainWav({}, Ramp(400));
    const auto plain = Make<CMemoryInputStream>();
    plain->bytes = endless->bytes;
    const auto expected =
        CRefPtr<IInputStream>::Adopt(DecodeIsolated(plain.Get(), TDataFormat_AudioPcm::FormatId));
    EXPECT_EQ(expected->GetLength(), 400);
    EXPECT_THROW(endless->GetLength(), COperationNotSupportedException);
    CRefPtr<IInputStream> stream;
    try {
        stream = CRefPtr<IInputStream>::Adopt(
            DecodeIsolated(endless.Get(), TDataFormat_AudioPcm::FormatId, {.report = &report_}));
    } catch (const CDataFormatException&) {
        // The decoder may want to know it.
        EXPECT_FALSE(report_.GetEntries().empty());
    }
    // One without positions, which is only read.
    const auto forward = Make<CFaultyInputStream>();
    forward->bytes = plain->bytes;
    forward->capabilities = STREAM_CAPABILITY_READ;
    ExpectRaises<CDataFormatException>(
        kNotDecoded, [&] { DecodeIsolated(forward.Get(), TDataFormat_AudioPcm::FormatId); });
    // One that says it has read more than it was asked for.
    const auto boasting = Make<CFaultyInputStream>();
    boasting->bytes = plain->bytes;
    boasting->exaggeration = 1 << 20;
    ExpectRaises<CDataFormatException>(
        kNotDecoded, [&] { DecodeIsolated(boasting.Get(), TDataFormat_AudioPcm::FormatId); });
}

TEST_F(IsolatedDecoderOdd, ClosingAndFlushingChangeNothing) {
    const auto source = Make<CMemoryInputStream>();
    source->bytes = PlainWav({}, Ramp(400));
    const auto stream =
        CRefPtr<IInputStream>::Adopt(DecodeIsolated(source.Get(), TDataFormat_AudioPcm::FormatId));
    stream->Close();
    stream->Flush();
    EXPECT_EQ(source->closed, 0);
    TBytes bytes(400);
    EXPECT_EQ(stream->Read(bytes.data(), bytes.size()), 400u);
    EXPECT_EQ(bytes, Ramp(400));
    const auto filter = stream.Query<IInputStreamFilter>();
    filter->Connect(nullptr);
    EXPECT_EQ(filter->GetInputStream(), nullptr);
}

} // namespace
} // namespace vorlund::test
