// Only the low byte of a + b + c counts, so every term repeats: x after 512 pixels, y after 512 rows. A row
// is made once, at most 512 pixels of it, and copied to wherever it repeats.
//
// In a row c is constant, and so is k in b - (x >> 1) = T[m & 255] - m + k, where m = (x >> 1) + k and
// k = 2 x time - y. What depends on x is therefore a piece of one of two fixed tables that begins where the
// row's terms begin: T itself, and T[m] - m with every entry twice. The colour of a sum is a third table.
#include "vorlund/data/sources/PlasmaPainter.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>

namespace vorlund {
namespace {

/// Pixels and rows after which the picture repeats.
constexpr std::uint32_t kPeriod = 512;
constexpr std::uint32_t kWaveSize = 256;

/// The sine by its series, good to a few units of the last place for the angles of one turn. The compiler
/// computes it, so that the table is the same on every system, whatever its C library makes of the last bit.
constexpr double Sine(double angle) {
    double term = angle;
    double sum = angle;
    for (int n = 2; n < 60; n += 2) {
        term *= -angle * angle / (n * (n + 1.0));
        sum += term;
    }
    return sum;
}

constexpr auto kWave = [] {
    std::array<std::uint8_t, kWaveSize> wave{};
    for (std::uint32_t i = 0; i < kWaveSize; ++i) {
        // Kept for callers: the angle is rounded to single precision, so the crest is 253 and not 254.
        const auto angle = static_cast<float>(i * 3.1415927410125732 / 128.0);
        wave[i] = static_cast<std::uint8_t>((Sine(static_cast<double>(angle)) + 1.0) * 127.0);
    }
    return wave;
}();
static_assert(kWave[0] == 127 && kWave[64] == 253 && kWave[128] == 126 && kWave[192] == 0);

/// T, repeated as often as a row needs that begins anywhere in it.
constexpr auto kFirstWave = [] {
    std::array<std::uint8_t, kWaveSize + kPeriod> table{};
    for (std::uint32_t i = 0; i < table.size(); ++i) table[i] = kWave[i % kWaveSize];
    return table;
}();

/// T[m] - m modulo 256, each entry twice, repeated as often as a row needs.
constexpr auto kSecondWave = [] {
    std::array<std::uint8_t, 2 * kWaveSize + kPeriod> table{};
    for (std::uint32_t i = 0; i < table.size(); ++i) {
        const std::uint32_t m = i / 2 % kWaveSize;
        table[i] = static_cast<std::uint8_t>(kWave[m] - m);
    }
    return table;
}();

/// The pixel for a sum modulo 256.
constexpr auto kColours = [] {
    std::array<std::uint32_t, kWaveSize> colours{};
    for (std::uint32_t i = 0; i < kWaveSize; ++i) {
        const std::uint32_t blue = kWave[i];
        const std::uint32_t red = std::min(blue * 3 / 2, 255u);
        const std::uint32_t green = std::min(blue * 5 / 2, 255u);
        colours[i] = 0xFF000000 | red << 16 | green << 8 | blue;
    }
    return colours;
}();

/// The first `width` pixels of row `y`, at most `kPeriod`.
void PaintRow(std::uint32_t* row, std::uint32_t width, std::uint32_t y, std::uint32_t time) {
    const std::uint32_t k = (2 * time - y) % kWaveSize;
    const std::uint8_t* const first = &kFirstWave[((y >> 1) - time) % kWaveSize];
    const std::uint8_t* const second = &kSecondWave[std::size_t{2} * k];
    const std::uint32_t constant = k + kWave[(time + 2 * y) % kWaveSize];
    // Always the whole period: a loop of fixed length computes sixteen pixels at a time.
    std::uint8_t sums[kPeriod];
    for (std::uint32_t x = 0; x < kPeriod; ++x)
        sums[x] = static_cast<std::uint8_t>(first[x] + second[x] + constant);
    for (std::uint32_t x = 0; x < width; ++x) row[x] = kColours[sums[x]];
}

/// `width` pixels at `place`: those of `row` again and again.
void CopyRow(std::byte* place, const std::uint32_t* row, std::uint32_t width) {
    for (std::uint32_t x = 0; x < width; x += kPeriod) {
        std::memcpy(place + std::size_t{x} * sizeof *row, row, std::min(width - x, kPeriod) * sizeof *row);
    }
}

} // namespace

void PaintPlasma(void* pixels, std::uint32_t width, std::uint32_t height, std::uint32_t time) {
    // A picture without pixels may have four billion rows.
    if (width == 0) return;
    auto* const picture = static_cast<std::byte*>(pixels);
    for (std::uint32_t first = 0; first < std::min(height, kPeriod); ++first) {
        std::uint32_t row[kPeriod];
        PaintRow(row, std::min(width, kPeriod), first, time);
        for (std::uint32_t y = first; y < height; y += kPeriod) {
            CopyRow(picture + std::size_t{y} * width * sizeof *row, row, width);
        }
    }
}

} // namespace vorlund
