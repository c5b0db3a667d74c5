/// \file
/// The inside of `CDebug`: how a text reaches its destination, and the four default destinations, which
/// differ from system to system.
#pragma once

#include <vorlund/Debug.h>

namespace vorlund {

/// Sends a whole text of any length to the handler of `type` or to its default destination. An unknown type
/// prints nothing. Any thread; never raises.
void EmitDebugText(TDebugMessageType type, const wchar* text);

/// The default destinations. A port supplies them in a file DebugOutput_<system>.cpp. Each takes terminated
/// text without a final line end, and may be called from several threads at once and while the library is
/// being unloaded. `EmitDebugText` drops what they raise.
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
