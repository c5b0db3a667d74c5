#include <vorlund/LineReader.h>

#include "vorlund/serial/CharUnits.h"

#include <algorithm>
#include <cstddef>

// A line is read by the same calls in the same order as `CTextReader::ReadLine` makes: `Flush` once for each
// piece of a line without a line feed, and at the end one `RemoveBufferedData`, for the piece with the line
// feed, or, at the end of the data, a `FillBuffer` that leaves nothing buffered. What these calls take from
// the buffer is the line. That operation itself is of no use here: the exception that ends it costs more than
// a line of any usual length.

namespace vorlund {

CLineReader::CLineReader(IInputStream* stream, TCharFormat charFormat) : CTextReader(stream, charFormat) {}

CLineReader::~CLineReader() noexcept(false) = default;

bool CLineReader::ReadLine(wstring& line) {
    const bool isLine = ReadUnits();
    line.swap(units_);
    Discard();
    return isLine;
}

bool CLineReader::ReadLine(CString& line) {
    const bool isLine = ReadUnits();
    line = units_.c_str();
    Discard();
    return isLine;
}

void CLineReader::Flush() {
    if (state_ == TState::Reading)
        KeepBytes(buffered_);
    else
        Discard();
    CTextReader::Flush();
}

void CLineReader::FillBuffer() {
    CTextReader::FillBuffer();
    if (UnitSize(GetCharFormat()) == 2) {
        // Half a unit would be lost, and every unit after it would be made of the wrong halves.
        for (std::int32_t former = 0; buffered_ % 2 != 0 && buffered_ != former;) {
            former = buffered_;
            CTextReader::FillBuffer();
        }
    }
    if (state_ == TState::Reading && buffered_ == 0) {
        isLine_ = !units_.empty();
        state_ = TState::Complete;
    }
}

void CLineReader::RemoveBufferedData(int count) {
    if (state_ == TState::Reading) {
        KeepBytes(count);
        units_.pop_back();
        isLine_ = true;
        state_ = TState::Complete;
    }
    CTextReader::RemoveBufferedData(count);
}

/// Completes the line in `units_`; false when there is none. What raises leaves what was read for the next
/// call.
bool CLineReader::ReadUnits() {
    if (state_ == TState::Idle) {
        state_ = TState::Reading;
        try {
            ReadToLineFeed();
        } catch (...) {
            if (state_ != TState::Complete) state_ = TState::Idle;
            throw;
        }
    }
    std::erase(units_, wchar{13});
    return isLine_;
}

void CLineReader::ReadToLineFeed() {
    const std::size_t unitSize = UnitSize(GetCharFormat());
    for (;;) {
        FillBuffer();
        if (buffered_ == 0) return;
        const std::size_t count = static_cast<std::size_t>(buffered_) / unitSize;
        const std::size_t lineFeed = FindStreamUnit(buffer_, count, 10, GetCharFormat());
        if (lineFeed < count) {
            RemoveBufferedData(static_cast<int>((lineFeed + 1) * unitSize));
            return;
        }
        Flush();
    }
}

/// Appends what is about to leave the buffer, without half a unit at the end.
void CLineReader::KeepBytes(int count) {
    const TCharFormat format = GetCharFormat();
    const std::size_t start = units_.size();
    const std::size_t added = static_cast<std::size_t>(std::min(count, buffered_)) / UnitSize(format);
    units_.resize(start + added);
    CopyUnits(units_.data() + start, buffer_, added, format);
}

void CLineReader::Discard() {
    units_.clear();
    state_ = TState::Idle;
}

} // namespace vorlund
