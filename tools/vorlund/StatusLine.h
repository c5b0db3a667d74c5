// One line on the standard error stream that is written over and over.
#pragma once

#include <cstdint>
#include <string>

/// Nothing of it is written where the standard error stream is no terminal; cleans up after itself.
class CStatusLine {
public:
    CStatusLine();
    CStatusLine(const CStatusLine&) = delete;
    CStatusLine& operator=(const CStatusLine&) = delete;
    ~CStatusLine() { Clear(); }

    bool IsEnabled() const { return isEnabled_; }
    /// Shows the text, ASCII, as far as it fits into a line of the terminal.
    void Show(const std::string& text);
    /// Takes the line away, for other lines that are printed.
    void Clear();

private:
    bool isEnabled_;
    /// Characters that are shown.
    std::size_t shown_ = 0;
};

/// "1:02:03.4", or "2:03.4" below an hour.
std::string FormatTime(double seconds);

/// A bar of so many characters for a peak, 1 at full scale, and its decibels: "[######    ]  -12.0 dB".
std::string FormatLevel(float peak, int width);
