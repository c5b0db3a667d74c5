// The reduction of large angles by M. H. Payne and R. N. Hanek, "Radian reduction for trigonometric
// functions", 1983: of the product of the angle and 2/pi, only those digits are computed that say what is
// left of it modulo 4.
#include "vorlund/math/Trigonometry.h"

#include <cmath>
#include <cstdint>

namespace vorlund {
namespace {

/// 64 zero digits and then the first 1216 binary digits of 2/pi, which is enough for every double.
constexpr std::uint32_t kTwoOverPi[] = {
    0x00000000, 0x00000000, 0xA2F9836E, 0x4E441529, 0xFC2757D1, 0xF534DDC0, 0xDB629599, 0x3C439041,
    0xFE5163AB, 0xDEBBC561, 0xB7246E3A, 0x424DD2E0, 0x06492EEA, 0x09D1921C, 0xFE1DEB1C, 0xB129A73E,
    0xE88235F5, 0x2EBB4484, 0xE99C7026, 0xB45F7E41, 0x3991D639, 0x835339F4, 0x9C845F8B, 0xBDF9283B,
    0x1FF897FF, 0xDE05980F, 0xEF2F118B, 0x5A0A6D1F, 0x6D367ECF, 0x27CB09B7, 0x4F463F66, 0x9E5FEA2D,
    0x7527BAC7, 0xEBE5F17B, 0x3D0739F7, 0x8A5292EA, 0x6BFB5FB1, 0x1F8D5D08, 0x56033046, 0xFC7B6BAB,
};
constexpr int kLeadingZeros = 64;

/// Six words hold 2 digits before the point and 190 behind it. An angle has 53 digits, and no double comes
/// nearer than 2^-62 to a multiple of pi/2, so more than 70 good ones are left.
constexpr int kWords = 6;

/// The word of 32 digits that begins at digit `place`.
std::uint32_t DigitsAt(int place) {
    const int shift = place % 32;
    const std::uint64_t pair =
        static_cast<std::uint64_t>(kTwoOverPi[place / 32]) << 32 | kTwoOverPi[place / 32 + 1];
    return static_cast<std::uint32_t>(pair << shift >> 32);
}

} // namespace

TReducedAngle ReduceLargeAngle(double angle) {
    // The angle is digits * 2^exponent.
    int exponent;
    const auto digits = static_cast<std::uint64_t>(std::ldexp(std::frexp(std::fabs(angle), &exponent), 53));
    exponent -= 53;
    const std::uint32_t factor[2] = {static_cast<std::uint32_t>(digits),
                                     static_cast<std::uint32_t>(digits >> 32)};

    // Digits of 2/pi before this place give multiples of 4. Lowest words first, what is carried out is
    // dropped.
    const int place = kLeadingZeros + exponent - 2;
    std::uint32_t product[kWords] = {};
    for (int f = 0; f < 2; ++f) {
        std::uint64_t carry = 0;
        for (int i = f; i < kWords; ++i) {
            const std::uint64_t word = DigitsAt(place + 32 * (kWords - 1 - (i - f)));
            carry += word * factor[f] + product[i];
            product[i] = static_cast<std::uint32_t>(carry);
            carry >>= 32;
        }
    }

    // The nearest multiple: a fraction of a half and more counts down from the next one.
    unsigned int quadrant = product[kWords - 1] >> 30;
    const bool isBelow = product[kWords - 1] & 0x20000000;
    if (isBelow) ++quadrant;
    double fraction = 0;
    for (int i = 1; i < kWords; ++i) {
        std::uint32_t word = i == kWords - 1 ? product[i] & 0x3FFFFFFF : product[i];
        if (isBelow) word = i == kWords - 1 ? 0x3FFFFFFF - word : ~word;
        fraction += std::ldexp(static_cast<double>(word), 32 * (i - kWords) + 2);
    }
    double rest = fraction * 0x1.921fb54442d18p+0;
    if (isBelow) rest = -rest;
    if (angle < 0) return {-rest, (4 - quadrant) & 3};
    return {rest, quadrant & 3};
}

} // namespace vorlund
