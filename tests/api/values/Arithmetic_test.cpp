#include "vorlund/api/values/Arithmetic.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace vorlund::test {
namespace {

constexpr std::int64_t kMin = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t kMax = std::numeric_limits<std::int64_t>::max();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

struct TTruncationRow {
    const char* name;
    double value;
    std::int64_t result;
};
class ArithmeticTruncation : public testing::TestWithParam<TTruncationRow> {};

TEST_P(ArithmeticTruncation, Result) {
    EXPECT_EQ(TruncateToInt64(GetParam().value), GetParam().result);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, ArithmeticTruncation,
    testing::Values(TTruncationRow{"Zero", 0.0, 0}, TTruncationRow{"MinusZero", -0.0, 0},
                    TTruncationRow{"BelowOne", 0.99999999999999989, 0},
                    TTruncationRow{"AboveMinusOne", -0.99999999999999989, 0}, TTruncationRow{"Half", 2.5, 2},
                    TTruncationRow{"MinusHalf", -2.5, -2},
                    TTruncationRow{"Denormal", std::numeric_limits<double>::denorm_min(), 0},
                    TTruncationRow{"Exact", 9007199254740991.0, 9007199254740991},
                    TTruncationRow{"BelowLimit", 9223372036854774784.0, 9223372036854774784},
                    TTruncationRow{"Limit", 0x1p63, kMin},
                    TTruncationRow{"AboveMinusLimit", -9223372036854774784.0, -9223372036854774784},
                    TTruncationRow{"MinusLimit", -0x1p63, kMin},
                    TTruncationRow{"BelowMinusLimit", -9223372036854777856.0, kMin},
                    TTruncationRow{"Greatest", std::numeric_limits<double>::max(), kMin},
                    TTruncationRow{"Least", std::numeric_limits<double>::lowest(), kMin},
                    TTruncationRow{"Infinity", kInfinity, kMin},
                    TTruncationRow{"MinusInfinity", -kInfinity, kMin},
                    TTruncationRow{"NotANumber", std::numeric_limits<double>::quiet_NaN(), kMin},
                    TTruncationRow{"MinusNotANumber", -std::numeric_limits<double>::quiet_NaN(), kMin}),
    [](const auto& row) { return row.param.name; });

struct TProductRow {
    const char* name;
    std::int64_t left;
    std::uint32_t right;
    std::int64_t result;
};
class ArithmeticProduct : public testing::TestWithParam<TProductRow> {};

TEST_P(ArithmeticProduct, Wraps) {
    EXPECT_EQ(MultiplyWrapping(GetParam().left, GetParam().right), GetParam().result);
}

INSTANTIATE_TEST_SUITE_P(Rows, ArithmeticProduct,
                         testing::Values(TProductRow{"Plain", 6, 7, 42}, TProductRow{"Negative", -6, 7, -42},
                                         TProductRow{"Zero", kMin, 0, 0}, TProductRow{"One", kMin, 1, kMin},
                                         TProductRow{"LeastTwice", kMin, 2, 0},
                                         TProductRow{"LeastThrice", kMin, 3, kMin},
                                         TProductRow{"GreatestTwice", kMax, 2, -2},
                                         TProductRow{"GreatestFactor", kMax, 0xFFFFFFFF, 0x7FFFFFFF00000001},
                                         TProductRow{"MinusOne", -1, 0xFFFFFFFF, -4294967295},
                                         TProductRow{"Quarter", 0x4000000000000000, 4, 0}),
                         [](const auto& row) { return row.param.name; });

} // namespace
} // namespace vorlund::test
