// Metadata changed in a file.
#include "data/file/TemporaryFolder.h"
#include "data/wav/Metadata.h"
#include "data/wav/WavFile.h"
#include "support/Failures.h"

#include <random>

namespace vorlund::test {
namespace {

constexpr const wchar* kMethod = VRL_L("vorlund::EditWavMetadata");
constexpr const wchar* kSource = VRL_L("src/vorlund/data/wav/WavMetadataEdit");
constexpr TFailure kBadHeader{kMethod, kSource, 1, VRL_L("Invalid header")};
constexpr TFailure kBadSizes{kMethod, kSource, 2, VRL_L("The sizes of the chunks are wrong")};
constexpr TFailure kBadId{kMethod, kSource, 3, VRL_L("An id has not four characters")};

class WavMetadataEdit : public CFileTest {
protected:
    fs::path Save(const TBytes& bytes) const {
        return Put("file.wav", std::string(bytes.begin(), bytes.end()));
    }
    TBytes Load() const {
        const std::string text = ReadFile(At("file.wav"));
        return {text.begin(), text.end()};
    }
    void Edit(const TWavMetadata& metadata) const {
        EditWavMetadata(ToVorlund(At("file.wav")).c_str(), metadata);
    }
    TWavMetadata Read() const {
        const auto stream = Make<CMemoryInputStream>();
        stream->bytes = Load();
        return ReadWavMetadata(stream.Get());
    }
};

std::size_t DataAt(const TBytes& bytes) {
    for (const TFoundChunk& chunk : ReadChunks(bytes)) {
        if (chunk.id == "data") return chunk.begin;
    }
    return 0;
}

TWavWriterOptions With(const TWavMetadata& metadata, std::uint32_t room = 0) {
    TWavWriterOptions options;
    options.metadata = metadata;
    options.metadataRoom = room;
    return options;
}

TEST_F(WavMetadataEdit, SoundStaysWhereItIs) {
    std::mt19937 random(1);
    const auto number = [&random](int most) { return std::uniform_int_distribution<int>(0, most)(random); };
    for (int file = 0; file < 30; ++file) {
        const TBytes sound = Ramp(static_cast<std::size_t>(number(50)));
        const auto room = static_cast<std::uint32_t>(number(1) * number(1500));
        Save(WriteWav({WAV_SAMPLE_8BIT, 1, 8000}, sound,
                      With(number(1) ? FullMetadata() : TWavMetadata(), room)));
        const std::size_t place = DataAt(Load());
        for (int step = 0; step < 12; ++step) {
            TWavMetadata metadata = FullMetadata();
            metadata.info[0].text = std::string(static_cast<std::size_t>(number(60)), 'x');
            metadata.broadcast->codingHistory = std::string(static_cast<std::size_t>(number(60)), 'y');
            metadata.cues.resize(static_cast<std::size_t>(number(3)));
            if (number(2) == 0) metadata.info.clear();
            if (number(2) == 0) metadata.broadcast.reset();
            Edit(metadata);
            const TBytes bytes = Load();
            ASSERT_EQ(Read(), metadata) << file << " " << step;
            ASSERT_EQ(DataAt(bytes), place);
            ASSERT_EQ(Body(bytes, "data"), sound);
        }
    }
}

TEST_F(WavMetadataEdit, WhatIsEqualIsNotWritten) {
    const TBytes bytes = WriteWav({WAV_SAMPLE_8BIT, 1, 8000}, Ramp(3), With(FullMetadata()));
    Save(bytes);
    Edit(FullMetadata());
    EXPECT_EQ(Load(), bytes);
}

TEST_F(WavMetadataEdit, FreeRoomIsUsedBeforeTheEnd) {
    Save(WriteWav({WAV_SAMPLE_8BIT, 1, 8000}, Ramp(3), With({}, 200)));
    const std::size_t size = Load().size();
    Edit(Titled("title"));
    EXPECT_EQ(Ids(Load()), "JUNK,fmt ,LIST,JUNK,data");
    Edit(Titled("another title"));
    EXPECT_EQ(Load().size(), size);
    Edit(Titled(std::string(300, 'x')));
    EXPECT_EQ(Ids(Load()), "JUNK,fmt ,JUNK,JUNK,data,LIST");
    // The room for large sizes is no free room.
    EXPECT_EQ(Number(Load(), 16, 4), 28u);
}

TEST_F(WavMetadataEdit, TheEndGrowsWhereItIsFree) {
    Save(WriteWav({WAV_SAMPLE_8BIT, 1, 8000}, Ramp(4), Small()));
    for (std::size_t length = 1; length < 40; ++length) {
        Edit(Titled(std::string(length, 'x')));
        EXPECT_EQ(Read(), Titled(std::string(length, 'x')));
        // At most a free chunk more, or what was too little for one.
        EXPECT_LT(Load().size(), 44u + 4 + 20 + length + 2 + 16);
    }
    Edit({});
    EXPECT_EQ(Read(), TWavMetadata());
    EXPECT_EQ(Body(Load(), "data"), Ramp(4));
}

TEST_F(WavMetadataEdit, OtherChunksAndLabelsStay) {
    TBytes labels;
    AppendText(labels, "adtlfile");
    Append32(labels, 8);
    AppendText(labels, "12345678");
    const TBytes cues = Body(WriteWav({}, {}, With(FullMetadata())), "cue ");
    Save(CWavBuilder()
             .Format({.bits = 8})
             .Chunk("odd ", Ramp(3))
             .Raw({0})
             .Chunk("cue ", cues)
             .Chunk("data", Ramp(5))
             .Raw({0})
             .Chunk("LIST", labels)
             .Chunk("last", Ramp(6))
             .Build());
    Edit(FullMetadata());
    EXPECT_EQ(Read(), FullMetadata());
    const TBytes bytes = Load();
    EXPECT_EQ(Body(bytes, "odd "), Ramp(3));
    EXPECT_EQ(Body(bytes, "last"), Ramp(6));
    EXPECT_EQ(Body(bytes, "data"), Ramp(5));
    const std::string text(bytes.begin(), bytes.end());
    EXPECT_NE(text.rfind("file\x08"), std::string::npos);
    EXPECT_GT(text.rfind("file\x08"), text.find("last"));
}

TEST_F(WavMetadataEdit, PaddingThatIsMissingIsAdded) {
    Save(CWavBuilder().Format({.bits = 8}).Chunk("data", Ramp(5)).Build());
    Edit(Titled("title"));
    EXPECT_EQ(Ids(Load()), "fmt ,data,LIST");
    EXPECT_EQ(Body(Load(), "data"), Ramp(5));
    EXPECT_EQ(Read(), Titled("title"));
}

TEST_F(WavMetadataEdit, WhatAnEditThatWasCutShortLeavesBehindIsNothing) {
    const TBytes good = WriteWav({WAV_SAMPLE_8BIT, 1, 8000}, Ramp(5), Small());
    // Zeros; and the head of free room, with no size that counts yet.
    for (const bool hasHead : {false, true}) {
        for (const std::size_t size : {1, 7, 8, 100, 5000}) {
            TBytes bytes = good;
            TBytes rest(size);
            if (hasHead && size >= 8) {
                rest.clear();
                AppendText(rest, "JUNK");
                Append32(rest, static_cast<std::uint32_t>(size - 8));
                rest.resize(size);
            }
            bytes.insert(bytes.end(), rest.begin(), rest.end());
            Save(bytes);
            Edit(FullMetadata());
            EXPECT_EQ(Read(), FullMetadata());
            TBytes now = Load();
            EXPECT_TRUE(std::equal(good.begin() + 40, good.end(), now.begin() + 40));
            // What is left of it may be behind the file still.
            now.resize(Number(now, 4, 4) + 8);
            EXPECT_EQ(Body(now, "data"), Ramp(5));
        }
    }
}

TEST_F(WavMetadataEdit, LargeFilesToo) {
    // An RF64 as small as a test: its sizes are those of the first chunk.
    CWavBuilder builder;
    TBytes sizes;
    Append32(sizes, 4 + 36 + 24 + 8 + 6);
    Append32(sizes, 0);
    Append32(sizes, 6);
    Append32(sizes, 0);
    Append32(sizes, 6);
    Append32(sizes, 0);
    Append32(sizes, 0);
    Save(builder.Header("RF64", "WAVE")
             .RiffSize(0xFFFFFFFF)
             .Chunk("ds64", sizes)
             .Format({.bits = 8})
             .Declare("data", 0xFFFFFFFF, Ramp(6))
             .Build());
    Edit(Titled("title"));
    const TBytes bytes = Load();
    EXPECT_EQ(Text(bytes, 0, 4), "RF64");
    EXPECT_EQ(Number(bytes, 4, 4), 0xFFFFFFFFu);
    EXPECT_EQ(Number(bytes, 20, 8), bytes.size() - 8);
    EXPECT_EQ(Number(bytes, 28, 8), 6u);
    EXPECT_EQ(Number(bytes, 36, 8), 6u);
    EXPECT_EQ(Read(), Titled("title"));
    EXPECT_EQ(Text(bytes, 80, 6), std::string("\0\1\2\3\4\5", 6));
}

TEST_F(WavMetadataEdit, WrongFilesAreRefusedAndStay) {
    const TBytes good = PlainWav({.bits = 8}, Ramp(60));
    const auto refuse = [this](const TFailure& failure, const TBytes& bytes) {
        Save(bytes);
        ExpectRaises<CDataFormatException>(failure, [this] { Edit(Titled("title")); });
        EXPECT_EQ(Load(), bytes);
    };
    refuse(kBadHeader, {});
    refuse(kBadHeader, Ramp(100));
    refuse(kBadSizes, TBytes(good.begin(), good.end() - 10));
    TBytes longer = good;
    longer.insert(longer.end(), 20, 'x');
    refuse(kBadSizes, longer);
    refuse(kBadSizes, CWavBuilder().Format({.bits = 8}).Declare("data", 0, Ramp(60)).Build());
    refuse(kBadSizes, CWavBuilder().Format({.bits = 8}).Declare("data", 0xFFFFFFFF, Ramp(60)).Build());
    refuse(kBadSizes, CWavBuilder().Format({.bits = 8}).Build());
    refuse(kBadSizes,
           CWavBuilder().Header("RF64", "WAVE").Format({.bits = 8}).Chunk("data", Ramp(6)).Build());
    Save(good);
    TWavMetadata metadata;
    metadata.info = {{"x", "text"}};
    ExpectRaises<CInvalidParameterException>(kBadId, [&] { Edit(metadata); });
    EXPECT_EQ(Load(), good);
    EXPECT_THROW(EditWavMetadata(ToVorlund(At("missing.wav")).c_str(), {}), CFileAccessException);
}

} // namespace
} // namespace vorlund::test
