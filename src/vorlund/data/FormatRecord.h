// A copy of somebody else's format record.
#pragma once

#include <vorlund/DataFormat.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <memory>

namespace vorlund {

/// Owns a copy of a whole record, as long as its own size field says; at first of the empty format.
class CFormatRecord {
public:
    CFormatRecord() { Set(GetEmptyFormat()); }

    /// Copies `format`, which may be the held record. Raises `std::bad_alloc` and then changes nothing.
    void Set(const TDataFormat& format) {
        // A record is at least its head, whatever it says.
        const std::size_t size = std::max<std::size_t>(format.size, sizeof(TDataFormat));
        if (bytes_ && Get().id == format.id && Get().size == format.size) {
            std::memmove(bytes_.get(), &format, size);
        } else {
            auto block = std::make_unique_for_overwrite<std::byte[]>(size);
            std::memcpy(block.get(), &format, size);
            bytes_ = std::move(block);
        }
    }

    const TDataFormat& Get() const { return *reinterpret_cast<const TDataFormat*>(bytes_.get()); }

private:
    std::unique_ptr<std::byte[]> bytes_;
};

} // namespace vorlund
