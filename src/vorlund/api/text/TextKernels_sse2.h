/// \file
/// The loops behind TextKernels.h for SSE2, which every x86 processor that the library runs on has: eight
/// units at a time.
///
/// Where a length is given, blocks stay inside the text; the last one overlaps the one before. A terminated
/// text is read in aligned blocks, each of which holds some unit of it, so they cannot fault; memory checkers
/// accept such a block when part of it is outside. The sanitizers' instrumentation does not, so builds with
/// it have the plain loops there.
#pragma once

#include "vorlund/api/text/TextKernels.h"
#include "vorlund/api/text/TextKernels_scalar.h"

#include <bit>
#include <cstdint>
#include <cstring>
#include <emmintrin.h>

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define VRL_HAS_INSTRUMENTED_READS 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer) || __has_feature(memory_sanitizer)
#define VRL_HAS_INSTRUMENTED_READS 1
#endif
#endif
#ifndef VRL_HAS_INSTRUMENTED_READS
#define VRL_HAS_INSTRUMENTED_READS 0
#endif

namespace vorlund::sse2 {

constexpr std::size_t kBlock = 8;
constexpr std::size_t kBlockBytes = 16;

VRL_INLINE __m128i Load(const void* place) {
    return _mm_loadu_si128(static_cast<const __m128i*>(place));
}

inline __m128i Spread(wchar unit) {
    return _mm_set1_epi16(static_cast<short>(unit));
}

inline __m128i Equal(__m128i left, __m128i right) {
    return _mm_cmpeq_epi16(left, right);
}

/// Two bits for each of the eight units of a comparison.
inline unsigned int Mask(__m128i comparison) {
    return static_cast<unsigned int>(_mm_movemask_epi8(comparison));
}

/// One bit for each of the sixteen units of two comparisons.
inline unsigned int Mask(__m128i low, __m128i high) {
    return Mask(_mm_packs_epi16(low, high));
}

inline std::size_t FirstUnitOf(unsigned int mask) {
    return static_cast<unsigned int>(std::countr_zero(mask)) / 2;
}

inline std::size_t LastUnitOf(unsigned int mask) {
    return (31 - static_cast<unsigned int>(std::countl_zero(mask))) / 2;
}

/// The bytes between the beginning of its block and `text`.
inline std::size_t BytesBefore(const wchar* text) {
    return reinterpret_cast<std::uintptr_t>(text) % kBlockBytes;
}

/// Walks the aligned blocks of a terminated text to the first unit that `TWanted` makes 0. A block is read
/// only when the one before has no such unit.
template <class TWanted> VRL_INLINE std::size_t Walk(const wchar* text, TWanted wanted) {
    const __m128i zero = _mm_setzero_si128();
    // The first block may begin before the text.
    const std::size_t before = BytesBefore(text);
    const auto* block = reinterpret_cast<const __m128i*>(reinterpret_cast<std::uintptr_t>(text) - before);
    unsigned int mask = Mask(Equal(wanted(*block), zero)) >> before;
    if (mask) return FirstUnitOf(mask);
    const auto isIn = [&](int i) { return (mask = Mask(Equal(wanted(block[i]), zero))) != 0; };
    const auto place = [&](int i) {
        return static_cast<std::size_t>(reinterpret_cast<const wchar*>(block + i) - text) + FirstUnitOf(mask);
    };
    for (;; block += 4) {
        if (isIn(1)) return place(1);
        if (isIn(2)) return place(2);
        if (isIn(3)) return place(3);
        if (isIn(4)) return place(4);
    }
}

inline std::size_t TextLength(const wchar* text) {
    struct TWanted {
        VRL_INLINE __m128i operator()(__m128i units) const { return units; }
    };
    return Walk(text, TWanted{});
}

inline std::size_t TextLength(const wchar* text, std::size_t limit) {
    const __m128i zero = _mm_setzero_si128();
    const std::size_t before = reinterpret_cast<std::uintptr_t>(text) % kBlockBytes;
    const auto* block = reinterpret_cast<const __m128i*>(reinterpret_cast<std::uintptr_t>(text) - before);
    // `next` is the first unit behind the block; it stays in reach of the limit.
    std::size_t next = (kBlockBytes - before) / sizeof(wchar);
    if (limit == 0) return 0;
    unsigned int mask = Mask(Equal(*block, zero)) >> before << before;
    while (!mask && next < limit) {
        mask = Mask(Equal(*++block, zero));
        next += kBlock;
    }
    const std::size_t length = mask ? next - kBlock + FirstUnitOf(mask) : limit;
    return length < limit ? length : limit;
}

inline std::size_t FindFirstUnit(const wchar* text, wchar unit) {
    struct TWanted {
        __m128i unit;
        VRL_INLINE __m128i operator()(__m128i units) const {
            return _mm_andnot_si128(Equal(units, unit), units);
        }
    };
    const std::size_t place = Walk(text, TWanted{Spread(unit)});
    return text[place] == unit ? place : kTextNotFound;
}

inline std::size_t FindFirstUnit(const wchar* text, std::size_t length, wchar unit) {
    const __m128i wanted = Spread(unit);
    std::size_t i = 0;
    for (; i + 4 * kBlock <= length; i += 4 * kBlock) {
        const unsigned int low = Mask(Equal(Load(text + i), wanted), Equal(Load(text + i + kBlock), wanted));
        const unsigned int high =
            Mask(Equal(Load(text + i + 2 * kBlock), wanted), Equal(Load(text + i + 3 * kBlock), wanted));
        const unsigned int mask = low | high << 16;
        if (mask) return i + static_cast<unsigned int>(std::countr_zero(mask));
    }
    for (; i + kBlock <= length; i += kBlock)
        if (const unsigned int mask = Mask(Equal(Load(text + i), wanted))) return i + FirstUnitOf(mask);
    for (; i < length; ++i)
        if (text[i] == unit) return i;
    return kTextNotFound;
}

inline std::size_t FindLastUnit(const wchar* text, std::size_t length, wchar unit) {
    const __m128i wanted = Spread(unit);
    std::size_t end = length;
    for (; end >= 4 * kBlock; end -= 4 * kBlock) {
        const wchar* at = text + end - 4 * kBlock;
        const unsigned int low = Mask(Equal(Load(at), wanted), Equal(Load(at + kBlock), wanted));
        const unsigned int high =
            Mask(Equal(Load(at + 2 * kBlock), wanted), Equal(Load(at + 3 * kBlock), wanted));
        const unsigned int mask = low | high << 16;
        if (mask) return end - 1 - static_cast<unsigned int>(std::countl_zero(mask));
    }
    for (; end >= kBlock; end -= kBlock)
        if (const unsigned int mask = Mask(Equal(Load(text + end - kBlock), wanted)))
            return end - kBlock + LastUnitOf(mask);
    for (; end > 0; --end)
        if (text[end - 1] == unit) return end - 1;
    return kTextNotFound;
}

inline std::size_t FindLastUnit(const wchar* text, wchar unit) {
    const std::size_t length = TextLength(text);
    return unit ? FindLastUnit(text, length, unit) : length;
}

/// The order of texts by the first of eight units that differ or end; 0 when there are none yet or both end
/// there.
struct TBlockOrder {
    bool isDecided;
    int order;
};
VRL_INLINE TBlockOrder CompareBlock(const wchar* left, const wchar* right, __m128i leftUnits,
                                    __m128i rightUnits) {
    const __m128i same =
        _mm_andnot_si128(Equal(leftUnits, _mm_setzero_si128()), Equal(leftUnits, rightUnits));
    const unsigned int end = Mask(same) ^ 0xFFFF;
    if (!end) return {false, 0};
    const wchar a = left[FirstUnitOf(end)];
    const wchar b = right[FirstUnitOf(end)];
    return {true, a == b ? 0 : a > b ? 1 : -1};
}

inline int CompareText(const wchar* left, const wchar* right) {
    const auto blockOf = [](const wchar* text) { return reinterpret_cast<const __m128i*>(text); };
    for (; BytesBefore(left); ++left, ++right)
        if (*left != *right || !*left) return scalar::CompareText(left, right);
    const std::size_t before = BytesBefore(right);
    if (!before) {
        for (;; left += kBlock, right += kBlock) {
            const TBlockOrder found = CompareBlock(left, right, *blockOf(left), *blockOf(right));
            if (found.isDecided) return found.order;
        }
    }
    // Eight units of the right text are in two of its blocks. They are read at once when they are there: when
    // neither the rest of the first block nor the beginning of the second has the end.
    const __m128i zero = _mm_setzero_si128();
    const __m128i* block = blockOf(right - before / sizeof(wchar));
    const unsigned int beginning = (1u << before) - 1;
    for (unsigned int ends = Mask(Equal(*block, zero)) >> before; !ends; left += kBlock, right += kBlock) {
        ends = Mask(Equal(*++block, zero));
        if (ends & beginning) break;
        const TBlockOrder found = CompareBlock(left, right, *blockOf(left), Load(right));
        if (found.isDecided) return found.order;
        ends >>= before;
    }
    return scalar::CompareText(left, right);
}

/// Whether `length` units, at least 3, are the same; reads nothing else.
inline bool SameUnits(const wchar* left, const wchar* right, std::size_t length) {
    const auto differ = [&](std::size_t place, auto word) {
        auto other = word;
        std::memcpy(&word, left + place, sizeof(word));
        std::memcpy(&other, right + place, sizeof(other));
        return word != other;
    };
    if (length < 4) return !differ(0, std::uint32_t{}) && !differ(length - 2, std::uint32_t{});
    if (length < kBlock) return !differ(0, std::uint64_t{}) && !differ(length - 4, std::uint64_t{});
    for (std::size_t i = 0; i + kBlock < length; i += kBlock)
        if (Mask(Equal(Load(left + i), Load(right + i))) != 0xFFFF) return false;
    return Mask(Equal(Load(left + length - kBlock), Load(right + length - kBlock))) == 0xFFFF;
}

/// A needle that is not empty, with the two places that choose candidates: the first, and the last that holds
/// another unit than the first, because texts mostly repeat single units.
class CNeedle {
public:
    CNeedle(const wchar* units, std::size_t length)
        : units_(units), length_(length), probe_(length - 1), first_(Spread(units[0])) {
        while (probe_ > 0 && units[probe_] == units[0]) --probe_;
        if (probe_ == 0) probe_ = length - 1;
        other_ = Spread(units[probe_]);
    }

    /// Which of the eight places from `text` on hold both chosen units.
    __m128i Candidates(const wchar* text) const {
        return _mm_and_si128(Equal(Load(text), first_), Equal(Load(text + probe_), other_));
    }
    bool IsCandidate(const wchar* text) const {
        return text[0] == units_[0] && text[probe_] == units_[probe_];
    }

    /// Whether the needle is at a candidate.
    bool IsAt(const wchar* text) const { return length_ <= 2 || SameUnits(text, units_, length_); }

private:
    const wchar* units_;
    std::size_t length_;
    std::size_t probe_;
    __m128i first_;
    __m128i other_;
};

inline std::size_t FindFirstText(const wchar* text, std::size_t length, const wchar* needle,
                                 std::size_t needleLength) {
    if (needleLength > length) return kTextNotFound;
    if (needleLength == 0) return 0;
    if (needleLength == 1) return FindFirstUnit(text, length, *needle);
    const CNeedle wanted(needle, needleLength);
    const std::size_t places = length - needleLength + 1;
    std::size_t i = 0;
    for (; i + 2 * kBlock <= places; i += 2 * kBlock) {
        unsigned int mask = Mask(wanted.Candidates(text + i), wanted.Candidates(text + i + kBlock));
        if (!mask) [[likely]]
            continue;
        for (; mask; mask &= mask - 1) {
            const std::size_t place = i + static_cast<unsigned int>(std::countr_zero(mask));
            if (wanted.IsAt(text + place)) return place;
        }
    }
    for (; i < places; ++i)
        if (wanted.IsCandidate(text + i) && wanted.IsAt(text + i)) return i;
    return kTextNotFound;
}

inline std::size_t FindAllText(const wchar* text, std::size_t length, const wchar* needle,
                               std::size_t needleLength, std::uint32_t* places, std::size_t capacity) {
    if (needleLength > length || !capacity) return 0;
    const CNeedle wanted(needle, needleLength);
    const std::size_t end = length - needleLength + 1;
    std::size_t count = 0;
    // The first place behind the last occurrence.
    std::size_t free = 0;
    const auto take = [&](std::size_t place) {
        if (place < free || !wanted.IsAt(text + place)) return false;
        places[count++] = static_cast<std::uint32_t>(place);
        free = place + needleLength;
        return count == capacity;
    };
    std::size_t i = 0;
    for (; i + 2 * kBlock <= end; i += 2 * kBlock) {
        unsigned int mask = Mask(wanted.Candidates(text + i), wanted.Candidates(text + i + kBlock));
        for (; mask; mask &= mask - 1)
            if (take(i + static_cast<unsigned int>(std::countr_zero(mask)))) return count;
    }
    for (; i < end; ++i)
        if (wanted.IsCandidate(text + i) && take(i)) return count;
    return count;
}

inline std::size_t FindLastText(const wchar* text, std::size_t length, const wchar* needle,
                                std::size_t needleLength) {
    if (needleLength > length) return kTextNotFound;
    if (needleLength == 0) return length;
    if (needleLength == 1) return FindLastUnit(text, length, *needle);
    const CNeedle wanted(needle, needleLength);
    std::size_t end = length - needleLength + 1;
    for (; end >= 2 * kBlock; end -= 2 * kBlock) {
        const wchar* at = text + end - 2 * kBlock;
        unsigned int mask = Mask(wanted.Candidates(at), wanted.Candidates(at + kBlock));
        if (!mask) [[likely]]
            continue;
        while (mask) {
            const unsigned int bit = 31 - static_cast<unsigned int>(std::countl_zero(mask));
            const std::size_t place = end - 2 * kBlock + bit;
            if (wanted.IsAt(text + place)) return place;
            mask ^= 1u << bit;
        }
    }
    for (; end > 0; --end)
        if (wanted.IsCandidate(text + end - 1) && wanted.IsAt(text + end - 1)) return end - 1;
    return kTextNotFound;
}

inline void ReplaceUnit(wchar* text, std::size_t length, wchar from, wchar to) {
    const __m128i wanted = Spread(from);
    const __m128i replacement = Spread(to);
    std::size_t i = 0;
    for (; i + kBlock <= length; i += kBlock) {
        const __m128i units = Load(text + i);
        const __m128i chosen = Equal(units, wanted);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(text + i),
                         _mm_or_si128(_mm_and_si128(chosen, replacement), _mm_andnot_si128(chosen, units)));
    }
    for (; i < length; ++i)
        if (text[i] == from) text[i] = to;
}

inline void WidenText(wchar* destination, const char* source, std::size_t length) {
    std::size_t i = 0;
    for (; i + 2 * kBlock <= length; i += 2 * kBlock) {
        // Each byte becomes the high half of a unit, and the shift brings it down with its sign.
        const __m128i bytes = Load(source + i);
        const __m128i low = _mm_srai_epi16(_mm_unpacklo_epi8(bytes, bytes), 8);
        const __m128i high = _mm_srai_epi16(_mm_unpackhi_epi8(bytes, bytes), 8);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(destination + i), low);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(destination + i + kBlock), high);
    }
    for (; i < length; ++i) destination[i] = WidenUnit(source[i]);
}

VRL_INLINE void Store(wchar* place, __m128i units) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(place), units);
}

inline bool CopyTextAndLook(wchar* destination, const wchar* source, std::size_t length, wchar unit) {
    if (length < kBlock) return scalar::CopyAndLook(destination, source, length, unit);
    const __m128i wanted = Spread(unit);
    __m128i isThere = _mm_setzero_si128();
    const auto copy = [&](std::size_t i) {
        const __m128i units = Load(source + i);
        isThere = _mm_or_si128(isThere, Equal(units, wanted));
        Store(destination + i, units);
    };
    std::size_t i = 0;
    for (; i + 4 * kBlock <= length; i += 4 * kBlock) {
        copy(i);
        copy(i + kBlock);
        copy(i + 2 * kBlock);
        copy(i + 3 * kBlock);
    }
    for (; i + kBlock <= length; i += kBlock) copy(i);
    // The last block overlaps the one before.
    if (i < length) copy(length - kBlock);
    return Mask(isThere) != 0;
}

inline bool WidenBytesAndLook(wchar* destination, const std::uint8_t* source, std::size_t length,
                              wchar unit) {
    if (length < 2 * kBlock || unit > 0xFF) return scalar::CopyAndLook(destination, source, length, unit);
    const __m128i zero = _mm_setzero_si128();
    const __m128i wanted = _mm_set1_epi8(static_cast<char>(unit));
    __m128i isThere = zero;
    const auto copy = [&](std::size_t i) {
        const __m128i bytes = Load(source + i);
        isThere = _mm_or_si128(isThere, _mm_cmpeq_epi8(bytes, wanted));
        Store(destination + i, _mm_unpacklo_epi8(bytes, zero));
        Store(destination + i + kBlock, _mm_unpackhi_epi8(bytes, zero));
    };
    std::size_t i = 0;
    for (; i + 4 * kBlock <= length; i += 4 * kBlock) {
        copy(i);
        copy(i + 2 * kBlock);
    }
    if (i + 2 * kBlock <= length) {
        copy(i);
        i += 2 * kBlock;
    }
    if (i < length) copy(length - 2 * kBlock);
    return Mask(isThere) != 0;
}

#if VRL_HAS_INSTRUMENTED_READS
namespace terminated = scalar;
#else
namespace terminated = sse2;
#endif

inline constexpr TTextSet kText{"sse2",
                                [] { return true; },
                                {terminated::TextLength, terminated::TextLength, terminated::CompareText,
                                 terminated::FindFirstUnit, terminated::FindLastUnit, FindFirstUnit,
                                 FindLastUnit, FindFirstText, FindLastText, FindAllText, ReplaceUnit,
                                 WidenText, CopyTextAndLook, WidenBytesAndLook}};

} // namespace vorlund::sse2
