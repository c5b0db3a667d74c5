#include "vorlund/api/text/Utf8.h"

#include <cstdint>

namespace vorlund {
namespace {

constexpr char32_t kReplacement = 0xFFFD;
constexpr char32_t kBackslashInName = kFirstLowSurrogate + '\\';

} // namespace

char32_t NextCodePoint(const wchar*& text) {
    const char32_t first = static_cast<std::uint16_t>(*text);
    if (first == 0) return 0;
    ++text;
    if (IsLowSurrogate(first)) return first == kBackslashInName ? '\\' : kReplacement;
    if (!IsHighSurrogate(first)) return first;
    const char32_t second = static_cast<std::uint16_t>(*text);
    if (!IsLowSurrogate(second)) return kReplacement;
    ++text;
    return JoinSurrogates(first, second);
}

void AppendUtf8(std::pmr::string& out, const wchar* text) {
    while (const char32_t code = NextCodePoint(text)) AppendUtf8(out, code);
}

} // namespace vorlund
