/// \file
/// UTF-16 text on its way out, as code points and as UTF-8. For texts that people read: a lone surrogate
/// becomes U+FFFD. File names have a codec of their own, which loses nothing.
#pragma once

#include <vorlund/Platform.h>

#include <memory_resource>
#include <string>

namespace vorlund {

/// Takes the code point at `text`, which is moved on behind it; 0 at the end, where `text` stays.
char32_t NextCodePoint(const wchar*& text);

/// Appends a code point in UTF-8. Raises `std::bad_alloc`.
void AppendUtf8(std::pmr::string& out, char32_t code);

/// Appends a whole text in UTF-8. Raises `std::bad_alloc`.
void AppendUtf8(std::pmr::string& out, const wchar* text);

/// Room on the stack for a message on its way out. As messages are cut at 1023 units, the heap is touched
/// only for texts that are not messages; running out of memory can be reported.
class CMessageMemory {
public:
    std::pmr::memory_resource* Get() { return &resource_; }

private:
    char storage_[8192];
    std::pmr::monotonic_buffer_resource resource_{storage_, sizeof(storage_)};
};

/// An empty string in that room, reserved for `size` bytes.
inline std::pmr::string ReserveMessage(CMessageMemory& memory, std::size_t size) {
    std::pmr::string message(memory.Get());
    message.reserve(size);
    return message;
}

} // namespace vorlund
