/// \file
/// What the targets that compare operations with a model draw from an input, and how an operation ended.
#pragma once

#include "FuzzInput.h"
#include "support/Streams.h"

#include <vorlund/Exception.h>

#include <cstddef>
#include <cstdint>
#include <iterator>

namespace vorlund::fuzz {

using test::TBytes;

class CModelInput : public CInput {
public:
    using CInput::CInput;

    /// Mostly small; sometimes a few thousands.
    std::size_t Number() {
        const std::size_t byte = Byte();
        return byte < 0xE0 ? byte : (byte - 0xE0) << 8 | Byte();
    }
    /// A position, which may lie beyond all memory or before the start.
    std::int64_t Position() {
        const std::size_t number = Number();
        if (number % 64 != 63) return static_cast<std::int64_t>(number);
        constexpr std::int64_t kFar[] = {-1, INT64_MIN, INT64_MAX, std::int64_t{1} << 32,
                                         (std::int64_t{1} << 32) - 1};
        return kFar[number / 64 % std::size(kFar)];
    }
    TBytes Bytes(std::size_t size) {
        TBytes bytes(size);
        const std::uint8_t first = Byte();
        for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<std::uint8_t>(first + i * 7);
        return bytes;
    }
};

/// What `act` raises, `EXCEPTION_TYPE_GENERIC` for nothing.
template <class TAct> TExceptionType TypeOf(const TAct& act) {
    try {
        act();
    } catch (const CException& exception) {
        return exception.GetType();
    }
    return EXCEPTION_TYPE_GENERIC;
}

} // namespace vorlund::fuzz
