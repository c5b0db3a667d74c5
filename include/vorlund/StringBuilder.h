/// \file
/// `CStringBuilder`, which puts texts together.
#pragma once

#include <vorlund/String.h>

#include <cstddef>

namespace vorlund {

/// A text that grows at its end in amortised constant time for each unit, and knows its length. `CString`
/// copies the whole text for each `+=` and counts the units for each `Length()` and `s[i]`; so texts are put
/// together, and gone through unit by unit, here.
///
/// Arguments may be of the text itself. Null texts count as empty. `std::bad_alloc` leaves the text as it
/// was. One thread at a time. Since version 0.1.
class CStringBuilder {
public:
    CStringBuilder() = default;
    explicit CStringBuilder(const wchar* text) { Append(text); }

    /// Appends a unit, zero included.
    CStringBuilder& Append(wchar unit) {
        text_.push_back(unit);
        return *this;
    }
    /// Appends a text.
    CStringBuilder& Append(const wchar* text) {
        if (text) text_.append(text);
        return *this;
    }
    CStringBuilder& Append(const CString& text) { return Append(text.GetBuffer()); }
    /// Appends a narrow text, widened by its sign as in `CString`.
    CStringBuilder& Append(const char* text) {
        for (; text && *text; ++text) text_.push_back(static_cast<wchar>(static_cast<signed char>(*text)));
        return *this;
    }
    /// Appends `count` units, zero units included.
    CStringBuilder& Append(const wchar* units, std::size_t count) {
        if (units) text_.append(units, count);
        return *this;
    }
    template <class T> CStringBuilder& operator+=(const T& text) { return Append(text); }

    /// Units, zero units included. Constant time.
    std::size_t Length() const { return text_.size(); }
    bool IsEmpty() const { return text_.empty(); }
    /// The unit at `index`, 0 from the end on. Constant time; never raises.
    wchar operator[](std::size_t index) const { return index < text_.size() ? text_[index] : wchar{0}; }
    /// Changes the unit at `index`; nothing from the end on. Constant time; never raises.
    void Set(std::size_t index, wchar unit) {
        if (index < text_.size()) text_[index] = unit;
    }
    /// The terminated text, valid until it is changed.
    const wchar* GetBuffer() const { return text_.c_str(); }
    /// A copy, which ends at the first zero unit. Raises `std::bad_alloc`.
    CString ToString() const { return CString(text_.c_str()); }

    /// Makes room for a text of `length` units in all, so that it grows to that without another allocation.
    /// Raises `std::bad_alloc`, and `std::length_error` for a length that cannot exist.
    void Reserve(std::size_t length) { text_.reserve(length); }
    /// Keeps the first `length` units, or all when there are fewer; the room stays.
    void Cut(std::size_t length) {
        if (length < text_.size()) text_.resize(length);
    }
    /// Empties the text; the room stays.
    void Clear() { text_.clear(); }

private:
    wstring text_;
};

} // namespace vorlund
