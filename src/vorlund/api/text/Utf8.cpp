#include "vorlund/api/text/Utf8.h"

namespace vorlund {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

bool IsHighSurrogate(char32_t unit) {
    return unit >= 0xD800 && unit < 0xDC00;
}
bool IsLowSurrogate(char32_t unit) {
    return unit >= 0xDC00 && unit < 0xE000;
}

} // namespace

char32_t NextCodePoint(const wchar*& text) {
    const char32_t first = static_cast<std::uint16_t>(*text);
    if (first == 0) return 0;
    ++text;
    if (IsLowSurrogate(first)) return kReplacement;
    if (!IsHighSurrogate(first)) return first;
    const char32_t second = static_cast<std::uint16_t>(*text);
    if (!IsLowSurrogate(second)) return kReplacement;
    ++text;
    return 0x10000 + ((first - 0xD800) << 10) + (second - 0xDC00);
}

void AppendUtf8(std::pmr::string& out, char32_t code) {
    const auto byte = [&out](char32_t value) { out += static_cast<char>(value); };
    const auto tail = [&](int shift) { byte(0x80 | (code >> shift & 0x3F)); };
    if (code < 0x80) {
        byte(code);
    } else if (code < 0x800) {
        byte(0xC0 | code >> 6);
        tail(0);
    } else if (code < 0x10000) {
        byte(0xE0 | code >> 12);
        tail(6);
        tail(0);
    } else {
        byte(0xF0 | code >> 18);
        tail(12);
        tail(6);
        tail(0);
    }
}

void AppendUtf8(std::pmr::string& out, const wchar* text) {
    while (const char32_t code = NextCodePoint(text)) AppendUtf8(out, code);
}

} // namespace vorlund
