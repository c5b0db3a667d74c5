#include <vorlund/String.h>

#include "vorlund/api/text/TextBuffer.h"
#include "vorlund/api/text/TextKernels.h"

#include <cstddef>
#include <cwctype>
#include <limits>
#include <type_traits>
#include <utility>

namespace vorlund {
namespace {

/// Stands in for a null argument.
constexpr wchar kEmpty[] = {0};

const wchar* OrEmpty(const wchar* text) {
    return text ? text : kEmpty;
}

// What elements out of range refer to: one cell for each overload, shared by all texts.
wchar unsignedConstCell;
wchar unsignedCell;
wchar signedConstCell;
wchar signedCell;

TTextBuffer Copy(const wchar* text, std::size_t length) {
    TTextBuffer buffer = NewTextBuffer(length);
    CopyText(buffer.get(), text, length);
    return buffer;
}

TTextBuffer Copy(const wchar* text) {
    return Copy(OrEmpty(text), TextLength(OrEmpty(text)));
}

TTextBuffer Copy(const char* text) {
    const std::size_t length = text ? std::strlen(text) : 0;
    TTextBuffer buffer = NewTextBuffer(length);
    WidenText(buffer.get(), text, length);
    return buffer;
}

/// The place of the element that `index` names, counted from the end when negative; -1 when there is none.
std::int64_t ElementPlace(const wchar* text, std::int64_t index) {
    if (index < 0) {
        index += static_cast<std::int64_t>(TextLength(text));
        return index < 0 ? -1 : index;
    }
    // No text is that long, and the addition below would overflow.
    if (index >= std::numeric_limits<std::ptrdiff_t>::max()) return -1;
    const auto needed = static_cast<std::size_t>(index) + 1;
    return TextLength(text, needed) == needed ? index : -1;
}

wchar Widened(wchar unit) {
    return unit;
}

wchar Widened(char unit) {
    return WidenUnit(unit);
}

/// As the C runtime has it in the current locale of the thread. Where its characters are wider than a unit, a
/// form that is no unit does not count.
wchar UpperCaseUnit(wchar unit) {
    const std::wint_t upper = std::towupper(static_cast<std::wint_t>(unit));
    const auto form = static_cast<wchar>(upper);
    return static_cast<std::wint_t>(form) == upper ? form : unit;
}

template <class TUnit> int CompareIgnoreCase(const wchar* left, const TUnit* right) {
    for (;; ++left, ++right) {
        const wchar leftUnit = *left;
        // The analyzer follows `right` past its terminator, where the loop has ended.
        const wchar rightUnit = Widened(*right); // NOLINT(clang-analyzer-core.CallAndMessage)
        if (leftUnit == rightUnit) {
            if (!leftUnit) return 0;
            continue;
        }
        // The end of a text is below every unit, whatever a locale makes of one.
        if (!leftUnit || !rightUnit) return leftUnit ? 1 : -1;
        const wchar leftUpper = UpperCaseUnit(leftUnit);
        const wchar rightUpper = UpperCaseUnit(rightUnit);
        if (leftUpper != rightUpper) return leftUpper > rightUpper ? 1 : -1;
    }
}

/// The units of `left` followed by those of `right`, which is narrow or wide.
template <class TUnit> TTextBuffer Join(const wchar* left, const TUnit* right) {
    const std::size_t length = TextLength(left);
    if constexpr (std::is_same_v<TUnit, char>) {
        const std::size_t added = right ? std::strlen(right) : 0;
        TTextBuffer buffer = NewTextBuffer(std::uint64_t{length} + added);
        CopyText(buffer.get(), left, length);
        WidenText(buffer.get() + length, right, added);
        return buffer;
    } else {
        const std::size_t added = TextLength(OrEmpty(right));
        TTextBuffer buffer = NewTextBuffer(std::uint64_t{length} + added);
        CopyText(buffer.get(), left, length);
        CopyText(buffer.get() + length, OrEmpty(right), added);
        return buffer;
    }
}

} // namespace

CString::CString() : buffer_(NewTextBuffer(0).release()) {}
CString::CString(const char* text) : buffer_(Copy(text).release()) {}
CString::CString(const wchar* text) : buffer_(Copy(text).release()) {}
CString::CString(const CString& other) : buffer_(Copy(other.buffer_).release()) {}

CString& CString::operator=(const char* text) {
    AdoptBuffer(buffer_, Copy(text));
    return *this;
}

CString& CString::operator=(const wchar* text) {
    AdoptBuffer(buffer_, Copy(text));
    return *this;
}

CString& CString::operator=(const CString& other) {
    return *this = static_cast<const wchar*>(other.buffer_);
}

unsigned int CString::Length() const {
    return static_cast<unsigned int>(TextLength(buffer_));
}

void CString::Allocate(int count) {
    if (count < 0) throw std::bad_alloc();
    TTextBuffer buffer = NewTextBuffer(static_cast<unsigned int>(count));
    buffer[0] = 0;
    AdoptBuffer(buffer_, std::move(buffer));
}

// Kept for existing callers: an element out of range is a cell that all texts share, and a write to it stays
// there.
wchar CString::operator[](unsigned int index) const {
    const std::int64_t place = ElementPlace(buffer_, index);
    return place < 0 ? unsignedConstCell : buffer_[place];
}

wchar& CString::operator[](unsigned int index) {
    const std::int64_t place = ElementPlace(buffer_, index);
    return place < 0 ? unsignedCell : buffer_[place];
}

wchar CString::operator[](int index) const {
    const std::int64_t place = ElementPlace(buffer_, index);
    return place < 0 ? signedConstCell : buffer_[place];
}

wchar& CString::operator[](int index) {
    const std::int64_t place = ElementPlace(buffer_, index);
    return place < 0 ? signedCell : buffer_[place];
}

// Kept for existing callers: declared, but without an implementation; it returns null.
IObjectEnumerator* CString::EnumerateTokens(wchar) const {
    return nullptr;
}

int CString::CompareTo(const char* text) const {
    const wchar* at = buffer_;
    const char* other = text ? text : "";
    while (*at && *at == WidenUnit(*other)) ++at, ++other;
    const wchar unit = WidenUnit(*other);
    return *at == unit ? 0 : *at > unit ? 1 : -1;
}

int CString::CompareTo(const wchar* text) const {
    const wchar* const other = OrEmpty(text);
    // Most pairs differ at once.
    if (*buffer_ != *other) return *buffer_ > *other ? 1 : -1;
    return CompareText(buffer_, other);
}

int CString::CompareToIgnoreCase(const char* text) const {
    return CompareIgnoreCase(buffer_, text ? text : "");
}

int CString::CompareToIgnoreCase(const wchar* text) const {
    return CompareIgnoreCase(buffer_, OrEmpty(text));
}

CString CString::operator+(const char* text) const {
    return CString(TBuffer{Join(buffer_, text).release()});
}

CString CString::operator+(const wchar* text) const {
    return CString(TBuffer{Join(buffer_, text).release()});
}

CString& CString::operator+=(const char* text) {
    AdoptBuffer(buffer_, Join(buffer_, text));
    return *this;
}

CString& CString::operator+=(const wchar* text) {
    AdoptBuffer(buffer_, Join(buffer_, text));
    return *this;
}

void CString::ToWideChar(wchar* destination, int size) const {
    if (size < 1) return;
    const std::size_t length = TextLength(buffer_, static_cast<std::size_t>(size) - 1);
    // The destination may be a place in this text.
    std::memmove(destination, buffer_, length * sizeof(wchar));
    destination[length] = 0;
}

void CString::ToChar(char* destination, int size) const {
    if (size < 1) return;
    const std::size_t length = TextLength(buffer_, static_cast<std::size_t>(size) - 1);
    // Kept for existing callers: no code page, but the low byte of each unit.
    for (std::size_t i = 0; i < length; ++i) destination[i] = static_cast<char>(buffer_[i]);
    destination[length] = 0;
}

} // namespace vorlund
