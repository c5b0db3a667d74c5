// The resampler as a filter and for plain buffers: lengths, positions, and the same bits in any division.
#include "ResamplerTest.h"

#include "support/Failures.h"
#include "support/RandomReads.h"

#include <vorlund/AudioConversion.h>
#include <vorlund/Exception.h>

#include <algorithm>

namespace vorlund::test {
namespace {

constexpr const wchar* kFile = VRL_L("plugins/resample/Resampler");
constexpr std::pair<std::uint32_t, std::uint32_t> kRates[] = {
    {44100, 48000}, {48000, 44100}, {8000, 48000},   {96000, 44100}, {44101, 48000},
    {48000, 8000},  {1, 256},       {192000, 11025}, {32000, 32000}};

class Resampler : public CResamplerTest {
protected:
    static CRefPtr<CFaultyInputStream> MakeSource(const TFloats& floats, std::uint32_t channels,
                                                  std::uint32_t rate) {
        auto source = Make<CFaultyInputStream>();
        source->bytes.resize(floats.size() * sizeof(float));
        if (!floats.empty()) std::memcpy(source->bytes.data(), floats.data(), source->bytes.size());
        source->format = TDataFormat_AudioPcm(SAMPLE_FORMAT_FLOAT, channels, rate);
        return source;
    }
    static TBytes BytesOf(const TFloats& floats) {
        TBytes bytes(floats.size() * sizeof(float));
        if (!bytes.empty()) std::memcpy(bytes.data(), floats.data(), bytes.size());
        return bytes;
    }
    TBytes ReadAll(unsigned int seed, std::size_t most) { return ReadRandomly(*resampler_, seed, most); }
};

TEST_F(Resampler, LengthsAreRounded) {
    EXPECT_EQ(GetResampledFrames(44100, 44100, 48000), 48000u);
    EXPECT_EQ(GetResampledFrames(1, 2, 1), 1u);
    EXPECT_EQ(GetResampledFrames(1, 3, 1), 0u);
    EXPECT_EQ(GetResampledFrames(2, 3, 1), 1u);
    EXPECT_EQ(GetResampledFrames(5, 0, 1), 0u);
    EXPECT_EQ(GetResampledFrames(std::uint64_t{1} << 60, 2, 1), std::uint64_t{1} << 59);
    EXPECT_EQ(GetResampledFrames(0xFFFFFFFE, 0xFFFFFFFF, 0xFFFFFFFF), 0xFFFFFFFEu);
    for (std::uint64_t frames = 0; frames < 200; ++frames)
        for (const auto& [from, to] : kRates)
            EXPECT_EQ(GetResampledFrames(frames, from, to), (2 * frames * to + from) / (2 * from));
}

TEST_F(Resampler, EveryLengthComesOut) {
    for (const auto& [from, to] : kRates) {
        for (const std::size_t frames : {0, 1, 2, 3, 10, 100, 2047, 2048, 2049, 4096, 10007}) {
            // Silence would not show a wrong length.
            const TFloats source(frames, 0.5f);
            const TFloats result = Resample(source, {from, to});
            resampler_->SetTarget(to);
            resampler_->Connect(MakeSource(source, 1, from).Get());
            EXPECT_EQ(resampler_->GetLength(), static_cast<std::int64_t>(result.size() * sizeof(float)));
            EXPECT_EQ(ReadAll(1, 100000), BytesOf(result)) << from << " to " << to << ", " << frames;
            if (frames < 100) continue;
            // Neither end is filled up, although the sound swings out.
            EXPECT_GT(result.front(), 0.1f) << from << " to " << to << ", " << frames;
            EXPECT_GT(result.back(), 0.005f) << from << " to " << to << ", " << frames;
        }
    }
}

TEST_F(Resampler, AnyDivisionGivesTheSameBits) {
    const TFloats source = MakeNoise(30011 * 2);
    for (std::uint32_t quality = RESAMPLER_QUICK; quality <= RESAMPLER_BEST; ++quality) {
        for (const auto& [from, to] : kRates) {
            if (from == 1) continue;
            const TBytes expected = BytesOf(Resample(source, {from, to, 2, quality}));
            resampler_->SetTarget(to, quality);
            for (const unsigned int seed : {1U, 2U}) {
                const auto stream = MakeSource(source, 2, from);
                stream->maximumRead = seed == 1 ? 997 : 100003;
                resampler_->Connect(stream.Get());
                EXPECT_EQ(ReadAll(seed, seed == 1 ? 3000 : 300000), expected)
                    << from << " to " << to << ", " << quality;
            }
        }
    }
}

TEST_F(Resampler, ChannelsAreApart) {
    const TFloats source = MakeNoise(20000);
    TFloats both;
    for (const float sample : source) both.insert(both.end(), {sample, 0.25f, -sample});
    const TFloats one = Resample(source, {44100, 48000});
    const TFloats three = Resample(both, {44100, 48000, 3});
    ASSERT_EQ(three.size(), one.size() * 3);
    for (std::size_t i = 0; i < one.size(); ++i) {
        ASSERT_EQ(three[3 * i], one[i]) << i;
        ASSERT_EQ(three[3 * i + 2], -one[i]) << i;
    }
}

TEST_F(Resampler, SeeksToAnyByte) {
    const TFloats source = MakeNoise(20000);
    const TBytes expected = BytesOf(Resample(source, {44100, 48000}));
    resampler_->SetTarget(48000);
    resampler_->Connect(MakeSource(source, 1, 44100).Get());
    for (const std::size_t position : {50000, 10, 11, 60003, 60003, 0, 86900}) {
        resampler_->Seek(static_cast<std::int64_t>(position));
        EXPECT_EQ(resampler_->Tell(), static_cast<std::int64_t>(position));
        TBytes result(100);
        ASSERT_EQ(resampler_->Read(result.data(), result.size()), result.size());
        EXPECT_TRUE(std::equal(result.begin(), result.end(),
                               expected.begin() + static_cast<std::ptrdiff_t>(position)))
            << position;
    }
    resampler_->Seek(1000000);
    EXPECT_EQ(resampler_->Tell(), static_cast<std::int64_t>(expected.size()));
    EXPECT_TRUE(resampler_->Eof());
    resampler_->Seek(0);
    resampler_->Skip(expected.size() - 3);
    EXPECT_FALSE(resampler_->Eof());
    EXPECT_EQ(ReadAll(1, 10), TBytes(expected.end() - 3, expected.end()));
    ExpectRaises<CIOException>({VRL_L("CResampler::Seek"), kFile, 3, VRL_L("Position is negative")},
                               [&] { resampler_->Seek(-1); });
}

TEST_F(Resampler, TakesEveryFormatAndFollowsItsSource) {
    const TFloats source = MakeNoise(10000);
    for (const std::uint32_t format : {SAMPLE_FORMAT_8BIT, SAMPLE_FORMAT_16BIT, SAMPLE_FORMAT_32BIT}) {
        const auto stream = Make<CMemoryInputStream>();
        stream->bytes.resize(source.size() * GetBufferSampleSize(format));
        ConvertAudio(stream->bytes.data(), source.data(), source.size(), {.to = format});
        stream->format = TDataFormat_AudioPcm(format, 2, 44100);
        TFloats floats(source.size());
        ConvertAudio(floats.data(), stream->bytes.data(), floats.size(),
                     {.from = format, .to = BUFFER_FORMAT_FLOAT});

        resampler_->SetTarget(96000);
        // From its beginning, wherever it is.
        stream->position = 8;
        resampler_->Connect(stream.Get());
        const auto& result = static_cast<const TDataFormat_AudioPcm&>(resampler_->GetFormat());
        EXPECT_EQ(result.sampleFormat, std::uint32_t{SAMPLE_FORMAT_FLOAT});
        EXPECT_EQ(result.channels, 2u);
        EXPECT_EQ(result.samplesPerSec, 96000u);
        EXPECT_EQ(ReadAll(1, 5000), BytesOf(Resample(floats, {44100, 96000, 2})));

        resampler_->SetTarget(0);
        stream->position = 0;
        resampler_->Connect(stream.Get());
        EXPECT_EQ(static_cast<const TDataFormat_AudioPcm&>(resampler_->GetFormat()).samplesPerSec, 44100u);
        EXPECT_EQ(ReadAll(1, 5000), BytesOf(floats));
    }
}

TEST_F(Resampler, Raises) {
    const auto row = [](const wchar* method, int line, const wchar* reason) {
        return TFailure{method, kFile, line, reason};
    };
    const wchar* const resample = VRL_L("CResampler::Resample");
    const wchar* const quality = VRL_L("Unknown quality");
    ExpectRaises<CInvalidParameterException>(row(VRL_L("CResampler::SetTarget"), 4, quality),
                                             [&] { resampler_->SetTarget(1, 5); });
    float sample = 0;
    const auto refuse = [&](const TFailure& failure, const TResampling& resampling) {
        ExpectRaises<CInvalidParameterException>(
            failure, [&] { resampler_->Resample(&sample, &sample, 1, resampling); });
    };
    refuse(row(resample, 5, quality), {1, 1, 1, 5});
    const TFailure rates = row(resample, 6, VRL_L("Rates or channels cannot be resampled"));
    const TResampling bad[] = {{0, 1}, {1, 0}, {1, 257}, {257, 1}, {1, 1, 0}, {1, 1, 1025}};
    for (const TResampling& resampling : bad) refuse(rates, resampling);
    ExpectRaises<CNullPtrException>(row(resample, 7, VRL_L("buffer is NULL")), [&] {
        resampler_->Resample(nullptr, &sample, 1, {1, 1});
    });
    resampler_->Resample(nullptr, nullptr, 0, {1, 2});

    resampler_->SetTarget(300000);
    ExpectRaises<CDataFormatException>(
        row(VRL_L("CResampler::Connect"), 2, VRL_L("Unsupported format in decoded stream")),
        [&] { resampler_->Connect(MakeSource({}, 1, 1000).Get()); });
    EXPECT_FALSE(resampler_->GetInputStream());
    EXPECT_TRUE(resampler_->Eof());
}

} // namespace
} // namespace vorlund::test
