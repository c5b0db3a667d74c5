// What the program says: the report of a job, and one line for a failure. The library's own messages stay off
// the terminal.
#pragma once

#include <vorlund/Debug.h>

#include <string>
#include <string_view>

/// A failure that the program itself found; the text is what the user reads.
struct TProgramError {
    vorlund::wstring text;
};

/// Listens to the library's messages while it lives, and prints.
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

    /// Prints one line on the standard error stream.
    void PrintError(const vorlund::wchar* text) const;

    /// The reason of the exception before the last one.
    const vorlund::wstring& GetFormerReason() const { return formerReason_; }

private:
    static void OnMessage(vorlund::TDebugMessageType type, const vorlund::wchar* text, void* user);
    void Note(std::basic_string_view<vorlund::wchar> line);

    vorlund::TDebugMessageType report_ = vorlund::DEBUG_MESSAGE_STDOUT;
    vorlund::wstring reason_;
    vorlund::wstring formerReason_;
};
