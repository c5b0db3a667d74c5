/// \file
/// Runs the child programs that lie beside the test program: what ends a process, and what the library does
/// with a process's own streams, terminal and debugger.
#pragma once

#include <vorlund/Platform.h>

#include <chrono>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace vorlund::test {

/// What a child finds as its standard output.
enum class TChildOutput {
    Captured, ///< what takes every byte, for `TChildEnd`
    Refusing, ///< what takes none: a full device, or on Windows a pipe that nobody reads
    Closed,   ///< nothing
};

struct TChildOptions {
    /// ASCII texts without blanks.
    std::vector<std::string> arguments = {};
    TChildOutput output = TChildOutput::Captured;
    /// The file on its standard input; empty for nothing.
    std::filesystem::path input = {};
    /// The child's controlling terminal is a pseudo-terminal, with the child in the foreground; without this
    /// it has none. Only on POSIX.
    bool hasTerminal = false;
    /// The standard error stream is that terminal; no other standard stream ever is. Only on POSIX.
    bool isErrorTerminal = false;
    /// The child is killed when it has run for so long.
    std::chrono::seconds limit = std::chrono::minutes(2);
    /// This process debugs the child and hears its debugger output. Only on Windows.
    bool isDebugged = false;
};

/// How a child ended.
struct TChildEnd {
    /// It did not end in time and was killed.
    bool hasTimedOut = false;
    /// What it returned; on Windows also the code of the failure that ended it.
    unsigned int exitCode = 0;
    /// The signal that ended it, or 0. Only on POSIX.
    int signal = 0;
    /// What it wrote to its standard streams, bytes as they came.
    std::string output = {};
    std::string errors = {};
    /// Each text of its debugger output, in order. Only when debugged.
    std::vector<wstring> debuggerOutput = {};
    /// It stopped at a breakpoint of its own. Only when debugged.
    bool hasHitBreakpoint = false;

    /// It returned 0, in time.
    bool IsSuccess() const { return !hasTimedOut && signal == 0 && exitCode == 0; }
    /// It did not return, but was ended by a failure such as an exception that nobody caught.
    bool IsAbnormal() const;
};

/// A running child program. All waits end when its limit is reached.
class CChildProcess {
public:
    /// Starts `program`, the name of a program beside this one, without an ending. Raises
    /// `std::runtime_error` when it cannot be started.
    explicit CChildProcess(const std::string& program, const TChildOptions& options = {});
    CChildProcess(const CChildProcess&) = delete;
    CChildProcess& operator=(const CChildProcess&) = delete;
    /// Ends the child if it still runs.
    ~CChildProcess();

    /// The system's number of the process.
    unsigned int GetProcessId() const;

    /// Waits until `text` is among what came to the terminal, `from` its byte of that number on. Returns
    /// false when the child ends without it.
    bool WaitForTerminal(const std::string& text, std::size_t from = 0);

    /// Sends what somebody types at the terminal.
    void Type(const std::string& keys);

    /// What came to the terminal so far, bytes as they came.
    std::string GetTerminal() const;

    /// How the terminal treats what is typed and written: the same text for the same settings.
    std::string GetTerminalSettings() const;
    /// The same before the child was started.
    std::string GetFirstTerminalSettings() const;

    /// Ends the child at once, as nothing that it could notice.
    void Kill();

    /// Waits for the end of the child. A debugged child only runs while it is waited for.
    TChildEnd Wait();

private:
    struct TState;
    std::unique_ptr<TState> state_;
};

/// Starts a child and waits for its end.
inline TChildEnd RunChild(const std::string& program, const TChildOptions& options = {}) {
    return CChildProcess(program, options).Wait();
}

/// The path of a file beside the test program.
std::filesystem::path BesideProgram(const std::string& name);

} // namespace vorlund::test
