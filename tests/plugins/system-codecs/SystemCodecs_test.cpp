// What the plug-in does on every system, whatever decoders that has.
#include "plugins/SoundPluginTest.h"
#include "support/Failures.h"

#include <vorlund/DecodeReport.h>
#include <vorlund/RefPtr.h>
#include <vorlund/StreamFilter.h>

namespace vorlund::test {
namespace {

constexpr CId kDecoder{0x91D4C7A3, 0x2E6B4F08, 0xB5039A6E, 0x7C18F25D};
constexpr const wchar* kConnect = VRL_L("CSystemDecoder::Connect");
constexpr const wchar* kFile = VRL_L("plugins/system-codecs/SystemDecoder");
constexpr TFailure kNoPositions{kConnect, kFile, 1, VRL_L("Stream has no positions")};
constexpr TFailure kDecoded{kConnect, kFile, 2, VRL_L("Stream is decoded already")};
constexpr TFailure kOtherFile{kConnect, kFile, 3, VRL_L("Not an M4A, MP4 or AAC file")};

using SystemCodecs = SoundPluginTest;

CRefPtr<CMemoryInputStream> Source(const std::string& bytes) {
    auto source = Make<CMemoryInputStream>();
    source->bytes.assign(bytes.begin(), bytes.end());
    return source;
}

TEST_F(SystemCodecs, OtherFilesAreNotTaken) {
    const auto decoder = CreateAs<IInputStreamFilter>(kDecoder);
    for (const char* const text : {"", "ftyp", "RIFF....WAVE", "\xFF\xF0"}) {
        const auto source = Source(text);
        ExpectRaises<CDataFormatException>(kOtherFile, [&] { decoder->Connect(source.Get()); });
        EXPECT_EQ(decoder->GetInputStream(), nullptr);
    }
    const auto decoded = Source("....ftypM4A ....");
    decoded->format = TDataFormat_AudioPcm();
    ExpectRaises<CDataFormatException>(kDecoded, [&] { decoder->Connect(decoded.Get()); });
    decoded->capabilities = STREAM_CAPABILITY_READ;
    ExpectRaises<CDataFormatException>(kNoPositions, [&] { decoder->Connect(decoded.Get()); });
}

TEST_F(SystemCodecs, UnconnectedDecoderHasTheDefaults) {
    const auto decoder = CreateAs<IInputStreamFilter>(kDecoder);
    char byte;
    EXPECT_EQ(decoder->GetFormat().id, CId::Null());
    EXPECT_TRUE(decoder->Eof());
    EXPECT_THROW(decoder->Read(&byte, 1), CIOException);
    EXPECT_THROW(decoder->Seek(0), COperationNotSupportedException);
    EXPECT_THROW(decoder->GetLength(), COperationNotSupportedException);
    EXPECT_THROW(decoder->Read(nullptr, 1), CNullPtrException);
}

TEST_F(SystemCodecs, NoSoundIsNotTakenAndNamed) {
    // The head of a file, and nothing that a decoder could use.
    CDecodeReport report;
    const auto source = Source(std::string("\0\0\0\x18", 4) + "ftypM4A mp42isom" + std::string(400, '\0'));
    const CInputStreamSelector selector(source.Get());
    EXPECT_THROW(selector.DecodeStream(TDataFormat_AudioPcm::FormatId, {.report = &report}),
                 CDataFormatException);
    ASSERT_NE(report.GetFurthest(), nullptr);
    EXPECT_EQ(Narrow(report.GetFurthest()->container.GetBuffer()), "M4A");
    EXPECT_EQ(report.GetFurthest()->outcome, DECODE_REFUSED);
    EXPECT_EQ(Narrow(report.GetFurthest()->className.GetBuffer()), "system_codecs::CSystemDecoder");
}

} // namespace
} // namespace vorlund::test
