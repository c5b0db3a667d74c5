// Texts that grow while they are read.
#pragma once

#include <vorlund/String.h>

#include <cstddef>
#include <cstring>
#include <utility>

namespace vorlund {

/// Makes room for `capacity` units in `text` and keeps the first `count`, which need not be terminated.
/// Raises `std::bad_alloc` and leaves the text as it was.
inline void GrowText(CString& text, std::size_t count, int capacity) {
    CString larger;
    larger.Allocate(capacity);
    std::memcpy(larger.GetBuffer(), text.GetBuffer(), count * sizeof(wchar));
    text = std::move(larger);
}

} // namespace vorlund
