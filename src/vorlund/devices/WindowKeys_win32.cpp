#include "vorlund/devices/WindowKeys_win32.h"

#include "vorlund/devices/WindowEvents.h"

namespace vorlund {
namespace {

struct TNamedKey {
    WPARAM virtualKey;
    std::uint32_t key;
};
constexpr TNamedKey kNamed[] = {
    {VK_BACK, WINDOW_KEY_BACKSPACE}, {VK_TAB, WINDOW_KEY_TAB},        {VK_RETURN, WINDOW_KEY_ENTER},
    {VK_ESCAPE, WINDOW_KEY_ESCAPE},  {VK_SPACE, WINDOW_KEY_SPACE},    {VK_DELETE, WINDOW_KEY_DELETE},
    {VK_LEFT, WINDOW_KEY_LEFT},      {VK_UP, WINDOW_KEY_UP},          {VK_RIGHT, WINDOW_KEY_RIGHT},
    {VK_DOWN, WINDOW_KEY_DOWN},      {VK_HOME, WINDOW_KEY_HOME},      {VK_END, WINDOW_KEY_END},
    {VK_PRIOR, WINDOW_KEY_PAGE_UP},  {VK_NEXT, WINDOW_KEY_PAGE_DOWN}, {VK_INSERT, WINDOW_KEY_INSERT},
};

bool IsDown(int virtualKey) {
    return GetKeyState(virtualKey) < 0;
}

std::uint32_t GetModifiers() {
    return (IsDown(VK_SHIFT) ? std::uint32_t{WINDOW_MODIFIER_SHIFT} : 0) |
           (IsDown(VK_CONTROL) ? std::uint32_t{WINDOW_MODIFIER_CONTROL} : 0) |
           (IsDown(VK_MENU) ? std::uint32_t{WINDOW_MODIFIER_ALT} : 0);
}

/// The key itself, which stays the same whatever it gives: its scan code with the mark of the second one of a
/// name. Programs that send messages leave it out.
std::uint32_t GetCode(const MSG& message) {
    constexpr std::uint32_t kScanCode = 0x1FF;
    const std::uint32_t scan = static_cast<std::uint32_t>(message.lParam) >> 16 & kScanCode;
    return scan ? scan : 0x10000 | static_cast<std::uint32_t>(message.wParam);
}

/// The character that `TranslateMessage` has made of the key, if any.
MSG TakeCharacter(const MSG& key) {
    const bool isSystemKey = key.message == WM_SYSKEYDOWN;
    MSG character;
    // With the dead ones, whose numbers are the next.
    if (!PeekMessageW(&character, key.hwnd, isSystemKey ? WM_SYSCHAR : WM_CHAR,
                      isSystemKey ? WM_SYSDEADCHAR : WM_DEADCHAR, PM_REMOVE))
        return {};
    return character;
}

/// What the key gives without Control, or 0.
std::uint32_t GetPlainCharacter(WPARAM virtualKey, std::uint32_t modifiers) {
    const UINT character = MapVirtualKeyW(static_cast<UINT>(virtualKey), MAPVK_VK_TO_CHAR) & 0xFFFF;
    if ((modifiers & WINDOW_MODIFIER_SHIFT) != 0) return character;
    // A character in place of a text is put into the lower case, too.
    return static_cast<std::uint32_t>(
        reinterpret_cast<ULONG_PTR>(CharLowerW(reinterpret_cast<LPWSTR>(ULONG_PTR{character}))));
}

std::uint32_t GetName(WPARAM virtualKey) {
    for (const TNamedKey& row : kNamed)
        if (row.virtualKey == virtualKey) return row.key;
    if (virtualKey >= VK_F1 && virtualKey <= VK_F12)
        return static_cast<std::uint32_t>(virtualKey - VK_F1) + WINDOW_KEY_F1;
    return WINDOW_KEY_OTHER;
}

void TellPressed(CWindowEvents& events, const MSG& message, const MSG& character) {
    std::uint32_t modifiers = GetModifiers();
    std::uint32_t key = GetName(message.wParam);
    if (key == WINDOW_KEY_OTHER) {
        constexpr std::uint32_t kAltGr = WINDOW_MODIFIER_CONTROL | WINDOW_MODIFIER_ALT;
        key = static_cast<std::uint32_t>(character.wParam) & 0xFFFF;
        if (key < ' ')
            key = GetPlainCharacter(message.wParam, modifiers);
        else if ((modifiers & kAltGr) == kAltGr)
            modifiers &= ~kAltGr;
    }
    events.TellPressed(GetCode(message), key, modifiers);
}

} // namespace

MSG TellKey(CWindowEvents& events, const MSG& message) {
    MSG character{};
    if (message.message == WM_KEYDOWN || message.message == WM_SYSKEYDOWN) {
        character = TakeCharacter(message);
        TellPressed(events, message, character);
    } else if (message.message == WM_KEYUP || message.message == WM_SYSKEYUP) {
        events.TellReleased(GetCode(message), GetModifiers());
    }
    return character;
}

} // namespace vorlund
