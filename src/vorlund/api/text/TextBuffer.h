/// \file
/// Heap buffers and narrow arguments of `CString`.
#pragma once

#include <vorlund/Platform.h>

#include "vorlund/api/text/TextKernels.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <new>

namespace vorlund {

/// A buffer on its way into a text.
using TTextBuffer = std::unique_ptr<wchar[]>;

/// The longest text: what `unsigned int` lengths can count beside the answer 0xFFFFFFFF, and what an object
/// can hold.
constexpr std::size_t kMaxTextLength =
    PTRDIFF_MAX / sizeof(wchar) - 1 < 0xFFFFFFFEu ? PTRDIFF_MAX / sizeof(wchar) - 1 : 0xFFFFFFFEu;

/// A buffer for `length` units and a terminator, which is set. Sizes that cannot exist raise `std::bad_alloc`
/// here: not every allocator refuses them by raising.
inline TTextBuffer NewTextBuffer(std::uint64_t length) {
    if (length > kMaxTextLength) throw std::bad_alloc();
    TTextBuffer buffer(new wchar[static_cast<std::size_t>(length) + 1]);
    buffer[static_cast<std::size_t>(length)] = 0;
    return buffer;
}

/// Puts a complete new buffer in the place of a text's old one. All changes of length end here, so that
/// arguments may be the text itself or a part of it, and a failed allocation leaves the text whole.
inline void AdoptBuffer(wchar*& place, TTextBuffer buffer) noexcept {
    delete[] place;
    place = buffer.release();
}

/// Copies `length` units between places that do not overlap.
inline void CopyText(wchar* destination, const wchar* source, std::size_t length) {
    std::memcpy(destination, source, length * sizeof(wchar));
}

/// A narrow text widened for the time of one call; null counts as empty. Short texts need no heap.
class CWidenedText {
public:
    explicit CWidenedText(const char* text) : length_(text ? std::strlen(text) : 0) {
        if (length_ > kMaxLocalUnits) heap_ = NewTextBuffer(length_);
        wchar* units = heap_ ? heap_.get() : local_;
        WidenText(units, text, length_);
        units[length_] = 0;
    }
    CWidenedText(const CWidenedText&) = delete;
    CWidenedText& operator=(const CWidenedText&) = delete;

    const wchar* GetBuffer() const { return heap_ ? heap_.get() : local_; }
    std::size_t Length() const { return length_; }

private:
    static constexpr std::size_t kMaxLocalUnits = 127;

    std::size_t length_;
    TTextBuffer heap_;
    wchar local_[kMaxLocalUnits + 1];
};

} // namespace vorlund
