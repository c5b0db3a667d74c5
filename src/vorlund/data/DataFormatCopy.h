// A format record on the heap.
#pragma once

#include <vorlund/DataFormat.h>

#include <cstddef>
#include <memory>

namespace vorlund {

/// Holds a copy of a format record, as many bytes as the record's own size field says; at first of the empty
/// format.
class CDataFormatCopy {
public:
    CDataFormatCopy();

    const TDataFormat& Get() const { return *reinterpret_cast<const TDataFormat*>(record_.get()); }
    /// Copies `format`, in place when identifier and size stay the same. Raises `std::bad_alloc`; the former
    /// record is then kept.
    void Set(const TDataFormat& format);

private:
    std::unique_ptr<std::byte[]> record_;
};

} // namespace vorlund
