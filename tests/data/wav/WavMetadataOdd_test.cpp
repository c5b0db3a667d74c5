// Metadata as others write them, streams that lie, and files in which there is no place.
#include "data/file/TemporaryFolder.h"
#include "data/wav/Metadata.h"
#include "data/wav/WavFile.h"
#include "support/Failures.h"
#include "support/LibraryScope.h"

#include <system_error>
#include <tuple>

namespace vorlund::test {
namespace {

constexpr TFailure kBadHeader{VRL_L("vorlund::ReadWavMetadata"), VRL_L("src/vorlund/data/wav/WavMetadata"), 2,
                              VRL_L("Invalid header")};
constexpr const wchar* kEdit = VRL_L("vorlund::EditWavMetadata");
constexpr const wchar* kEditSource = VRL_L("src/vorlund/data/wav/WavMetadataEdit");
constexpr TFailure kBadSizes{kEdit, kEditSource, 2, VRL_L("The sizes of the chunks are wrong")};
constexpr TFailure kTooLong{kEdit, kEditSource, 4, VRL_L("The metadata are too long")};

void AppendChunk(TBytes& bytes, const char* id, const TBytes& body) {
    AppendText(bytes, id);
    Append32(bytes, static_cast<std::uint32_t>(body.size()));
    bytes.insert(bytes.end(), body.begin(), body.end());
    bytes.resize(bytes.size() + body.size() % 2);
}

TBytes Bytes(const std::string& text) {
    return {text.begin(), text.end()};
}

TBytes Info(const std::string& title) {
    TBytes list = Bytes("INFO");
    AppendChunk(list, "INAM", Bytes(title));
    return list;
}

/// Points, each with its id as its position.
TBytes Cues(const std::vector<std::uint32_t>& ids) {
    TBytes bytes;
    Append32(bytes, static_cast<std::uint32_t>(ids.size()));
    for (const std::uint32_t id : ids) {
        Append32(bytes, id);
        Append32(bytes, id);
        AppendText(bytes, "data");
        for (const std::uint32_t field : {0u, 0u, id}) Append32(bytes, field);
    }
    return bytes;
}

TBytes Label(std::uint32_t id, const std::string& text) {
    TBytes bytes;
    Append32(bytes, id);
    AppendText(bytes, text);
    bytes.push_back(0);
    return bytes;
}

TBytes Region(std::uint32_t id, std::uint32_t length, const char* purpose, std::size_t size = 20) {
    TBytes bytes;
    Append32(bytes, id);
    Append32(bytes, length);
    AppendText(bytes, purpose);
    bytes.resize(size);
    return bytes;
}

CRefPtr<CFaultyInputStream> Stream(const TBytes& bytes) {
    const auto stream = Make<CFaultyInputStream>();
    stream->bytes = bytes;
    return stream;
}

class WavMetadataOdd : public testing::Test {
protected:
    static TWavMetadata Read(const TBytes& bytes) { return ReadWavMetadata(Stream(bytes).Get()); }

    CLibraryScope library_;
};

TEST_F(WavMetadataOdd, EachFormOfTheHead) {
    for (const char* const id : {"RIFF", "RF64", "BW64"}) {
        EXPECT_EQ(Read(CWavBuilder().Header(id, "WAVE").Chunk("LIST", Info("title")).Build()),
                  Titled("title"));
        ExpectRaises<CDataFormatException>(kBadHeader,
                                           [&] { Read(CWavBuilder().Header(id, "AVI ").Build()); });
    }
}

TEST_F(WavMetadataOdd, SizesOf64BitsThatAreNone) {
    // Too short for its fields, it is a chunk like others; cut off, it is the last.
    EXPECT_EQ(Read(CWavBuilder().Chunk("ds64", Ramp(20)).Chunk("LIST", Info("title")).Build()),
              Titled("title"));
    EXPECT_EQ(Read(CWavBuilder().Declare("ds64", 28, Ramp(20)).Build()), TWavMetadata());
}

TEST_F(WavMetadataOdd, ChunksThatAreTooLongAreLeftOut) {
    EXPECT_EQ(Read(CWavBuilder()
                       .Chunk("LIST", TBytes(kMaxWavMetadataChunk + 2))
                       .Chunk("LIST", Info("title"))
                       .Build()),
              Titled("title"));
}

TEST_F(WavMetadataOdd, StreamsThatLie) {
    const TBytes bytes =
        CWavBuilder().Chunk("bext", TBytes(100)).Chunk("data", Ramp(40)).Chunk("LIST", Info("title")).Build();
    // It says that it has read more than there was room for: nothing of that is taken.
    const auto boasting = Stream(bytes);
    boasting->failAt = 20;
    boasting->fail = [&boasting] { boasting->exaggeration = 1 << 20; };
    EXPECT_EQ(ReadWavMetadata(boasting.Get()), TWavMetadata());
    // It says that it is shorter than its position.
    for (const std::int64_t length : {0, 130, 150}) {
        const auto shrunk = Stream(bytes);
        shrunk->claimedLength = length;
        EXPECT_EQ(ReadWavMetadata(shrunk.Get()), TWavMetadata()) << length;
    }
}

TEST_F(WavMetadataOdd, ListsThatEndEarly) {
    TBytes list = Info("title");
    AppendChunk(list, "A\nBC", Bytes("no id"));
    AppendChunk(list, "IART", Bytes("behind"));
    EXPECT_EQ(Read(CWavBuilder().Chunk("LIST", list).Build()), Titled("title"));
    EXPECT_EQ(Read(CWavBuilder().Chunk("LIST", Bytes("INFO")).Chunk("LIST", Bytes("INF")).Build()),
              TWavMetadata());
}

TEST_F(WavMetadataOdd, TheFirstBroadcastRecordCounts) {
    TBytes record(602);
    const auto titled = [&record](char character) {
        record[0] = static_cast<std::uint8_t>(character);
        return record;
    };
    const TWavMetadata read = Read(CWavBuilder()
                                       .Chunk("bext", TBytes(600, 'x'))
                                       .Chunk("bext", titled('a'))
                                       .Chunk("bext", titled('b'))
                                       .Build());
    ASSERT_TRUE(read.broadcast);
    EXPECT_EQ(read.broadcast->description, "a");
}

TEST_F(WavMetadataOdd, PointsOfOneIdAreAllKept) {
    TBytes labels = Bytes("adtl");
    AppendChunk(labels, "labl", Label(5, "five"));
    const TWavMetadata read =
        Read(CWavBuilder().Chunk("cue ", Cues({5, 6, 5})).Chunk("LIST", labels).Build());
    ASSERT_EQ(read.cues.size(), 3u);
    EXPECT_EQ(read.cues[0].label, "five");
    EXPECT_EQ(read.cues[1].id, 6u);
    EXPECT_EQ(read.cues[2].id, 5u);
    EXPECT_EQ(read.cues[2].position, 5u);
    EXPECT_EQ(read.cues[2].label, "");
}

TEST_F(WavMetadataOdd, LabelsBeforeAndWithoutTheirPoints) {
    TBytes labels = Bytes("adtl");
    AppendChunk(labels, "labl", Label(9, "nowhere"));
    AppendChunk(labels, "labl", Label(2, "second"));
    AppendChunk(labels, "note", Label(3, ""));
    AppendChunk(labels, "ltxt", Region(1, 70, "rgn "));
    AppendChunk(labels, "ltxt", Region(4, 0, "rgn "));
    const TWavMetadata read = Read(CWavBuilder().Chunk("LIST", labels).Chunk("cue ", Cues({1, 2})).Build());
    ASSERT_EQ(read.cues.size(), 3u) << "what says nothing makes no point";
    EXPECT_EQ(read.cues[0].length, 70u);
    EXPECT_EQ(read.cues[1].label, "second");
    EXPECT_EQ(read.cues[2].id, 9u);
    EXPECT_EQ(read.cues[2].label, "nowhere");
}

class WavMetadataOddFiles : public CFileTest {
protected:
    void Save(const TBytes& bytes) const { Put("file.wav", std::string(bytes.begin(), bytes.end())); }
    TBytes Load() const {
        const std::string text = ReadFile(At("file.wav"));
        return {text.begin(), text.end()};
    }
    void Edit(const TWavMetadata& metadata) const {
        EditWavMetadata(ToVorlund(At("file.wav")).c_str(), metadata);
    }
    TWavMetadata Read() const { return ReadWavMetadata(Stream(Load()).Get()); }
    void ExpectRefused(const TBytes& bytes, const TWavMetadata& metadata = Titled("title")) const {
        Save(bytes);
        ExpectRaises<CDataFormatException>(kBadSizes, [&] { Edit(metadata); });
        EXPECT_EQ(Load(), bytes);
    }
};

TEST_F(WavMetadataOddFiles, EveryKindOfFreeChunkIsFilled) {
    for (const char* const id : {"JUNK", "junk", "PAD ", "FLLR"}) {
        Save(CWavBuilder().Format({}).Chunk(id, TBytes(100)).Chunk("data", Ramp(40)).Build());
        Edit(Titled("title"));
        EXPECT_EQ(Ids(Load()), "fmt ,LIST,JUNK,data") << id;
        EXPECT_EQ(Load().size(), 192u);
    }
}

TEST_F(WavMetadataOddFiles, RoomForLargeSizesIsJunkAtTheBeginning) {
    for (const auto& [id, size, expected] :
         {std::tuple{"JUNK", 100, "JUNK,fmt ,data,LIST"}, std::tuple{"JUNK", 26, "LIST,JUNK,fmt ,data"},
          std::tuple{"PAD ", 100, "LIST,JUNK,fmt ,data"}}) {
        Save(CWavBuilder()
                 .Chunk(id, TBytes(static_cast<std::size_t>(size)))
                 .Format({})
                 .Chunk("data", Ramp(40))
                 .Build());
        Edit(Titled("abcde"));
        EXPECT_EQ(Ids(Load()), expected) << id << size;
        EXPECT_EQ(Read(), Titled("abcde"));
    }
}

TEST_F(WavMetadataOddFiles, LabelsOfOtherKindsStay) {
    TBytes labels = Bytes("adtl");
    AppendChunk(labels, "labl", Bytes("ab"));
    AppendChunk(labels, "ltxt", Region(1, 70, "scrp"));
    AppendChunk(labels, "ltxt", Region(1, 70, "rgn ", 24));
    Save(CWavBuilder().Format({}).Chunk("data", Ramp(40)).Chunk("LIST", labels).Build());
    EXPECT_EQ(Read(), TWavMetadata());
    TWavMetadata metadata;
    metadata.cues = {{1, 3, 0, "label", ""}};
    Edit(metadata);
    EXPECT_EQ(Read(), metadata);
    const TBytes bytes = Load();
    const std::string text(bytes.begin(), bytes.end());
    EXPECT_NE(text.find("labl\x02"), std::string::npos);
    EXPECT_NE(text.find("scrp"), std::string::npos);
    EXPECT_NE(text.find(std::string("rgn ") + std::string(12, '\0')), std::string::npos);
}

TEST_F(WavMetadataOddFiles, WhatIsNotUnderstoodStays) {
    const TBytes more = Ramp(6, 90);
    Save(CWavBuilder()
             .Chunk("fmt ", Ramp(8))
             .Chunk("data", Ramp(40))
             .Chunk("data", more)
             .Chunk("LIST", Bytes("ab"))
             .Chunk("LIST", TBytes(kMaxWavMetadataChunk + 2))
             .Build());
    Edit(Titled("title"));
    EXPECT_EQ(Ids(Load()), "fmt ,data,data,LIST,LIST,LIST");
    EXPECT_EQ(Body(Load(), "data"), Ramp(40));
    EXPECT_EQ(Read(), Titled("title"));
}

TEST_F(WavMetadataOddFiles, FilesWithoutAPlaceStay) {
    const TBytes good = PlainWav({.bits = 8}, Ramp(60));
    TBytes tailed = good;
    tailed.insert(tailed.end(), 20, 'x');
    ExpectRefused(tailed, FullMetadata());
    // More than an edit that ended early can have left there.
    tailed = good;
    tailed.resize(good.size() + kMaxWavMetadataChunk + 100);
    ExpectRefused(tailed, FullMetadata());
    // The last byte of the sound and its padding are missing.
    TBytes cut = PlainWav({.bits = 8}, Ramp(5));
    cut.pop_back();
    ExpectRefused(cut);
    // Inside, what is no chunk, and one that is longer than the file.
    ExpectRefused(CWavBuilder().Format({}).Chunk("data", Ramp(40)).Raw(TBytes(8)).Build());
    ExpectRefused(CWavBuilder().Format({}).Chunk("data", Ramp(40)).Declare("last", 11, Ramp(10)).Build());
    TBytes chunks;
    for (int i = 0; i < 100001; ++i) AppendChunk(chunks, "abcd", {});
    ExpectRefused(CWavBuilder().Format({}).Chunk("data", Ramp(40)).Raw(chunks).Build());
}

TEST_F(WavMetadataOddFiles, MetadataThatAreTooLongAreRefused) {
    const TBytes good = PlainWav({}, Ramp(40));
    Save(good);
    ExpectRaises<CInvalidParameterException>(
        kTooLong, [this] { Edit(Titled(std::string(kMaxWavMetadataChunk, 'x'))); });
    EXPECT_EQ(Load(), good);
}

TEST_F(WavMetadataOddFiles, AFileThatReaches4GibNeedsRoom) {
    constexpr std::uint32_t kSound = 0xFFFFFF80;
    constexpr std::uint32_t kMore = 222;
    const TWavMetadata metadata = Titled(std::string(200, 'x'));
    const auto save = [this](CWavBuilder builder, std::uint32_t head) {
        Save(builder.Format({.channels = 2})
                 .Declare("data", kSound, Ramp(4))
                 .RiffSize(head + kSound - 8)
                 .Build());
        std::error_code refused;
        fs::resize_file(At("file.wav"), head + std::uint64_t{kSound}, refused);
        return !refused;
    };
    // Not every file system has such files.
    if (!save(CWavBuilder(), 44)) return;
    ExpectRaises<CInvalidParameterException>(kTooLong, [&] { Edit(metadata); });
    EXPECT_EQ(fs::file_size(At("file.wav")), 44 + std::uint64_t{kSound});

    ASSERT_TRUE(save(CWavBuilder().Chunk("JUNK", TBytes(28)), 80));
    Edit(metadata);
    EXPECT_EQ(fs::file_size(At("file.wav")), 80 + std::uint64_t{kSound} + kMore);
    fs::resize_file(At("file.wav"), 84);
    const std::uint64_t riff = 72 + std::uint64_t{kSound} + kMore;
    const TBytes bytes = Load();
    EXPECT_EQ(Text(bytes, 0, 4) + Text(bytes, 8, 8), "RF64WAVEds64");
    EXPECT_EQ(Number(bytes, 4, 4), 0xFFFFFFFFu);
    EXPECT_EQ(Number(bytes, 20, 8), riff);
    EXPECT_EQ(Number(bytes, 28, 8), kSound);
    EXPECT_EQ(Number(bytes, 36, 8), kSound / 4);
}

} // namespace
} // namespace vorlund::test
