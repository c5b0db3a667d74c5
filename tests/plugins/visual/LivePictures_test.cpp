// Pictures of sound that is played at the moment.
#include "VisualTest.h"

#include "support/Failures.h"

#include <vorlund/Exception.h>

#include <atomic>
#include <limits>
#include <thread>

namespace vorlund::test {
namespace {

constexpr const wchar* kFile = VRL_L("plugins/visual/AudioPictures");

class LivePictures : public CVisualTest {
protected:
    LivePictures() {
        settings_.width = 160;
        settings_.height = 120;
        settings_.barPitch = 4;
        settings_.transformSize = 1024;
        pictures_->SetSettings(settings_);
    }
    TPixels Draw() {
        TPixels picture(std::size_t{settings_.width} * settings_.height);
        pictures_->Draw(picture.data());
        return picture;
    }
    void Write(const TFloats& samples, std::uint32_t channels) {
        pictures_->Write(samples.data(), samples.size() / channels);
    }

    TAudioPictureSettings settings_;
};

TEST_F(LivePictures, SilenceAtFirst) {
    pictures_->Start(2, 48000);
    const TPixels silence = Draw();
    EXPECT_EQ(silence[0] >> 24, 0xFFu);
    EXPECT_EQ(Draw(), silence);
    Write(TFloats(10000), 2);
    EXPECT_EQ(Draw(), silence);
    Write(MakeTone(1000, 0.5, 5000, 2, 48000), 2);
    EXPECT_NE(Draw(), silence);
    pictures_->Start(2, 48000);
    EXPECT_EQ(Draw(), silence);
}

TEST_F(LivePictures, AnyDivisionGivesTheSame) {
    const TFloats tone = MakeTone(777, 0.7, 30000, 2, 48000);
    pictures_->Start(2, 48000);
    Write(tone, 2);
    const TPixels once = Draw();
    std::mt19937 random(5);
    pictures_->Start(2, 48000);
    for (std::size_t at = 0; at < 30000;) {
        const std::size_t count = std::min<std::size_t>(random() % 5000, 30000 - at);
        pictures_->Write(tone.data() + 2 * at, count);
        at += count;
    }
    EXPECT_EQ(Draw(), once);
    EXPECT_EQ(Draw(), once);
}

TEST_F(LivePictures, ShowsWhatTheFilterShows) {
    // Where the picture's sound ends is found by looking: the same picture comes once only.
    settings_.kind = AUDIO_PICTURE_OSCILLOSCOPE;
    settings_.frameRate = 50;
    pictures_->SetSettings(settings_);
    const TFloats sweep = [] {
        TFloats samples;
        for (int i = 0; i < 20000; ++i)
            samples.push_back(static_cast<float>(std::sin(i * (0.01 + i * 1e-6)) * i / 20000));
        return samples;
    }();
    pictures_->Connect(MakeSound(sweep, 1, 48000, SAMPLE_FORMAT_FLOAT).Get());
    const TPixels filtered = ReadPicture(10);
    pictures_->Start(1, 48000);
    int equal = 0;
    for (std::size_t i = 0; i < sweep.size(); ++i) {
        pictures_->Write(sweep.data() + i, 1);
        if (i > 9600 && i < 11000 && Draw() == filtered) ++equal;
    }
    EXPECT_GE(equal, 1);
}

TEST_F(LivePictures, BarsFallWithTheSound) {
    settings_.kind = AUDIO_PICTURE_SPECTRUM;
    pictures_->SetSettings(settings_);
    pictures_->Start(1, 48000);
    Write(MakeTone(1000, 1, 5000, 1, 48000), 1);
    const TPixels loud = Draw();
    Write(TFloats(3000), 1);
    const TPixels falling = Draw();
    EXPECT_NE(falling, loud);
    // Time stands still without sound.
    EXPECT_EQ(Draw(), falling);
    // After long enough everything has fallen.
    Write(TFloats(48000 * 10), 1);
    const TPixels fallen = Draw();
    pictures_->Start(1, 48000);
    EXPECT_EQ(fallen, Draw());
}

TEST_F(LivePictures, OneThreadWritesWhileAnotherDraws) {
    pictures_->Start(2, 48000);
    const TFloats tone = MakeTone(440, 0.5, 4096, 2, 48000);
    std::atomic<bool> isOver = false;
    std::thread player([&] {
        for (int i = 0; i < 400; ++i) pictures_->Write(tone.data(), 64 * (static_cast<std::size_t>(i) % 64));
        isOver = true;
    });
    int drawn = 0;
    while (!isOver || drawn == 0) {
        EXPECT_EQ(Draw()[0] >> 24, 0xFFu);
        ++drawn;
    }
    player.join();
}

TEST_F(LivePictures, ManyChannelsAndOddSamples) {
    TFloats samples(1024 * 100, 0.25F);
    for (std::size_t i = 0; i < samples.size(); i += 3) samples[i] = std::numeric_limits<float>::quiet_NaN();
    pictures_->Start(1024, 1);
    Write(samples, 1024);
    EXPECT_EQ(Draw()[0] >> 24, 0xFFu);
    pictures_->Start(1, 1000000);
    Write(samples, 1);
    EXPECT_EQ(Draw()[0] >> 24, 0xFFu);
}

TEST_F(LivePictures, Raises) {
    const auto row = [](const wchar* method, int line, const wchar* reason) {
        return TFailure{method, kFile, line, reason};
    };
    const wchar* const write = VRL_L("CAudioPictures::Write");
    const wchar* const draw = VRL_L("CAudioPictures::Draw");
    const wchar* const notStarted = VRL_L("Not started");
    TPixels picture(160 * 120);
    const float sample = 0;
    ExpectRaises<CBugException>(row(write, 5, notStarted), [&] { pictures_->Write(&sample, 1); });
    ExpectRaises<CBugException>(row(draw, 7, notStarted), [&] { pictures_->Draw(picture.data()); });
    const TFailure bad =
        row(VRL_L("CAudioPictures::Start"), 4, VRL_L("Channels or sample rate out of range"));
    const std::pair<std::uint32_t, std::uint32_t> refused[] = {
        {0, 48000}, {1025, 48000}, {1, 0}, {1, 1000001}};
    for (const auto& [channels, rate] : refused)
        ExpectRaises<CInvalidParameterException>(bad,
                                                 [&, c = channels, r = rate] { pictures_->Start(c, r); });
    pictures_->Start(1, 48000);
    ExpectRaises<CNullPtrException>(row(write, 6, VRL_L("samples is NULL")),
                                    [&] { pictures_->Write(nullptr, 1); });
    pictures_->Write(nullptr, 0);
    ExpectRaises<CNullPtrException>(row(draw, 8, VRL_L("picture is NULL")),
                                    [&] { pictures_->Draw(nullptr); });
}

} // namespace
} // namespace vorlund::test
