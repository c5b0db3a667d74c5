#include "vorlund/math/Trigonometry.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

namespace vorlund::test {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

/// The tolerance also covers the C runtimes, the weakest of which are off by some units for large angles.
void ExpectNear(double actual, double expected, const char* what, double argument) {
    EXPECT_NEAR(actual, expected, 1e-15 + std::fabs(expected) * 1e-15) << what << ' ' << argument;
}

TEST(Trigonometry, SineAndCosineAreThoseOfTheRuntime) {
    std::mt19937 random(1);
    for (int i = 0; i < 20000; ++i) {
        const double angle = (random() / 2147483648.0 - 1) * (i % 2 ? 1000 : 4);
        const TSineAndCosine both = SineAndCosine(angle);
        ExpectNear(both.sine, std::sin(angle), "sine", angle);
        ExpectNear(both.cosine, std::cos(angle), "cosine", angle);
    }
}

TEST(Trigonometry, SquaresAddUpForLargeAngles) {
    // Every binary order that a double has, both reductions.
    for (int exponent = 0; exponent < 1024; ++exponent) {
        for (const double digits : {1.0, 1.25, -1.7853981633974483}) {
            const TSineAndCosine one = SineAndCosine(std::ldexp(digits, exponent));
            EXPECT_NEAR(one.sine * one.sine + one.cosine * one.cosine, 1, 1e-15) << exponent;
            if (exponent == 1023) continue;
            const TSineAndCosine two = SineAndCosine(std::ldexp(digits, exponent + 1));
            EXPECT_NEAR(two.sine, 2 * one.sine * one.cosine, 2e-15) << exponent;
        }
    }
}

TEST(Trigonometry, LargeAnglesNearMultiplesOfAQuarter) {
    // The double that is nearest to a multiple of pi/2 for its size (W. Kahan): the cosine is what decimal
    // arithmetic of 900 digits gives.
    EXPECT_DOUBLE_EQ(SineAndCosine(0x1.6ac5b262ca1ffp+849).cosine, -4.6871659242546277e-19);
    EXPECT_DOUBLE_EQ(SineAndCosine(-0x1.6ac5b262ca1ffp+849).cosine, -4.6871659242546277e-19);
    EXPECT_EQ(SineAndCosine(0x1.6ac5b262ca1ffp+849).sine, 1);
    EXPECT_EQ(SineAndCosine(-0x1.6ac5b262ca1ffp+849).sine, -1);
}

TEST(Trigonometry, SignsOfZeroAndOutsideAngles) {
    EXPECT_FALSE(std::signbit(SineAndCosine(0.0).sine));
    EXPECT_TRUE(std::signbit(SineAndCosine(-0.0).sine));
    EXPECT_EQ(SineAndCosine(-0.0).cosine, 1);
    for (const double angle : {kInfinity, -kInfinity, kNan}) {
        EXPECT_TRUE(std::isnan(SineAndCosine(angle).sine));
        EXPECT_TRUE(std::isnan(SineAndCosine(angle).cosine));
    }
}

TEST(Trigonometry, ArcTangentIsThatOfTheRuntime) {
    std::mt19937 random(2);
    for (int i = 0; i < 20000; ++i) {
        const double y = std::ldexp(random() / 2147483648.0 - 1, static_cast<int>(random() % 40) - 20);
        const double x = std::ldexp(random() / 2147483648.0 - 1, static_cast<int>(random() % 40) - 20);
        ExpectNear(ArcTangent(y, x), std::atan2(y, x), "arc tangent", y / x);
    }
    constexpr double pi = 3.14159265358979323846;
    struct TRow {
        double y, x, expected;
    };
    for (const TRow& row : {TRow{0, 1, 0},
                            {0, -1, pi},
                            {1, 0, pi / 2},
                            {1, -0.0, pi / 2},
                            {0, 0, 0},
                            {0, -0.0, pi},
                            {kInfinity, 1, pi / 2},
                            {1, kInfinity, 0},
                            {1, -kInfinity, pi},
                            {kInfinity, kInfinity, pi / 4},
                            {kInfinity, -kInfinity, 3 * pi / 4},
                            {1, 1, pi / 4}}) {
        EXPECT_DOUBLE_EQ(ArcTangent(row.y, row.x), row.expected) << row.y << ' ' << row.x;
        EXPECT_DOUBLE_EQ(ArcTangent(-row.y, row.x), -row.expected) << row.y << ' ' << row.x;
        EXPECT_TRUE(std::signbit(ArcTangent(-row.y, row.x)));
    }
    EXPECT_TRUE(std::isnan(ArcTangent(kNan, 1)));
    EXPECT_TRUE(std::isnan(ArcTangent(0, kNan)));
}

TEST(Trigonometry, ArcSineIsThatOfTheRuntime) {
    for (int i = -2000; i <= 2000; ++i) {
        const double sine = static_cast<float>(i / 2000.0);
        ExpectNear(ArcSine(sine), std::asin(sine), "arc sine", sine);
    }
    EXPECT_TRUE(std::isnan(ArcSine(1.5)));
    EXPECT_TRUE(std::isnan(ArcSine(-kInfinity)));
    EXPECT_TRUE(std::isnan(ArcSine(kNan)));
}

} // namespace
} // namespace vorlund::test
