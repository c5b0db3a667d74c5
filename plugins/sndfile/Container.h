// Recognises the files that the plug-in takes by their first bytes, before libsndfile looks at them.
#pragma once

#include "VirtualFile.h"

#include <cstdint>

enum class TContainer { None, Plain, Ogg, Mpeg };

struct TContainerAt {
    TContainer container = TContainer::None;
    /// Behind the ID3 tags in front.
    std::int64_t start = 0;
};

/// What `file` is. A BW64 file is made to begin as RF64, which it is but for its name.
TContainerAt FindContainer(CVirtualFile& file);
