// X Window System Protocol, appendix A "KEYSYM Encoding". Symbols of Unicode characters are the character
// plus 0x01000000, those of Latin 1 the character itself; the scripts that came before Unicode have pages of
// their own.
#include "vorlund/devices/Keysyms.h"

#include <vorlund/WindowEvents.h>

#include <cstddef>
#include <iterator>

namespace vorlund {
namespace {

constexpr std::uint32_t kUnicode = 0x01000000;

struct TNamedSymbol {
    std::uint32_t symbol;
    std::uint32_t key;
};
constexpr TNamedSymbol kNamed[] = {
    {0xFF08, WINDOW_KEY_BACKSPACE},
    {0xFF09, WINDOW_KEY_TAB},
    {0xFE20, WINDOW_KEY_TAB},
    {0xFF0D, WINDOW_KEY_ENTER},
    {0xFF1B, WINDOW_KEY_ESCAPE},
    {0xFFFF, WINDOW_KEY_DELETE},
    {0xFF50, WINDOW_KEY_HOME},
    {0xFF51, WINDOW_KEY_LEFT},
    {0xFF52, WINDOW_KEY_UP},
    {0xFF53, WINDOW_KEY_RIGHT},
    {0xFF54, WINDOW_KEY_DOWN},
    {0xFF55, WINDOW_KEY_PAGE_UP},
    {0xFF56, WINDOW_KEY_PAGE_DOWN},
    {0xFF57, WINDOW_KEY_END},
    {0xFF63, WINDOW_KEY_INSERT},
    // The block of digits, without Num Lock.
    {0xFF80, WINDOW_KEY_SPACE},
    {0xFF89, WINDOW_KEY_TAB},
    {0xFF8D, WINDOW_KEY_ENTER},
    {0xFF95, WINDOW_KEY_HOME},
    {0xFF96, WINDOW_KEY_LEFT},
    {0xFF97, WINDOW_KEY_UP},
    {0xFF98, WINDOW_KEY_RIGHT},
    {0xFF99, WINDOW_KEY_DOWN},
    {0xFF9A, WINDOW_KEY_PAGE_UP},
    {0xFF9B, WINDOW_KEY_PAGE_DOWN},
    {0xFF9C, WINDOW_KEY_END},
    {0xFF9E, WINDOW_KEY_INSERT},
    {0xFF9F, WINDOW_KEY_DELETE},
    {0xFFBD, '='},
};

/// Symbols in a row that stand for characters in a row.
struct TRange {
    std::uint32_t first;
    std::uint32_t last;
    std::uint32_t character;
};
constexpr TRange kRanges[] = {
    {0x0020, 0x007E, 0x0020},
    {0x00A0, 0x00FF, 0x00A0},
    // Arabic, as ISO 8859-6.
    {0x05C1, 0x05DA, 0x0621},
    {0x05E0, 0x05F2, 0x0640},
    // Cyrillic letters that Russian does not have.
    {0x06A1, 0x06A2, 0x0452},
    {0x06A3, 0x06A3, 0x0451},
    {0x06A4, 0x06AC, 0x0454},
    {0x06AD, 0x06AD, 0x0491},
    {0x06AE, 0x06AF, 0x045E},
    {0x06B0, 0x06B0, 0x2116},
    {0x06B1, 0x06B2, 0x0402},
    {0x06B3, 0x06B3, 0x0401},
    {0x06B4, 0x06BC, 0x0404},
    {0x06BD, 0x06BD, 0x0490},
    {0x06BE, 0x06BF, 0x040E},
    // Greek.
    {0x07C1, 0x07D1, 0x0391},
    {0x07D2, 0x07D2, 0x03A3},
    {0x07D4, 0x07D9, 0x03A4},
    {0x07E1, 0x07F1, 0x03B1},
    {0x07F2, 0x07F2, 0x03C3},
    {0x07F3, 0x07F3, 0x03C2},
    {0x07F4, 0x07F9, 0x03C4},
    // Hebrew, Thai, as ISO 8859-8 and -11.
    {0x0CE0, 0x0CFA, 0x05D0},
    {0x0DA1, 0x0DDA, 0x0E01},
    {0x0DDF, 0x0DF9, 0x0E3F},
    // Latin 9, the Euro.
    {0x13BC, 0x13BD, 0x0152},
    {0x13BE, 0x13BE, 0x0178},
    {0x20AC, 0x20AC, 0x20AC},
    // Signs and digits of the block of digits.
    {0xFFAA, 0xFFB9, 0x002A},
    {kUnicode + 0x20, kUnicode + 0xFFFF, 0x0020},
};

/// From 0x01A0 on, as ISO 8859-2.
constexpr std::uint32_t kLatin2First = 0x01A0;
constexpr std::uint16_t kLatin2[] = {
    0x00A0, 0x0104, 0x02D8, 0x0141, 0x00A4, 0x013D, 0x015A, 0x00A7, 0x00A8, 0x0160, 0x015E, 0x0164,
    0x0179, 0x00AD, 0x017D, 0x017B, 0x00B0, 0x0105, 0x02DB, 0x0142, 0x00B4, 0x013E, 0x015B, 0x02C7,
    0x00B8, 0x0161, 0x015F, 0x0165, 0x017A, 0x02DD, 0x017E, 0x017C, 0x0154, 0x00C1, 0x00C2, 0x0102,
    0x00C4, 0x0139, 0x0106, 0x00C7, 0x010C, 0x00C9, 0x0118, 0x00CB, 0x011A, 0x00CD, 0x00CE, 0x010E,
    0x0110, 0x0143, 0x0147, 0x00D3, 0x00D4, 0x0150, 0x00D6, 0x00D7, 0x0158, 0x016E, 0x00DA, 0x0170,
    0x00DC, 0x00DD, 0x0162, 0x00DF, 0x0155, 0x00E1, 0x00E2, 0x0103, 0x00E4, 0x013A, 0x0107, 0x00E7,
    0x010D, 0x00E9, 0x0119, 0x00EB, 0x011B, 0x00ED, 0x00EE, 0x010F, 0x0111, 0x0144, 0x0148, 0x00F3,
    0x00F4, 0x0151, 0x00F6, 0x00F7, 0x0159, 0x016F, 0x00FA, 0x0171, 0x00FC, 0x00FD, 0x0163, 0x02D9,
};

/// Small letters from 0x06C0 on, capitals 32 behind them, as KOI8-R.
constexpr std::uint32_t kCyrillicFirst = 0x06C0;
constexpr std::uint16_t kCyrillic[] = {
    0x044E, 0x0430, 0x0431, 0x0446, 0x0434, 0x0435, 0x0444, 0x0433, 0x0445, 0x0438, 0x0439,
    0x043A, 0x043B, 0x043C, 0x043D, 0x043E, 0x043F, 0x044F, 0x0440, 0x0441, 0x0442, 0x0443,
    0x0436, 0x0432, 0x044C, 0x044B, 0x0437, 0x0448, 0x044D, 0x0449, 0x0447, 0x044A,
};
constexpr std::uint32_t kCyrillicLetters = std::size(kCyrillic);

bool IsIn(std::uint32_t symbol, std::uint32_t first, std::uint32_t last) {
    return symbol >= first && symbol <= last;
}

} // namespace

std::uint32_t KeysymToKey(std::uint32_t symbol) {
    for (const TNamedSymbol& row : kNamed)
        if (row.symbol == symbol) return row.key;
    for (const TRange& row : kRanges)
        if (IsIn(symbol, row.first, row.last)) return symbol - row.first + row.character;
    if (IsIn(symbol, 0xFFBE, 0xFFC9)) return symbol - 0xFFBE + WINDOW_KEY_F1;
    if (IsIn(symbol, kLatin2First, kLatin2First + std::size(kLatin2) - 1))
        return kLatin2[symbol - kLatin2First];
    if (IsIn(symbol, kCyrillicFirst, kCyrillicFirst + 2 * kCyrillicLetters - 1)) {
        const std::uint32_t small = kCyrillic[(symbol - kCyrillicFirst) % kCyrillicLetters];
        return symbol < kCyrillicFirst + kCyrillicLetters ? small : small - 32;
    }
    return WINDOW_KEY_OTHER;
}

std::uint32_t ToUpperKeysym(std::uint32_t symbol) {
    if (IsIn(symbol, 'a', 'z') || (IsIn(symbol, 0xE0, 0xFE) && symbol != 0xF7) ||
        IsIn(symbol, 0x07E1, 0x07F9) || IsIn(symbol, 0x01E0, 0x01FE) ||
        IsIn(symbol, kUnicode + 0x0430, kUnicode + 0x044F))
        return symbol - 32;
    if (IsIn(symbol, 0x01B1, 0x01BF) || IsIn(symbol, 0x06A1, 0x06AF))
        return symbol < 0x0200 ? symbol - 16 : symbol + 16;
    if (IsIn(symbol, kCyrillicFirst, kCyrillicFirst + kCyrillicLetters - 1)) return symbol + kCyrillicLetters;
    return symbol;
}

bool IsKeypadKeysym(std::uint32_t symbol) {
    return IsIn(symbol, 0xFF80, 0xFFBD);
}

} // namespace vorlund
