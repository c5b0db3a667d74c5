#include "vorlund/api/text/TextKernels.h"

#if defined(__SSE2__)
#include "vorlund/api/text/TextKernels_sse2.h"
#define VRL_TEXT_SET sse2
#else
#include "vorlund/api/text/TextKernels_scalar.h"
#define VRL_TEXT_SET scalar
#endif

namespace vorlund {

std::size_t TextLength(const wchar* text) {
    return VRL_TEXT_SET::TextLength(text);
}

std::size_t TextLength(const wchar* text, std::size_t limit) {
    return VRL_TEXT_SET::TextLength(text, limit);
}

int CompareText(const wchar* left, const wchar* right) {
    return VRL_TEXT_SET::CompareText(left, right);
}

std::size_t FindFirstUnit(const wchar* text, wchar unit) {
    return VRL_TEXT_SET::FindFirstUnit(text, unit);
}

std::size_t FindLastUnit(const wchar* text, wchar unit) {
    return VRL_TEXT_SET::FindLastUnit(text, unit);
}

std::size_t FindFirstUnit(const wchar* text, std::size_t length, wchar unit) {
    return VRL_TEXT_SET::FindFirstUnit(text, length, unit);
}

std::size_t FindLastUnit(const wchar* text, std::size_t length, wchar unit) {
    return VRL_TEXT_SET::FindLastUnit(text, length, unit);
}

std::size_t FindFirstText(const wchar* text, std::size_t length, const wchar* needle,
                          std::size_t needleLength) {
    return VRL_TEXT_SET::FindFirstText(text, length, needle, needleLength);
}

std::size_t FindLastText(const wchar* text, std::size_t length, const wchar* needle,
                         std::size_t needleLength) {
    return VRL_TEXT_SET::FindLastText(text, length, needle, needleLength);
}

std::size_t FindAllText(const wchar* text, std::size_t length, const wchar* needle, std::size_t needleLength,
                        std::uint32_t* places, std::size_t capacity) {
    return VRL_TEXT_SET::FindAllText(text, length, needle, needleLength, places, capacity);
}

void ReplaceUnit(wchar* text, std::size_t length, wchar from, wchar to) {
    VRL_TEXT_SET::ReplaceUnit(text, length, from, to);
}

void WidenText(wchar* destination, const char* source, std::size_t length) {
    VRL_TEXT_SET::WidenText(destination, source, length);
}

} // namespace vorlund
