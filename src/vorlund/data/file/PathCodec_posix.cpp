#include "vorlund/data/file/PathCodec_posix.h"

#include "vorlund/api/text/Utf8.h"

#include <algorithm>
#include <cstddef>

namespace vorlund::pathcodec {
namespace {

/// A well-formed sequence of UTF-8.
struct TSequence {
    /// 0 when there is none.
    std::size_t length;
    unsigned int code;
};

/// The sequence at the start of `bytes`, which are not empty.
TSequence TakeSequence(std::string_view bytes) {
    const auto byteAt = [&](std::size_t index) { return static_cast<unsigned char>(bytes[index]); };
    const unsigned int lead = byteAt(0);
    if (lead < 0x80) return {1, lead};
    // What may follow a lead directly is narrower than what may follow later: this is what shuts out overlong
    // forms, surrogates and values beyond the last.
    unsigned int low = 0x80;
    unsigned int high = 0xBF;
    std::size_t length = 0;
    unsigned int code = 0;
    if (lead >= 0xC2 && lead <= 0xDF) {
        length = 2;
        code = lead & 0x1F;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
        length = 3;
        code = lead & 0x0F;
        if (lead == 0xE0) low = 0xA0;
        if (lead == 0xED) high = 0x9F;
    } else if (lead >= 0xF0 && lead <= 0xF4) {
        length = 4;
        code = lead & 0x07;
        if (lead == 0xF0) low = 0x90;
        if (lead == 0xF4) high = 0x8F;
    }
    if (length == 0 || bytes.size() < length) return {0, 0};
    for (std::size_t i = 1; i < length; ++i) {
        const unsigned int next = byteAt(i);
        if (next < low || next > high) return {0, 0};
        code = code << 6 | (next & 0x3F);
        low = 0x80;
        high = 0xBF;
    }
    return {length, code};
}

/// Behind the ASCII units at the start of `text`.
const wchar* SkipAscii(const wchar* text) {
    while (*text && *text < 0x80) ++text;
    return text;
}

void AppendUtf16(wstring& text, unsigned int code) {
    if (code < 0x10000) {
        text += static_cast<wchar>(code);
        return;
    }
    text += static_cast<wchar>(kFirstHighSurrogate + ((code - 0x10000) >> 10));
    text += static_cast<wchar>(kFirstLowSurrogate + ((code - 0x10000) & 0x3FF));
}

} // namespace

wstring Decode(std::string_view bytes) {
    // Nearly all names are ASCII.
    const auto isPlain = [](char byte) { return static_cast<unsigned char>(byte) < 0x80 && byte != '\\'; };
    const auto plainEnd = std::find_if_not(bytes.begin(), bytes.end(), isPlain);
    wstring text;
    text.reserve(bytes.size());
    text.assign(bytes.begin(), plainEnd);
    bytes.remove_prefix(text.size());
    while (!bytes.empty()) {
        const TSequence sequence = TakeSequence(bytes);
        if (sequence.length == 0 || sequence.code == '\\') {
            text += static_cast<wchar>(kEscapeBase + static_cast<unsigned char>(bytes.front()));
            bytes.remove_prefix(1);
        } else {
            AppendUtf16(text, sequence.code);
            bytes.remove_prefix(sequence.length);
        }
    }
    return text;
}

bool Encode(const wchar* text, std::string& bytes) {
    bytes.clear();
    if (!text) return false;
    bytes.reserve(std::char_traits<wchar>::length(text));
    // In most paths, this is all of it.
    const wchar* const afterAscii = SkipAscii(text);
    bytes.assign(text, afterAscii);
    std::replace(bytes.begin(), bytes.end(), '\\', '/');
    for (text = afterAscii; *text; ++text) {
        const char32_t unit = *text;
        if (unit == '\\') {
            bytes += '/';
        } else if (!IsHighSurrogate(unit) && !IsLowSurrogate(unit)) {
            AppendUtf8(bytes, unit);
        } else if (IsEscape(unit)) {
            bytes += static_cast<char>(unit - kEscapeBase);
        } else if (IsHighSurrogate(unit) && IsLowSurrogate(text[1])) {
            AppendUtf8(bytes, JoinSurrogates(unit, *++text));
        } else {
            return false;
        }
    }
    return true;
}

} // namespace vorlund::pathcodec
