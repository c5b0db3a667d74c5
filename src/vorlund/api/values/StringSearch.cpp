#include <vorlund/Exception.h>
#include <vorlund/String.h>

#include "vorlund/api/text/TextBuffer.h"
#include "vorlund/api/text/TextKernels.h"

namespace vorlund {
namespace {

constexpr const wchar* kFile = VRL_L("src/vorlund/api/String");
constexpr const wchar* kFirst = VRL_L("vorlund::CString::FindFirst");
constexpr const wchar* kLast = VRL_L("vorlund::CString::FindLast");
constexpr const wchar* kNotFound = VRL_L("Didn't find content");

constexpr TFailure kFirstUnit{kFirst, kFile, 141, kNotFound};
constexpr TFailure kFirstWide{kFirst, kFile, 155, kNotFound};
constexpr TFailure kFirstNarrowTooLong{kFirst, kFile, 163, kNotFound};
constexpr TFailure kFirstNarrow{kFirst, kFile, 169, kNotFound};
constexpr TFailure kLastUnit{kLast, kFile, 178, kNotFound};
constexpr TFailure kLastWide{kLast, kFile, 192, kNotFound};
constexpr TFailure kLastNarrow{kLast, kFile, 206, kNotFound};

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
    // Kept on purpose: of the four searches for a text, only this one raises for a needle longer than the
    // text.
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
