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

TEST(Trigonometry, LargeAnglesAreThoseOfExactArithmetic) {
    // Powers of two that use, one after the other, every word of the digits of 2/pi; from arithmetic of 2400
    // binary digits.
    struct TRow {
        int exponent;
        double sine, cosine;
    };
    for (const TRow& row :
         {TRow{44, 0.39016922335187676, 0.9207431656813931}, {76, -0.6600625307954227, -0.751210659828481},
          {108, -0.8880360820347194, 0.4597737671990705},    {140, -0.25100647342403526, -0.9679854081024306},
          {172, 0.34275359058799637, 0.9394253435686287},    {204, 0.9907121701978235, -0.13597571776577838},
          {236, -0.403353654625619, 0.915044167950464},      {268, -0.4213839450543603, -0.9068823357252163},
          {300, 0.9772625210693567, 0.21203293355789096},    {332, 0.7842983408222842, 0.6203838429419419},
          {364, 0.988133412978915, -0.1535980408554781},     {396, 0.20294047859094666, -0.9791910754032012},
          {428, -0.8120818265606076, -0.5835435776100936},   {460, 0.215342042743404, 0.9765386856787077},
          {492, -0.4480626193212326, 0.8940021751466806},    {524, 0.342606246371587, -0.939479089680644},
          {556, 0.04973613879648413, -0.9987623924125382},   {588, 0.9837847569907747, -0.17935314859963392},
          {620, 0.9502527531038388, -0.3114798632633814},    {652, 0.4162712152437889, 0.9092404936866039},
          {684, -0.6223919569879734, 0.7827057249545838},    {716, -0.6647111267485912, 0.7471004738163525},
          {748, 0.5219956529984133, 0.8529481451124448},     {780, -0.9958216727230191, -0.09131919915947682},
          {812, 0.8539844068977748, 0.5202985996285747},     {844, -0.8034794831700433, 0.5953324450462952},
          {876, 0.8836715906380902, 0.46810738073560376},    {908, 0.5756203201066493, 0.8177170947707517},
          {940, 0.008368699827555767, -0.9999649818184616},  {972, -0.688089596217391, -0.7256257351950713},
          {1004, -0.5509321778389239, -0.8345500197241986},  {1023, 0.563127779850884, -0.826369834614148}}) {
        const TSineAndCosine both = SineAndCosine(std::ldexp(1.0, row.exponent));
        ExpectNear(both.sine, row.sine, "sine of a power", row.exponent);
        ExpectNear(both.cosine, row.cosine, "cosine of a power", row.exponent);
    }
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
