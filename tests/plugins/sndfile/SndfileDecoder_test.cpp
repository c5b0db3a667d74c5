// What the plug-in makes of whole files, compared with what libsndfile itself reads in them.
#include "plugins/SoundPluginTest.h"

#include "../plugins/sndfile/SoundTags.h"

#include <vorlund/ClassIds.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <random>

namespace vorlund::test {
namespace {

using SndfileDecoder = SoundPluginTest;

/// Equal, or for lossy kinds on systems with another libsndfile nearly so.
void ExpectEqual(const TBytes& actual, const TBytes& expected, const TSoundRow& row) {
    ASSERT_EQ(actual.size(), expected.size());
    if (!row.isLossy || VORLUND_TEST_TOLERANCE == 0) {
        EXPECT_TRUE(actual == expected);
        return;
    }
    double worst = 0;
    for (std::size_t at = 0; at < actual.size(); at += sizeof(float)) {
        float one = 0;
        float other = 0;
        std::memcpy(&one, &actual[at], sizeof one);
        std::memcpy(&other, &expected[at], sizeof other);
        worst = std::max(worst, std::abs(static_cast<double>(one) - other));
    }
    EXPECT_LE(worst, VORLUND_TEST_TOLERANCE);
}

TEST_F(SndfileDecoder, EveryFileIsWhatLibsndfileReads) {
    const auto rows = LoadRows();
    ASSERT_GE(rows.size(), 60u);
    for (const TSoundRow& row : rows) {
        SCOPED_TRACE(row.name);
        const auto decoded = DecodeFile(row.name);
        const auto& format = static_cast<const TDataFormat_AudioPcm&>(decoded->GetFormat());
        EXPECT_EQ(format.sampleFormat, row.format.sampleFormat);
        EXPECT_EQ(format.channels, row.format.channels);
        EXPECT_EQ(format.samplesPerSec, row.format.samplesPerSec);
        EXPECT_EQ(decoded->GetLength(), row.GetLength());
        EXPECT_FALSE(decoded->Eof());
        ExpectEqual(ReadAll(*decoded), LoadSound(row.name + ".pcm"), row);
        EXPECT_TRUE(decoded->Eof());
        EXPECT_EQ(decoded->Tell(), row.GetLength());
    }
}

TEST_F(SndfileDecoder, AReadBehindASeekIsThatOfADecodingFromTheStart) {
    for (const TSoundRow& row : LoadRows()) {
        SCOPED_TRACE(row.name);
        const auto decoded = DecodeFile(row.name);
        const TBytes whole = ReadAll(*decoded);
        const std::size_t block = row.format.GetBlockSize();
        std::mt19937 random(1);
        int misses = 0;
        for (int i = 0; i < 1000; ++i) {
            const std::size_t at = random() % static_cast<std::size_t>(row.frames) * block;
            TBytes part(std::min(std::size_t{100} * block, whole.size() - at));
            decoded->Seek(static_cast<std::int64_t>(at));
            const std::uint64_t count = decoded->Read(part.data(), part.size());
            misses += count != part.size() || !std::equal(part.begin(), part.end(), whole.begin() + at);
        }
        EXPECT_EQ(misses, 0);
    }
}

TEST_F(SndfileDecoder, EveryFrameOfTheLastPageIsReached) {
    const auto decoded = DecodeFile("long.ogg");
    const TBytes whole = ReadAll(*decoded);
    for (std::size_t back = 4; back < 40000; back += 404) {
        const std::size_t at = whole.size() - back;
        TBytes part(back);
        decoded->Seek(0);
        decoded->Seek(static_cast<std::int64_t>(at));
        EXPECT_EQ(ReadAll(*decoded), TBytes(whole.begin() + at, whole.end())) << back;
    }
}

TEST_F(SndfileDecoder, ReadsOfAnySizeGiveTheSameBytes) {
    for (const char* const name : {"24.wav", "16.flac", "stereo.ogg", "vbr.mp3"}) {
        SCOPED_TRACE(name);
        const auto decoded = DecodeFile(name);
        const TBytes whole = ReadAll(*decoded);
        for (const std::size_t step : {1, 3, 7, 4096, 100003}) {
            decoded->Seek(0);
            const std::size_t limit = step < 8 ? 3000 : whole.size();
            const TBytes part = ReadAll(*decoded, step, limit);
            ASSERT_GE(part.size(), limit);
            EXPECT_TRUE(std::equal(part.begin(), part.end(), whole.begin())) << step;
        }
        // To a place where no sample may lie, from inside a frame.
        TBytes crooked(1001);
        decoded->Seek(5);
        ASSERT_EQ(decoded->Read(crooked.data() + 1, 1000), 1000u);
        EXPECT_TRUE(std::equal(crooked.begin() + 1, crooked.end(), whole.begin() + 5));
        decoded->Skip(10);
        EXPECT_EQ(decoded->Tell(), 1015);
    }
}

TEST_F(SndfileDecoder, PositionsEndAtTheEnds) {
    const auto decoded = DecodeFile("16.flac");
    const std::int64_t length = decoded->GetLength();
    decoded->Seek(length + 100);
    EXPECT_EQ(decoded->Tell(), length);
    EXPECT_TRUE(decoded->Eof());
    std::uint8_t byte = 0;
    EXPECT_EQ(decoded->Read(&byte, 1), 0u);
    decoded->Seek(length - 3);
    decoded->Skip(~std::uint64_t{0});
    EXPECT_EQ(decoded->Tell(), length);
    EXPECT_THROW(decoded->Seek(-1), CIOException);
    EXPECT_EQ(decoded->Tell(), length);
}

TEST_F(SndfileDecoder, BuiltInDecodersComeFirst) {
    const auto isOurs = [](IInputStream& stream) {
        return v.GetClassStore().GetClassInfo(stream.GetClassId())->name ==
               wstring(VRL_L("sndfile::CSndfileDecoder"));
    };
    TBytes wav = LoadSound("24.wav");
    EXPECT_TRUE(isOurs(*DecodeBytes(wav)));
    // The same bytes, said to be of 16 bits.
    wav[34] = 16;
    const auto decoded = DecodeBytes(wav);
    EXPECT_FALSE(isOurs(*decoded));
    EXPECT_EQ(ReadAll(*decoded).size(), wav.size() - 44);
}

TEST_F(SndfileDecoder, WhatIsDecodedIsLeftAlone) {
    // The longest chain is wanted, and the samples look like a file.
    TBytes wav = LoadSound("24.wav");
    wav[34] = 16;
    const TBytes flac = LoadSound("16.flac");
    std::copy(flac.begin(), flac.begin() + 1000, wav.begin() + 44);
    const auto stream = Make<CMemoryInputStream>();
    stream->bytes = wav;
    const auto decoded =
        CRefPtr<IInputStream>::Adopt(CInputStreamSelector(stream.Get()).DecodeStream(CId::Null()));
    EXPECT_EQ(decoded->GetClassId(), classid::CWavDecoder);
}

TEST_F(SndfileDecoder, TagsAreWhatTheFilesSay) {
    for (const char* const name : {"16.flac", "vbr.mp3"}) {
        const auto tags = DecodeFile(name).Query<ISoundTags>();
        ASSERT_TRUE(tags) << name;
        ASSERT_TRUE(tags->GetTag(SOUND_TAG_TITLE)) << name;
        EXPECT_EQ(wstring(tags->GetTag(SOUND_TAG_TITLE)), VRL_L("T\u00F6ne")) << name;
        EXPECT_EQ(tags->GetTag(SOUND_TAG_LICENSE), nullptr);
        EXPECT_EQ(tags->GetTag(static_cast<TSoundTag>(1000)), nullptr);
        tags->Disconnect();
        EXPECT_EQ(tags->GetTag(SOUND_TAG_TITLE), nullptr);
    }
}

TEST_F(SndfileDecoder, OtherFilesAreRefused) {
    TBytes text(5000, 'x');
    TBytes oneSync(5000);
    oneSync[0] = 0xFF;
    oneSync[1] = 0xFB;
    oneSync[2] = 0x90;
    for (const TBytes& bytes :
         {TBytes(), TBytes(1), text, oneSync, TBytes{'I', 'D', '3'}, TBytes{'R', 'I', 'F', 'F'}})
        EXPECT_THROW(DecodeBytes(bytes), CDataFormatException) << bytes.size();
}

TEST_F(SndfileDecoder, FileIsReadToItsEndWhateverItsHeadSays) {
    // The head promises more frames than there are.
    TBytes flac = LoadSound("16.flac");
    flac.resize(flac.size() / 2);
    const auto decoded = DecodeBytes(flac);
    const TBytes half = ReadAll(*decoded);
    EXPECT_GT(half.size(), 1000u);
    EXPECT_TRUE(decoded->Eof());
    EXPECT_EQ(decoded->GetLength(), static_cast<std::int64_t>(half.size()));
}

} // namespace
} // namespace vorlund::test
