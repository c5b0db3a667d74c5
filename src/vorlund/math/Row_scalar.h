/// \file
/// A row of a matrix as an array of four doubles, for every processor. What each lane computes is plain
/// double arithmetic; the rows for certain processors give the same bits.
#pragma once

namespace vorlund {
namespace {

class CRowScalar {
public:
    CRowScalar(double a, double b, double c, double d) : lanes_{a, b, c, d} {}

    /// Four floats from an address of any alignment.
    static CRowScalar Load(const float* row) { return {row[0], row[1], row[2], row[3]}; }

    /// Lanes I0 to I3 in lanes 0 to 3.
    template <int I0, int I1, int I2, int I3> CRowScalar Shuffle() const {
        return {lanes_[I0], lanes_[I1], lanes_[I2], lanes_[I3]};
    }

    void Store(float* row) const {
        for (int i = 0; i < 4; ++i) row[i] = static_cast<float>(lanes_[i]);
    }
    /// Each lane as its nearest float.
    CRowScalar Round() const {
        float row[4];
        Store(row);
        return Load(row);
    }

    /// Lane 0 - lane 1 + lane 2 - lane 3, from left to right, rounded.
    float AlternatingSum() const { return static_cast<float>(lanes_[0] - lanes_[1] + lanes_[2] - lanes_[3]); }

    /// The inverse from the determinants of the minors and that of the matrix: element (i, j) is (-1)^(i+j)
    /// times minor (j, i), divided. A quotient of two floats needs no doubles.
    static void DivideAdjugate(const float* minors, float determinant, float* inverse) {
        for (int i = 0; i < 4; ++i) {
            for (int j = 0; j < 4; ++j) {
                const float minor = minors[4 * j + i];
                inverse[4 * i + j] = ((i + j) % 2 ? -minor : minor) / determinant;
            }
        }
    }

    CRowScalar operator*(const CRowScalar& b) const {
        return {lanes_[0] * b.lanes_[0], lanes_[1] * b.lanes_[1], lanes_[2] * b.lanes_[2],
                lanes_[3] * b.lanes_[3]};
    }
    /// This plus, or minus, a product of two rows of floats.
    CRowScalar Plus(const CRowScalar& a, const CRowScalar& b) const {
        const CRowScalar p = a * b;
        return {lanes_[0] + p.lanes_[0], lanes_[1] + p.lanes_[1], lanes_[2] + p.lanes_[2],
                lanes_[3] + p.lanes_[3]};
    }
    CRowScalar Minus(const CRowScalar& a, const CRowScalar& b) const {
        const CRowScalar p = a * b;
        return {lanes_[0] - p.lanes_[0], lanes_[1] - p.lanes_[1], lanes_[2] - p.lanes_[2],
                lanes_[3] - p.lanes_[3]};
    }

private:
    double lanes_[4];
};

} // namespace
} // namespace vorlund
