#include <vorlund/TextReader.h>

#include "vorlund/serial/CharUnits.h"
#include "vorlund/serial/GrowText.h"

#include <algorithm>
#include <cstddef>
#include <limits>
#include <new>

namespace vorlund {
namespace {

constexpr int kBufferSize = 1024;

/// A line that grows by pieces.
class CLineText {
public:
    void Append(const std::uint8_t* bytes, std::size_t count, TCharFormat format) {
        if (count > capacity_ - length_) Grow(count);
        CopyUnits(text_.GetBuffer() + length_, bytes, count, format);
        length_ += count;
        text_.GetBuffer()[length_] = 0;
    }
    CString& Get() { return text_; }

private:
    void Grow(std::size_t count) {
        constexpr std::size_t kMaxLength = std::numeric_limits<int>::max();
        if (count > kMaxLength - length_) throw std::bad_alloc();
        const std::size_t capacity = std::min(std::max(2 * capacity_, length_ + count), kMaxLength);
        GrowText(text_, length_, static_cast<int>(capacity));
        capacity_ = capacity;
    }

    CString text_;
    std::size_t length_ = 0;
    std::size_t capacity_ = 0;
};

} // namespace

CTextReader::CTextReader(IInputStream* stream, TCharFormat charFormat)
    : CBufferedReader(stream, kBufferSize), charFormat_(charFormat) {}

CTextReader::~CTextReader() noexcept(false) = default;

CString CTextReader::ReadLine() {
    const std::size_t unitSize = UnitSize(charFormat_);
    CLineText line;
    for (;;) {
        FillBuffer();
        if (buffered_ == 0) break;
        const std::size_t count = static_cast<std::size_t>(buffered_) / unitSize;
        const std::size_t lineFeed = FindStreamUnit(buffer_, count, 10, charFormat_);
        // Kept for callers: a zero unit ends the piece, and an odd byte goes with it.
        line.Append(buffer_, FindStreamUnit(buffer_, lineFeed, 0, charFormat_), charFormat_);
        if (lineFeed < count) {
            RemoveBufferedData(static_cast<int>((lineFeed + 1) * unitSize));
            break;
        }
        Flush();
    }
    // Kept for callers: this never returns. The search for one more carriage return finds none and raises.
    line.Get().Remove(wchar{13});
    return line.Get();
}

} // namespace vorlund
