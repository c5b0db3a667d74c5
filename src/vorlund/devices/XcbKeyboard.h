// Keys of the X Window System, by the core protocol.
#pragma once

#include "vorlund/devices/XcbLibrary.h"

#include <cstdint>
#include <vector>

namespace vorlund {

/// What the keys give in the user's layout, as the server tells it.
class CXcbKeyboard {
public:
    explicit CXcbKeyboard(const TXcbLibrary& xcb) : xcb_(xcb) {}

    /// Asks for the layout: at first, and when it has changed. Without an answer, or memory for it, keys give
    /// nothing. Raises nothing.
    void Load(xcb_connection_t* connection);
    /// The character or `TWindowKey` of a key, with the modifiers and the group in `state`.
    std::uint32_t GetKey(xcb_keycode_t code, std::uint16_t state) const;

private:
    xcb_keysym_t GetSymbol(xcb_keycode_t code, unsigned int column) const;

    const TXcbLibrary& xcb_;
    xcb_keycode_t firstCode_ = 0;
    unsigned int columns_ = 0;
    /// A row of `columns_` for each key.
    std::vector<xcb_keysym_t> symbols_;
};

/// The `TWindowModifier`s of a state.
std::uint32_t GetModifiers(std::uint16_t state);

} // namespace vorlund
