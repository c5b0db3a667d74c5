/// \file
/// The operations of the golden cases: each takes floats and gives floats.
#pragma once

#include <vorlund/Matrix.h>
#include <vorlund/Vector.h>

namespace vorlund::test {

enum class TOperation {
    Product,
    Transform,
    Determinants,
    Inverse,
    RotationX,
    RotationY,
    RotationZ,
    Rotation,
    Perspective,
    Angles,
    Scales,
    Vectors,
    Normalize,
};

struct TOperationRow {
    TOperation operation;
    const char* name;
    int cases;
    int inputs;
    int outputs;
    void (*run)(const float* in, float* out);
};

inline CMatrix MatrixOf(const float* in) {
    CMatrix m;
    for (int i = 0; i < 16; ++i) m[i] = in[i];
    return m;
}

inline CVector VectorOf(const float* in) {
    return {in[0], in[1], in[2]};
}

inline void Put(const CMatrix& m, float* out) {
    for (int i = 0; i < 16; ++i) out[i] = m[i];
}

inline void Put(const CVector& vector, float* out) {
    for (int i = 0; i < 3; ++i) out[i] = vector[i];
}

constexpr TOperationRow kOperations[] = {
    {TOperation::Product, "product", 200, 32, 16,
     [](const float* in, float* out) { Put(MatrixOf(in) * MatrixOf(in + 16), out); }},
    {TOperation::Transform, "transform", 200, 19, 3,
     [](const float* in, float* out) { Put(VectorOf(in) * MatrixOf(in + 3), out); }},
    {TOperation::Determinants, "determinants", 200, 16, 3,
     [](const float* in, float* out) {
         for (int n = 2; n <= 4; ++n) out[n - 2] = MatrixOf(in).Determinant(n);
     }},
    {TOperation::Inverse, "inverse", 250, 16, 16,
     [](const float* in, float* out) { Put(MatrixOf(in).Inverse(), out); }},
    {TOperation::RotationX, "rotation_x", 100, 1, 16,
     [](const float* in, float* out) { Put(CMatrix::RotationX(in[0]), out); }},
    {TOperation::RotationY, "rotation_y", 100, 1, 16,
     [](const float* in, float* out) { Put(CMatrix::RotationY(in[0]), out); }},
    {TOperation::RotationZ, "rotation_z", 250, 1, 16,
     [](const float* in, float* out) { Put(CMatrix::RotationZ(in[0]), out); }},
    {TOperation::Rotation, "rotation", 250, 3, 16,
     [](const float* in, float* out) { Put(CMatrix::Rotation(in[0], in[1], in[2]), out); }},
    {TOperation::Perspective, "perspective", 200, 4, 16,
     [](const float* in, float* out) { Put(CMatrix::PerspectiveFov(in[0], in[1], in[2], in[3]), out); }},
    {TOperation::Angles, "angles", 300, 16, 3,
     [](const float* in, float* out) {
         for (const TAxis axis : {AXIS_X, AXIS_Y, AXIS_Z}) out[axis] = MatrixOf(in).GetRotation(axis);
     }},
    {TOperation::Scales, "scales", 100, 16, 16,
     [](const float* in, float* out) {
         CMatrix m = MatrixOf(in);
         m.Normalize();
         Put(m, out);
         for (const TAxis axis : {AXIS_X, AXIS_Y, AXIS_Z}) out[4 * axis + 3] = MatrixOf(in).GetScale(axis);
     }},
    {TOperation::Vectors, "vectors", 200, 7, 15,
     [](const float* in, float* out) {
         const CVector a = VectorOf(in), b = VectorOf(in + 3);
         Put(a + b, out);
         Put(a - b, out + 3);
         Put(a * in[6], out + 6);
         Put(a / in[6], out + 9);
         Put(a.Cross(b), out + 12);
     }},
    {TOperation::Normalize, "normalize", 200, 6, 6,
     [](const float* in, float* out) {
         CVector a = VectorOf(in);
         out[3] = a * VectorOf(in + 3);
         out[4] = a.Length2();
         out[5] = a.Length();
         a.Normalize();
         Put(a, out);
     }},
};

} // namespace vorlund::test
