// Filling buffers of any size through the converters, from sources that lend their bytes and from others.
#include "data/file/TemporaryFolder.h"
#include "data/filters/PcmConverterSource.h"
#include "support/LibraryScope.h"
#include "support/WavBuilder.h"

#include <vorlund/AudioPcmConverters.h>
#include <vorlund/ClassIds.h>
#include <vorlund/Exception.h>
#include <vorlund/MemoryStream.h>
#include <vorlund/RefPtr.h>
#include <vorlund/Resource.h>
#include <vorlund/SetFormatIsf.h>
#include <vorlund/StreamSelector.h>
#include <vorlund/Vorlund.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <random>
#include <string>
#include <vector>

namespace vorlund::test {
namespace {

constexpr std::size_t kSampleSizes[] = {1, 2, 4, 4};

/// A sound and what is to become of it.
struct TSound {
    std::uint32_t from;
    std::uint32_t fromChannels;
    std::uint32_t to;
    std::uint32_t toChannels;

    std::size_t GetInputFrame() const { return kSampleSizes[from] * fromChannels; }
    std::size_t GetOutputFrame() const { return kSampleSizes[to] * toChannels; }
    TDataFormat_AudioPcm GetFormat() const { return {from, fromChannels, 44100}; }
    std::string ToString() const {
        return std::to_string(from) + "x" + std::to_string(fromChannels) + " to " + std::to_string(to) + "x" +
               std::to_string(toChannels);
    }
};

std::vector<TSound> Sounds() {
    std::vector<TSound> sounds;
    for (std::uint32_t from = 0; from < 4; ++from)
        for (std::uint32_t to = 0; to < 4; ++to)
            for (const std::uint32_t channels : {1u, 3u}) sounds.push_back({from, channels, to, channels});
    for (std::uint32_t format = 0; format < 4; ++format)
        for (const std::uint32_t from : {1u, 2u, 6u})
            for (const std::uint32_t to : {1u, 2u, 6u}) sounds.push_back({format, from, format, to});
    return sounds;
}

/// Bytes of anything, which are floats of a moderate size where they are to be floats.
TBytes Noise(const TSound& sound, std::size_t frames) {
    std::mt19937 random(7);
    TBytes bytes(frames * sound.GetInputFrame());
    for (std::uint8_t& byte : bytes) byte = static_cast<std::uint8_t>(random());
    if (sound.from == SAMPLE_FORMAT_FLOAT) {
        for (std::size_t at = 3; at < bytes.size(); at += 4)
            bytes[at] = static_cast<std::uint8_t>((bytes[at] & 0x80u) | 0x3E);
    }
    return bytes;
}

class ReadFramesFrom : public testing::Test {
protected:
    /// The sources of the bytes: the first lends nothing.
    using TSource = CRefPtr<IInputStream>;
    struct TKind {
        const char* name;
        std::function<TSource(ReadFramesFrom&, const TSound&, const TBytes&)> make;
    };

    static TSource Formatted(const TSound& sound, IInputStream& stream) {
        const auto filter = CreateAs<ISetFormatIsf>(classid::CSetFormatIsf);
        const TDataFormat_AudioPcm format = sound.GetFormat();
        filter->SetFormat(&format);
        filter->Connect(&stream);
        return CRefPtr<IInputStream>::Share(filter.Get());
    }
    static std::vector<TKind> Kinds() {
        return {
            {"foreign",
             [](ReadFramesFrom&, const TSound& sound, const TBytes& bytes) {
                 return CRefPtr<IInputStream>::Share(PcmSource(sound.GetFormat(), bytes).Get());
             }},
            {"memory",
             [](ReadFramesFrom&, const TSound& sound, const TBytes& bytes) {
                 const auto stream =
                     CRefPtr<IMemoryInputStream>::Adopt(CreateMemoryInput(bytes.data(), bytes.size()));
                 return Formatted(sound, *stream);
             }},
            {"resource",
             [](ReadFramesFrom&, const TSound& sound, const TBytes& bytes) {
                 const auto resource = CreateAs<IResource>(classid::CResource);
                 const auto source = PcmSource(sound.GetFormat(), bytes);
                 resource->Load(CInputStreamSelector(source.Get()));
                 return Formatted(sound, *CInputStreamSelector(resource.Get()).GetInputStreamTmp());
             }},
            {"file",
             [](ReadFramesFrom& test, const TSound& sound, const TBytes& bytes) {
                 const fs::path path = test.folder_.GetPath() / "raw";
                 WriteFile(path, {reinterpret_cast<const char*>(bytes.data()), bytes.size()});
                 const CInputStreamSelector selector(ToVorlund(path).c_str());
                 return Formatted(sound, *selector.GetInputStreamTmp());
             }},
            {"WAV",
             [](ReadFramesFrom& test, const TSound& sound, const TBytes& bytes) {
                 if (sound.from > SAMPLE_FORMAT_16BIT) return TSource();
                 const auto bits = static_cast<std::uint16_t>(8 * kSampleSizes[sound.from]);
                 const TBytes wav =
                     CWavBuilder()
                         .Format({.channels = static_cast<std::uint16_t>(sound.fromChannels), .bits = bits})
                         .Chunk("data", bytes)
                         .Chunk("note", Ramp(100))
                         .Build();
                 const fs::path path = test.folder_.GetPath() / "wav";
                 WriteFile(path, {reinterpret_cast<const char*>(wav.data()), wav.size()});
                 return CRefPtr<IInputStream>::Adopt(v.GetCodecClassStore().DecodeFile(
                     ToVorlund(path).c_str(), TDataFormat_AudioPcm::FormatId));
             }},
        };
    }
    static TSource Convert(const TSound& sound, const TSource& source) {
        if (sound.from != sound.to) {
            const auto converter =
                CreateAs<IAudioPcmSampleFormatConverter>(classid::CAudioPcmSampleFormatConverter);
            converter->SetSampleFormat(sound.to);
            converter->Connect(source.Get());
            return CRefPtr<IInputStream>::Share(converter.Get());
        }
        const auto converter =
            CreateAs<IAudioPcmChannelNumberConverter>(classid::CAudioPcmChannelNumberConverter);
        if (sound.toChannels != 3) converter->SetNumChannels(sound.toChannels);
        converter->Connect(source.Get());
        return CRefPtr<IInputStream>::Share(converter.Get());
    }
    /// By `Read`, so many frames at a time.
    static TBytes ByRead(const TSound& sound, IInputStream& stream, std::size_t frames) {
        TBytes all;
        for (;;) {
            const TBytes part = ReadOnce(stream, frames * sound.GetOutputFrame());
            if (part.empty()) return all;
            all.insert(all.end(), part.begin(), part.end());
        }
    }
    static TBytes ByFrames(IInputStream& stream, std::size_t size) {
        TBytes all;
        for (;;) {
            TBytes buffer(size + 64, kUnwritten);
            const auto count = static_cast<std::size_t>(ReadFrames(stream, buffer.data(), size));
            EXPECT_LE(count, size);
            const auto end = buffer.begin() + static_cast<std::ptrdiff_t>(count);
            EXPECT_EQ(std::count(end, buffer.end(), kUnwritten), buffer.end() - end);
            if (count == 0) return all;
            all.insert(all.end(), buffer.begin(), end);
        }
    }

    CLibraryScope library_;
    CTemporaryFolder folder_;
};

TEST_F(ReadFramesFrom, EverySourceAsReadDoes) {
    for (const TSound& sound : Sounds()) {
        SCOPED_TRACE(sound.ToString());
        const TBytes bytes = Noise(sound, 3'001);
        TBytes expected;
        for (const TKind& kind : Kinds()) {
            SCOPED_TRACE(kind.name);
            const TSource source = kind.make(*this, sound, bytes);
            if (!source) continue;
            const TSource stream = Convert(sound, source);
            // By single steps of whole frames, which is how the converters are documented.
            if (expected.empty()) {
                expected = ByRead(sound, *stream, 10);
                ASSERT_EQ(expected.size(), 3'001 * sound.GetOutputFrame());
                stream->Seek(0);
            }
            EXPECT_EQ(ByRead(sound, *stream, 42), expected);
            for (const std::size_t size : {sound.GetOutputFrame() * 10, std::size_t{5'000},
                                           std::size_t{65'536}, std::size_t{100'000}}) {
                stream->Seek(0);
                EXPECT_EQ(ByFrames(*stream, size), expected) << size;
                EXPECT_EQ(stream->Tell(), static_cast<std::int64_t>(expected.size())) << size;
            }
            // In turns, from a place inside.
            stream->Seek(0);
            TBytes mixed = ReadOnce(*stream, 10 * sound.GetOutputFrame());
            TBytes rest = ByFrames(*stream, 9'999);
            mixed.insert(mixed.end(), rest.begin(), rest.end());
            EXPECT_EQ(mixed, expected);
        }
    }
}

TEST_F(ReadFramesFrom, InputThatEndsInsideAFrame) {
    const TSound sound{SAMPLE_FORMAT_16BIT, 3, SAMPLE_FORMAT_FLOAT, 3};
    TBytes bytes = Noise(sound, 3'000);
    const TSource whole = Convert(sound, Kinds()[0].make(*this, sound, bytes));
    const TBytes expected = ByRead(sound, *whole, 10);
    bytes.insert(bytes.end(), 5, 1);
    for (const TKind& kind : Kinds()) {
        SCOPED_TRACE(kind.name);
        const TSource stream = Convert(sound, kind.make(*this, sound, bytes));
        EXPECT_EQ(ByFrames(*stream, 7'777), expected);
    }
}

TEST_F(ReadFramesFrom, ReadKeepsItsStep) {
    const TSound sound{SAMPLE_FORMAT_8BIT, 1, SAMPLE_FORMAT_16BIT, 1};
    const TBytes bytes = Noise(sound, 5'000);
    for (const TKind& kind : Kinds()) {
        SCOPED_TRACE(kind.name);
        const TSource stream = Convert(sound, kind.make(*this, sound, bytes));
        EXPECT_EQ(ReadOnce(*stream, 4'096).size(), 2'048u);
        EXPECT_EQ(stream->Tell(), 2'048);
        stream->Seek(2 * 4'824);
        EXPECT_EQ(ReadOnce(*stream, 4'096).size(), 352u);
    }
}

TEST_F(ReadFramesFrom, SourceThatDeliversLittleAtATime) {
    const TSound sound{SAMPLE_FORMAT_FLOAT, 6, SAMPLE_FORMAT_FLOAT, 2};
    const TBytes bytes = Noise(sound, 1'000);
    const auto source = PcmSource(sound.GetFormat(), bytes);
    const TSource stream = Convert(sound, CRefPtr<IInputStream>::Share(source.Get()));
    const TBytes expected = ByRead(sound, *stream, 10);
    stream->Seek(0);
    source->maximumRead = 7;
    EXPECT_EQ(ByFrames(*stream, 100'000), expected);
}

TEST_F(ReadFramesFrom, ResourceThatIsFreeAgainAfterwards) {
    const TSound sound{SAMPLE_FORMAT_32BIT, 2, SAMPLE_FORMAT_FLOAT, 2};
    const auto resource = CreateAs<IResource>(classid::CResource);
    const auto source = PcmSource(sound.GetFormat(), Noise(sound, 100));
    resource->Load(CInputStreamSelector(source.Get()));
    const TSource stream =
        Convert(sound, Formatted(sound, *CInputStreamSelector(resource.Get()).GetInputStreamTmp()));
    EXPECT_EQ(ByFrames(*stream, 64 * 1024).size(), 800u);
    EXPECT_EQ(ReadOnce(*stream, 100).size(), 0u);
    // Nobody holds the lock any more.
    resource->SetSize(0);
    EXPECT_EQ(resource->GetSize(), 0u);
}

TEST_F(ReadFramesFrom, FailuresAreThoseOfRead) {
    const auto converter = CreateAs<IAudioPcmSampleFormatConverter>(classid::CAudioPcmSampleFormatConverter);
    TBytes buffer(100);
    EXPECT_THROW(ReadFrames(*converter, nullptr, 1), CNullPtrException);
    EXPECT_THROW(ReadFrames(*converter, buffer.data(), buffer.size()), CIOException);
    const auto memory = CRefPtr<IMemoryInputStream>::Adopt(CreateMemoryInput("", 0));
    EXPECT_THROW(ReadFrames(*memory, nullptr, 1), CNullPtrException);
    EXPECT_EQ(ReadFrames(*memory, buffer.data(), buffer.size()), 0u);
}

TEST_F(ReadFramesFrom, SoundsWithoutFrames) {
    // No channels, and so many that no step holds a frame of the output, or of the input.
    for (const TSound& sound : {TSound{SAMPLE_FORMAT_8BIT, 0, SAMPLE_FORMAT_16BIT, 0},
                                {SAMPLE_FORMAT_8BIT, 5000, SAMPLE_FORMAT_16BIT, 5000},
                                {SAMPLE_FORMAT_32BIT, 3000, SAMPLE_FORMAT_8BIT, 3000}}) {
        const auto source = PcmSource(sound.GetFormat(), Ramp(50000));
        const auto stream = Convert(sound, CRefPtr<IInputStream>::Share(source.Get()));
        TBytes buffer(20000, kUnwritten);
        EXPECT_EQ(ReadFrames(*stream, buffer.data(), buffer.size()), 0u) << sound.ToString();
        EXPECT_EQ(source->position, 0) << sound.ToString();
        EXPECT_EQ(buffer, TBytes(20000, kUnwritten)) << sound.ToString();
    }
}

TEST_F(ReadFramesFrom, AnyStream) {
    const auto source = Make<CFaultyInputStream>();
    source->bytes = Ramp(1'000);
    source->maximumRead = 7;
    TBytes buffer(600);
    EXPECT_EQ(ReadFrames(*source, buffer.data(), 600), 600u);
    EXPECT_EQ(buffer, Ramp(600));
    EXPECT_EQ(ReadFrames(*source, buffer.data(), 600), 400u);
    EXPECT_EQ(ReadFrames(*source, buffer.data(), 600), 0u);
}

} // namespace
} // namespace vorlund::test
