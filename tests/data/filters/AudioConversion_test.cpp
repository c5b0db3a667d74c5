// Conversion of plain buffers: with the bits of the converters, and at true scale.
#include "data/filters/PcmConverterSource.h"
#include "support/Failures.h"
#include "support/LibraryScope.h"

#include <vorlund/AudioConversion.h>
#include <vorlund/AudioPcmConverters.h>
#include <vorlund/ClassIds.h>

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <string>

namespace vorlund::test {
namespace {

constexpr const wchar* kFile = VRL_L("src/vorlund/data/filters/AudioConversion");
constexpr std::uint32_t kFormats = 5;
constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kNan = std::numeric_limits<float>::quiet_NaN();

/// Any bits; floats among them are of every size, some are no numbers.
TBytes MakeNoise(std::size_t size, unsigned int seed = 1) {
    std::mt19937 random(seed);
    TBytes bytes(size);
    for (auto& byte : bytes) byte = static_cast<std::uint8_t>(random() >> 24);
    return bytes;
}

/// Floats around full scale, the same on every system.
std::vector<float> MakeFloats(std::size_t count, unsigned int seed = 1) {
    std::mt19937 random(seed);
    std::vector<float> floats(count);
    for (auto& value : floats)
        value = static_cast<float>(static_cast<std::int32_t>(random())) * 0x1p-31f * 1.25f;
    return floats;
}

/// All that a filter delivers, in reads that its converters fill with whole frames.
TBytes ReadThrough(IInputStream& stream, std::size_t size, std::size_t step) {
    TBytes bytes(size);
    std::size_t at = 0;
    while (at < size) {
        const auto count =
            static_cast<std::size_t>(stream.Read(bytes.data() + at, std::min(step, size - at)));
        if (count == 0) break;
        at += count;
    }
    EXPECT_EQ(at, size);
    return bytes;
}

TBytes Convert(const TBytes& source, std::uint32_t from, std::uint32_t to) {
    const std::size_t count = source.size() / GetBufferSampleSize(from);
    TBytes result(count * GetBufferSampleSize(to) + 8, kUnwritten);
    ConvertSamples(result.data(), to, source.data(), from, count);
    EXPECT_EQ(TBytes(result.end() - 8, result.end()), TBytes(8, kUnwritten));
    result.resize(result.size() - 8);
    return result;
}

/// 32-bit samples of which only the upper three bytes are kept.
TBytes Pack(const TBytes& wide) {
    TBytes packed;
    for (std::size_t i = 0; i < wide.size(); ++i)
        if (i % 4 != 0) packed.push_back(wide[i]);
    return packed;
}
TBytes Unpack(const TBytes& packed) {
    TBytes wide;
    for (std::size_t i = 0; i < packed.size(); ++i) {
        if (i % 3 == 0) wide.push_back(0);
        wide.push_back(packed[i]);
    }
    return wide;
}

/// One float at true scale; gives the sample and whether it was clipped.
std::pair<std::int32_t, std::uint64_t> Store(float value, std::uint32_t to) {
    std::uint8_t bytes[4] = {};
    const std::uint64_t clipped = ConvertAudio(bytes, &value, 1, {.to = to});
    std::uint32_t word = 0;
    for (unsigned int i = 0; i < GetBufferSampleSize(to); ++i) word |= std::uint32_t{bytes[i]} << 8 * i;
    const unsigned int unused = 32 - 8 * GetBufferSampleSize(to);
    if (to == BUFFER_FORMAT_8BIT) return {static_cast<std::int32_t>(word), clipped};
    return {static_cast<std::int32_t>(word << unused) >> unused, clipped};
}

class AudioConversion : public testing::Test {
protected:
    CLibraryScope library_;
};

TEST_F(AudioConversion, SampleSizes) {
    const std::uint32_t sizes[] = {1, 2, 4, 4, 3, 0, 0};
    for (std::uint32_t format = 0; format < 7; ++format)
        EXPECT_EQ(GetBufferSampleSize(format), sizes[format]) << format;
}

// The arithmetic of the converters.

TEST_F(AudioConversion, SamplesHaveTheBitsOfTheConverter) {
    for (std::uint32_t from = 0; from < 4; ++from) {
        for (std::uint32_t to = 0; to < 4; ++to) {
            const TBytes source = MakeNoise(10007 * GetBufferSampleSize(from), from * 4 + to);
            const auto converter =
                CreateAs<IAudioPcmSampleFormatConverter>(classid::CAudioPcmSampleFormatConverter);
            converter->SetSampleFormat(to);
            converter->Connect(PcmSource({from, 1, 8000}, source).Get());
            const TBytes result = Convert(source, from, to);
            EXPECT_EQ(result, ReadThrough(*converter, result.size(), 256)) << from << " to " << to;
        }
    }
}

TEST_F(AudioConversion, PackedSamplesAreTheUpperBytesOfWideOnes) {
    for (std::uint32_t format = 0; format < 4; ++format) {
        const TBytes source = MakeNoise(3001 * GetBufferSampleSize(format), format);
        EXPECT_EQ(Convert(source, format, BUFFER_FORMAT_24BIT),
                  Pack(Convert(source, format, BUFFER_FORMAT_32BIT)))
            << format;
        const TBytes packed = MakeNoise(3001 * 3, format);
        EXPECT_EQ(Convert(packed, BUFFER_FORMAT_24BIT, format),
                  Convert(Unpack(packed), BUFFER_FORMAT_32BIT, format))
            << format;
    }
    const TBytes packed = MakeNoise(300);
    EXPECT_EQ(Convert(packed, BUFFER_FORMAT_24BIT, BUFFER_FORMAT_24BIT), packed);
}

TEST_F(AudioConversion, AnyCountGivesTheSameSamples) {
    for (std::uint32_t from = 0; from < kFormats; ++from) {
        for (std::uint32_t to = 0; to < kFormats; ++to) {
            const TBytes source = MakeNoise(2000 * GetBufferSampleSize(from));
            const TBytes whole = Convert(source, from, to);
            for (const std::size_t count : {0, 1, 2, 3, 7, 63, 767, 768, 769, 1999}) {
                const auto size = static_cast<std::ptrdiff_t>(count);
                const TBytes some(source.begin(), source.begin() + size * GetBufferSampleSize(from));
                EXPECT_EQ(Convert(some, from, to),
                          TBytes(whole.begin(), whole.begin() + size * GetBufferSampleSize(to)))
                    << from << " to " << to << ", " << count;
            }
        }
    }
}

TEST_F(AudioConversion, MixesHaveTheBitsOfTheConverter) {
    constexpr std::uint32_t kNumbers[] = {1, 2, 6};
    for (std::uint32_t format = 0; format < 4; ++format) {
        for (const std::uint32_t from : kNumbers) {
            for (const std::uint32_t to : kNumbers) {
                constexpr std::size_t kFrames = 3001;
                const std::size_t size = GetBufferSampleSize(format);
                TBytes source = MakeNoise(kFrames * from * size, format);
                // Sums that are no numbers may differ in their sign.
                if (format == SAMPLE_FORMAT_FLOAT) source = BytesOf(MakeFloats(kFrames * from));
                const auto converter =
                    CreateAs<IAudioPcmChannelNumberConverter>(classid::CAudioPcmChannelNumberConverter);
                converter->SetNumChannels(to);
                converter->Connect(PcmSource({format, from, 8000}, source).Get());
                TBytes result(kFrames * to * size);
                MixChannels(result.data(), to, source.data(), from, format, kFrames);
                EXPECT_EQ(result, ReadThrough(*converter, result.size(), 120))
                    << format << ' ' << from << ' ' << to;
            }
        }
    }
}

TEST_F(AudioConversion, PackedMixesAreThoseOfWideSamples) {
    constexpr std::size_t kFrames = 1001;
    const std::pair<std::uint32_t, std::uint32_t> pairs[] = {{1, 2}, {1, 6}, {2, 1}, {2, 6},
                                                             {6, 1}, {6, 2}, {5, 5}};
    for (const auto& [from, to] : pairs) {
        const TBytes packed = MakeNoise(kFrames * from * 3);
        TBytes result(kFrames * to * 3);
        MixChannels(result.data(), to, packed.data(), from, BUFFER_FORMAT_24BIT, kFrames);
        TBytes wide(kFrames * to * 4);
        MixChannels(wide.data(), to, Unpack(packed).data(), from, BUFFER_FORMAT_32BIT, kFrames);
        EXPECT_EQ(result, Pack(wide)) << from << " to " << to;
    }
}

// True scale.

TEST_F(AudioConversion, FloatsAtTrueScale) {
    struct TRow {
        float value;
        std::int32_t as8, as16, as24, as32;
        std::uint64_t clipped;
    };
    constexpr std::int32_t kMax24 = 8388607;
    constexpr std::int32_t kMax32 = std::numeric_limits<std::int32_t>::max();
    constexpr std::int32_t kMin32 = std::numeric_limits<std::int32_t>::min();
    const TRow rows[] = {
        {0.0f, 128, 0, 0, 0, 0},
        {-0.0f, 128, 0, 0, 0, 0},
        {0.5f, 192, 16384, 4194304, 1073741824, 0},
        {-0.5f, 64, -16384, -4194304, -1073741824, 0},
        {1.0f, 255, 32767, kMax24, kMax32, 0},
        {-1.0f, 0, -32768, -kMax24 - 1, kMin32, 0},
        {0x1.FFFFFEp-1f, 255, 32767, kMax24, kMax32 - 127, 0},
        {1.5f, 255, 32767, kMax24, kMax32, 1},
        {-1.5f, 0, -32768, -kMax24 - 1, kMin32, 1},
        {3e38f, 255, 32767, kMax24, kMax32, 1},
        {kInfinity, 255, 32767, kMax24, kMax32, 1},
        {-kInfinity, 0, -32768, -kMax24 - 1, kMin32, 1},
        {kNan, 128, 0, 0, 0, 1},
        // Halves go up.
        {0.5f / 32768, 128, 1, 128, 32768, 0},
        {-0.5f / 32768, 128, 0, -128, -32768, 0},
        {1.5f / 32768, 128, 2, 384, 98304, 0},
        {-1.5f / 32768, 128, -1, -384, -98304, 0},
        {0x1p-149f, 128, 0, 0, 0, 0},
        {-0x1p-149f, 128, 0, 0, 0, 0},
    };
    for (const TRow& row : rows) {
        using TResult = std::pair<std::int32_t, std::uint64_t>;
        EXPECT_EQ(Store(row.value, BUFFER_FORMAT_8BIT), TResult(row.as8, row.clipped)) << row.value;
        EXPECT_EQ(Store(row.value, BUFFER_FORMAT_16BIT), TResult(row.as16, row.clipped)) << row.value;
        EXPECT_EQ(Store(row.value, BUFFER_FORMAT_24BIT), TResult(row.as24, row.clipped)) << row.value;
        EXPECT_EQ(Store(row.value, BUFFER_FORMAT_32BIT), TResult(row.as32, row.clipped)) << row.value;
    }
}

TEST_F(AudioConversion, WideningLosesNothing) {
    const std::pair<std::uint32_t, std::uint32_t> pairs[] = {
        {BUFFER_FORMAT_8BIT, BUFFER_FORMAT_16BIT},  {BUFFER_FORMAT_8BIT, BUFFER_FORMAT_FLOAT},
        {BUFFER_FORMAT_16BIT, BUFFER_FORMAT_24BIT}, {BUFFER_FORMAT_16BIT, BUFFER_FORMAT_32BIT},
        {BUFFER_FORMAT_16BIT, BUFFER_FORMAT_FLOAT}, {BUFFER_FORMAT_24BIT, BUFFER_FORMAT_32BIT},
        {BUFFER_FORMAT_24BIT, BUFFER_FORMAT_FLOAT}};
    for (const auto& [narrow, wide] : pairs) {
        const TBytes source = MakeNoise(4000 * GetBufferSampleSize(narrow));
        TBytes middle(4000 * GetBufferSampleSize(wide));
        // Dither is for what loses something.
        EXPECT_EQ(ConvertAudio(middle.data(), source.data(), 4000,
                               {.from = narrow, .to = wide, .dither = DITHER_TRIANGULAR}),
                  0u);
        TBytes back(source.size());
        EXPECT_EQ(ConvertAudio(back.data(), middle.data(), 4000, {.from = wide, .to = narrow}), 0u);
        EXPECT_EQ(back, source) << narrow << " to " << wide;
    }
}

TEST_F(AudioConversion, IntegersAreRounded) {
    const std::vector<std::int32_t> wide = {0x7FFF'FFFF, 0x0000'8000, 0x0000'7FFF,
                                            -0x8000,     -0x8001,     -0x7FFF'FFFF - 1};
    std::vector<std::int16_t> result(wide.size());
    EXPECT_EQ(ConvertAudio(result.data(), wide.data(), wide.size(), {.from = BUFFER_FORMAT_32BIT}), 0u);
    EXPECT_EQ(result, (std::vector<std::int16_t>{32767, 1, 0, 0, -1, -32768}));
}

TEST_F(AudioConversion, FloatsAreClippedWhenAskedFor) {
    const std::vector<float> values = {1.5f, -2.0f, kInfinity, 1.0f, -1.0f, 0.25f};
    std::vector<float> result(values.size());
    TAudioConversion conversion{.to = BUFFER_FORMAT_FLOAT};
    EXPECT_EQ(ConvertAudio(result.data(), values.data(), values.size(), conversion), 0u);
    EXPECT_EQ(result, values);
    conversion.clipsFloats = true;
    EXPECT_EQ(ConvertAudio(result.data(), values.data(), values.size(), conversion), 3u);
    EXPECT_EQ(result, (std::vector<float>{1, -1, 1, 1, -1, 0.25f}));
    float nan = kNan;
    EXPECT_EQ(ConvertAudio(result.data(), &nan, 1, conversion), 1u);
    EXPECT_EQ(result[0], 0.0f);
}

TEST_F(AudioConversion, MixesAddAndThenClip) {
    const TMixMatrix mix{3, 2, {{1, 0.5}, {0, 0, -1}}};
    const std::vector<float> frames = {0.75f, 1.0f, 0.5f, 0.25f, -0.5f, kNan, kInfinity, 0, -0.25f};
    std::vector<std::int16_t> result(6);
    EXPECT_EQ(ConvertAudio(result.data(), frames.data(), 3, {.mix = &mix}), 3u);
    // The weight of nothing takes nothing of what is no number.
    EXPECT_EQ(result, (std::vector<std::int16_t>{32767, -16384, 0, 0, 32767, 8192}));
}

TEST_F(AudioConversion, AnyDivisionGivesTheSameBits) {
    constexpr std::size_t kFrames = 5000;
    std::mt19937 random(7);
    const TMixMatrix mix = MakeMixMatrix(CHANNEL_LAYOUT_7_1, CHANNEL_LAYOUT_STEREO);
    for (const bool isMixed : {false, true}) {
        for (std::uint32_t to = 0; to < kFormats; ++to) {
            const std::size_t outputFrame = (isMixed ? 2 : 8) * GetBufferSampleSize(to);
            const std::vector<float> source = MakeFloats(kFrames * 8, to);
            const TAudioConversion conversion{.to = to,
                                              .channels = 8,
                                              .mix = isMixed ? &mix : nullptr,
                                              .dither = DITHER_TRIANGULAR,
                                              .seed = 99};
            TBytes whole(kFrames * outputFrame);
            const std::uint64_t clipped =
                ConvertAudio(whole.data(), source.data(), kFrames, conversion, 12345);
            TBytes parts(whole.size());
            std::uint64_t clippedInParts = 0;
            for (std::size_t at = 0; at < kFrames;) {
                const std::size_t count = std::min<std::size_t>(kFrames - at, random() % 300);
                clippedInParts += ConvertAudio(parts.data() + at * outputFrame, source.data() + at * 8, count,
                                               conversion, 12345 + at);
                at += count;
            }
            EXPECT_EQ(parts, whole) << isMixed << ' ' << to;
            EXPECT_EQ(clippedInParts, clipped) << isMixed << ' ' << to;
        }
    }
}

TEST_F(AudioConversion, EverySystemGivesTheSameBits) {
    const TMixMatrix mix = MakeMixMatrix(CHANNEL_LAYOUT_5_1, CHANNEL_LAYOUT_STEREO, MIX_LEVEL_SAFE);
    const std::vector<float> source = MakeFloats(6 * 20000);
    std::uint64_t sum = 0xCBF29CE484222325;
    for (std::uint32_t to = 0; to < kFormats; ++to) {
        TBytes result(20000 * 2 * GetBufferSampleSize(to));
        ConvertAudio(result.data(), source.data(), 20000,
                     {.to = to, .mix = &mix, .dither = DITHER_TRIANGULAR, .seed = 5});
        for (const std::uint8_t byte : result) sum = (sum ^ byte) * 0x100000001B3;
    }
    EXPECT_EQ(sum, 7309006783441979733u);
}

TEST_F(AudioConversion, DitherKeepsTheMeanAndHasTheNoiseOfATriangle) {
    constexpr std::size_t kCount = 200000;
    for (const double part : {0.0, 0.3, 0.5, -0.8}) {
        const std::vector<float> source(kCount, static_cast<float>(part / 32768));
        std::vector<std::int16_t> result(kCount);
        ConvertAudio(result.data(), source.data(), kCount, {.dither = DITHER_TRIANGULAR, .seed = 3});
        double sum = 0;
        double squares = 0;
        for (const std::int16_t sample : result) {
            sum += sample - part;
            squares += (sample - part) * (sample - part);
            EXPECT_LE(std::abs(sample - part), 1.5 + 1e-6);
        }
        EXPECT_NEAR(sum / kCount, 0, 0.01) << part;
        // A sixth of the dither and a twelfth of the rounding, whatever the sound is.
        EXPECT_NEAR(squares / kCount, 0.25, 0.005) << part;
    }
}

TEST_F(AudioConversion, WhatLosesNothingIsNotDithered) {
    const TMixMatrix same = MakeMixMatrix(CHANNEL_LAYOUT_STEREO, CHANNEL_LAYOUT_STEREO, MIX_LEVEL_SAFE);
    const std::vector<std::int16_t> source{1, -2, 32767, -32768, 0, 5};
    std::vector<std::int16_t> result(source.size());
    ConvertAudio(
        result.data(), source.data(), 3,
        {.from = BUFFER_FORMAT_16BIT, .to = BUFFER_FORMAT_16BIT, .mix = &same, .dither = DITHER_TRIANGULAR});
    EXPECT_EQ(result, source);
}

TEST_F(AudioConversion, TheSeedChoosesTheNoise) {
    const std::vector<float> silence(1000);
    const auto dither = [&](std::uint64_t seed) {
        std::vector<std::int16_t> result(silence.size());
        ConvertAudio(result.data(), silence.data(), silence.size(),
                     {.dither = DITHER_TRIANGULAR, .seed = seed});
        return result;
    };
    EXPECT_EQ(dither(1), dither(1));
    EXPECT_NE(dither(1), dither(2));
}

TEST_F(AudioConversion, Raises) {
    const auto row = [](const wchar* method, int line, const wchar* reason) {
        return TFailure{method, kFile, line, reason};
    };
    const wchar* const samples = VRL_L("vorlund::ConvertSamples");
    const wchar* const channels = VRL_L("vorlund::MixChannels");
    const wchar* const audio = VRL_L("vorlund::ConvertAudio");
    const wchar* const unknown = VRL_L("Unknown sample format");
    const wchar* const null = VRL_L("buffer is NULL");
    std::uint8_t bytes[64] = {};
    ExpectRaises<CInvalidParameterException>(row(samples, 1, unknown),
                                             [&] { ConvertSamples(bytes, 5, bytes, 0, 1); });
    ExpectRaises<CInvalidParameterException>(row(samples, 1, unknown),
                                             [&] { ConvertSamples(bytes, 0, bytes, 9, 0); });
    ExpectRaises<CNullPtrException>(row(samples, 2, null), [&] { ConvertSamples(nullptr, 0, bytes, 1, 1); });
    ExpectRaises<CNullPtrException>(row(samples, 2, null), [&] { ConvertSamples(bytes, 0, nullptr, 1, 1); });
    ConvertSamples(nullptr, 0, nullptr, 1, 0);

    const wchar* const doubles = VRL_L("vorlund::ConvertToDoubles");
    double real = 0;
    ExpectRaises<CInvalidParameterException>(row(doubles, 10, unknown),
                                             [&] { ConvertToDoubles(&real, bytes, 5, 1); });
    ExpectRaises<CNullPtrException>(row(doubles, 11, null), [&] { ConvertToDoubles(nullptr, bytes, 1, 1); });
    ExpectRaises<CNullPtrException>(row(doubles, 11, null), [&] { ConvertToDoubles(&real, nullptr, 1, 1); });
    ConvertToDoubles(nullptr, nullptr, 1, 0);

    const wchar* const number = VRL_L("Channel amount must be 1, 2 or 6");
    ExpectRaises<CInvalidParameterException>(row(channels, 3, unknown),
                                             [&] { MixChannels(bytes, 1, bytes, 2, 5, 1); });
    ExpectRaises<CInvalidParameterException>(row(channels, 4, number),
                                             [&] { MixChannels(bytes, 1, bytes, 3, 1, 1); });
    ExpectRaises<CInvalidParameterException>(row(channels, 4, number),
                                             [&] { MixChannels(bytes, 0, bytes, 0, 1, 1); });
    ExpectRaises<CNullPtrException>(row(channels, 5, null), [&] { MixChannels(bytes, 1, nullptr, 2, 1, 1); });
    ExpectRaises<CNullPtrException>(row(channels, 5, null), [&] { MixChannels(nullptr, 1, bytes, 2, 1, 1); });
    MixChannels(nullptr, 3, nullptr, 3, 1, 0);

    const auto convert = [&](const TAudioConversion& conversion) {
        ConvertAudio(bytes, bytes, 1, conversion);
    };
    ExpectRaises<CInvalidParameterException>(row(audio, 6, unknown), [&] { convert({.from = 5}); });
    ExpectRaises<CInvalidParameterException>(row(audio, 6, unknown), [&] { convert({.to = 7}); });
    ExpectRaises<CInvalidParameterException>(row(audio, 7, VRL_L("There are no channels")),
                                             [&] { convert({.channels = 0}); });
    const TFailure badMatrix =
        row(audio, 8, VRL_L("The matrix must have 1 to 8 channels and finite weights"));
    const TMixMatrix matrices[] = {
        {0, 1}, {1, 0}, {9, 1}, {1, 9}, {1, 2, {{1}, {HUGE_VAL}}}, {2, 1, {{0, NAN}}}};
    for (const TMixMatrix& matrix : matrices)
        ExpectRaises<CInvalidParameterException>(badMatrix, [&] { convert({.mix = &matrix}); });
    ExpectRaises<CNullPtrException>(row(audio, 9, null), [&] { ConvertAudio(bytes, nullptr, 1, {}); });
    ExpectRaises<CNullPtrException>(row(audio, 9, null), [&] { ConvertAudio(nullptr, bytes, 1, {}); });
    EXPECT_EQ(ConvertAudio(nullptr, nullptr, 0, {}), 0u);
}

} // namespace
} // namespace vorlund::test
