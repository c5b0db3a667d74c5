// Paths between UTF-16 and the bytes that POSIX systems name files with.
//
// Bytes are UTF-8 by custom only: a name may hold any of them but 0 and "/". Every byte that is not part of a
// well-formed sequence becomes one unit of U+DC80 to U+DCFF, its value in the low bits, so that every byte
// string comes back from its text unchanged. So does "\", which is part of a name here, as U+DC5C: in texts
// "\" is between folders, like "/", and becomes one. The rest is the scheme of Markus Kuhn's "UTF-8B";
// well-formed is what the Unicode Standard's table "Well-Formed UTF-8 Byte Sequences" lists, so encoded
// surrogates, overlong forms and values beyond U+10FFFF are bytes like any other.
#pragma once

#include <vorlund/Platform.h>

#include <string>
#include <string_view>

namespace vorlund::pathcodec {

/// A byte that stands for itself is added to this.
constexpr char32_t kEscapeBase = 0xDC00;

constexpr bool IsEscape(char32_t unit) {
    return unit == kEscapeBase + '\\' || (unit >= kEscapeBase + 0x80 && unit <= kEscapeBase + 0xFF);
}

wstring Decode(std::string_view bytes);

/// False when `text` is null or holds a lone surrogate that stands for no byte: no file has such a name.
bool Encode(const wchar* text, std::string& bytes);

} // namespace vorlund::pathcodec
