/// \file
/// Text readers over arbitrary bytes, against a model that splits the whole text: the lines, the positions, a
/// stream that raises, and the lines written and read again.
#include "WavFuzz.h"
#include "support/Streams.h"

#include <vorlund/LineReader.h>
#include <vorlund/TextReader.h>
#include <vorlund/TextWriter.h>

using namespace vorlund;
using namespace vorlund::fuzz;

namespace {

struct TLine {
    wstring text;
    /// Where the next line begins.
    std::size_t end = 0;
};

/// Lines without their carriage returns.
std::vector<TLine> Split(const std::uint8_t* data, std::size_t size, bool isWide) {
    wstring text(isWide ? size / 2 : size, 0);
    for (std::size_t i = 0; i < text.size(); ++i) {
        text[i] = static_cast<wchar>(isWide ? data[2 * i] | data[2 * i + 1] << 8 : data[i]);
    }
    std::vector<TLine> lines;
    for (std::size_t begin = 0; begin < text.size();) {
        const std::size_t lineFeed = std::min(text.find(wchar{10}, begin), text.size());
        lines.push_back({text.substr(begin, lineFeed - begin), (lineFeed + 1) * (isWide ? 2 : 1)});
        std::erase(lines.back().text, wchar{13});
        begin = lineFeed + 1;
    }
    // The half unit at the end goes with the last line.
    if (!text.empty() && text.back() != 10) lines.back().end = size;
    return lines;
}

constexpr std::size_t kMaxConsumed = 3;

/// Consumes a line by the base's operation, which always raises.
void Consume(CTextReader& reader) {
    try {
        reader.ReadLine();
    } catch (const CObjectNotFoundException& exception) {
        Check(exception.GetLine() == 141);
        return;
    }
    Check(false);
}

/// The base consumes the same lines when the stream delivers whole units. It raises for each, which takes
/// long, so it has a few in a row from anywhere, and seldom.
void CheckConsumed(CFuzzStream& stream, TCharFormat format, const std::vector<TLine>& lines, CDice& dice) {
    const bool isWide = format == CHAR_FORMAT_UTF16;
    if (isWide && stream.mostPerRead % 2 != 0 && stream.mostPerRead < 100) ++stream.mostPerRead;
    const auto first = static_cast<std::size_t>(dice.Roll(lines.size() + 1));
    const std::size_t last = std::min(lines.size(), first + kMaxConsumed);
    stream.Seek(first == 0 ? 0 : static_cast<std::int64_t>(lines[first - 1].end));
    CTextReader reader(&stream, format);
    for (std::size_t next = first; next < last; ++next) {
        Check(!reader.Eof());
        Consume(reader);
        Check(next + 1 == lines.size() || reader.Tell() == lines[next].end);
    }
    if (last == lines.size()) {
        Consume(reader);
        Check(reader.Eof());
    }
}

/// Without zero units and "%" a line survives the way through the writer.
void CheckRoundTrip(const wstring& text, TCharFormat format, TLineBreakFormat lineBreak) {
    const auto target = test::Make<test::CMemoryOutputStream>();
    CTextWriter writer(target.Get(), format, lineBreak);
    writer.Write(VRL_L("%s\n"), text.c_str());
    // Cut by the writer, with or without its line feed.
    wstring expected = text.c_str();
    expected.resize(std::min<std::size_t>(expected.size(), lineBreak == LINE_BREAK_CRLF ? 1020 : 1023));
    const auto source = CFuzzStream::Create(target->bytes.data(), target->bytes.size());
    CLineReader reader(source.Get(), format);
    wstring line;
    Check(reader.ReadLine(line) && line == expected && !reader.ReadLine(line));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    OpenLibrary();
    CDice dice(data, size);
    const bool isWide = dice.Roll(2) == 1;
    const TCharFormat format = isWide ? CHAR_FORMAT_UTF16 : CHAR_FORMAT_8BIT;
    const auto stream = CFuzzStream::Create(data, size);
    if (dice.Roll(2) == 0) stream->mostPerRead = 1 + dice.Roll(40);
    if (dice.Roll(3) == 0) stream->failsAt = static_cast<std::int64_t>(dice.Roll(size + 1));

    const std::vector<TLine> lines = Split(data, size, isWide);
    {
        CLineReader reader(stream.Get(), format);
        std::size_t next = 0;
        for (;;) {
            wstring line;
            try {
                if (!reader.ReadLine(line)) break;
            } catch (const CIOException&) {
                // It goes on where it was.
                stream->failsAt = std::numeric_limits<std::int64_t>::max();
                continue;
            }
            Check(next < lines.size() && line == lines[next].text);
            Check(next + 1 == lines.size() || reader.Tell() == lines[next].end);
            ++next;
        }
        Check(next == lines.size() && reader.Eof() && reader.Tell() == size);
        Check(stream->GetReferences() == 2);
    }
    Check(stream->GetReferences() == 1);

    if (dice.Roll(8) == 0) CheckConsumed(*stream, format, lines, dice);

    if (!lines.empty()) {
        const wstring& text = lines[static_cast<std::size_t>(dice.Roll(lines.size()))].text;
        CheckRoundTrip(text, format, dice.Roll(2) == 0 ? LINE_BREAK_LF : LINE_BREAK_CRLF);
    }
    return 0;
}
