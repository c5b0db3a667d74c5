/// \file
/// The failures of `CString`'s searches, which `Replace` and `Remove` raise too.
#pragma once

#include <vorlund/Exception.h>

namespace vorlund::stringfailures {

inline constexpr const wchar* kFile = VRL_L("src/vorlund/api/String");
inline constexpr const wchar* kFindFirst = VRL_L("vorlund::CString::FindFirst");
inline constexpr const wchar* kFindLast = VRL_L("vorlund::CString::FindLast");
inline constexpr const wchar* kNotFound = VRL_L("Didn't find content");

inline constexpr TFailure kFirstUnit{kFindFirst, kFile, 141, kNotFound};
inline constexpr TFailure kFirstWide{kFindFirst, kFile, 155, kNotFound};
inline constexpr TFailure kFirstNarrowTooLong{kFindFirst, kFile, 163, kNotFound};
inline constexpr TFailure kFirstNarrow{kFindFirst, kFile, 169, kNotFound};
inline constexpr TFailure kLastUnit{kFindLast, kFile, 178, kNotFound};
inline constexpr TFailure kLastWide{kFindLast, kFile, 192, kNotFound};
inline constexpr TFailure kLastNarrow{kFindLast, kFile, 206, kNotFound};

} // namespace vorlund::stringfailures
