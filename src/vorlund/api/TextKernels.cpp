#include "vorlund/api/TextKernels.h"

#include <cstring>

namespace vorlund {

std::size_t TextLength(const wchar* text) {
    std::size_t length = 0;
    while (text[length]) ++length;
    return length;
}

std::size_t TextLength(const wchar* text, std::size_t limit) {
    std::size_t length = 0;
    while (length < limit && text[length]) ++length;
    return length;
}

int CompareText(const wchar* left, const wchar* right) {
    while (*left && *left == *right) ++left, ++right;
    return *left == *right ? 0 : *left > *right ? 1 : -1;
}

std::size_t FindFirstUnit(const wchar* text, wchar unit) {
    for (const wchar* at = text;; ++at) {
        if (*at == unit) return static_cast<std::size_t>(at - text);
        if (!*at) return kTextNotFound;
    }
}

std::size_t FindLastUnit(const wchar* text, wchar unit) {
    for (std::size_t i = TextLength(text) + 1; i > 0; --i)
        if (text[i - 1] == unit) return i - 1;
    return kTextNotFound;
}

std::size_t FindFirstUnit(const wchar* text, std::size_t length, wchar unit) {
    for (std::size_t i = 0; i < length; ++i)
        if (text[i] == unit) return i;
    return kTextNotFound;
}

std::size_t FindFirstText(const wchar* text, std::size_t length, const wchar* needle,
                          std::size_t needleLength) {
    if (needleLength > length) return kTextNotFound;
    if (!needleLength) return 0;
    for (std::size_t i = 0; i <= length - needleLength; ++i)
        if (!std::memcmp(text + i, needle, needleLength * sizeof(wchar))) return i;
    return kTextNotFound;
}

std::size_t FindLastText(const wchar* text, std::size_t length, const wchar* needle,
                         std::size_t needleLength) {
    if (needleLength > length) return kTextNotFound;
    if (!needleLength) return length;
    for (std::size_t i = length - needleLength + 1; i > 0; --i)
        if (!std::memcmp(text + i - 1, needle, needleLength * sizeof(wchar))) return i - 1;
    return kTextNotFound;
}

void ReplaceUnit(wchar* text, std::size_t length, wchar from, wchar to) {
    for (std::size_t i = 0; i < length; ++i)
        if (text[i] == from) text[i] = to;
}

void WidenText(wchar* destination, const char* source, std::size_t length) {
    for (std::size_t i = 0; i < length; ++i) destination[i] = WidenUnit(source[i]);
}

} // namespace vorlund
