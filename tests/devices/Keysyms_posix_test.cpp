// Symbols of keys, as the servers of window systems give them.
#include "vorlund/devices/Keysyms.h"

#include <vorlund/WindowEvents.h>

#include <gtest/gtest.h>

namespace vorlund::test {
namespace {

TEST(Keysyms, CapitalsOfEachAlphabet) {
    const struct {
        std::uint32_t symbol;
        std::uint32_t capital;
    } rows[] = {
        {'a', 'A'},
        {'z', 'Z'},
        {'A', 'A'},
        {'{', '{'},
        // Latin 1; the sign of division has none.
        {0xE4, 0xC4},
        {0xF7, 0xF7},
        {0xFF, 0xFF},
        // Latin 2, in both of its ranges.
        {0x01B1, 0x01A1},
        {0x01EA, 0x01CA},
        // Cyrillic, and the letters of its other languages.
        {0x06C1, 0x06E1},
        {0x06E1, 0x06E1},
        {0x06A3, 0x06B3},
        // Greek.
        {0x07E1, 0x07C1},
        {0x07C1, 0x07C1},
        // By the number of the character.
        {0x01000430, 0x01000410},
        {0x01000410, 0x01000410},
    };
    for (const auto& row : rows) EXPECT_EQ(ToUpperKeysym(row.symbol), row.capital) << std::hex << row.symbol;
}

TEST(Keysyms, LettersAreTheirCharacters) {
    EXPECT_EQ(KeysymToKey('q'), std::uint32_t{'q'});
    EXPECT_EQ(KeysymToKey(0x01EA), 0x0119u);
    EXPECT_EQ(KeysymToKey(0x06C1), 0x0430u);
    EXPECT_EQ(KeysymToKey(0x06E1), 0x0410u);
    EXPECT_EQ(KeysymToKey(0xFFC0), WINDOW_KEY_F1 + 2u);
    EXPECT_EQ(KeysymToKey(0xFE99), WINDOW_KEY_OTHER);
    EXPECT_TRUE(IsKeypadKeysym(0xFF95));
    EXPECT_FALSE(IsKeypadKeysym('7'));
    EXPECT_FALSE(IsKeypadKeysym(0xFF7F));
}

} // namespace
} // namespace vorlund::test
