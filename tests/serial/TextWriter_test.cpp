// Formatted text: bytes of both character formats, line feeds, texts that do not fit.
#include "serial/SerialTest.h"

#include <vorlund/TextWriter.h>

#include <functional>
#include <vector>

namespace vorlund::test {
namespace {

struct TRow {
    const char* name;
    TCharFormat charFormat;
    TLineBreakFormat lineBreak;
    std::function<void(CTextWriter&)> write;
    TBytes bytes;
};

void WriteLines(CTextWriter& writer) {
    writer.Write(VRL_L("a\nb"));
}

constexpr auto k8Bit = CHAR_FORMAT_8BIT;
constexpr auto kUtf16 = CHAR_FORMAT_UTF16;
constexpr auto kLf = LINE_BREAK_LF;
constexpr auto kCrlf = LINE_BREAK_CRLF;

const TRow kRows[] = {
    {"Narrow", k8Bit, kLf, WriteLines, {0x61, 0x0A, 0x62}},
    {"NarrowConverted", k8Bit, kCrlf, WriteLines, {0x61, 0x0D, 0x0A, 0x62}},
    {"Wide", kUtf16, kLf, [](CTextWriter& writer) { writer.Write(VRL_L("a\n")); }, {0x61, 0, 0x0A, 0}},
    {"WideConverted", kUtf16, kCrlf, WriteLines, {0x61, 0, 0x0D, 0, 0x0A, 0, 0x62, 0}},
    {"EveryOtherCharFormatIsWide", static_cast<TCharFormat>(2), kLf, WriteLines, {0x61, 0, 0x0A, 0, 0x62, 0}},
    {"NegativeCharFormatIsWide", static_cast<TCharFormat>(-1), kLf, WriteLines, {0x61, 0, 0x0A, 0, 0x62, 0}},
    {"OnlyOneConverts", k8Bit, static_cast<TLineBreakFormat>(2), WriteLines, {0x61, 0x0A, 0x62}},
    {"MinusOneDoesNotConvert", k8Bit, static_cast<TLineBreakFormat>(-1), WriteLines, {0x61, 0x0A, 0x62}},
    {"CarriageReturnsStay",
     k8Bit,
     kLf,
     [](CTextWriter& writer) { writer.Write(VRL_L("\r\n\r")); },
     {13, 10, 13}},
    {"CarriageReturnsStayConverted",
     k8Bit,
     kCrlf,
     [](CTextWriter& writer) { writer.Write(VRL_L("\r\n\r")); },
     {13, 13, 10, 13}},
    {"OnlyLineFeeds",
     k8Bit,
     kCrlf,
     [](CTextWriter& writer) { writer.Write(VRL_L("\n\n")); },
     {13, 10, 13, 10}},
    {"LowByteOfEachUnit",
     k8Bit,
     kLf,
     [](CTextWriter& writer) { writer.Write(VRL_L("\u00E9\u20AC\u0141")); },
     {0xE9, 0xAC, 0x41}},
    {"AUnitWithoutLowByte",
     k8Bit,
     kLf,
     [](CTextWriter& writer) { writer.Write(VRL_L("a\u0100b")); },
     {0x61, 0x00, 0x62}},
    {"LowByteTenIsNoLineFeed",
     k8Bit,
     kCrlf,
     [](CTextWriter& writer) { writer.Write(VRL_L("\u010A")); },
     {0x0A}},
    {"WideUnits", kUtf16, kLf, [](CTextWriter& writer) { writer.Write(VRL_L("\u20AC")); }, {0xAC, 0x20}},
    {"Empty", k8Bit, kCrlf, [](CTextWriter& writer) { writer.Write(VRL_L("")); }, {}},
    {"EmptyWide", kUtf16, kLf, [](CTextWriter& writer) { writer.Write(VRL_L("")); }, {}},
    {"Null", k8Bit, kLf, [](CTextWriter& writer) { writer.Write(nullptr); }, {}},
    {"Numbers", k8Bit, kLf,
     [](CTextWriter& writer) {
         writer.Write(VRL_L("%d %u %05.1f %x %lld %I64d"), -1, 2u, 3.25, 255, -4LL, 5LL);
     },
     Bytes("-1 2 003.2 ff -4 5")},
    {"WideText", k8Bit, kLf, [](CTextWriter& writer) { writer.Write(VRL_L("<%s>%c"), VRL_L("wide"), 'x'); },
     Bytes("<wide>x")},
    {"NarrowText", k8Bit, kLf, [](CTextWriter& writer) { writer.Write(VRL_L("<%S%hs>"), "nar", "row"); },
     Bytes("<narrow>")},
    {"NullText", k8Bit, kLf,
     [](CTextWriter& writer) { writer.Write(VRL_L("%s"), static_cast<const wchar*>(nullptr)); },
     Bytes("(null)")},
    {"LineFeedsOfArguments",
     k8Bit,
     kCrlf,
     [](CTextWriter& writer) { writer.Write(VRL_L("%s|%c"), VRL_L("a\nb"), 10); },
     {0x61, 13, 10, 0x62, 0x7C, 13, 10}},
    {"AZeroUnitEnds", k8Bit, kLf, [](CTextWriter& writer) { writer.Write(VRL_L("a%cb"), 0); }, {0x61}},
    {"AZeroUnitEndsConverted",
     k8Bit,
     kCrlf,
     [](CTextWriter& writer) { writer.Write(VRL_L("a%cb"), 0); },
     {0x61}},
    {"AZeroUnitEndsWide",
     kUtf16,
     kLf,
     [](CTextWriter& writer) { writer.Write(VRL_L("a%cb"), 0); },
     {0x61, 0}},
};

class TextWriterRow : public CSerialTest, public testing::WithParamInterface<TRow> {
protected:
    ~TextWriterRow() noexcept override {}
};

TEST_P(TextWriterRow, WritesWithOneCall) {
    const TRow& row = GetParam();
    const auto stream = Target();
    CTextWriter writer(stream.Get(), row.charFormat, row.lineBreak);
    EXPECT_TRUE(log_.empty());
    row.write(writer);
    EXPECT_EQ(stream->bytes, row.bytes);
    EXPECT_EQ(log_, TCallLog{"Write " + std::to_string(row.bytes.size())});
}

INSTANTIATE_TEST_SUITE_P(Rows, TextWriterRow, testing::ValuesIn(kRows),
                         [](const auto& row) { return row.param.name; });

/// What comes of `text`, which holds no "%", by the rules.
wstring Expected(const wstring& text, TLineBreakFormat lineBreak) {
    const wstring kept = text.substr(0, 1023);
    if (lineBreak != LINE_BREAK_CRLF) return kept;
    wstring converted;
    for (const wchar unit : kept) {
        if (converted.size() >= 1020) break;
        if (unit == 10) converted += wchar{13};
        converted += unit;
    }
    return converted;
}

struct TLongRow {
    const char* name;
    wstring text;
    std::size_t plain;
    std::size_t converted;
};

const TLongRow kLongRows[] = {
    {"Fits", wstring(1023, 'a'), 1023, 1020},
    {"OneTooMany", wstring(1024, 'a'), 1023, 1020},
    {"ManyTooMany", wstring(100000, 'a'), 1023, 1020},
    {"JustConverted", wstring(1019, 'a'), 1019, 1019},
    {"LineFeedAtTheEnd", wstring(1019, 'a') + VRL_L("\n"), 1020, 1021},
    {"LineFeedBehindTheEnd", wstring(1020, 'a') + VRL_L("\n"), 1021, 1020},
    {"AllLineFeeds", wstring(1023, '\n'), 1023, 1020},
    {"OddLineFeeds", VRL_L("a") + wstring(1022, '\n'), 1023, 1021},
};

class TextWriterLong : public CSerialTest, public testing::WithParamInterface<TLongRow> {
protected:
    ~TextWriterLong() noexcept override {}
};

TEST_P(TextWriterLong, IsCut) {
    const TLongRow& row = GetParam();
    for (const TLineBreakFormat lineBreak : {LINE_BREAK_LF, LINE_BREAK_CRLF}) {
        const wstring expected = Expected(row.text, lineBreak);
        EXPECT_EQ(expected.size(), lineBreak == LINE_BREAK_LF ? row.plain : row.converted);
        for (const TCharFormat charFormat : {CHAR_FORMAT_8BIT, CHAR_FORMAT_UTF16}) {
            // As the format itself, and as an argument.
            for (const bool isArgument : {false, true}) {
                const auto stream = Target();
                CTextWriter writer(stream.Get(), charFormat, lineBreak);
                if (isArgument)
                    writer.Write(VRL_L("%s"), row.text.c_str());
                else
                    writer.Write(row.text.c_str());
                EXPECT_EQ(stream->bytes, charFormat == CHAR_FORMAT_UTF16
                                             ? WideBytes(expected)
                                             : TBytes(expected.begin(), expected.end()));
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Rows, TextWriterLong, testing::ValuesIn(kLongRows),
                         [](const auto& row) { return row.param.name; });

using TextWriter = CSerialTest;

TEST_F(TextWriter, HugeWidthsAreCut) {
    const auto stream = Target();
    CTextWriter writer(stream.Get(), CHAR_FORMAT_8BIT, LINE_BREAK_LF);
    writer.Write(VRL_L("%2147483647d"), 1);
    EXPECT_EQ(stream->bytes, TBytes(1023, ' '));
}

TEST_F(TextWriter, TextObjectsAreWritten) {
    const auto stream = Target();
    CTextWriter writer(stream.Get(), CHAR_FORMAT_8BIT, LINE_BREAK_LF);
    CString name("name");
    const CString value("value");
    writer.Write(VRL_L("%s=%s %d"), name, value, 3);
    EXPECT_EQ(stream->bytes, Bytes("name=value 3"));
}

TEST_F(TextWriter, PiecesFollowOneAnother) {
    const auto stream = Target();
    {
        CTextWriter writer(stream.Get(), CHAR_FORMAT_8BIT, LINE_BREAK_CRLF);
        writer.Write(VRL_L("one\n"));
        CTextWriter copy(writer);
        copy.Write(VRL_L("two\n"));
        writer.Seek(0);
        writer.Write(VRL_L("O"));
        EXPECT_EQ(writer.Tell(), 1u);
        EXPECT_EQ(ReferencesOf(stream.Get()), 3);
    }
    EXPECT_EQ(stream->bytes, Bytes("One\r\ntwo\r\n"));
    EXPECT_EQ(ReferencesOf(stream.Get()), 1);
}

TEST_F(TextWriter, PassesOnWhatTheStreamRaises) {
    const auto stream = Target();
    stream->maximumSize = 3;
    CTextWriter writer(stream.Get(), CHAR_FORMAT_8BIT, LINE_BREAK_LF);
    writer.Write(VRL_L("abc"));
    EXPECT_EQ(Outcome([&] { writer.Write(VRL_L("d")); }), kWriteFailed);
    EXPECT_EQ(stream->bytes, Bytes("abc"));
}

} // namespace
} // namespace vorlund::test
