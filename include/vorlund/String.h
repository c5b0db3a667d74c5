/// \file
/// `CString`, the library's one text type.
#pragma once

#include <vorlund/Platform.h>

#include <algorithm>
#include <concepts>
#include <cstddef>
#include <limits>
#include <utility>

namespace vorlund {

class IObjectEnumerator;

/// The integers wider than `int`, by which texts are indexed too.
template <class T>
concept TLongInteger = std::same_as<T, long> || std::same_as<T, unsigned long> ||
    std::same_as<T, long long> || std::same_as<T, unsigned long long>;

/// A null-terminated UTF-16 text in a heap buffer of its own.
///
/// The buffer is never null, and each change of the length makes a new one of exactly length + 1 units; there
/// is no stored length, so a zero unit written into the middle shortens the text. Narrow (`char`) input is
/// widened unit by unit with sign extension (the byte 0xE9 becomes U+FFE9), with no code page; narrow output
/// takes the low byte of each unit.
///
/// A failed allocation raises `std::bad_alloc` and leaves the text as it was; arguments may alias the text
/// itself. Null text arguments count as empty. One thread at a time; the cells behind out-of-range elements
/// are shared by all texts.
///
/// \code{.cpp}
/// CString text = "hello";
/// text += VRL_L(" world");
/// text[0] = 'H';
/// std::printf("%s: %u units\n", ToUtf8(text).c_str(), text.Length()); // prints Hello world: 11 units
/// \endcode
class VRL_API CString {
public:
    /// The empty text.
    CString();
    /// Copies of a text.
    CString(const char* text);
    CString(const wchar* text);
    CString(const CString& other);
    /// The empty text, as null is. Since version 0.1.
    template <std::same_as<std::nullptr_t> TNull> CString(TNull) : CString() {}
    // The analyzer destroys twice what a std::optional holds.
    ~CString() { delete[] buffer_; } // NOLINT(clang-analyzer-cplusplus.NewDelete)

    /// Replaces the text by a copy.
    CString& operator=(const char* text);
    CString& operator=(const wchar* text);
    CString& operator=(const CString& other);
    CString& operator=(CString&& other) noexcept {
        std::swap(buffer_, other.buffer_);
        return *this;
    }

    /// The buffer itself, valid until the text is changed.
    operator const wchar*() const { return buffer_; }
    operator wchar*() { return buffer_; }
    const wchar* GetBuffer() const { return buffer_; }
    wchar* GetBuffer() { return buffer_; }

    /// Units before the first zero unit, counted afresh at each call.
    unsigned int Length() const;

    /// Discards the text and makes room for `count` units, which the caller fills through `GetBuffer`; the
    /// text is empty until then. Raises `std::bad_alloc` for a count below 0 or one that cannot exist.
    void Allocate(int count);

    /// The unit at `index`, after counting up to it (`CStringBuilder` does not). Out of range, one static
    /// cell per overload, 0 until it is written. Never raises. A negative `int` counts from the end.
    wchar operator[](unsigned int index) const;
    wchar& operator[](unsigned int index);
    wchar operator[](int index) const;
    wchar& operator[](int index);
    /// The same for wider integers: what fits into no `int` is out of range. Since version 0.1.
    template <TLongInteger TIndex> wchar operator[](TIndex index) const { return (*this)[ToIndex(index)]; }
    template <TLongInteger TIndex> wchar& operator[](TIndex index) { return (*this)[ToIndex(index)]; }

    /// Returns null for every separator: splitting into tokens is not provided. The operation is kept for
    /// programs that call it.
    IObjectEnumerator* EnumerateTokens(wchar separator) const;

    /// -1, 0 or 1: units compared in order as unsigned 16-bit values; with no difference the longer text is
    /// greater.
    int CompareTo(const char* text) const;
    int CompareTo(const wchar* text) const;

    /// The same, each unit upper-cased first by the C runtime (`towupper`) in the current locale. In the
    /// initial locale the letters a to z have an upper-case form, and no others have one, with glibc and
    /// under Wine alike; after `setlocale` each system adds those that it knows.
    int CompareToIgnoreCase(const char* text) const;
    int CompareToIgnoreCase(const wchar* text) const;

    bool operator==(const char* text) const { return CompareTo(text) == 0; }
    bool operator==(const wchar* text) const { return CompareTo(text) == 0; }
    // NOLINTNEXTLINE(performance-unnecessary-value-param): exported with this signature.
    bool operator==(CString other) const { return CompareTo(other.buffer_) == 0; }
    bool operator!=(const char* text) const { return CompareTo(text) != 0; }
    bool operator!=(const wchar* text) const { return CompareTo(text) != 0; }
    bool operator<(const char* text) const { return CompareTo(text) < 0; }
    bool operator<(const wchar* text) const { return CompareTo(text) < 0; }
    bool operator<=(const char* text) const { return CompareTo(text) <= 0; }
    bool operator<=(const wchar* text) const { return CompareTo(text) <= 0; }
    bool operator>(const char* text) const { return CompareTo(text) > 0; }
    bool operator>(const wchar* text) const { return CompareTo(text) > 0; }
    bool operator>=(const char* text) const { return CompareTo(text) >= 0; }
    bool operator>=(const wchar* text) const { return CompareTo(text) >= 0; }

    /// \name Exact matches
    /// For two texts and for single units, of which the conversions to pointers would make ambiguous calls: a
    /// unit counts as a text of that one unit. Since version 0.1.
    /// @{
    template <std::same_as<CString> TText> bool operator<(const TText& other) const {
        return CompareTo(other.buffer_) < 0;
    }
    template <std::same_as<CString> TText> bool operator<=(const TText& other) const {
        return CompareTo(other.buffer_) <= 0;
    }
    template <std::same_as<CString> TText> bool operator>(const TText& other) const {
        return CompareTo(other.buffer_) > 0;
    }
    template <std::same_as<CString> TText> bool operator>=(const TText& other) const {
        return CompareTo(other.buffer_) >= 0;
    }
    template <std::same_as<wchar> TUnit> bool operator==(TUnit unit) const {
        return CompareTo(TUnitText{{unit}}.units) == 0;
    }
    template <std::same_as<wchar> TUnit> CString& operator+=(TUnit unit) {
        return *this += static_cast<const wchar*>(TUnitText{{unit}}.units);
    }
    template <std::same_as<wchar> TUnit> CString operator+(TUnit unit) const {
        return *this + static_cast<const wchar*>(TUnitText{{unit}}.units);
    }
    /// `Remove(wchar)`.
    template <std::same_as<int> TUnit> void Remove(TUnit unit) { Remove(static_cast<wchar>(unit)); }
    /// @}

    /// The text with another one behind it: all is copied, also by `+=`. Many are joined by `CStringBuilder`.
    CString operator+(const char* text) const;
    CString operator+(const wchar* text) const;
    CString& operator+=(const char* text);
    CString& operator+=(const wchar* text);

    /// `Remove` on a copy or on this text. Because `Remove` ends by raising, so do these: `-=` leaves the
    /// text edited, and the result of `-` is lost, except where the wide `Remove` returns.
    CString operator-(const char* text) const;
    CString operator-(const wchar* text) const;
    CString& operator-=(const char* text);
    CString& operator-=(const wchar* text);

    /// The lowest index at which the argument occurs. The unit 0 gives `Length()`, an empty needle 0. Raises
    /// `CObjectNotFoundException` "Didn't find content"; but a wide needle longer than the text gives
    /// 0xFFFFFFFF.
    unsigned int FindFirst(wchar unit) const;
    unsigned int FindFirst(const wchar* needle) const;
    unsigned int FindFirst(const char* needle) const;

    /// The highest index at which the argument occurs. The unit 0 and an empty needle give `Length()`. Raises
    /// `CObjectNotFoundException` "Didn't find content"; but a needle longer than the text gives 0xFFFFFFFF.
    unsigned int FindLast(wchar unit) const;
    unsigned int FindLast(const wchar* needle) const;
    unsigned int FindLast(const char* needle) const;

    /// Every unit equal to `from` becomes `to`, in place.
    void Replace(wchar from, wchar to);

    /// Replaces the first occurrence of `from`, and again from the front of the result until there is none:
    /// an edit can complete an occurrence before it ("aab" with "ab" replaced by "b" gives "b"), so the time
    /// grows with the square of the length where "ab" becomes "ba". At most 65535 units behind it are kept.
    ///
    /// Ends by raising `CObjectNotFoundException` "Didn't find content" once the text is edited, except when
    /// `from` has become longer than the text, or was so from the start: then it returns.
    ///
    /// A call that would never end raises `CInvalidParameterException` and leaves the text as it was: for an
    /// empty `from` always, with "Empty search text"; when the text holds `from` and `to` holds it too, with
    /// "Replacement has no end in sight". So does a call whose edits keep completing new occurrences (as "ab"
    /// replaced by "bbaa" in "aab" does) until they would have copied more than 2^34 units of a growing text,
    /// or read more than 2^32 units otherwise. A failed allocation raises `std::bad_alloc` and leaves the
    /// text as it was.
    void Replace(const wchar* from, const wchar* to);

    /// Cuts out every occurrence: `Replace` with nothing, with the same endings. The forms that take a unit
    /// or a narrow text always end by raising. Raises `CInvalidParameterException`, with the text as it was,
    /// for the unit 0 ("Cannot remove the terminator") and for an empty text ("Empty search text").
    void Remove(wchar unit);
    void Remove(const wchar* text);
    void Remove(const char* text);

    /// Cuts out a range, given as for `SubStr`. Never raises. Keeps at most 65535 units behind a range that
    /// is not empty.
    void Remove(int start, int count);

    /// Cuts leading and trailing line feeds, carriage returns and spaces; a tab stays.
    void Trim();

    /// The units of a range. A negative `start` counts from the end; a negative `count` leaves that many
    /// units off the end; the range is cut to the text. Never raises.
    CString SubStr(int start, int count) const;

    /// Copies at most `size` - 1 units and a terminator; nothing is written when `size` is below 1. Narrow:
    /// the low byte of each unit.
    void ToWideChar(wchar* destination, int size) const;
    void ToChar(char* destination, int size) const;

private:
    /// A text of one unit, or the empty one.
    struct TUnitText {
        wchar units[2];
    };

    /// The `int` or `unsigned int` that counts as `index` does.
    template <TLongInteger TIndex> static constexpr auto ToIndex(TIndex index) {
        using TNarrow = std::conditional_t<std::signed_integral<TIndex>, int, unsigned int>;
        constexpr auto kMin = static_cast<TIndex>(std::numeric_limits<TNarrow>::min());
        constexpr auto kMax = static_cast<TIndex>(std::numeric_limits<TNarrow>::max());
        return static_cast<TNarrow>(std::clamp(index, kMin, kMax));
    }

    /// A complete buffer that becomes a text's own.
    struct TBuffer {
        wchar* units;
    };
    explicit CString(TBuffer buffer) noexcept : buffer_(buffer.units) {}

    wchar* buffer_;
};

} // namespace vorlund
