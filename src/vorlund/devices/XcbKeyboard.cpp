// Rules for choosing among the symbols of a key: X Window System Protocol, chapter 5 "Keyboards", and for
// AltGr and groups the core view of the X Keyboard Extension, chapter 17.
#include "vorlund/devices/XcbKeyboard.h"

#include "vorlund/devices/Keysyms.h"
#include "vorlund/devices/XcbReply.h"

#include <vorlund/WindowEvents.h>

#include <new>

namespace vorlund {
namespace {

/// What servers bind to the modifiers without fixed names.
constexpr unsigned int kAltMask = XCB_MOD_MASK_1;
constexpr unsigned int kNumLockMask = XCB_MOD_MASK_2;
constexpr unsigned int kAltGrMask = XCB_MOD_MASK_5;
constexpr unsigned int kGroupShift = 13;

/// The first column of the group's symbols with AltGr.
constexpr unsigned int kAltGrColumns = 4;

} // namespace

void CXcbKeyboard::Load(xcb_connection_t* connection) {
    symbols_.clear();
    const xcb_setup_t* const setup = xcb_.xcb_get_setup(connection);
    firstCode_ = setup->min_keycode;
    const auto count = static_cast<std::uint8_t>(setup->max_keycode - setup->min_keycode + 1);
    const auto asked = xcb_.xcb_get_keyboard_mapping(connection, firstCode_, count);
    const auto reply = OwnReply(xcb_.xcb_get_keyboard_mapping_reply(connection, asked, nullptr));
    if (!reply) return;
    columns_ = reply->keysyms_per_keycode;
    const xcb_keysym_t* const symbols = xcb_.xcb_get_keyboard_mapping_keysyms(reply.get());
    try {
        symbols_.assign(symbols, symbols + xcb_.xcb_get_keyboard_mapping_keysyms_length(reply.get()));
    } catch (const std::bad_alloc&) {
        // The same as without an answer.
    }
}

xcb_keysym_t CXcbKeyboard::GetSymbol(xcb_keycode_t code, unsigned int column) const {
    if (code < firstCode_ || column >= columns_) return kNoSymbol;
    const std::size_t at = std::size_t{static_cast<unsigned int>(code - firstCode_)} * columns_ + column;
    return at < symbols_.size() ? symbols_[at] : kNoSymbol;
}

std::uint32_t CXcbKeyboard::GetKey(xcb_keycode_t code, std::uint16_t state) const {
    const unsigned int group = (state >> kGroupShift & 3) != 0 ? 2 : 0;
    unsigned int column = group;
    if ((state & kAltGrMask) != 0 && GetSymbol(code, kAltGrColumns + group) != kNoSymbol)
        column += kAltGrColumns;
    // A key of one group has it for both.
    else if (GetSymbol(code, column) == kNoSymbol)
        column = 0;
    const xcb_keysym_t plain = GetSymbol(code, column);
    xcb_keysym_t shifted = GetSymbol(code, column + 1);
    if (shifted == kNoSymbol) shifted = ToUpperKeysym(plain);

    bool isShifted = (state & XCB_MOD_MASK_SHIFT) != 0;
    if ((state & kNumLockMask) != 0 && IsKeypadKeysym(shifted))
        isShifted = !isShifted;
    else if ((state & XCB_MOD_MASK_LOCK) != 0 && plain != shifted && ToUpperKeysym(plain) == shifted)
        isShifted = !isShifted;
    return KeysymToKey(isShifted ? shifted : plain);
}

std::uint32_t GetModifiers(std::uint16_t state) {
    return ((state & XCB_MOD_MASK_SHIFT) != 0 ? std::uint32_t{WINDOW_MODIFIER_SHIFT} : 0) |
           ((state & XCB_MOD_MASK_CONTROL) != 0 ? std::uint32_t{WINDOW_MODIFIER_CONTROL} : 0) |
           ((state & kAltMask) != 0 ? std::uint32_t{WINDOW_MODIFIER_ALT} : 0);
}

} // namespace vorlund
