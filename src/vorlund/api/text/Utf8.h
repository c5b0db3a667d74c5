/// \file
/// UTF-16 text on its way out, as code points and as UTF-8. In texts that people read, a lone surrogate
/// becomes U+FFFD, except U+DC5C, by which paths have a "\" inside a name, and which reads as one. File names
/// have rules of their own, which lose nothing (PathCodec_posix.h).
#pragma once

#include <vorlund/Platform.h>

#include <cstddef>
#include <memory_resource>
#include <string>

namespace vorlund {

constexpr char32_t kFirstHighSurrogate = 0xD800;
constexpr char32_t kFirstLowSurrogate = 0xDC00;

constexpr bool IsHighSurrogate(char32_t unit) {
    return (unit & ~char32_t{0x3FF}) == kFirstHighSurrogate;
}
constexpr bool IsLowSurrogate(char32_t unit) {
    return (unit & ~char32_t{0x3FF}) == kFirstLowSurrogate;
}

/// The code point of a high surrogate and the low one behind it.
constexpr char32_t JoinSurrogates(char32_t high, char32_t low) {
    return 0x10000 + ((high - kFirstHighSurrogate) << 10) + (low - kFirstLowSurrogate);
}

/// A code point in UTF-8.
struct TUtf8 {
    char bytes[4];
    std::size_t length;
};

/// A surrogate, which is no code point, becomes the three bytes of its number.
constexpr TUtf8 EncodeUtf8(char32_t code) {
    const auto lead = [code](char32_t mark, int shift) { return static_cast<char>(mark | code >> shift); };
    const auto tail = [code](int shift) { return static_cast<char>(0x80 | (code >> shift & 0x3F)); };
    if (code < 0x80) return {{lead(0, 0)}, 1};
    if (code < 0x800) return {{lead(0xC0, 6), tail(0)}, 2};
    if (code < 0x10000) return {{lead(0xE0, 12), tail(6), tail(0)}, 3};
    return {{lead(0xF0, 18), tail(12), tail(6), tail(0)}, 4};
}

/// Appends a code point in UTF-8 to a string of bytes. Raises `std::bad_alloc`.
template <class TString> void AppendUtf8(TString& out, char32_t code) {
    const TUtf8 utf8 = EncodeUtf8(code);
    out.append(utf8.bytes, utf8.length);
}

/// Appends a whole text in UTF-8. Raises `std::bad_alloc`.
void AppendUtf8(std::pmr::string& out, const wchar* text);

/// Takes the code point at `text`, which is moved on behind it; 0 at the end, where `text` stays.
char32_t NextCodePoint(const wchar*& text);

} // namespace vorlund
