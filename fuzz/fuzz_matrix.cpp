/// \file
/// Vectors and matrices of arbitrary floats and ints against models in plain doubles, and identities that
/// hold bit for bit.
#include "FuzzInput.h"

#include <vorlund/Matrix.h>
#include <vorlund/Vector.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace {

namespace fuzz = vorlund::fuzz;
using vorlund::CMatrix;
using vorlund::CVector;
using vorlund::TAxis;
using vorlund::fuzz::Check;

/// What this target draws from an input.
class CMatrixInput : public fuzz::CInput {
public:
    using CInput::CInput;

    std::uint32_t Word() {
        std::uint32_t word = 0;
        for (int i = 0; i < 4; ++i) word |= std::uint32_t{Byte()} << (8 * i);
        return word;
    }
    int Int() { return static_cast<int>(Word()); }
    float Float() { return std::bit_cast<float>(Word()); }
    CVector Vector() {
        CVector v;
        for (int i = 0; i < 3; ++i) v[i] = Float();
        return v;
    }
    CMatrix Matrix() {
        CMatrix m;
        for (int i = 0; i < 16; ++i) m[i] = Float();
        return m;
    }
};

/// Equal bits, or both NaN.
bool IsSame(float a, float b) {
    return (std::isnan(a) && std::isnan(b)) ||
           std::bit_cast<std::uint32_t>(a) == std::bit_cast<std::uint32_t>(b);
}

void CheckSame(const CMatrix& a, const CMatrix& b) {
    for (int i = 0; i < 16; ++i) Check(IsSame(a[i], b[i]));
}

void CheckProduct(const CMatrix& a, const CMatrix& b) {
    CMatrix model;
    for (int row = 0; row < 4; ++row) {
        for (int column = 0; column < 4; ++column) {
            double sum = double{a[4 * row]} * b[column];
            for (int k = 1; k < 4; ++k) sum += double{a[4 * row + k]} * b[4 * k + column];
            model[4 * row + column] = static_cast<float>(sum);
        }
    }
    CheckSame(a * b, model);
    CMatrix product = a;
    product *= b;
    CheckSame(product, model);
}

void CheckTransform(const CVector& v, const CMatrix& m) {
    const CVector point = v * m;
    for (int column = 0; column < 3; ++column) {
        const double sum = double{v.x} * m[column] + double{v.y} * m[4 + column] +
                           double{v.z} * m[8 + column] + m[12 + column];
        Check(IsSame(point[column], static_cast<float>(sum)));
    }
}

/// The definition: the left-out ranges in 64 bits, element by element.
void CheckSubMatrix(const CMatrix& m, int x, int y, int w, int h, int skipX, int skipY) {
    const auto isIn = [](int place, std::int64_t from, std::int64_t count, int skip) {
        const bool isWider = skip >= from && skip < from + count;
        return place != skip && place >= from && place < from + count + isWider;
    };
    CMatrix model;
    int toRow = 0;
    for (int row = 0; row < 4; ++row) {
        if (!isIn(row, y, h, skipY)) continue;
        int toColumn = 0;
        for (int column = 0; column < 4; ++column)
            if (isIn(column, x, w, skipX)) model[4 * toRow + toColumn++] = m[4 * row + column];
        ++toRow;
    }
    CheckSame(m.SubMatrix(x, y, w, h, skipX, skipY), model);
}

float Determinant(const CMatrix& m, int n) {
    if (n == 2) return static_cast<float>(double{m[0]} * m[5] - double{m[1]} * m[4]);
    double sum = 0;
    for (int k = 0; k < n; ++k) {
        const double part = double{m[k]} * Determinant(m.SubMatrix(0, 0, n - 1, n - 1, k, 0), n - 1);
        sum = k == 0 ? part : k % 2 ? sum - part : sum + part;
    }
    return static_cast<float>(sum);
}

void CheckInverse(const CMatrix& m) {
    for (int n = 2; n <= 4; ++n) Check(IsSame(m.Determinant(n), Determinant(m, n)));
    const double determinant = m.Determinant(4);
    const CMatrix inverse = m.Inverse();
    if (std::fabs(determinant) < 0.001) {
        CheckSame(inverse, CMatrix::Identity);
        return;
    }
    for (int i = 0; i < 4; ++i) {
        for (int j = 0; j < 4; ++j) {
            const double sign = (i + j) % 2 ? -1 : 1;
            const double minor = Determinant(m.SubMatrix(0, 0, 3, 3, i, j), 3);
            Check(IsSame(inverse[4 * i + j], static_cast<float>(sign * minor / determinant)));
        }
    }
}

void CheckAngles(CMatrix m, int axis) {
    for (int i = 0; i < 3; ++i) {
        const auto known = static_cast<TAxis>(i);
        const float angle = m.GetRotation(known);
        Check(std::isnan(angle) || std::fabs(angle) < 3.1415930f);
        Check(std::isnan(m.GetScale(known)) || m.GetScale(known) >= 0);
    }
    if (axis < 0 || axis > 2) {
        Check(m.GetScale(static_cast<TAxis>(axis)) == 1);
        Check(m.GetRotation(static_cast<TAxis>(axis)) == 0);
    }
    m.Normalize();
}

void CheckRotations(float x, float y, float z) {
    CheckSame(CMatrix::RotationX(x), CMatrix::RotationX(x).Transpose());
    // Turning back is the transpose, for every angle.
    CheckSame(CMatrix::RotationY(-x), CMatrix::RotationY(x).Transpose());
    CheckSame(CMatrix::RotationZ(-x), CMatrix::RotationZ(x).Transpose());
    for (const CMatrix& m : {CMatrix::Rotation(x, y, z), CMatrix::RotationZ(z)}) {
        for (int i = 0; i < 16; ++i) Check(std::isnan(m[i]) || std::fabs(m[i]) <= 1.000001f);
    }
    const CMatrix perspective = CMatrix::PerspectiveFov(x, y, z, x);
    Check(perspective[11] == 1 && perspective[15] == 0);
}

void CheckVectors(const CVector& a, const CVector& b, float factor) {
    for (int i = 0; i < 3; ++i) {
        Check(IsSame((a + b)[i], static_cast<float>(double{a[i]} + b[i])));
        Check(IsSame((a - b)[i], static_cast<float>(double{a[i]} - b[i])));
        Check(IsSame((a * factor)[i], static_cast<float>(double{a[i]} * factor)));
        Check(IsSame((a / factor)[i], static_cast<float>(double{a[i]} / factor)));
    }
    Check(IsSame(a * b, a.Dot(b)) && IsSame(a * b, b * a));
    Check(IsSame(a.Length2(), a * a));
    CVector normal = a;
    normal.Normalize();
    if (a.Length() > 1e-30f && a.Length() < 1e30f) Check(std::fabs(normal.Length() - 1) < 1e-6f);
    Check((a == b) != (a != b));
    const bool isNumber = a.x == a.x && a.y == a.y && a.z == a.z;
    Check((a == a) == isNumber);
}

void CheckElements(CMatrix& m, CVector& v, int i) {
    const CMatrix& matrixReader = m;
    const CVector& vectorReader = v;
    if (i < 0 || i > 15) {
        Check(matrixReader[i] == 0 && &m[i] == &m[16]);
    } else {
        Check(&m[i] == &m[0] + i);
    }
    if (i < 0 || i > 2) Check(vectorReader[i] == 0 && &v[i] == &v[3]);
    if (i < 2 || i > 4) Check(m.Determinant(i) == 0 || i == 2);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    CMatrixInput input(data, size);
    for (int steps = 0; !input.IsEmpty() && steps < 8; ++steps) {
        CMatrix a = input.Matrix();
        const CMatrix b = input.Matrix();
        CVector v = input.Vector();
        const CVector w = input.Vector();
        CheckProduct(a, b);
        CheckTransform(v, a);
        CheckSame(a.Transpose().Transpose(), a);
        CheckInverse(a);
        CheckVectors(v, w, b[0]);
        CheckRotations(v.x, v.y, v.z);
        int numbers[6];
        for (int& number : numbers) number = input.Int();
        CheckAngles(b, numbers[0]);
        CheckElements(a, v, numbers[0]);
        CheckSubMatrix(a, numbers[0], numbers[1], numbers[2], numbers[3], numbers[4], numbers[5]);
        // The same numbers made small, where the ranges meet the matrix.
        for (int& number : numbers) number = static_cast<signed char>(number) / 16;
        CheckSubMatrix(a, numbers[0], numbers[1], numbers[2], numbers[3], numbers[4], numbers[5]);
    }
    return 0;
}
