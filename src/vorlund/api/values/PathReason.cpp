#include "vorlund/api/values/PathReason.h"

#include "vorlund/api/text/TextFormat.h"

#include <mutex>

namespace vorlund {
namespace {

constexpr int kCapacity = 256;

// The last unit is never written, so a reader finds an end even while another thread writes its text.
wchar buffer[kCapacity];
std::mutex bufferMutex;

} // namespace

const wchar* PathReason(const wchar* format, const wchar* path) {
    wchar text[kCapacity];
    const int length = FormatArguments(text, kCapacity, format, path);
    const std::lock_guard guard(bufferMutex);
    // Unit by unit and atomically, as the formatter reads it: another thread may be printing an exception
    // with this reason.
    for (int i = 0; i <= length && i < kCapacity - 1; ++i)
        __atomic_store_n(&buffer[i], text[i], __ATOMIC_RELAXED);
    return buffer;
}

} // namespace vorlund
