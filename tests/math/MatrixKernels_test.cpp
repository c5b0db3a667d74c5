// Every set of loops that the processor has, against the plain one, bit for bit.
#include "vorlund/math/MatrixKernels.h"

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <iterator>
#include <limits>
#include <random>
#include <string>

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

void ExpectEqualSets(const TMatrixKernels& set, const TMatrixKernels& plain, const TElements& a,
                     const TElements& b) {
    const CMatrix left = MatrixOf(a), right = MatrixOf(b);
    ExpectSame(set.multiply(left, right), plain.multiply(left, right), "product");
    const float determinants[] = {set.determinant(left), plain.determinant(left)};
    ExpectSame(&determinants[0], &determinants[1], 1, "determinant");
    ExpectSame(set.invert(left), plain.invert(left), "inverse");
}

TEST(MatrixKernels, AllSetsGiveTheSameBits) {
    std::string tested;
    for (const TMatrixKernels* const* set = kAllMatrixKernels; *set; ++set) {
        if (!(*set)->isSupported()) continue;
        tested += std::string(" ") + (*set)->name;
        SCOPED_TRACE((*set)->name);
        std::mt19937 random(1);
        for (int i = 0; i < 6000 && !HasFatalFailure(); ++i) {
            const TElements a = Numbers(random, i % 3), b = Numbers(random, i % 3);
            ExpectEqualSets(**set, kPlainMatrixKernels, a, b);
        }
    }
    RecordProperty("sets", tested);
    std::printf("sets:%s; in use: %s\n", tested.c_str(), matrixKernels->name);
}

TEST(MatrixKernels, TheLastSupportedSetIsInUse) {
    const TMatrixKernels* last = nullptr;
    for (const TMatrixKernels* const* set = kAllMatrixKernels; *set; ++set)
        if ((*set)->isSupported()) last = *set;
    EXPECT_EQ(matrixKernels, last);
}

} // namespace
} // namespace vorlund::test
