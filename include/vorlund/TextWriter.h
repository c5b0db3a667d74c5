/// \file
/// `CTextWriter`, which writes formatted text.
#pragma once

#include <vorlund/CharFormat.h>
#include <vorlund/FormatArguments.h>
#include <vorlund/Writer.h>

namespace vorlund {

/// What becomes of line feeds. Only the value 1 converts.
enum TLineBreakFormat : int {
    LINE_BREAK_LF = 0,   ///< written as they are
    LINE_BREAK_CRLF = 1, ///< each written as carriage return and line feed
};

/// Writes text piece by piece; the caller supplies the line feeds. Copies share the stream. What the stream
/// raises passes on. One thread at a time.
///
/// \code{.cpp}
/// const COutputStreamSelector file(VRL_L("list.txt"));
/// CTextWriter writer(file.GetOutputStreamTmp(), CHAR_FORMAT_8BIT, LINE_BREAK_LF);
/// writer.Write(VRL_L("%d is %s\n"), 1, VRL_L("one"));
/// \endcode
class VRL_API CTextWriter : public CWriter {
public:
    /// Writes to `stream`, which must not be null, with a reference of its own.
    CTextWriter(IOutputStream* stream, TCharFormat charFormat, TLineBreakFormat lineBreak);
    CTextWriter(const CTextWriter&) = default;
    /// Takes the other's stream and its formats.
    CTextWriter& operator=(const CTextWriter&) = default;
    using CWriter::operator=;
    ~CTextWriter() noexcept(false) override;

    /// Formats and writes one piece of text, with one call of the stream's `Write`.
    ///
    /// Formats are as for printf, with the same results on every system: `%s` and `%c` take wide text, `%S`
    /// and `%hs` narrow text, `%lld` and `%I64d` 64-bit numbers. A text is cut after 1023 units. With
    /// `LINE_BREAK_CRLF` it is also cut as soon as its first units have become 1020 units or more, carriage
    /// returns included.
    virtual void Write(const wchar* format, ...);

    /// The same with `CString`s among the arguments, which are written as their texts (`%s`). Since version
    /// 0.1.
    template <class... T>
    requires formatting::TextArguments<T...>
    void Write(const wchar* format, const T&... arguments) {
        Write(format, formatting::Argument(arguments)...);
    }
    /// No other object can be written.
    template <class... T>
    requires formatting::ObjectArguments<T...>
    void Write(const wchar* format, const T&... arguments) = delete;

private:
    TCharFormat charFormat_;
    TLineBreakFormat lineBreak_;
};

} // namespace vorlund
