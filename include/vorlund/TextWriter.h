/// \file
/// `CTextWriter`, which writes formatted text.
#pragma once

#include <vorlund/CharFormat.h>
#include <vorlund/Writer.h>

namespace vorlund {

/// What becomes of line feeds. Only the value 1 converts.
enum TLineBreakFormat : int {
    LINE_BREAK_LF = 0,   ///< written as they are
    LINE_BREAK_CRLF = 1, ///< each written as carriage return and line feed
};

/// Writes text piece by piece; the caller supplies the line feeds. Copies share the stream.
class VRL_API CTextWriter : public CWriter {
public:
    CTextWriter(IOutputStream* stream, TCharFormat charFormat, TLineBreakFormat lineBreak);
    CTextWriter(const CTextWriter&) = default;
    /// Takes the other's stream and its formats.
    CTextWriter& operator=(const CTextWriter&) = default;
    using CWriter::operator=;
    ~CTextWriter() noexcept(false) override;

    /// Formats and writes one piece of text, with one call of the stream's `Write`.
    ///
    /// Formats are as for printf, with the same results on every system: `%s` and `%c` take wide text, `%S`
    /// and `%hs` narrow text, `%lld` and `%I64d` 64-bit numbers. A text of more than 1023 units is cut there.
    /// With `LINE_BREAK_CRLF` a text is also cut once 1020 units or more have come of it, carriage returns
    /// included.
    virtual void Write(const wchar* format, ...);

private:
    TCharFormat charFormat_;
    TLineBreakFormat lineBreak_;
};

} // namespace vorlund
