#include "soak/SoakUsage.h"

#include <algorithm>
#include <chrono>
#include <thread>

namespace vorlund::soak {
namespace {

/// What an allocator and a C library may keep more or less at one time than at another, and a sanitizer of
/// what has been given back.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr std::int64_t kMemorySlack = 48 * 1024 * 1024;
#else
constexpr std::int64_t kMemorySlack = 2 * 1024 * 1024;
#endif
constexpr std::int64_t kHandleSlack = 4;
constexpr std::int64_t kThreadSlack = 1;

std::string Grown(const char* what, std::int64_t first, std::int64_t last, std::int64_t allowed) {
    if (last - first <= allowed) return {};
    return std::string(what) + " have grown from " + std::to_string(first) + " to " + std::to_string(last) +
           ", " + std::to_string(allowed) + " more are allowed\n";
}

} // namespace

void CGrowth::Sample() {
    // Ten times what the library keeps a thread. A sanitizer's own thread comes with the run, and stays.
    const auto patience = samples_.empty() ? std::chrono::milliseconds(200) : std::chrono::milliseconds(5000);
    const auto limit = std::chrono::steady_clock::now() + patience;
    TUsage usage = GetUsage();
    while (usage.threads > threadsAtRest_ && std::chrono::steady_clock::now() < limit) {
        std::this_thread::yield();
        usage = GetUsage();
    }
    // What is still there has been started for good, by the system for example.
    if (samples_.empty()) threadsAtRest_ = usage.threads;
    samples_.push_back(usage);
}

TUsage CGrowth::Typical(std::size_t first, std::size_t end) const {
    const auto median = [&](std::int64_t TUsage::*member) {
        std::vector<std::int64_t> values;
        for (std::size_t sample = first; sample < end; ++sample) values.push_back(samples_[sample].*member);
        std::sort(values.begin(), values.end());
        return values[values.size() / 2];
    };
    return {median(&TUsage::memory), median(&TUsage::handles), median(&TUsage::threads)};
}

std::string CGrowth::Describe(std::int64_t expected) const {
    const TUsage first = GetFirst();
    const TUsage last = GetLast();
    return Grown("bytes of memory", first.memory, last.memory, kMemorySlack + expected) +
           Grown("handles", first.handles, last.handles, kHandleSlack) +
           Grown("threads", first.threads, last.threads, kThreadSlack);
}

} // namespace vorlund::soak
