#include <vorlund/LineReader.h>

#include "vorlund/data/base/LentBlock.h"
#include "vorlund/serial/CharUnits.h"

#include <algorithm>
#include <cstring>
#include <utility>

// Most lines are whole in the window: they are looked for there once and copied once, with a look for
// carriage returns by the way. What is left of the window at its end moves to the front before the next read;
// only of a line longer than the window the beginning is put aside.

namespace vorlund {

namespace {

constexpr wchar kCarriageReturn = 13;

void Clear(wstring& line) {
    line.clear();
}

void Clear(CString& line) {
    line = VRL_L("");
}

/// The line becomes `length` units of the stream, without carriage returns.
void SetLine(wstring& line, const std::uint8_t* bytes, std::size_t length, TCharFormat format) {
    line.resize(length);
    if (CopyUnitsAndLook(line.data(), bytes, length, format, kCarriageReturn))
        std::erase(line, kCarriageReturn);
}

void SetLine(CString& line, const std::uint8_t* bytes, std::size_t length, TCharFormat format) {
    line.Allocate(static_cast<int>(length));
    wchar* const units = line.GetBuffer();
    if (CopyUnitsAndLook(units, bytes, length, format, kCarriageReturn))
        length = static_cast<std::size_t>(std::remove(units, units + length, kCarriageReturn) - units);
    units[length] = 0;
}

/// The line becomes `units`, which are no longer needed.
void SetLine(wstring& line, wstring& units) {
    line.swap(units);
}

void SetLine(CString& line, wstring& units) {
    line = units.c_str();
}

} // namespace

CLineReader::CLineReader(IInputStream* stream, TCharFormat charFormat)
    : CReader(stream), charFormat_(charFormat), window_(new std::uint8_t[kWindow]) {}

CLineReader::~CLineReader() noexcept(false) = default;

/// The place of the line feed in the window, behind `seen` units without one.
inline std::size_t CLineReader::FindLineFeed(std::size_t seen) const {
    const int shift = UnitShift(charFormat_);
    const std::size_t count = ((end_ - first_) >> shift) - seen;
    const std::size_t place =
        FindStreamUnit(window_.get() + first_ + (seen << shift), count, 10, charFormat_);
    return place < count ? seen + place : kTextNotFound;
}

bool CLineReader::ReadLine(wstring& line) {
    return Deliver(line);
}

bool CLineReader::ReadLine(CString& line) {
    return Deliver(line);
}

bool CLineReader::Eof() {
    return first_ == end_ && !hasBeginning_ && CReader::Eof();
}

void CLineReader::Seek(std::uint64_t position) {
    Flush();
    CReader::Seek(position);
}

std::uint64_t CLineReader::Tell() {
    return CReader::Tell() - (end_ - first_);
}

void CLineReader::Flush() {
    calls_.NoteChange();
    first_ = end_ = 0;
    ForgetBeginning();
}

template <class TLine> bool CLineReader::Deliver(TLine& line) {
    // Nearly every line is whole in the window. The stream, while it is inside its Read, has that.
    std::size_t length = window_ ? FindLineFeed(0) : kTextNotFound;
    TFound found = TFound::Line;
    if (length == kTextNotFound) {
        found = window_ ? FindLine(length) : TFound::Nothing;
        if (found == TFound::Nothing) {
            // The stream may have destroyed this reader.
            Clear(line);
            return false;
        }
    }
    if (hasBeginning_)
        DeliverLong(line, length);
    else
        SetLine(line, window_.get() + first_, length, charFormat_);
    first_ += (length + 1) << UnitShift(charFormat_);
    // Without a line feed, at the end of the data, all is consumed.
    if (found == TFound::End || first_ == end_) first_ = end_ = 0;
    return true;
}

/// The line of what was put aside and `length` units in the window. An exception leaves all as it was.
template <class TLine> void CLineReader::DeliverLong(TLine& line, std::size_t length) {
    const std::size_t start = beginning_.size();
    AddToBeginning(length);
    try {
        SetLine(line, beginning_);
    } catch (...) {
        beginning_.resize(start);
        throw;
    }
    ForgetBeginning();
}

/// Reads until there is the end of the line; `length` is that of its units in the window, which has no line
/// feed yet.
CLineReader::TFound CLineReader::FindLine(std::size_t& length) {
    for (;;) {
        if (first_ == 0 && end_ == kWindow) PutAside();
        const std::size_t before = end_ - first_;
        const std::size_t seen = before >> UnitShift(charFormat_);
        if (!Fill()) return TFound::Nothing;
        if (end_ - first_ == before) {
            length = seen;
            if (length > 0 || hasBeginning_) return TFound::End;
            // Half a unit, perhaps.
            first_ = end_ = 0;
            return TFound::Nothing;
        }
        length = FindLineFeed(seen);
        if (length != kTextNotFound) return TFound::Line;
    }
}

/// Reads once; false when the stream has used the reader so that nothing of it may be touched.
bool CLineReader::Fill() {
    if (first_ > 0) {
        end_ -= first_;
        std::memmove(window_.get(), window_.get() + first_, end_);
        first_ = 0;
    }
    const std::uint64_t wanted = kWindow - end_;
    const CLentBlock loan(calls_, window_);
    std::uint64_t count = 0;
    {
        const auto stream = stream_;
        // A stream that claims more than it was asked for has filled the room at most.
        count = std::min(stream->Read(loan.Get() + (kWindow - wanted), wanted), wanted);
    }
    if (!loan.IsUnchanged()) return false;
    end_ += static_cast<std::size_t>(count);
    return true;
}

/// The whole window is of one line.
void CLineReader::PutAside() {
    AddToBeginning(kWindow >> UnitShift(charFormat_));
    hasBeginning_ = true;
    first_ = end_ = 0;
}

/// The next units of the window, without carriage returns.
void CLineReader::AddToBeginning(std::size_t count) {
    const std::size_t start = beginning_.size();
    beginning_.resize(start + count);
    wchar* const units = beginning_.data() + start;
    if (CopyUnitsAndLook(units, window_.get() + first_, count, charFormat_, kCarriageReturn))
        beginning_.erase(std::remove(beginning_.begin() + static_cast<std::ptrdiff_t>(start),
                                     beginning_.end(), kCarriageReturn),
                         beginning_.end());
}

void CLineReader::ForgetBeginning() {
    beginning_ = wstring();
    hasBeginning_ = false;
}

} // namespace vorlund
