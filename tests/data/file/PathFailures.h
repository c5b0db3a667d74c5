/// \file
/// Failures whose reason names a path.
#pragma once

#include "data/file/TemporaryFolder.h"
#include "support/Failures.h"
#include "support/KnownFailures.h"

#include <source_location>

namespace vorlund::test {

/// What a path message says: `format` with `path` for its "%s", cut at 255 units.
inline wstring PathMessage(wstring format, const wstring& path) {
    return format.replace(format.find(VRL_L("%s")), 2, path).substr(0, 255);
}

/// As `ExpectRaises`, for a `row` with "%s" in its reason, where the failure has `path`.
template <class TException, class TAct>
void ExpectRaisesFor(const wstring& path, const TFailure& row, TAct&& act,
                     const std::source_location& where = std::source_location::current()) {
    const wstring reason = PathMessage(row.reason, path);
    ExpectRaises<TException>({row.method, row.file, row.line, reason.c_str()}, act, where);
}

} // namespace vorlund::test
