#include "vorlund/api/values/FramedNotice.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace vorlund::test {
namespace {

using TRows = std::vector<std::string>;

/// The rows of a notice without its first line end; every row ends the line in both ways.
TRows Notice(const wchar* text, int columns, bool hasButton = false) {
    std::pmr::string out;
    AppendFramedNotice(out, VRL_L("Caption"), text, columns, hasButton);
    TRows rows;
    EXPECT_EQ(out.substr(0, 2), "\r\n");
    for (std::size_t at = 2; at < out.size();) {
        const std::size_t end = out.find("\r\n", at);
        if (end == std::string::npos) {
            ADD_FAILURE() << "no line end";
            break;
        }
        rows.emplace_back(out.substr(at, end - at));
        at = end + 2;
    }
    return rows;
}

constexpr const char* kTop = "+- Caption ------------+";
constexpr const char* kBottom = "+----------------------+";

TEST(FramedNotice, StandsInAFrame) {
    EXPECT_EQ(Notice(VRL_L("text"), 24), (TRows{kTop, "| text                 |", kBottom}));
    EXPECT_EQ(Notice(VRL_L(""), 24), (TRows{kTop, "|                      |", kBottom}));
}

TEST(FramedNotice, ButtonHasItsOwnRow) {
    EXPECT_EQ(Notice(VRL_L("text"), 24, true),
              (TRows{kTop, "| text                 |", "|                      |", "| [ OK ]  press Enter  |",
                     kBottom}));
}

TEST(FramedNotice, WrapsAtBlanks) {
    EXPECT_EQ(Notice(VRL_L("one two three four five six"), 24),
              (TRows{kTop, "| one two three four   |", "| five six             |", kBottom}));
    // A word that ends with the row.
    EXPECT_EQ(Notice(VRL_L("12345678901234567890 next"), 24),
              (TRows{kTop, "| 12345678901234567890 |", "| next                 |", kBottom}));
}

TEST(FramedNotice, CharactersThatTurnTheDirectionAreMasked) {
    EXPECT_EQ(Notice(VRL_L("\u2029\u202A\u202E\u202F\u2065\u2066\u2069\u206A"), 24),
              (TRows{kTop, "| \u2029??\u202F\u2065??\u206A             |", kBottom}));
}

TEST(FramedNotice, CutsLongWords) {
    EXPECT_EQ(Notice(VRL_L("1234567890123456789012345"), 24),
              (TRows{kTop, "| 12345678901234567890 |", "| 12345                |", kBottom}));
    EXPECT_EQ(Notice(VRL_L("a 123456789012345678901"), 24),
              (TRows{kTop, "| a                    |", "| 12345678901234567890 |", "| 1                    |",
                     kBottom}));
}

TEST(FramedNotice, LineFeedsBeginRows) {
    EXPECT_EQ(Notice(VRL_L("a\n\nb"), 24),
              (TRows{kTop, "| a                    |", "|                      |", "| b                    |",
                     kBottom}));
}

TEST(FramedNotice, CountsCharactersNotUnits) {
    EXPECT_EQ(Notice(VRL_L("caf\u00E9 \U0001F600"), 24),
              (TRows{kTop, "| caf\u00E9 \U0001F600               |", kBottom}));
}

TEST(FramedNotice, ControlCharactersAreReplaced) {
    EXPECT_EQ(Notice(VRL_L("\x1B[2J\t\r\x7F\u0085\u202E"), 24),
              (TRows{kTop, "| ?[2J?????            |", kBottom}));
}

TEST(FramedNotice, WidthHasItsLimits) {
    for (const int columns : {-5, 0, 1, 23, 24}) EXPECT_EQ(Notice(VRL_L("x"), columns)[0].size(), 24u);
    EXPECT_EQ(Notice(VRL_L("x"), 50)[0].size(), 50u);
    for (const int columns : {78, 79, 65535}) EXPECT_EQ(Notice(VRL_L("x"), columns)[0].size(), 78u);
}

} // namespace
} // namespace vorlund::test
