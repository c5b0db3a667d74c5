/// \file
/// `CId`, the 128-bit identifier of classes, interfaces and data formats.
#pragma once

#include <vorlund/Platform.h>

#include <compare>
#include <cstddef>

namespace vorlund {

/// A 128-bit identifier: four unsigned 32-bit words, compared word 0 first, so the order is that of the
/// 128-bit number whose most significant word is word 0. The text form is
/// `{XXXXXXXX,XXXXXXXX,XXXXXXXX,XXXXXXXX}`.
///
/// A plain value: trivially copyable, usable in constant expressions, and safe to share between threads when
/// nobody writes to it.
class CId {
public:
    /// The null identifier: all four words 0.
    constexpr CId() = default;

    /// Words 0 to 3 in argument order.
    constexpr CId(unsigned int word0, unsigned int word1, unsigned int word2, unsigned int word3)
        : words_{word0, word1, word2, word3} {}

    /// Parses `text` up to its terminating zero. The hexadecimal digits (either case) fill the 32 digit
    /// places from the left; every other character is skipped; places left over are 0; digits after the 32nd
    /// are ignored. No text is rejected, and a null pointer gives the null identifier.
    VRL_API CId(const wchar* text);

    /// The same for narrow text of any length; bytes above 0x7F are no digits.
    VRL_API CId(const char* text);

    /// The null identifier.
    static constexpr CId Null() { return {}; }

    /// Word `index` (0 to 3).
    constexpr unsigned int GetWord(std::size_t index) const { return words_[index]; }

    /// Unsigned comparison, word 0 first.
    friend constexpr std::strong_ordering operator<=>(const CId& left, const CId& right) {
        for (int i = 0; i < 4; ++i) {
            if (left.words_[i] != right.words_[i]) return left.words_[i] <=> right.words_[i];
        }
        return std::strong_ordering::equal;
    }
    friend constexpr bool operator==(const CId& left, const CId& right) {
        return left.words_[0] == right.words_[0] && left.words_[1] == right.words_[1] &&
               left.words_[2] == right.words_[2] && left.words_[3] == right.words_[3];
    }

    /// The text form: four groups of eight upper-case hexadecimal digits, always 37 characters.
    VRL_API wstring ToString() const;

private:
    unsigned int words_[4] = {0, 0, 0, 0};
};

} // namespace vorlund
