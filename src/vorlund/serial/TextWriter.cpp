#include <vorlund/TextWriter.h>

#include "vorlund/api/text/TextFormat.h"
#include "vorlund/api/text/TextKernels.h"

#include <bit>
#include <cstdarg>
#include <cstddef>
#include <cstdint>

namespace vorlund {
namespace {

static_assert(std::endian::native == std::endian::little);

/// Units of a piece of text and its terminator.
constexpr std::size_t kCapacity = 1024;

/// Conversion stops at this many units: after one less, there is room for two more and the terminator.
constexpr std::size_t kMaxConverted = 1020;

/// Copies `text` with a carriage return before each line feed; returns the number of units.
std::size_t ConvertLineFeeds(wchar (&converted)[kCapacity], const wchar* text) {
    std::size_t count = 0;
    for (; *text && count < kMaxConverted; ++text) {
        if (*text == 10) converted[count++] = 13;
        converted[count++] = *text;
    }
    return count;
}

} // namespace

CTextWriter::CTextWriter(IOutputStream* stream, TCharFormat charFormat, TLineBreakFormat lineBreak)
    : CWriter(stream), charFormat_(charFormat), lineBreak_(lineBreak) {}

CTextWriter::~CTextWriter() noexcept(false) = default;

void CTextWriter::Write(const wchar* format, ...) {
    wchar formatted[kCapacity];
    std::va_list arguments;
    va_start(arguments, format);
    FormatText(formatted, kCapacity, format, arguments);
    va_end(arguments);

    const wchar* text = formatted;
    wchar converted[kCapacity];
    std::size_t length;
    if (lineBreak_ == LINE_BREAK_CRLF) {
        length = ConvertLineFeeds(converted, formatted);
        text = converted;
    } else {
        // Not the number of formatted units: `%c` can print a zero unit, where the text ends.
        length = TextLength(formatted);
    }

    if (charFormat_ != CHAR_FORMAT_8BIT) {
        stream_->Write(text, length * sizeof(wchar));
        return;
    }
    std::uint8_t bytes[kCapacity];
    // Kept for callers: no code page, the low byte of each unit.
    for (std::size_t i = 0; i < length; ++i) bytes[i] = static_cast<std::uint8_t>(text[i]);
    stream_->Write(bytes, length);
}

} // namespace vorlund
