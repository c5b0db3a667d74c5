#include "StatusLine.h"

#include "Terminal.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace {

/// The least level that the bar shows, in decibels.
constexpr double kFloor = -60;
constexpr double kLowestText = -99.9;

} // namespace

CStatusLine::CStatusLine() : isEnabled_(IsErrorTerminal()) {}

void CStatusLine::Show(const std::string& text) {
    if (!isEnabled_) return;
    // A full line would end with the cursor in the next one.
    const std::size_t room = static_cast<std::size_t>(std::max(GetErrorColumns() - 1, 1));
    std::string line = text.substr(0, room);
    const std::size_t length = line.size();
    if (shown_ > length) line.append(std::min(shown_, room) - length, ' ');
    std::fprintf(stderr, "\r%s", line.c_str());
    std::fflush(stderr);
    shown_ = length;
}

void CStatusLine::Clear() {
    if (shown_ == 0) return;
    std::fprintf(stderr, "\r%*s\r", static_cast<int>(shown_), "");
    std::fflush(stderr);
    shown_ = 0;
}

std::string FormatTime(double seconds) {
    // In tenths, so that nothing is rounded to 60 seconds.
    const auto tenths = static_cast<std::uint64_t>(std::max(seconds, 0.0) * 10);
    const std::uint64_t minutes = tenths / 600;
    const double rest = static_cast<double>(tenths % 600) / 10;
    char text[48];
    if (minutes >= 60) {
        std::snprintf(text, sizeof text, "%llu:%02llu:%04.1f", static_cast<unsigned long long>(minutes / 60),
                      static_cast<unsigned long long>(minutes % 60), rest);
    } else {
        std::snprintf(text, sizeof text, "%llu:%04.1f", static_cast<unsigned long long>(minutes), rest);
    }
    return text;
}

std::string FormatLevel(float peak, int width) {
    const double level = peak > 0 ? 20 * std::log10(static_cast<double>(peak)) : kLowestText;
    // A sum with 0 has no sign when it is 0.
    const double shown = std::round(std::max(level, kLowestText) * 10) / 10 + 0.0;
    const double share = std::clamp((level - kFloor) / -kFloor, 0.0, 1.0);
    const std::string bar(static_cast<std::size_t>(std::lround(share * width)), '#');
    char text[160];
    std::snprintf(text, sizeof text, "[%-*s] %5.1f dB", width, bar.c_str(), shown);
    return text;
}
