#include <vorlund/Matrix.h>
#include <vorlund/Vector.h>

#include <gtest/gtest.h>

#include <bit>
#include <climits>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <type_traits>

namespace {

using vorlund::CMatrix;
using vorlund::CVector;

constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr float kMax = std::numeric_limits<float>::max();
constexpr float kSmallest = std::numeric_limits<float>::denorm_min();

static_assert(sizeof(CVector) == 12);
static_assert(offsetof(CVector, x) == 0 && offsetof(CVector, y) == 4 && offsetof(CVector, z) == 8);
static_assert(std::is_trivially_copyable_v<CVector> && std::is_standard_layout_v<CVector>);
constinit CVector constant(1, 2, 3);

void ExpectIs(const CVector& v, float x, float y, float z) {
    EXPECT_EQ(v.x, x);
    EXPECT_EQ(v.y, y);
    EXPECT_EQ(v.z, z);
}

TEST(Vector, ConstructionAndConstants) {
    ExpectIs(CVector(), 0, 0, 0);
    ExpectIs(constant, 1, 2, 3);
    ExpectIs(CVector::Zero, 0, 0, 0);
    ExpectIs(CVector::Up, 0, 1, 0);
    const CVector source(4, 5, 6);
    CVector copy(source);
    ExpectIs(copy, 4, 5, 6);
    EXPECT_EQ(&(copy = constant), &copy);
    ExpectIs(copy, 1, 2, 3);
}

TEST(Vector, ElementsByIndex) {
    CVector v(1, 2, 3);
    const CVector& reader = v;
    for (int i = 0; i < 3; ++i) EXPECT_EQ(reader[i], static_cast<float>(i + 1));
    v[0] = 4;
    v[1] = 5;
    v[2] = 6;
    ExpectIs(v, 4, 5, 6);
    EXPECT_EQ(&v[1], &v.y);
}

TEST(Vector, OutsideIndicesShareACell) {
    CVector v(1, 2, 3);
    const CVector& reader = v;
    CVector other;
    float& cell = v[3];
    EXPECT_EQ(cell, 0);
    cell = 7;
    for (const int i : {3, 4, -1, 1000, INT_MAX, INT_MIN}) {
        EXPECT_EQ(&v[i], &cell);
        EXPECT_EQ(&other[i], &cell);
        EXPECT_EQ(reader[i], 0);
    }
    CMatrix m;
    EXPECT_NE(&m[16], &cell);
    cell = 0;
    ExpectIs(v, 1, 2, 3);
}

TEST(Vector, ComponentwiseArithmetic) {
    const CVector a(1, 2, 3), b(10, 30, 50);
    ExpectIs(a + b, 11, 32, 53);
    ExpectIs(b - a, 9, 28, 47);
    ExpectIs(a * 2.0f, 2, 4, 6);
    ExpectIs(b / 4.0f, 2.5f, 7.5f, 12.5f);
    CVector v = a;
    EXPECT_EQ(&(v += b), &v);
    ExpectIs(v, 11, 32, 53);
    EXPECT_EQ(&(v -= a), &v);
    ExpectIs(v, 10, 30, 50);
    EXPECT_EQ(&(v *= 3), &v);
    ExpectIs(v, 30, 90, 150);
    EXPECT_EQ(&(v /= 10), &v);
    ExpectIs(v, 3, 9, 15);
    v += v;
    ExpectIs(v, 6, 18, 30);
    v -= v;
    ExpectIs(v, 0, 0, 0);
}

TEST(Vector, DivisionRoundsOnceAndMayBeByZero) {
    // A multiplication by a rounded 1/3 would give another last digit.
    ExpectIs(CVector(5, 7, 10) / 3.0f, 5.0f / 3, 7.0f / 3, 10.0f / 3);
    const CVector v = CVector(1, -1, 0) / 0.0f;
    EXPECT_EQ(v.x, kInfinity);
    EXPECT_EQ(v.y, -kInfinity);
    EXPECT_TRUE(std::isnan(v.z));
}

TEST(Vector, Products) {
    const CVector a(1, 2, 3), b(4, -5, 6);
    EXPECT_EQ(a * b, 12);
    EXPECT_EQ(a.Dot(b), 12);
    ExpectIs(a.Cross(b), 27, 6, -13);
    ExpectIs(b.Cross(a), -27, -6, 13);
    ExpectIs(CVector::Up.Cross(CVector(1, 0, 0)), 0, 0, -1);
    ExpectIs(CVector(1, 0, 0).Cross(CVector::Up), 0, 0, 1);
    ExpectIs(a.Cross(a), 0, 0, 0);
}

TEST(Vector, SumsKeepDoubleDigits) {
    // In single precision the 1 would be lost beside 2^24 and 10^16.
    EXPECT_EQ(CVector(16777216, 1, -16777216).Dot(CVector(1, 1, 1)), 1);
    EXPECT_EQ(CVector(1e8f, 1, 1e8f).Dot(CVector(1e7f, 1, -1e7f)), 1);
    ExpectIs(CVector(0, 16777217, 3).Cross(CVector(0, 5592405, 1)), 1, 0, 0);
    // Squares that no float holds, under a root that one does.
    EXPECT_EQ(CVector(3e30f, 4e30f, 0).Length2(), kInfinity);
    EXPECT_FLOAT_EQ(CVector(3e30f, 4e30f, 0).Length(), 5e30f);
    EXPECT_EQ(CVector(kSmallest, 0, 0).Length2(), 0);
    EXPECT_EQ(CVector(kSmallest, 0, 0).Length(), kSmallest);
}

TEST(Vector, LengthAndNormalize) {
    CVector v(2, 3, 6);
    EXPECT_EQ(v.Length2(), 49);
    EXPECT_EQ(v.Length(), 7);
    v.Normalize();
    ExpectIs(v, static_cast<float>(2 * (1.0 / 7)), static_cast<float>(3 * (1.0 / 7)),
             static_cast<float>(6 * (1.0 / 7)));
    CVector zero;
    zero.Normalize();
    ExpectIs(zero, 0, 0, 0);
    CVector tiny(0, -kSmallest, 0);
    tiny.Normalize();
    ExpectIs(tiny, 0, -1, 0);
    CVector tooLong(kMax, kMax, 0);
    tooLong.Normalize();
    ExpectIs(tooLong, 0, 0, 0);
    CVector broken(kNan, 1, 0);
    broken.Normalize();
    EXPECT_TRUE(std::isnan(broken.x) && std::isnan(broken.y) && std::isnan(broken.z));
}

TEST(Vector, TimesMatrixIsAPoint) {
    ExpectIs(CVector(1, 2, 3) * CMatrix::Translation(10, 20, 30), 11, 22, 33);
    const CMatrix m(1, 2, 3, 100, 4, 5, 6, 200, 7, 8, 9, 300, 10, 11, 12, 400);
    ExpectIs(CVector(1, 10, 100) * m, 751, 863, 975);
    CVector v(1, 10, 100);
    EXPECT_EQ(&(v *= m), &v);
    ExpectIs(v, 751, 863, 975);
    ExpectIs(CVector::Zero * m, 10, 11, 12);
}

TEST(Vector, TimesMatrixIgnoresTheFourthColumn) {
    CMatrix m = CMatrix::Scale(2, 3, 4);
    for (const int i : {3, 7, 11, 15}) m[i] = kNan;
    ExpectIs(CVector(1, 1, 1) * m, 2, 3, 4);
}

TEST(Vector, TimesMatrixAddsInOrder) {
    // 10^30 - 10^30 + 1 + 0, in this order only.
    const CMatrix m(1e15f, 0, 0, 0, -1e15f, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 1);
    EXPECT_EQ((CVector(1e15f, 1e15f, 1) * m).x, 1);
    const CMatrix other(1e15f, 0, 0, 0, 1, 0, 0, 0, -1e15f, 0, 0, 0, 0, 0, 0, 1);
    EXPECT_EQ((CVector(1e15f, 1, 1e15f) * other).x, 0);
}

TEST(Vector, ComparisonHasATolerance) {
    const CVector v(0.5f, 0.5f, 0.5f);
    for (int i = 0; i < 3; ++i) {
        CVector near = v, far = v;
        near[i] += 5e-8f;
        far[i] += 1e-6f;
        ASSERT_NE(near[i], v[i]);
        EXPECT_TRUE(v == near && near == v);
        EXPECT_FALSE(v != near);
        EXPECT_FALSE(v == far || far == v);
        EXPECT_TRUE(v != far);
    }
}

TEST(Vector, ToleranceBoundsAreIncluded) {
    const auto tolerance = std::bit_cast<float>(std::uint32_t{0x33D6BF95});
    const CVector zero;
    EXPECT_TRUE(CVector(tolerance, -tolerance, 0) == zero);
    EXPECT_TRUE(zero == CVector(tolerance, -tolerance, 0));
    EXPECT_FALSE(CVector(std::nextafter(tolerance, 1.0f), 0, 0) == zero);
    EXPECT_FALSE(CVector(0, std::nextafter(-tolerance, -1.0f), 0) == zero);
    // Next to 1, neighbours are 1.2e-7 apart upward and 6e-8 downward.
    EXPECT_FALSE(CVector(std::nextafter(1.0f, 2.0f), 0, 0) == CVector(1, 0, 0));
    EXPECT_TRUE(CVector(std::nextafter(1.0f, 0.0f), 0, 0) == CVector(1, 0, 0));
}

TEST(Vector, ComparisonOfInfinitiesAndNan) {
    EXPECT_TRUE(CVector(kInfinity, -kInfinity, 0) == CVector(kInfinity, -kInfinity, 0));
    EXPECT_FALSE(CVector(kInfinity, 0, 0) == CVector(-kInfinity, 0, 0));
    EXPECT_FALSE(CVector(kInfinity, 0, 0) == CVector(kMax, 0, 0));
    const CVector nan(0, kNan, 0);
    EXPECT_FALSE(nan == nan);
    EXPECT_TRUE(nan != nan);
    EXPECT_TRUE(CVector(-0.0f, 0, 0) == CVector(0, 0, 0));
}

} // namespace
