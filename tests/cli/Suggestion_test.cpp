// What the program suggests for a word that it does not know.
#include "../../tools/vorlund/Suggestion.h"

#include <gtest/gtest.h>

namespace vorlund::test {
namespace {

TEST(Suggestion, DistanceCountsLetters) {
    const struct {
        const char* left;
        const char* right;
        std::size_t distance;
    } rows[] = {
        {"", "", 0},
        {"", "abc", 3},
        {"decode", "decode", 0},
        {"decod", "decode", 1},
        {"xcode", "code", 1},
        {"dexode", "decode", 1},
        {"deocde", "decode", 1},
        {"ca", "abc", 3},
        {"kitten", "sitting", 3},
        {"abc", "xyz", 3},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(GetEditDistance(row.left, row.right), row.distance) << row.left << ' ' << row.right;
        EXPECT_EQ(GetEditDistance(row.right, row.left), row.distance) << row.right << ' ' << row.left;
    }
}

TEST(Suggestion, OnlyWhatIsNearIsSuggested) {
    const std::vector<std::string> words{"classes", "codecs", "decode", "random"};
    EXPECT_EQ(FindSuggestion("codes", words), "codecs");
    EXPECT_EQ(FindSuggestion("randm", words), "random");
    EXPECT_EQ(FindSuggestion("decoed", words), "decode");
    EXPECT_EQ(FindSuggestion("frob", words), "");
    EXPECT_EQ(FindSuggestion("", words), "");
    EXPECT_EQ(FindSuggestion(std::string(100000, 'x'), words), "");
    EXPECT_EQ(FindSuggestion("x", {}), "");
}

} // namespace
} // namespace vorlund::test
