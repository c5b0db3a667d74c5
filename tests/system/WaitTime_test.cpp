#include "vorlund/system/WaitTime.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

namespace vorlund::test {
namespace {

struct TSecondsRow {
    const char* name;
    double seconds;
    std::uint32_t milliseconds;
};

class WaitTime : public testing::TestWithParam<TSecondsRow> {};

TEST_P(WaitTime, IsCutToWholeMilliseconds) {
    EXPECT_EQ(MillisecondsOf(GetParam().seconds), GetParam().milliseconds);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, WaitTime,
    testing::Values(TSecondsRow{"Zero", 0.0, 0}, TSecondsRow{"MinusZero", -0.0, 0},
                    TSecondsRow{"One", 1.0, 1000}, TSecondsRow{"Half", 0.5, 500},
                    TSecondsRow{"BelowOne", 0.0009, 0}, TSecondsRow{"AboveMinusOne", -0.0009, 0},
                    // As floats, these lie a little below and above their decimal fractions.
                    TSecondsRow{"TenAsFloat", 0.01f, 9}, TSecondsRow{"OneAsFloat", 0.001f, 1},
                    TSecondsRow{"MinusOneAsFloat", -0.001f, 0xFFFFFFFF},
                    TSecondsRow{"MinusThousand", -1.0, 0xFFFFFC18},
                    TSecondsRow{"LargestUnsigned", 4294967.295, 0xFFFFFFFF},
                    TSecondsRow{"Wraps", 4294967.296, 0}, TSecondsRow{"WrapsFurther", 4294968.5, 1204},
                    TSecondsRow{"LargestThatFits", 9223372036854774.0, 0xFFFFF800},
                    TSecondsRow{"TooLarge", 9223372036854776.0, 0}, TSecondsRow{"TooSmall", -1e16, 0},
                    TSecondsRow{"Huge", 1e300, 0}, TSecondsRow{"Overflowing", 1e308, 0},
                    TSecondsRow{"Infinite", std::numeric_limits<double>::infinity(), 0},
                    TSecondsRow{"MinusInfinite", -std::numeric_limits<double>::infinity(), 0},
                    TSecondsRow{"NotANumber", std::numeric_limits<double>::quiet_NaN(), 0}),
    [](const auto& row) { return std::string(row.param.name); });

} // namespace
} // namespace vorlund::test
