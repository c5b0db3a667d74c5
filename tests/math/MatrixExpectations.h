/// \file
/// Comparing matrices without a tolerance.
#pragma once

#include <vorlund/Matrix.h>

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cstdint>

namespace vorlund::test {

/// Equal numbers; 0 and -0 are equal.
inline void ExpectElements(const CMatrix& m, const std::array<float, 16>& expected) {
    for (int i = 0; i < 16; ++i) EXPECT_EQ(m[i], expected[static_cast<std::size_t>(i)]) << "element " << i;
}

inline void ExpectSameBits(const CMatrix& a, const CMatrix& b) {
    const auto x = std::bit_cast<std::array<std::uint32_t, 16>>(a);
    const auto y = std::bit_cast<std::array<std::uint32_t, 16>>(b);
    for (std::size_t i = 0; i < 16; ++i)
        EXPECT_EQ(x[i], y[i]) << "element " << i << ": " << a[static_cast<int>(i)] << " and "
                              << b[static_cast<int>(i)];
}

} // namespace vorlund::test
