// Sizes that are wrong.
#include "data/file/TemporaryFolder.h"
#include "data/wav/Metadata.h"
#include "data/wav/WavFile.h"
#include "support/Failures.h"

#include <vorlund/WavRepair.h>

namespace vorlund::test {
namespace {

constexpr const wchar* kMethod = VRL_L("vorlund::RepairWav");
constexpr const wchar* kSource = VRL_L("src/vorlund/data/wav/WavRepair");
constexpr TFailure kBadHeader{kMethod, kSource, 1, VRL_L("Invalid header")};
constexpr TFailure kNoFmtChunk{kMethod, kSource, 2, VRL_L("Cannot find fmt chunk")};
constexpr TFailure kNoDataChunk{kMethod, kSource, 3, VRL_L("Cannot find data chunk")};

class WavRepair : public CFileTest {
protected:
    TBytes Load() const {
        const std::string text = ReadFile(At("file.wav"));
        return {text.begin(), text.end()};
    }
    /// Repairs a file; gives the changes, one after the other.
    std::string Repair(const TBytes& bytes) const {
        Put("file.wav", std::string(bytes.begin(), bytes.end()));
        const std::string trial = Run(true);
        EXPECT_EQ(Load(), bytes) << "a trial changes nothing";
        const std::string changes = Run(false);
        EXPECT_EQ(trial, changes);
        EXPECT_EQ(Run(false), "") << "once is enough";
        return changes;
    }

private:
    std::string Run(bool isTrial) const {
        std::string text;
        for (const CString& change : RepairWav(ToVorlund(At("file.wav")).c_str(), isTrial).changes)
            text += (text.empty() ? "" : "; ") + Narrow(change.GetBuffer());
        return text;
    }
};

CWavBuilder Builder() {
    return CWavBuilder().Format({.channels = 2});
}

TEST_F(WavRepair, GoodFilesStay) {
    TWavWriterOptions full;
    full.metadata = FullMetadata();
    for (const std::size_t size : {0, 1, 2, 3, 4, 400}) {
        EXPECT_EQ(Repair(WriteWav({WAV_SAMPLE_16BIT, 2, 44100}, Ramp(size))), "");
        EXPECT_EQ(Repair(WriteWav({WAV_SAMPLE_FLOAT, 2, 44100}, Ramp(size), full)), "");
        EXPECT_EQ(Repair(Builder().Chunk("data", Ramp(size)).Build()), "");
        EXPECT_EQ(
            Repair(Builder().Chunk("data", Ramp(size)).Raw(TBytes(size % 2)).Chunk("LIST", Ramp(7)).Build()),
            "");
    }
}

TEST_F(WavRepair, SizesOfTheSound) {
    const TBytes sound = Ramp(400);
    const TBytes good = Builder().Chunk("data", sound).Build();
    for (const std::uint32_t size :
         {0u, 4u, 100u, 392u, 404u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFEu, 0xFFFFFFFFu}) {
        const std::string changes = Repair(
            Builder().Declare("data", size, sound).RiffSize(size < 0xFFFF0000 ? size + 36 : size).Build());
        EXPECT_NE(changes.find("data size " + std::to_string(size) + " becomes 400"), std::string::npos);
        EXPECT_EQ(Load(), good);
    }
}

TEST_F(WavRepair, SizesOfTheFile) {
    const TBytes sound = Ramp(400);
    const TBytes good = Builder().Chunk("data", sound).Build();
    for (const std::uint32_t size : {0u, 4u, 36u, 435u, 437u, 0xFFFFFFFFu}) {
        EXPECT_EQ(Repair(Builder().Chunk("data", sound).RiffSize(size).Build()),
                  "RIFF size " + std::to_string(size) + " becomes 436");
        EXPECT_EQ(Load(), good);
    }
    const TBytes tagged = Builder().Chunk("data", sound).Chunk("LIST", Ramp(10)).Build();
    EXPECT_EQ(Repair(Builder().Chunk("data", sound).Chunk("LIST", Ramp(10)).RiffSize(436).Build()),
              "RIFF size 436 becomes 454");
    EXPECT_EQ(Load(), tagged);
}

TEST_F(WavRepair, FilesThatWereCutOff) {
    const TBytes good = Builder().Chunk("data", Ramp(400)).Build();
    for (std::size_t size = 44; size < good.size(); ++size) {
        const TBytes cut(good.begin(), good.begin() + static_cast<std::ptrdiff_t>(size));
        Repair(cut);
        const TBytes mended = Load();
        const std::size_t sound = (size - 44) / 4 * 4;
        EXPECT_EQ(Number(mended, 40, 4), sound);
        EXPECT_EQ(Number(mended, 4, 4), 36 + sound);
        ASSERT_EQ(mended.size(), cut.size());
        EXPECT_TRUE(std::equal(cut.begin() + 44, cut.end(), mended.begin() + 44));
    }
}

TEST_F(WavRepair, ALastChunkThatWasCutOff) {
    TBytes bytes = Builder().Chunk("data", Ramp(8)).Chunk("LIST", Ramp(20)).Build();
    bytes.resize(bytes.size() - 10);
    EXPECT_EQ(Repair(bytes), "LIST size 20 becomes 10; RIFF size 72 becomes 62");
    EXPECT_EQ(Load(), Builder().Chunk("data", Ramp(8)).Chunk("LIST", Ramp(10)).Build());
}

TEST_F(WavRepair, OddSoundGetsItsPadding) {
    const TBytes bytes = CWavBuilder().Format({.bits = 8}).Declare("data", 0, Ramp(7)).RiffSize(0).Build();
    EXPECT_EQ(Repair(bytes), "RIFF size 0 becomes 44; data size 0 becomes 7; file size 51 becomes 52");
    EXPECT_EQ(Load(), CWavBuilder().Format({.bits = 8}).Chunk("data", Ramp(7)).Raw({0}).Build());
}

TEST_F(WavRepair, TagsOfOthersBehindTheFileAreNoSound) {
    TBytes bytes = Builder().Chunk("data", Ramp(40)).Build();
    const std::string tag = "TAG" + std::string(125, 'x');
    bytes.insert(bytes.end(), tag.begin(), tag.end());
    EXPECT_EQ(Repair(bytes), "");
}

TEST_F(WavRepair, NumbersOfFrames) {
    TBytes bytes = WriteWav({WAV_SAMPLE_FLOAT, 2, 44100}, Ramp(80));
    const TBytes good = bytes;
    for (const std::size_t at : {4, 82, 90}) {
        bytes[at] = bytes[at + 1] = bytes[at + 2] = bytes[at + 3] = 0;
    }
    EXPECT_EQ(Repair(bytes),
              "RIFF size 0 becomes 166; data size 0 becomes 80; number of frames 0 becomes 10");
    EXPECT_EQ(Load(), good);
}

TEST_F(WavRepair, ARepairThatWasCutShortIsGoneOnWith) {
    const auto build = [](std::uint32_t riff, std::uint32_t data, std::uint32_t frames) {
        TBytes fact;
        Append32(fact, frames);
        return CWavBuilder()
            .RiffSize(riff)
            .Format({.bits = 8})
            .Chunk("fact", fact)
            .Declare("data", data, Ramp(7));
    };
    const TBytes good = build(56, 7, 7).Raw({0}).Build();
    // In the order in which it writes: the number of frames, the head, the sound, its padding.
    EXPECT_EQ(Repair(build(0, 4, 4).Build()),
              "RIFF size 0 becomes 56; data size 4 becomes 7; file size 63 becomes "
              "64; number of frames 4 becomes 7");
    EXPECT_EQ(Load(), good);
    for (const CWavBuilder& builder : {build(0, 4, 7), build(56, 4, 7), build(56, 7, 7)}) {
        Repair(builder.Build());
        EXPECT_EQ(Load(), good);
    }
}

TEST_F(WavRepair, LargeSizesOfASmallFile) {
    const auto make = [](std::uint32_t riff, std::uint32_t data, std::uint32_t declared, const char* first) {
        TBytes sizes;
        for (const std::uint32_t size : {riff, 0u, data, 0u, data / 4, 0u, 0u}) Append32(sizes, size);
        return CWavBuilder()
            .Header("RF64", "WAVE")
            .RiffSize(0xFFFFFFFF)
            .Chunk(first, sizes)
            .Format({.channels = 2})
            .Declare("data", declared, Ramp(40))
            .Build();
    };
    const TBytes good = make(112, 40, 0xFFFFFFFF, "ds64");
    EXPECT_EQ(Repair(good), "");
    EXPECT_EQ(Repair(make(0, 0, 0xFFFFFFFF, "ds64")), "RIFF size 0 becomes 112; data size 0 becomes 40");
    EXPECT_EQ(Load(), good);
    EXPECT_EQ(Repair(make(500, 400, 0xFFFFFFFF, "ds64")),
              "RIFF size 500 becomes 112; data size 400 becomes 40");
    EXPECT_EQ(Load(), good);
    // Killed between the two writes of a header.
    EXPECT_EQ(Repair(make(112, 40, 40, "ds64")), "");
    Repair(make(0, 0, 0xFFFFFFFF, "JUNK"));
    EXPECT_EQ(Load(), good);
}

TEST_F(WavRepair, WithoutItsSizesAnRf64BecomesARiff) {
    const TBytes bytes = CWavBuilder()
                             .Header("RF64", "WAVE")
                             .RiffSize(0xFFFFFFFF)
                             .Format({.channels = 2})
                             .Declare("data", 0xFFFFFFFF, Ramp(40))
                             .Build();
    EXPECT_EQ(Repair(bytes),
              "RF64 becomes RIFF; RIFF size 4294967295 becomes 76; data size 4294967295 becomes 40");
    EXPECT_EQ(Load(), Builder().Chunk("data", Ramp(40)).Build());
}

TEST_F(WavRepair, WhatCannotBeMendedStays) {
    const auto refuse = [this](const TFailure& failure, const TBytes& bytes) {
        const fs::path path = Put("file.wav", std::string(bytes.begin(), bytes.end()));
        for (const bool isTrial : {true, false})
            ExpectRaises<CDataFormatException>(failure, [&] { RepairWav(ToVorlund(path).c_str(), isTrial); });
        EXPECT_EQ(Load(), bytes);
    };
    refuse(kBadHeader, {});
    refuse(kBadHeader, TBytes(11));
    refuse(kBadHeader, Ramp(1000));
    refuse(kNoFmtChunk, CWavBuilder().Chunk("data", Ramp(40)).Build());
    refuse(kNoFmtChunk, CWavBuilder().Chunk("fmt ", Ramp(8)).Chunk("data", Ramp(40)).Build());
    refuse(kNoDataChunk, CWavBuilder().Format({}).Build());
    refuse(kNoDataChunk, CWavBuilder().Format({}).Declare("LIST", 0xFFFFFFFF, Ramp(40)).Build());
    EXPECT_THROW(RepairWav(ToVorlund(At("missing.wav")).c_str()), CFileAccessException);
    EXPECT_THROW(RepairWav(ToVorlund(At(".")).c_str(), true), CFileAccessException);
}

} // namespace
} // namespace vorlund::test
