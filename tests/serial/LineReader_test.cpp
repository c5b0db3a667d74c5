// Lines that arrive.
#include "serial/SerialTest.h"

#include <vorlund/Exception.h>
#include <vorlund/LineReader.h>

#include <functional>
#include <utility>
#include <vector>

namespace vorlund::test {
namespace {

struct TRow {
    const char* name;
    TBytes bytes;
    std::vector<wstring> lines;
    bool isWide = false;
};

const wstring kNone;

const TRow kRows[] = {
    {"Empty", {}, {}},
    {"OnlyALineFeed", {10}, {kNone}},
    {"TwoLineFeeds", {10, 10}, {kNone, kNone}},
    {"OneLine", Bytes("abc\n"), {VRL_L("abc")}},
    {"LastWithoutLineFeed", Bytes("abc\nde"), {VRL_L("abc"), VRL_L("de")}},
    {"CrLf", Bytes("abc\r\nde\r\n"), {VRL_L("abc"), VRL_L("de")}},
    {"CarriageReturnsAnywhere", Bytes("\ra\r\rb\r\n\r"), {VRL_L("ab"), kNone}},
    {"OnlyCarriageReturns", Bytes("\r\r\r"), {kNone}},
    {"LinesOfCarriageReturns", Bytes("\r\r\n\r\n"), {kNone, kNone}},
    {"ZeroUnits", {'a', 0, 'b', 10, 0, 10, 0}, {Units("a\0b"), Units("\0"), Units("\0")}},
    {"Latin", {0xE9, 0xFF, 0x80, 10}, {VRL_L("\u00E9\u00FF\u0080")}},
    {"WideEmpty", {}, {}, true},
    {"Wide", WideBytes(VRL_L("a\u20AC\r\nb\n")), {VRL_L("a\u20AC"), VRL_L("b")}, true},
    {"WideLast", WideBytes(VRL_L("a\n\u010A")), {VRL_L("a"), VRL_L("\u010A")}, true},
    {"WideZeroUnits", {'a', 0, 0, 0, 'b', 0, 10, 0}, {Units("a\0b")}, true},
    {"WideOddEnd", {'a', 0, 10, 0, 'b', 0, 'c'}, {VRL_L("a"), VRL_L("b")}, true},
    {"WideOddEndBehindALineFeed", {'a', 0, 10, 0, 'b'}, {VRL_L("a")}, true},
    {"WideOnlyAnOddByte", {10}, {}, true},
};

using TLines = std::vector<std::string>;

TLines NarrowLines(const std::vector<wstring>& lines) {
    TLines narrow;
    for (const wstring& line : lines) narrow.push_back(Narrow(line));
    return narrow;
}

TLines ReadAll(CLineReader& reader) {
    std::vector<wstring> lines;
    wstring line = VRL_L("before");
    while (reader.ReadLine(line)) lines.push_back(line);
    EXPECT_TRUE(line.empty());
    EXPECT_TRUE(reader.Eof());
    EXPECT_FALSE(reader.ReadLine(line));
    return NarrowLines(lines);
}

class LineReaderRow : public CSerialTest, public testing::WithParamInterface<TRow> {
protected:
    ~LineReaderRow() noexcept override {}
    TCharFormat Format() const { return GetParam().isWide ? CHAR_FORMAT_UTF16 : CHAR_FORMAT_8BIT; }
};

TEST_P(LineReaderRow, Reads) {
    const auto stream = Source(GetParam().bytes);
    CLineReader reader(stream.Get(), Format());
    EXPECT_EQ(ReadAll(reader), NarrowLines(GetParam().lines));
    EXPECT_EQ(ReferencesOf(stream.Get()), 2);
}

// Odd pieces, too, split no unit.
TEST_P(LineReaderRow, ReadsFromShortReads) {
    for (const std::uint64_t most : {1, 2, 3, 5}) {
        const auto stream = Source(GetParam().bytes);
        stream->maximumRead = most;
        CLineReader reader(stream.Get(), Format());
        EXPECT_EQ(ReadAll(reader), NarrowLines(GetParam().lines)) << most;
    }
}

TEST_P(LineReaderRow, ReadsTexts) {
    const auto stream = Source(GetParam().bytes);
    CLineReader reader(stream.Get(), Format());
    TLines lines;
    CString line("before");
    while (reader.ReadLine(line)) lines.push_back(Narrow(line));
    EXPECT_EQ(line.Length(), 0u);
    TLines expected;
    // In a CString a zero unit ends the text.
    for (const wstring& whole : GetParam().lines) expected.push_back(Narrow(whole.c_str()));
    EXPECT_EQ(lines, expected);
}

// A stream that raises once, at any byte, loses nothing.
TEST_P(LineReaderRow, GoesOnAfterTheStreamRaised) {
    const auto size = static_cast<std::int64_t>(GetParam().bytes.size());
    for (std::int64_t at = 0; at < size; ++at) {
        SCOPED_TRACE(at);
        const auto stream = Source(GetParam().bytes);
        stream->failAt = at;
        CLineReader reader(stream.Get(), Format());
        std::vector<wstring> lines;
        int failures = 0;
        for (;;) {
            wstring line = VRL_L("before");
            bool isLine = false;
            const std::string outcome = Outcome([&] { isLine = reader.ReadLine(line); });
            if (outcome == "nothing") {
                if (!isLine) break;
                lines.push_back(line);
                continue;
            }
            EXPECT_EQ(outcome, kReadFailed);
            EXPECT_EQ(Narrow(line), "before");
            ++failures;
            stream->failAt.reset();
        }
        EXPECT_EQ(failures, 1);
        EXPECT_EQ(NarrowLines(lines), NarrowLines(GetParam().lines));
    }
}

INSTANTIATE_TEST_SUITE_P(Rows, LineReaderRow, testing::ValuesIn(kRows),
                         [](const auto& row) { return row.param.name; });

using LineReader = CSerialTest;

TEST_F(LineReader, LengthsAroundTheBuffer) {
    for (const TCharFormat format : {CHAR_FORMAT_8BIT, CHAR_FORMAT_UTF16}) {
        for (const std::size_t length : {511, 512, 513, 1022, 1023, 1024, 1025, 2047, 2048, 2049, 10000}) {
            wstring text(length, 0);
            for (std::size_t i = 0; i < length; ++i) text[i] = static_cast<wchar>('a' + i % 26);
            const wstring whole = text + VRL_L("\r\n") + text + VRL_L("\n") + text;
            const auto stream =
                Source(format == CHAR_FORMAT_UTF16 ? WideBytes(whole) : TBytes(whole.begin(), whole.end()));
            CLineReader reader(stream.Get(), format);
            EXPECT_EQ(ReadAll(reader), NarrowLines({text, text, text})) << length;
        }
    }
}

TEST_F(LineReader, AVeryLongLine) {
    constexpr std::size_t kLength = 10 << 20;
    const auto stream = Source(TBytes(kLength, 'x'));
    stream->log = nullptr;
    stream->bytes.push_back(10);
    CLineReader reader(stream.Get(), CHAR_FORMAT_8BIT);
    wstring line;
    ASSERT_TRUE(reader.ReadLine(line));
    EXPECT_EQ(line.size(), kLength);
    EXPECT_EQ(line.find_first_not_of(wchar{'x'}), wstring::npos);
    EXPECT_FALSE(reader.ReadLine(line));
}

TEST_F(LineReader, SeekGoesToAnotherLine) {
    const auto stream = Source(Bytes("one\ntwo\nthree"));
    CLineReader reader(stream.Get(), CHAR_FORMAT_8BIT);
    wstring line;
    ASSERT_TRUE(reader.ReadLine(line));
    EXPECT_EQ(reader.Tell(), 4u);
    reader.Seek(8);
    ASSERT_TRUE(reader.ReadLine(line));
    EXPECT_EQ(Narrow(line), "three");
    EXPECT_FALSE(reader.ReadLine(line));
    reader.Seek(4);
    EXPECT_FALSE(reader.Eof());
    ASSERT_TRUE(reader.ReadLine(line));
    EXPECT_EQ(Narrow(line), "two");
}

TEST_F(LineReader, SeekDiscardsABeginning) {
    const auto stream = Source(Bytes("one\ntwo\n"));
    stream->failAt = 2;
    CLineReader reader(stream.Get(), CHAR_FORMAT_8BIT);
    wstring line;
    EXPECT_EQ(Outcome([&] { reader.ReadLine(line); }), kReadFailed);
    stream->failAt.reset();
    reader.Seek(4);
    ASSERT_TRUE(reader.ReadLine(line));
    EXPECT_EQ(Narrow(line), "two");
}

TEST_F(LineReader, ADataEndThatMovesIsFollowed) {
    const auto stream = Source(Bytes("one\n"));
    CLineReader reader(stream.Get(), CHAR_FORMAT_8BIT);
    wstring line;
    EXPECT_TRUE(reader.ReadLine(line));
    EXPECT_FALSE(reader.ReadLine(line));
    for (const std::uint8_t byte : Bytes("two\n")) stream->bytes.push_back(byte);
    ASSERT_TRUE(reader.ReadLine(line));
    EXPECT_EQ(Narrow(line), "two");
}

// The stream's own exception of the type that closes a line is told from that one.
TEST_F(LineReader, PassesOnTheStreamsExceptionOfTheSameType) {
    const auto stream = Source(Bytes("one\n"));
    stream->failAt = 2;
    stream->fail = [] { CString().FindFirst(wchar{13}); };
    CLineReader reader(stream.Get(), CHAR_FORMAT_8BIT);
    wstring line;
    EXPECT_EQ(Outcome([&] { reader.ReadLine(line); }), kLineEnd);
    stream->failAt.reset();
    EXPECT_TRUE(reader.ReadLine(line));
    EXPECT_EQ(Narrow(line), "one");
}

/// Raises once, right behind the end of a line.
class CRaisingReader : public CLineReader {
public:
    using CLineReader::CLineReader;

protected:
    void RemoveBufferedData(int count) override {
        CLineReader::RemoveBufferedData(count);
        if (std::exchange(mustRaise_, false)) Raise<CIOException>(streamfailures::kCannotRead);
    }

private:
    bool mustRaise_ = true;
};

TEST_F(LineReader, KeepsAWholeLineWhenADerivedClassRaises) {
    const auto stream = Source(Bytes("one\ntwo\n"));
    CRaisingReader reader(stream.Get(), CHAR_FORMAT_8BIT);
    wstring line = VRL_L("before");
    EXPECT_EQ(Outcome([&] { reader.ReadLine(line); }), kReadFailed);
    EXPECT_EQ(Narrow(line), "before");
    for (const char* const expected : {"one", "two"}) {
        ASSERT_TRUE(reader.ReadLine(line));
        EXPECT_EQ(Narrow(line), expected);
    }
    EXPECT_FALSE(reader.ReadLine(line));
}

TEST_F(LineReader, IsATextReader) {
    const auto stream = Source(Bytes("one\ntwo\n"));
    CLineReader reader(stream.Get(), CHAR_FORMAT_8BIT);
    CTextReader& base = reader;
    EXPECT_EQ(Outcome([&] { base.ReadLine(); }), kLineEnd);
    wstring line;
    ASSERT_TRUE(reader.ReadLine(line));
    EXPECT_EQ(Narrow(line), "two");
}

} // namespace
} // namespace vorlund::test
