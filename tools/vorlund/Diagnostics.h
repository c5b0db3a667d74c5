// What the program says: the report of a job, and one line for a failure. The library's own messages stay off
// the terminal.
#pragma once

#include <vorlund/Debug.h>

#include <string>

/// A failure that the program itself found; the text is what the user reads.
struct TProgramError {
    vorlund::wstring text;
};

/// Keeps the library's messages off the terminal while it lives, and prints.
class CDiagnostics {
public:
    CDiagnostics();
    CDiagnostics(const CDiagnostics&) = delete;
    CDiagnostics& operator=(const CDiagnostics&) = delete;
    ~CDiagnostics();

    /// From now on the report goes to the standard error stream.
    void KeepStandardOutputFree() { report_ = vorlund::DEBUG_MESSAGE_STDERR; }

    /// Prints a line of the report.
    void PrintField(const char* label, const vorlund::wstring& value) const;
    void PrintField(const char* label, const std::string& value) const;

    /// Prints an empty line of the report.
    void PrintBreak() const;

    /// Prints one line on the standard error stream.
    void PrintError(const vorlund::wchar* text) const;

private:
    vorlund::TDebugMessageType report_ = vorlund::DEBUG_MESSAGE_STDOUT;
};
