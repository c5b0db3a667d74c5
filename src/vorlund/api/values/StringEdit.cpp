// `Replace` and `Remove` for texts are defined as loops that search from the front again after each edit and
// end only when that search does: it raises when the text holds no further match, and only the wide search
// returns, with 0xFFFFFFFF, when the needle has become longer than the text. Here the edits are made in one
// pass, and the ending is kept for existing callers: after the edits, the same exception or none.
#include <vorlund/String.h>

#include "vorlund/api/text/TextBuffer.h"
#include "vorlund/api/text/TextKernels.h"
#include "vorlund/api/text/TextRewrite.h"
#include "vorlund/api/values/StringFailures.h"

#include <algorithm>
#include <utility>

namespace vorlund {
namespace {

using namespace stringfailures;

constexpr const wchar* kReplace = VRL_L("vorlund::CString::Replace");
constexpr const wchar* kRemove = VRL_L("vorlund::CString::Remove");

// Calls whose loop would not end.
constexpr TFailure kReplaceEmpty{kReplace, kFile, 216, VRL_L("Empty search text")};
constexpr TFailure kReplaceEndless{kReplace, kFile, 220, VRL_L("Replacement has no end in sight")};
constexpr TFailure kRemoveTerminator{kRemove, kFile, 228, VRL_L("Cannot remove the terminator")};
constexpr TFailure kRemoveEmptyWide{kRemove, kFile, 236, VRL_L("Empty search text")};
constexpr TFailure kRemoveEmptyNarrow{kRemove, kFile, 244, VRL_L("Empty search text")};

TTextView View(const wchar* text) {
    return {text, text ? TextLength(text) : 0};
}

struct TRange {
    std::size_t first;
    std::size_t end;
};

/// The range of `SubStr` and `Remove`; in 64 bits no start or count can wrap.
TRange Normalize(std::size_t length, int start, int count) {
    const auto size = static_cast<std::int64_t>(length);
    if (start >= size) return {length, length};
    const std::int64_t first = start < 0 ? std::max<std::int64_t>(size + start, 0) : start;
    const std::int64_t end = count < 0 ? std::max(size + count, first) : std::min(first + count, size);
    return {static_cast<std::size_t>(first), static_cast<std::size_t>(end)};
}

bool IsTrimmed(wchar unit) {
    return unit == 10 || unit == 13 || unit == 32;
}

} // namespace

void CString::Replace(wchar from, wchar to) {
    ReplaceUnit(buffer_, TextLength(buffer_), from, to);
}

void CString::Replace(const wchar* from, const wchar* to) {
    const TTextView needle = View(from);
    if (!needle.length) Raise<CInvalidParameterException>(kReplaceEmpty);
    const TTextView text = View(buffer_);
    TRewriteResult result = RewriteText(text, needle, View(to));
    if (result.outcome == TRewriteOutcome::Endless) Raise<CInvalidParameterException>(kReplaceEndless);
    const bool changed = result.outcome == TRewriteOutcome::Changed;
    // Read before the buffer is freed, which may hold the needle.
    const bool tooLong = needle.length > (changed ? result.length : text.length);
    if (changed) AdoptBuffer(buffer_, std::move(result.text));
    if (!tooLong) Raise<CObjectNotFoundException>(kFirstWide);
}

void CString::Remove(wchar unit) {
    if (!unit) Raise<CInvalidParameterException>(kRemoveTerminator);
    {
        // In a block of its own, so that nothing is left to destroy when the exception leaves.
        TRewriteResult result = RewriteText(View(buffer_), {&unit, 1}, {nullptr, 0});
        if (result.outcome == TRewriteOutcome::Changed) AdoptBuffer(buffer_, std::move(result.text));
    }
    Raise<CObjectNotFoundException>(kFirstUnit);
}

void CString::Remove(const wchar* text) {
    if (!text || !*text) Raise<CInvalidParameterException>(kRemoveEmptyWide);
    Replace(text, nullptr);
}

void CString::Remove(const char* text) {
    const CWidenedText needle(text);
    if (!needle.Length()) Raise<CInvalidParameterException>(kRemoveEmptyNarrow);
    TRewriteResult result = RewriteText(View(buffer_), {needle.GetBuffer(), needle.Length()}, {nullptr, 0});
    if (result.outcome == TRewriteOutcome::Changed) AdoptBuffer(buffer_, std::move(result.text));
    Raise<CObjectNotFoundException>(needle.Length() > TextLength(buffer_) ? kFirstNarrowTooLong
                                                                          : kFirstNarrow);
}

void CString::Remove(int start, int count) {
    const std::size_t length = TextLength(buffer_);
    const TRange range = Normalize(length, start, count);
    if (range.first == range.end) return;
    const std::size_t tail = std::min(length - range.end, kMaxTail);
    TTextBuffer buffer = NewTextBuffer(range.first + tail);
    CopyText(buffer.get(), buffer_, range.first);
    CopyText(buffer.get() + range.first, buffer_ + range.end, tail);
    AdoptBuffer(buffer_, std::move(buffer));
}

CString& CString::operator-=(const char* text) {
    Remove(text);
    return *this;
}

CString& CString::operator-=(const wchar* text) {
    Remove(text);
    return *this;
}

CString CString::operator-(const char* text) const {
    CString result(*this);
    result.Remove(text);
    return result;
}

CString CString::operator-(const wchar* text) const {
    CString result(*this);
    result.Remove(text);
    return result;
}

void CString::Trim() {
    std::size_t end = TextLength(buffer_);
    while (end > 0 && IsTrimmed(buffer_[end - 1])) --end;
    std::size_t first = 0;
    while (first < end && IsTrimmed(buffer_[first])) ++first;
    // Kept for existing callers: the buffer stays, so a trimmed text keeps the room of the old one.
    std::memmove(buffer_, buffer_ + first, (end - first) * sizeof(wchar));
    buffer_[end - first] = 0;
}

CString CString::SubStr(int start, int count) const {
    const TRange range = Normalize(TextLength(buffer_), start, count);
    TTextBuffer buffer = NewTextBuffer(range.end - range.first);
    CopyText(buffer.get(), buffer_ + range.first, range.end - range.first);
    return CString(TBuffer{buffer.release()});
}

} // namespace vorlund
