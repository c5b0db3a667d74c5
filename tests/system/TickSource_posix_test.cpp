#include "vorlund/system/TickSource.h"

#include <gtest/gtest.h>

#include <chrono>

namespace vorlund::test {
namespace {

using TClock = std::chrono::steady_clock;

TEST(TickSource, TicksOncePerMillisecond) {
    const waiting::TEventHandle stop = waiting::Create();
    waiting::CTickSource source;
    constexpr int kTicks = 8;
    // A busy machine loses ticks, so only the shortest of many attempts says how far apart they are.
    const auto limit = TClock::now() + std::chrono::seconds(30);
    bool isFast = false;
    while (!isFast && TClock::now() < limit) {
        ASSERT_TRUE(source.WaitForTick(stop));
        const auto start = TClock::now();
        for (int tick = 0; tick < kTicks; ++tick) ASSERT_TRUE(source.WaitForTick(stop));
        isFast = TClock::now() - start < std::chrono::microseconds(1500 * kTicks);
    }
    EXPECT_TRUE(isFast);
    waiting::Close(stop);
}

} // namespace
} // namespace vorlund::test
