/// \file
/// `CTextReader`, which consumes text line by line. `CLineReader` (LineReader.h) hands the lines out.
#pragma once

#include <vorlund/BufferedReader.h>
#include <vorlund/CharFormat.h>
#include <vorlund/String.h>

namespace vorlund {

/// Reads text by lines, through a buffer of 1024 bytes. One thread at a time.
class VRL_API CTextReader : public CBufferedReader {
public:
    /// Reads from `stream`, which must not be null, with a reference of its own. Raises `std::bad_alloc`.
    CTextReader(IInputStream* stream, TCharFormat charFormat);
    ~CTextReader() noexcept(false) override;

    /// Consumes the next line with its line feed; lines may have any length. At the end of the data nothing
    /// is consumed; `Eof` distinguishes that from an empty line.
    ///
    /// \warning Every call ends by raising `CObjectNotFoundException` "Didn't find content", because
    /// `CString::Remove`, which cuts out the carriage returns, ends that way. Callers catch it, and the line
    /// is lost. Use `CLineReader`, which returns the line.
    ///
    /// In the line, a zero unit ends the piece of text that came with one filling of the buffer. Of UTF-16
    /// text, an odd byte at the end of a filling without a line feed is dropped.
    virtual CString ReadLine();

protected:
    TCharFormat GetCharFormat() const { return charFormat_; }

private:
    TCharFormat charFormat_;
};

} // namespace vorlund
