#include "vorlund/api/text/Utf8.h"

#include <vorlund/Text.h>

namespace vorlund {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

/// What the first byte of a character says.
struct TLead {
    std::size_t length; ///< bytes of the character, 0 when none begins so
    char32_t bits;      ///< those of its number in this byte
    char32_t lowest;    ///< a lower number has a shorter form
};

constexpr TLead ReadLead(unsigned char byte) {
    if (byte < 0x80) return {1, byte, 0};
    if (byte < 0xC0) return {0, 0, 0};
    if (byte < 0xE0) return {2, byte & 0x1Fu, 0x80};
    if (byte < 0xF0) return {3, byte & 0x0Fu, 0x800};
    if (byte < 0xF8) return {4, byte & 0x07u, 0x10000};
    return {0, 0, 0};
}

/// Takes the character at the front of the text off it; of bytes that are none, one.
char32_t TakeCharacter(std::string_view& text) {
    const TLead lead = ReadLead(static_cast<unsigned char>(text[0]));
    char32_t code = lead.bits;
    bool isValid = lead.length != 0 && lead.length <= text.size();
    for (std::size_t index = 1; isValid && index < lead.length; ++index) {
        const auto byte = static_cast<unsigned char>(text[index]);
        isValid = (byte & 0xC0) == 0x80;
        code = code << 6 | (byte & 0x3Fu);
    }
    isValid =
        isValid && code >= lead.lowest && code <= 0x10FFFF && !IsHighSurrogate(code) && !IsLowSurrogate(code);
    text.remove_prefix(isValid ? lead.length : 1);
    return isValid ? code : kReplacement;
}

void AppendUtf16(wstring& out, char32_t code) {
    if (code < 0x10000) {
        out += static_cast<wchar>(code);
        return;
    }
    out += static_cast<wchar>(kFirstHighSurrogate + ((code - 0x10000) >> 10));
    out += static_cast<wchar>(kFirstLowSurrogate + (code & 0x3FF));
}

} // namespace

std::string TextToUtf8(std::basic_string_view<wchar> text) {
    std::string out;
    out.reserve(text.size());
    for (std::size_t index = 0; index < text.size(); ++index) {
        char32_t code = static_cast<char16_t>(text[index]);
        const char32_t next = index + 1 < text.size() ? static_cast<char16_t>(text[index + 1]) : 0;
        if (IsHighSurrogate(code) && IsLowSurrogate(next)) {
            code = JoinSurrogates(code, next);
            ++index;
        } else if (IsHighSurrogate(code) || IsLowSurrogate(code)) {
            code = kReplacement;
        }
        AppendUtf8(out, code);
    }
    return out;
}

wstring TextFromUtf8(std::string_view text) {
    wstring out;
    out.reserve(text.size());
    while (!text.empty()) AppendUtf16(out, TakeCharacter(text));
    return out;
}

} // namespace vorlund
