// What the painter makes of times that take years to reach.
#include "vorlund/data/sources/PlasmaPainter.h"

#include "data/sources/PlasmaModel.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

namespace vorlund::test {
namespace {

TEST(PlasmaPainter, LateTimes) {
    for (const std::uint32_t time : {255U, 256U, 511U, 1000000007U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU}) {
        std::vector<std::uint32_t> pixels(33 * 21);
        PaintPlasma(pixels.data(), 33, 21, time);
        EXPECT_EQ(pixels, PlasmaFrame(33, 21, time)) << time;
    }
}

} // namespace
} // namespace vorlund::test
