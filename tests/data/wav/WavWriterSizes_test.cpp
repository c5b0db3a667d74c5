// Files around 2 and 4 GiB, without the bytes.
#include "data/wav/SparseStream.h"
#include "data/wav/WavFile.h"
#include "support/Failures.h"
#include "support/LibraryScope.h"

#include <vector>

namespace vorlund::test {
namespace {

constexpr TFailure kTooLong{VRL_L("vorlund::CWavWriter::Write"), VRL_L("src/vorlund/data/wav/WavWriter"), 11,
                            VRL_L("The file would be longer than it can be")};
constexpr TFailure kNoRoomBehind{VRL_L("vorlund::CWavWriter::Finish"),
                                 VRL_L("src/vorlund/data/wav/WavWriter"), 19,
                                 VRL_L("The file would be longer than it can be")};

constexpr std::uint64_t k2G = std::uint64_t{1} << 31;
constexpr std::uint64_t k4G = std::uint64_t{1} << 32;
/// Of a file of 8 bits with room for large sizes, and of one without.
constexpr std::uint64_t kHeader = 80;
constexpr std::uint64_t kSmallHeader = 44;

class WavWriterSizes : public testing::Test {
protected:
    WavWriterSizes() : block_(std::size_t{64} << 20) {}

    void Write(CWavWriter& writer, std::uint64_t size) const {
        while (size > 0) {
            const std::uint64_t step = std::min<std::uint64_t>(size, block_.size());
            writer.Write(block_.data(), step);
            size -= step;
        }
    }

    CLibraryScope library_;
    const TBytes block_;
};

void ExpectFile(CSparseStream& stream, std::uint64_t size) {
    const std::uint64_t riff = kHeader - 8 + size + size % 2;
    const bool is64 = riff >= 0xFFFFFFFF;
    SCOPED_TRACE(size);
    EXPECT_EQ(stream.length, static_cast<std::int64_t>(riff + 8));
    EXPECT_EQ(Text(stream.head, 0, 4), is64 ? "RF64" : "RIFF");
    EXPECT_EQ(Number(stream.head, 4, 4), is64 ? 0xFFFFFFFF : riff);
    EXPECT_EQ(Text(stream.head, 8, 8), is64 ? "WAVEds64" : "WAVEJUNK");
    EXPECT_EQ(Number(stream.head, 16, 4), 28u);
    EXPECT_EQ(Number(stream.head, 20, 8), is64 ? riff : 0);
    EXPECT_EQ(Number(stream.head, 28, 8), is64 ? size : 0);
    EXPECT_EQ(Number(stream.head, 36, 8), is64 ? size : 0);
    EXPECT_EQ(Number(stream.head, 44, 4), 0u);
    EXPECT_EQ(Text(stream.head, 48, 4), "fmt ");
    EXPECT_EQ(Text(stream.head, 72, 4), "data");
    EXPECT_EQ(Number(stream.head, 76, 4), is64 ? 0xFFFFFFFF : size);
}

TEST_F(WavWriterSizes, AFileBecomesLargeInPlace) {
    // The last sizes of a RIFF, and the first of an RF64.
    const std::uint64_t last = 0xFFFFFFFE - (kHeader - 8);
    for (const std::uint64_t size : {k2G - kHeader, k2G - 1, k2G, k2G + 1, last - 1, last, last + 1, last + 2,
                                     k4G - 1, k4G, k4G + 1, 3 * k4G + 5}) {
        const auto stream = Make<CSparseStream>();
        CWavWriter writer(stream.Get(), {WAV_SAMPLE_8BIT, 1, 8000});
        Write(writer, size);
        writer.Close();
        ExpectFile(*stream, size);
    }
}

TEST_F(WavWriterSizes, EveryFlushIsAFile) {
    const auto stream = Make<CSparseStream>();
    CWavWriter writer(stream.Get(), {WAV_SAMPLE_8BIT, 1, 8000});
    std::uint64_t size = k4G - 200;
    Write(writer, size);
    for (int i = 0; i < 20; ++i) {
        writer.Flush();
        ExpectFile(*stream, size);
        Write(writer, 20);
        size += 20;
    }
    writer.Close();
    ExpectFile(*stream, size);
}

TEST_F(WavWriterSizes, AnAnnouncedLengthIsThereAtOnce) {
    const auto stream = Make<CMemoryOutputStream>();
    stream->capabilities = STREAM_CAPABILITY_WRITE;
    TWavWriterOptions options;
    options.length = 5 * k4G;
    {
        CWavWriter writer(stream.Get(), {WAV_SAMPLE_16BIT, 1, 8000}, options);
        EXPECT_EQ(Text(stream->bytes, 0, 4), "RF64");
        EXPECT_EQ(Number(stream->bytes, 20, 8), 5 * k4G + kHeader - 8);
        EXPECT_EQ(Number(stream->bytes, 28, 8), 5 * k4G);
        EXPECT_EQ(Number(stream->bytes, 36, 8), 5 * k4G / 2);
        EXPECT_EQ(stream->bytes.size(), kHeader);
    }
}

TEST_F(WavWriterSizes, FramesOfFloatBeyondTheField) {
    const auto stream = Make<CSparseStream>();
    CWavWriter writer(stream.Get(), {WAV_SAMPLE_FLOAT, 1, 8000});
    Write(writer, 4 * k4G);
    writer.Close();
    EXPECT_EQ(Text(stream->head, 74, 4), "fact");
    EXPECT_EQ(Number(stream->head, 82, 4), 0xFFFFFFFFu);
    EXPECT_EQ(Number(stream->head, 36, 8), k4G);
}

TEST_F(WavWriterSizes, WithoutRoomAFileEndsBefore) {
    const auto stream = Make<CSparseStream>();
    CWavWriter writer(stream.Get(), {WAV_SAMPLE_8BIT, 1, 8000}, Small());
    const std::uint64_t most = 0xFFFFFFFE - (kSmallHeader - 8);
    Write(writer, most - 1);
    ExpectRaises<CIOException>(kTooLong, [&] { writer.Write("abc", 3); });
    EXPECT_EQ(writer.GetSize(), most - 1);
    writer.Write("a", 1);
    ExpectRaises<CIOException>(kTooLong, [&] { writer.Write("a", 1); });
    writer.Close();
    EXPECT_EQ(stream->length, 0xFFFFFFFE + std::int64_t{8});
    EXPECT_EQ(Number(stream->head, 4, 4), 0xFFFFFFFEu);
    EXPECT_EQ(Number(stream->head, 40, 4), most);
}

TEST_F(WavWriterSizes, WithoutRoomMetadataDoNotFitBehind) {
    const auto stream = Make<CSparseStream>();
    CWavWriter writer(stream.Get(), {WAV_SAMPLE_8BIT, 1, 8000}, Small());
    const std::uint64_t most = 0xFFFFFFFE - (kSmallHeader - 8);
    Write(writer, most);
    writer.SetMetadata({.info = {{"INAM", "title"}}, .broadcast = {}, .cues = {}});
    ExpectRaises<CIOException>(kNoRoomBehind, [&] { writer.Close(); });
    EXPECT_EQ(Number(stream->head, 40, 4), most);
}

TEST_F(WavWriterSizes, NoSizeOverflows) {
    const auto stream = Make<CSparseStream>();
    CWavWriter writer(stream.Get(), {WAV_SAMPLE_8BIT, 1, 8000});
    for (const std::uint64_t size :
         {~std::uint64_t{0}, (std::uint64_t{1} << 63), (std::uint64_t{1} << 62) + 1})
        ExpectRaises<CIOException>(kTooLong, [&] { writer.Write("a", size); });
    writer.Write("a", 1);
    writer.Close();
    ExpectFile(*stream, 1);
}

} // namespace
} // namespace vorlund::test
