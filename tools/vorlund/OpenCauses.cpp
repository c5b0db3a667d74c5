#include "OpenCauses.h"

#include <vorlund/StreamErrors.h>

#include <string_view>

using namespace vorlund;

namespace {

/// What to do about it, behind why.
const wchar* AdviseOn(TOpenCause cause) {
    switch (cause) {
    case OPEN_CAUSE_MISSING:
    case OPEN_CAUSE_NAME:
        return VRL_L("; check the name");
    case OPEN_CAUSE_FOLDER:
        return VRL_L("; name a file in it");
    case OPEN_CAUSE_NOT_PERMITTED:
        return VRL_L("; change its permissions, or ask its owner");
    case OPEN_CAUSE_BUSY:
        return VRL_L("; close the program that uses it");
    case OPEN_CAUSE_NO_POSITIONS:
        return VRL_L("; save its data to a file first");
    case OPEN_CAUSE_TOO_MANY_FILES:
        return VRL_L("; close other programs");
    case OPEN_CAUSE_NONE:
    case OPEN_CAUSE_OTHER:
        break;
    }
    return VRL_L("");
}

} // namespace

wstring DescribeCause(const CFileAccessException& error) {
    const std::basic_string_view<wchar> method = error.GetMethod();
    if (!method.ends_with(VRL_L("putStream::Open")) && !method.ends_with(VRL_L("::CUpdateFile"))) return {};
    const TOpenCause cause = GetOpenFailure().cause;
    return wstring(VRL_L(": ")) + DescribeOpenCause(cause) + AdviseOn(cause);
}
