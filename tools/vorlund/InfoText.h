// What is known about a file, for people and for scripts.
#pragma once

struct TMediaInfo;
class CDiagnostics;
class CJsonWriter;

/// Prints a block of lines.
/// \param isFurther  with an empty line before it
void PrintInfo(const TMediaInfo& info, const CDiagnostics& diagnostics, bool isFurther);

/// An object in the array of files; docs/info.md describes its keys.
void WriteInfo(const TMediaInfo& info, CJsonWriter& json);
