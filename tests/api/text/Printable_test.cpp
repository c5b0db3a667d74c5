// Text of others on its way to people.
#include "vorlund/api/text/Printable.h"

#include "support/Text.h"

#include <gtest/gtest.h>

namespace vorlund::test {
namespace {

TEST(Printable, WhatControlsATerminalIsReplaced) {
    const struct {
        wchar first;
        wchar last;
    } controls[] = {{0, 0x1F}, {0x7F, 0x9F}, {0x2028, 0x202E}, {0x2066, 0x2069}};
    for (const auto& row : controls) {
        for (unsigned int unit = row.first; unit <= row.last; ++unit)
            EXPECT_EQ(MakePrintable(wstring(1, static_cast<wchar>(unit))), VRL_L("?")) << unit;
        for (const unsigned int unit : {row.first - 1u, row.last + 1u}) {
            if (unit > 0xFFFF) continue;
            const wstring text(1, static_cast<wchar>(unit));
            EXPECT_EQ(MakePrintable(text), text) << unit;
        }
    }
}

TEST(Printable, HalvesOfPairsAreReplaced) {
    const wstring pair{0xD83D, 0xDE00};
    EXPECT_EQ(MakePrintable(pair), pair);
    for (const wstring& text : {wstring{0xD83D}, wstring{0xDE00}}) EXPECT_EQ(MakePrintable(text), VRL_L("?"));
    EXPECT_EQ(MakePrintable(wstring{0xD83D, u'x'}), VRL_L("?x"));
    EXPECT_EQ(MakePrintable(wstring{0xDE00, 0xD83D}), VRL_L("??"));
    EXPECT_EQ(MakePrintable(wstring{0xD83D, 0xD83D, 0xDE00}), VRL_L("?") + pair);
}

} // namespace
} // namespace vorlund::test
