#include <cstdio>
#include <vorlund/Matrix.h>
using namespace vorlund;

// Where the corner of a turning cube is seen, and back from there.
int main() {
    // Vectors are on the left of a product: the leftmost matrix is applied first.
    const CMatrix cube =
        CMatrix::Scale(2, 2, 2) * CMatrix::Rotation(0.3f, 0.5f, 0) * CMatrix::Translation(0, 1, 10);
    const CVector corner = CVector(1, 1, 1) * cube;
    std::printf("the corner is at %.3f %.3f %.3f\n", corner.x, corner.y, corner.z);

    // The projection gives w in the fourth column, which is the depth; x and y are divided by it.
    const CMatrix camera = CMatrix::PerspectiveFov(1.0f, 1.5f, 1, 100);
    const CVector seen = corner * camera / corner.z;
    std::printf("it is seen at %.3f %.3f, depth %.3f\n", seen.x, seen.y, seen.z);

    const CVector back = corner * cube.Inverse();
    std::printf("and comes back to %.3f %.3f %.3f\n", back.x, back.y, back.z);

    std::printf("the cube is %.1f wide and turned by %.2f and %.2f\n", cube.GetScale(AXIS_X),
                cube.GetRotation(AXIS_X), cube.GetRotation(AXIS_Y));
    const bool isRight = (back - CVector(1, 1, 1)).Length() < 1e-5f && seen.z > 0 && seen.z < 1;
    return isRight ? 0 : 1;
}
