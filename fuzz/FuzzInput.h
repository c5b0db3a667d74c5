/// \file
/// What every fuzz target needs: the check that ends the run, and the bytes of an input one after the other.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>

namespace vorlund::fuzz {

inline void Check(bool holds) {
    if (!holds) std::abort();
}

/// Hands out the bytes of an input; zeros when there are no more. Targets derive from it what they draw from
/// those bytes.
class CInput {
public:
    CInput(const std::uint8_t* data, std::size_t size) : next_(data), end_(data + size) {}

    bool IsEmpty() const { return next_ == end_; }
    std::uint8_t Byte() { return IsEmpty() ? std::uint8_t{0} : *next_++; }

private:
    const std::uint8_t* next_;
    const std::uint8_t* end_;
};

} // namespace vorlund::fuzz
