#include "Texts.h"

#include "Guard.h"

#include <vorlund/Text.h>

#include <algorithm>
#include <cstring>

namespace vorlund::capi {

namespace {

constexpr bool IsHighSurrogate(unsigned int unit) {
    return unit >= 0xD800 && unit < 0xDC00;
}

/// How many units of a UTF-16 text fit without half a character.
std::size_t WholeUnits(std::basic_string_view<wchar> text, std::size_t room) {
    if (text.size() <= room) return text.size();
    return room > 0 && IsHighSurrogate(text[room - 1]) ? room - 1 : room;
}

/// Tells the length; true when there is a buffer to fill.
bool GiveLength(std::size_t units, const void* buffer, std::uint32_t room, std::uint32_t* length) {
    RequireBuffer(buffer, room);
    if (length) *length = static_cast<std::uint32_t>(units);
    return room > 0;
}

void CheckRoom(std::size_t units, std::uint32_t room) {
    if (units >= room) throw CFailure(VORLUND_ERROR_BUFFER, "The buffer is too small for the text");
}

} // namespace

std::size_t WholeCharacters(std::string_view text, std::size_t room) {
    if (text.size() <= room) return text.size();
    while (room > 0 && (static_cast<unsigned char>(text[room]) & 0xC0U) == 0x80U) --room;
    return room;
}

wstring TakeText(const char* text) {
    RequirePointer(text);
    return TextFromUtf8(text);
}

wstring TakeText(const std::uint16_t* text) {
    RequirePointer(text);
    const std::uint16_t* end = text;
    while (*end != 0) ++end;
    return wstring(text, end);
}

wstring TakePath(const char* path) {
    RequirePointer(path);
    return PathFromUtf8(path);
}

wstring TakePath(const std::uint16_t* path) {
    return TakeText(path);
}

void GiveText(std::string_view text, char* buffer, std::uint32_t room, std::uint32_t* length) {
    if (!GiveLength(text.size(), buffer, room, length)) return;
    const std::size_t count = WholeCharacters(text, room - 1);
    std::copy_n(text.data(), count, buffer);
    buffer[count] = 0;
    CheckRoom(text.size(), room);
}

void GiveText(std::string_view text, std::uint16_t* buffer, std::uint32_t room, std::uint32_t* length) {
    const wstring wide = TextFromUtf8(text);
    GiveText(std::basic_string_view<wchar>(wide), buffer, room, length);
}

void GiveText(std::basic_string_view<wchar> text, char* buffer, std::uint32_t room, std::uint32_t* length) {
    const std::string narrow = TextToUtf8(text);
    GiveText(std::string_view(narrow), buffer, room, length);
}

void GiveText(std::basic_string_view<wchar> text, std::uint16_t* buffer, std::uint32_t room,
              std::uint32_t* length) {
    if (!GiveLength(text.size(), buffer, room, length)) return;
    const std::size_t count = WholeUnits(text, room - 1);
    std::copy_n(text.data(), count, buffer);
    buffer[count] = 0;
    CheckRoom(text.size(), room);
}

} // namespace vorlund::capi

using namespace vorlund::capi;

int32_t VORLUND_CALL vorlund_utf8_to_utf16(const char* utf8, uint16_t* text, uint32_t room,
                                           uint32_t* length) {
    return GuardedAlways(__func__, [&] {
        RequirePointer(utf8);
        GiveText(std::string_view(utf8), text, room, length);
    });
}

int32_t VORLUND_CALL vorlund_utf16_to_utf8(const uint16_t* utf16, char* text, uint32_t room,
                                           uint32_t* length) {
    return GuardedAlways(__func__, [&] {
        const vorlund::wstring wide = TakeText(utf16);
        GiveText(std::basic_string_view<vorlund::wchar>(wide), text, room, length);
    });
}
