#include <vorlund/Matrix.h>

#include "MatrixExpectations.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <cstring>
#include <limits>
#include <type_traits>
#include <vector>

namespace vorlund::test {
namespace {

constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kNan = std::numeric_limits<float>::quiet_NaN();

static_assert(sizeof(CMatrix) == 64);
static_assert(std::is_trivially_copyable_v<CMatrix> && std::is_standard_layout_v<CMatrix>);
static_assert(AXIS_X == 0 && AXIS_Y == 1 && AXIS_Z == 2);
constinit CMatrix constant(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15);

// The static constants are there before any other initialisation of this program runs.
const float firstOfIdentity = CMatrix::Identity[0];
const float firstOfUp = CVector::Up[1];

TEST(Matrix, ConstructionAndConstants) {
    ExpectElements(CMatrix(), {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1});
    ExpectElements(CMatrix::Identity, {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1});
    ExpectElements(CMatrix::Zero, {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0});
    ExpectElements(constant, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15});
    EXPECT_EQ(firstOfIdentity, 1);
    EXPECT_EQ(firstOfUp, 1);
    CMatrix copy(constant);
    ExpectSameBits(copy, constant);
    EXPECT_EQ(&(copy = CMatrix::Zero), &copy);
    ExpectSameBits(copy, CMatrix::Zero);
}

TEST(Matrix, FourVectorsFillThreeRowsAndTheFourthColumn) {
    const CMatrix m(CVector(1, 2, 3), CVector(4, 5, 6), CVector(7, 8, 9), CVector(10, 11, 12));
    ExpectElements(m, {1, 2, 3, 1, 4, 5, 6, 1, 7, 8, 9, 1, 0, 0, 0, 1});
}

TEST(Matrix, ElementsByIndex) {
    CMatrix m;
    const CMatrix& reader = m;
    for (int i = 0; i < 16; ++i) m[i] = static_cast<float>(i);
    for (int i = 0; i < 16; ++i) EXPECT_EQ(reader[i], static_cast<float>(i));
}

TEST(Matrix, OutsideIndicesShareTwoCells) {
    CMatrix m = constant;
    const CMatrix& reader = m;
    CMatrix other;
    float& cell = m[16];
    EXPECT_EQ(cell, 0);
    cell = 7;
    for (const int i : {16, 17, -1, 1000, INT_MAX, INT_MIN}) {
        EXPECT_EQ(&m[i], &cell);
        EXPECT_EQ(&other[i], &cell);
        // The const form has its own, which nobody writes to.
        EXPECT_EQ(reader[i], 0);
    }
    cell = 0;
    ExpectSameBits(m, constant);
}

TEST(Matrix, Product) {
    const CMatrix a(1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16);
    const CMatrix b(2, 0, 1, 0, 0, 3, 0, 1, 1, 0, 4, 0, 0, 1, 0, 5);
    const std::array<float, 16> expected = {5, 10, 13, 22, 17, 26, 33, 46, 29, 42, 53, 70, 41, 58, 73, 94};
    ExpectElements(a * b, expected);
    CMatrix m = a;
    EXPECT_EQ(&(m *= b), &m);
    ExpectElements(m, expected);
    m = a;
    m *= m;
    ExpectSameBits(m, a * a);
    ExpectSameBits(a * CMatrix::Identity, a);
    ExpectSameBits(CMatrix::Identity * a, a);
}

TEST(Matrix, ProductDoesTheLeftOneFirst) {
    const CMatrix m = CMatrix::Scale(2, 2, 2) * CMatrix::Translation(1, 0, 0);
    EXPECT_TRUE(CVector(1, 1, 1) * m == CVector(3, 2, 2));
}

TEST(Matrix, ProductAddsInOrderWithDoubleDigits) {
    CMatrix a = CMatrix::Zero, b = CMatrix::Zero;
    const float row[4] = {1e15f, 1e15f, 1, 0.5f}, column[4] = {1e15f, -1e15f, 1, 1};
    for (int k = 0; k < 4; ++k) {
        a[k] = row[k];
        b[4 * k] = column[k];
    }
    EXPECT_EQ((a * b)[0], 1.5f);
    // The same terms in another order lose the 1.
    std::swap(a[1], a[2]);
    std::swap(b[4], b[8]);
    EXPECT_EQ((a * b)[0], 0.5f);
}

TEST(Matrix, ArraysOfPointsAndMatrices) {
    const CMatrix turn = CMatrix::Rotation(0.1f, 0.2f, 0.3f) * CMatrix::Translation(1, 2, 3);
    std::vector<CVector> points;
    std::vector<CMatrix> matrices;
    for (int i = 0; i < 11; ++i) {
        const auto f = static_cast<float>(i);
        points.push_back({f, 1 - f, f / 3});
        matrices.push_back(CMatrix::Scale(f, 2, 3));
    }
    std::vector<CVector> moved(points.size());
    turn.Transform(points.data(), moved.data(), points.size());
    std::vector<CMatrix> products(matrices.size());
    turn.Multiply(matrices.data(), products.data(), matrices.size());
    for (std::size_t i = 0; i < points.size(); ++i) {
        const CVector point = points[i] * turn;
        EXPECT_EQ(std::memcmp(&moved[i], &point, sizeof point), 0) << i;
        const CMatrix product = matrices[i] * turn;
        EXPECT_EQ(std::memcmp(&products[i], &product, sizeof product), 0) << i;
    }
    // In their places, and none at all.
    turn.Transform(points.data(), points.data(), points.size());
    EXPECT_EQ(std::memcmp(points.data(), moved.data(), points.size() * sizeof points[0]), 0);
    turn.Multiply(matrices.data(), matrices.data(), matrices.size());
    EXPECT_EQ(std::memcmp(matrices.data(), products.data(), products.size() * sizeof products[0]), 0);
    turn.Transform(nullptr, nullptr, 0);
    turn.Multiply(nullptr, nullptr, 0);
}

TEST(Matrix, ProductOfInfinitiesAndNan) {
    CMatrix a;
    a[0] = kInfinity;
    a[5] = kNan;
    const CMatrix m = a * CMatrix::Scale(2, 2, 2);
    EXPECT_EQ(m[0], kInfinity);
    EXPECT_TRUE(std::isnan(m[1]) && std::isnan(m[5]));
    EXPECT_EQ(m[10], 2);
    const float largest = std::numeric_limits<float>::max();
    EXPECT_EQ((CMatrix::Scale(largest, 1, 1) * CMatrix::Scale(-largest, 1, 1))[0], -kInfinity);
}

TEST(Matrix, TimesAndDividedByANumber) {
    CMatrix m = constant;
    ExpectElements(m * 2.0f, {0, 2, 4, 6, 8, 10, 12, 14, 16, 18, 20, 22, 24, 26, 28, 30});
    ExpectElements(m / 2.0f, {0, 0.5f, 1, 1.5f, 2, 2.5f, 3, 3.5f, 4, 4.5f, 5, 5.5f, 6, 6.5f, 7, 7.5f});
    EXPECT_EQ((m / 3.0f)[5], 5.0f / 3);
    EXPECT_EQ(&(m *= 3), &m);
    EXPECT_EQ(m[15], 45);
    EXPECT_EQ(&(m /= 9), &m);
    EXPECT_EQ(m[15], 5);
    m /= 0;
    EXPECT_TRUE(std::isnan(m[0]));
    EXPECT_EQ(m[1], kInfinity);
}

TEST(Matrix, Transpose) {
    ExpectElements(constant.Transpose(), {0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15});
    ExpectSameBits(constant.Transpose().Transpose(), constant);
}

TEST(Matrix, ComparisonLooksAtEveryElement) {
    for (int i = 0; i < 16; ++i) {
        CMatrix near, far, nan;
        near[i] -= 5e-8f;
        far[i] += 1e-6f;
        nan[i] = kNan;
        EXPECT_TRUE(near == CMatrix::Identity) << i;
        EXPECT_FALSE(near != CMatrix::Identity) << i;
        EXPECT_FALSE(far == CMatrix::Identity) << i;
        EXPECT_TRUE(far != CMatrix::Identity) << i;
        EXPECT_FALSE(nan == nan) << i;
    }
}

struct TSubMatrixRow {
    const char* name;
    int x, y, w, h, skipX, skipY;
    std::array<float, 16> expected;
};

// Of the matrix whose elements are their indices plus 20.
const TSubMatrixRow kSubMatrices[] = {
    {"all", 0, 0, 4, 4, -1, -1, {20, 21, 22, 23, 24, 25, 26, 27, 28, 29, 30, 31, 32, 33, 34, 35}},
    {"minor00", 0, 0, 3, 3, 0, 0, {25, 26, 27, 0, 29, 30, 31, 0, 33, 34, 35, 0, 0, 0, 0, 1}},
    {"minorColumn1Row2", 0, 0, 3, 3, 1, 2, {20, 22, 23, 0, 24, 26, 27, 0, 32, 34, 35, 0, 0, 0, 0, 1}},
    {"minor33IsOutsideTheRange", 0, 0, 3, 3, 3, 3, {20, 21, 22, 0, 24, 25, 26, 0, 28, 29, 30, 0, 0, 0, 0, 1}},
    {"block", 1, 2, 2, 1, -1, -1, {29, 30, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}},
    {"widenedPastTheEnd", 2, 2, 2, 2, 2, 3, {31, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}},
    {"onlyTheLeftOut", 1, 1, 1, 1, 1, 1, {26 + 4, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}},
    {"nothing", 0, 0, 0, 0, 0, 0, {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}},
    {"negativeSize", 2, 2, -1, -5, 2, 2, {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}},
    {"beginsBefore", -2, -1, 3, 3, -1, 9, {20, 21, 0, 0, 24, 25, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}},
    {"behind", 4, 5, 9, 9, 4, 5, {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}},
    {"largest",
     INT_MIN,
     INT_MIN,
     INT_MAX,
     INT_MAX,
     INT_MAX,
     INT_MIN,
     {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}},
    {"wide", -5, 1, INT_MAX, INT_MAX, 0, 1, {29, 30, 31, 0, 33, 34, 35, 0, 0, 0, 1, 0, 0, 0, 0, 1}},
    {"overflowing", INT_MAX, 0, INT_MAX, 4, INT_MAX, 0, {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}},
};

TEST(Matrix, SubMatrix) {
    CMatrix m;
    for (int i = 0; i < 16; ++i) m[i] = static_cast<float>(20 + i);
    for (const TSubMatrixRow& row : kSubMatrices) {
        SCOPED_TRACE(row.name);
        ExpectElements(m.SubMatrix(row.x, row.y, row.w, row.h, row.skipX, row.skipY), row.expected);
    }
}

} // namespace
} // namespace vorlund::test
