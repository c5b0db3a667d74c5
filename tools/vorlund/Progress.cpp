#include "Progress.h"

#include "Terminal.h"

#include <algorithm>
#include <cstdio>
#include <string>

namespace {

constexpr std::chrono::milliseconds kDelay{500};
constexpr std::chrono::milliseconds kInterval{100};
constexpr int kWidth = 40;

} // namespace

CProgress::CProgress(std::uint64_t total)
    : total_(total), isEnabled_(total > 0 && IsErrorTerminal()), next_(TClock::now() + kDelay) {}

CProgress::~CProgress() {
    if (isShown_) std::fprintf(stderr, "\r%*s\r", kWidth + 8, "");
}

void CProgress::Show(std::uint64_t done) {
    if (!isEnabled_ || TClock::now() < next_) return;
    next_ = TClock::now() + kInterval;
    isShown_ = true;
    // A file may hold more than it declared.
    const double share = std::min(1.0, static_cast<double>(done) / static_cast<double>(total_));
    const std::string bar(static_cast<std::size_t>(share * kWidth), '#');
    std::fprintf(stderr, "\r[%-*s] %3d %%", kWidth, bar.c_str(), static_cast<int>(share * 100));
    std::fflush(stderr);
}
