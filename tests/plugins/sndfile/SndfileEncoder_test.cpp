// The encoders: what they write is read back here by the plug-in, and by programs of others in
// check_encoded.py, for which the files stay in the folder sndfile-encoded beside this program.
#include "plugins/sndfile/EncodedSound.h"
#include "support/Failures.h"

#include "sndfile/SoundTags.h"

#include <vorlund/File.h>
#include <vorlund/StreamSelector.h>

#include <fstream>

namespace vorlund::test {
namespace {

constexpr const wchar* kOptionsFile = VRL_L("plugins/sndfile/EncoderOptions");
constexpr const wchar* kEncoderFile = VRL_L("plugins/sndfile/SndfileEncoder");
constexpr const wchar* kWriterFile = VRL_L("plugins/sndfile/SoundWriter");
constexpr const wchar* kSetOption = VRL_L("CSndfileEncoder::SetOption");
constexpr const wchar* kSetFormat = VRL_L("CSndfileEncoder::SetFormat");
constexpr const wchar* kWrite = VRL_L("CSndfileEncoder::Write");
constexpr TFailure kNoOption{kSetOption, kOptionsFile, 2, VRL_L("This kind of file has no such option")};
constexpr TFailure kBadBits{kSetOption, kOptionsFile, 3,
                            VRL_L("The option 'bits' is 8, 16 or 24, for AIFF also 32 or float")};
constexpr TFailure kBadQuality{kSetOption, kOptionsFile, 4,
                               VRL_L("The option 'quality' is a number from 0 to 1, the best")};
constexpr TFailure kBadCompression{
    kSetOption, kOptionsFile, 5,
    VRL_L("The option 'compression' is a number from 0 to 1, the smallest file")};
constexpr TFailure kBadMode{kSetOption, kOptionsFile, 6,
                            VRL_L("The option 'bitrate mode' is constant, average or variable")};
constexpr TFailure kNoTag{VRL_L("CSndfileEncoder::SetTag"), kOptionsFile, 8,
                          VRL_L("This kind of file has no such tag")};
constexpr TFailure kNotConnected{kSetFormat, kEncoderFile, 1, VRL_L("Stream is not connected")};
constexpr TFailure kNotPcm{kSetFormat, kEncoderFile, 3, VRL_L("Not PCM")};
constexpr TFailure kNoPositions{kSetFormat, kEncoderFile, 4, VRL_L("Stream has no positions")};
constexpr TFailure kNoFormat{kWrite, kEncoderFile, 6, VRL_L("No format is set")};
constexpr TFailure kNoSeek{VRL_L("CSndfileEncoder::Seek"), kEncoderFile, 7,
                           VRL_L("An encoder has no positions")};
constexpr TFailure kNotPossible{kSetFormat, kWriterFile, 1,
                                VRL_L("This kind of file cannot have this sample rate, number of channels or "
                                      "sample format")};
constexpr TFailure kFailed{kWrite, kWriterFile, 2, VRL_L("The encoder failed")};

class SndfileEncoder : public CEncoderTest {};

struct TKindRow {
    const char* ending;
    const CId& kind;
    std::uint32_t rate;
};
constexpr TKindRow kLossy[] = {
    {"mp3", SOUND_FILE_MP3, 44100},
    {"opus", SOUND_FILE_OGG_OPUS, 48000},
    {"ogg", SOUND_FILE_OGG_VORBIS, 44100},
};

double GetNoise(const TBytes& actual, const TBytes& expected) {
    double noise = 0;
    for (std::size_t at = 0; at < actual.size(); at += 4) {
        float values[2];
        std::memcpy(&values[0], actual.data() + at, 4);
        std::memcpy(&values[1], expected.data() + at, 4);
        noise += (values[0] - values[1]) * (values[0] - values[1]);
    }
    return std::sqrt(noise / static_cast<double>(actual.size() / 4));
}

TEST_F(SndfileEncoder, LosslessFilesHaveEveryBit) {
    struct TRow {
        const char* name;
        const CId& kind;
        TSampleFormat from;
        TSampleFormat to;
    };
    for (const TRow& row : {TRow{"16.flac", SOUND_FILE_FLAC, SAMPLE_FORMAT_16BIT, SAMPLE_FORMAT_16BIT},
                            TRow{"24.flac", SOUND_FILE_FLAC, SAMPLE_FORMAT_32BIT, SAMPLE_FORMAT_32BIT},
                            TRow{"16.aiff", SOUND_FILE_AIFF, SAMPLE_FORMAT_16BIT, SAMPLE_FORMAT_16BIT},
                            TRow{"32.aiff", SOUND_FILE_AIFF, SAMPLE_FORMAT_32BIT, SAMPLE_FORMAT_32BIT},
                            TRow{"float.aiff", SOUND_FILE_AIFF, SAMPLE_FORMAT_FLOAT, SAMPLE_FORMAT_FLOAT}}) {
        for (const std::uint32_t channels : {1U, 2U, 6U}) {
            const std::string name = std::to_string(channels) + "-" + row.name;
            SCOPED_TRACE(name);
            const auto format = Pcm(row.from, channels, 44100);
            const TBytes sound = MakeTones(format, 30001);
            const TBytes file = Encode(*Create(row.kind), format, sound);
            Keep(name, file);
            Keep(name + ".pcm", sound);
            const auto decoded = DecodeBytes(file);
            const auto& announced = static_cast<const TDataFormat_AudioPcm&>(decoded->GetFormat());
            EXPECT_EQ(announced.sampleFormat, row.to);
            EXPECT_EQ(announced.channels, channels);
            EXPECT_EQ(announced.samplesPerSec, 44100U);
            EXPECT_TRUE(ReadAll(*decoded) == sound);
        }
    }
}

TEST_F(SndfileEncoder, EightBitsAreLosslessToo) {
    const auto format = Pcm(SAMPLE_FORMAT_8BIT, 2, 8000);
    const TBytes sound = MakeTones(format, 5000);
    for (const CId& kind : {SOUND_FILE_FLAC, SOUND_FILE_AIFF}) {
        const TBytes decoded = ReadAll(*DecodeBytes(Encode(*Create(kind), format, sound)));
        // As 16 bits, whose lower ones are 0.
        ASSERT_EQ(decoded.size(), 2 * sound.size());
        for (std::size_t i = 0; i < sound.size(); ++i) {
            ASSERT_EQ(decoded[2 * i], 0) << i;
            ASSERT_EQ(decoded[2 * i + 1], static_cast<std::uint8_t>(sound[i] - 128)) << i;
        }
    }
}

TEST_F(SndfileEncoder, LossyFilesAreNearlyTheSound) {
    for (const TKindRow& row : kLossy) {
        for (const std::uint32_t channels : {1U, 2U}) {
            const std::string name = std::to_string(channels) + "-lossy." + row.ending;
            SCOPED_TRACE(name);
            const auto format = Pcm(SAMPLE_FORMAT_FLOAT, channels, row.rate);
            const TBytes sound = MakeTones(format, row.rate);
            const auto encoder = Create(row.kind);
            encoder->SetOption(VRL_L("quality"), VRL_L("0.9"));
            const TBytes file = Encode(*encoder, format, sound);
            Keep(name, file);
            Keep(name + ".pcm", sound);
            const TBytes decoded = ReadAll(*DecodeBytes(file));
            ASSERT_EQ(decoded.size(), sound.size());
            EXPECT_LT(GetNoise(decoded, sound), 0.02);
        }
    }
}

TEST_F(SndfileEncoder, SizesOfWritesAndThePlaceChangeNothing) {
    const auto format = Pcm(SAMPLE_FORMAT_16BIT, 2, 44100);
    const TBytes sound = MakeTones(format, 3000);
    // The others need not give the same bytes twice.
    for (const CId& kind : {SOUND_FILE_FLAC, SOUND_FILE_AIFF}) {
        SCOPED_TRACE(kind.GetWord(0));
        const auto encoder = Create(kind);
        const TBytes whole = Encode(*encoder, format, sound);
        for (const std::size_t step : {1, 3, 7, 1000})
            EXPECT_TRUE(Encode(*encoder, format, sound, step) == whole);
        // Behind something else.
        const auto to = Make<CMemoryOutputStream>();
        to->Write("before", 6);
        Encode(*encoder, *to, format, sound);
        EXPECT_EQ(std::string(to->bytes.begin(), to->bytes.begin() + 6), "before");
        EXPECT_TRUE(TBytes(to->bytes.begin() + 6, to->bytes.end()) == whole);
    }
    // A part of a frame at the end is left out.
    const auto encoder = Create(SOUND_FILE_FLAC);
    TBytes more = sound;
    more.insert(more.end(), {1, 2, 3});
    EXPECT_TRUE(Encode(*encoder, format, more) == Encode(*encoder, format, sound));
}

TEST_F(SndfileEncoder, NothingIsAFileToo) {
    const auto format = Pcm(SAMPLE_FORMAT_16BIT, 1, 48000);
    const TBytes aiff = Encode(*Create(SOUND_FILE_AIFF), format, {});
    EXPECT_EQ(ReadAll(*DecodeBytes(aiff)).size(), 0U);
    const TBytes flac = Encode(*Create(SOUND_FILE_FLAC), format, {});
    ASSERT_GT(flac.size(), 4U);
    EXPECT_EQ(std::string(flac.begin(), flac.begin() + 4), "fLaC");
    Keep("empty.flac", flac);
}

TEST_F(SndfileEncoder, OptionsDoWhatTheySay) {
    const auto format = Pcm(SAMPLE_FORMAT_FLOAT, 2, 44100);
    const TBytes sound = MakeTones(format, 44100);
    const auto size = [&](const CId& kind, const wchar* option, const wchar* value) {
        const auto encoder = Create(kind);
        encoder->SetOption(option, value);
        return Encode(*encoder, format, sound).size();
    };
    EXPECT_LT(size(SOUND_FILE_OGG_VORBIS, VRL_L("quality"), VRL_L("0")),
              size(SOUND_FILE_OGG_VORBIS, VRL_L("quality"), VRL_L("1")));
    EXPECT_LT(size(SOUND_FILE_FLAC, VRL_L("bits"), VRL_L("16")),
              size(SOUND_FILE_FLAC, VRL_L("bits"), VRL_L("24")));
    EXPECT_LT(size(SOUND_FILE_FLAC, VRL_L("compression"), VRL_L("1")),
              size(SOUND_FILE_FLAC, VRL_L("compression"), VRL_L("0")));
    EXPECT_NE(size(SOUND_FILE_MP3, VRL_L("bitrate mode"), VRL_L("constant")),
              size(SOUND_FILE_MP3, VRL_L("bitrate mode"), VRL_L("variable")));
    EXPECT_EQ(size(SOUND_FILE_AIFF, VRL_L("bits"), VRL_L("float")),
              size(SOUND_FILE_AIFF, VRL_L("bits"), VRL_L("")));
    EXPECT_LT(size(SOUND_FILE_AIFF, VRL_L("bits"), VRL_L("8")),
              size(SOUND_FILE_AIFF, VRL_L("bits"), VRL_L("16")));
}

TEST_F(SndfileEncoder, BadOptionsAndTagsAreNamed) {
    const auto refuse = [&](const CId& kind, const wchar* option, const wchar* value,
                            const TFailure& failure) {
        const auto encoder = Create(kind);
        ExpectRaises<CInvalidParameterException>(failure, [&] { encoder->SetOption(option, value); });
    };
    refuse(SOUND_FILE_FLAC, VRL_L("qualty"), VRL_L("1"), kNoOption);
    refuse(SOUND_FILE_FLAC, VRL_L("quality"), VRL_L("1"), kNoOption);
    refuse(SOUND_FILE_MP3, VRL_L("bits"), VRL_L("16"), kNoOption);
    refuse(SOUND_FILE_FLAC, VRL_L("bits"), VRL_L("12"), kBadBits);
    refuse(SOUND_FILE_FLAC, VRL_L("bits"), VRL_L("float"), kBadBits);
    for (const wchar* const bad :
         {VRL_L("1.1"), VRL_L("-0.1"), VRL_L("0,5"), VRL_L("nan"), VRL_L("1x"), VRL_L(" 1")})
        refuse(SOUND_FILE_OGG_VORBIS, VRL_L("quality"), bad, kBadQuality);
    refuse(SOUND_FILE_FLAC, VRL_L("compression"), VRL_L("high"), kBadCompression);
    refuse(SOUND_FILE_MP3, VRL_L("bitrate mode"), VRL_L("CONSTANT"), kBadMode);
    const auto encoder = Create(SOUND_FILE_AIFF);
    ExpectRaises<CInvalidParameterException>(kNoTag, [&] { encoder->SetTag(VRL_L("album"), VRL_L("x")); });
    EXPECT_THROW(encoder->SetTag(nullptr, VRL_L("x")), CNullPtrException);
    EXPECT_THROW(encoder->SetOption(VRL_L("bits"), nullptr), CNullPtrException);
}

TEST_F(SndfileEncoder, TagsAreReadBack) {
    const auto format = Pcm(SAMPLE_FORMAT_16BIT, 2, 48000);
    const TBytes sound = MakeTones(format, 48000);
    // Beyond ASCII, beyond 16 bits, and a mark that paths would lose.
    const wstring artist = VRL_L("AC\\DC \u00E9\u4E2D");
    for (const auto& [name, kind] :
         {std::pair{"tags.flac", SOUND_FILE_FLAC}, std::pair{"tags.ogg", SOUND_FILE_OGG_VORBIS},
          std::pair{"tags.opus", SOUND_FILE_OGG_OPUS}, std::pair{"tags.mp3", SOUND_FILE_MP3},
          std::pair{"tags.aiff", SOUND_FILE_AIFF}}) {
        SCOPED_TRACE(name);
        const bool isAiff = kind == SOUND_FILE_AIFF;
        const auto encoder = Create(kind);
        encoder->SetTag(VRL_L("title"), VRL_L("Lost"));
        encoder->SetTag(VRL_L("title"), VRL_L("Found"));
        encoder->SetTag(VRL_L("artist"), isAiff ? VRL_L("AC\\DC") : artist.c_str());
        encoder->SetTag(VRL_L("comment"), VRL_L("gone"));
        encoder->SetTag(VRL_L("comment"), VRL_L(""));
        if (!isAiff) encoder->SetTag(VRL_L("album"), VRL_L("Third"));
        const TBytes file = Encode(*encoder, format, sound);
        Keep(name, file);
        Keep(std::string(name) + ".pcm", sound);
        const auto tags = DecodeBytes(file).Query<ISoundTags>();
        ASSERT_TRUE(tags);
        const auto get = [&](TSoundTag tag) {
            const wchar* const text = tags->GetTag(tag);
            return text ? wstring(text) : wstring();
        };
        EXPECT_EQ(get(SOUND_TAG_TITLE), VRL_L("Found"));
        EXPECT_EQ(get(SOUND_TAG_ARTIST), isAiff ? wstring(VRL_L("AC\\DC")) : artist);
        EXPECT_EQ(get(SOUND_TAG_COMMENT), VRL_L(""));
        EXPECT_EQ(get(SOUND_TAG_ALBUM), isAiff ? VRL_L("") : VRL_L("Third"));
    }
}

TEST_F(SndfileEncoder, WhatCannotBeWrittenIsRefused) {
    const auto to = Make<CMemoryOutputStream>();
    const auto encoder = Create(SOUND_FILE_OGG_OPUS);
    auto format = Pcm(SAMPLE_FORMAT_16BIT, 2, 44100);
    ExpectRaises<CIOException>(kNotConnected, [&] { encoder->SetFormat(&format); });
    encoder->Connect(to.Get());
    ExpectRaises<CInvalidStateException>(kNoFormat, [&] { encoder->Write("1234", 4); });
    // No rate of Opus.
    ExpectRaises<CDataFormatException>(kNotPossible, [&] { encoder->SetFormat(&format); });
    format.samplesPerSec = 48000;
    format.channels = 0;
    ExpectRaises<CDataFormatException>(kNotPossible, [&] { encoder->SetFormat(&format); });
    const TDataFormat_ImageRgb image;
    ExpectRaises<CDataFormatException>(kNotPcm, [&] { encoder->SetFormat(&image); });
    EXPECT_THROW(encoder->SetFormat(nullptr), CNullPtrException);
    EXPECT_THROW(encoder->Write(nullptr, 1), CNullPtrException);
    ExpectRaises<COperationNotSupportedException>(kNoSeek, [&] { encoder->Seek(0); });
    to->capabilities = STREAM_CAPABILITY_WRITE;
    format.channels = 2;
    ExpectRaises<CDataFormatException>(kNoPositions, [&] { encoder->SetFormat(&format); });
    EXPECT_EQ(to->bytes.size(), 0U);
}

TEST_F(SndfileEncoder, AFullDiskIsAnError) {
    const auto format = Pcm(SAMPLE_FORMAT_16BIT, 2, 48000);
    const TBytes sound = MakeTones(format, 48000);
    for (const CId& kind :
         {SOUND_FILE_AIFF, SOUND_FILE_FLAC, SOUND_FILE_MP3, SOUND_FILE_OGG_OPUS, SOUND_FILE_OGG_VORBIS}) {
        const std::size_t whole = Encode(*Create(kind), format, sound).size();
        // Early, in the middle, and where only Finish comes.
        for (const std::size_t room : {std::size_t{0}, std::size_t{10}, whole / 2, whole - 1}) {
            SCOPED_TRACE(room);
            const auto to = Make<CMemoryOutputStream>();
            to->maximumSize = room;
            const auto encoder = Create(kind);
            ExpectRaises<CIOException>(streamfailures::kCannotWrite,
                                       [&] { Encode(*encoder, *to, format, sound); });
            // Nothing is mended by going on.
            to->maximumSize = ~std::size_t{0};
            const std::size_t size = to->bytes.size();
            try {
                encoder->Write(sound.data(), sound.size());
                ADD_FAILURE() << "it went on";
            } catch (const CException&) {
            }
            EXPECT_EQ(to->bytes.size(), size);
        }
    }
}

TEST_F(SndfileEncoder, FailureHoldsUntilTheNextFile) {
    const auto format = Pcm(SAMPLE_FORMAT_16BIT, 2, 48000);
    const TBytes sound = MakeTones(format, 48000);
    const auto to = Make<CMemoryOutputStream>();
    const auto encoder = Create(SOUND_FILE_AIFF);
    encoder->Connect(to.Get());
    encoder->SetFormat(&format);
    to->maximumSize = 1000;
    EXPECT_THROW(encoder->Write(sound.data(), sound.size()), CIOException);
    ExpectRaises<CIOException>(kFailed, [&] { encoder->Write(sound.data(), sound.size()); });
    ExpectRaises<CIOException>(kFailed, [&] { encoder->Finish(); });
    to->maximumSize = ~std::size_t{0};
    EXPECT_TRUE(ReadAll(*DecodeBytes(Encode(*encoder, format, sound))) == sound);
}

TEST_F(SndfileEncoder, AbandonedFilesAreLeftAsTheyAre) {
    const auto format = Pcm(SAMPLE_FORMAT_16BIT, 2, 48000);
    const TBytes sound = MakeTones(format, 48000);
    const auto to = Make<CMemoryOutputStream>();
    auto encoder = Create(SOUND_FILE_FLAC);
    encoder->Connect(to.Get());
    encoder->SetFormat(&format);
    encoder->Write(sound.data(), sound.size());
    const std::size_t size = to->bytes.size();
    encoder->Disconnect();
    EXPECT_EQ(to->bytes.size(), size);
    ExpectRaises<CInvalidStateException>(kNoFormat, [&] { encoder->Write(sound.data(), 4); });
    encoder->Finish();
    encoder->Connect(to.Get());
    encoder->SetFormat(&format);
    encoder->Close();
    EXPECT_EQ(to->closed, 1);
    encoder.Reset();
}

TEST_F(SndfileEncoder, WritesFiles) {
    const fs::path path = BesideProgram("sndfile-encoded") / "file.flac";
    const auto format = Pcm(SAMPLE_FORMAT_16BIT, 2, 48000);
    const TBytes sound = MakeTones(format, 48000);
    const auto encoder = Create(SOUND_FILE_FLAC);
    {
        const COutputStreamSelector file(ToVorlund(path).c_str());
        Encode(*encoder, *CRefPtr<IOutputStream>::Share(file.GetOutputStreamTmp()), format, sound);
        encoder->Close();
    }
    Keep("file.flac.pcm", sound);
    EXPECT_TRUE(ReadAll(*DecodeBytes(LoadBytes(path))) == sound);
}

} // namespace
} // namespace vorlund::test
