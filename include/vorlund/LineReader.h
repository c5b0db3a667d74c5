/// \file
/// `CLineReader`, which hands out the lines of a text.
#pragma once

#include <vorlund/TextReader.h>

namespace vorlund {

/// A `CTextReader` that returns its lines, without the exception that ends each `CTextReader::ReadLine` and
/// its report. One thread at a time.
///
/// A line comes without its line feed and without any carriage return. The last line needs no line feed. Of
/// UTF-16 text, half a unit at the end of the data is dropped; the stream may deliver pieces of any size.
/// Lines may have any length; reading one takes time linear in it.
class VRL_API CLineReader : public CTextReader {
public:
    /// Reads from `stream`, which must not be null, with a reference of its own. Raises `std::bad_alloc`.
    CLineReader(IInputStream* stream, TCharFormat charFormat);
    ~CLineReader() noexcept(false) override;

    /// The next line; false at the end of the data, with an empty `line`. Zero units are part of a line.
    ///
    /// What the stream raises passes on and leaves `line` as it was; what was read of the line is kept, and
    /// the next call continues from there. The same holds for `std::bad_alloc`.
    bool ReadLine(wstring& line);
    /// The same for a `CString`, in which a zero unit ends the text.
    bool ReadLine(CString& line);
    /// As in the base: the line is lost with the exception.
    using CTextReader::ReadLine;

    /// Discards what is buffered, and what was read of a line when the stream raised. So does `Seek`.
    void Flush() override;

protected:
    /// Fills up to whole units.
    void FillBuffer() override;
    void RemoveBufferedData(int count) override;

private:
    enum class TState {
        Idle,     ///< what leaves the buffer is not looked at
        Reading,  ///< what leaves the buffer belongs to the line
        Complete, ///< the line is whole and waits to be handed out
    };

    bool ReadUnits();
    void ReadToLineFeed();
    void KeepBytes(int count);
    void Discard();

    wstring units_;
    TState state_ = TState::Idle;
    /// Of a complete line: false when it is only the end of the data.
    bool isLine_ = false;
};

} // namespace vorlund
