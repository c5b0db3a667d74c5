#include "support/Text.h"

#include "vorlund/api/text/Utf8.h"

#include <cstdint>

namespace vorlund::test {

std::string Narrow(std::basic_string_view<wchar> text) {
    std::string out;
    for (std::size_t i = 0; i < text.size(); ++i) {
        char32_t code = static_cast<std::uint16_t>(text[i]);
        const bool isFollowed = IsHighSurrogate(code) && i + 1 < text.size() && IsLowSurrogate(text[i + 1]);
        if (isFollowed) code = JoinSurrogates(code, text[++i]);
        AppendUtf8(out, code);
    }
    return out;
}

std::string Narrow(const wchar* text) {
    return text ? Narrow(std::basic_string_view<wchar>(text)) : "<null>";
}

} // namespace vorlund::test
