// The command "decode".
#pragma once

#include <string>

class CDiagnostics;

/// What the command line asked for; texts are UTF-8.
struct TDecodeOptions {
    std::string input;
    /// Empty: decode and report, write nothing. "-": raw bytes on the standard output.
    std::string output;
    bool raw = false;
};

/// Decodes the input to audio PCM, reports what it found and writes the PCM. Raises `TProgramError` and the
/// library's exceptions; no partial output is left behind.
void RunDecode(const TDecodeOptions& options, CDiagnostics& diagnostics);
