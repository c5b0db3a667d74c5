/// \file
/// Checked casts of format records.
#pragma once

#include <vorlund/DataFormat.h>

#include <concepts>

namespace vorlund {

/// The record as `TRecord` when its identifier and its size say that it is one, else null:
///
///     if (const auto* const pcm = FormatCast<TDataFormat_AudioPcm>(stream->GetFormat())) ...
///
/// The result lives as long as the record. Since version 0.1.
template <std::derived_from<TDataFormat> TRecord> const TRecord* FormatCast(const TDataFormat& format) {
    if (format.id != TRecord::FormatId || format.size < sizeof(TRecord)) return nullptr;
    return static_cast<const TRecord*>(&format);
}

} // namespace vorlund
