// The filter that converts at true scale: its bytes are those of plain buffers, however they are asked for.
#include "data/base/InterfaceChain.h"
#include "data/filters/PcmConverterSource.h"
#include "support/Failures.h"
#include "support/LibraryScope.h"
#include "support/Probes.h"
#include "support/RandomReads.h"

#include <vorlund/AudioConversion.h>
#include <vorlund/RefPtr.h>
#include <vorlund/StreamFilter.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <functional>
#include <random>

namespace vorlund::test {
namespace {

constexpr const wchar* kFile = VRL_L("src/vorlund/data/filters/AudioConverter");

TBytes MakeSound(std::size_t frames, std::uint32_t channels) {
    std::mt19937 random(11);
    std::vector<float> samples(frames * channels);
    for (auto& sample : samples)
        sample = static_cast<float>(static_cast<std::int32_t>(random())) * 0x1p-31f * 1.25f;
    return BytesOf(samples);
}

/// A source that does something when it is read.
class CMeddlingStream : public CFaultyInputStream {
public:
    static constexpr CId ClassId{0x7E57571A, 0x5D20B1C4, 0x8F6E3A97, 0x51B3A8C1};

    std::function<void()> meddle;

    using CFaultyInputStream::Read;
    std::uint64_t Read(void* buffer, std::uint64_t size) override {
        const std::uint64_t count = CFaultyInputStream::Read(buffer, size);
        if (const auto act = std::exchange(meddle, nullptr)) act();
        return count;
    }
};

class AudioConverter : public testing::Test {
protected:
    ~AudioConverter() noexcept override {}

    static CRefPtr<IInputStreamFilter> Create(const TAudioTarget& target) {
        return CRefPtr<IInputStreamFilter>::Adopt(CreateAudioConverter(target));
    }
    /// The whole result in random reads.
    static TBytes ReadAll(IInputStream& stream, unsigned int seed, std::size_t most) {
        return ReadRandomly(stream, seed, most, [&](const TBytes& bytes) {
            EXPECT_EQ(static_cast<std::size_t>(stream.Tell()), bytes.size());
        });
    }
    static TAudioTarget MakeTarget() {
        return {.sampleFormat = SAMPLE_FORMAT_16BIT,
                .layout = CHANNEL_LAYOUT_STEREO,
                .mixLevel = MIX_LEVEL_SAFE,
                .dither = DITHER_TRIANGULAR,
                .seed = 4};
    }
    /// What `MakeTarget` makes of six channels.
    static TBytes Expect(const TBytes& sound) {
        const TMixMatrix mix = MakeMixMatrix(CHANNEL_LAYOUT_5_1, CHANNEL_LAYOUT_STEREO, MIX_LEVEL_SAFE);
        const std::size_t frames = sound.size() / 24;
        TBytes expected(frames * 4);
        ConvertAudio(expected.data(), sound.data(), frames,
                     {.to = BUFFER_FORMAT_16BIT, .mix = &mix, .dither = DITHER_TRIANGULAR, .seed = 4});
        return expected;
    }

    CLibraryScope library_;
};

TEST_F(AudioConverter, IsAFilter) {
    const auto filter = Create({});
    ExpectChain(filter.Get(), {IInputStreamFilter::InterfaceId, IInputStream::InterfaceId,
                               IStream::InterfaceId, IObject::InterfaceId});
    EXPECT_TRUE(filter->Eof());
    EXPECT_FALSE(filter->GetInputStream());
}

TEST_F(AudioConverter, AnyReadsOfAnySourceGiveTheBytesOfPlainBuffers) {
    const TBytes sound = MakeSound(10000, 6);
    const TBytes expected = Expect(sound);
    for (const unsigned int seed : {1U, 2U, 3U}) {
        const auto source = PcmSource({SAMPLE_FORMAT_FLOAT, 6, 48000}, sound);
        source->maximumRead = seed * 1001;
        const auto filter = Create(MakeTarget());
        filter->Connect(source.Get());
        EXPECT_EQ(PcmText(*filter), "code 1, channels 2, rate 48000");
        EXPECT_EQ(filter->GetLength(), static_cast<std::int64_t>(expected.size()));
        EXPECT_FALSE(filter->Eof());
        EXPECT_EQ(ReadAll(*filter, seed, seed == 1 ? 7 : 20000), expected) << seed;
        EXPECT_TRUE(filter->Eof());
    }
}

TEST_F(AudioConverter, SeeksToAnyByte) {
    const TBytes sound = MakeSound(10000, 6);
    const TBytes expected = Expect(sound);
    const auto filter = Create(MakeTarget());
    filter->Connect(PcmSource({SAMPLE_FORMAT_FLOAT, 6, 48000}, sound).Get());
    for (const std::int64_t position : {39999, 0, 1, 20002, 8191, 8192, 8193, 40000, 3}) {
        filter->Seek(position);
        EXPECT_EQ(filter->Tell(), position);
        const auto at = static_cast<std::ptrdiff_t>(position);
        TBytes rest(expected.size() - static_cast<std::size_t>(at) + 1);
        EXPECT_EQ(filter->Read(rest.data(), rest.size()), rest.size() - 1);
        rest.pop_back();
        EXPECT_EQ(rest, TBytes(expected.begin() + at, expected.end())) << position;
    }
    filter->Seek(1 << 30);
    EXPECT_EQ(filter->Tell(), 40000);
    EXPECT_TRUE(filter->Eof());
    filter->Seek(100);
    filter->Skip(8201);
    EXPECT_EQ(filter->Tell(), 8301);
    EXPECT_EQ(ReadOnce(*filter, 50), TBytes(expected.begin() + 8301, expected.begin() + 8351));
    filter->Skip(~std::uint64_t{0});
    EXPECT_EQ(filter->Tell(), 40000);
    ExpectRaises<CIOException>(
        {VRL_L("vorlund::CAudioConverter::Seek"), kFile, 5, VRL_L("Position is negative")},
        [&] { filter->Seek(-1); });
}

TEST_F(AudioConverter, FollowsItsSource) {
    const auto filter = Create({.sampleFormat = SAMPLE_FORMAT_32BIT});
    const TBytes bytes = {0x80, 0xFF, 0x00, 0x81};
    filter->Connect(PcmSource({SAMPLE_FORMAT_8BIT, 2, 8000}, bytes).Get());
    EXPECT_EQ(PcmText(*filter), "code 2, channels 2, rate 8000");
    EXPECT_EQ(SamplesOf<std::int32_t>(ReadOnce(*filter, 100)),
              (std::vector<std::int32_t>{0, 127 << 24, -0x7FFFFFFF - 1, 1 << 24}));
    filter->Connect(
        PcmSource({SAMPLE_FORMAT_32BIT, 12, 96000}, BytesOf(std::vector<std::int32_t>(24, -5))).Get());
    EXPECT_EQ(PcmText(*filter), "code 2, channels 12, rate 96000");
    EXPECT_EQ(SamplesOf<std::int32_t>(ReadOnce(*filter, 200)), std::vector<std::int32_t>(24, -5));
    filter->Disconnect();
    EXPECT_TRUE(filter->Eof());
}

TEST_F(AudioConverter, TakesAMatrixAndLayouts) {
    const TMixMatrix matrix{2, 3, {{1, 0}, {0.5, 0.5}, {0, -1}}};
    const auto given = Create({.mix = &matrix});
    const TBytes frame = BytesOf(std::vector<float>{0.5f, 0.25f});
    given->Connect(PcmSource({SAMPLE_FORMAT_FLOAT, 2, 8000}, frame).Get());
    EXPECT_EQ(SamplesOf<float>(ReadOnce(*given, 100)), (std::vector<float>{0.5f, 0.375f, -0.25f}));

    // Two channels that are not left and right.
    const auto told = Create(
        {.layout = CHANNEL_LAYOUT_STEREO, .sourceLayout = CHANNEL_FRONT_CENTRE | CHANNEL_LOW_FREQUENCY});
    told->Connect(PcmSource({SAMPLE_FORMAT_FLOAT, 2, 8000}, frame).Get());
    const auto centre = static_cast<float>(0.5 * std::sqrt(0.5));
    EXPECT_EQ(SamplesOf<float>(ReadOnce(*told, 100)), (std::vector<float>{centre, centre}));

    // The layout that it has.
    const auto same = Create({.layout = CHANNEL_LAYOUT_STEREO});
    same->Connect(PcmSource({SAMPLE_FORMAT_FLOAT, 2, 8000}, frame).Get());
    EXPECT_EQ(SamplesOf<float>(ReadOnce(*same, 100)), (std::vector<float>{0.5f, 0.25f}));
}

TEST_F(AudioConverter, LeavesOutPartsOfFrames) {
    const auto filter = Create({.sampleFormat = SAMPLE_FORMAT_16BIT});
    filter->Connect(PcmSource({SAMPLE_FORMAT_FLOAT, 2, 8000}, TBytes(8 * 5 + 7)).Get());
    EXPECT_EQ(filter->GetLength(), 20);
    EXPECT_EQ(ReadOnce(*filter, 100), TBytes(20));
}

TEST_F(AudioConverter, RefusesWhatItCannotMix) {
    const TFailure failure{VRL_L("vorlund::CAudioConverter::Connect"), kFile, 4,
                           VRL_L("Unsupported format in decoded stream")};
    const TMixMatrix matrix{2, 1, {{1, 1}}};
    const auto mono = Create({.layout = CHANNEL_LAYOUT_MONO});
    const auto given = Create({.mix = &matrix});
    const auto refuse = [&](IInputStreamFilter& filter, const TDataFormat_AudioPcm& format) {
        ExpectRaises<CDataFormatException>(failure,
                                           [&] { filter.Connect(PcmSource(format, TBytes(100)).Get()); });
        EXPECT_FALSE(filter.GetInputStream());
    };
    refuse(*mono, {SAMPLE_FORMAT_16BIT, 9, 8000});
    refuse(*mono, {SAMPLE_FORMAT_16BIT, 0, 8000});
    refuse(*mono, {7, 1, 8000});
    refuse(*given, {SAMPLE_FORMAT_16BIT, 1, 8000});
    refuse(*given, {SAMPLE_FORMAT_16BIT, 0x8000'0002, 8000});
}

TEST_F(AudioConverter, RefusesTargets) {
    const auto row = [](int line, const wchar* reason) {
        return TFailure{VRL_L("vorlund::CreateAudioConverter"), kFile, line, reason};
    };
    ExpectRaises<CInvalidParameterException>(row(1, VRL_L("Unknown sample format")),
                                             [] { CreateAudioConverter({.sampleFormat = 4}); });
    const TFailure layout = row(2, VRL_L("A layout must have 1 to 8 channels"));
    ExpectRaises<CInvalidParameterException>(layout, [] { CreateAudioConverter({.layout = 0x1FF}); });
    ExpectRaises<CInvalidParameterException>(layout, [] { CreateAudioConverter({.sourceLayout = ~0U}); });
    const TMixMatrix none;
    ExpectRaises<CInvalidParameterException>(
        row(3, VRL_L("The matrix must have 1 to 8 channels and finite weights")),
        [&] { CreateAudioConverter({.mix = &none}); });
}

TEST_F(AudioConverter, ASourceThatRaisesLeavesItWhereItIs) {
    const TBytes sound = MakeSound(10000, 6);
    const auto source = PcmSource({SAMPLE_FORMAT_FLOAT, 6, 48000}, sound);
    source->failAt = 100000;
    const auto filter = Create(MakeTarget());
    filter->Connect(source.Get());
    TBytes result(40000);
    EXPECT_THROW(filter->Read(result.data(), result.size()), CIOException);
    const auto at = static_cast<std::size_t>(filter->Tell());
    source->failAt.reset();
    EXPECT_EQ(filter->Read(result.data() + at, result.size() - at), result.size() - at);
    EXPECT_EQ(result, Expect(sound));
}

TEST_F(AudioConverter, ASourceMayUseItWhileItIsRead) {
    using TAct = std::function<void(CRefPtr<IInputStreamFilter>&)>;
    const TBytes sound = MakeSound(5000, 6);
    TBytes other(100);
    const TAct acts[] = {
        [](auto& filter) { filter->Disconnect(); },
        [](auto& filter) { filter.Reset(); },
        [](auto& filter) { filter->Seek(0); },
        [&](auto& filter) { EXPECT_EQ(filter->Read(other.data(), other.size()), 0u); },
        [&](auto& filter) {
            filter->Connect(PcmSource({SAMPLE_FORMAT_8BIT, 1, 8000}, other).Get());
        },
    };
    for (const TAct& act : acts) {
        const auto source = Make<CMeddlingStream>();
        source->bytes = sound;
        source->format = TDataFormat_AudioPcm(SAMPLE_FORMAT_FLOAT, 6, 48000);
        auto filter = Create({});
        filter->Connect(source.Get());
        source->meddle = [&] { act(filter); };
        IInputStreamFilter* const used = filter.Get();
        TBytes result(200000);
        EXPECT_LE(used->Read(result.data(), result.size()), sound.size());
        // Afterwards it delivers what it is then connected to.
        if (filter && !filter->Eof()) ReadAll(*filter, 1, 5000);
    }
    EXPECT_EQ(CLiveObject::GetCount(), 0);
}

/// Disconnects its filter when it is asked for its length, or moved.
class CUnpluggingStream : public CFaultyInputStream {
public:
    IInputStreamFilter* atLength = nullptr;
    IInputStreamFilter* atSeek = nullptr;

    std::int64_t GetLength() override {
        if (auto* const filter = std::exchange(atLength, nullptr)) filter->Disconnect();
        return CFaultyInputStream::GetLength();
    }
    void Seek(std::int64_t newPosition) override {
        if (auto* const filter = std::exchange(atSeek, nullptr)) filter->Disconnect();
        CFaultyInputStream::Seek(newPosition);
    }
};

TEST_F(AudioConverter, AStreamMayDisconnectItWhileItIsMoved) {
    for (IInputStreamFilter* CUnpluggingStream::*const when :
         {&CUnpluggingStream::atLength, &CUnpluggingStream::atSeek}) {
        const auto source = Make<CUnpluggingStream>();
        source->bytes = MakeSound(100, 6);
        source->format = TDataFormat_AudioPcm(SAMPLE_FORMAT_FLOAT, 6, 48000);
        const auto filter = Create(MakeTarget());
        filter->Connect(source.Get());
        source.Get()->*when = filter.Get();
        filter->Seek(200);
        EXPECT_TRUE(filter->Eof());
        EXPECT_FALSE(CRefPtr<IInputStream>::Adopt(filter->GetInputStream()));
        filter->Connect(source.Get());
        filter->Seek(200);
        EXPECT_EQ(filter->Tell(), 200);
    }
}

} // namespace
} // namespace vorlund::test
