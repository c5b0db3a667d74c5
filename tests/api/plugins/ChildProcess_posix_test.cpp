// Other processes that do not listen.
#include "vorlund/api/plugins/ChildProcess.h"

#include <gtest/gtest.h>

#include <chrono>
#include <vector>

namespace vorlund::test {
namespace {

using TChildClock = vorlund::CChildProcess::TClock;

TChildClock::time_point Later() {
    return TChildClock::now() + std::chrono::minutes(1);
}

TEST(ChildProcess, WhoHasEndedTakesNothing) {
    vorlund::CChildProcess process(VRL_L("/bin/true"), {});
    ASSERT_TRUE(process.IsStarted());
    while (!process.HasEnded()) process.Wait();
    EXPECT_EQ(process.GetEnd(), 0);
    EXPECT_FALSE(process.Write("text", 4, Later()));
    // With the end of what it has written the channel is closed.
    char byte = 0;
    EXPECT_EQ(process.Read(&byte, 1), 0u);
    EXPECT_EQ(process.Read(&byte, 1), 0u);
    EXPECT_FALSE(process.Write("text", 4, Later()));
}

TEST(ChildProcess, WhoDoesNotReadIsGivenUp) {
    const std::vector<char> much(16 << 20);
    vorlund::CChildProcess process(VRL_L("/bin/sleep"), {VRL_L("3600")});
    ASSERT_TRUE(process.IsStarted());
    EXPECT_FALSE(process.Write(much.data(), much.size(), TChildClock::now() + std::chrono::milliseconds(50)));
    EXPECT_FALSE(process.HasEnded());
}

} // namespace
} // namespace vorlund::test
