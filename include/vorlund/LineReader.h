/// \file
/// `CLineReader`, which hands out the lines of a text.
#pragma once

#include <vorlund/CharFormat.h>
#include <vorlund/Reader.h>
#include <vorlund/StreamFilterImpl.h>
#include <vorlund/String.h>

#include <cstddef>
#include <cstdint>
#include <memory>

namespace vorlund {

/// Reads text by lines and hands them out: what `CTextReader` cannot do, which loses every line with the
/// exception that ends its `ReadLine`. No line raises or reports anything. One thread at a time.
///
/// A line ends with a line feed and comes without it and without any carriage return. The last line needs no
/// line feed; behind a final line feed there is no further line. Zero units are part of a line. Lines may
/// have any length, and the time is linear in it. Of 8-bit text each byte becomes the unit of the same value;
/// of UTF-16 text, half a unit at the end of the data is dropped.
///
/// The reader asks the stream for up to `kWindow` bytes at a time, so the stream is ahead of it; `Tell` says
/// where the reader is. The stream may deliver pieces of any size. Where it delivers nothing, the data end;
/// what arrives later is read by later calls. An error in reading a file looks like its end: `GetReadError`
/// (StreamErrors.h) of the stream tells them apart.
///
/// The stream may call the reader from inside its own `Read`. It then finds it without a further line:
/// `ReadLine` gives false. When it calls `Seek` or `Flush`, or destroys the reader, the call under way gives
/// false with an empty `line`, and what it had read is discarded.
///
/// Reading into the same `wstring` again and again is fast, because its room is used again; into a `CString`
/// each line costs a new buffer.
///
/// \code{.cpp}
/// const auto bytes = CRefPtr<IMemoryInputStream>::Adopt(CreateMemoryInput("one\ntwo\n", 8));
/// CLineReader lines(bytes.Get(), CHAR_FORMAT_8BIT);
/// for (wstring line; lines.ReadLine(line);) std::printf("%s\n", TextToUtf8(line).c_str());
/// // prints one
/// // prints two
/// \endcode
class VRL_API CLineReader : public CReader {
public:
    /// The most bytes that are read ahead. Since version 0.1.
    static constexpr std::size_t kWindow = 16384;

    /// Reads from `stream`, which must not be null, with a reference of its own. Every format but
    /// `CHAR_FORMAT_8BIT` means UTF-16. Raises `std::bad_alloc`.
    CLineReader(IInputStream* stream, TCharFormat charFormat);
    ~CLineReader() noexcept(false) override;

    /// The next line; false at the end of the data, with an empty `line`.
    ///
    /// What the stream raises passes on and leaves `line` as it was; what was read of the line is kept, and
    /// the next call continues from there. The same holds for `std::bad_alloc`.
    bool ReadLine(wstring& line);
    /// The same for a `CString`, in which a zero unit ends the text. Raises `std::bad_alloc` also for a line
    /// that is too long for one.
    bool ReadLine(CString& line);

    /// False while something that was read waits to be handed out; otherwise the stream's answer.
    bool Eof() override;
    /// `Flush`, then the stream's `Seek`.
    void Seek(std::uint64_t position) override;
    /// The position of the first byte that is not consumed. Behind an exception that ended `ReadLine`, what
    /// was read of a line longer than the window counts as consumed.
    std::uint64_t Tell() override;
    /// Discards what was read ahead; the stream stays where it is.
    void Flush();

private:
    enum class TFound { Line, End, Nothing };

    template <class TLine> bool Deliver(TLine& line);
    template <class TLine> void DeliverLong(TLine& line, std::size_t length);
    std::size_t FindLineFeed(std::size_t seen) const;
    TFound FindLine(std::size_t& length);
    bool Fill();
    void PutAside();
    void AddToBeginning(std::size_t count);
    void ForgetBeginning();

    TCharFormat charFormat_;
    /// Null while the stream reads into it.
    std::unique_ptr<std::uint8_t[]> window_;
    /// What is not consumed, in bytes.
    std::size_t first_ = 0;
    std::size_t end_ = 0;
    /// The beginning of a line longer than the window.
    wstring beginning_;
    bool hasBeginning_ = false;
    CFilterCalls calls_;
};

} // namespace vorlund
