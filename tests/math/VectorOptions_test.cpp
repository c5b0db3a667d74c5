// Vectors have the same results whatever options an application is compiled with: each set of options, of
// each compiler that is there, against arithmetic that is written out here.
#include "math/VectorOptions.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <string>
#include <vector>

// The build writes a line for each set of options.
#define VARIANT(name, isFused) extern "C" vorlund::test::TEvaluateVectors name;
#include "VectorOptions.inc"
#undef VARIANT

namespace {

using vorlund::test::kVectorResults;
using vorlund::test::TVectorCase;
using vorlund::test::TVectorResults;

struct TVariant {
    const char* name;
    vorlund::test::TEvaluateVectors* evaluate;
    /// It needs a processor that multiplies and adds at once.
    bool isFused;
};

constexpr TVariant kVariants[] = {
#define VARIANT(name, isFused) {#name, &name, isFused},
#include "VectorOptions.inc"
#undef VARIANT
};

bool CanRun([[maybe_unused]] const TVariant& variant) {
#if defined(__x86_64__) || defined(__i386__)
    return !variant.isFused || (__builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma"));
#else
    return true;
#endif
}

float Round(double value) {
    return static_cast<float>(value);
}

/// The results by the definition: each operation in double precision, each element rounded.
void Expect(const TVectorCase& c, float* out) {
    const double k = c.k;
    const double x = c.a[0], y = c.a[1], z = c.a[2];
    float rows[11][3];
    for (int i = 0; i < 3; ++i) {
        const float a = c.a[i], b = c.b[i];
        const float scaled = Round(a * k);
        const float quotient = Round(a / k);
        rows[0][i] = Round(double{scaled} + b);
        rows[1][i] = Round(double{b} - scaled);
        rows[2][i] = Round(double{Round(Round(double{a} + b) * k)} - scaled);
        rows[3][i] = Round(double{a} - a);
        rows[4][i] = quotient;
        rows[5][i] = Round(quotient * k);
        rows[6][i] = Round(quotient / k);
        rows[8][i] = Round(x * c.m[i] + y * c.m[4 + i] + z * c.m[8 + i] + c.m[12 + i]);
        rows[9][i] = Round(double{Round(double{a} * b)} + b);
    }
    rows[7][0] = Round(y * c.b[2] - z * c.b[1]);
    rows[7][1] = Round(z * c.b[0] - x * c.b[2]);
    rows[7][2] = Round(x * c.b[1] - y * c.b[0]);
    rows[10][0] = Round(double{Round(c.d)} + 0.1f);
    rows[10][1] = Round(double{0.1f} + Round(double{0.1f} * 0.1f));
    rows[10][2] = Round(3.0 + Round(-3.0 * 0.1f));
    int at = 0;
    for (const auto& row : rows) {
        for (const float element : row) out[at++] = element;
    }
    out[at++] = Round(x * c.b[0] + y * c.b[1] + z * c.b[2]);
    out[at++] = Round(x * x + y * y + z * z);
    out[at++] = Round(0.1f * x + 0.1f * y + 0.1f * z);
    out[at++] = Round(double{Round(c.d)} * c.b[0] + 0 * double{c.b[1]} + c.b[2]);
    out[at++] = Round(x * x + y * y + z * z);
    out[at++] = Round(std::sqrt(x * x + y * y + z * z));
    out[at++] = Round(double{Round(x * k)} - c.b[0]);
}

/// Numbers of every size, most of them ordinary; infinities and NaN where `isSpecial`.
std::vector<TVectorCase> Cases(bool isSpecial) {
    std::mt19937 random(isSpecial ? 2 : 1);
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    constexpr float kSpecial[] = {
        0, -0.0f, 1, -1, std::numeric_limits<float>::quiet_NaN(), 1e38f, kInfinity, -kInfinity, 3e-39f};
    const auto number = [&] {
        if (isSpecial) return kSpecial[random() % std::size(kSpecial)];
        const float mantissa = 1 + static_cast<float>(random() % (1 << 23)) / (1 << 23);
        return std::ldexp(random() % 2 ? mantissa : -mantissa, static_cast<int>(random() % 12) - 6);
    };
    std::vector<TVectorCase> cases(2000);
    for (TVectorCase& c : cases) {
        for (float& element : c.a) element = number();
        for (float& element : c.b) element = number();
        for (float& element : c.m) element = number();
        c.k = number();
        c.d = double{number()} * (1 + 1e-9);
    }
    // 1.1 * 1.1 is not 1.21: fused, the rounding of the product is seen.
    cases[0].a[0] = cases[0].k = 1.1f;
    cases[0].b[0] = -1.21f;
    return cases;
}

/// The same number, all NaN being the same.
bool IsSame(float a, float b) {
    return std::bit_cast<std::uint32_t>(a) == std::bit_cast<std::uint32_t>(b) ||
           (std::isnan(a) && std::isnan(b));
}

void ExpectAll(const TVariant& variant, bool isSpecial) {
    const std::vector<TVectorCase> cases = Cases(isSpecial);
    std::vector<float> storage(cases.size() * kVectorResults);
    auto* const results = reinterpret_cast<TVectorResults*>(storage.data());
    variant.evaluate(cases.data(), results, static_cast<int>(cases.size()));
    for (std::size_t i = 0; i < cases.size(); ++i) {
        TVectorResults expected;
        Expect(cases[i], expected);
        for (int r = 0; r < kVectorResults; ++r) {
            ASSERT_TRUE(IsSame(results[i][r], expected[r]))
                << "case " << i << ", result " << r << ": " << std::hexfloat << results[i][r]
                << " instead of " << expected[r];
        }
    }
}

class VectorOptions : public testing::TestWithParam<TVariant> {};

TEST_P(VectorOptions, ResultsAreTheSame) {
    if (CanRun(GetParam())) ExpectAll(GetParam(), false);
}

TEST_P(VectorOptions, InfinitiesAndNanAreTheSame) {
    if (CanRun(GetParam())) ExpectAll(GetParam(), true);
}

INSTANTIATE_TEST_SUITE_P(All, VectorOptions, testing::ValuesIn(kVariants),
                         [](const auto& row) { return std::string(row.param.name); });

} // namespace
