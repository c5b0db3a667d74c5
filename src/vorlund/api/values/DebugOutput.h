/// \file
/// What lies behind `CDebug`: the way to a destination, and the four default destinations, which differ from
/// system to system.
#pragma once

#include <vorlund/Debug.h>

namespace vorlund {

/// Sends a whole text of any length to the handler of `type` or to its default destination. An unknown type
/// prints nothing. Any thread; never raises.
void EmitDebugText(TDebugMessageType type, const wchar* text);

/// The default destinations, one pair of files: DebugOutput_win32.cpp and DebugOutput_posix.cpp. Each takes
/// terminated text without a final line end, may be called from several threads at once and also while the
/// library is being unloaded. What raises in one is dropped by the caller.
namespace debugoutput {

/// The debugger output, or the system log.
void WriteToDebugger(const wchar* text);

/// A box or a framed notice with the caption "Vorlund message"; returns when it is closed. Returns at once
/// where nobody could see it.
void ShowBox(const wchar* text);

/// The standard output stream, flushed.
void WriteToStandardOutput(const wchar* text);

/// The standard error stream, flushed.
void WriteToStandardError(const wchar* text);

/// Stops in an attached debugger.
void BreakIntoDebugger();

} // namespace debugoutput
} // namespace vorlund
