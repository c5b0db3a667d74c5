// What the encoders write is read back: every kind, number of channels and form of samples, with no frame,
// one, and an odd number of them. Programs of others read the same files in check_encoded.py.
#include "plugins/sndfile/EncodedSound.h"
#include "support/Failures.h"

#include <utility>
#include <vector>

namespace vorlund::test {
namespace {

constexpr TFailure kNotPossible{VRL_L("CSndfileEncoder::SetFormat"), VRL_L("plugins/sndfile/SoundWriter"), 1,
                                VRL_L("This kind of file cannot have this sample rate, number of channels or "
                                      "sample format")};

constexpr TFailure kNoSound{VRL_L("CSndfileEncoder::Finish"), VRL_L("plugins/sndfile/SoundWriter"), 3,
                            VRL_L("This kind of file cannot be without sound")};

constexpr std::size_t kLengths[] = {0, 1, 37};
constexpr std::uint32_t kMaxChannels = 8;

class SndfileRoundTrips : public CEncoderTest {
protected:
    /// The sound as the decoder delivers it; what it was is kept beside the file.
    TBytes RoundTrip(const std::string& name, IAudioEncoder& encoder, const TDataFormat_AudioPcm& format,
                     const TBytes& sound) {
        const TBytes file = Encode(encoder, format, sound);
        Keep(name, file);
        Keep(name + ".pcm", sound);
        const auto decoded = DecodeBytes(file);
        const auto& announced = static_cast<const TDataFormat_AudioPcm&>(decoded->GetFormat());
        EXPECT_EQ(announced.channels, format.channels);
        EXPECT_EQ(announced.samplesPerSec, format.samplesPerSec);
        decodedFormat_ = announced;
        const TBytes bytes = ReadAll(*decoded);
        EXPECT_EQ(decoded->GetLength(), static_cast<std::int64_t>(bytes.size()));
        return bytes;
    }

    TDataFormat_AudioPcm decodedFormat_;
};

/// 8 bits as 16.
TBytes Widened(const TBytes& sound) {
    TBytes wide;
    for (const std::uint8_t sample : sound)
        wide.insert(wide.end(), {0, static_cast<std::uint8_t>(sample - 128)});
    return wide;
}

TEST_F(SndfileRoundTrips, LosslessFilesOfEveryShape) {
    struct TRow {
        const char* form;
        const char* ending;
        const CId& kind;
        TSampleFormat from;
        TSampleFormat to;
        const wchar* bits = nullptr;
    };
    for (const TRow& row :
         {TRow{"8", "flac", SOUND_FILE_FLAC, SAMPLE_FORMAT_8BIT, SAMPLE_FORMAT_16BIT},
          TRow{"16", "flac", SOUND_FILE_FLAC, SAMPLE_FORMAT_16BIT, SAMPLE_FORMAT_16BIT},
          TRow{"24", "flac", SOUND_FILE_FLAC, SAMPLE_FORMAT_32BIT, SAMPLE_FORMAT_32BIT},
          TRow{"8", "aiff", SOUND_FILE_AIFF, SAMPLE_FORMAT_8BIT, SAMPLE_FORMAT_16BIT},
          TRow{"16", "aiff", SOUND_FILE_AIFF, SAMPLE_FORMAT_16BIT, SAMPLE_FORMAT_16BIT},
          TRow{"24", "aiff", SOUND_FILE_AIFF, SAMPLE_FORMAT_32BIT, SAMPLE_FORMAT_32BIT, VRL_L("24")},
          TRow{"32", "aiff", SOUND_FILE_AIFF, SAMPLE_FORMAT_32BIT, SAMPLE_FORMAT_32BIT},
          TRow{"float", "aiff", SOUND_FILE_AIFF, SAMPLE_FORMAT_FLOAT, SAMPLE_FORMAT_FLOAT}}) {
        for (std::uint32_t channels = 1; channels <= kMaxChannels; ++channels) {
            for (const std::size_t frames : kLengths) {
                const std::string name = std::to_string(channels) + "-" + row.form + "-" +
                                         std::to_string(frames) + "." + row.ending;
                SCOPED_TRACE(name);
                const auto format = Pcm(row.from, channels, 48000);
                const TBytes sound = MakeTones(format, frames);
                const auto encoder = Create(row.kind);
                if (row.bits) encoder->SetOption(VRL_L("bits"), row.bits);
                const TBytes decoded = RoundTrip(name, *encoder, format, sound);
                EXPECT_EQ(decodedFormat_.sampleFormat, row.to);
                EXPECT_TRUE(decoded == (row.from == SAMPLE_FORMAT_8BIT ? Widened(sound) : sound));
            }
        }
    }
}

TEST_F(SndfileRoundTrips, LossyFilesHaveTheExactLength) {
    struct TRow {
        const char* ending;
        const CId& kind;
        std::uint32_t rate;
        std::uint32_t maxChannels;
    };
    for (const TRow& row :
         {TRow{"mp3", SOUND_FILE_MP3, 44100, 2}, TRow{"opus", SOUND_FILE_OGG_OPUS, 48000, kMaxChannels},
          TRow{"opus", SOUND_FILE_OGG_OPUS, 16000, 1},
          TRow{"ogg", SOUND_FILE_OGG_VORBIS, 44100, kMaxChannels}}) {
        for (std::uint32_t channels = 1; channels <= row.maxChannels; ++channels) {
            for (const std::size_t frames : {std::size_t{1}, std::size_t{37}, std::size_t{5001}}) {
                const std::string name = std::to_string(channels) + "-lossy-" + std::to_string(frames) + "." +
                                         (row.rate == 16000 ? "16k." : "") + row.ending;
                SCOPED_TRACE(name);
                const auto format = Pcm(SAMPLE_FORMAT_FLOAT, channels, row.rate);
                const TBytes sound = MakeTones(format, frames);
                EXPECT_EQ(RoundTrip(name, *Create(row.kind), format, sound).size(), sound.size());
            }
        }
    }
}

TEST_F(SndfileRoundTrips, LossyFilesAreNotWithoutSound) {
    for (const CId& kind : {SOUND_FILE_MP3, SOUND_FILE_OGG_OPUS, SOUND_FILE_OGG_VORBIS}) {
        SCOPED_TRACE(kind.GetWord(0));
        const auto format = Pcm(SAMPLE_FORMAT_16BIT, 2, 48000);
        // Not even a whole frame.
        for (const std::size_t size : {0, 3}) {
            const auto encoder = Create(kind);
            ExpectRaises<CDataFormatException>(kNoSound, [&] { Encode(*encoder, format, TBytes(size)); });
            // The encoder takes the next file.
            EXPECT_FALSE(Encode(*encoder, format, TBytes(4)).empty());
        }
    }
}

TEST_F(SndfileRoundTrips, WhatAKindCannotHoldIsRefused) {
    struct TRow {
        const CId& kind;
        std::uint32_t channels;
        std::uint32_t rate;
    };
    for (const TRow& row : {TRow{SOUND_FILE_FLAC, 9, 44100}, TRow{SOUND_FILE_MP3, 3, 44100},
                            TRow{SOUND_FILE_MP3, 8, 44100}, TRow{SOUND_FILE_MP3, 2, 44000},
                            TRow{SOUND_FILE_OGG_OPUS, 2, 44100}, TRow{SOUND_FILE_OGG_OPUS, 256, 48000},
                            TRow{SOUND_FILE_OGG_VORBIS, 256, 48000}, TRow{SOUND_FILE_AIFF, 1025, 48000},
                            TRow{SOUND_FILE_FLAC, 2, 655351}, TRow{SOUND_FILE_FLAC, 0, 44100}}) {
        SCOPED_TRACE(testing::Message() << row.kind.GetWord(0) << " " << row.channels << " " << row.rate);
        const auto to = Make<CMemoryOutputStream>();
        const auto encoder = Create(row.kind);
        encoder->Connect(to.Get());
        const auto format = Pcm(SAMPLE_FORMAT_16BIT, row.channels, row.rate);
        ExpectRaises<CDataFormatException>(kNotPossible, [&] { encoder->SetFormat(&format); });
        EXPECT_TRUE(to->bytes.empty());
    }
}

} // namespace
} // namespace vorlund::test
