#include <vorlund/VarReader.h>

#include "vorlund/api/text/TextKernels.h"
#include "vorlund/serial/GrowText.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <new>

namespace vorlund {
namespace {

static_assert(std::endian::native == std::endian::little);

/// Texts of up to this many units are read at once. Longer ones grow as they arrive.
constexpr int kFirstUnits = 65536;

/// The most units that a 32-bit system can hold, and the limit on every system, so that all refuse the same.
constexpr std::int32_t kMaxUnits = 0x3FFFFFFE;

/// Reads at most `count` units with one call; returns how many whole ones arrived.
int ReadUnits(IInputStream& stream, wchar* units, int count) {
    const std::uint64_t size = static_cast<std::uint64_t>(count) * sizeof(wchar);
    return static_cast<int>(std::min(stream.Read(units, size), size) / sizeof(wchar));
}

bool HasLength(const CString& text, std::size_t length) {
    return TextLength(text, length + 1) == length;
}

} // namespace

CVarReader::CVarReader(IInputStream* stream) : CReader(stream) {}

CVarReader::~CVarReader() noexcept(false) = default;

CVarReader& CVarReader::operator>>(CString& text) {
    std::int32_t count = 0;
    if (stream_->Read(&count, sizeof(count)) < sizeof(count)) return *this;
    if (count > kMaxUnits) throw std::bad_alloc();
    int capacity = std::min(count, kFirstUnits);
    // A text of that length has the room already: `Allocate` would only replace its buffer by an equal one.
    if (capacity < 0 || !HasLength(text, static_cast<std::size_t>(capacity))) text.Allocate(capacity);
    try {
        int filled = ReadUnits(*stream_, text.GetBuffer(), capacity);
        while (filled == capacity && capacity < count) {
            capacity = capacity > count / 2 ? count : 2 * capacity;
            GrowText(text, static_cast<std::size_t>(filled), capacity);
            filled += ReadUnits(*stream_, text.GetBuffer() + filled, capacity - filled);
        }
        text.GetBuffer()[filled] = 0;
    } catch (...) {
        text.GetBuffer()[0] = 0;
        throw;
    }
    return *this;
}

} // namespace vorlund
