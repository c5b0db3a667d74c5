// Keys that are pressed at a terminal, one at a time and without a line end.
#pragma once

#include <chrono>
#include <optional>
#include <string>

/// What a key asks of a command that plays or records.
enum class TKey { Pause, Back, Forward, Previous, Next, Louder, Quieter, Quit };

/// The keys that people press, of which `bytes` begins with what a terminal sends for the first: removes it.
/// Nothing for bytes that mean nothing, which are removed too. A lone escape is one key when `isWhole` says
/// that nothing follows; else it stays, for more to come.
std::optional<TKey> TakeKey(std::string& bytes, bool isWhole);

/// While it lives, keys are not shown and come at once, where the standard error stream is a terminal and the
/// program is in its foreground. On every way out the terminal is as it was: at the end of the object, when
/// the process is stopped and continued (Ctrl-Z), and when a failure or `RestoreTerminal` ends it. One at a
/// time.
class CKeyboard {
public:
    CKeyboard();
    CKeyboard(const CKeyboard&) = delete;
    CKeyboard& operator=(const CKeyboard&) = delete;
    ~CKeyboard();

    /// Whether there is a terminal whose keys are read.
    bool IsThere() const;

    /// Waits for a key, at most so long; less when a signal comes.
    std::optional<TKey> Read(std::chrono::milliseconds limit);

    /// Whether the user wants the program to stop for a while.
    bool IsStopWanted() const;

    /// Stops the process with the terminal as it was, and returns when it goes on.
    void Stop();

private:
    std::string bytes_;
};

/// Makes the terminal as it was before the `CKeyboard` that lives now, for ends of the process at which
/// nothing is destroyed. Can be called from a signal handler.
void RestoreTerminal();
