// Compiled once for each set of options, `VORLUND_VARIANT` being its name. `VORLUND_VARIANT_ATTRIBUTE` is an
// attribute of the function, for options that no macro shows.
#include "math/VectorOptions.h"

#include <vorlund/Matrix.h>

extern "C" vorlund::test::TEvaluateVectors VORLUND_VARIANT;

extern "C" VORLUND_VARIANT_ATTRIBUTE void VORLUND_VARIANT(const vorlund::test::TVectorCase* cases,
                                                          vorlund::test::TVectorResults* results, int count) {
    using vorlund::CVector;
    for (int i = 0; i < count; ++i) {
        const vorlund::test::TVectorCase& c = cases[i];
        float* const out = results[i];
        const CVector a(c.a[0], c.a[1], c.a[2]);
        const CVector b(c.b[0], c.b[1], c.b[2]);
        vorlund::CMatrix m;
        for (int e = 0; e < 16; ++e) m[e] = c.m[e];
        // Two operations that could be fused; equal operands; several quotients with one divisor.
        const CVector rows[] = {
            a * c.k + b,
            b - a * c.k,
            (a + b) * c.k - a * c.k,
            a - a,
            a / c.k,
            a / c.k * c.k,
            (a / c.k) / c.k,
            a.Cross(b),
            a * m,
            // The application's own products, which become floats before they are added.
            CVector(c.a[0] * c.b[0], c.a[1] * c.b[1], c.a[2] * c.b[2]) + b,
            CVector(static_cast<float>(c.d), 0.1f, 3.0f) + CVector(1, 0.1f, -3.0f) * 0.1f,
        };
        int at = 0;
        for (const CVector& row : rows) {
            out[at++] = row.x;
            out[at++] = row.y;
            out[at++] = row.z;
        }
        out[at++] = a * b;
        out[at++] = a.Dot(a);
        out[at++] = CVector(0.1f, 0.1f, 0.1f) * a;
        out[at++] = CVector(static_cast<float>(c.d), 0, 1) * b;
        out[at++] = a.Length2();
        out[at++] = a.Length();
        // The application's own difference of a product.
        out[at++] = (a * c.k).x - c.b[0];
    }
}
