// The symbols of the X Window System for keys, as characters and `TWindowKey`s.
#pragma once

#include <cstdint>

namespace vorlund {

constexpr std::uint32_t kNoSymbol = 0;

/// A character where the symbol stands for one; `WINDOW_KEY_OTHER` for what has no name.
std::uint32_t KeysymToKey(std::uint32_t symbol);

/// The symbol of the capital letter, or the same.
std::uint32_t ToUpperKeysym(std::uint32_t symbol);

/// Whether it belongs to the block of digits, and Num Lock chooses it.
bool IsKeypadKeysym(std::uint32_t symbol);

} // namespace vorlund
