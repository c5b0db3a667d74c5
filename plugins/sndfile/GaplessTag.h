// The tag "iTunSMPB", in which iTunes keeps what its encoder added to a file.
#pragma once

#include "VirtualFile.h"

#include <cstdint>
#include <optional>

struct TGaplessTag {
    /// Frames before the sound and behind it.
    std::uint32_t delay = 0;
    std::uint32_t padding = 0;
};

/// Looks for it in the first `size` bytes of a file, which are its ID3 tags.
std::optional<TGaplessTag> ReadGaplessTag(CVirtualFile& file, std::int64_t size);
