// Records that begin with their size, which callers of other versions set otherwise.
#pragma once

#include "Failure.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace vorlund::capi {

/// Copies as much of `full` as the caller's record takes, its size excepted. `least` is the size of the
/// record in the first version.
template <class TRecord> void GiveRecord(const TRecord& full, TRecord* record, std::size_t least) {
    RequirePointer(record);
    const std::size_t size = record->size;
    if (size < least) throw CFailure(VORLUND_ERROR_RECORD, "The size of the record is too small");
    constexpr std::size_t kHead = sizeof(record->size);
    std::memcpy(reinterpret_cast<char*>(record) + kHead, reinterpret_cast<const char*>(&full) + kHead,
                std::min(size, sizeof(TRecord)) - kHead);
}

/// The caller's record, with zeros for what it does not have.
template <class TRecord> TRecord TakeRecord(const TRecord* record, std::size_t least) {
    RequirePointer(record);
    const std::size_t size = record->size;
    if (size < least) throw CFailure(VORLUND_ERROR_RECORD, "The size of the record is too small");
    TRecord full{};
    std::memcpy(&full, record, std::min(size, sizeof(TRecord)));
    full.size = sizeof(TRecord);
    return full;
}

} // namespace vorlund::capi
