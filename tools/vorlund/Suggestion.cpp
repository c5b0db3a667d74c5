#include "Suggestion.h"

#include <algorithm>

namespace {

/// Longer words are no slips of the hand.
constexpr std::size_t kMaxLetters = 64;

} // namespace

// The restricted form of the distance of Damerau and Levenshtein.
std::size_t GetEditDistance(std::string_view left, std::string_view right) {
    std::vector<std::vector<std::size_t>> costs(left.size() + 1, std::vector<std::size_t>(right.size() + 1));
    for (std::size_t i = 0; i <= left.size(); ++i) {
        for (std::size_t j = 0; j <= right.size(); ++j) {
            if (i == 0 || j == 0) {
                costs[i][j] = i + j;
                continue;
            }
            const std::size_t exchange = left[i - 1] == right[j - 1] ? 0 : 1;
            std::size_t& cost = costs[i][j];
            cost = std::min({costs[i - 1][j] + 1, costs[i][j - 1] + 1, costs[i - 1][j - 1] + exchange});
            if (i > 1 && j > 1 && left[i - 1] == right[j - 2] && left[i - 2] == right[j - 1])
                cost = std::min(cost, costs[i - 2][j - 2] + 1);
        }
    }
    return costs[left.size()][right.size()];
}

std::string FindSuggestion(std::string_view word, const std::vector<std::string>& words) {
    if (word.empty() || word.size() > kMaxLetters) return {};
    std::string best;
    // A third of the letters may be wrong, and one in any case.
    std::size_t least = std::max<std::size_t>(word.size() / 3, 1) + 1;
    for (const std::string& candidate : words) {
        const std::size_t distance = GetEditDistance(word, candidate);
        if (distance < least) {
            least = distance;
            best = candidate;
        }
    }
    return best;
}
