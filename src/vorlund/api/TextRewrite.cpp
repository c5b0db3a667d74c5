#include "vorlund/api/TextRewrite.h"

#include <algorithm>

namespace vorlund {
namespace {

bool Holds(TTextView text, TTextView needle) {
    return FindFirstText(text.units, text.length, needle.units, needle.length) != kTextNotFound;
}

} // namespace

TRewriteResult RewriteText(TTextView text, TTextView from, TTextView to) {
    std::size_t place = FindFirstText(text.units, text.length, from.units, from.length);
    if (place == kTextNotFound) return {};
    if (Holds(to, from)) return {TRewriteOutcome::Endless, nullptr, 0};
    wstring current(text.units, text.length);
    std::uint64_t moved = 0;
    while (place != kTextNotFound) {
        moved += current.size();
        if (to.length > from.length && moved > std::uint64_t{1} << 34)
            return {TRewriteOutcome::Endless, nullptr, 0};
        current.resize(std::min(current.size(), place + from.length + kMaxTail));
        if (to.length)
            current.replace(place, from.length, to.units, to.length);
        else
            current.erase(place, from.length);
        place = FindFirstText(current.data(), current.size(), from.units, from.length);
    }
    TRewriteResult result{TRewriteOutcome::Changed, NewTextBuffer(current.size()), current.size()};
    CopyText(result.text.get(), current.data(), current.size());
    return result;
}

} // namespace vorlund
