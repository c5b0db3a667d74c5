// Lines that arrive.
#include "data/file/UnreadablePlace.h"
#include "serial/SerialTest.h"
#include "support/DebugRecorder.h"

#include <vorlund/ClassIds.h>
#include <vorlund/Exception.h>
#include <vorlund/File.h>
#include <vorlund/LineReader.h>
#include <vorlund/StreamErrors.h>

#include <cstring>
#include <functional>
#include <memory>
#include <string>
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

TEST_F(LineReader, LongWideLines) {
    for (const std::size_t length : {255, 256, 257, 511, 1000, 7000}) {
        wstring text(length, VRL_L('x'));
        text[length / 2] = VRL_L('\r');
        const auto stream = Source(WideBytes(text + VRL_L('\n') + text + VRL_L('\n') + text));
        CLineReader reader(stream.Get(), CHAR_FORMAT_UTF16);
        wstring line;
        for (int i = 0; i < 3; ++i) {
            ASSERT_TRUE(reader.ReadLine(line)) << length;
            EXPECT_EQ(line, wstring(length - 1, VRL_L('x'))) << length;
        }
        EXPECT_FALSE(reader.ReadLine(line));
    }
}

// A read that fails behind the first window loses nothing of the line.
TEST_F(LineReader, ALineOfWhichTheBeginningIsReadIsNoEnd) {
    const auto stream = Source(TBytes(CLineReader::kWindow, 'x'));
    stream->failAt = static_cast<std::int64_t>(CLineReader::kWindow);
    CLineReader reader(stream.Get(), CHAR_FORMAT_8BIT);
    wstring line;
    EXPECT_EQ(Outcome([&] { reader.ReadLine(line); }), kReadFailed);
    EXPECT_TRUE(stream->Eof());
    EXPECT_FALSE(reader.Eof());
    stream->failAt.reset();
    ASSERT_TRUE(reader.ReadLine(line));
    EXPECT_EQ(line.size(), std::size_t{CLineReader::kWindow});
    EXPECT_TRUE(reader.Eof());
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

// What the stream does to the reader from inside its Read.

/// Fills the room with a line of 100 units and the next one, and claims more.
class CBoastingStream : public CMemoryInputStream {
public:
    using CMemoryInputStream::Read;
    std::uint64_t Read(void* buffer, std::uint64_t size) override {
        if (std::exchange(hasRead_, true)) return 0;
        std::memset(buffer, 'x', static_cast<std::size_t>(size));
        static_cast<char*>(buffer)[100] = 10;
        return size + 1000;
    }

private:
    bool hasRead_ = false;
};

/// Calls `act` once, in the Read that delivers the byte at `actAt`, before it delivers.
class CActingStream : public CMemoryInputStream {
public:
    std::function<void()> act;
    std::int64_t actAt = 0;

    using CMemoryInputStream::Read;
    std::uint64_t Read(void* buffer, std::uint64_t size) override {
        if (act && position >= actAt) std::exchange(act, nullptr)();
        return CMemoryInputStream::Read(buffer, size);
    }
};

class LineReaderReentrancy : public CSerialTest {
protected:
    ~LineReaderReentrancy() noexcept override {}
    LineReaderReentrancy() {
        stream_->bytes = Bytes("one\ntwo\n");
        reader_ = std::make_unique<CLineReader>(stream_.Get(), CHAR_FORMAT_8BIT);
    }

    CRefPtr<CActingStream> stream_ = Make<CActingStream>();
    std::unique_ptr<CLineReader> reader_;
    wstring line_ = VRL_L("before");
};

TEST_F(LineReaderReentrancy, ReadLineFindsNothing) {
    bool wasLine = true;
    stream_->act = [&] {
        wstring inner = VRL_L("inner");
        wasLine = reader_->ReadLine(inner) || !inner.empty();
        EXPECT_EQ(reader_->Tell(), 0u);
        EXPECT_FALSE(reader_->Eof());
    };
    EXPECT_TRUE(reader_->ReadLine(line_));
    EXPECT_FALSE(wasLine);
    EXPECT_EQ(Narrow(line_), "one");
    ASSERT_TRUE(reader_->ReadLine(line_));
    EXPECT_EQ(Narrow(line_), "two");
}

TEST_F(LineReaderReentrancy, SeekAndFlushHold) {
    stream_->act = [&] { reader_->Seek(4); };
    EXPECT_FALSE(reader_->ReadLine(line_));
    EXPECT_TRUE(line_.empty());
    reader_->Seek(4);
    ASSERT_TRUE(reader_->ReadLine(line_));
    EXPECT_EQ(Narrow(line_), "two");

    reader_->Seek(0);
    stream_->act = [&] { reader_->Flush(); };
    EXPECT_FALSE(reader_->ReadLine(line_));
    reader_->Seek(0);
    ASSERT_TRUE(reader_->ReadLine(line_));
    EXPECT_EQ(Narrow(line_), "one");
}

TEST_F(LineReaderReentrancy, TheReaderMayGo) {
    stream_->act = [&] { reader_.reset(); };
    EXPECT_FALSE(reader_->ReadLine(line_));
    EXPECT_TRUE(line_.empty());
    EXPECT_EQ(ReferencesOf(stream_.Get()), 1);
}

TEST_F(LineReaderReentrancy, TheReaderMayGoWithItsStream) {
    CActingStream* const stream = stream_.Get();
    stream->act = [&] { reader_.reset(); };
    stream_.Reset();
    const int alive = CLiveObject::GetCount();
    EXPECT_FALSE(reader_->ReadLine(line_));
    EXPECT_EQ(CLiveObject::GetCount(), alive - 1);
}

TEST_F(LineReaderReentrancy, AReaderThatGoesBeforeAnException) {
    stream_->act = [&] {
        reader_.reset();
        Raise<CIOException>(streamfailures::kCannotRead);
    };
    EXPECT_EQ(Outcome([&] { reader_->ReadLine(line_); }), kReadFailed);
    EXPECT_EQ(Narrow(line_), "before");
}

TEST_F(LineReaderReentrancy, AStreamThatSeeksAtEachReadEnds) {
    for (int i = 0; i < 3; ++i) {
        stream_->act = [&] { reader_->Seek(0); };
        EXPECT_FALSE(reader_->ReadLine(line_));
    }
}

// Nothing of a line is reported or raised, however many there are.
TEST_F(LineReader, ReportsNothing) {
    const CDebugRecorder recorder;
    const auto stream = QuietSource(TBytes(20000, 10));
    CLineReader reader(stream.Get(), CHAR_FORMAT_8BIT);
    int lines = 0;
    for (wstring line; reader.ReadLine(line);) ++lines;
    EXPECT_EQ(lines, 20000);
    EXPECT_TRUE(recorder.GetEntries().empty());
}

TEST_F(LineReader, AStreamThatClaimsTooMuch) {
    const auto stream = Make<CBoastingStream>();
    CLineReader reader(stream.Get(), CHAR_FORMAT_8BIT);
    wstring line;
    ASSERT_TRUE(reader.ReadLine(line));
    EXPECT_EQ(line, wstring(100, 'x'));
    ASSERT_TRUE(reader.ReadLine(line));
    EXPECT_EQ(line, wstring(CLineReader::kWindow - 101, 'x'));
}

// Longer than any window, and nothing but what is cut out.
TEST_F(LineReader, ALongLineOfCarriageReturns) {
    const auto stream = QuietSource(TBytes(3 * CLineReader::kWindow, 13));
    CLineReader reader(stream.Get(), CHAR_FORMAT_8BIT);
    wstring line = VRL_L("before");
    ASSERT_TRUE(reader.ReadLine(line));
    EXPECT_TRUE(line.empty());
    EXPECT_FALSE(reader.ReadLine(line));
    EXPECT_TRUE(reader.Eof());
}

TEST_F(LineReader, AsksTheStreamSeldom) {
    const auto stream = Source(TBytes(10 * CLineReader::kWindow, 10));
    CLineReader reader(stream.Get(), CHAR_FORMAT_8BIT);
    for (wstring line; reader.ReadLine(line);) {
    }
    EXPECT_EQ(log_, TCallLog(11, "Read " + std::to_string(CLineReader::kWindow)));
}

TEST_F(LineReader, AReadErrorIsToldByTheStream) {
    const CUnreadablePlace place;
    const auto file = CreateAs<IFileInputStream>(classid::CFileInputStream);
    file->Open(place.GetPath().c_str());
    file->Seek(place.GetStart());
    CLineReader reader(file.Get(), CHAR_FORMAT_8BIT);
    wstring line;
    ASSERT_TRUE(reader.ReadLine(line));
    EXPECT_EQ(line, wstring(CUnreadablePlace::kReadable, 'x'));
    EXPECT_FALSE(reader.ReadLine(line));
    EXPECT_NE(GetReadError(*file), 0u);
}

} // namespace
} // namespace vorlund::test
