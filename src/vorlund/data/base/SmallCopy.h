// Copies of few bytes.
#pragma once

#include <cstddef>
#include <cstring>

namespace vorlund {

/// Copies `size` bytes, from `sizeof(TWord)` to twice as many, as two words that may overlap.
template <class TWord> inline void CopyAsWords(char* to, const char* from, std::size_t size) {
    TWord first;
    TWord last;
    std::memcpy(&first, from, sizeof(TWord));
    std::memcpy(&last, from + size - sizeof(TWord), sizeof(TWord));
    std::memcpy(to, &first, sizeof(TWord));
    std::memcpy(to + size - sizeof(TWord), &last, sizeof(TWord));
}

/// As `std::memcpy`, for what is mostly a single value: no call.
inline void CopySmall(void* destination, const void* source, std::size_t size) {
    auto* const to = static_cast<char*>(destination);
    const auto* const from = static_cast<const char*>(source);
    struct TBlock {
        char bytes[16];
    };
    struct TLargeBlock {
        char bytes[32];
    };
    if (size > 64) {
        std::memcpy(to, from, size);
    } else if (size >= 32) {
        CopyAsWords<TLargeBlock>(to, from, size);
    } else if (size >= 16) {
        CopyAsWords<TBlock>(to, from, size);
    } else if (size >= 8) {
        CopyAsWords<long long>(to, from, size);
    } else if (size >= 4) {
        CopyAsWords<int>(to, from, size);
    } else if (size >= 2) {
        CopyAsWords<short>(to, from, size);
    } else if (size == 1) {
        *to = *from;
    }
}

} // namespace vorlund
