// Pictures of sound as a filter: what they show, and that they are the same however they are read.
#include "VisualTest.h"

#include "support/Failures.h"

#include <vorlund/AudioConversion.h>
#include <vorlund/Exception.h>

#include <algorithm>
#include <limits>
#include <set>

namespace vorlund::test {
namespace {

constexpr const wchar* kFile = VRL_L("plugins/visual/AudioPictures");
constexpr const wchar* kBadSourceReason = VRL_L("Unsupported format in decoded stream");
constexpr TFailure kBadSource{VRL_L("CAudioPictures::Connect"), kFile, 2, kBadSourceReason};

constexpr std::uint32_t kBar = 0xFF00FF00;
constexpr std::uint32_t kWave = 0xFFFFFFFF;
constexpr std::uint32_t kGround = 0xFF000000;

/// Bars and lines that are easily told from the ground, and nothing else.
TAudioPictureSettings PlainSettings(std::uint32_t kind, std::uint32_t width = 400,
                                    std::uint32_t height = 200) {
    TAudioPictureSettings settings;
    settings.kind = kind;
    settings.width = width;
    settings.height = height;
    settings.hasScales = 0;
    settings.groundColour = 0;
    settings.waveColour = kWave;
    settings.lowColour = settings.highColour = kBar;
    settings.peakFall = 0;
    return settings;
}

class AudioPictures : public CVisualTest {
protected:
    void Connect(const TAudioPictureSettings& settings, const CRefPtr<CFaultyInputStream>& source) {
        settings_ = settings;
        pictures_->SetSettings(settings);
        pictures_->Connect(source.Get());
    }
    std::uint32_t PixelAt(const TPixels& picture, std::uint32_t x, std::uint32_t y) const {
        return picture.at(std::size_t{y} * settings_.width + x);
    }
    /// How many pixels of the column have that colour.
    int CountInColumn(const TPixels& picture, std::uint32_t x, std::uint32_t colour) const {
        int count = 0;
        for (std::uint32_t y = 0; y < settings_.height; ++y) count += PixelAt(picture, x, y) == colour;
        return count;
    }
    /// Whether the line covers more than half of this pixel, or of that above or below it.
    bool IsNearLine(const TPixels& picture, std::uint32_t x, std::uint32_t y) const {
        return std::max({PixelAt(picture, x, y - 1), PixelAt(picture, x, y), PixelAt(picture, x, y + 1)}) >
               0xFF808080;
    }
    /// The first column of the highest bar.
    std::uint32_t FindHighestBar(const TPixels& picture) const {
        std::uint32_t highest = 0;
        for (std::uint32_t x = 0; x < settings_.width; ++x)
            if (CountInColumn(picture, x, kBar) > CountInColumn(picture, highest, kBar)) highest = x;
        return highest;
    }

    TAudioPictureSettings settings_;
};

TEST_F(AudioPictures, FormatAndLength) {
    EXPECT_EQ(pictures_->GetFormat().id, CId::Null());
    EXPECT_TRUE(pictures_->Eof());
    struct TRow {
        std::size_t frames;
        std::uint32_t rate;
        float frameRate;
        std::int64_t pictures;
    };
    const TRow rows[] = {{48000, 48000, 60, 60},     {48001, 48000, 60, 61}, {1, 48000, 60, 1},
                         {0, 48000, 60, 0},          {800, 48000, 60, 1},    {801, 48000, 60, 2},
                         {44100, 44100, 29.97F, 30}, {10, 1000, 1000, 10},   {3, 1, 10, 30},
                         {100, 8000, 1, 1}};
    for (const TRow& row : rows) {
        TAudioPictureSettings settings = PlainSettings(AUDIO_PICTURE_BOTH, 32, 16);
        settings.frameRate = row.frameRate;
        settings.transformSize = 256;
        Connect(settings, MakeSound(MakeTone(10, 0.5, row.frames, 1, row.rate), 1, row.rate));
        const auto& format = static_cast<const TDataFormat_VideoRgb&>(pictures_->GetFormat());
        EXPECT_EQ(format.id, TDataFormat_VideoRgb::FormatId);
        EXPECT_EQ(format.image.width, 32u);
        EXPECT_EQ(format.image.height, 16u);
        EXPECT_EQ(format.image.pixelFormat.bitsPerPixel, 32u);
        EXPECT_EQ(format.image.pixelFormat.redShift, 16u);
        EXPECT_EQ(format.image.pixelFormat.blueShift, 0u);
        EXPECT_EQ(format.frameRate, row.frameRate);
        EXPECT_EQ(pictures_->GetLength(), row.pictures * 32 * 16 * 4) << row.frames << " at " << row.rate;
        EXPECT_EQ(pictures_->Eof(), row.pictures == 0);
        EXPECT_EQ(ReadAll(1, 5000).size(), static_cast<std::size_t>(row.pictures) * 32 * 16 * 4);
        EXPECT_TRUE(pictures_->Eof());
        EXPECT_EQ(pictures_->Tell(), pictures_->GetLength());
    }
}

TEST_F(AudioPictures, AToneIsInItsBar) {
    constexpr std::uint32_t kRate = 48000;
    for (const double frequency : {150.0, 440.0, 1000.0, 2750.0, 9000.0, 15000.0}) {
        for (const std::uint32_t pitch : {1U, 4U, 10U}) {
            TAudioPictureSettings settings = PlainSettings(AUDIO_PICTURE_SPECTRUM);
            settings.barPitch = pitch;
            settings.transformSize = 8192;
            Connect(settings, MakeSound(MakeTone(frequency, 0.5, kRate, 2, kRate), 2, kRate));
            const TPixels picture = ReadPicture(30);
            ASSERT_FALSE(picture.empty());
            // The middle of the highest bar as a frequency, and how much a bar holds.
            const double bars = std::floor(400.0 / pitch);
            const double bar = std::floor(FindHighestBar(picture) / static_cast<double>(pitch)) + 0.5;
            const double octaves = std::log2(20000.0 / 30);
            const double shown = 30 * std::exp2(octaves * bar / bars);
            const double line = 48000.0 / 8192;
            EXPECT_NEAR(shown, frequency, frequency * (std::exp2(octaves / bars) - 1) + line)
                << "pitch " << pitch;
        }
    }
}

TEST_F(AudioPictures, LevelsAreTrue) {
    // In the middle of a line of the transform, so that its whole level is seen.
    constexpr double kFrequency = 48000.0 / 4096 * 100;
    for (const double decibels : {0.0, -6.0, -21.0, -42.0, -63.0}) {
        TAudioPictureSettings settings = PlainSettings(AUDIO_PICTURE_SPECTRUM, 400, 840);
        const double amplitude = std::pow(10, decibels / 20);
        auto source =
            MakeSound(MakeTone(kFrequency, amplitude, 48000, 1, 48000), 1, 48000, SAMPLE_FORMAT_FLOAT);
        Connect(settings, source);
        const TPixels picture = ReadPicture(30);
        // Ten pixels a decibel.
        EXPECT_NEAR(CountInColumn(picture, FindHighestBar(picture), kBar), 840 + 10 * decibels, 1.5)
            << decibels;
    }
}

TEST_F(AudioPictures, TheLoudestChannelCounts) {
    TFloats samples = MakeTone(1000, 0.5, 48000, 1, 48000);
    TFloats stereo;
    for (const float sample : samples) {
        stereo.push_back(sample);
        stereo.push_back(-sample);
    }
    Connect(PlainSettings(AUDIO_PICTURE_SPECTRUM), MakeSound(samples, 1, 48000));
    const TPixels mono = ReadPicture(20);
    // A mix of both would be silent.
    Connect(PlainSettings(AUDIO_PICTURE_SPECTRUM), MakeSound(stereo, 2, 48000));
    EXPECT_EQ(ReadPicture(20), mono);
}

TEST_F(AudioPictures, SilenceIsFlat) {
    Connect(PlainSettings(AUDIO_PICTURE_BOTH), MakeSound(TFloats(48000), 1, 48000));
    const TPixels picture = ReadPicture(10);
    for (std::uint32_t y = 0; y < 200; ++y) {
        const std::uint32_t first = PixelAt(picture, 0, y);
        for (std::uint32_t x = 0; x < 400; ++x) ASSERT_EQ(PixelAt(picture, x, y), first);
        // The line is in the middle of the upper half, and nothing is further away than it shines.
        if (y == 50) {
            EXPECT_EQ(first, kWave);
        }
        if (y < 40 || y > 60) {
            EXPECT_EQ(first, kGround);
        }
    }
}

TEST_F(AudioPictures, ATonesRisingEdgeIsInTheMiddle) {
    for (const double frequency : {50.0, 440.0, 997.0}) {
        Connect(PlainSettings(AUDIO_PICTURE_OSCILLOSCOPE),
                MakeSound(MakeTone(frequency, 0.8, 48000, 1, 48000), 1, 48000));
        for (std::int64_t number = 10; number < 50; ++number) {
            const TPixels picture = ReadPicture(number);
            EXPECT_EQ(PixelAt(picture, 200, 100), kWave) << frequency << ", " << number;
            // A quarter of a period later it is at the top: 400 pixels are 25 ms.
            const auto quarter = static_cast<std::uint32_t>(std::lround(4000 / frequency));
            const int top = 100 - static_cast<int>(0.8 * 0.9 * 100);
            EXPECT_TRUE(IsNearLine(picture, 200 + quarter, static_cast<std::uint32_t>(top)));
            EXPECT_TRUE(IsNearLine(picture, 200 - quarter, static_cast<std::uint32_t>(200 - top)));
        }
    }
}

TEST_F(AudioPictures, BarsAndPeaksFall) {
    // A tone that ends after a second.
    TFloats samples = MakeTone(1000, 1, 48000, 1, 48000);
    samples.resize(4 * 48000);
    TAudioPictureSettings settings = PlainSettings(AUDIO_PICTURE_SPECTRUM, 400, 840);
    settings.barFall = 20;
    settings.peakFall = 10;
    settings.peakHold = 500;
    settings.peakColour = 0x0000FF;
    Connect(settings, MakeSound(samples, 1, 48000));
    const std::uint32_t x = FindHighestBar(ReadPicture(30));
    const auto measure = [&](std::int64_t number) {
        const TPixels picture = ReadPicture(number);
        const auto top = [&](std::uint32_t colour) {
            for (std::uint32_t y = 0; y < 840; ++y)
                if (PixelAt(picture, x, y) == colour) return 840 - static_cast<int>(y);
            return 0;
        };
        return std::pair(top(kBar), top(0xFF0000FF));
    };
    const auto [bar1, peak1] = measure(59);
    EXPECT_GT(bar1, 700);
    // The highest of the last half second.
    EXPECT_NEAR(peak1, bar1, 8);
    // A second later: by 20 decibels, and by 10 decibels a second since half a second; ten pixels a decibel.
    // The end of the tone is seen a little before and behind it.
    const auto [bar2, peak2] = measure(119);
    EXPECT_NEAR(bar1 - bar2, 200, 12);
    EXPECT_NEAR(peak1 - peak2, 50, 8);
    const auto [bar3, peak3] = measure(179);
    EXPECT_NEAR(bar2 - bar3, 200, 1);
    EXPECT_NEAR(peak2 - peak3, 100, 1);
}

/// Something of everything, and different at each moment.
TFloats MakeMusic(std::size_t frames, std::uint32_t channels) {
    std::mt19937 random(7);
    TFloats samples;
    for (std::size_t i = 0; i < frames; ++i) {
        const double time = static_cast<double>(i) / 48000;
        for (std::uint32_t channel = 0; channel < channels; ++channel) {
            const double tone = std::sin(2 * std::numbers::pi * time * (220 + 110 * channel + 300 * time));
            const double noise = static_cast<double>(random() >> 8) / 0x1p24 - 0.5;
            const double part = 0.5 + 0.5 * std::sin(9 * time + channel);
            samples.push_back(static_cast<float>(0.6 * part * tone + 0.2 * (1 - part) * noise));
        }
    }
    return samples;
}

TAudioPictureSettings SmallSettings(std::uint32_t kind) {
    TAudioPictureSettings settings;
    settings.kind = kind;
    settings.width = 128;
    settings.height = 96;
    settings.transformSize = 1024;
    settings.barPitch = 4;
    settings.frameRate = 50;
    return settings;
}

TEST_F(AudioPictures, AnyDivisionGivesTheSame) {
    const TFloats music = MakeMusic(60000, 2);
    for (const std::uint32_t kind :
         {AUDIO_PICTURE_OSCILLOSCOPE, AUDIO_PICTURE_SPECTRUM, AUDIO_PICTURE_BOTH}) {
        const auto source = MakeSound(music, 2, 48000);
        Connect(SmallSettings(kind), source);
        const std::size_t size = GetPictureSize();
        const TBytes whole = ReadAll(1, 1);
        ASSERT_EQ(whole.size() % size, 0u);
        for (const std::size_t most : {std::size_t{7}, std::size_t{1000}, size, 3 * size, 50 * size}) {
            source->maximumRead = most % 37 + 1;
            pictures_->Seek(0);
            EXPECT_EQ(ReadAll(2, most), whole) << most;
        }
    }
}

TEST_F(AudioPictures, SeekGivesWhatReadingGives) {
    const TFloats music = MakeMusic(200000, 2);
    TAudioPictureSettings settings = SmallSettings(AUDIO_PICTURE_BOTH);
    settings.barFall = 90;
    settings.peakFall = 120;
    settings.peakHold = 200;
    Connect(settings, MakeSound(music, 2, 48000));
    const auto size = static_cast<std::int64_t>(GetPictureSize());
    const TBytes whole = ReadAll(1, 100000);
    EXPECT_EQ(static_cast<std::int64_t>(whole.size()), pictures_->GetLength());
    std::mt19937 random(3);
    TBytes buffer(static_cast<std::size_t>(3 * size));
    for (int i = 0; i < 60; ++i) {
        const auto position = static_cast<std::int64_t>(random() % (whole.size() + 1000));
        pictures_->Seek(position);
        const std::int64_t at = std::min(position, static_cast<std::int64_t>(whole.size()));
        ASSERT_EQ(pictures_->Tell(), at);
        if (i % 3 == 0) pictures_->Skip(random() % 5000);
        const auto from = static_cast<std::size_t>(pictures_->Tell());
        const auto count = static_cast<std::size_t>(pictures_->Read(buffer.data(), random() % buffer.size()));
        ASSERT_LE(from + count, whole.size());
        ASSERT_TRUE(std::equal(buffer.begin(), buffer.begin() + static_cast<std::ptrdiff_t>(count),
                               whole.begin() + static_cast<std::ptrdiff_t>(from)))
            << position;
        EXPECT_EQ(pictures_->Eof(), from + count == whole.size());
    }
}

TEST_F(AudioPictures, ASourceWithoutPositions) {
    const TFloats music = MakeMusic(30000, 1);
    Connect(SmallSettings(AUDIO_PICTURE_BOTH), MakeSound(music, 1, 48000));
    const TBytes whole = ReadAll(1, 10000);
    const std::size_t size = GetPictureSize();
    const auto source = MakeSound(music, 1, 48000);
    source->capabilities = 0;
    Connect(SmallSettings(AUDIO_PICTURE_BOTH), source);
    EXPECT_FALSE(pictures_->Eof());
    ExpectRaises<COperationNotSupportedException>(streamfailures::kCannotSeek, [&] { pictures_->Seek(0); });
    TBytes first(size);
    ASSERT_EQ(pictures_->Read(first.data(), size), size);
    EXPECT_TRUE(std::equal(first.begin(), first.end(), whole.begin()));
    pictures_->Skip(3 * size + 5);
    EXPECT_EQ(pictures_->Tell(), static_cast<std::int64_t>(4 * size + 5));
    EXPECT_FALSE(pictures_->Eof());
    const TBytes rest = ReadAll(2, 777);
    EXPECT_EQ(rest, TBytes(whole.begin() + static_cast<std::ptrdiff_t>(4 * size + 5), whole.end()));
    EXPECT_TRUE(pictures_->Eof());
    pictures_->Skip(size);
    EXPECT_EQ(pictures_->Tell(), static_cast<std::int64_t>(whole.size()));
}

TEST_F(AudioPictures, ASourceThatEndsEarly) {
    const auto source = MakeSound(MakeMusic(10000, 2), 2, 48000);
    // Half a frame more, and a length that is a lie.
    source->bytes.push_back(1);
    source->claimedLength = 4 * 480000;
    Connect(SmallSettings(AUDIO_PICTURE_BOTH), source);
    EXPECT_EQ(pictures_->GetLength() / static_cast<std::int64_t>(GetPictureSize()), 500);
    // Picture 10 is about frame 9,600; there is no other.
    EXPECT_EQ(ReadAll(1, 100000).size(), 11 * GetPictureSize());
    EXPECT_TRUE(pictures_->Eof());
    EXPECT_TRUE(ReadPicture(11).empty());
    EXPECT_TRUE(ReadPicture(400).empty());
    EXPECT_FALSE(ReadPicture(10).empty());
}

TEST_F(AudioPictures, SampleFormatsAreTheSame) {
    // Values that all of them have.
    TFloats coarse = MakeMusic(20000, 2);
    for (float& sample : coarse) sample = std::round(sample * 100) / 128;
    std::set<std::uint64_t> hashes;
    for (const TBufferFormat format :
         {BUFFER_FORMAT_8BIT, BUFFER_FORMAT_16BIT, BUFFER_FORMAT_32BIT, BUFFER_FORMAT_FLOAT}) {
        const auto source = Make<CFaultyInputStream>();
        source->format = TDataFormat_AudioPcm(format, 2, 48000);
        source->bytes.resize(coarse.size() * GetBufferSampleSize(format));
        ConvertAudio(source->bytes.data(), coarse.data(), coarse.size(),
                     {.from = BUFFER_FORMAT_FLOAT, .to = format});
        Connect(SmallSettings(AUDIO_PICTURE_BOTH), source);
        hashes.insert(HashOf(ReadPicture(10)));
    }
    EXPECT_EQ(hashes.size(), 1u);
}

TEST_F(AudioPictures, OneToEightChannels) {
    for (std::uint32_t channels = 1; channels <= 8; ++channels) {
        TFloats samples = MakeTone(500, 0, 48000, channels, 48000);
        // Only the last one sounds: its lane is the lowest.
        for (std::size_t i = 0; i < 48000; ++i)
            samples[i * channels + channels - 1] = i % 96 < 48 ? -0.9F : 0.9F;
        Connect(PlainSettings(AUDIO_PICTURE_OSCILLOSCOPE, 400, 400), MakeSound(samples, channels, 48000));
        const TPixels picture = ReadPicture(20);
        ASSERT_FALSE(picture.empty());
        int highest = 0;
        for (std::uint32_t x = 0; x < 400; ++x) highest = std::max(highest, CountInColumn(picture, x, kWave));
        // An edge may be in two columns, one half in each.
        EXPECT_GT(highest, 400 / 3 / static_cast<int>(channels)) << channels;
        for (std::uint32_t lane = 0; lane + 1 < channels; ++lane)
            EXPECT_EQ(PixelAt(picture, 7, 400 * lane / channels + 200 / channels), kWave) << channels;
    }
}

TEST_F(AudioPictures, OfMoreChannelsTheFirstEight) {
    const TFloats eight = MakeMusic(9000, 8);
    TFloats twelve;
    for (std::size_t i = 0; i < 9000; ++i) {
        twelve.insert(twelve.end(), eight.begin() + static_cast<std::ptrdiff_t>(8 * i),
                      eight.begin() + static_cast<std::ptrdiff_t>(8 * i + 8));
        twelve.insert(twelve.end(), 4, 0.9F);
    }
    Connect(SmallSettings(AUDIO_PICTURE_BOTH), MakeSound(eight, 8, 48000));
    const TPixels picture = ReadPicture(5);
    Connect(SmallSettings(AUDIO_PICTURE_BOTH), MakeSound(twelve, 12, 48000));
    EXPECT_EQ(ReadPicture(5), picture);
}

TEST_F(AudioPictures, WhatIsNoNumberIsSilent) {
    TFloats samples = MakeMusic(20000, 1);
    TFloats silent = samples;
    for (std::size_t i = 100; i < samples.size(); i += 97) {
        const float bad[] = {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity(),
                             -std::numeric_limits<float>::infinity()};
        samples[i] = bad[i % 3];
        silent[i] = 0;
    }
    Connect(SmallSettings(AUDIO_PICTURE_BOTH), MakeSound(silent, 1, 48000, SAMPLE_FORMAT_FLOAT));
    const TPixels picture = ReadPicture(9);
    Connect(SmallSettings(AUDIO_PICTURE_BOTH), MakeSound(samples, 1, 48000, SAMPLE_FORMAT_FLOAT));
    EXPECT_EQ(ReadPicture(9), picture);
    // And what is far beyond full scale is outside.
    for (float& sample : silent) sample *= 1e38F;
    Connect(SmallSettings(AUDIO_PICTURE_BOTH), MakeSound(silent, 1, 48000, SAMPLE_FORMAT_FLOAT));
    EXPECT_FALSE(ReadPicture(9).empty());
}

struct TGolden {
    std::uint32_t kind;
    std::uint64_t hash;
};

TEST_F(AudioPictures, TheSameOnEverySystem) {
    const TGolden rows[] = {{AUDIO_PICTURE_OSCILLOSCOPE, 0x143891504B99110A},
                            {AUDIO_PICTURE_SPECTRUM, 0x4D936AAA1112BEAD},
                            {AUDIO_PICTURE_BOTH, 0xD66E0EB336855921}};
    for (const TGolden& row : rows) {
        TAudioPictureSettings settings;
        settings.kind = row.kind;
        Connect(settings, MakeSound(MakeMusic(96000, 2), 2, 48000));
        std::uint64_t hash = HashOf({});
        for (const std::int64_t number : {0, 1, 20, 60, 119}) hash = HashOf(ReadPicture(number), hash);
        EXPECT_EQ(hash, row.hash) << row.kind << std::hex << " 0x" << hash;
    }
}

TEST_F(AudioPictures, TheSourceMayUseTheFilter) {
    for (int round = 0; round < 3; ++round) {
        const auto source = MakeSound(MakeMusic(20000, 1), 1, 48000);
        const auto other = MakeSound(MakeMusic(5000, 1), 1, 48000);
        source->failAt = 12000;
        source->fail = [&] {
            source->failAt = 1 << 20;
            if (round == 0) pictures_->Disconnect();
            if (round == 1) pictures_->Connect(other.Get());
            if (round == 2) {
                TBytes nothing(10);
                EXPECT_EQ(pictures_->Read(nothing.data(), 10), 0u);
                pictures_->Skip(100);
                EXPECT_FALSE(pictures_->Eof());
            }
        };
        Connect(SmallSettings(AUDIO_PICTURE_BOTH), source);
        const std::size_t size = GetPictureSize();
        TBytes buffer(100 * size);
        const std::uint64_t before = pictures_->Read(buffer.data(), buffer.size()) / size;
        // What came before stays delivered; then the other source is at its beginning.
        EXPECT_EQ(before, round == 2 ? 21U : 4U) << round;
        if (round == 1) {
            EXPECT_EQ(ReadAll(1, 5000000).size(), 6 * size);
        }
        const auto input = CRefPtr<IInputStream>::Adopt(pictures_->GetInputStream());
        EXPECT_EQ(input.Get(), round == 0 ? nullptr : round == 1 ? other.Get() : source.Get());
    }
}

TEST_F(AudioPictures, RefusesSettings) {
    constexpr TFailure kBadSettings{VRL_L("CAudioPictures::SetSettings"), kFile, 1,
                                    VRL_L("Settings out of range")};
    using TChange = void (*)(TAudioPictureSettings&);
    const TChange changes[] = {
        [](TAudioPictureSettings& settings) { settings.kind = 3; },
        [](TAudioPictureSettings& settings) { settings.width = 15; },
        [](TAudioPictureSettings& settings) { settings.width = 8193; },
        [](TAudioPictureSettings& settings) { settings.height = 0xFFFFFFFF; },
        [](TAudioPictureSettings& settings) { settings.height = 0; },
        [](TAudioPictureSettings& settings) { settings.frameRate = 0; },
        [](TAudioPictureSettings& settings) { settings.frameRate = 1001; },
        [](TAudioPictureSettings& settings) { settings.frameRate = std::numeric_limits<float>::quiet_NaN(); },
        [](TAudioPictureSettings& settings) { settings.span = 0; },
        [](TAudioPictureSettings& settings) { settings.span = 1001; },
        [](TAudioPictureSettings& settings) { settings.gain = 0; },
        [](TAudioPictureSettings& settings) { settings.transformSize = 128; },
        [](TAudioPictureSettings& settings) { settings.transformSize = 1000; },
        [](TAudioPictureSettings& settings) { settings.transformSize = 65536; },
        [](TAudioPictureSettings& settings) { settings.lowestFrequency = 0; },
        [](TAudioPictureSettings& settings) { settings.lowestFrequency = settings.highestFrequency; },
        [](TAudioPictureSettings& settings) { settings.highestFrequency = 1000001; },
        [](TAudioPictureSettings& settings) { settings.lowestLevel = -201; },
        [](TAudioPictureSettings& settings) { settings.highestLevel = 101; },
        [](TAudioPictureSettings& settings) { settings.highestLevel = settings.lowestLevel; },
        [](TAudioPictureSettings& settings) { settings.barPitch = 0; },
        [](TAudioPictureSettings& settings) { settings.barPitch = 257; },
        [](TAudioPictureSettings& settings) { settings.barFall = 4; },
        [](TAudioPictureSettings& settings) { settings.peakFall = 10001; },
        [](TAudioPictureSettings& settings) { settings.peakHold = 10001; },
    };
    pictures_->SetSettings(SmallSettings(AUDIO_PICTURE_SPECTRUM));
    for (const TChange change : changes) {
        TAudioPictureSettings settings;
        change(settings);
        ExpectRaises<CInvalidParameterException>(kBadSettings, [&] { pictures_->SetSettings(settings); });
    }
    EXPECT_EQ(pictures_->GetSettings().width, 128u);
}

TEST_F(AudioPictures, RefusesSources) {
    pictures_->SetSettings(SmallSettings(AUDIO_PICTURE_BOTH));
    for (const TDataFormat_AudioPcm format :
         {TDataFormat_AudioPcm(4, 1, 44100), TDataFormat_AudioPcm(SAMPLE_FORMAT_16BIT, 0, 44100),
          TDataFormat_AudioPcm(SAMPLE_FORMAT_16BIT, 1025, 44100),
          TDataFormat_AudioPcm(SAMPLE_FORMAT_16BIT, 1, 0),
          TDataFormat_AudioPcm(SAMPLE_FORMAT_16BIT, 1, 1000001)}) {
        const auto source = MakeSound({}, 1, 44100);
        source->format = format;
        ExpectRaises<CDataFormatException>(kBadSource, [&] { pictures_->Connect(source.Get()); });
        EXPECT_EQ(pictures_->GetInputStream(), nullptr);
        EXPECT_TRUE(pictures_->Eof());
    }
    pictures_->Connect(MakeSound(MakeMusic(1000, 1), 1, 44100).Get());
    ExpectRaises<CIOException>(
        TFailure{VRL_L("CAudioPictures::Seek"), kFile, 3, VRL_L("Position is negative")},
        [&] { pictures_->Seek(-1); });
    pictures_->Disconnect();
    EXPECT_EQ(pictures_->GetFormat().id, CId::Null());
}

/// Any settings, most of them odd.
TAudioPictureSettings RandomSettings(std::mt19937& random) {
    const auto in = [&](std::uint32_t first, std::uint32_t last) {
        // Often at an end.
        const std::uint32_t choice = random() % 8;
        return choice == 0 ? first : choice == 1 ? last : first + random() % (last - first + 1);
    };
    TAudioPictureSettings settings;
    settings.kind = random() % 3;
    settings.width = in(16, 300);
    settings.height = in(16, 300);
    settings.frameRate = static_cast<float>(in(1, 200));
    settings.span = in(1, 1000);
    settings.gain = in(1, 10000);
    settings.transformSize = 256U << random() % 6;
    settings.lowestFrequency = in(1, 1000000 - 1);
    settings.highestFrequency = in(settings.lowestFrequency + 1, 1000000);
    settings.lowestLevel = static_cast<std::int32_t>(in(0, 299)) - 200;
    settings.highestLevel =
        settings.lowestLevel +
        static_cast<std::int32_t>(in(1, static_cast<std::uint32_t>(100 - settings.lowestLevel)));
    settings.barPitch = in(1, 256);
    // Not too slow: a seek looks back as long as they fall.
    settings.barFall = random() % 2 == 0 ? 0 : in(500, 10000);
    settings.peakFall = random() % 2 == 0 ? 0 : in(500, 10000);
    settings.peakHold = in(0, 200);
    settings.hasScales = random() % 2;
    return settings;
}

TEST_F(AudioPictures, AnySettings) {
    std::mt19937 random(11);
    const TFloats music = MakeMusic(3000, 8);
    for (int i = 0; i < 150; ++i) {
        const std::uint32_t channels = 1 + random() % 8;
        const std::uint32_t rates[] = {1, 1000, 8000, 44100, 96000, 1000000};
        const std::uint32_t rate = rates[random() % 6];
        const TFloats some(music.begin(),
                           music.begin() + static_cast<std::ptrdiff_t>(random() % 3000 * channels));
        const TAudioPictureSettings settings = RandomSettings(random);
        SCOPED_TRACE(i);
        Connect(settings, MakeSound(some, channels, rate));
        TPixels picture(std::size_t{settings.width} * settings.height);
        const std::uint64_t size = picture.size() * 4;
        const std::int64_t length = pictures_->GetLength();
        ASSERT_EQ(length % static_cast<std::int64_t>(size), 0);
        for (int n = 0; n < 4 && length > 0; ++n) {
            pictures_->Seek(n == 0 ? 0 : static_cast<std::int64_t>(random()) % length);
            const std::uint64_t count = pictures_->Read(picture.data(), size);
            const auto rest = static_cast<std::uint64_t>(length - pictures_->Tell());
            EXPECT_TRUE(count == size || rest == 0);
            if (n > 0) continue;
            EXPECT_TRUE(std::all_of(picture.begin(), picture.end(),
                                    [](std::uint32_t pixel) { return pixel >> 24 == 0xFF; }));
        }
    }
}

} // namespace
} // namespace vorlund::test
