#include "vorlund/data/DataFormatCopy.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace vorlund {

CDataFormatCopy::CDataFormatCopy() {
    Set(GetEmptyFormat());
}

void CDataFormatCopy::Set(const TDataFormat& format) {
    // A record is at least its head, whatever it says.
    const std::size_t size = std::max<std::size_t>(format.size, sizeof(TDataFormat));
    if (!record_ || Get().id != format.id || Get().size != format.size) {
        auto record = std::make_unique_for_overwrite<std::byte[]>(size);
        std::memcpy(record.get(), &format, size);
        record_ = std::move(record);
    } else {
        // The record may be the held one.
        std::memmove(record_.get(), &format, size);
    }
}

} // namespace vorlund
