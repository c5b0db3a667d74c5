// Metadata written with the sound and read from streams of every kind.
#include "data/wav/Metadata.h"
#include "data/wav/SparseStream.h"
#include "data/wav/WavFile.h"
#include "support/Failures.h"
#include "support/LibraryScope.h"

namespace vorlund::test {
namespace {

constexpr const wchar* kMethod = VRL_L("vorlund::ReadWavMetadata");
constexpr const wchar* kSource = VRL_L("src/vorlund/data/wav/WavMetadata");
constexpr TFailure kNoStream{kMethod, kSource, 1, VRL_L("stream is NULL")};
constexpr TFailure kBadHeader{kMethod, kSource, 2, VRL_L("Invalid header")};
constexpr const wchar* kWriter = VRL_L("src/vorlund/data/wav/WavWriter");
constexpr TFailure kBadId{VRL_L("vorlund::CWavWriter::CWavWriter"), kWriter, 6,
                          VRL_L("An id has not four characters")};
constexpr TFailure kTooLong{VRL_L("vorlund::CWavWriter::CWavWriter"), kWriter, 7,
                            VRL_L("The metadata are too long")};

class WavMetadata : public testing::Test {
protected:
    static TWavMetadata Read(const TBytes& bytes, std::uint32_t capabilities = 7,
                             std::uint64_t step = 1000000) {
        const auto stream = Make<CFaultyInputStream>();
        stream->bytes = bytes;
        stream->capabilities = capabilities;
        stream->maximumRead = step;
        return ReadWavMetadata(stream.Get());
    }

    CLibraryScope library_;
};

TEST_F(WavMetadata, IsReadAsItWasWritten) {
    TWavWriterOptions options;
    options.metadata = FullMetadata();
    const TBytes bytes = WriteWav({WAV_SAMPLE_16BIT, 2, 48000}, Ramp(400), options);
    EXPECT_EQ(Ids(bytes), "JUNK,fmt ,bext,LIST,cue ,LIST,data");
    EXPECT_EQ(Body(bytes, "data"), Ramp(400));
    EXPECT_EQ(Read(bytes), FullMetadata());
    EXPECT_EQ(Read(bytes, STREAM_CAPABILITY_READ), FullMetadata());
    EXPECT_EQ(Read(bytes, STREAM_CAPABILITY_READ, 1), FullMetadata());
}

TEST_F(WavMetadata, ChunksAreThoseOfTheStandards) {
    TWavWriterOptions options;
    options.metadata = FullMetadata();
    const TBytes bytes = WriteWav({WAV_SAMPLE_16BIT, 2, 48000}, {}, options);
    const TBytes bext = Body(bytes, "bext");
    EXPECT_EQ(bext.size(), 602u + 30);
    EXPECT_EQ(Text(bext, 256, 5), std::string("test\0", 5));
    EXPECT_EQ(Text(bext, 320, 18), "2026-03-3123:59:59");
    EXPECT_EQ(Number(bext, 338, 8), 0x123456789Au);
    EXPECT_EQ(Number(bext, 346, 2), 2u);
    EXPECT_EQ(bext[348], 1);
    EXPECT_EQ(static_cast<std::int16_t>(Number(bext, 412, 2)), -2300);
    EXPECT_EQ(static_cast<std::int16_t>(Number(bext, 420, 2)), -2100);
    EXPECT_EQ(Text(bext, 602, 5), "A=PCM");
    const TBytes cue = Body(bytes, "cue ");
    EXPECT_EQ(cue.size(), 4 + 3 * 24u);
    EXPECT_EQ(Number(cue, 0, 4), 3u);
    EXPECT_EQ(Number(cue, 28, 4), 7u);
    EXPECT_EQ(Text(cue, 36, 4), "data");
    EXPECT_EQ(Number(cue, 48, 4), 100u);
}

TEST_F(WavMetadata, TextsThatAreTooLongAreCut) {
    TWavMetadata metadata;
    metadata.broadcast.emplace().originator = std::string(40, 'x');
    metadata.broadcast->originationDate = "2026-03-31T";
    TWavWriterOptions options;
    options.metadata = metadata;
    const TWavMetadata read = Read(WriteWav({}, {}, options));
    EXPECT_EQ(read.broadcast->originator, std::string(32, 'x'));
    EXPECT_EQ(read.broadcast->originationDate, "2026-03-31");
}

TEST_F(WavMetadata, ReplacedMetadataGoIntoTheirRoom) {
    TWavWriterOptions options;
    options.metadata = Titled("at first");
    options.metadataRoom = 2000;
    for (const TWavMetadata& metadata : {FullMetadata(), Titled("a title that is longer"), TWavMetadata()}) {
        const auto stream = Make<CMemoryOutputStream>();
        CWavWriter writer(stream.Get(), {WAV_SAMPLE_8BIT, 1, 8000}, options);
        writer.Write(Ramp(7).data(), 7);
        writer.SetMetadata(metadata);
        writer.Close();
        EXPECT_EQ(stream->bytes.size(), 80u + 2000 + 8);
        EXPECT_EQ(Body(stream->bytes, "data"), Ramp(7));
        EXPECT_EQ(Read(stream->bytes), metadata);
    }
}

TEST_F(WavMetadata, WithoutRoomTheyGoBehind) {
    const auto stream = Make<CMemoryOutputStream>();
    TWavWriterOptions options;
    options.metadata = Titled("at first");
    CWavWriter writer(stream.Get(), {WAV_SAMPLE_8BIT, 1, 8000}, options);
    writer.Write(Ramp(7).data(), 7);
    writer.Flush();
    writer.SetMetadata(FullMetadata());
    writer.Close();
    EXPECT_EQ(Ids(stream->bytes), "JUNK,fmt ,JUNK,data,bext,LIST,cue ,LIST");
    EXPECT_EQ(Body(stream->bytes, "data"), Ramp(7));
    EXPECT_EQ(Read(stream->bytes), FullMetadata());
}

TEST_F(WavMetadata, AnyRoomLeavesAFile) {
    for (std::uint32_t room = 0; room < 60; ++room) {
        TWavWriterOptions options;
        options.metadata = Titled("title");
        options.metadataRoom = room;
        const TBytes bytes = WriteWav({WAV_SAMPLE_8BIT, 1, 8000}, Ramp(3), options);
        EXPECT_EQ(Body(bytes, "data"), Ramp(3)) << room;
        EXPECT_EQ(Read(bytes), Titled("title"));
    }
}

TEST_F(WavMetadata, BehindSoundOfMoreThan4Gib) {
    // A head as of an RF64, and a stream that skips what it has not.
    const auto stream = Make<CSparseStream>();
    CWavWriter writer(stream.Get(), {WAV_SAMPLE_8BIT, 1, 8000});
    const TBytes block(std::size_t{64} << 20);
    for (int i = 0; i < 65; ++i) writer.Write(block.data(), block.size());
    writer.SetMetadata(Titled("behind"));
    writer.Close();

    const auto input = Make<CSparseInput>();
    input->from = stream.Get();
    EXPECT_EQ(ReadWavMetadata(input.Get()), Titled("behind"));
}

TEST_F(WavMetadata, DamagedFilesGiveWhatComesBefore) {
    TWavWriterOptions options;
    options.metadata = FullMetadata();
    const TBytes whole = WriteWav({WAV_SAMPLE_8BIT, 1, 8000}, Ramp(10), options);
    for (std::size_t size = 12; size < whole.size(); ++size) {
        const TBytes cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
        const TWavMetadata read = Read(cut);
        EXPECT_LE(read.info.size(), 4u);
        EXPECT_EQ(Read(cut, STREAM_CAPABILITY_READ), read);
    }
    const auto declare = [](const std::string& id, std::uint32_t size) {
        return CWavBuilder().Declare(id, size, Ramp(40)).Build();
    };
    EXPECT_EQ(Read(declare("bext", 0xFFFFFFFF)), TWavMetadata());
    EXPECT_EQ(Read(declare("bext", 1000000)), TWavMetadata());
    EXPECT_EQ(Read(declare("data", 0xFFFFFFFF)), TWavMetadata());
}

TEST_F(WavMetadata, OtherFilesAreRefused) {
    ExpectRaises<CNullPtrException>(kNoStream, [] { ReadWavMetadata(nullptr); });
    for (const TBytes& bytes : {TBytes(), TBytes(11), Ramp(100), CWavBuilder().Header("RIFF", "AVI ").Build(),
                                CWavBuilder().Header("RIFX", "WAVE").Build()})
        ExpectRaises<CDataFormatException>(kBadHeader, [&] { Read(bytes); });
}

TEST_F(WavMetadata, OddListsOfOthers) {
    TBytes list;
    AppendText(list, "INFOINAM");
    Append32(list, 3);
    AppendText(list, "abc");
    list.push_back(0);
    AppendText(list, "IART");
    Append32(list, 100);
    AppendText(list, "cut");
    const TWavMetadata read = Read(CWavBuilder().Chunk("LIST", list).Raw({0}).Chunk("data", {}).Build());
    ASSERT_EQ(read.info.size(), 2u);
    EXPECT_EQ(read.info[0].text, "abc");
    EXPECT_EQ(read.info[1].text, "cut");
}

TEST_F(WavMetadata, ImpossibleMetadataAreRefused) {
    const auto stream = Make<CMemoryOutputStream>();
    TWavWriterOptions options;
    for (const std::string id : {"", "ABC", "ABCDE", "AB\nD"}) {
        options.metadata.info = {{id, "text"}};
        ExpectRaises<CInvalidParameterException>(kBadId, [&] { CWavWriter(stream.Get(), {}, options); });
    }
    options.metadata.info = {{"INAM", std::string(kMaxWavMetadataChunk, 'x')}};
    ExpectRaises<CInvalidParameterException>(kTooLong, [&] { CWavWriter(stream.Get(), {}, options); });
    options.metadata.info = {};
    options.metadataRoom = kMaxWavMetadataChunk + 1;
    ExpectRaises<CInvalidParameterException>(kTooLong, [&] { CWavWriter(stream.Get(), {}, options); });
    EXPECT_EQ(stream->bytes, TBytes());
}

} // namespace
} // namespace vorlund::test
