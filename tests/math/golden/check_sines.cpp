// Run by hand on x86-64 Linux, about a minute: shows that the single-precision sine and cosine are the
// correctly rounded ones for angles from 0 to 1,000 radians: for every float from 2^-12 on, and for every
// 61st below that.
//
//   sources="src/vorlund/math/Trigonometry.cpp src/vorlund/math/LargeAngle.cpp"
//   g++ -std=c++20 -O2 -ffp-contract=off -Isrc tests/math/golden/check_sines.cpp $sources -o /tmp/check_sines
//   /tmp/check_sines
//
// The other side is the C library's long double, whose 64 digits are right to less than two units in the last
// place. It decides the rounding unless it lies within a few units of the middle between two floats; such
// angles are listed, and none are.
#include "vorlund/math/Trigonometry.h"

#include <bit>
#include <cfloat>
#include <cmath>
#include <cstdint>
#include <cstdio>

static_assert(LDBL_MANT_DIG == 64);

namespace {

struct TCounts {
    long long angles = 0;
    long long wrong = 0;
    long long undecided = 0;
    long double worst = 0;
};

/// Compares one result with the long double one.
void Compare(TCounts& counts, float angle, double ours, long double exact) {
    const float rounded = static_cast<float>(exact);
    const float other = std::nextafter(rounded, exact > rounded ? 2.0f : -2.0f);
    const long double middle = (static_cast<long double>(rounded) + other) / 2;
    const long double unit = std::ldexp(1.0L, std::ilogb(exact) - 63);
    if (exact != 0 && std::fabs(exact - middle) < 4 * unit) {
        ++counts.undecided;
        std::printf("undecided: %a\n", static_cast<double>(angle));
    }
    if (std::bit_cast<std::uint32_t>(static_cast<float>(ours)) != std::bit_cast<std::uint32_t>(rounded)) {
        ++counts.wrong;
        std::printf("wrong: %a\n", static_cast<double>(angle));
    }
    const long double error = std::fabs(ours - exact) / std::ldexp(1.0L, std::ilogb(exact) - 52);
    if (exact != 0 && error > counts.worst) counts.worst = error;
}

} // namespace

int main() {
    TCounts sine, cosine;
    const auto last = std::bit_cast<std::uint32_t>(1000.0f);
    // Below 2^-12 every 61st: there the sine is a third of a unit away from the angle at most.
    const auto dense = std::bit_cast<std::uint32_t>(0x1p-12f);
    for (std::uint32_t bits = 0; bits <= last; bits += bits < dense ? 61 : 1) {
        const auto angle = std::bit_cast<float>(bits);
        const auto [s, c] = vorlund::SineAndCosine(angle);
        Compare(sine, angle, s, std::sin(static_cast<long double>(angle)));
        Compare(cosine, angle, c, std::cos(static_cast<long double>(angle)));
        ++sine.angles;
    }
    std::printf("%lld angles; sine: %lld wrong, %lld undecided, error up to %.3Lf units; "
                "cosine: %lld wrong, %lld undecided, error up to %.3Lf units\n",
                sine.angles, sine.wrong, sine.undecided, sine.worst, cosine.wrong, cosine.undecided,
                cosine.worst);
    return sine.wrong || sine.undecided || cosine.wrong || cosine.undecided;
}
