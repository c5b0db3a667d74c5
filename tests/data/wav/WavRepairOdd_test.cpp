// Rare files: other formats, fields of 64 bits, very many chunks, more than 4 GiB.
#include "data/file/TemporaryFolder.h"
#include "data/wav/WavFile.h"
#include "support/Failures.h"

#include <vorlund/WavRepair.h>

#include <system_error>

namespace vorlund::test {
namespace {

constexpr const wchar* kMethod = VRL_L("vorlund::RepairWav");
constexpr const wchar* kSource = VRL_L("src/vorlund/data/wav/WavRepair");
constexpr TFailure kBadHeader{kMethod, kSource, 1, VRL_L("Invalid header")};
constexpr TFailure kNoFmtChunk{kMethod, kSource, 2, VRL_L("Cannot find fmt chunk")};
constexpr TFailure kNoRoom{kMethod, kSource, 4,
                           VRL_L("The file needs sizes of 64 bits, and its head has no room for them")};

constexpr std::uint32_t kElsewhere = 0xFFFFFFFF;

TBytes Sizes64(std::uint64_t riff, std::uint64_t data, std::uint64_t frames) {
    TBytes sizes;
    for (const std::uint64_t size : {riff, data, frames}) {
        Append32(sizes, static_cast<std::uint32_t>(size));
        Append32(sizes, static_cast<std::uint32_t>(size >> 32));
    }
    Append32(sizes, 0);
    return sizes;
}

CWavBuilder Builder64(const char* id) {
    return CWavBuilder().Header(id, "WAVE").RiffSize(kElsewhere);
}

TBytes Fact(std::uint32_t frames) {
    TBytes bytes;
    Append32(bytes, frames);
    return bytes;
}

class WavRepairOdd : public CFileTest {
protected:
    TBytes Load() const {
        const std::string text = ReadFile(At("file.wav"));
        return {text.begin(), text.end()};
    }
    void Save(const TBytes& bytes) const { Put("file.wav", std::string(bytes.begin(), bytes.end())); }
    std::string Run(bool isTrial) const {
        std::string text;
        for (const CString& change : RepairWav(ToVorlund(At("file.wav")).c_str(), isTrial).changes)
            text += (text.empty() ? "" : "; ") + Narrow(change.GetBuffer());
        return text;
    }
    std::string Repair(const TBytes& bytes) const {
        Save(bytes);
        const std::string changes = Run(false);
        EXPECT_EQ(Run(false), "") << "once is enough";
        return changes;
    }
    void ExpectRefused(const TFailure& failure, const TBytes& bytes) const {
        Save(bytes);
        ExpectRaises<CDataFormatException>(failure, [this] { Run(false); });
        EXPECT_EQ(Load(), bytes);
    }
    /// Makes the file longer by zeros; false when its file system has no such files.
    bool Grow(std::uint64_t length) const {
        std::error_code refused;
        fs::resize_file(At("file.wav"), length, refused);
        return !refused;
    }
};

TEST_F(WavRepairOdd, OtherFormsOfRiffAreRefused) {
    for (const char* const id : {"RIFF", "RF64", "BW64"})
        ExpectRefused(kBadHeader,
                      CWavBuilder().Header(id, "AVI ").Format({}).Chunk("data", Ramp(40)).Build());
    ExpectRefused(kBadHeader,
                  CWavBuilder().Header("RIFX", "WAVE").Format({}).Chunk("data", Ramp(40)).Build());
}

TEST_F(WavRepairOdd, Bw64StaysBw64) {
    const auto make = [](std::uint64_t riff, std::uint64_t data) {
        return Builder64("BW64")
            .Chunk("ds64", Sizes64(riff, data, data / 4))
            .Format({.channels = 2})
            .Declare("data", kElsewhere, Ramp(40))
            .Build();
    };
    EXPECT_EQ(Repair(make(0, 0)), "RIFF size 0 becomes 112; data size 0 becomes 40");
    EXPECT_EQ(Load(), make(112, 40));
}

TEST_F(WavRepairOdd, SizesOf64BitsCountOnlyWhereTheFieldSaysSo) {
    // The field of 32 bits holds the size: that of the first chunk is not asked.
    EXPECT_EQ(Repair(CWavBuilder()
                         .Header("RF64", "WAVE")
                         .Chunk("ds64", Sizes64(7, 7, 7))
                         .Format({.channels = 2})
                         .Chunk("data", Ramp(40))
                         .Build()),
              "");
    // It is about the sound alone.
    TBytes bytes = Builder64("RF64")
                       .Chunk("ds64", Sizes64(130, 40, 10))
                       .Format({.channels = 2})
                       .Declare("data", kElsewhere, Ramp(40))
                       .Declare("LIST", kElsewhere, Ramp(10))
                       .Build();
    EXPECT_EQ(Repair(bytes), "LIST size 4294967295 becomes 10");
    EXPECT_EQ(Number(Load(), 124, 4), 10u);
}

TEST_F(WavRepairOdd, RoomThatIsTooShortIsNone) {
    EXPECT_EQ(Repair(Builder64("RF64")
                         .Chunk("JUNK", TBytes(26))
                         .Format({.channels = 2})
                         .Declare("data", kElsewhere, Ramp(40))
                         .Build()),
              "RF64 becomes RIFF; RIFF size 4294967295 becomes 110; data size 4294967295 becomes 40");
}

TEST_F(WavRepairOdd, AnRf64WithoutItsSizesGetsThem) {
    const auto make = [](const char* id, const TBytes& room) {
        return CWavBuilder()
            .Header("RF64", "WAVE")
            .Chunk(id, room)
            .Format({.channels = 2})
            .Chunk("data", Ramp(40))
            .Build();
    };
    const TBytes bytes = make("JUNK", TBytes(28));
    EXPECT_EQ(Repair(bytes), "JUNK becomes ds64");
    TBytes good = make("ds64", Sizes64(112, 40, 10));
    good[4] = good[5] = good[6] = good[7] = 0xFF;
    EXPECT_EQ(Load(), good);
}

TEST_F(WavRepairOdd, NumbersOfFramesAreThoseOfPlainSound) {
    const auto make = [](const TWavFormat& format, std::size_t size, const TBytes& fact, std::uint32_t data) {
        return CWavBuilder().Format(format, size).Chunk("fact", fact).Declare("data", data, Ramp(40)).Build();
    };
    const TWavFormat extensible{.tag = 0xFFFE, .channels = 2};
    TBytes record = extensible.Record(40);
    record[24] = 1;
    const auto extended = [&](std::uint32_t frames) {
        return CWavBuilder()
            .Chunk("fmt ", record)
            .Chunk("fact", Fact(frames))
            .Chunk("data", Ramp(40))
            .Build();
    };
    EXPECT_EQ(Repair(extended(0)), "number of frames 0 becomes 10");
    EXPECT_EQ(Load(), extended(10));
    EXPECT_EQ(Repair(make({.tag = 3, .channels = 1, .bits = 32}, 16, Fact(0), 40)),
              "number of frames 0 becomes 10");
    // A number that others meant stays as long as the sound does.
    EXPECT_EQ(Repair(make({.channels = 2}, 16, Fact(9), 40)), "");
    EXPECT_EQ(Repair(make({.channels = 2}, 16, Fact(9), 0)),
              "data size 0 becomes 40; number of frames 9 becomes 10");
    // Nothing is elsewhere in a RIFF.
    EXPECT_EQ(Repair(make({.channels = 2}, 16, Fact(kElsewhere), 0)),
              "data size 0 becomes 40; number of frames 4294967295 becomes 10");
    // Half a field, a format without a GUID or of another kind, and blocks of no size have no such number.
    EXPECT_EQ(Repair(make({.channels = 2}, 16, Ramp(2), 40)), "");
    EXPECT_EQ(Repair(make(extensible, 18, Fact(0), 40)), "");
    EXPECT_EQ(Repair(make({.tag = 2}, 16, Fact(0), 40)), "");
    EXPECT_EQ(Repair(make({.blockAlign = 0}, 16, Fact(0), 40)), "");
    EXPECT_EQ(Repair(make({.blockAlign = 0}, 16, Fact(0), 0)), "data size 0 becomes 40");
}

TEST_F(WavRepairOdd, NumberOfFramesOf64BitsIsElsewhere) {
    const auto make = [](std::uint64_t data, std::uint64_t frames) {
        return Builder64("RF64")
            .Chunk("ds64", Sizes64(124, data, frames))
            .Format({.channels = 2})
            .Chunk("fact", Fact(kElsewhere))
            .Declare("data", kElsewhere, Ramp(40))
            .Build();
    };
    EXPECT_EQ(Repair(make(20, 5)), "data size 20 becomes 40");
    EXPECT_EQ(Load(), make(40, 10));
}

TEST_F(WavRepairOdd, ChunksOfOthersBehindTheSound) {
    CWavBuilder builder;
    builder.Format({}).Chunk("data", Ramp(40));
    // An id that nobody knows is one when its chain ends where the file does, with or without padding.
    for (const bool isPadded : {true, false}) {
        CWavBuilder other = builder;
        other.Chunk("abcd", Ramp(3)).Raw(TBytes(1)).Chunk("efgh", Ramp(5));
        if (isPadded) other.Raw(TBytes(1));
        EXPECT_EQ(Repair(other.Build()), "") << isPadded;
    }
    // Otherwise it is sound that the size does not count.
    EXPECT_EQ(Repair(CWavBuilder(builder).Chunk("abcd", Ramp(4)).Raw(Ramp(6)).Build()),
              "data size 40 becomes 58");
    EXPECT_EQ(Repair(CWavBuilder(builder).Declare("abcd", 100, Ramp(20)).Build()), "data size 40 becomes 68");
    // The characters on both sides of the printable ones are in no id.
    for (const char* const id : {"abc\x1F", "abc\x7F"})
        EXPECT_EQ(Repair(CWavBuilder(builder).Chunk(id, Ramp(4)).Build()), "data size 40 becomes 52");
}

TEST_F(WavRepairOdd, VeryManyChunks) {
    TBytes chunks;
    const auto fill = [&chunks](const char* id, int count) {
        chunks.clear();
        for (int i = 0; i < count; ++i) {
            AppendText(chunks, id);
            Append32(chunks, 0);
        }
    };
    // Each is looked at a few times, not once for each other.
    fill("abcd", 90000);
    EXPECT_EQ(Repair(CWavBuilder().Format({}).Chunk("data", Ramp(40)).Raw(chunks).Build()), "");
    // More are no file.
    fill("abcd", 100001);
    ExpectRefused(kNoFmtChunk, CWavBuilder().Raw(chunks).Format({}).Chunk("data", Ramp(40)).Build());
    EXPECT_EQ(Repair(CWavBuilder().Format({}).Chunk("data", Ramp(40)).Raw(chunks).Build()),
              "data size 40 becomes 800048");
    // Those behind the limit are no part of the file.
    fill("LIST", 100001);
    EXPECT_EQ(Repair(CWavBuilder().Format({}).Chunk("data", Ramp(40)).Raw(chunks).Build()),
              "RIFF size 800084 becomes 800076");
}

TEST_F(WavRepairOdd, MoreThan4GibNeedRoom) {
    constexpr std::uint64_t kSound = 0x100000010;
    Save(CWavBuilder().Format({.channels = 2}).Declare("data", 0, Ramp(4)).RiffSize(0).Build());
    if (!Grow(44 + kSound)) return;
    for (const bool isTrial : {true, false})
        ExpectRaises<CDataFormatException>(kNoRoom, [&] { Run(isTrial); });
    fs::resize_file(At("file.wav"), 48);
    EXPECT_EQ(Load(), CWavBuilder().Format({.channels = 2}).Declare("data", 0, Ramp(4)).RiffSize(0).Build());

    Save(CWavBuilder()
             .Chunk("JUNK", TBytes(28))
             .Format({.channels = 2})
             .Declare("data", 0, Ramp(4))
             .RiffSize(0)
             .Build());
    ASSERT_TRUE(Grow(80 + kSound));
    EXPECT_EQ(Run(false),
              "RIFF becomes RF64; RIFF size 0 becomes 4294967384; data size 0 becomes 4294967312");
    EXPECT_EQ(Run(false), "");
    fs::resize_file(At("file.wav"), 84);
    EXPECT_EQ(Load(), Builder64("RF64")
                          .Chunk("ds64", Sizes64(4294967384, kSound, kSound / 4))
                          .Format({.channels = 2})
                          .Declare("data", kElsewhere, Ramp(4))
                          .Build());
}

TEST_F(WavRepairOdd, AFileOf4GibWhoseSoundIsShorter) {
    // The size of the sound has its field still, that of the file has not.
    constexpr std::uint32_t kSound = 0xFFFFFFF0;
    Save(CWavBuilder()
             .Chunk("JUNK", TBytes(28))
             .Format({.channels = 2})
             .Declare("data", kSound, Ramp(4))
             .RiffSize(kElsewhere)
             .Build());
    if (!Grow(80 + std::uint64_t{kSound})) return;
    EXPECT_EQ(Run(false), "RIFF becomes RF64; RIFF size 4294967295 becomes 4294967352");
    EXPECT_EQ(Run(false), "");
    fs::resize_file(At("file.wav"), 84);
    EXPECT_EQ(Load(), Builder64("RF64")
                          .Chunk("ds64", Sizes64(4294967352, kSound, kSound / 4))
                          .Format({.channels = 2})
                          .Declare("data", kElsewhere, Ramp(4))
                          .Build());
}

} // namespace
} // namespace vorlund::test
