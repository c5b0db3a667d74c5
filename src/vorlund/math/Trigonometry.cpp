#include "vorlund/math/Trigonometry.h"

#include <cmath>
#include <limits>

namespace vorlund {
namespace {

constexpr double kPi = 0x1.921fb54442d18p+1;
constexpr double kHalfPi = 0x1.921fb54442d18p+0;
constexpr double kTwoOverPi = 0x1.45f306dc9c883p-1;

// Pi/2 in three parts. The first two have 33 digits, so that their multiples by up to 2^20 are exact (W. J.
// Cody and W. Waite, "Software Manual for the Elementary Functions", 1980).
constexpr double kHalfPiHigh = 0x1.921fb544p+0;
constexpr double kHalfPiMiddle = 0x1.0b4611a6p-34;
constexpr double kHalfPiLow = 0x1.3198a2e037073p-69;

/// Added and taken away again, it leaves the nearest integer.
constexpr double kRounder = 0x1.8p+52;

/// Angles up to here are reduced in three parts.
constexpr double kLarge = 32768;

TReducedAngle Reduce(double angle) {
    // Also for NaN, which compares as nothing.
    if (!(std::fabs(angle) < kLarge)) {
        if (!std::isfinite(angle)) return {std::numeric_limits<double>::quiet_NaN(), 0};
        return ReduceLargeAngle(angle);
    }
    const double turns = angle * kTwoOverPi + kRounder - kRounder;
    const double rest = angle - turns * kHalfPiHigh - turns * kHalfPiMiddle - turns * kHalfPiLow;
    return {rest, static_cast<unsigned int>(static_cast<int>(turns)) & 3};
}

/// Two doubles that are computed side by side.
using TPair = double __attribute__((vector_size(16)));

/// Taylor's series around 0 for the sine and the cosine, side by side: their coefficients from the highest
/// power to those of r^3 and r^4. What is left out for up to pi/4 is smaller than 2^-58 of the result.
constexpr TPair kSeries[] = {
    {1.0 / 355687428096000, -1.0 / 6402373705728000},
    {-1.0 / 1307674368000, 1.0 / 20922789888000},
    {1.0 / 6227020800, -1.0 / 87178291200},
    {-1.0 / 39916800, 1.0 / 479001600},
    {1.0 / 362880, -1.0 / 3628800},
    {-1.0 / 5040, 1.0 / 40320},
    {1.0 / 120, -1.0 / 720},
    {-1.0 / 6, 1.0 / 24},
};

/// For angles up to pi/4. Each step of a series waits for the one before, so several angles take little
/// longer than one; their lanes do not touch each other.
template <int count> void NearZero(const double (&r)[count], TPair (&sums)[count]) {
    TPair squares[count];
#pragma GCC unroll 3
    for (int k = 0; k < count; ++k) {
        squares[k] = TPair{r[k] * r[k], r[k] * r[k]};
        sums[k] = kSeries[0];
    }
#pragma GCC unroll 8
    for (int i = 1; i < 8; ++i) {
#pragma GCC unroll 3
        for (int k = 0; k < count; ++k) sums[k] = sums[k] * squares[k] + kSeries[i];
    }
#pragma GCC unroll 3
    for (int k = 0; k < count; ++k) {
        const double r2 = squares[k][0];
        const TPair powers = {r[k] * r2, r2 * r2};
        const TPair start = {r[k], 1 - 0.5 * r2};
        sums[k] = sums[k] * powers + start;
        // Keeps the sign of zero.
        if (r[k] == 0) sums[k][0] = r[k];
    }
}

template <int count> void Turn(const double (&angles)[count], TSineAndCosine (&results)[count]) {
    double rests[count];
    unsigned int quadrants[count];
    TPair sums[count];
#pragma GCC unroll 3
    for (int k = 0; k < count; ++k) {
        const TReducedAngle reduced = Reduce(angles[k]);
        rests[k] = reduced.rest;
        quadrants[k] = reduced.quadrant;
    }
    NearZero(rests, sums);
#pragma GCC unroll 3
    for (int k = 0; k < count; ++k) {
        // Without branches: the quadrant is not predictable.
        const double both[] = {sums[k][0], sums[k][1]};
        static constexpr double kSigns[] = {1, 1, -1, -1};
        const unsigned int quadrant = quadrants[k];
        results[k] = {both[quadrant & 1] * kSigns[quadrant],
                      both[~quadrant & 1] * kSigns[(quadrant + 1) & 3]};
    }
}

/// The arc tangents of k/16.
constexpr double kArcTangents[] = {
    0x0p+0,
    0x1.ff55bb72cfdeap-5,
    0x1.fd5ba9aac2f6ep-4,
    0x1.7b97b4bce5b02p-3,
    0x1.f5b75f92c80ddp-3,
    0x1.362773707ebccp-2,
    0x1.6f61941e4def1p-2,
    0x1.a64eec3cc23fdp-2,
    0x1.dac670561bb4fp-2,
    0x1.0657e94db30d0p-1,
    0x1.1e00babdefeb4p-1,
    0x1.345f01cce37bbp-1,
    0x1.4978fa3269ee1p-1,
    0x1.5d58987169b18p-1,
    0x1.700a7c5784634p-1,
    0x1.819d0b7158a4dp-1,
    0x1.921fb54442d18p-1,
};

/// For 0 to 1: atan t = atan c + atan((t - c) / (1 + t c)), with the nearest c of the table; then the series,
/// for up to 1/32.
double ArcTangentUpToOne(double t) {
    const int k = static_cast<int>(t * 16 + 0.5);
    const double c = k / 16.0;
    const double u = (t - c) / (1 + t * c);
    const double u2 = u * u;
    const double series =
        u - u * u2 * (1.0 / 3 - u2 * (1.0 / 5 - u2 * (1.0 / 7 - u2 * (1.0 / 9 - u2 * (1.0 / 11)))));
    return kArcTangents[k] + series;
}

} // namespace

TSineAndCosine SineAndCosine(double angle) {
    TSineAndCosine result[1];
    Turn({angle}, result);
    return result[0];
}

void SinesAndCosines(const double (&angles)[3], TSineAndCosine (&results)[3]) {
    Turn(angles, results);
}

double ArcTangent(double y, double x) {
    if (std::isnan(x) || std::isnan(y)) return x + y;
    const double height = std::fabs(y);
    const double width = std::fabs(x);
    const bool isSteep = height > width;
    double ratio = isSteep ? width / height : height / width;
    // Both infinite, or both zero.
    if (height == width) ratio = height == 0 ? 0 : 1;
    double angle = ArcTangentUpToOne(ratio);
    if (isSteep) angle = kHalfPi - angle;
    if (std::signbit(x)) angle = kPi - angle;
    return std::copysign(angle, y);
}

double ArcSine(double sine) {
    return ArcTangent(sine, std::sqrt((1 - sine) * (1 + sine)));
}

} // namespace vorlund
