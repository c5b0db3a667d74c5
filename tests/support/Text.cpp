#include "support/Text.h"

namespace vorlund::test {
namespace {

bool IsHighSurrogate(unsigned int unit) {
    return unit >= 0xD800 && unit < 0xDC00;
}
bool IsLowSurrogate(unsigned int unit) {
    return unit >= 0xDC00 && unit < 0xE000;
}

void AppendUtf8(std::string& out, unsigned int code) {
    const auto tail = [&](int shift) { out += static_cast<char>(0x80 | (code >> shift & 0x3F)); };
    if (code < 0x80) {
        out += static_cast<char>(code);
    } else if (code < 0x800) {
        out += static_cast<char>(0xC0 | code >> 6);
        tail(0);
    } else if (code < 0x10000) {
        out += static_cast<char>(0xE0 | code >> 12);
        tail(6);
        tail(0);
    } else {
        out += static_cast<char>(0xF0 | code >> 18);
        tail(12);
        tail(6);
        tail(0);
    }
}

} // namespace

std::string Narrow(std::basic_string_view<wchar> text) {
    std::string out;
    for (std::size_t i = 0; i < text.size(); ++i) {
        unsigned int code = static_cast<unsigned short>(text[i]);
        if (IsHighSurrogate(code) && i + 1 < text.size() &&
            IsLowSurrogate(static_cast<unsigned short>(text[i + 1])))
            code = 0x10000 + ((code - 0xD800) << 10) + (static_cast<unsigned short>(text[++i]) - 0xDC00);
        AppendUtf8(out, code);
    }
    return out;
}

std::string Narrow(const wchar* text) {
    return text ? Narrow(std::basic_string_view<wchar>(text)) : "<null>";
}

} // namespace vorlund::test
