// A format record of any size as a value.
#pragma once

#include <vorlund/DataFormat.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <memory>

namespace vorlund {

/// Owns a copy of a whole format record: as many bytes as its size field says, and at least the head. The
/// empty format at first.
class CFormatRecord {
public:
    CFormatRecord() { Set(GetEmptyFormat()); }
    explicit CFormatRecord(const TDataFormat& format) { Set(format); }

    /// Copies `format`, which may be the held record or a part of it. The block is replaced only when the
    /// size fields differ. Raises `std::bad_alloc`, with the record as it was.
    void Set(const TDataFormat& format) {
        // A record is at least its head, whatever it says.
        const std::size_t size = std::max<std::size_t>(format.size, sizeof(TDataFormat));
        if (bytes_ && Get().size == format.size) {
            std::memmove(bytes_.get(), &format, size);
            return;
        }
        auto bytes = std::make_unique_for_overwrite<std::byte[]>(size);
        std::memcpy(bytes.get(), &format, size);
        bytes_ = std::move(bytes);
    }

    const TDataFormat& Get() const { return *reinterpret_cast<const TDataFormat*>(bytes_.get()); }

private:
    std::unique_ptr<std::byte[]> bytes_;
};

} // namespace vorlund
