#include "vorlund/api/platform/WindowsLean.h"

#include <vorlund/Path.h>

namespace vorlund {

wstring PathFromUtf8(const char* path) {
    if (!path) return {};
    // The counts include the terminating zero.
    const int count = MultiByteToWideChar(CP_UTF8, 0, path, -1, nullptr, 0);
    if (count <= 0) return {};
    wstring text(static_cast<std::size_t>(count), VRL_L('\0'));
    MultiByteToWideChar(CP_UTF8, 0, path, -1, text.data(), count);
    text.pop_back();
    return text;
}

std::string PathToUtf8(const wchar* path) {
    if (!path) return {};
    const int count = WideCharToMultiByte(CP_UTF8, 0, path, -1, nullptr, 0, nullptr, nullptr);
    if (count <= 0) return {};
    std::string text(static_cast<std::size_t>(count), '\0');
    WideCharToMultiByte(CP_UTF8, 0, path, -1, text.data(), count, nullptr, nullptr);
    text.pop_back();
    return text;
}

} // namespace vorlund
