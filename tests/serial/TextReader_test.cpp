// Lines of text: what each call consumes, and the exception that ends it.
#include "serial/SerialTest.h"
#include "support/DebugRecorder.h"
#include "support/Failures.h"

#include <vorlund/Exception.h>
#include <vorlund/TextReader.h>

#include <vector>

namespace vorlund::test {
namespace {

constexpr TFailure kNoCarriageReturn{VRL_L("vorlund::CString::FindFirst"), VRL_L("src/vorlund/api/String"),
                                     141, VRL_L("Didn't find content")};

/// Sees what leaves the buffer.
class CWatchedReader : public CTextReader {
public:
    using CTextReader::buffered_;
    using CTextReader::CTextReader;
    TBytes Buffered() const { return {buffer_, buffer_ + buffered_}; }

    void Flush() override {
        calls.push_back("Flush " + std::to_string(buffered_));
        CTextReader::Flush();
    }
    TCallLog calls;

protected:
    void FillBuffer() override {
        CTextReader::FillBuffer();
        calls.push_back("Fill " + std::to_string(buffered_));
    }
    void RemoveBufferedData(int count) override {
        calls.push_back("Remove " + std::to_string(count));
        CTextReader::RemoveBufferedData(count);
    }
};

struct TRow {
    const char* name;
    TCharFormat format;
    TBytes bytes;
    /// The calls of the first `ReadLine`.
    TCallLog calls;
    std::uint64_t position;
};

TBytes Repeated(std::size_t count, std::uint8_t byte, TBytes behind = {}) {
    TBytes bytes(count, byte);
    bytes.insert(bytes.end(), behind.begin(), behind.end());
    return bytes;
}

constexpr auto k8Bit = CHAR_FORMAT_8BIT;
constexpr auto kUtf16 = CHAR_FORMAT_UTF16;

const TRow kRows[] = {
    {"Empty", k8Bit, {}, {"Fill 0"}, 0},
    {"EmptyWide", kUtf16, {}, {"Fill 0"}, 0},
    {"LineFeed", k8Bit, {10, 10}, {"Fill 2", "Remove 1"}, 1},
    {"LineFeedWide", kUtf16, {10, 0, 10, 0}, {"Fill 4", "Remove 2"}, 2},
    {"CrLf", k8Bit, {0x61, 0x0D, 0x0A, 0x62}, {"Fill 4", "Remove 3"}, 3},
    {"NoLineFeed", k8Bit, {'a'}, {"Fill 1", "Flush 1", "Fill 0"}, 1},
    {"NoLineFeedWide", kUtf16, {'a', 0}, {"Fill 2", "Flush 2", "Fill 0"}, 2},
    {"OddByteAtTheEnd", kUtf16, {'a', 0, 'b'}, {"Fill 3", "Flush 3", "Fill 0"}, 3},
    {"OnlyAnOddByte", kUtf16, {10}, {"Fill 1", "Flush 1", "Fill 0"}, 1},
    {"OddByteBehindALineFeed", kUtf16, {10, 0, 'b'}, {"Fill 3", "Remove 2"}, 2},
    {"LineFeedAcrossUnits", kUtf16, {1, 10, 0, 1, 10, 0}, {"Fill 6", "Remove 6"}, 6},
    {"TenInTheHighByte", kUtf16, {0, 10, 10, 0}, {"Fill 4", "Remove 4"}, 4},
    {"EveryOtherFormatIsWide", static_cast<TCharFormat>(-5), {10, 0, 10, 0}, {"Fill 4", "Remove 2"}, 2},
    {"ZeroUnit", k8Bit, {'a', 0, 'b', 10, 'c'}, {"Fill 5", "Remove 4"}, 4},
    {"OnlyCarriageReturns", k8Bit, {13, 13, 13}, {"Fill 3", "Flush 3", "Fill 0"}, 3},
    {"CarriageReturnsInside", k8Bit, {13, 'a', 13, 'b', 13, 10}, {"Fill 6", "Remove 6"}, 6},
    {"JustTheBuffer", k8Bit, Repeated(1023, 'a', {10, 'b'}), {"Fill 1024", "Remove 1024"}, 1024},
    {"OneMoreThanTheBuffer",
     k8Bit,
     Repeated(1024, 'a', {10, 'b'}),
     {"Fill 1024", "Flush 1024", "Fill 2", "Remove 1"},
     1025},
    {"ThreeBuffers",
     k8Bit,
     Repeated(2500, 'a', {10}),
     {"Fill 1024", "Flush 1024", "Fill 1024", "Flush 1024", "Fill 453", "Remove 453"},
     2501},
    {"SixHundredUnits",
     kUtf16,
     Repeated(1200, 1, {10, 0, 'b', 0}),
     {"Fill 1024", "Flush 1024", "Fill 180", "Remove 178"},
     1202},
};

class TextReaderRow : public CSerialTest, public testing::WithParamInterface<TRow> {
protected:
    ~TextReaderRow() noexcept override {}
};

TEST_P(TextReaderRow, ConsumesALineAndRaises) {
    const TRow& row = GetParam();
    const auto stream = Source(row.bytes);
    CWatchedReader reader(stream.Get(), row.format);
    ExpectRaises<CObjectNotFoundException>(kNoCarriageReturn, [&] { reader.ReadLine(); });
    EXPECT_EQ(reader.calls, row.calls);
    EXPECT_EQ(reader.Tell(), row.position);
    EXPECT_EQ(reader.Eof(), row.position == row.bytes.size());
    EXPECT_EQ(ReferencesOf(stream.Get()), 2);
}

INSTANTIATE_TEST_SUITE_P(Rows, TextReaderRow, testing::ValuesIn(kRows),
                         [](const auto& row) { return row.param.name; });

using TextReader = CSerialTest;

TEST_F(TextReader, WhatFollowsALineStaysBuffered) {
    const auto stream = Source({0x61, 0x0D, 0x0A, 0x62});
    CWatchedReader reader(stream.Get(), CHAR_FORMAT_8BIT);
    EXPECT_EQ(Outcome([&] { reader.ReadLine(); }), kLineEnd);
    EXPECT_EQ(reader.Buffered(), (TBytes{0x62}));
    EXPECT_FALSE(reader.Eof());
    EXPECT_EQ(Outcome([&] { reader.ReadLine(); }), kLineEnd);
    EXPECT_TRUE(reader.Eof());
    EXPECT_EQ(Outcome([&] { reader.ReadLine(); }), kLineEnd);
    EXPECT_TRUE(reader.Eof());
}

TEST_F(TextReader, LineByLine) {
    const auto stream = Source(Bytes("one\r\n\r\nthree\nlast"));
    CTextReader reader(stream.Get(), CHAR_FORMAT_8BIT);
    std::vector<std::uint64_t> positions;
    while (!reader.Eof()) {
        EXPECT_EQ(Outcome([&] { reader.ReadLine(); }), kLineEnd);
        positions.push_back(reader.Tell());
    }
    EXPECT_EQ(positions, (std::vector<std::uint64_t>{5, 7, 13, 17}));
}

TEST_F(TextReader, TheExceptionIsReportedOnceALine) {
    const auto stream = Source(Bytes("\n\n"));
    CTextReader reader(stream.Get(), CHAR_FORMAT_8BIT);
    const CDebugRecorder recorder;
    ExpectRaises<CObjectNotFoundException>(kNoCarriageReturn, [&] { reader.ReadLine(); });
    ExpectRaises<CObjectNotFoundException>(kNoCarriageReturn, [&] { reader.ReadLine(); });
    EXPECT_EQ(recorder.GetEntries().size(), 2u);
    EXPECT_EQ(recorder.GetTexts(DEBUG_MESSAGE_OUTPUT).size(), 2u);
}

TEST_F(TextReader, SeekGoesToAnotherLine) {
    const auto stream = Source(Bytes("one\ntwo\nthree\n"));
    CTextReader reader(stream.Get(), CHAR_FORMAT_8BIT);
    ExpectRaises<CObjectNotFoundException>(kNoCarriageReturn, [&] { reader.ReadLine(); });
    reader.Seek(8);
    EXPECT_EQ(reader.Tell(), 8u);
    ExpectRaises<CObjectNotFoundException>(kNoCarriageReturn, [&] { reader.ReadLine(); });
    EXPECT_EQ(reader.Tell(), 14u);
    EXPECT_TRUE(reader.Eof());
    reader.Seek(0);
    EXPECT_FALSE(reader.Eof());
    ExpectRaises<CObjectNotFoundException>(kNoCarriageReturn, [&] { reader.ReadLine(); });
    EXPECT_EQ(reader.Tell(), 4u);
}

TEST_F(TextReader, ShortReadsAreFilledUpByAndBy) {
    const auto stream = Source(Bytes("abcd\nef"));
    stream->maximumRead = 2;
    CWatchedReader reader(stream.Get(), CHAR_FORMAT_8BIT);
    ExpectRaises<CObjectNotFoundException>(kNoCarriageReturn, [&] { reader.ReadLine(); });
    EXPECT_EQ(reader.calls, (TCallLog{"Fill 2", "Flush 2", "Fill 2", "Flush 2", "Fill 2", "Remove 1"}));
    EXPECT_EQ(reader.Tell(), 5u);
}

TEST_F(TextReader, WhatTheStreamRaisesPassesOn) {
    for (std::int64_t at = 0; at < 6; ++at) {
        const auto stream = Source(Bytes("ab\ncd\n"));
        stream->failAt = at;
        CTextReader reader(stream.Get(), CHAR_FORMAT_8BIT);
        // A line that was whole before the stream failed is consumed.
        if (at >= 3) {
            EXPECT_EQ(Outcome([&] { reader.ReadLine(); }), kLineEnd);
            EXPECT_EQ(reader.Tell(), 3u);
        }
        EXPECT_EQ(Outcome([&] { reader.ReadLine(); }), kReadFailed) << at;
    }
}

TEST_F(TextReader, AClaimOfTooManyBytesIsNotBelieved) {
    const auto stream = Source(Bytes("ab\n"));
    stream->exaggeration = 1u << 20;
    CWatchedReader reader(stream.Get(), CHAR_FORMAT_8BIT);
    ExpectRaises<CObjectNotFoundException>(kNoCarriageReturn, [&] { reader.ReadLine(); });
    EXPECT_EQ(reader.calls.front(), "Fill 1024");
}

TEST_F(TextReader, DiesThroughItsRoot) {
    const auto stream = Source({});
    CClassObject* const reader = new CTextReader(stream.Get(), CHAR_FORMAT_8BIT);
    EXPECT_EQ(ReferencesOf(stream.Get()), 2);
    delete reader;
    EXPECT_EQ(ReferencesOf(stream.Get()), 1);
}

} // namespace
} // namespace vorlund::test
