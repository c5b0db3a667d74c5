#include <vorlund/Matrix.h>

#include "MatrixExpectations.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <limits>
#include <random>

namespace vorlund::test {
namespace {

/// The definition, step by step: minors are taken with `SubMatrix` and their determinants are floats.
float DeterminantByDefinition(const CMatrix& m, int n) {
    if (n == 2) return static_cast<float>(double{m[0]} * m[5] - double{m[1]} * m[4]);
    double sum = 0;
    for (int k = 0; k < n; ++k) {
        const double part =
            double{m[k]} * DeterminantByDefinition(m.SubMatrix(0, 0, n - 1, n - 1, k, 0), n - 1);
        sum = k == 0 ? part : k % 2 ? sum - part : sum + part;
    }
    return static_cast<float>(sum);
}

CMatrix InverseByDefinition(const CMatrix& m) {
    const float d = m.Determinant(4);
    if (std::fabs(d) < 0.001) return CMatrix::Identity;
    CMatrix inverse;
    for (int i = 0; i < 4; ++i)
        for (int j = 0; j < 4; ++j) {
            const double sign = (i + j) % 2 ? -1 : 1;
            inverse[4 * i + j] = static_cast<float>(sign * m.SubMatrix(0, 0, 3, 3, i, j).Determinant(3) / d);
        }
    return inverse;
}

CMatrix RandomMatrix(std::mt19937& random, float size) {
    CMatrix m;
    for (int i = 0; i < 16; ++i) m[i] = (static_cast<float>(random() % 2001) / 1000 - 1) * size;
    return m;
}

TEST(Matrix, DeterminantOfBlocks) {
    const CMatrix m(2, 3, 5, 7, 11, 13, 17, 19, 23, 29, 31, 37, 41, 43, 47, 53);
    EXPECT_EQ(m.Determinant(2), -7);
    EXPECT_EQ(m.Determinant(3), 70);
    EXPECT_EQ(m.Determinant(4), 880);
    EXPECT_EQ(CMatrix::Identity.Determinant(4), 1);
    EXPECT_EQ(CMatrix::Zero.Determinant(4), 0);
    EXPECT_EQ(CMatrix::Scale(2, 3, 4).Determinant(2), 6);
    EXPECT_EQ(CMatrix::Scale(2, 3, 4).Determinant(3), 24);
}

TEST(Matrix, DeterminantOfOtherSizesIsZero) {
    for (const int n : {5, 1, 0, -1, 6, INT_MAX, INT_MIN})
        EXPECT_EQ(CMatrix::Identity.Determinant(n), 0) << n;
}

TEST(Matrix, DeterminantRoundsTheMinors) {
    // The lower left minor is 2^25 + 1, which becomes 2^25 before it is multiplied.
    const CMatrix m(3, 0, 0, 0, 0, 33554432, 1, 0, 0, -1, 1, 0, 0, 0, 0, 1);
    EXPECT_EQ(m.Determinant(3), 100663296.0f);
    std::mt19937 random(1);
    for (int i = 0; i < 2000; ++i) {
        const CMatrix r = RandomMatrix(random, i % 2 ? 1.0f : 1e9f);
        for (int n = 2; n <= 4; ++n) ASSERT_EQ(r.Determinant(n), DeterminantByDefinition(r, n)) << i;
    }
}

TEST(Matrix, InverseOfScaleAndTranslation) {
    EXPECT_TRUE(CMatrix::Scale(2, 4, 8).Inverse() == CMatrix::Scale(0.5f, 0.25f, 0.125f));
    ExpectElements(CMatrix::Scale(2, 4, 8).Inverse(),
                   {0.5f, 0, 0, 0, 0, 0.25f, 0, 0, 0, 0, 0.125f, 0, 0, 0, 0, 1});
    ExpectElements(CMatrix::Translation(1, 2, 3).Inverse(),
                   {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, -1, -2, -3, 1});
    ExpectElements(CMatrix::Identity.Inverse(), {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1});
}

TEST(Matrix, InverseIsTheDefinition) {
    std::mt19937 random(2);
    for (int i = 0; i < 1000; ++i) {
        const CMatrix m = RandomMatrix(random, i % 3 ? 2.0f : 1e4f);
        ExpectSameBits(m.Inverse(), InverseByDefinition(m));
        if (HasFailure()) break;
    }
}

TEST(Matrix, InverseTimesMatrixIsNearIdentity) {
    const CMatrix m =
        CMatrix::Rotation(0.3f, 0.5f, -0.7f) * CMatrix::Scale(1, 2, 3) * CMatrix::Translation(4, -5, 6);
    const CMatrix near = m * m.Inverse();
    for (int i = 0; i < 16; ++i) EXPECT_NEAR(near[i], CMatrix::Identity[i], 2e-6f);
}

TEST(Matrix, InverseOfSmallDeterminantsIsIdentity) {
    ExpectSameBits(CMatrix::Zero.Inverse(), CMatrix::Identity);
    // 0.001 as a float lies above 0.001, its lower neighbour below.
    EXPECT_EQ(CMatrix::Scale(0.001f, 1, 1).Inverse()[0], 1 / 0.001f);
    EXPECT_EQ(CMatrix::Scale(-0.001f, 1, 1).Inverse()[0], 1 / -0.001f);
    const float below = std::nextafter(0.001f, 0.0f);
    ExpectSameBits(CMatrix::Scale(below, 1, 1).Inverse(), CMatrix::Identity);
    ExpectSameBits(CMatrix::Scale(-below, 1, 1).Inverse(), CMatrix::Identity);
    // Regular, but it scales by less than a tenth.
    ExpectSameBits(CMatrix::Scale(0.09f, 0.09f, 0.09f).Inverse(), CMatrix::Identity);
}

TEST(Matrix, InverseOfNanAndInfinities) {
    CMatrix m;
    m[0] = std::numeric_limits<float>::quiet_NaN();
    EXPECT_TRUE(std::isnan(m.Determinant(4)));
    EXPECT_TRUE(std::isnan(m.Inverse()[0]));
    m[0] = std::numeric_limits<float>::infinity();
    EXPECT_EQ(m.Determinant(2), m[0]);
    EXPECT_TRUE(std::isnan(m.Inverse()[5]));
}

} // namespace
} // namespace vorlund::test
