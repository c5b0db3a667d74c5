#include <vorlund/Matrix.h>

#include "MatrixExpectations.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace vorlund::test {
namespace {

constexpr float kPi = 3.14159265358979f;
constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr TAxis kAxes[] = {AXIS_X, AXIS_Y, AXIS_Z};
constexpr float kAngles[] = {0.0f,  -0.0f, 0.5f, -0.5f, kPi / 2, -kPi / 2, kPi,    -kPi,
                             1e-3f, 3.0f,  10,   -100,  999.9f,  1000,     1e-40f, 12345.678f};

float Sine(float a) {
    return static_cast<float>(std::sin(double{a}));
}
float Cosine(float a) {
    return static_cast<float>(std::cos(double{a}));
}

TEST(Matrix, TranslationAndScale) {
    ExpectElements(CMatrix::Translation(2, 3, 4), {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 2, 3, 4, 1});
    ExpectElements(CMatrix::Scale(2, 3, 4), {2, 0, 0, 0, 0, 3, 0, 0, 0, 0, 4, 0, 0, 0, 0, 1});
}

TEST(Matrix, RotationsAroundOneAxis) {
    for (const float a : kAngles) {
        SCOPED_TRACE(a);
        const float s = Sine(a), c = Cosine(a);
        ExpectElements(CMatrix::RotationZ(a), {c, s, 0, 0, -s, c, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1});
        ExpectElements(CMatrix::RotationY(a), {c, 0, -s, 0, 0, 1, 0, 0, s, 0, c, 0, 0, 0, 0, 1});
        ExpectElements(CMatrix::RotationX(a), {1, 0, 0, 0, 0, c, s, 0, 0, s, c, 0, 0, 0, 0, 1});
    }
}

TEST(Matrix, RotationXIsSymmetric) {
    for (const float a : kAngles) ExpectSameBits(CMatrix::RotationX(a), CMatrix::RotationX(a).Transpose());
}

TEST(Matrix, RotationByThreeAngles) {
    for (const float ax : kAngles) {
        for (const float ay : {0.25f, -1.5f, 700.0f}) {
            const float az = ax - 2 * ay;
            const double sx = Sine(ax), cx = Cosine(ax), sy = Sine(ay), cy = Cosine(ay), sz = Sine(az),
                         cz = Cosine(az);
            const auto rounded = [](double value) { return static_cast<float>(value); };
            ExpectElements(CMatrix::Rotation(ax, ay, az),
                           {rounded(cy * cz), rounded(sx * sy * cz + cx * sz),
                            rounded(-cx * sy * cz + sx * sz), 0, rounded(-cy * sz),
                            rounded(-sx * sy * sz + cx * cz), rounded(cx * sy * sz + sx * cz), 0, rounded(sy),
                            rounded(-sx * cy), rounded(cx * cy), 0, 0, 0, 0, 1});
        }
    }
    ExpectElements(CMatrix::Rotation(0, 0, 0), {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1});
}

TEST(Matrix, LargeAnglesAreReducedExactly) {
    // 10^22 and the largest float; sines by 60-digit arithmetic.
    EXPECT_EQ(CMatrix::RotationZ(1e22f)[1], -0.73408151f);
    EXPECT_EQ(CMatrix::RotationZ(std::numeric_limits<float>::max())[1], -0.52187652f);
    EXPECT_EQ(CMatrix::RotationZ(std::numeric_limits<float>::max())[0], 0.85302103f);
    for (const float a : {kInfinity, -kInfinity, std::numeric_limits<float>::quiet_NaN()}) {
        EXPECT_TRUE(std::isnan(CMatrix::RotationX(a)[5]));
        EXPECT_TRUE(std::isnan(CMatrix::Rotation(0, a, 0)[8]));
    }
}

TEST(Matrix, PerspectiveOfARightAngleIsExact) {
    const CMatrix m = CMatrix::PerspectiveFov(kPi / 2, 1, 1, 5);
    ExpectElements(m, {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1.25f, 1, 0, 0, -1.25f, 0});
}

TEST(Matrix, PerspectiveDividesTheAngle) {
    const CMatrix m = CMatrix::PerspectiveFov(1.2f, 1.6f, 0.5f, 100);
    EXPECT_EQ(m[0], Cosine(0.6f) / Sine(0.6f));
    const double quarter = double{1.2f} / double{1.6f} / 2;
    EXPECT_EQ(m[5], static_cast<float>(std::cos(quarter)) / static_cast<float>(std::sin(quarter)));
    EXPECT_EQ(m[10], static_cast<float>(100.0 / 99.5));
    EXPECT_EQ(m[11], 1);
    EXPECT_EQ(m[14], static_cast<float>(-50.0 / 99.5));
    EXPECT_EQ(m[15], 0);
    for (const int i : {1, 2, 3, 4, 6, 7, 8, 9, 12, 13}) EXPECT_EQ(m[i], 0) << i;
    // Depths: 0 at the near plane, w at the far one.
    EXPECT_NEAR((CVector(0, 0, 0.5f) * m).z, 0, 1e-6);
    EXPECT_NEAR((CVector(0, 0, 100) * m).z / 100, 1, 1e-6);
}

TEST(Matrix, PerspectiveOfNothing) {
    const CMatrix m = CMatrix::PerspectiveFov(0, 1, 2, 2);
    EXPECT_EQ(m[0], kInfinity);
    EXPECT_EQ(m[10], kInfinity);
    EXPECT_EQ(m[14], -kInfinity);
    EXPECT_TRUE(std::isnan(CMatrix::PerspectiveFov(1, 0, 1, 2)[5]));
    // An angle that only a double holds.
    EXPECT_TRUE(std::isfinite(CMatrix::PerspectiveFov(3e38f, 1e-45f, 1, 2)[5]));
}

TEST(Matrix, ScaleIsTheLengthOfTheRow) {
    EXPECT_EQ(CMatrix::Scale(2, 3, 4).GetScale(AXIS_X), 2);
    EXPECT_EQ(CMatrix::Scale(2, 3, 4).GetScale(AXIS_Y), 3);
    EXPECT_EQ(CMatrix::Scale(2, 3, 4).GetScale(AXIS_Z), 4);
    const CMatrix m(2, 3, 6, 100, 1, 4, 8, 100, 0, 0, -5, 100, 100, 100, 100, 100);
    EXPECT_EQ(m.GetScale(AXIS_X), 7);
    EXPECT_EQ(m.GetScale(AXIS_Y), 9);
    EXPECT_EQ(m.GetScale(AXIS_Z), 5);
    for (const int axis : {-1, 3, 4, 1000}) EXPECT_EQ(m.GetScale(static_cast<TAxis>(axis)), 1) << axis;
}

TEST(Matrix, NormalizeDividesThreeRows) {
    CMatrix m(2, 3, 6, 100, 1, 4, 8, 101, 0, 0, -5, 102, 103, 104, 105, 106);
    m.Normalize();
    ExpectElements(m, {2.0f / 7, 3.0f / 7, 6.0f / 7, 100, 1.0f / 9, 4.0f / 9, 8.0f / 9, 101, 0, 0, -1, 102,
                       103, 104, 105, 106});
    CMatrix zero = CMatrix::Zero;
    zero.Normalize();
    EXPECT_TRUE(std::isnan(zero[0]) && std::isnan(zero[5]) && std::isnan(zero[10]));
    EXPECT_EQ(zero[15], 0);
}

TEST(Matrix, AnglesOfARotationComeBack) {
    for (const float ax : {0.0f, 0.7f, -2.5f, 3.0f}) {
        for (const float ay : {0.0f, 0.4f, -1.5f}) {
            for (const float az : {0.0f, 1.9f, -0.2f}) {
                const CMatrix m =
                    CMatrix::Scale(2, 2, 2) * CMatrix::Rotation(ax, ay, az) * CMatrix::Translation(5, 6, 7);
                EXPECT_NEAR(m.GetRotation(AXIS_X), ax, 3e-6);
                EXPECT_NEAR(m.GetRotation(AXIS_Y), ay, 3e-6);
                EXPECT_NEAR(m.GetRotation(AXIS_Z), az, 3e-6);
            }
        }
    }
    for (const int axis : {-1, 3, 1000})
        EXPECT_EQ(CMatrix::Rotation(1, 1, 1).GetRotation(static_cast<TAxis>(axis)), 0) << axis;
}

TEST(Matrix, AnglesOfASingleAxis) {
    EXPECT_EQ(CMatrix::RotationZ(0.5f).GetRotation(AXIS_Z), 0.5f);
    EXPECT_EQ(CMatrix::RotationY(0.5f).GetRotation(AXIS_Y), 0.5f);
    // The symmetric matrix: its lower sine is the negative of a rotation's.
    EXPECT_EQ(CMatrix::RotationX(0.5f).GetRotation(AXIS_X), -0.5f);
    for (const TAxis axis : kAxes) EXPECT_EQ(CMatrix::Identity.GetRotation(axis), 0);
}

TEST(Matrix, GimbalLockGivesAllToZ) {
    for (const float sign : {1.0f, -1.0f}) {
        // Row 2 along x, a turn by 0.75 in what is left.
        const float s = Sine(0.75f), c = Cosine(0.75f);
        const CMatrix m(0, s, -c, 0, 0, c, s, 0, sign, 0, 0, 0, 0, 0, 0, 1);
        EXPECT_EQ(m.GetRotation(AXIS_X), 0);
        EXPECT_EQ(m.GetRotation(AXIS_Y), sign * (kPi / 2));
        EXPECT_NEAR(m.GetRotation(AXIS_Z), 0.75f, 1e-7);
    }
}

TEST(Matrix, GimbalLockBeginsAtACosineOfAThousandth) {
    // Sines next to 1 in steps of 2^-24: cosines are 0.000977 at 8 steps and 0.00104 at 9.
    for (const int steps : {8, 9}) {
        const float sine = 1 - static_cast<float>(steps) / 16777216;
        const float cosine = std::sqrt(1 - sine * sine);
        const CMatrix m(0, 1, 0, 0, 0, 0, 1, 0, sine, -cosine, 0, 0, 0, 0, 0, 1);
        ASSERT_EQ(m.GetScale(AXIS_Z), 1) << steps;
        if (steps == 8)
            EXPECT_EQ(m.GetRotation(AXIS_X), 0);
        else
            EXPECT_FLOAT_EQ(m.GetRotation(AXIS_X), kPi / 2);
    }
}

TEST(Matrix, AnglesOfNothing) {
    for (const TAxis axis : kAxes) EXPECT_TRUE(std::isnan(CMatrix::Zero.GetRotation(axis))) << axis;
    CMatrix m;
    m[8] = kInfinity;
    EXPECT_TRUE(std::isnan(m.GetRotation(AXIS_Y)));
}

} // namespace
} // namespace vorlund::test
