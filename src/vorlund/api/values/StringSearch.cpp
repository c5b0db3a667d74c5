#include <vorlund/String.h>

#include "vorlund/api/text/TextBuffer.h"
#include "vorlund/api/text/TextKernels.h"
#include "vorlund/api/values/StringFailures.h"

namespace vorlund {
namespace {

using namespace stringfailures;

/// The answer for a needle longer than the text.
constexpr unsigned int kNeedleTooLong = 0xFFFFFFFF;

unsigned int FoundOrRaise(std::size_t place, const TFailure& failure) {
    if (place == kTextNotFound) Raise<CObjectNotFoundException>(failure);
    return static_cast<unsigned int>(place);
}

} // namespace

unsigned int CString::FindFirst(wchar unit) const {
    return FoundOrRaise(FindFirstUnit(buffer_, unit), kFirstUnit);
}

unsigned int CString::FindFirst(const wchar* needle) const {
    const std::size_t length = TextLength(buffer_);
    const std::size_t needleLength = needle ? TextLength(needle) : 0;
    if (needleLength > length) return kNeedleTooLong;
    return FoundOrRaise(FindFirstText(buffer_, length, needle, needleLength), kFirstWide);
}

unsigned int CString::FindFirst(const char* needle) const {
    const std::size_t length = TextLength(buffer_);
    const CWidenedText wide(needle);
    // Kept for existing callers: of the four searches for a text, only this one raises for a needle longer
    // than the text.
    if (wide.Length() > length) Raise<CObjectNotFoundException>(kFirstNarrowTooLong);
    return FoundOrRaise(FindFirstText(buffer_, length, wide.GetBuffer(), wide.Length()), kFirstNarrow);
}

unsigned int CString::FindLast(wchar unit) const {
    return FoundOrRaise(FindLastUnit(buffer_, unit), kLastUnit);
}

unsigned int CString::FindLast(const wchar* needle) const {
    const std::size_t length = TextLength(buffer_);
    const std::size_t needleLength = needle ? TextLength(needle) : 0;
    if (needleLength > length) return kNeedleTooLong;
    return FoundOrRaise(FindLastText(buffer_, length, needle, needleLength), kLastWide);
}

unsigned int CString::FindLast(const char* needle) const {
    const std::size_t length = TextLength(buffer_);
    const CWidenedText wide(needle);
    if (wide.Length() > length) return kNeedleTooLong;
    return FoundOrRaise(FindLastText(buffer_, length, wide.GetBuffer(), wide.Length()), kLastNarrow);
}

} // namespace vorlund
