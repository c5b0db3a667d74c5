/// \file
/// The plain loops behind TextKernels.h: the reference of the other sets.
#pragma once

#include "vorlund/api/text/TextKernels.h"

#include <algorithm>
#include <cstdint>

namespace vorlund::scalar {

inline std::size_t TextLength(const wchar* text) {
    std::size_t length = 0;
    while (text[length]) ++length;
    return length;
}

inline std::size_t TextLength(const wchar* text, std::size_t limit) {
    std::size_t length = 0;
    while (length < limit && text[length]) ++length;
    return length;
}

inline int CompareText(const wchar* left, const wchar* right) {
    while (*left && *left == *right) ++left, ++right;
    return *left == *right ? 0 : *left > *right ? 1 : -1;
}

inline std::size_t FindFirstUnit(const wchar* text, std::size_t length, wchar unit) {
    for (std::size_t i = 0; i < length; ++i)
        if (text[i] == unit) return i;
    return kTextNotFound;
}

inline std::size_t FindLastUnit(const wchar* text, std::size_t length, wchar unit) {
    for (std::size_t i = length; i > 0; --i)
        if (text[i - 1] == unit) return i - 1;
    return kTextNotFound;
}

inline std::size_t FindFirstUnit(const wchar* text, wchar unit) {
    for (std::size_t i = 0;; ++i) {
        if (text[i] == unit) return i;
        if (!text[i]) return kTextNotFound;
    }
}

inline std::size_t FindLastUnit(const wchar* text, wchar unit) {
    return FindLastUnit(text, TextLength(text) + 1, unit);
}

inline std::size_t FindFirstText(const wchar* text, std::size_t length, const wchar* needle,
                                 std::size_t needleLength) {
    if (needleLength > length) return kTextNotFound;
    for (std::size_t i = 0; i <= length - needleLength; ++i)
        if (std::equal(needle, needle + needleLength, text + i)) return i;
    return kTextNotFound;
}

inline std::size_t FindAllText(const wchar* text, std::size_t length, const wchar* needle,
                               std::size_t needleLength, std::uint32_t* places, std::size_t capacity) {
    std::size_t count = 0;
    for (std::size_t i = 0; count < capacity && i + needleLength <= length;) {
        const bool isHere = std::equal(needle, needle + needleLength, text + i);
        if (isHere) places[count++] = static_cast<std::uint32_t>(i);
        i += isHere ? needleLength : 1;
    }
    return count;
}

inline std::size_t FindLastText(const wchar* text, std::size_t length, const wchar* needle,
                                std::size_t needleLength) {
    if (needleLength > length) return kTextNotFound;
    for (std::size_t i = length - needleLength + 1; i > 0; --i)
        if (std::equal(needle, needle + needleLength, text + i - 1)) return i - 1;
    return kTextNotFound;
}

inline void ReplaceUnit(wchar* text, std::size_t length, wchar from, wchar to) {
    std::replace(text, text + length, from, to);
}

inline void WidenText(wchar* destination, const char* source, std::size_t length) {
    for (std::size_t i = 0; i < length; ++i) destination[i] = WidenUnit(source[i]);
}

template <class TUnit>
bool CopyAndLook(wchar* destination, const TUnit* source, std::size_t length, wchar unit) {
    bool isThere = false;
    for (std::size_t i = 0; i < length; ++i) {
        destination[i] = source[i];
        isThere |= destination[i] == unit;
    }
    return isThere;
}

inline constexpr TTextSet kText{"scalar",
                                [] { return true; },
                                {TextLength, TextLength, CompareText, FindFirstUnit, FindLastUnit,
                                 FindFirstUnit, FindLastUnit, FindFirstText, FindLastText, FindAllText,
                                 ReplaceUnit, WidenText, CopyAndLook<wchar>, CopyAndLook<std::uint8_t>}};

} // namespace vorlund::scalar
