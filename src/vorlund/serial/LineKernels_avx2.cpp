// Run only where the processor has AVX2: nothing of this file may be shared with others, so all of it but the
// table has internal linkage or is always inline.
#include "vorlund/serial/LineKernels.h"

#include <immintrin.h>

namespace vorlund {
namespace {

/// Bytes of a vector.
constexpr std::size_t kVector = 32;
constexpr std::size_t kUnits = kVector / sizeof(wchar);

VRL_INLINE __m256i Load(const void* place) {
    return _mm256_loadu_si256(static_cast<const __m256i*>(place));
}

VRL_INLINE void Store(void* place, __m256i vector) {
    _mm256_storeu_si256(static_cast<__m256i*>(place), vector);
}

VRL_INLINE __m256i Equal(const wchar* place, __m256i wanted) {
    return _mm256_cmpeq_epi16(Load(place), wanted);
}

VRL_INLINE unsigned int Mask(__m256i vector) {
    return static_cast<unsigned int>(_mm256_movemask_epi8(vector));
}

/// Calls `step(i)` for each block of `kBlock` of `length`, which is a block at least; the last one overlaps
/// the one before.
template <std::size_t kBlock, class TStep> VRL_INLINE void ForEachBlock(std::size_t length, TStep step) {
    std::size_t i = 0;
    for (; i + 2 * kBlock <= length; i += 2 * kBlock) {
        step(i);
        step(i + kBlock);
    }
    if (i + kBlock <= length) {
        step(i);
        i += kBlock;
    }
    if (i < length) step(length - kBlock);
}

std::size_t FindFirst(const wchar* text, std::size_t length, wchar unit) {
    const __m256i wanted = _mm256_set1_epi16(static_cast<short>(unit));
    constexpr std::size_t kStep = 4 * kUnits;
    const auto placeIn = [&](std::size_t i) {
        return i + static_cast<std::size_t>(__builtin_ctz(Mask(Equal(text + i, wanted)))) / sizeof(wchar);
    };
    std::size_t i = 0;
    for (; i + kStep <= length; i += kStep) {
        const __m256i front = _mm256_or_si256(Equal(text + i, wanted), Equal(text + i + kUnits, wanted));
        const __m256i back =
            _mm256_or_si256(Equal(text + i + 2 * kUnits, wanted), Equal(text + i + 3 * kUnits, wanted));
        if (Mask(_mm256_or_si256(front, back)) != 0) break;
    }
    for (; i + kUnits <= length; i += kUnits)
        if (Mask(Equal(text + i, wanted)) != 0) return placeIn(i);
    if (i == length) return kTextNotFound;
    // The last block overlaps the one before, which has none.
    return Mask(Equal(text + length - kUnits, wanted)) != 0 ? placeIn(length - kUnits) : kTextNotFound;
}

bool CopyAndLook(wchar* destination, const wchar* source, std::size_t length, wchar unit) {
    const __m256i wanted = _mm256_set1_epi16(static_cast<short>(unit));
    __m256i isThere = _mm256_setzero_si256();
    ForEachBlock<kUnits>(length, [&](std::size_t i) {
        const __m256i units = Load(source + i);
        isThere = _mm256_or_si256(isThere, _mm256_cmpeq_epi16(units, wanted));
        Store(destination + i, units);
    });
    return Mask(isThere) != 0;
}

bool WidenAndLook(wchar* destination, const std::uint8_t* source, std::size_t length, wchar unit) {
    const __m256i wanted = _mm256_set1_epi8(static_cast<char>(unit));
    __m256i isThere = _mm256_setzero_si256();
    ForEachBlock<kVector>(length, [&](std::size_t i) {
        const __m256i bytes = Load(source + i);
        isThere = _mm256_or_si256(isThere, _mm256_cmpeq_epi8(bytes, wanted));
        Store(destination + i, _mm256_cvtepu8_epi16(_mm256_castsi256_si128(bytes)));
        Store(destination + i + kUnits, _mm256_cvtepu8_epi16(_mm256_extracti128_si256(bytes, 1)));
    });
    return Mask(isThere) != 0;
}

} // namespace

constinit const TLineSet kAvx2Lines{
    "avx2",
    [] { return HasAvx2(); },
    {FindFirst, CopyAndLook, WidenAndLook},
};

} // namespace vorlund
