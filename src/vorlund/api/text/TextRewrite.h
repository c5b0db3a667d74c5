/// \file
/// Replacement of every occurrence of a text, with the result of a loop that starts again from the front
/// after each edit.
#pragma once

#include "vorlund/api/text/TextBuffer.h"

#include <cstddef>

namespace vorlund {

/// Units that an edit keeps behind the edited place.
constexpr std::size_t kMaxTail = 65535;

enum class TRewriteOutcome {
    /// There was no occurrence.
    Unchanged,
    /// `text` and `length` hold the result.
    Changed,
    /// The edits never end, or are more than a program can have meant.
    Endless,
};

struct TRewriteResult {
    TRewriteOutcome outcome = TRewriteOutcome::Unchanged;
    TTextBuffer text;
    std::size_t length = 0;
};

/// A text by place and length.
struct TTextView {
    const wchar* units;
    std::size_t length;
};

/// Replaces the first occurrence of `from` in `text` by `to`, keeps at most `kMaxTail` units behind it, and
/// starts again from the front, until there is no occurrence. `from` must not be empty. The arguments may
/// overlap and are only read. Raises `std::bad_alloc`.
TRewriteResult RewriteText(TTextView text, TTextView from, TTextView to);

} // namespace vorlund
