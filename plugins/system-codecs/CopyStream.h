// Reads a stream from its begin to its end.
#pragma once

#include <vorlund/Stream.h>

#include <cstdint>
#include <vector>

/// Calls `take(bytes, count)` with each block. Raises what both raise.
template <class TTake> void CopyStream(vorlund::IInputStream& stream, TTake take) {
    constexpr std::size_t kBlock = 64 * 1024;
    std::vector<std::uint8_t> block(kBlock);
    stream.Seek(0);
    for (;;) {
        const std::uint64_t count = stream.Read(block.data(), block.size());
        if (count == 0 || count > block.size()) return;
        take(block.data(), static_cast<std::size_t>(count));
    }
}
