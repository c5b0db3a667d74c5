/// \file
/// The child program of the debug destinations' tests: each mode does one thing with the defaults.
#pragma once

#include <vorlund/Debug.h>
#include <vorlund/Exception.h>

#include <string>

namespace vorlund::test {

/// Two bytes, three bytes, two units, half a pair.
inline constexpr const wchar* kMixedText = VRL_L("h\u00E9 \u65E5 \U0001F600 ") VRL_L("\xD83D end");

/// What the modes raise or report.
inline constexpr TFailure kChildFailure{VRL_L("child::Method"), VRL_L("child/File"), 60, VRL_L("the reason")};

/// Answer to an unknown mode.
inline constexpr int kUnknownMode = 64;
/// Answer when the system lacks what a mode needs.
inline constexpr int kUnavailable = 77;

/// Modes that only this system has. Returns the program's answer.
int RunSystemMode(const std::string& mode);

} // namespace vorlund::test
