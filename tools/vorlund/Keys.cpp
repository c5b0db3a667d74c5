#include "Keyboard.h"

#include <string_view>

namespace {

constexpr char kEscape = '\x1B';

std::optional<TKey> FindLetter(char letter) {
    switch (letter) {
    case ' ':
        return TKey::Pause;
    case 'n':
        return TKey::Next;
    case 'p':
        return TKey::Previous;
    case '+':
    case '=':
        return TKey::Louder;
    case '-':
    case '_':
        return TKey::Quieter;
    case 'q':
    case 'Q':
        return TKey::Quit;
    default:
        return {};
    }
}

std::optional<TKey> FindArrow(char letter) {
    switch (letter) {
    case 'A':
        return TKey::Next;
    case 'B':
        return TKey::Previous;
    case 'C':
        return TKey::Forward;
    case 'D':
        return TKey::Back;
    default:
        return {};
    }
}

} // namespace

// The sequences of ECMA-48: escape, "[" or "O", numbers and signs, and a letter at the end.
std::optional<TKey> TakeKey(std::string& bytes, bool isWhole) {
    if (bytes.empty()) return {};
    if (bytes[0] != kEscape) {
        const char letter = bytes[0];
        bytes.erase(0, 1);
        return FindLetter(letter);
    }
    if (bytes.size() > 1 && (bytes[1] == '[' || bytes[1] == 'O')) {
        const std::size_t end = bytes.find_first_not_of("0123456789;:<=>?!\"#$%&'()*+,-./ ", 2);
        if (end != std::string::npos) {
            const char letter = bytes[end];
            bytes.erase(0, end + 1);
            return FindArrow(letter);
        }
        if (isWhole) bytes.clear();
        return {};
    }
    if (bytes.size() > 1 || isWhole) {
        bytes.erase(0, 1);
        return TKey::Quit;
    }
    return {};
}
