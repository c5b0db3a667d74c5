// Writes the golden cases to standard output. Run by hand when operations are added, and confirm_cases.py on
// what it writes:
//
//   cd tests/math/golden
//   library=../../../build/linux/bin
//   g++ -std=c++20 -O2 -I../../../include make_cases.cpp -L$library -lvorlund -o /tmp/make_cases
//   LD_LIBRARY_PATH=$library /tmp/make_cases >cases.inc
//   python3 confirm_cases.py cases.inc
#include "../GoldenOperations.h"

#include <bit>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <random>

using namespace vorlund::test;

namespace {

std::mt19937 random32(1);

float Between(float low, float high) {
    return low + (high - low) * static_cast<float>(random32() >> 8) / 16777216;
}

/// Of any size that a float has, denormal ones included; finite.
float Wild() {
    for (;;) {
        const auto value = std::bit_cast<float>(static_cast<std::uint32_t>(random32()));
        if (value - value == 0) return value;
    }
}

/// What `kind` asks for: numbers of everyday size, of any size, or whole ones with many zeros.
float Number(int kind) {
    switch (kind % 4) {
    case 0:
        return Wild();
    case 1:
        return static_cast<float>(static_cast<int>(random32() % 7)) - 3;
    default:
        return Between(-10, 10);
    }
}

float Angle(int kind) {
    switch (kind % 4) {
    case 0:
        return Between(-1000, 1000);
    case 1:
        // Near a multiple of pi/4.
        return static_cast<float>(static_cast<int>(random32() % 33) - 16) * 0.785398163f +
               Between(-1e-6f, 1e-6f);
    case 2:
        return std::bit_cast<float>(static_cast<std::uint32_t>(random32() % 0x447A0000));
    default:
        return Between(-4, 4);
    }
}

void Fill(TOperation operation, int kind, float* inputs, int count) {
    for (int i = 0; i < count; ++i) inputs[i] = Number(kind);
    switch (operation) {
    case TOperation::RotationX:
    case TOperation::RotationY:
    case TOperation::RotationZ:
    case TOperation::Rotation:
        for (int i = 0; i < count; ++i) inputs[i] = Angle(kind);
        break;
    case TOperation::Perspective:
        inputs[0] = Between(0.01f, 3.1f);
        inputs[1] = Between(0.25f, 4);
        inputs[2] = Between(0.01f, 2);
        inputs[3] = Between(10, 10000);
        break;
    case TOperation::Angles: {
        // Half of them rotations, scaled and moved.
        if (kind % 2) break;
        const auto m = vorlund::CMatrix::Rotation(Between(-4, 4), Between(-2, 2), Between(-4, 4)) *
                       vorlund::CMatrix::Translation(Between(-9, 9), Between(-9, 9), 1) * Between(0.1f, 9);
        for (int i = 0; i < 16; ++i) inputs[i] = m[i];
        break;
    }
    default:
        break;
    }
}

} // namespace

int main() {
    for (const TOperationRow& row : kOperations) {
        for (int kind = 0; kind < row.cases; ++kind) {
            float inputs[32];
            float outputs[16];
            Fill(row.operation, kind, inputs, row.inputs);
            row.run(inputs, outputs);
            std::printf("\"%s", row.name);
            for (int i = 0; i < row.inputs; ++i)
                std::printf(" %08X", std::bit_cast<std::uint32_t>(inputs[i]));
            std::printf(" =");
            for (int i = 0; i < row.outputs; ++i) {
                if (outputs[i] != outputs[i])
                    std::printf(" nan");
                else
                    std::printf(" %08X", std::bit_cast<std::uint32_t>(outputs[i]));
            }
            std::printf("\",\n");
        }
    }
}
