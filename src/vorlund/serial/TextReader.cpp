#include <vorlund/TextReader.h>

#include "vorlund/api/TextKernels.h"
#include "vorlund/serial/CharUnits.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace vorlund {
namespace {

constexpr int kBufferSize = 1024;

/// The place of `unit`, a value below 128, among `count` units of `format`; `count` when there is none.
std::size_t Find(const std::uint8_t* bytes, std::size_t count, char unit, TCharFormat format) {
    if (format == CHAR_FORMAT_8BIT) {
        const void* const place = std::memchr(bytes, unit, count);
        return place ? static_cast<std::size_t>(static_cast<const std::uint8_t*>(place) - bytes) : count;
    }
    // Every piece starts at the start of the buffer, which is aligned for anything.
    const auto* const units = static_cast<const wchar*>(static_cast<const void*>(bytes));
    return std::min(FindFirstUnit(units, count, static_cast<wchar>(unit)), count);
}

} // namespace

CTextReader::CTextReader(IInputStream* stream, TCharFormat charFormat)
    : CBufferedReader(stream, kBufferSize), charFormat_(charFormat) {}

CTextReader::~CTextReader() noexcept(false) = default;

CString CTextReader::ReadLine() {
    const std::size_t unitSize = UnitSize(charFormat_);
    wstring text;
    for (;;) {
        FillBuffer();
        if (buffered_ == 0) break;
        const std::size_t count = static_cast<std::size_t>(buffered_) / unitSize;
        const std::size_t lineFeed = Find(buffer_, count, 10, charFormat_);
        // Kept on purpose: a zero unit ends the piece, and an odd byte goes with it.
        AppendUnits(text, buffer_, Find(buffer_, lineFeed, 0, charFormat_) * unitSize, charFormat_);
        if (lineFeed < count) {
            RemoveBufferedData(static_cast<int>((lineFeed + 1) * unitSize));
            break;
        }
        Flush();
    }
    CString line(text.c_str());
    // Kept on purpose: this never returns. The search for one more carriage return finds none and raises.
    line.Remove(wchar{13});
    return line;
}

} // namespace vorlund
