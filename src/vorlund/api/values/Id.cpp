#include <vorlund/Id.h>

namespace vorlund {
namespace {

constexpr int kDigits = 32;
constexpr int kDigitsPerWord = 8;

/// The value of a hexadecimal digit, or -1.
template <class TUnit> constexpr int DigitValue(TUnit unit) {
    if (unit >= '0' && unit <= '9') return unit - '0';
    if (unit >= 'A' && unit <= 'F') return unit - 'A' + 10;
    if (unit >= 'a' && unit <= 'f') return unit - 'a' + 10;
    return -1;
}

/// The identifier in a narrow or wide text. Narrow text needs no widened copy: widening would extend the sign
/// of the bytes above 0x7F, which are no digits either way. So a text of any length is safe.
template <class TUnit> CId Parse(const TUnit* text) {
    unsigned int words[4] = {0, 0, 0, 0};
    if (!text) return {};
    for (int slot = 0; *text && slot < kDigits; ++text) {
        const int value = DigitValue(*text);
        if (value < 0) continue;
        // Digits fill the places from the left, so a short text is padded with zeros at its end.
        const int shift = 4 * (kDigitsPerWord - 1 - slot % kDigitsPerWord);
        words[slot / kDigitsPerWord] |= static_cast<unsigned int>(value) << shift;
        ++slot;
    }
    return {words[0], words[1], words[2], words[3]};
}

} // namespace

CId::CId(const wchar* text) : CId(Parse(text)) {}
CId::CId(const char* text) : CId(Parse(text)) {}

wstring CId::ToString() const {
    static constexpr char kHex[] = "0123456789ABCDEF";
    wstring text;
    text.reserve(37);
    for (int word = 0; word < 4; ++word) {
        text += word == 0 ? VRL_L('{') : VRL_L(',');
        for (int shift = 28; shift >= 0; shift -= 4)
            text += static_cast<wchar>(kHex[words_[word] >> shift & 15]);
    }
    text += VRL_L('}');
    return text;
}

} // namespace vorlund
