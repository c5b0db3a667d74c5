/// \file
/// `CTextReader`, which consumes text line by line. `CLineReader` (LineReader.h) hands the lines out.
#pragma once

#include <vorlund/BufferedReader.h>
#include <vorlund/CharFormat.h>
#include <vorlund/String.h>

namespace vorlund {

/// Reads text by lines, through a buffer of 1024 bytes.
class VRL_API CTextReader : public CBufferedReader {
public:
    CTextReader(IInputStream* stream, TCharFormat charFormat);
    ~CTextReader() noexcept(false) override;

    /// Consumes the next line with its line feed; of any length. At the end of the data there is nothing to
    /// consume, which `Eof` tells apart from an empty line.
    ///
    /// Ends every call by raising `CObjectNotFoundException` "Didn't find content": the line's carriage
    /// returns are cut out by `CString::Remove`, which ends so. Callers catch it. The line is lost with it;
    /// `CLineReader` keeps it.
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
