#include "vorlund/api/TextRewrite.h"

#include <algorithm>
#include <cstdint>
#include <deque>
#include <vector>

// The literal loop rebuilds the text and searches from the front after each edit, in quadratic time. Two ways
// give its result.
//
// When no occurrence can come to stand across the edge of a replacement, the loop does nothing but replace
// the occurrences from left to right, and so does `ReplaceAll`. The tail is cut once: behind the first
// occurrence.
//
// Otherwise an edit can complete an occurrence that reaches back into what was searched already, so
// `CRewriter` keeps two stacks: the units known to hold no occurrence, each with the state of the matcher
// behind it (Knuth, Morris and Pratt 1977: the state is the length of the longest beginning of `from` that
// ends there), and what is still to be read: pieces of replacements, and behind them the rest of the text. A
// match takes its units off the first stack and puts the replacement on the second. The first match to be
// complete is the one that begins first, because all have one length, so this is the loop's order of edits.
// Far from edits the state is 0 and the search kernel runs.
//
// Replacements as long as `from` end, because each edit changes the text in the same direction of the
// dictionary order, and shorter ones end because the text shrinks; both can take a number of edits that is
// quadratic in the length. Longer ones need not end, or only after a number of edits that is exponential, and
// no criterion is known that decides it. They are given up when the loop itself would have copied more units
// than it could in seconds; edits that the units of the text alone explain do not count.

namespace vorlund {
namespace {

/// What the loop may copy in growing texts.
constexpr std::uint64_t kMaxCopied = std::uint64_t{1} << 34;

/// What the rewriter may read; only contrived texts of many thousand units come near it.
constexpr std::uint64_t kMaxRead = std::uint64_t{1} << 32;

bool Holds(TTextView text, TTextView needle) {
    return FindFirstText(text.units, text.length, needle.units, needle.length) != kTextNotFound;
}

bool Holds(TTextView text, wchar unit) {
    return FindFirstUnit(text.units, text.length, unit) != kTextNotFound;
}

/// Whether an occurrence of `from` could hold a part of a replacement, or stand across an empty one; `to`
/// does not hold `from`. May say yes too often: it asks only for the unit at each edge.
bool CanFormAnew(TTextView from, TTextView to) {
    if (from.length == 1) return false;
    if (!to.length) return true;
    return Holds(to, from.units[0]) || Holds({from.units + 1, from.length - 1}, to.units[0]);
}

/// Replaces all occurrences from left to right, the first at `place`.
TRewriteResult ReplaceAll(TTextView text, std::size_t place, TTextView from, TTextView to) {
    std::vector<std::size_t> places;
    for (std::size_t next = place;;) {
        places.push_back(next);
        const std::size_t behind = next + from.length;
        const std::size_t found =
            FindFirstText(text.units + behind, text.length - behind, from.units, from.length);
        if (found == kTextNotFound) break;
        next = behind + found;
    }
    const std::uint64_t kept = text.length - places.size() * from.length;
    const std::uint64_t length = kept + std::uint64_t{places.size()} * to.length;
    TTextBuffer buffer = NewTextBuffer(length);
    wchar* write = buffer.get();
    std::size_t read = 0;
    for (const std::size_t at : places) {
        CopyText(write, text.units + read, at - read);
        write += at - read;
        if (to.length) CopyText(write, to.units, to.length);
        write += to.length;
        read = at + from.length;
    }
    CopyText(write, text.units + read, text.length - read);
    return {TRewriteOutcome::Changed, std::move(buffer), static_cast<std::size_t>(length)};
}

class CRewriter {
public:
    CRewriter(TTextView text, TTextView from, TTextView to);

    /// Makes all edits, the first at `place`.
    TRewriteResult Run(std::size_t place);

private:
    /// How many units of `from` end a text.
    using TState = std::uint32_t;

    /// A part of `to` that is still to be read.
    struct TPiece {
        std::size_t next;
        std::size_t end;
    };

    TState Advance(TState state, wchar unit) const;
    TState StateBehindOutput() const;
    bool Read(wchar unit);
    void Skip(std::size_t place);
    void Edit();
    void CutTail();
    bool IsBeyondMeasure() const { return read_ > kMaxRead || copied_ > kMaxCopied; }

    const TTextView text_;
    const TTextView from_;
    const TTextView to_;
    /// Units at the beginning of both `from` and `to`; an edit leaves them where they are.
    std::size_t shared_ = 0;
    /// For each beginning of `from`, the longest shorter one that it ends with.
    std::vector<TState> borders_;

    std::vector<wchar> output_;
    /// States behind the units of the output from `known_` on, and the state behind the unit before them.
    std::vector<TState> states_;
    std::size_t known_ = 0;
    TState knownState_ = 0;
    TState state_ = 0;

    /// The last one is read first.
    std::deque<TPiece> pieces_;
    std::size_t pieceUnits_ = 0;
    /// The rest of the text.
    std::size_t rest_ = 0;
    std::size_t restEnd_;

    std::uint64_t freeEdits_;
    std::uint64_t copied_ = 0;
    std::uint64_t read_ = 0;
};

CRewriter::CRewriter(TTextView text, TTextView from, TTextView to)
    : text_(text), from_(from), to_(to), borders_(from.length), restEnd_(text.length),
      freeEdits_(text.length / from.length) {
    while (shared_ < to.length && shared_ < from.length && to.units[shared_] == from.units[shared_])
        ++shared_;
    for (std::size_t i = 1; i < from.length; ++i) borders_[i] = Advance(borders_[i - 1], from.units[i]);
    output_.reserve(text.length);
}

/// The state behind `unit` when the state before it is `state`, which is no full match.
CRewriter::TState CRewriter::Advance(TState state, wchar unit) const {
    while (state && from_.units[state] != unit) state = borders_[state - 1];
    return from_.units[state] == unit ? state + 1 : 0;
}

/// The state behind the whole output, from the units that can matter to it.
CRewriter::TState CRewriter::StateBehindOutput() const {
    TState state = 0;
    for (std::size_t i = output_.size() - std::min(output_.size(), from_.length - 1); i < output_.size(); ++i)
        state = Advance(state, output_[i]);
    return state;
}

/// Moves one unit to the output; true when an occurrence is complete.
bool CRewriter::Read(wchar unit) {
    ++read_;
    state_ = Advance(state_, unit);
    output_.push_back(unit);
    states_.push_back(state_);
    return state_ == from_.length;
}

/// Moves the rest of the text up to `place` to the output, without states.
void CRewriter::Skip(std::size_t place) {
    output_.insert(output_.end(), text_.units + rest_, text_.units + place);
    rest_ = place;
    states_.clear();
    known_ = output_.size();
    knownState_ = state_ = 0;
}

/// Takes the occurrence at the end of the output away and puts the replacement in front of what is to be
/// read.
void CRewriter::Edit() {
    output_.resize(output_.size() - (from_.length - shared_));
    if (output_.size() < known_) {
        states_.clear();
        known_ = output_.size();
        knownState_ = StateBehindOutput();
        read_ += from_.length;
    } else {
        states_.resize(output_.size() - known_);
    }
    state_ = states_.empty() ? knownState_ : states_.back();
    CutTail();
    if (shared_ < to_.length) pieces_.push_back({shared_, to_.length});
    pieceUnits_ += to_.length - shared_;
    if (freeEdits_ > 0)
        --freeEdits_;
    else if (to_.length > from_.length)
        copied_ += output_.size() + pieceUnits_ + (restEnd_ - rest_);
}

/// Kept on purpose: an edit keeps `kMaxTail` units behind the edited place.
void CRewriter::CutTail() {
    if (pieceUnits_ <= kMaxTail) {
        restEnd_ = std::min(restEnd_, rest_ + (kMaxTail - pieceUnits_));
        return;
    }
    restEnd_ = rest_;
    while (pieceUnits_ > kMaxTail) {
        TPiece& last = pieces_.front();
        const std::size_t cut = std::min(pieceUnits_ - kMaxTail, last.end - last.next);
        last.end -= cut;
        pieceUnits_ -= cut;
        if (last.next == last.end) pieces_.pop_front();
    }
}

TRewriteResult CRewriter::Run(std::size_t place) {
    Skip(place + from_.length);
    Edit();
    while (!IsBeyondMeasure()) {
        if (!pieces_.empty()) {
            TPiece& piece = pieces_.back();
            bool complete = false;
            while (!complete && piece.next < piece.end) {
                --pieceUnits_;
                complete = Read(to_.units[piece.next++]);
            }
            if (piece.next == piece.end) pieces_.pop_back();
            if (complete) Edit();
        } else if (rest_ == restEnd_) {
            TRewriteResult result{TRewriteOutcome::Changed, NewTextBuffer(output_.size()), output_.size()};
            if (!output_.empty()) CopyText(result.text.get(), output_.data(), output_.size());
            return result;
        } else if (state_ == 0) {
            const std::size_t found =
                FindFirstText(text_.units + rest_, restEnd_ - rest_, from_.units, from_.length);
            Skip(found == kTextNotFound ? restEnd_ : rest_ + found + from_.length);
            if (found != kTextNotFound) Edit();
        } else if (Read(text_.units[rest_++])) {
            Edit();
        }
    }
    return {TRewriteOutcome::Endless, nullptr, 0};
}

} // namespace

TRewriteResult RewriteText(TTextView text, TTextView from, TTextView to) {
    const std::size_t place = FindFirstText(text.units, text.length, from.units, from.length);
    if (place == kTextNotFound) return {};
    if (Holds(to, from)) return {TRewriteOutcome::Endless, nullptr, 0};
    if (CanFormAnew(from, to)) return CRewriter(text, from, to).Run(place);
    text.length = std::min(text.length, place + from.length + kMaxTail);
    return ReplaceAll(text, place, from, to);
}

} // namespace vorlund
