// What somebody may have meant who wrote a word that is none.
#pragma once

#include <string>
#include <string_view>
#include <vector>

/// The number of letters to insert, to remove, to exchange, or to swap with the next one, that make one word
/// the other.
std::size_t GetEditDistance(std::string_view left, std::string_view right);

/// The one of `words` that is nearest to `word`; empty when none is near.
std::string FindSuggestion(std::string_view word, const std::vector<std::string>& words);
