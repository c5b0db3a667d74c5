/// \file
/// The inner loops over UTF-16 text: length, order and search. None of them raises or allocates, and absence
/// is an ordinary answer, so library code that expects to find nothing searches here, not through `CString`.
///
/// Texts are short, so no call may be wasted on the choice of a set: the compiler makes it, from its target,
/// and the functions call their routines directly.
#pragma once

#include <vorlund/Platform.h>

#include "vorlund/api/platform/Kernels.h"

#include <cstddef>
#include <cstdint>

namespace vorlund {

/// The answer of a search that found nothing.
constexpr std::size_t kTextNotFound = static_cast<std::size_t>(-1);

/// Units before the terminator.
std::size_t TextLength(const wchar* text);

/// Units before the terminator, but at most `limit`; reads nothing behind that.
std::size_t TextLength(const wchar* text, std::size_t limit);

/// -1, 0 or 1: the order of two terminated texts by unsigned units; a text is greater than its beginnings.
int CompareText(const wchar* left, const wchar* right);

/// The first place of `unit` in a terminated text; the unit 0 is found at the terminator.
std::size_t FindFirstUnit(const wchar* text, wchar unit);

/// The last place of `unit` in a terminated text; the unit 0 is found at the terminator.
std::size_t FindLastUnit(const wchar* text, wchar unit);

/// The first and the last place of `unit` among `length` units.
std::size_t FindFirstUnit(const wchar* text, std::size_t length, wchar unit);
std::size_t FindLastUnit(const wchar* text, std::size_t length, wchar unit);

/// The first and the last place of the needle among `length` units. An empty needle is found at 0, and its
/// last place is `length`.
std::size_t FindFirstText(const wchar* text, std::size_t length, const wchar* needle,
                          std::size_t needleLength);
std::size_t FindLastText(const wchar* text, std::size_t length, const wchar* needle,
                         std::size_t needleLength);

/// The first `capacity` places, from the front, where the needle is among `length` units and does not overlap
/// the one before; gives their number. The needle must not be empty.
std::size_t FindAllText(const wchar* text, std::size_t length, const wchar* needle, std::size_t needleLength,
                        std::uint32_t* places, std::size_t capacity);

/// Every unit equal to `from` among `length` units becomes `to`.
void ReplaceUnit(wchar* text, std::size_t length, wchar from, wchar to);

/// A narrow unit as the library widens it: by its sign, with no code page.
constexpr wchar WidenUnit(char unit) {
    return static_cast<wchar>(static_cast<signed char>(unit));
}

/// Widens `length` narrow units.
void WidenText(wchar* destination, const char* source, std::size_t length);

/// Copies `length` units, which do not overlap; true when `unit` is among them.
bool CopyTextAndLook(wchar* destination, const wchar* source, std::size_t length, wchar unit);

/// Makes each of `length` bytes a unit of the same value; true when `unit` is among them.
bool WidenBytesAndLook(wchar* destination, const std::uint8_t* source, std::size_t length, wchar unit);

// ---- the sets behind it, for tests and benchmarks

struct TTextRoutines {
    std::size_t (*length)(const wchar* text);
    std::size_t (*boundedLength)(const wchar* text, std::size_t limit);
    int (*compare)(const wchar* left, const wchar* right);
    std::size_t (*findFirstUnitOfTerminated)(const wchar* text, wchar unit);
    std::size_t (*findLastUnitOfTerminated)(const wchar* text, wchar unit);
    std::size_t (*findFirstUnit)(const wchar* text, std::size_t length, wchar unit);
    std::size_t (*findLastUnit)(const wchar* text, std::size_t length, wchar unit);
    std::size_t (*findFirstText)(const wchar* text, std::size_t length, const wchar* needle,
                                 std::size_t needleLength);
    std::size_t (*findLastText)(const wchar* text, std::size_t length, const wchar* needle,
                                std::size_t needleLength);
    std::size_t (*findAllText)(const wchar* text, std::size_t length, const wchar* needle,
                               std::size_t needleLength, std::uint32_t* places, std::size_t capacity);
    void (*replaceUnit)(wchar* text, std::size_t length, wchar from, wchar to);
    void (*widen)(wchar* destination, const char* source, std::size_t length);
    bool (*copyAndLook)(wchar* destination, const wchar* source, std::size_t length, wchar unit);
    bool (*widenBytesAndLook)(wchar* destination, const std::uint8_t* source, std::size_t length, wchar unit);
};

using TTextSet = TKernelSet<TTextRoutines>;

TKernelSets<TTextSet> GetTextSets();

/// The set that the functions above call.
const TTextSet& GetTextSetInUse();

} // namespace vorlund
