// The random generator.
#include <vorlund/ClassIds.h>
#include <vorlund/RandomGenerator.h>

#include "data/base/InterfaceChain.h"
#include "data/sources/EndlessSources.h"
#include "support/LibraryScope.h"

#include <algorithm>

namespace vorlund::test {
namespace {

constexpr const wchar* kFile = VRL_L("src/vorlund/data/sources/RandomGenerator");
constexpr const wchar* kRead = VRL_L("vorlund::CRandomGenerator::Read");
constexpr TEndlessRows kRows{
    {VRL_L("vorlund::CRandomGenerator::Seek"), kFile, 96, VRL_L("Seek is not supported")},
    {VRL_L("vorlund::CRandomGenerator::Tell"), kFile, 100, VRL_L("Tell is not supported")},
    {VRL_L("vorlund::CRandomGenerator::GetLength"), kFile, 108, VRL_L("GetLength is not supported")},
    {kRead, kFile, 113, VRL_L("buffer is NULL")},
    {kRead, kFile, 134, VRL_L("sample is NULL")},
    {kRead, kFile, 135, VRL_L("Media samples are not supported")}};
constexpr TFailure kFormatIsNull{VRL_L("vorlund::CRandomGenerator::SetFormat"), kFile, 141,
                                 VRL_L("format is NULL")};

/// The generator once more, value by value.
class CModel {
public:
    explicit CModel(std::uint32_t seed = 0, std::uint32_t repeatCount = 1)
        : state_(seed), repeatCount_(repeatCount) {}

    TBytes Read(std::size_t size) {
        TBytes bytes;
        std::uint32_t counter = repeatCount_;
        std::uint8_t value = 0;
        while (bytes.size() < size) {
            if (counter >= repeatCount_) {
                state_ = static_cast<std::uint32_t>(state_ * 214013ULL + 2531011ULL);
                value = static_cast<std::uint8_t>(state_ >> 16 & 255);
                counter = 0;
            }
            bytes.push_back(value);
            ++counter;
        }
        return bytes;
    }

private:
    std::uint32_t state_;
    std::uint32_t repeatCount_;
};

class RandomGenerator : public testing::Test {
protected:
    ~RandomGenerator() noexcept override {}
    CLibraryScope library_;
    CRefPtr<IRandomGenerator> generator_ = CreateAs<IRandomGenerator>(classid::CRandomGenerator);
};

TEST_F(RandomGenerator, Identity) {
    EXPECT_EQ(generator_->GetClassId(), CId(0xA4116099, 0xFB8F43FD, 0xBF9EAA47, 0xF23C09F6));
    ExpectChain(generator_.Get(), {IRandomGenerator::InterfaceId, IInputStream::InterfaceId,
                                   IStream::InterfaceId, IObject::InterfaceId});
}

TEST_F(RandomGenerator, IsEndless) {
    ExpectEndless(*generator_, kRows, 0);
    // Nothing of that has drawn a value.
    EXPECT_EQ(ReadBytes(*generator_, 100), CModel().Read(100));
    ExpectEndless(*generator_, kRows, 0);
}

TEST_F(RandomGenerator, FirstBytes) {
    // 0 x 214013 + 2531011 = 0x269EC3, and on from there by hand.
    EXPECT_EQ(ReadBytes(*generator_, 1), TBytes{0x26});
    EXPECT_EQ(ReadBytes(*generator_, 3), (TBytes{0x27, 0xF6, 0x85}));
}

TEST_F(RandomGenerator, AnySizeInOneCallOrMany) {
    CModel model;
    for (std::size_t size = 0; size < 140; ++size) {
        EXPECT_EQ(ReadBytes(*generator_, size), model.Read(size)) << size;
    }
    EXPECT_EQ(ReadBytes(*generator_, 100001), model.Read(100001));
    EXPECT_EQ(ReadBytes(*generator_, 1), model.Read(1));
}

TEST_F(RandomGenerator, AnyAlignment) {
    CModel model;
    for (std::size_t shift = 0; shift < 33; ++shift) {
        TBytes block(400, 0xA5);
        EXPECT_EQ(generator_->Read(block.data() + shift, 100), 100U);
        TBytes expected(shift, 0xA5);
        const TBytes bytes = model.Read(100);
        expected.insert(expected.end(), bytes.begin(), bytes.end());
        expected.resize(400, 0xA5);
        EXPECT_EQ(block, expected);
    }
}

TEST_F(RandomGenerator, Seeds) {
    for (const std::uint32_t seed : {0U, 1U, 42U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU}) {
        EXPECT_EQ(generator_->SetSeed(seed), generator_.Get());
        EXPECT_EQ(ReferencesOf(generator_.Get()), 1);
        EXPECT_EQ(ReadBytes(*generator_, 1000), CModel(seed).Read(1000)) << seed;
    }
    // In the middle of the bytes as well.
    ReadBytes(*generator_, 5);
    generator_->SetSeed(7);
    EXPECT_EQ(ReadBytes(*generator_, 10), CModel(7).Read(10));
}

TEST_F(RandomGenerator, RunsOfThree) {
    EXPECT_EQ(generator_->SetRepeatCount(3), generator_.Get());
    EXPECT_EQ(ReferencesOf(generator_.Get()), 1);
    EXPECT_EQ(ReadBytes(*generator_, 7), (TBytes{0x26, 0x26, 0x26, 0x27, 0x27, 0x27, 0xF6}));
    // The cut run is not continued.
    EXPECT_EQ(ReadBytes(*generator_, 2), (TBytes{0x85, 0x85}));
}

TEST_F(RandomGenerator, RepeatCounts) {
    for (const std::uint32_t count : {0U, 1U, 2U, 16U, 17U, 1000U, 0xFFFFFFFFU}) {
        generator_->SetSeed(99)->SetRepeatCount(count);
        CModel model(99, count);
        for (const std::size_t size : {0U, 1U, 5U, 16U, 17U, 100U, 999U, 1000U, 1001U, 5000U}) {
            EXPECT_EQ(ReadBytes(*generator_, size), model.Read(size)) << count << ' ' << size;
        }
    }
}

TEST_F(RandomGenerator, ARepeatCountOfNothingIsOne) {
    generator_->SetRepeatCount(0);
    EXPECT_EQ(ReadBytes(*generator_, 50), CModel().Read(50));
}

TEST_F(RandomGenerator, ReadingNothingDrawsNothing) {
    std::uint8_t byte = 42;
    for (const std::uint32_t count : {1U, 5U}) {
        generator_->SetRepeatCount(count);
        EXPECT_EQ(generator_->Read(&byte, 0), 0U);
        EXPECT_EQ(byte, 42);
    }
    EXPECT_EQ(ReadBytes(*generator_, 1), TBytes{0x26});
}

TEST_F(RandomGenerator, FormatAtFirstIsACopyOfTheEmptyOne) {
    EXPECT_EQ(generator_->GetFormat().id, CId::Null());
    EXPECT_EQ(generator_->GetFormat().size, 20U);
    EXPECT_NE(&generator_->GetFormat(), &GetEmptyFormat());
}

TEST_F(RandomGenerator, AnyFormatIsCopiedWhole) {
    TDataFormat_VideoRgb video;
    video.SetDefaults();
    const TDataFormat_AudioPcm audio(3, 6, 96000);
    const TDataFormat_AudioPcm other(0, 1, 8000);
    TDataFormat unknown;
    unknown.id = CId(1, 2, 3, 4);
    const TDataFormat* const formats[] = {&audio, &other, &video, &unknown, &GetEmptyFormat(), &audio};
    for (const TDataFormat* const format : formats) {
        generator_->SetFormat(format);
        EXPECT_NE(&generator_->GetFormat(), format);
        EXPECT_EQ(std::memcmp(&generator_->GetFormat(), format, format->size), 0);
    }
    generator_->SetFormat(&generator_->GetFormat());
    EXPECT_EQ(std::memcmp(&generator_->GetFormat(), &audio, sizeof audio), 0);
    EXPECT_EQ(ReadBytes(*generator_, 50), CModel().Read(50));
}

TEST_F(RandomGenerator, NullFormatIsRefused) {
    ExpectRaises<CNullPtrException>(kFormatIsNull, [&] { generator_->SetFormat(nullptr); });
    EXPECT_EQ(generator_->GetFormat().size, 20U);
}

} // namespace
} // namespace vorlund::test
