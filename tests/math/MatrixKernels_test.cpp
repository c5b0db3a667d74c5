// Every set of loops that the processor has, against the reference, bit for bit.
#include "vorlund/math/MatrixKernels.h"
#include "vorlund/math/Row_scalar.h"

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <limits>
#include <random>
#include <string>
#include <vector>

namespace vorlund::test {
namespace {

using TElements = std::array<float, 16>;

/// Everyday numbers, numbers of all sizes, and now and then zeros, infinities and NaN.
float Number(std::mt19937& random, int kind) {
    constexpr float kSpecial[] = {0.0f,
                                  -0.0f,
                                  1.0f,
                                  std::numeric_limits<float>::infinity(),
                                  -std::numeric_limits<float>::infinity(),
                                  std::numeric_limits<float>::quiet_NaN(),
                                  std::numeric_limits<float>::max(),
                                  std::numeric_limits<float>::denorm_min()};
    if (kind == 2 && random() % 4 == 0) return kSpecial[random() % std::size(kSpecial)];
    if (kind == 1) return std::bit_cast<float>(static_cast<std::uint32_t>(random()));
    return static_cast<float>(random() % 2000001) / 100000 - 10;
}

TElements Numbers(std::mt19937& random, int kind) {
    TElements elements;
    for (float& element : elements) element = Number(random, kind);
    return elements;
}

void ExpectSame(const float* actual, const float* expected, int count, const char* what) {
    for (int i = 0; i < count; ++i) {
        if (std::isnan(actual[i]) && std::isnan(expected[i])) continue;
        ASSERT_EQ(std::bit_cast<std::uint32_t>(actual[i]), std::bit_cast<std::uint32_t>(expected[i]))
            << what << ", element " << i << ": " << actual[i] << " and " << expected[i];
    }
}

void ExpectSame(CMatrix actual, CMatrix expected, const char* what) {
    ExpectSame(&actual[0], &expected[0], 16, what);
}

CMatrix MatrixOf(const TElements& elements) {
    CMatrix m;
    for (int i = 0; i < 16; ++i) m[i] = elements[static_cast<std::size_t>(i)];
    return m;
}

std::vector<const TMatrixSet*> SupportedSets() {
    std::vector<const TMatrixSet*> sets;
    for (const TMatrixSet* set : GetMatrixSets())
        if (set->isSupported()) sets.push_back(set);
    return sets;
}

/// Each supported set in turn; the name of the test says which one ran.
class MatrixKernels : public testing::TestWithParam<const TMatrixSet*> {};

INSTANTIATE_TEST_SUITE_P(Sets, MatrixKernels, testing::ValuesIn(SupportedSets()),
                         [](const auto& set) { return std::string(set.param->name); });

TEST_P(MatrixKernels, GivesTheBitsOfTheReference) {
    const TMatrixRoutines& set = GetParam()->routines;
    const TMatrixRoutines& reference = kScalarMatrices.routines;
    std::mt19937 random(1);
    for (int i = 0; i < 6000 && !HasFatalFailure(); ++i) {
        const CMatrix left = MatrixOf(Numbers(random, i % 3)), right = MatrixOf(Numbers(random, i % 3));
        ExpectSame(set.multiply(left, right), reference.multiply(left, right), "product");
        const float determinants[] = {set.determinant(left), reference.determinant(left)};
        ExpectSame(&determinants[0], &determinants[1], 1, "determinant");
        ExpectSame(set.invert(left), reference.invert(left), "inverse");
    }
}

TEST_P(MatrixKernels, ArraysHaveTheBitsOfSingleProducts) {
    const TMatrixRoutines& set = GetParam()->routines;
    std::mt19937 random(2);
    for (std::size_t count = 0; count < 200 && !HasFatalFailure(); ++count) {
        const int kind = static_cast<int>(count % 3);
        const CMatrix matrix = MatrixOf(Numbers(random, kind));
        const auto number = [&] { return Number(random, kind); };
        std::vector<CVector> points;
        std::vector<CMatrix> matrices;
        for (std::size_t i = 0; i < count; ++i) {
            points.push_back({number(), number(), number()});
            matrices.push_back(MatrixOf(Numbers(random, kind)));
        }
        // One more, which stays as it is.
        const CVector guard(1, 2, 3);
        std::vector<CVector> moved(count + 1, guard), inPlace = points;
        std::vector<CMatrix> products(count + 1), productsInPlace = matrices;
        set.transformEach(matrix, points.data(), moved.data(), count);
        set.transformEach(matrix, inPlace.data(), inPlace.data(), count);
        set.multiplyEach(matrix, matrices.data(), products.data(), count);
        set.multiplyEach(matrix, productsInPlace.data(), productsInPlace.data(), count);
        for (std::size_t i = 0; i < count && !HasFatalFailure(); ++i) {
            const CVector point = points[i] * matrix;
            ExpectSame(&moved[i].x, &point.x, 3, "point");
            ExpectSame(&inPlace[i].x, &point.x, 3, "point in its place");
            const CMatrix product = kScalarMatrices.routines.multiply(matrices[i], matrix);
            ExpectSame(products[i], product, "product");
            ExpectSame(productsInPlace[i], product, "product in its place");
        }
        ExpectSame(&moved[count].x, &guard.x, 3, "behind the points");
        ExpectSame(products[count], CMatrix::Identity, "behind the products");
    }
}

TEST(MatrixKernelsReference, WritesNothingBehindTheInverse) {
    constexpr float kGuard = 12345;
    // Both with room behind the sixteen elements.
    std::array<float, 32> minors, inverse;
    minors.fill(3);
    inverse.fill(kGuard);
    CRowScalar::DivideAdjugate(minors.data(), 2, inverse.data());
    for (std::size_t i = 0; i < inverse.size(); ++i) {
        const float quotient = (i / 4 + i) % 2 ? -1.5f : 1.5f;
        EXPECT_EQ(inverse[i], i < 16 ? quotient : kGuard) << i;
    }
}

TEST(MatrixKernelsSets, TheReferenceComesFirst) {
    ASSERT_EQ(GetMatrixSets().front(), &kScalarMatrices);
    EXPECT_TRUE(kScalarMatrices.isSupported());
}

TEST(MatrixKernelsSets, TheLastSupportedSetIsInUse) {
    EXPECT_EQ(matrixKernels, SupportedSets().back());
}

} // namespace
} // namespace vorlund::test
