#include <vorlund/MemoryStream.h>
#include <vorlund/StreamTools.h>

#include "support/LibraryScope.h"
#include "support/Streams.h"

#include <gtest/gtest.h>

#include <array>
#include <limits>

namespace vorlund::test {
namespace {

class StreamTools : public testing::Test {
protected:
    ~StreamTools() noexcept override {}

    CLibraryScope library_;
    CRefPtr<CMemoryInputStream> stream_ = Make<CMemoryInputStream>();

    /// The stream delivers 16-bit sound of two channels: frame n is n and -n.
    void FillSound(int frames) {
        stream_->format.Set(TDataFormat_AudioPcm(SAMPLE_FORMAT_16BIT, 2, 1000));
        for (int frame = 0; frame < frames; ++frame) {
            for (const int sample : {frame, -frame}) {
                stream_->bytes.push_back(static_cast<std::uint8_t>(sample));
                stream_->bytes.push_back(static_cast<std::uint8_t>(sample >> 8));
            }
        }
    }
};

TEST_F(StreamTools, ReadWholeValues) {
    stream_->bytes = Ramp(11);
    std::array<std::uint32_t, 4> values{};
    EXPECT_EQ(ReadValues(*stream_, values), 2u);
    EXPECT_EQ(values[0], 0x03020100u);
    EXPECT_EQ(values[1], 0x07060504u);
    EXPECT_EQ(ReadValues(*stream_, values), 0u);
    EXPECT_EQ(ReadValues(*stream_, std::span<std::uint8_t>()), 0u);
}

TEST_F(StreamTools, WriteValuesAsTheyAre) {
    const auto out = CRefPtr<IMemoryOutputStream>::Adopt(CreateMemoryOutput());
    const std::array<std::uint16_t, 2> values{0x0201, 0x0403};
    WriteValues(*out, values);
    ASSERT_EQ(out->GetLength(), 4);
    EXPECT_EQ(static_cast<const std::uint8_t*>(out->GetData())[3], 4);
}

TEST_F(StreamTools, ReadAllOfAStreamUpToALimit) {
    for (const std::size_t size : {0u, 1u, 65535u, 65536u, 65537u, 300000u}) {
        stream_->bytes = Ramp(size);
        for (const std::size_t limit : {size, size + 1, size * 2, std::size_t{1} << 30}) {
            stream_->position = 0;
            const auto bytes = ReadAll(*stream_, limit);
            ASSERT_EQ(bytes.size(), size) << limit;
            EXPECT_TRUE(
                std::equal(bytes.begin(), bytes.end(), std::as_bytes(std::span(stream_->bytes)).begin()));
        }
        if (size == 0) continue;
        stream_->position = 0;
        EXPECT_THROW(ReadAll(*stream_, size - 1), std::length_error) << size;
    }
}

TEST_F(StreamTools, CountFramesAndSeconds) {
    FillSound(40000);
    CFrameReader reader(stream_);
    EXPECT_EQ(reader.GetFrameCount(), 40000u);
    EXPECT_EQ(reader.GetSeconds(), 40.0);
    EXPECT_EQ(reader.GetChannels(), 2u);
    EXPECT_EQ(reader.GetFormat().samplesPerSec, 1000u);

    std::array<float, 5> samples{};
    EXPECT_EQ(reader.Read(samples), 2u); // a frame is not divided
    EXPECT_EQ(samples[2], 1 / 32768.0F);
    EXPECT_EQ(samples[3], -1 / 32768.0F);

    reader.SeekSeconds(0.5);
    EXPECT_EQ(reader.Read(samples), 2u);
    EXPECT_EQ(samples[0], 500 / 32768.0F);
    reader.SeekSeconds(-1);
    EXPECT_EQ(reader.Read(samples), 2u);
    EXPECT_EQ(samples[0], 0);

    reader.SeekFrame(3);
    const std::vector<float> rest = reader.ReadRest();
    ASSERT_EQ(rest.size(), 2u * (40000 - 3));
    for (std::size_t frame = 0; frame < rest.size() / 2; ++frame) {
        const auto sample = static_cast<std::int16_t>(frame + 3);
        ASSERT_EQ(rest[2 * frame], static_cast<float>(sample) / 32768) << frame;
    }
    EXPECT_TRUE(reader.ReadRest().empty());
}

TEST_F(StreamTools, FindNoFramesInWhatIsNoSound) {
    EXPECT_THROW(CFrameReader({}), std::invalid_argument);
    EXPECT_THROW(CFrameReader{CRefPtr<IInputStream>(stream_)}, std::invalid_argument);
    for (const TDataFormat_AudioPcm& format :
         {TDataFormat_AudioPcm(9, 2, 1000), TDataFormat_AudioPcm(SAMPLE_FORMAT_16BIT, 0, 1000),
          TDataFormat_AudioPcm(SAMPLE_FORMAT_16BIT, 2, 0)}) {
        stream_->format.Set(format);
        EXPECT_THROW(CFrameReader{CRefPtr<IInputStream>(stream_)}, std::invalid_argument);
    }
}

TEST_F(StreamTools, MakeStreamsOfParts) {
    stream_->bytes = Ramp(100);
    stream_->format.Set(TDataFormat_AudioPcm());
    const auto first = MakeObject<CSubStream>(stream_, 10, 5);
    const auto second = MakeObject<CSubStream>(stream_, 90, 50);
    EXPECT_EQ(first->GetLength(), 5);
    EXPECT_EQ(second->GetLength(), 10);
    EXPECT_EQ(&first->GetFormat(), &stream_->GetFormat());

    // In turns.
    std::array<std::uint8_t, 3> bytes{};
    EXPECT_EQ(first->Read(bytes.data(), 3), 3u);
    EXPECT_EQ(bytes[0], 10);
    EXPECT_EQ(second->Read(bytes.data(), 3), 3u);
    EXPECT_EQ(bytes[0], 90);
    EXPECT_EQ(first->Tell(), 3);
    EXPECT_EQ(first->Read(bytes.data(), 3), 2u);
    EXPECT_EQ(bytes[1], 14);
    EXPECT_TRUE(first->Eof());
    EXPECT_EQ(first->Read(bytes.data(), 3), 0u);

    first->Seek(1000);
    EXPECT_EQ(first->Read(bytes.data(), 3), 0u);
    first->Skip(1);
    EXPECT_EQ(first->Tell(), 1000);
    first->Seek(4);
    first->Skip(100);
    EXPECT_EQ(first->Tell(), 5);
    EXPECT_THROW(first->Seek(-1), std::invalid_argument);
    EXPECT_THROW(first->Read(nullptr, 1), CNullPtrException);
}

TEST_F(StreamTools, CutPartsThatAreNotThere) {
    stream_->bytes = Ramp(10);
    EXPECT_EQ(MakeObject<CSubStream>(stream_, 20, 5)->GetLength(), 0);
    EXPECT_EQ(MakeObject<CSubStream>(stream_, 0, -1)->GetLength(), 0);
    EXPECT_EQ(MakeObject<CSubStream>(stream_, 3, std::numeric_limits<std::int64_t>::max())->GetLength(), 7);
    EXPECT_THROW(MakeObject<CSubStream>(stream_, -1, 5), std::invalid_argument);
    EXPECT_THROW(MakeObject<CSubStream>(CRefPtr<IInputStream>(), 0, 5), std::invalid_argument);
}

} // namespace
} // namespace vorlund::test
