/// \file
/// `CString` beside the texts of the standard library: views, UTF-8, hashes, ranges and streams. File names
/// have rules of their own: Path.h.
#pragma once

#include <vorlund/String.h>

#include <cstddef>
#include <cstring>
#include <functional>
#include <ostream>
#include <string>
#include <string_view>

namespace vorlund {

/// The text in UTF-8. A surrogate without its other half becomes U+FFFD. Raises `std::bad_alloc`. Any thread.
/// Since version 0.1.
VRL_API std::string TextToUtf8(std::basic_string_view<wchar> text);

/// The text in UTF-16. Each byte that belongs to no character becomes U+FFFD: overlong forms, halves of
/// surrogates and numbers above U+10FFFF are no characters. Raises `std::bad_alloc`. Any thread. Since
/// version 0.1.
VRL_API wstring TextFromUtf8(std::string_view text);

/// The units of a text, valid until it is changed. Since version 0.1.
inline std::basic_string_view<wchar> ViewOf(const CString& text) {
    return {text.GetBuffer(), text.Length()};
}

/// A text of the units of a view, up to its first zero unit. Raises `std::bad_alloc`. Since version 0.1.
inline CString MakeString(std::basic_string_view<wchar> units) {
    units = units.substr(0, units.find(wchar{}));
    CString text;
    text.Allocate(static_cast<int>(units.size()));
    wchar* const buffer = text.GetBuffer();
    if (!units.empty()) std::memcpy(buffer, units.data(), units.size() * sizeof(wchar));
    buffer[units.size()] = 0;
    return text;
}

/// A text of UTF-8, and the other way, as above. Since version 0.1.
inline CString StringFromUtf8(std::string_view text) {
    return MakeString(TextFromUtf8(text));
}
inline std::string ToUtf8(const CString& text) {
    return TextToUtf8(ViewOf(text));
}

/// For range-for over the units. Since version 0.1.
inline const wchar* begin(const CString& text) {
    return text.GetBuffer();
}
inline const wchar* end(const CString& text) {
    return text.GetBuffer() + text.Length();
}

/// Writes the text in UTF-8; without this header a stream would print an address. Since version 0.1.
inline std::ostream& operator<<(std::ostream& out, const CString& text) {
    return out << ToUtf8(text);
}

} // namespace vorlund

/// For unordered containers. Since version 0.1.
template <> struct std::hash<vorlund::CString> {
    std::size_t operator()(const vorlund::CString& text) const {
        return std::hash<std::basic_string_view<vorlund::wchar>>()(vorlund::ViewOf(text));
    }
};
