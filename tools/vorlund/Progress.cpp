#include "Progress.h"

#include "Terminal.h"

#include <algorithm>
#include <cstdio>
#include <string>

namespace {

constexpr std::chrono::milliseconds kDelay{500};
constexpr std::chrono::milliseconds kInterval{100};
constexpr int kWidth = 40;
constexpr int kTextWidth = 40;
/// Of seconds.
constexpr double kMostShown = 999999;

} // namespace

CProgress::CProgress(std::uint64_t total)
    : total_(total), isEnabled_(total > 0 && IsErrorTerminal()), begin_(TClock::now()),
      next_(begin_ + kDelay) {}

CProgress::~CProgress() {
    if (isShown_) std::fprintf(stderr, "\r%*s\r", kWidth + kTextWidth, "");
}

void CProgress::Show(std::uint64_t done) {
    if (!isEnabled_ || TClock::now() < next_) return;
    next_ = TClock::now() + kInterval;
    isShown_ = true;
    // A file may hold more than it declared.
    const double share = std::min(1.0, static_cast<double>(done) / static_cast<double>(total_));
    const std::string bar(static_cast<std::size_t>(share * kWidth), '#');
    const std::chrono::duration<double> spent = TClock::now() - begin_;
    const double left = share > 0 ? spent.count() * (1 - share) / share : 0;
    const double rate = static_cast<double>(done) / spent.count() / 1e6;
    std::fprintf(stderr, "\r[%-*s] %3d %%, %.1f MB/s, %.0f s left ", kWidth, bar.c_str(),
                 static_cast<int>(share * 100), rate, std::min(left, kMostShown));
    std::fflush(stderr);
}
