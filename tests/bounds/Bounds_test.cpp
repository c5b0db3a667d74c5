// No megabyte takes any parser more than a second and 64 MiB. The worst inputs that we know are the cases of
// bounds_child; each runs in a process of its own, which tells its processor time and the peak of its memory.
#include "bounds/Factors.h"
#include "support/ChildProcess.h"
#include "support/Emulated.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <sstream>
#include <string>

namespace vorlund::test {
namespace {

constexpr unsigned long long kMaxMilliseconds = 1000 * kTimeFactor;
constexpr unsigned long long kMaxBytes = (64ull << 20) * kMemoryFactor;

/// `CTextReader` answers every line by an exception and a report: a million of them.
unsigned long long GetMaxMilliseconds(const std::string& name) {
    const unsigned long long most = name == "text-feeds" ? 5 * kMaxMilliseconds : kMaxMilliseconds;
    return IsEmulated() ? kEmulatorTimeFactor * most : most;
}

TEST(Bounds, NoMegabyteTakesLong) {
    const TChildEnd list = RunChild("bounds_child");
    ASSERT_TRUE(list.IsSuccess());
    std::istringstream names(list.output);
    int count = 0;
    for (std::string name; names >> name; ++count) {
        SCOPED_TRACE(name);
        const TChildEnd end = RunChild("bounds_child", {.arguments = {name}});
        EXPECT_TRUE(end.IsSuccess()) << end.output << end.errors;
        unsigned long long milliseconds = ~0ull;
        unsigned long long bytes = ~0ull;
        EXPECT_EQ(std::sscanf(end.output.c_str(), "%llu ms %llu bytes", &milliseconds, &bytes), 2)
            << end.output;
        EXPECT_LE(milliseconds, GetMaxMilliseconds(name));
        EXPECT_LE(bytes, kMaxBytes);
    }
    EXPECT_GT(count, 20);
}

} // namespace
} // namespace vorlund::test
