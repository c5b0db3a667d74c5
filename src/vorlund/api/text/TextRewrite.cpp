#include "vorlund/api/text/TextRewrite.h"

#include <algorithm>
#include <cstdint>
#include <deque>
#include <utility>
#include <vector>

// The literal loop rebuilds the text and searches from the front after each edit, in quadratic time. Two ways
// give its result.
//
// When no occurrence can form across the edge of a replacement, the loop does nothing but replace the
// occurrences from left to right, and so does `ReplaceAll`. The tail is cut once: behind the first
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
// quadratic in the length. Longer ones may never end, or end only after an exponential number of edits, and
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

/// How many units of `from` end a text, at most: a state of the matcher.
using TState = std::uint32_t;

class CMatcher {
public:
    explicit CMatcher(TTextView from) : from_(from), borders_(from.length) {
        for (std::size_t i = 1; i < from.length; ++i) borders_[i] = Advance(borders_[i - 1], from.units[i]);
    }

    /// The state behind `unit` when the state before it is `state`, which is no full match.
    TState Advance(TState state, wchar unit) const {
        while (state && from_.units[state] != unit) state = borders_[state - 1];
        return from_.units[state] == unit ? state + 1 : 0;
    }

    /// The state behind a text that holds no occurrence, from those of its units that can matter.
    TState StateBehind(TTextView text) const {
        TState state = 0;
        const std::size_t reach = std::min(text.length, from_.length - 1);
        for (const wchar* at = text.units + (text.length - reach); at != text.units + text.length; ++at)
            state = Advance(state, *at);
        return state;
    }

private:
    TTextView from_;
    /// For each beginning of `from`, the longest shorter one that it ends with.
    std::vector<TState> borders_;
};

/// Whether an occurrence of `from` could hold a part of a replacement, or span an empty one; `to`
/// does not hold `from`.
bool CanFormAnew(TTextView from, TTextView to) {
    if (from.length == 1) return false;
    if (!to.length) return true;
    const TTextView inner{from.units + 1, from.length - 1};
    // One that begins in a replacement begins with an end of it ...
    if (Holds(to, from.units[0]) && CMatcher(from).StateBehind(to)) return true;
    // ... and one that begins before a replacement continues with its beginning, or with all of it.
    if (!Holds(inner, to.units[0])) return false;
    return Holds(inner, to) || CMatcher(to).StateBehind(inner);
}

/// Most pieces of text between edits are short, and their lengths follow no pattern.
constexpr std::size_t kMaxShortPiece = 32;

/// Copies `length` of at least `readable` units to a place with room for at least `room`. A short piece is
/// copied as a block of one size where both sides have room for that; the next piece writes over the excess.
void CopyPiece(wchar* place, std::size_t room, const wchar* units, std::size_t length, std::size_t readable) {
    if (length <= kMaxShortPiece && readable >= kMaxShortPiece && room >= kMaxShortPiece)
        CopyText(place, units, kMaxShortPiece);
    else if (length)
        CopyText(place, units, length);
}

/// The text written so far, with room for more.
class COutput {
public:
    explicit COutput(std::uint64_t room)
        : units_(NewTextBuffer(room)), room_(static_cast<std::size_t>(room)) {}

    std::size_t Length() const { return length_; }
    TTextView View() const { return {units_.get(), length_}; }
    void CutTo(std::size_t length) { length_ = length; }

    void Append(wchar unit) {
        if (length_ == room_) Grow(1);
        units_[length_++] = unit;
    }

    void Append(const wchar* units, std::size_t length, std::size_t readable) {
        if (length > room_ - length_) Grow(length);
        CopyPiece(units_.get() + length_, room_ - length_, units, length, readable);
        length_ += length;
    }

    /// Gives the text away in a buffer of its size.
    TRewriteResult Finish() {
        if (length_ < room_) {
            TTextBuffer units = NewTextBuffer(length_);
            CopyText(units.get(), units_.get(), length_);
            units_ = std::move(units);
        }
        return {TRewriteOutcome::Changed, std::move(units_), length_};
    }

private:
    void Grow(std::size_t length) {
        const std::uint64_t room = std::uint64_t{room_} + room_ / 2 + length;
        TTextBuffer units = NewTextBuffer(room);
        CopyText(units.get(), units_.get(), length_);
        units_ = std::move(units);
        room_ = static_cast<std::size_t>(room);
    }

    TTextBuffer units_;
    std::size_t length_ = 0;
    std::size_t room_;
};

/// Replaces all occurrences from left to right, the first at `place`.
TRewriteResult ReplaceAll(TTextView text, std::size_t place, TTextView from, TTextView to) {
    constexpr std::size_t kStep = 512;
    const TTextView searched{text.units + place, text.length - place};
    std::vector<std::uint32_t> places;
    for (std::size_t behind = 0;;) {
        const std::size_t before = places.size();
        places.resize(before + kStep);
        places.resize(before + FindAllText(searched.units + behind, searched.length - behind, from.units,
                                           from.length, places.data() + before, kStep));
        for (std::size_t i = before; i < places.size(); ++i) places[i] += static_cast<std::uint32_t>(behind);
        if (places.size() < before + kStep) break;
        behind = places.back() + from.length;
    }
    const std::uint64_t kept = text.length - places.size() * from.length;
    const std::uint64_t length = kept + std::uint64_t{places.size()} * to.length;
    TTextBuffer buffer = NewTextBuffer(length);
    wchar* write = buffer.get();
    const wchar* const end = write + length;
    const auto append = [&](const wchar* units, std::size_t count, std::size_t readable) {
        CopyPiece(write, static_cast<std::size_t>(end - write), units, count, readable);
        write += count;
    };
    // A replacement with something behind it that can be read.
    wchar piece[kMaxShortPiece] = {};
    const bool isShort = to.length <= kMaxShortPiece;
    if (isShort && to.length) CopyText(piece, to.units, to.length);
    const wchar* const replacement = isShort ? piece : to.units;
    std::size_t read = 0;
    for (const std::size_t offset : places) {
        const std::size_t at = place + offset;
        append(text.units + read, at - read, text.length - read);
        append(replacement, to.length, isShort ? kMaxShortPiece : to.length);
        read = at + from.length;
    }
    append(text.units + read, text.length - read, text.length - read);
    return {TRewriteOutcome::Changed, std::move(buffer), static_cast<std::size_t>(length)};
}

/// The occurrences in the rest of the text, left to right. Several are searched for at once, the more the
/// longer the edits leave the text behind them alone.
class CUpcoming {
public:
    /// The first place at or behind `start`; `start` never decreases, and `end` never increases.
    std::size_t First(TTextView text, TTextView from, std::size_t start, std::size_t end) {
        if (next_ < count_ && base_ + places_[next_] < start) {
            // Units of this one were read by themselves, and one that overlaps it may be first now.
            next_ = count_ = 0;
            step_ = 1;
        }
        if (next_ == count_) {
            base_ = start;
            next_ = 0;
            count_ = FindAllText(text.units + start, end - start, from.units, from.length, places_, step_);
            step_ = std::min(2 * step_, kPlaces);
        }
        if (next_ == count_ || base_ + places_[next_] + from.length > end) return kTextNotFound;
        return base_ + places_[next_++];
    }

private:
    static constexpr std::size_t kPlaces = 128;

    std::uint32_t places_[kPlaces];
    std::size_t base_ = 0;
    std::size_t next_ = 0;
    std::size_t count_ = 0;
    std::size_t step_ = 1;
};

class CRewriter {
public:
    CRewriter(TTextView text, TTextView from, TTextView to);

    /// Makes all edits.
    TRewriteResult Run();

private:
    /// A part of `to` that is still to be read.
    struct TPiece {
        std::size_t next;
        std::size_t end;
    };

    void Skip(std::size_t place);
    bool Read(wchar unit);
    bool ReadPiece();
    void FindNext();
    void TakeMatch();
    void ForgetStates(TTextView outputEnd);
    void Edit();
    void CutTail();
    bool IsBeyondMeasure() const { return read_ > kMaxRead || copied_ > kMaxCopied; }

    const TTextView text_;
    const TTextView from_;
    const TTextView to_;
    const CMatcher matcher_;
    /// Units at the beginning of both `from` and `to`; an edit leaves them where they are.
    std::size_t shared_ = 0;

    COutput output_;
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
    CUpcoming upcoming_;

    std::uint64_t freeEdits_;
    std::uint64_t copied_ = 0;
    std::uint64_t read_ = 0;
};

// A text that grows a little should not need another buffer.
CRewriter::CRewriter(TTextView text, TTextView from, TTextView to)
    : text_(text), from_(from), to_(to), matcher_(from),
      output_(text.length + (to.length > from.length ? text.length / 8 : 0)), restEnd_(text.length),
      freeEdits_(text.length / from.length) {
    while (shared_ < to.length && shared_ < from.length && to.units[shared_] == from.units[shared_])
        ++shared_;
}

/// Moves units of the text up to `place` to the output, without states.
void CRewriter::Skip(std::size_t place) {
    output_.Append(text_.units + rest_, place - rest_, text_.length - rest_);
    rest_ = place;
}

/// Moves one unit to the output; true when an occurrence is complete.
bool CRewriter::Read(wchar unit) {
    ++read_;
    state_ = matcher_.Advance(state_, unit);
    output_.Append(unit);
    states_.push_back(state_);
    return state_ == from_.length;
}

/// The same with the units of the next piece, until there is an occurrence.
bool CRewriter::ReadPiece() {
    TPiece& piece = pieces_.back();
    bool isComplete = false;
    while (!isComplete && piece.next < piece.end) {
        --pieceUnits_;
        isComplete = Read(to_.units[piece.next++]);
    }
    if (piece.next == piece.end) pieces_.pop_back();
    return isComplete;
}

/// Goes to the next occurrence in the rest of the text and edits it.
void CRewriter::FindNext() {
    const std::size_t place = upcoming_.First(text_, from_, rest_, restEnd_);
    if (place == kTextNotFound) return Skip(restEnd_);
    const TTextView skipped{text_.units + rest_, place + shared_ - rest_};
    Skip(place + shared_);
    rest_ = place + from_.length;
    ForgetStates(skipped.length < from_.length ? output_.View() : skipped);
    Edit();
}

/// Takes the occurrence at the end of the output away and edits it.
void CRewriter::TakeMatch() {
    output_.CutTo(output_.Length() - (from_.length - shared_));
    if (output_.Length() < known_) {
        ForgetStates(output_.View());
        read_ += from_.length;
    } else {
        states_.resize(output_.Length() - known_);
    }
    Edit();
}

/// Starts again with the state behind the output, from an end of it that is as long as an occurrence, or all
/// of it.
void CRewriter::ForgetStates(TTextView outputEnd) {
    states_.clear();
    known_ = output_.Length();
    knownState_ = matcher_.StateBehind(outputEnd);
}

/// Puts the replacement in front of what is to be read. What it shares with the occurrence ends the output
/// already.
void CRewriter::Edit() {
    state_ = states_.empty() ? knownState_ : states_.back();
    CutTail();
    if (shared_ < to_.length) pieces_.push_back({shared_, to_.length});
    pieceUnits_ += to_.length - shared_;
    if (freeEdits_ > 0)
        --freeEdits_;
    else if (to_.length > from_.length)
        copied_ += output_.Length() + pieceUnits_ + (restEnd_ - rest_);
}

/// Kept for callers: an edit cuts the text `kMaxTail` units behind the edited place.
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

TRewriteResult CRewriter::Run() {
    while (!IsBeyondMeasure()) {
        if (!pieces_.empty()) {
            if (ReadPiece()) TakeMatch();
        } else if (rest_ == restEnd_) {
            return output_.Finish();
        } else if (state_ == 0) {
            FindNext();
        } else if (Read(text_.units[rest_++])) {
            TakeMatch();
        }
    }
    return {TRewriteOutcome::Endless, nullptr, 0};
}

} // namespace

TRewriteResult RewriteText(TTextView text, TTextView from, TTextView to) {
    const std::size_t place = FindFirstText(text.units, text.length, from.units, from.length);
    if (place == kTextNotFound) return {};
    if (Holds(to, from)) return {TRewriteOutcome::Endless, nullptr, 0};
    if (CanFormAnew(from, to)) return CRewriter(text, from, to).Run();
    text.length = std::min(text.length, place + from.length + kMaxTail);
    return ReplaceAll(text, place, from, to);
}

} // namespace vorlund
