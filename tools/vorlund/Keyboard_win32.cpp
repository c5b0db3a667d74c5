#include "Keyboard.h"
#include "Terminal.h"

#include <atomic>
#include <thread>
#include <windows.h>

namespace {

HANDLE console = INVALID_HANDLE_VALUE;
DWORD before = 0;
std::atomic<bool> isChanged = false;

/// What a terminal sends for the key; the characters of other keys.
std::string Describe(const KEY_EVENT_RECORD& key) {
    if (!key.bKeyDown) return {};
    switch (key.wVirtualKeyCode) {
    case VK_UP:
        return "\x1B[A";
    case VK_DOWN:
        return "\x1B[B";
    case VK_RIGHT:
        return "\x1B[C";
    case VK_LEFT:
        return "\x1B[D";
    case VK_ESCAPE:
        return "q";
    default:
        return key.uChar.UnicodeChar > 0 && key.uChar.UnicodeChar < 0x7F
                   ? std::string(1, static_cast<char>(key.uChar.UnicodeChar))
                   : std::string();
    }
}

} // namespace

void RestoreTerminal() {
    if (isChanged.exchange(false)) SetConsoleMode(console, before);
}

CKeyboard::CKeyboard() {
    if (!IsErrorTerminal()) return;
    console = CreateFileW(L"CONIN$", GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                          nullptr, OPEN_EXISTING, 0, nullptr);
    if (!IsThere() || !GetConsoleMode(console, &before)) return;
    isChanged = true;
    SetConsoleMode(console, before & ~static_cast<DWORD>(ENABLE_LINE_INPUT | ENABLE_ECHO_INPUT));
}

CKeyboard::~CKeyboard() {
    RestoreTerminal();
    if (IsThere()) CloseHandle(console);
    console = INVALID_HANDLE_VALUE;
}

bool CKeyboard::IsThere() const {
    return console != INVALID_HANDLE_VALUE;
}

std::optional<TKey> CKeyboard::Read(std::chrono::milliseconds limit) {
    if (const auto key = TakeKey(bytes_, true)) return key;
    if (!isChanged) {
        std::this_thread::sleep_for(limit);
        return {};
    }
    if (WaitForSingleObject(console, static_cast<DWORD>(limit.count())) != WAIT_OBJECT_0) return {};
    INPUT_RECORD records[16];
    DWORD count = 0;
    if (!ReadConsoleInputW(console, records, 16, &count)) return {};
    for (DWORD i = 0; i < count; ++i)
        if (records[i].EventType == KEY_EVENT) bytes_ += Describe(records[i].Event.KeyEvent);
    return TakeKey(bytes_, true);
}

bool CKeyboard::IsStopWanted() const {
    return false;
}

void CKeyboard::Stop() {}
